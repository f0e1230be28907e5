#include "SampleNodeJson.h"

namespace PlanService {

namespace {

// Row numbers and unique ids differ, so that one taken for the other is noticed.
constexpr int uniqueIdOffset = 1000;

int linkCode(SampleLink link)
{
    switch (link) {
    case SampleLink::FinishToFinish:
        return 0;
    case SampleLink::FinishToStart:
        return 1;
    case SampleLink::StartToFinish:
        return 2;
    case SampleLink::StartToStart:
    case SampleLink::None:
        break;
    }
    return 3;
}

constexpr int hoursUnit = 1;
constexpr int daysUnit = 2;

constexpr int noEffect = -1;

/// How the elements of a trade come into view, in the numbers of the growth directions.
int effectOf(const SampleItem& item)
{
    if (item.code == QLatin1String("EXC")) {
        return 13; // the ground is taken away
    }
    if (item.code == QLatin1String("STR") || item.code == QLatin1String("FAC")) {
        return 10; // bottom to top
    }
    if (item.code == QLatin1String("CON") || item.code == QLatin1String("RAF")) {
        return item.floor % 2 == 0 ? 4 : 6; // left to right and back
    }
    if (item.code == QLatin1String("MEP")) {
        return 0; // front to back
    }
    return item.code == QLatin1String("FIN") ? 2 : 12; // back to front; at once
}

QStringList peopleFor(const SampleItem& item, int role)
{
    // The same crew stays with a trade on a floor; roles take different people.
    const QStringList& people = samplePeople();
    int crew = item.floor + role * 5;
    for (const QChar c : item.code) {
        crew += c.unicode();
    }
    return {people.at(crew % people.size())};
}

} // namespace

QString inLanguage(const SampleName& name, SampleLanguage language)
{
    switch (language) {
    case SampleLanguage::Chinese:
        return name.zh;
    case SampleLanguage::English:
        return name.en;
    case SampleLanguage::Both:
        break;
    }
    return name.zh + QLatin1Char(' ') + name.en;
}

SampleNodeJson::SampleNodeJson(const PlanRecord& plan, const SampleOptions& options)
    : m_plan(plan)
    , m_options(options)
{
}

void SampleNodeJson::beginTower(int number, int nodesBefore)
{
    m_tower = number;
    m_nodesBefore = nodesBefore;
}

int SampleNodeJson::uniqueIdOf(std::size_t index) const
{
    return rowOf(index) + uniqueIdOffset;
}

QString SampleNodeJson::documentIdOf(std::size_t index) const
{
    return m_plan.id.left(14) + QStringLiteral("d0") +
           QStringLiteral("%1").arg(rowOf(index), 8, 16, QLatin1Char('0'));
}

QString SampleNodeJson::nameOf(const SampleItem& item) const
{
    const bool isFloor = item.floor > 0 && item.level == 2 && !item.milestone;
    QString name = inLanguage(isFloor ? SampleName{QStringLiteral("第%1层").arg(item.floor),
                                                   QStringLiteral("%1 %2").arg(item.name.en).arg(item.floor)}
                                      : item.name,
                              m_options.language);
    if (m_tower > 0 && item.level == 1) {
        name = QStringLiteral("T%1 ").arg(m_tower) + name;
    }
    return name;
}

QString SampleNodeJson::dateText(int day, bool evening)
{
    QString& date = m_days[day];
    if (date.isEmpty()) {
        date = m_options.start.addDays(day).toString(Qt::ISODate);
    }
    return date + (evening ? QLatin1String("T17:00:00.000") : QLatin1String("T08:00:00.000"));
}

SampleNode SampleNodeJson::node(const std::vector<SampleItem>& items, std::size_t index, SampleRandom& random)
{
    const SampleItem& item = items[index];
    const bool leaf = !item.hasChildren;
    SampleNode node;
    node.summary = item.hasChildren;
    node.milestone = item.milestone;
    node.progress = item.progress;
    PlanNodeRecord& record = node.record;
    record.id = m_plan.id.left(16) + QStringLiteral("%1").arg(rowOf(index), 8, 16, QLatin1Char('0'));
    record.planId = m_plan.id;
    record.projectId = m_plan.projectId;
    record.category = m_plan.category;
    record.name = nameOf(item);
    record.rowNumber = rowOf(index);
    record.uniqueId = uniqueIdOf(index);
    record.parentTaskId = item.parent < 0 ? -1 : uniqueIdOf(static_cast<std::size_t>(item.parent));
    record.startDate = dateText(item.start, false);
    record.finishDate = item.milestone ? record.startDate : dateText(item.end - 1, true);
    if (item.actualStart >= 0) {
        record.actualStartDate = dateText(item.actualStart, false);
    }
    if (item.actualEnd >= 0) {
        record.actualFinishDate =
            item.milestone ? record.actualStartDate : dateText(item.actualEnd - 1, true);
    }
    record.createdAt = m_plan.createdAt;
    record.updatedAt = record.actualFinishDate.isEmpty()
                           ? (record.actualStartDate.isEmpty() ? record.createdAt : record.actualStartDate)
                           : record.actualFinishDate;
    record.createdBy = m_plan.createdBy;
    const QStringList executing = leaf ? peopleFor(item, 1) : QStringList();
    const QStringList cooperating = leaf && item.floor % 2 == 1 ? peopleFor(item, 2) : QStringList();
    node.worker = executing.value(0);
    record.people = peopleText(peopleFor(item, 0) + executing + cooperating);
    node.tower = m_tower;
    node.floor = item.floor;
    node.trade = item.code;
    node.entities = entitiesOf(item, random);
    const bool late = leaf && item.actualEnd > item.end;

    m_json.beginObject();
    m_json.key("_id").text(record.id);
    m_json.key("category").text(record.category);
    if (item.level == 1) {
        m_json.key("GUID").text(QStringLiteral("5a3f7c10-0000-4000-8000-0000%1").arg(record.id.right(8)));
    }
    m_json.key("planId").text(record.planId);
    m_json.key("projectId").text(record.projectId);
    m_json.key("id").number(record.rowNumber);
    m_json.key("uniqueId").number(record.uniqueId);
    m_json.key("parentTaskID").number(record.parentTaskId);
    m_json.key("name").text(record.name);
    m_json.key("isDistributed").flag(leaf && item.actualStart >= 0);
    m_json.key("remark").text(
        late ? inLanguage({QStringLiteral("材料晚到"), QStringLiteral("material came late")},
                          m_options.language)
             : QString());
    m_json.key("finishedPercentage").real(item.progress);
    m_json.key("createdBy").text(record.createdBy);
    m_json.key("updatedBy").text(peopleFor(item, 0).first());
    m_json.key("updatedAt").text(record.updatedAt);
    m_json.key("createdAt").text(record.createdAt);
    m_json.key("startDate").text(record.startDate);
    m_json.key("finishDate").text(record.finishDate);
    m_json.key("actualStartDate").text(record.actualStartDate);
    m_json.key("actualFinishDate").text(record.actualFinishDate);
    m_json.key("dynamicEffect").number(leaf && !item.milestone ? effectOf(item) : noEffect);
    // The one flag that goes out as a number.
    m_json.key("displaySimulation").number(item.milestone ? 0 : 1);
    const bool temporary = leaf && item.code == QLatin1String("TMP");
    m_json.key("entityHideDate").text(temporary ? record.finishDate : QString());
    m_json.key("entityHideType").number(temporary ? 1 : 0);
    m_json.key("planWorkload").number(item.workDays * 48);
    m_json.key("actualWorkload").number(qRound(item.doneDays * 48));
    m_json.key("predecessors");
    writePredecessors(items, index);
    m_json.key("entity");
    writeEntities(item, node.entities);
    m_json.key("userIds").texts(peopleFor(item, 0));
    m_json.key("executeIds").texts(executing);
    m_json.key("cooperateIds").texts(cooperating);
    m_json.key("documentIds").texts(item.withDocument ? QStringList{documentIdOf(index)} : QStringList());
    m_json.key("materialBills");
    writeBills(item);
    m_json.endObject();
    record.document = m_json.take();
    return node;
}

DocumentRecord SampleNodeJson::document(const std::vector<SampleItem>& items, std::size_t index)
{
    const SampleItem& item = items[index];
    const QString id = documentIdOf(index);
    JsonWriter json;
    json.beginObject();
    json.key("_id").text(id);
    json.key("name").text(nameOf(item) + QStringLiteral(".pdf"));
    json.key("fileSize").number(40000 + rowOf(index) % 1000 * 137);
    json.key("suffix").text(QStringLiteral("pdf"));
    json.key("createdAt").text(m_plan.createdAt);
    json.key("createdBy").text(peopleFor(item, 1).first());
    json.endObject();
    return {id, m_plan.projectId, json.take()};
}

void SampleNodeJson::writePredecessors(const std::vector<SampleItem>& items, std::size_t index)
{
    m_json.beginArray();
    for (const SampleLinkTo& link : items[index].links) {
        const auto source = static_cast<std::size_t>(link.source);
        m_json.beginObject();
        m_json.key("SourcePlanNodeName").text(nameOf(items[source]));
        m_json.key("TargetPlanNodeName").text(nameOf(items[index]));
        m_json.key("Lag").beginObject();
        m_json.key("Duration").number(link.lag);
        m_json.key("Units").number(link.lagInHours ? hoursUnit : daysUnit);
        m_json.endObject();
        m_json.key("Type").number(linkCode(link.type));
        m_json.key("SourcePlanNodeUniqueID").number(uniqueIdOf(source));
        // Text on this side of the link, a number on the other: so the format has it.
        m_json.key("TargetPlanNodeUniqueID").text(QString::number(uniqueIdOf(index)));
        m_json.key("SourcePlanNodeID").number(rowOf(source));
        m_json.key("TargetPlanNodeID").number(rowOf(index));
        m_json.endObject();
    }
    m_json.endArray();
}

QStringList SampleNodeJson::entitiesOf(const SampleItem& item, SampleRandom& random) const
{
    QStringList entities;
    if (item.hasChildren || item.milestone) {
        return entities;
    }
    const QString tower = m_tower > 0 ? QStringLiteral("T%1-").arg(m_tower) : QString();
    const int first = random.between(100, 900);
    for (int i = 0; i < 2 + item.floor % 2; ++i) {
        entities += tower + QStringLiteral("F%1-%2-%3")
                                .arg(item.floor, 2, 10, QLatin1Char('0'))
                                .arg(item.code)
                                .arg(first + i);
    }
    return entities;
}

void SampleNodeJson::writeEntities(const SampleItem& item, const QStringList& entities)
{
    m_json.beginArray();
    if (!entities.isEmpty()) {
        m_json.beginObject();
        m_json.key("modelId").text(QStringLiteral("model-t%1-%2").arg(qMax(1, m_tower)).arg(item.model));
        m_json.key("entityIds").texts(entities);
        m_json.endObject();
    }
    m_json.endArray();
}

void SampleNodeJson::writeBills(const SampleItem& item)
{
    m_json.beginArray();
    for (const QString& bill : item.bills) {
        m_json.beginObject();
        m_json.key("rId").text(bill);
        QStringList statuses{QStringLiteral("ordered")};
        if (item.actualStart >= 0) {
            statuses += QStringLiteral("delivered");
        }
        if (item.actualEnd >= 0) {
            statuses += QStringLiteral("used");
        }
        m_json.key("statusIds").texts(statuses);
        m_json.endObject();
    }
    m_json.endArray();
}

} // namespace PlanService
