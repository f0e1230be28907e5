// The fields of the records are part of the public interface: their types, their order, and their defaults.

#include <model/KvPlanRecords.h>

#include <QtTest/QtTest>

#include <type_traits>

namespace {

// Walks the fields of a record as they are declared. Each call names the type of the next field, which the
// compiler then holds exactly, and its default. The place of each must follow from those before it, so that a
// field that moved, or one more in between, is found.
template<class Record>
class Layout
{
public:
    template<class Field>
    Layout& field(Field Record::*member, const Field& byDefault)
    {
        place(member);
        const Field& value = m_record.*member;
        if (!(value == byDefault))
            complain("has another default");
        return *this;
    }

    // A record without comparison among the fields.
    template<class Field, class Check>
    Layout& field(Field Record::*member, const Check& check, std::true_type)
    {
        place(member);
        if (!check(m_record.*member))
            complain("has another default");
        return *this;
    }

    QString complaint(int fields)
    {
        if (m_count != fields)
            complain(QStringLiteral("%1 fields listed, not %2").arg(m_count).arg(fields));
        if (aligned(m_end, alignof(Record)) != sizeof(Record))
            complain("fields after the last one");
        return m_complaint;
    }

private:
    static std::size_t aligned(std::size_t at, std::size_t alignment)
    {
        return (at + alignment - 1) / alignment * alignment;
    }

    template<class Field>
    void place(Field Record::*member)
    {
        ++m_count;
        const auto offset = std::size_t(reinterpret_cast<const char*>(&(m_record.*member)) -
                                        reinterpret_cast<const char*>(&m_record));
        if (offset != aligned(m_end, alignof(Field)))
            complain("does not follow the field before it");
        m_end = offset + sizeof(Field);
    }

    void complain(const char* what) { complain(QLatin1String(what)); }
    void complain(const QString& what)
    {
        m_complaint += QStringLiteral("\n  field %1: ").arg(m_count) + what;
    }

    const Record m_record{};
    int m_count = 0;
    std::size_t m_end = 0;
    QString m_complaint;
};

const auto days = [](const KvDuration& duration) {
    return qFuzzyIsNull(duration.value) && duration.units == 2;
};
const auto none = [](const auto& list) {
    return list.isEmpty();
};
constexpr std::true_type by;

template<class T, class = void>
struct IsComparable : std::false_type
{
};
template<class T>
struct IsComparable<T, std::void_t<decltype(std::declval<const T&>() == std::declval<const T&>())>>
    : std::true_type
{
};

template<class Record>
constexpr bool isPlainValue = std::is_default_constructible_v<Record>&& std::is_copy_constructible_v<Record>&&
                                  std::is_copy_assignable_v<Record>&& std::is_destructible_v<Record> &&
                              !std::is_polymorphic_v<Record> && !IsComparable<Record>::value;

static_assert(isPlainValue<KvDuration>);
static_assert(isPlainValue<KvPlanPredecessor>);
static_assert(isPlainValue<KvDocument>);
static_assert(isPlainValue<KvMedia>);
static_assert(isPlainValue<KvPlanNode>);
static_assert(isPlainValue<KvPlan>);
static_assert(isPlainValue<KvPlanNodeResponse>);
static_assert(isPlainValue<KvMeteringState>);
static_assert(isPlainValue<KvPlanStatistics>);
static_assert(isPlainValue<KvStatusStatistics>);
static_assert(isPlainValue<KvSituationCount>);
static_assert(isPlainValue<KvStatisticsQuantity>);
static_assert(isPlainValue<KvPlanCondition>);
static_assert(isPlainValue<KvPlanNodeCondition>);
static_assert(std::is_same_v<KvLinksEntity, QMap<QString, QStringList>>);
// What QList and the caches rely on to move nodes instead of copying them.
static_assert(std::is_nothrow_move_constructible_v<KvPlanNode>);
static_assert(std::is_nothrow_move_assignable_v<KvPlanNode>);

} // namespace

class KvPlanRecordsLayoutTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void duration();
    void predecessor();
    void document();
    void media();
    void planNode();
    void plan();
    void planNodeResponse();
    void meteringState();
    void statistics();
    void planCondition();
    void planNodeCondition();
};

void KvPlanRecordsLayoutTest::duration()
{
    Layout<KvDuration> layout;
    layout.field<double>(&KvDuration::value, 0.0).field<int>(&KvDuration::units, 2);
    QCOMPARE(layout.complaint(2), QString());
}

void KvPlanRecordsLayoutTest::predecessor()
{
    Layout<KvPlanPredecessor> layout;
    layout.field<QString>(&KvPlanPredecessor::sourcePlanNodeName, {})
        .field<QString>(&KvPlanPredecessor::targetPlanNodeName, {})
        .field<KvDuration>(&KvPlanPredecessor::lag, days, by)
        .field<int>(&KvPlanPredecessor::type, 0)
        .field<int>(&KvPlanPredecessor::sourcePlanNodeUniqueId, 0)
        .field<QString>(&KvPlanPredecessor::targetPlanNodeUniqueId, {})
        .field<int>(&KvPlanPredecessor::sourcePlanNodeId, 0)
        .field<int>(&KvPlanPredecessor::targetPlanNodeId, 0);
    QCOMPARE(layout.complaint(8), QString());
}

void KvPlanRecordsLayoutTest::document()
{
    Layout<KvDocument> layout;
    layout.field<QString>(&KvDocument::id, {})
        .field<QString>(&KvDocument::name, {})
        .field<int>(&KvDocument::fileSize, 0)
        .field<QString>(&KvDocument::suffix, {})
        .field<QString>(&KvDocument::createdAt, {})
        .field<QString>(&KvDocument::createdBy, {});
    QCOMPARE(layout.complaint(6), QString());
}

void KvPlanRecordsLayoutTest::media()
{
    Layout<KvMedia> layout;
    layout.field<QString>(&KvMedia::fileId, {})
        .field<QString>(&KvMedia::thumbnail, {})
        .field<int>(&KvMedia::time, 0);
    QCOMPARE(layout.complaint(3), QString());
}

void KvPlanRecordsLayoutTest::planNode()
{
    Layout<KvPlanNode> layout;
    layout.field<QString>(&KvPlanNode::id, {})
        .field<QString>(&KvPlanNode::category, {})
        .field<QString>(&KvPlanNode::name, {})
        .field<QString>(&KvPlanNode::reservedText1, {})
        .field<double>(&KvPlanNode::finishedPercentage, 0.0)
        .field<int>(&KvPlanNode::planNodeId, -1)
        .field<int>(&KvPlanNode::uniqueId, -1)
        .field<int>(&KvPlanNode::parentTaskId, -1)
        .field<QString>(&KvPlanNode::guid, {})
        .field<QString>(&KvPlanNode::planId, {})
        .field<QString>(&KvPlanNode::planName, {})
        .field<QString>(&KvPlanNode::projectId, {})
        .field<QString>(&KvPlanNode::reservedText2, {})
        .field<QString>(&KvPlanNode::notes, {})
        .field<int>(&KvPlanNode::reservedUnits, 2)
        .field<bool>(&KvPlanNode::summary, false)
        .field<bool>(&KvPlanNode::milestone, false)
        .field<QList<KvPlanPredecessor>>(&KvPlanNode::predecessors, none, by)
        .field<QDateTime>(&KvPlanNode::startDate, {})
        .field<QDateTime>(&KvPlanNode::finishDate, {})
        .field<KvDuration>(&KvPlanNode::duration, days, by)
        .field<QString>(&KvPlanNode::startText, {})
        .field<QString>(&KvPlanNode::durationText, {})
        .field<KvDuration>(&KvPlanNode::finishSlack, days, by)
        .field<QString>(&KvPlanNode::finishText, {})
        .field<int>(&KvPlanNode::type, 0)
        .field<int>(&KvPlanNode::reservedInt1, 0)
        .field<int>(&KvPlanNode::reservedInt2, 0)
        .field<int>(&KvPlanNode::reservedInt3, 0)
        .field<QList<KvPlanNode>>(&KvPlanNode::children, none, by)
        .field<QString>(&KvPlanNode::remark, {})
        .field<bool>(&KvPlanNode::isDistributed, false)
        .field<int>(&KvPlanNode::dynamicEffect, 0)
        .field<bool>(&KvPlanNode::displaySimulation, true)
        .field<QDateTime>(&KvPlanNode::entityHideDate, {})
        .field<int>(&KvPlanNode::entityHideType, 0)
        .field<int>(&KvPlanNode::planWorkload, 0)
        .field<int>(&KvPlanNode::actualWorkload, 0)
        .field<QDateTime>(&KvPlanNode::createdAt, {})
        .field<QDateTime>(&KvPlanNode::updatedAt, {})
        .field<QString>(&KvPlanNode::createdBy, {})
        .field<QString>(&KvPlanNode::updatedBy, {})
        .field<QDateTime>(&KvPlanNode::actualStartDate, {})
        .field<QDateTime>(&KvPlanNode::actualFinishDate, {})
        .field<qint64>(&KvPlanNode::reservedValue, 0)
        .field<QString>(&KvPlanNode::reservedText3, {})
        .field<QString>(&KvPlanNode::reservedText4, {})
        .field<QString>(&KvPlanNode::reservedText5, {})
        .field<QStringList>(&KvPlanNode::userIds, {})
        .field<QStringList>(&KvPlanNode::executeIds, {})
        .field<QStringList>(&KvPlanNode::cooperateIds, {})
        .field<KvLinksEntity>(&KvPlanNode::links, {})
        .field<QStringList>(&KvPlanNode::reservedList, {})
        .field<QStringList>(&KvPlanNode::documentIds, {})
        .field<QList<KvDocument>>(&KvPlanNode::documents, none, by)
        .field<qint64>(&KvPlanNode::reservedTail, 0)
        .field<QMap<QString, QStringList>>(&KvPlanNode::materialBills, {});
    QCOMPARE(layout.complaint(57), QString());
}

void KvPlanRecordsLayoutTest::plan()
{
    Layout<KvPlan> layout;
    layout.field<QString>(&KvPlan::id, {})
        .field<QString>(&KvPlan::category, {})
        .field<QString>(&KvPlan::projectId, {})
        .field<QString>(&KvPlan::name, {})
        .field<QString>(&KvPlan::mppFilePath, {})
        .field<QString>(&KvPlan::projectFileId, {})
        .field<QDateTime>(&KvPlan::createdAt, {})
        .field<QDateTime>(&KvPlan::updatedAt, {})
        .field<QString>(&KvPlan::createdBy, {})
        .field<QString>(&KvPlan::updatedBy, {})
        .field<int>(&KvPlan::isPublic, 100)
        .field<QStringList>(&KvPlan::ranges, {})
        .field<QList<KvPlanNode>>(&KvPlan::planNodes, none, by);
    QCOMPARE(layout.complaint(13), QString());
}

void KvPlanRecordsLayoutTest::planNodeResponse()
{
    Layout<KvPlanNodeResponse> layout;
    layout.field<QString>(&KvPlanNodeResponse::id, {})
        .field<QString>(&KvPlanNodeResponse::hostId, {})
        .field<QString>(&KvPlanNodeResponse::remark, {})
        .field<int>(&KvPlanNodeResponse::percentage, 0)
        .field<QList<KvMedia>>(&KvPlanNodeResponse::media, none, by)
        .field<QStringList>(&KvPlanNodeResponse::documentIds, {})
        .field<QList<KvDocument>>(&KvPlanNodeResponse::documents, none, by)
        .field<QDateTime>(&KvPlanNodeResponse::actualStartDate, {})
        .field<QDateTime>(&KvPlanNodeResponse::actualFinishDate, {})
        .field<QDateTime>(&KvPlanNodeResponse::createdAt, {})
        .field<QString>(&KvPlanNodeResponse::createdBy, {});
    QCOMPARE(layout.complaint(11), QString());
}

void KvPlanRecordsLayoutTest::meteringState()
{
    Layout<KvMeteringState> layout;
    layout.field<QString>(&KvMeteringState::id, {})
        .field<QString>(&KvMeteringState::planId, {})
        .field<QString>(&KvMeteringState::taskId, {})
        .field<QString>(&KvMeteringState::responseId, {})
        .field<int>(&KvMeteringState::state, 0);
    QCOMPARE(layout.complaint(5), QString());
}

void KvPlanRecordsLayoutTest::statistics()
{
    Layout<KvPlanStatistics> ofPlan;
    ofPlan.field<int>(&KvPlanStatistics::total, 0)
        .field<QList<KvStatusStatistics>>(&KvPlanStatistics::items, none, by);
    QCOMPARE(ofPlan.complaint(2), QString());

    Layout<KvStatusStatistics> ofStatus;
    ofStatus.field<int>(&KvStatusStatistics::total, 0)
        .field<QString>(&KvStatusStatistics::status, {})
        .field<QList<KvSituationCount>>(&KvStatusStatistics::items, none, by);
    QCOMPARE(ofStatus.complaint(3), QString());

    Layout<KvSituationCount> ofSituation;
    ofSituation.field<int>(&KvSituationCount::total, 0).field<QString>(&KvSituationCount::situation, {});
    QCOMPARE(ofSituation.complaint(2), QString());

    Layout<KvStatisticsQuantity> quantity;
    quantity.field<QString>(&KvStatisticsQuantity::type, {})
        .field<int>(&KvStatisticsQuantity::year, 0)
        .field<int>(&KvStatisticsQuantity::month, 0)
        .field<int>(&KvStatisticsQuantity::week, 0)
        .field<int>(&KvStatisticsQuantity::day, 0)
        .field<int>(&KvStatisticsQuantity::total, 0);
    QCOMPARE(quantity.complaint(6), QString());
}

// Callers fill the conditions; a fresh one holds what the header says.
void KvPlanRecordsLayoutTest::planCondition()
{
    Layout<KvPlanCondition> layout;
    layout.field<bool>(&KvPlanCondition::allTime, false)
        .field<QDateTime>(&KvPlanCondition::startDate, {})
        .field<QDateTime>(&KvPlanCondition::endDate, {})
        .field<QString>(&KvPlanCondition::name, {})
        .field<QString>(&KvPlanCondition::category, {});
    QCOMPARE(layout.complaint(5), QString());
}

void KvPlanRecordsLayoutTest::planNodeCondition()
{
    Layout<KvPlanNodeCondition> layout;
    layout.field<bool>(&KvPlanNodeCondition::allTime, false)
        .field<QDateTime>(&KvPlanNodeCondition::startDate, {})
        .field<QDateTime>(&KvPlanNodeCondition::endDate, {})
        .field<QString>(&KvPlanNodeCondition::name, {})
        .field<int>(&KvPlanNodeCondition::listType, 0)
        .field<bool>(&KvPlanNodeCondition::withoutPlan, false)
        .field<QString>(&KvPlanNodeCondition::planId, {})
        .field<QString>(&KvPlanNodeCondition::userId, {})
        .field<QString>(&KvPlanNodeCondition::relativeUserId, {})
        .field<int>(&KvPlanNodeCondition::finishState, 0)
        .field<QString>(&KvPlanNodeCondition::category, {});
    QCOMPARE(layout.complaint(11), QString());
}

QTEST_APPLESS_MAIN(KvPlanRecordsLayoutTest)
#include "KvPlanRecordsLayoutTest.moc"
