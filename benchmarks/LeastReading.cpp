#include "LeastReading.h"

#include <model/KvDecodePool.h>
#include <model/KvPlanCodec.h>

#include <QtCore/QCborArray>
#include <QtCore/QCborMap>
#include <QtCore/QCborValue>
#include <QtCore/QJsonArray>

#include <cstdio>
#include <cstdlib>

namespace {

using Keys = QVector<QCborValue>;
using Pool = Kv::KvDecodePool;

Keys keysOf(std::initializer_list<const char*> texts)
{
    Keys keys;
    for (const char* const text : texts)
        keys.append(QLatin1String(text));
    return keys;
}

// The members of an object that has these keys and no others.
class Members
{
public:
    Members(const QCborMap& object, const Keys& keys)
        : m_next(object.constBegin())
        , m_end(object.constEnd())
        , m_key(keys.constBegin())
    {
    }

    QCborValueRef next()
    {
        if (m_next == m_end || !(m_next.key() == *m_key)) {
            std::fprintf(stderr, "the plan has other members than are known by heart\n");
            std::exit(2);
        }
        ++m_key;
        return (m_next++).value();
    }

    int number() { return int(next().toInteger()); }
    bool flag() { return next().isTrue(); }
    QString text() { return next().toString(); }
    void skip() { next(); }

private:
    QCborMap::ConstIterator m_next;
    QCborMap::ConstIterator m_end;
    Keys::const_iterator m_key;
};

// What is made of a value, kept for the next one, which mostly equals it.
template<class Made>
struct Last
{
    QCborValue value;
    Made made;

    template<class Make>
    const Made& of(const QCborValue& next, Make make)
    {
        if (value != next) {
            made = make(next);
            value = next;
        }
        return made;
    }
};

void readLag(const QCborMap& in, KvDuration& out)
{
    static const Keys keys = keysOf({"Duration", "Units"});
    Members members(in, keys);
    out.value = members.number();
    out.units = members.number();
}

// The members of a link have other names in the two formats, but stand in the same order.
template<class Successor>
void readLink(const QCborMap& in, const Keys& keys, KvPlanPredecessor& out, Pool& pool, Successor successor)
{
    Members members(in, keys);
    readLag(members.next().toMap(), out.lag);
    out.sourcePlanNodeId = members.number();
    out.sourcePlanNodeName = pool.shared(members.text());
    out.sourcePlanNodeUniqueId = members.number();
    out.targetPlanNodeId = members.number();
    out.targetPlanNodeName = pool.shared(members.text());
    out.targetPlanNodeUniqueId = successor(members);
    out.type = members.number();
}

class PlanReader
{
public:
    explicit PlanReader(int nodes)
        : m_pool(nodes)
    {
    }

    void readNode(const QCborMap& in, KvPlanNode& out)
    {
        static const Keys keys = keysOf({"_id",
                                         "actualFinishDate",
                                         "actualStartDate",
                                         "actualWorkload",
                                         "category",
                                         "cooperateIds",
                                         "createdAt",
                                         "createdBy",
                                         "displaySimulation",
                                         "documentIds",
                                         "dynamicEffect",
                                         "entity",
                                         "entityHideDate",
                                         "entityHideType",
                                         "executeIds",
                                         "finishDate",
                                         "finishedPercentage",
                                         "id",
                                         "isDistributed",
                                         "materialBills",
                                         "milestone",
                                         "name",
                                         "parentTaskID",
                                         "planId",
                                         "planName",
                                         "planWorkload",
                                         "predecessors",
                                         "projectId",
                                         "remark",
                                         "startDate",
                                         "summary",
                                         "uniqueId",
                                         "updatedAt",
                                         "updatedBy",
                                         "userIds"});
        static const Keys keysWithGuid = Keys{QCborValue(QLatin1String("GUID"))} + keys;
        const auto text = [this](const QCborValue& value) {
            return m_pool.shared(value.toString());
        };
        const auto date = [this](const QCborValue& value) {
            return m_pool.dateTime(value.toString());
        };

        const bool hasGuid = in.size() == keysWithGuid.size();
        Members members(in, hasGuid ? keysWithGuid : keys);
        if (hasGuid)
            out.guid = members.text();
        out.id = members.text();
        if (!hasGuid)
            out.guid = out.id;
        out.actualFinishDate = m_actualFinishDate.of(members.next(), date);
        out.actualStartDate = m_actualStartDate.of(members.next(), date);
        out.actualWorkload = members.number();
        out.category = m_category.of(members.next(), text);
        out.cooperateIds = people(members.next());
        out.createdAt = m_createdAt.of(members.next(), date);
        out.createdBy = m_createdBy.of(members.next(), text);
        out.displaySimulation = members.number() != 0;
        out.documentIds = people(members.next());
        out.dynamicEffect = members.number();
        readLinks(members.next().toArray(), out.links);
        out.entityHideDate = m_entityHideDate.of(members.next(), date);
        out.entityHideType = members.number();
        out.executeIds = people(members.next());
        out.finishDate = date(members.next());
        out.finishedPercentage = members.next().toDouble();
        out.planNodeId = members.number();
        out.isDistributed = members.flag();
        readBills(members.next().toArray(), out.materialBills);
        out.milestone = members.flag();
        out.name = text(members.next());
        out.parentTaskId = members.number();
        out.planId = m_planId.of(members.next(), text);
        out.planName = m_planName.of(members.next(), text);
        out.planWorkload = members.number();
        readPredecessors(members.next().toArray(), out.predecessors);
        out.projectId = m_projectId.of(members.next(), text);
        out.remark = m_remark.of(members.next(), text);
        out.startDate = date(members.next());
        out.summary = members.flag();
        out.uniqueId = members.number();
        out.updatedAt = m_updatedAt.of(members.next(), date);
        out.updatedBy = m_updatedBy.of(members.next(), text);
        out.userIds = people(members.next());
    }

private:
    // Most lists name nobody or one; the lists of the same person share their data.
    QStringList people(const QCborValue& value) { return m_pool.idList(value.toArray()); }

    void readLinks(const QCborArray& in, KvLinksEntity& out)
    {
        static const Keys keys = keysOf({"entityIds", "modelId"});
        for (const QCborValue& link : in) {
            const QCborMap map = link.toMap();
            Members members(map, keys);
            const QCborArray ids = members.next().toArray();
            QStringList& entities = out[m_pool.shared(members.text())];
            entities.reserve(int(ids.size()));
            for (const QCborValue& id : ids)
                entities.append(id.toString());
        }
    }

    void readBills(const QCborArray& in, QMap<QString, QStringList>& out)
    {
        static const Keys keys = keysOf({"rId", "statusIds"});
        for (const QCborValue& bill : in) {
            const QCborMap map = bill.toMap();
            Members members(map, keys);
            const QString id = m_pool.shared(members.text());
            out.insert(id, m_statuses.of(members.next(), [this](const QCborValue& value) {
                return m_pool.idList(value.toArray());
            }));
        }
        out = m_pool.shared(out);
    }

    void readPredecessors(const QCborArray& in, QList<KvPlanPredecessor>& out)
    {
        static const Keys keys =
            keysOf({"Lag", "SourcePlanNodeID", "SourcePlanNodeName", "SourcePlanNodeUniqueID",
                    "TargetPlanNodeID", "TargetPlanNodeName", "TargetPlanNodeUniqueID", "Type"});
        static const KvPlanPredecessor fresh;
        out.reserve(int(in.size()));
        for (const QCborValue& value : in) {
            out.append(fresh);
            readLink(value.toMap(), keys, out.last(), m_pool, [&](Members& members) {
                const QString successor = members.text();
                return out.first().targetPlanNodeUniqueId == successor ? out.first().targetPlanNodeUniqueId
                                                                       : successor;
            });
        }
    }

    Pool m_pool;
    Last<QDateTime> m_actualFinishDate, m_actualStartDate, m_createdAt, m_entityHideDate, m_updatedAt;
    Last<QString> m_category, m_createdBy, m_planId, m_planName, m_projectId, m_remark, m_updatedBy;
    Last<QStringList> m_statuses;
};

class ExchangeReader
{
public:
    explicit ExchangeReader(int tasks)
        : m_pool(tasks)
    {
    }

    void readNode(const QCborMap& in, KvPlanNode& out)
    {
        static const Keys keys =
            keysOf({"Duration", "DurationText", "Finish", "FinishSlack", "FinishText", "GUID", "ID",
                    "Milestone", "Name", "Notes", "ParentTask", "Predecessors", "Start", "StartText",
                    "Summary", "Type", "UniqueID"});
        static const QString notes = QString(QChar(0)); // as the format has it
        Members members(in, keys);
        readLag(members.next().toMap(), out.duration);
        out.durationText = m_pool.shared(members.text());
        out.finishDate = m_pool.exchangeDateTime(members.text());
        readLag(members.next().toMap(), out.finishSlack);
        out.finishText = m_pool.shared(members.text());
        out.guid = members.text();
        out.planNodeId = members.number();
        out.milestone = members.flag();
        out.name = m_pool.shared(members.text());
        members.skip();
        out.notes = notes;
        out.parentTaskId = members.number();
        readPredecessors(members.next().toArray(), out.predecessors);
        out.startDate = m_pool.exchangeDateTime(members.text());
        out.startText = m_pool.shared(members.text());
        out.summary = members.flag();
        out.type = members.number();
        out.uniqueId = members.number();
    }

private:
    void readPredecessors(const QCborArray& in, QList<KvPlanPredecessor>& out)
    {
        static const Keys keys = keysOf({"Lag", "SourceTaskID", "SourceTaskName", "SourceTaskUniqueID",
                                         "TargetTaskID", "TargetTaskName", "TargetTaskUniqueID", "Type"});
        static const KvPlanPredecessor fresh;
        static const QVector<QString> bytes = [] {
            QVector<QString> all;
            for (ushort code = 0; code < 256; ++code)
                all.append(QString(QChar(code)));
            return all;
        }();
        for (const QCborValue& value : in) {
            out.append(fresh);
            readLink(value.toMap(), keys, out.last(), m_pool,
                     [](Members& members) { return bytes[members.number() & 0xff]; });
        }
    }

    Pool m_pool;
};

template<class Reader>
void readNodes(const QJsonValue& in, KvPlan& out)
{
    const QCborArray nodes = QCborArray::fromJsonArray(in.toArray());
    Reader reader(int(nodes.size()));
    const KvPlanNode fresh;
    out.planNodes.reserve(int(nodes.size()));
    for (const QCborValue& node : nodes) {
        out.planNodes.append(fresh);
        reader.readNode(node.toMap(), out.planNodes.last());
    }
}

} // namespace

// What a plan has beside its nodes is one in a thousand, and left out.
void readLeast(const QJsonObject& in, KvPlan& out)
{
    readNodes<PlanReader>(in.value(QLatin1String("tasks")), out);
}

void readLeastExchange(const QJsonObject& in, KvPlan& out)
{
    readNodes<ExchangeReader>(in.value(QLatin1String("AllTasks")), out);
}
