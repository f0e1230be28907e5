#pragma once

// The nodes that tests of filters and lists find again: two plans of the project p1 and nodes without a plan,
// and some of the project p2, which nobody who asks in p1 is to find.

#include "Text.h"
#include "filters/FilterText.h"
#include "filters/PlanNodeFields.h"
#include "records/FieldReader.h"
#include "records/PlanInput.h"
#include "records/PlanNodeWriter.h"
#include "store/OpenStore.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace KvTest {

inline void addPlan(PlanService::Store& store, const QString& id, const QString& project)
{
    PlanService::PlanRecord plan;
    plan.id = id;
    plan.projectId = project;
    plan.category = "c1"_s;
    plan.name = "Tower "_s + id;
    plan.document = QJsonDocument(QJsonObject{{"_id"_s, id}}).toJson(QJsonDocument::Compact);
    store.insertPlan(plan);
}

inline void add(PlanService::Store& store, const QString& id, const QString& plan, const QString& project,
                const QJsonObject& fields, const QString& creator = "ann"_s,
                const QString& created = "2026-03-02T08:00:00.000"_s)
{
    PlanService::PlanNodeRecord node;
    node.id = id;
    node.planId = plan;
    node.projectId = project;
    node.category = "c1"_s;
    PlanService::writePlanNode(node, PlanService::FieldReader(fields), {created, creator, created, creator});
    store.insertPlanNode(node);
}

inline PlanService::PlanNodeQuery queryFor(const QString& where)
{
    PlanService::PlanNodeQuery query;
    query.projectId = "p1"_s;
    query.visible.elsewhere = PlanService::ReadScope::All;
    query.where = PlanService::readFilter(where, PlanService::planNodeFields());
    return query;
}

inline QJsonArray nodesOf(const PlanService::JsonPieces& pieces)
{
    return QJsonDocument::fromJson(pieces.join()).array();
}

inline QStringList idsOf(const QJsonArray& nodes)
{
    QStringList ids;
    for (const QJsonValue& node : nodes) {
        ids.append(node.toObject().value("_id"_s).toString());
    }
    return ids;
}

inline QStringList ids(PlanService::Store& store, const PlanService::PlanNodeQuery& query)
{
    return idsOf(nodesOf(store.planNodeListJson(query)));
}

inline QStringList words(const QString& text)
{
    return text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/// A database of these nodes.
inline std::unique_ptr<PlanService::Store> openNodeSample(const QString& databaseFile)
{
    std::unique_ptr<PlanService::Store> store =
        PlanService::openStore(databaseFile, PlanService::MissingDatabase::Create);
    addPlan(*store, "A"_s, "p1"_s);
    addPlan(*store, "B"_s, "p1"_s);
    addPlan(*store, "X"_s, "p2"_s);
    store->insertDocument({"d1"_s, "p1"_s, "{\"_id\":\"d1\"}"});
    store->insertDocument({"d2"_s, "p2"_s, "{\"_id\":\"d2\"}"});
    // Rows in another order than ids.
    add(*store, "a3"_s, "A"_s, "p1"_s,
        {{"id"_s, 1},
         {"uniqueId"_s, 10},
         {"name"_s, "Dig 10% \"deep\""_s},
         {"GUID"_s, "guid-3"_s},
         {"remark"_s, "wet"_s},
         {"startDate"_s, "2026-03-02"_s},
         {"finishDate"_s, "2026-03-09T17:00:00.000"_s},
         {"actualStartDate"_s, "2026-03-03"_s},
         {"actualFinishDate"_s, "2026-03-08"_s},
         {"userIds"_s, QJsonArray{"ann"_s}},
         {"executeIds"_s, QJsonArray{"bo"_s, "李"_s}},
         {"documentIds"_s, QJsonArray{"d1"_s, "d2"_s}},
         {"isDistributed"_s, true},
         {"finishedPercentage"_s, 100},
         {"planWorkload"_s, 0},
         {"entityHideDate"_s, "2026-09-01"_s}});
    add(*store, "a1"_s, "A"_s, "p1"_s,
        {{"id"_s, 2},
         {"uniqueId"_s, 11},
         {"parentTaskID"_s, 10},
         {"name"_s, "第2层 pour"_s},
         {"category"_s, "c2"_s},
         {"startDate"_s, "2026-03-05"_s},
         {"finishDate"_s, "2026-03-05"_s},
         {"actualStartDate"_s, "2026-03-05"_s},
         {"userIds"_s, QJsonArray{"bo"_s}},
         {"cooperateIds"_s, QJsonArray{"ann"_s}},
         {"displaySimulation"_s, false},
         {"finishedPercentage"_s, 37.5},
         {"planWorkload"_s, 12},
         {"actualWorkload"_s, 5},
         {"dynamicEffect"_s, 3},
         {"entityHideType"_s, 2}},
        "bo"_s, "2026-03-04T00:00:00.000"_s);
    add(*store, "a2"_s, "A"_s, "p1"_s,
        {{"id"_s, 2}, {"uniqueId"_s, 12}, {"name"_s, "'; DROP TABLE planNodes; --"_s}}, "cy"_s,
        "2026-03-05T00:00:00.000"_s);
    add(*store, "b1"_s, "B"_s, "p1"_s,
        {{"id"_s, 1},
         {"uniqueId"_s, 10},
         {"name"_s, "dig"_s},
         {"finishDate"_s, "2026-03-01"_s},
         {"userIds"_s, QJsonArray{"an"_s, "ann\nbo"_s}}});
    add(*store, "n1"_s, QString(), "p1"_s,
        {{"id"_s, 1},
         {"uniqueId"_s, 10},
         {"parentTaskID"_s, 10},
         {"name"_s, "Call the mayor"_s},
         {"finishDate"_s, "2026-03-05"_s},
         {"userIds"_s, QJsonArray{"ann"_s}}});
    add(*store, "x1"_s, "X"_s, "p2"_s, {{"name"_s, "Dig"_s}, {"userIds"_s, QJsonArray{"ann"_s}}});
    add(*store, "x2"_s, QString(), "p2"_s, {{"name"_s, "Dig"_s}, {"userIds"_s, QJsonArray{"ann"_s}}});
    return store;
}

} // namespace KvTest
