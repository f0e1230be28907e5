#include "SampleProject.h"

#include "../json/JsonWriter.h"
#include "SampleNodeJson.h"
#include "SampleProgress.h"
#include "SampleSchedule.h"

#include <QCryptographicHash>

#include <algorithm>
#include <limits>

namespace PlanService {

namespace {

constexpr int usualFloors = 18;
constexpr int mostFloorsByNodes = 30;
constexpr int nodesPerFloor = 20; // of all phases together
constexpr int nodesBesideFloors = 40;

int floorsFor(const SampleOptions& options)
{
    if (options.floors > 0) {
        return options.floors;
    }
    if (options.nodes <= 0) {
        return usualFloors;
    }
    return qBound(1, (options.nodes - nodesBesideFloors) / nodesPerFloor, mostFloorsByNodes);
}

QDate statusFor(const SampleOptions& options)
{
    if (options.status.isValid()) {
        return options.status;
    }
    const std::vector<SampleItem> tower =
        scheduleTower(floorsFor(options), std::numeric_limits<std::size_t>::max(), 0);
    const auto last = std::max_element(
        tower.begin(), tower.end(), [](const SampleItem& a, const SampleItem& b) { return a.end < b.end; });
    return options.start.addDays(last->end * 45 / 100);
}

/// 24 hex digits that differ as soon as one option does.
QString planIdFor(const SampleOptions& options)
{
    QStringList parts{options.projectId,
                      options.category,
                      QString::number(floorsFor(options)),
                      QString::number(options.nodes),
                      QString::number(options.seed),
                      QString::number(static_cast<int>(options.language)),
                      options.start.toString(Qt::ISODate),
                      statusFor(options).toString(Qt::ISODate)};
    const QByteArray hash =
        QCryptographicHash::hash(parts.join(QLatin1Char('\n')).toUtf8(), QCryptographicHash::Sha256);
    return QString::fromLatin1(hash.toHex().left(24));
}

QString planName(SampleLanguage language)
{
    return inLanguage({QStringLiteral("住宅楼总进度计划"), QStringLiteral("Residential tower, master plan")},
                      language);
}

} // namespace

SampleProject::SampleProject(const SampleOptions& options)
    : m_options(options)
{
    m_options.floors = floorsFor(options);
    m_options.status = statusFor(options);
    m_plan.id = planIdFor(options);
    m_plan.projectId = options.projectId;
    m_plan.category = options.category;
    m_plan.name = planName(options.language);
    m_plan.createdAt = options.start.addDays(-30).toString(Qt::ISODate) + QStringLiteral("T09:00:00.000");
    m_plan.updatedAt = m_options.status.toString(Qt::ISODate) + QStringLiteral("T18:30:00.000");
    m_plan.createdBy = samplePeople().first();
    JsonWriter json;
    json.beginObject();
    json.key("_id").text(m_plan.id);
    json.key("category").text(m_plan.category);
    json.key("projectId").text(m_plan.projectId);
    json.key("name").text(m_plan.name);
    json.key("createdAt").text(m_plan.createdAt);
    json.key("createdBy").text(m_plan.createdBy);
    json.key("updatedAt").text(m_plan.updatedAt);
    json.key("updatedBy").text(samplePeople().at(1));
    json.key("projectFileId").text(QStringLiteral("file-") + m_plan.id.left(8));
    json.key("public").number(1);
    json.key("ranges").texts({QStringLiteral("range-podium"), QStringLiteral("range-tower")});
    json.endObject();
    m_plan.document = json.take();
}

void SampleProject::generate(const Sink& sink) const
{
    SampleRandom random(m_options.seed);
    const int statusDay = static_cast<int>(m_options.start.daysTo(m_options.status));
    const std::size_t wanted = m_options.nodes > 0 ? static_cast<std::size_t>(m_options.nodes)
                                                   : std::numeric_limits<std::size_t>::max();
    SampleNodeJson nodes(m_plan, m_options);
    std::size_t done = 0;
    for (int tower = 0; done < wanted; ++tower) {
        // Towers start a week apart, in rounds of half a year.
        std::vector<SampleItem> items = scheduleTower(m_options.floors, wanted - done, tower % 26 * 7);
        playUntil(items, statusDay, random);
        nodes.beginTower(m_options.nodes > 0 ? tower + 1 : 0, static_cast<int>(done));
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (items[i].withDocument) {
                sink.document(nodes.document(items, i));
            }
            sink.node(nodes.node(items, i, random));
        }
        done += items.size();
        if (m_options.nodes <= 0) {
            return;
        }
    }
}

void seedStore(const SampleProject& project, Store& store)
{
    Transaction transaction(store);
    if (store.planOwnership(project.plan().id)) {
        throw StoreError(
            QStringLiteral("plan '%1' is in the database already; choose another --project or --seed, "
                           "or keep it with --if-missing")
                .arg(project.plan().id));
    }
    store.insertPlan(project.plan());
    const auto insert = [&](const SampleNode& node) {
        store.insertPlanNode(node.record);
        const SampleProgress progress = sampleProgress(node, project.plan(), project.language());
        for (const DocumentRecord& document : progress.documents) {
            store.insertDocument(document);
        }
        for (const ResponseRecord& response : progress.responses) {
            store.insertResponse(response);
        }
        if (progress.state) {
            store.putTaskState(*progress.state);
        }
    };
    project.generate({insert, [&](const DocumentRecord& document) {
                          store.insertDocument(document);
                      }});
    transaction.commit();
}

void writeSample(const SampleProject& project, const std::function<void(const QByteArray&)>& write)
{
    const QByteArray& head = project.plan().document;
    write(head.left(head.size() - 1) + ",\"tasks\":[");
    bool first = true;
    const auto writeNode = [&](const SampleNode& node) {
        JsonWriter derived;
        derived.beginObject();
        derived.key("planName").text(project.plan().name);
        derived.key("milestone").flag(node.milestone);
        derived.key("summary").flag(node.summary);
        write((first ? QByteArray() : QByteArrayLiteral(",")) + derived.result() + ',' +
              node.record.document.mid(1));
        first = false;
    };
    project.generate({writeNode, [](const DocumentRecord&) {
                      }});
    write(QByteArrayLiteral("]}"));
}

} // namespace PlanService
