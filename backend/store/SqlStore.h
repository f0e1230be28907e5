#pragma once

#include "PlanCache.h"
#include "SqlDatabase.h"

#include <QSet>

namespace PlanService {

class PatternSearch;
struct SqlStatement;

/// The store on a database that speaks SQL, whichever it is.
class SqlStore final : public Store
{
public:
    /// Opens an up-to-date database of ours; see openStore. @param texts is shared with the other stores of
    /// this database, and may be missing.
    explicit SqlStore(std::unique_ptr<SqlDatabase> database, std::shared_ptr<PlanCache> texts = nullptr);

    int schemaVersion() override;

    std::optional<Ownership> planOwnership(const QString& planId) override;
    std::shared_ptr<PlanText> planText(const QString& planId, const QString& version) override;
    int planNodeCount(const QString& planId) override;
    std::optional<PlanRecord> plan(const QString& planId) override;
    bool hasPlanNamed(const QString& projectId, const QString& name) override;
    JsonPieces planListJson(const PlanQuery& query) override;
    int planCount(const PlanQuery& query) override;
    std::optional<Ownership> planNodeOwnership(const QString& planNodeId) override;
    JsonPieces planNodeJson(const QString& planNodeId, bool withDocuments) override;
    std::optional<PlanNodeRecord> planNode(const QString& planNodeId) override;
    QHash<QString, PlanNodeRecord> planNodes(const QStringList& ids) override;
    JsonPieces planNodesJson(const QStringList& ids) override;
    JsonPieces planNodeListJson(const PlanNodeQuery& query) override;
    int planNodeListCount(const PlanNodeQuery& query) override;
    int lastRow(const QString& projectId, const QString& planId) override;

    QVector<NodeCount> nodeCounts(const NodeScope& scope, const QString& today) override;
    QVector<DayCount> finishedPerDay(const NodeScope& scope) override;

    JsonPieces responseListJson(const QString& planNodeId, bool withDocuments) override;
    JsonPieces responseJson(const QString& responseId) override;
    bool hasResponse(const QString& planNodeId, const QString& responseId) override;
    void insertResponse(const ResponseRecord& response) override;
    QStringList missingDocuments(const QString& projectId, const QStringList& ids) override;

    std::optional<TaskStateRecord> taskState(const QString& taskId) override;
    JsonPieces taskStateListJson(const TaskStateQuery& query) override;
    int taskStateCount(const TaskStateQuery& query) override;
    void putTaskState(const TaskStateRecord& state) override;

    bool hasTokens() override;
    QList<TokenRecord> tokensByHashBeginning(const QByteArray& beginning) override;
    QList<TokenRecord> tokens() override;
    qint64 addToken(const TokenRecord& token) override;
    bool revokeToken(qint64 tokenId, const QString& revokedAt) override;
    QList<RightsRecord> rights(qint64 tokenId) override;
    void setRights(qint64 tokenId, const RightsRecord& rights) override;

    QByteArray userSetting(const QString& userId, const QString& key) override;
    void setUserSetting(const QString& userId, const QString& key, const QByteArray& value) override;

    void insertPlan(const PlanRecord& plan) override;
    void insertPlanNode(const PlanNodeRecord& node) override;
    bool addPlanNode(const PlanNodeRecord& node) override;
    QVector<int> addPlanNodes(const QVector<PlanNodeRecord>& nodes, int first, int count) override;
    void insertDocument(const DocumentRecord& document) override;
    QStringList categoriesOfNodes(const QString& planId) override;
    void updatePlan(const PlanRecord& plan) override;
    void moveNodes(const QString& planId, const QString& fromCategory, const QString& toCategory) override;
    void updatePlanNode(const PlanNodeRecord& node) override;
    void updatePlanNodes(const QVector<PlanNodeRecord>& nodes) override;
    void keepPlanNodes(const QString& planId, const QStringList& ids) override;
    bool removePlanNode(const QString& planNodeId) override;
    void copyPlanNodes(const QString& fromPlanId, const PlanRecord& plan, const QString& idPrefix) override;
    bool removePlan(const QString& planId) override;

    void begin() override;
    void commit() override;
    void rollback() noexcept override;
    void tidyUp() noexcept override { m_database->tidyUp(); }

private:
    /// Rows of one statement. @return the places as addPlanNodes().
    QVector<int> addTogether(const QVector<PlanNodeRecord>& nodes, int first, int count);
    void appendNodes(const QString& planId, JsonPieces& pieces);
    /// Notes that what planText() gives of the plan changes; an empty id stands for no plan.
    void touch(const QString& planId);
    void renewVersion(const QString& planId);
    void forgetTouched() noexcept;
    template<typename Query, typename Answer>
    auto searched(const Query& query, SqlStatement (*rows)(const QString&, const Query&),
                  const Answer& answer) -> decltype(answer(query));
    /// Throws StoreTooSlow.
    void lookFor(PatternSearch& search, const SqlStatement& candidates);
    JsonPieces statementJson(const SqlStatement& statement);
    int rowCount(const SqlStatement& statement);
    /// The first column of every row, which is JSON text, as one array.
    JsonPieces rowsJson(QSqlQuery& rows);
    /// For the end of a SELECT: keeps others from changing the row, while this store writes.
    QString changedByUs() const;
    /// The same, but only the row's end is kept away.
    QString keptByUs() const;

    std::unique_ptr<SqlDatabase> m_database;
    std::shared_ptr<PlanCache> m_texts;
    QSet<QString> m_touched;
    QString m_lastTouched;
    bool m_writing = false;
};

} // namespace PlanService
