// The service's filter language: any text is a filter or refused with 400, and every filter is one that the
// database can answer, the same however it is nested.

#include "FuzzTarget.h"

#include <filters/FilterText.h>
#include <filters/PlanFields.h>
#include <filters/PlanNodeFields.h>
#include <http/Reply.h>
#include <store/OpenStore.h>

#include <QtCore/QTemporaryDir>

#include <optional>

namespace {

using namespace PlanService;

/// A store with a few records for filters to find.
class Records
{
public:
    Records()
    {
        m_store = openStore(m_folder.filePath(QStringLiteral("filters.db")), MissingDatabase::Create);
        PlanRecord plan;
        plan.id = QStringLiteral("p1");
        plan.projectId = QStringLiteral("project");
        plan.category = QStringLiteral("c1");
        plan.name = QStringLiteral("Tower A");
        plan.createdAt = QStringLiteral("2024-03-05T08:00:00.000");
        plan.createdBy = QStringLiteral("ann");
        plan.document = R"({"_id":"p1","name":"Tower A","public":1,"ranges":["r1"]})";
        m_store->insertPlan(plan);
        for (int i = 0; i < 3; ++i)
            m_store->insertPlanNode(node(i));
    }

    int planCount(const Filter& where)
    {
        PlanQuery query;
        query.projectId = QStringLiteral("project");
        query.visible.elsewhere = ReadScope::All;
        query.where = where;
        return m_store->planCount(query);
    }

    int nodeCount(const Filter& where)
    {
        PlanNodeQuery query;
        query.projectId = QStringLiteral("project");
        query.visible.elsewhere = ReadScope::All;
        query.where = where;
        return m_store->planNodeListCount(query);
    }

private:
    static PlanNodeRecord node(int i)
    {
        PlanNodeRecord record;
        record.id = QStringLiteral("n%1").arg(i);
        record.planId = i == 2 ? QString() : QStringLiteral("p1");
        record.projectId = QStringLiteral("project");
        record.category = QStringLiteral("c1");
        record.name = QStringLiteral("Floor %1").arg(i);
        record.rowNumber = record.uniqueId = i + 1;
        record.parentTaskId = i;
        record.startDate = QStringLiteral("2024-03-05T08:00:00.000");
        record.createdAt = record.startDate;
        record.createdBy = QStringLiteral("ann");
        record.people = peopleText({QStringLiteral("bob")});
        record.document =
            R"({"_id":"n","userIds":["bob"],"executeIds":[],"cooperateIds":[],"documentIds":["d"],)"
            R"("finishedPercentage":50,"planWorkload":-1,"isDistributed":true})";
        return record;
    }

    QTemporaryDir m_folder;
    std::unique_ptr<Store> m_store;
};

std::optional<Filter> read(const QString& text, const QVector<FilterField>& fields)
{
    try {
        return readFilter(text, fields);
    } catch (const ApiError& error) {
        KvFuzz::require(error.status() == 400, "another refusal");
        return std::nullopt;
    }
}

Filter nested(const Filter& filter, Filter::Kind kind)
{
    Filter outer;
    outer.kind = kind;
    outer.terms = {filter};
    return outer;
}

template<class Count>
void check(const Filter& filter, Count count)
{
    const int found = count(filter);
    KvFuzz::require(count(nested(filter, Filter::Kind::Any)) == found,
                    "a filter that is the one of a choice");
    KvFuzz::require(count(nested(filter, Filter::Kind::All)) == found, "a filter that is all of its terms");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Records records;
    const QString text = QString::fromUtf8(KvFuzz::bytesOf(data, size));
    try {
        if (const std::optional<Filter> filter = read(text, planFields()))
            check(*filter, [](const Filter& where) { return records.planCount(where); });
        if (const std::optional<Filter> filter = read(text, planNodeFields()))
            check(*filter, [](const Filter& where) { return records.nodeCount(where); });
    } catch (const StoreTooSlow&) {
        // told to the client as such
    } catch (const Failure& failure) {
        KvFuzz::fail(QStringLiteral("the database refused a filter: ") + QString::fromUtf8(failure.what()));
    }
    return 0;
}
