#include "KvPlanRecordsDump.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace KvTest {

namespace {

QJsonValue toJson(const QString& text)
{
    return text;
}

QJsonValue toJson(int number)
{
    return number;
}

QJsonValue toJson(qint64 number)
{
    return number;
}

QJsonValue toJson(double number)
{
    return number;
}

QJsonValue toJson(bool flag)
{
    return flag;
}

QJsonValue toJson(const QDateTime& dateTime)
{
    if (dateTime.isNull())
        return QJsonValue::Null;
    // The wall-clock time: in what time spec a date-time is kept is the reader's own affair.
    return dateTime.date().toString(Qt::ISODate) + QLatin1Char('T') +
           dateTime.time().toString(QStringLiteral("HH:mm:ss.zzz"));
}

QJsonValue toJson(const QStringList& list)
{
    return QJsonArray::fromStringList(list);
}

QJsonValue toJson(const QMap<QString, QStringList>& map)
{
    QJsonObject object;
    for (auto entry = map.constBegin(); entry != map.constEnd(); ++entry)
        object.insert(entry.key(), QJsonArray::fromStringList(entry.value()));
    return object;
}

QJsonValue toJson(const KvDuration& duration)
{
    return dump(duration);
}

template<class Record>
QJsonValue toJson(const QList<Record>& records)
{
    QJsonArray array;
    for (const Record& record : records)
        array.append(dump(record));
    return array;
}

QDateTime someDay(int seed, int day)
{
    return QDateTime(QDate(2024, 1, 1).addDays(seed * 40 + day), QTime(8, 30, 15, 250));
}

// Gives each field a value of its own, told apart by the field's number.
struct Filler
{
    KvPlanNode& node;
    int seed;
    int number = 0;

    QString text() const { return QStringLiteral("text %1/%2").arg(seed).arg(number); }
    void set(QString& field) const { field = text(); }
    void set(int& field) const { field = seed * 1000 + number; }
    void set(qint64& field) const { field = qint64(seed * 1000 + number) << 20; }
    void set(double& field) const { field = seed * 2 + number / 128.0; }
    void set(bool& field) const { field = seed % 2 != 0; }
    void set(QDateTime& field) const { field = someDay(seed, number); }
    void set(KvDuration& field) const { field = {seed * 1.5 + number, seed + 4}; }
    void set(QStringList& field) const { field = QStringList{text(), QStringLiteral("second")}; }
    void set(QMap<QString, QStringList>& field) const
    {
        field = {{text(), {QStringLiteral("e1"), QStringLiteral("e2")}}, {QStringLiteral("other"), {text()}}};
    }
    void set(QList<KvPlanPredecessor>& field) const
    {
        field = {{text(), QStringLiteral("target"), {-1.5, 3 + seed}, 1, seed, QStringLiteral("012"), 5, 6}};
    }
    void set(QList<KvDocument>& field) const
    {
        field = {{text(), QStringLiteral("plan.pdf"), 12 + seed, QStringLiteral("pdf"),
                  QStringLiteral("yesterday"), QStringLiteral("u1")}};
    }
    void set(QList<KvPlanNode>& field) const
    {
        KvPlanNode child;
        child.id = text();
        field = {child};
    }

    template<class Field>
    void operator()(const char*, Field KvPlanNode::*member)
    {
        ++number;
        set(node.*member);
    }
};

} // namespace

QJsonObject dump(const KvDuration& duration)
{
    return {{QStringLiteral("value"), duration.value}, {QStringLiteral("units"), duration.units}};
}

QJsonObject dump(const KvPlanPredecessor& predecessor)
{
    return {{QStringLiteral("sourcePlanNodeName"), predecessor.sourcePlanNodeName},
            {QStringLiteral("targetPlanNodeName"), predecessor.targetPlanNodeName},
            {QStringLiteral("lag"), dump(predecessor.lag)},
            {QStringLiteral("type"), predecessor.type},
            {QStringLiteral("sourcePlanNodeUniqueId"), predecessor.sourcePlanNodeUniqueId},
            {QStringLiteral("targetPlanNodeUniqueId"), predecessor.targetPlanNodeUniqueId},
            {QStringLiteral("sourcePlanNodeId"), predecessor.sourcePlanNodeId},
            {QStringLiteral("targetPlanNodeId"), predecessor.targetPlanNodeId}};
}

QJsonObject dump(const KvDocument& document)
{
    return {{QStringLiteral("id"), document.id},
            {QStringLiteral("name"), document.name},
            {QStringLiteral("fileSize"), document.fileSize},
            {QStringLiteral("suffix"), document.suffix},
            {QStringLiteral("createdAt"), document.createdAt},
            {QStringLiteral("createdBy"), document.createdBy}};
}

QJsonObject dump(const KvPlanNode& node)
{
    QJsonObject object;
    visitPlanNodeFields(
        [&](const char* name, auto member) { object.insert(QLatin1String(name), toJson(node.*member)); });
    return object;
}

QJsonObject dump(const KvPlan& plan)
{
    return {{QStringLiteral("id"), plan.id},
            {QStringLiteral("category"), plan.category},
            {QStringLiteral("projectId"), plan.projectId},
            {QStringLiteral("name"), plan.name},
            {QStringLiteral("mppFilePath"), plan.mppFilePath},
            {QStringLiteral("projectFileId"), plan.projectFileId},
            {QStringLiteral("createdAt"), toJson(plan.createdAt)},
            {QStringLiteral("updatedAt"), toJson(plan.updatedAt)},
            {QStringLiteral("createdBy"), plan.createdBy},
            {QStringLiteral("updatedBy"), plan.updatedBy},
            {QStringLiteral("isPublic"), plan.isPublic},
            {QStringLiteral("ranges"), toJson(plan.ranges)},
            {QStringLiteral("planNodes"), toJson(plan.planNodes)}};
}

KvPlanNode fullPlanNode(int seed)
{
    KvPlanNode node;
    visitPlanNodeFields(Filler{node, seed});
    // The only field whose default is true.
    node.displaySimulation = seed % 2 == 0;
    return node;
}

KvPlan fullPlan(int seed)
{
    const auto text = [seed](const char* name) {
        return QString::number(seed) + QLatin1String(name);
    };
    KvPlan plan;
    plan.id = text("id");
    plan.category = text("category");
    plan.projectId = text("project");
    plan.name = text("name");
    plan.mppFilePath = text("path");
    plan.projectFileId = text("file");
    plan.createdAt = someDay(seed, 1);
    plan.updatedAt = someDay(seed, 2);
    plan.createdBy = text("creator");
    plan.updatedBy = text("editor");
    plan.isPublic = seed;
    plan.ranges = QStringList{text("range")};
    plan.planNodes = {fullPlanNode(seed), fullPlanNode(seed + 1)};
    return plan;
}

QString difference(const QJsonObject& actual, const QJsonObject& expected)
{
    const auto shown = [](const QJsonObject& object, const QString& key) {
        if (!object.contains(key))
            return QStringLiteral("nothing");
        const QByteArray json = QJsonDocument(QJsonArray{object.value(key)}).toJson(QJsonDocument::Compact);
        return QString::fromUtf8(json.mid(1, json.size() - 2).left(100));
    };
    QStringList keys = actual.keys();
    for (const QString& key : expected.keys()) {
        if (!actual.contains(key))
            keys.append(key);
    }
    QString text;
    for (const QString& key : qAsConst(keys)) {
        if (actual.value(key) != expected.value(key) || actual.contains(key) != expected.contains(key)) {
            text += QStringLiteral("\n  %1: is %2, should be %3")
                        .arg(key, shown(actual, key), shown(expected, key));
        }
    }
    return text;
}

QJsonObject readJsonFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s: %s", qPrintable(path), qPrintable(file.errorString()));
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (!document.isObject())
        qFatal("%s is no JSON object: %s", qPrintable(path), qPrintable(error.errorString()));
    return document.object();
}

} // namespace KvTest
