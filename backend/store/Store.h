#pragma once

#include "../Failure.h"
#include "../filters/Filter.h"
#include "Progress.h"
#include "Visibility.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>
#include <optional>

namespace PlanService {

/// The database refused something that the service asked of it.
class StoreError : public Failure
{
public:
    using Failure::Failure;
};

/// Another process holds the database for longer than one waits; the same call may succeed later.
class StoreBusy : public StoreError
{
public:
    using StoreError::StoreError;
};

/// Others changed the same at the same time. Nothing was kept; the same call may succeed at once.
class StoreConflict : public StoreBusy
{
public:
    using StoreBusy::StoreBusy;
};

/// The database does not answer any more. Nothing was kept; a later call connects anew.
class StoreLost : public StoreBusy
{
public:
    using StoreBusy::StoreBusy;
};

/// The database went while it was told to keep what was written: it may have done so or not.
class StoreUnsure : public StoreError
{
public:
    using StoreError::StoreError;
};

/// The database is a copy that takes no changes.
class StoreReadOnly : public StoreError
{
public:
    using StoreError::StoreError;
};

/// A search did not end in the time that one may take.
class StoreTooSlow : public StoreError
{
public:
    using StoreError::StoreError;
};

/// A plan without its nodes.
struct PlanRecord
{
    QString id;
    QString projectId;
    QString category;
    QString name;
    QString createdAt; ///< site wall-clock text, empty: not set; the same holds for every date here
    QString updatedAt;
    QString createdBy;
    QByteArray document; ///< the plan's JSON object as it goes out, without "tasks"
};

/// A node beside its JSON document; the fields repeat those values of the document that queries look at.
struct PlanNodeRecord
{
    QString id;
    QString planId; ///< empty: the node belongs to no plan
    QString projectId;
    QString category;
    QString name;
    int rowNumber = -1; ///< "id" on the wire: position inside the plan
    int uniqueId = -1;
    int parentTaskId = -1; ///< uniqueId of the parent; 0 or less: top level
    QString startDate;
    QString finishDate;
    QString actualStartDate;
    QString actualFinishDate;
    QString createdAt;
    QString updatedAt;
    QString createdBy;
    QString people; ///< responsible, executing and cooperating users; see peopleText()
    QByteArray
        document; ///< the node's JSON object without "planName", "milestone", "summary" and "documents"
};

/// A list of users as one text that one user is looked up in: each name between line ends.
inline QString peopleText(const QStringList& users)
{
    QString text = QStringLiteral("\n");
    for (const QString& user : users) {
        text += QString(user)
                    .replace(QLatin1Char('\\'), QLatin1String("\\\\"))
                    .replace(QLatin1Char('\n'), QLatin1String("\\n")) +
                QLatin1Char('\n');
    }
    return text;
}

/// The names in such a text, a name once for each list that it is in.
inline QStringList peopleIn(const QString& text)
{
    QStringList users = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (QString& user : users) {
        // A line end was written as \n, and each backslash as two.
        for (int i = user.indexOf(QLatin1Char('\\')); i >= 0; i = user.indexOf(QLatin1Char('\\'), i + 1)) {
            const bool lineEnd = user.midRef(i + 1, 1) == QLatin1String("n");
            user.replace(i, 2, lineEnd ? QLatin1Char('\n') : QLatin1Char('\\'));
        }
    }
    return users;
}

/// A document attached to nodes or responses.
struct DocumentRecord
{
    QString id;
    QString projectId;
    QByteArray document;
};

/// Where a plan or a node belongs and whose it is: what a decision on access needs.
struct Ownership
{
    QString projectId;
    QString category;
    QStringList users; ///< everybody who counts as "own": the creator, and for nodes all users named on it
    QString planVersion = {}; ///< of a plan, as planText() takes it; empty for nodes
};

/// Asks for plans of one project, in the order of their creation and, within the same instant, their ids.
struct PlanQuery
{
    QString projectId;
    std::optional<QString> category; ///< nothing: every category
    Visibility visible;
    Filter where;
    int skip = 0;
    int limit = -1; ///< -1: all
};

enum class PlanNodeOrder
{
    Plan,       ///< by plan, then by row, then by id
    FinishDate, ///< by planned finish, then by id; nodes without one come last
};

/// Asks for nodes of one project.
struct PlanNodeQuery
{
    QString projectId;
    std::optional<QString> planId;   ///< nothing: of every plan and of none; empty: nodes without a plan
    std::optional<QString> category; ///< nothing: every category
    Visibility visible;
    Filter where;
    std::optional<QString> worker; ///< responsible, executing or cooperating
    std::optional<QString> creator;
    bool unstart = true; ///< those that have neither begun nor finished, by their actual dates
    bool processing = true;
    bool finished = true;
    PlanNodeOrder order = PlanNodeOrder::Plan;
    bool withDocuments = false;
    int skip = 0;
    int limit = -1; ///< -1: all
};

/// A bearer token as the store knows it; the token itself is stored nowhere.
struct TokenRecord
{
    qint64 id = 0;
    QByteArray hash;
    QString userId;
    QString createdAt; ///< UTC, as yyyy-MM-ddTHH:mm:ssZ; the same holds for the next two
    QString revokedAt; ///< empty: not revoked
    QString expiresAt; ///< from this second on it is good no more; empty: good for ever
};

/// What a token may do in one project. An empty category stands for every category without an entry of its
/// own.
struct RightsRecord
{
    QString projectId;
    QString category;
    QString read; ///< "all", "own" or empty
    bool create = false;
    bool edit = false;
    bool remove = false;
    bool exportPlans = false;
};

/// JSON text in pieces that follow each other; a list of any length never has to stand in one allocation.
using JsonPieces = QList<QByteArray>;

/// A plan as it goes out. One object may serve many replies at a time; the pieces do not change any more.
struct PlanText
{
    JsonPieces pieces;
    std::weak_ptr<void> lease =
        {}; ///< of what it takes while replies with it are on their way; see ReplyMemory
};

/// Everything the service asks of a database, free of any driver's words. One object serves one thread; the
/// calls block, and throw StoreError when the database fails.
class Store
{
public:
    Store() = default;
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;
    virtual ~Store() = default;

    /// Cheap proof that the database answers. @return the schema's version.
    virtual int schemaVersion() = 0;

    /// @return nothing when there is no such plan.
    virtual std::optional<Ownership> planOwnership(const QString& planId) = 0;
    /// The plan with all its nodes under "tasks", in row order, of one moment. @param version as
    /// planOwnership() told it just before, or empty; where the text of that version is kept the database is
    /// not asked again.
    /// @return nothing when there is no such plan.
    virtual std::shared_ptr<PlanText> planText(const QString& planId, const QString& version) = 0;
    /// The same from the database. @return an empty list when there is no such plan.
    JsonPieces planJson(const QString& planId)
    {
        const std::shared_ptr<PlanText> text = planText(planId, QString());
        return text ? text->pieces : JsonPieces();
    }
    virtual int planNodeCount(const QString& planId) = 0;
    /// @return nothing when there is no such plan.
    virtual std::optional<PlanRecord> plan(const QString& planId) = 0;
    virtual bool hasPlanNamed(const QString& projectId, const QString& name) = 0;
    /// The plans as a JSON array, without their nodes, read from one snapshot. Throws StoreTooSlow.
    virtual JsonPieces planListJson(const PlanQuery& query) = 0;
    /// How many plans there are; skip and limit do not count. Throws StoreTooSlow.
    virtual int planCount(const PlanQuery& query) = 0;

    /// @return nothing when there is no such node.
    virtual std::optional<Ownership> planNodeOwnership(const QString& planNodeId) = 0;
    /// @param withDocuments embeds the documents that "documentIds" names, in that order, under "documents".
    /// @return an empty list when there is no such node.
    virtual JsonPieces planNodeJson(const QString& planNodeId, bool withDocuments) = 0;
    /// The nodes with these ids in this order, as a JSON array; ids without a node are passed over.
    virtual JsonPieces planNodesJson(const QStringList& ids) = 0;
    /// The nodes as a JSON array, read from one snapshot. Throws StoreTooSlow.
    virtual JsonPieces planNodeListJson(const PlanNodeQuery& query) = 0;
    /// How many nodes there are; skip and limit do not count. Throws StoreTooSlow.
    virtual int planNodeListCount(const PlanNodeQuery& query) = 0;
    /// The largest row number of the plan's nodes, 0 when there is none above it; an empty id asks for the
    /// project's nodes without a plan.
    virtual int lastRow(const QString& projectId, const QString& planId) = 0;
    /// The node as far as a change of it needs: id, plan, project, category, row, stamps, document.
    /// @return nothing when there is no such node.
    virtual std::optional<PlanNodeRecord> planNode(const QString& planNodeId) = 0;
    /// The same for many nodes, by id; those that are not there are left out.
    virtual QHash<QString, PlanNodeRecord> planNodes(const QStringList& ids) = 0;

    /// How many nodes there are by state and situation; those that no node is in are left out.
    /// @param today yyyy-MM-dd of the site's clock.
    virtual QVector<NodeCount> nodeCounts(const NodeScope& scope, const QString& today) = 0;
    /// How many nodes were finished on which day, days in order.
    virtual QVector<DayCount> finishedPerDay(const NodeScope& scope) = 0;

    /// The node's responses as a JSON array, in the order of their creation.
    /// @param withDocuments embeds the documents that "documentIds" names, in that order, under "documents".
    virtual JsonPieces responseListJson(const QString& planNodeId, bool withDocuments) = 0;
    /// @return the response with its documents, an empty list when there is no such response.
    virtual JsonPieces responseJson(const QString& responseId) = 0;
    virtual bool hasResponse(const QString& planNodeId, const QString& responseId) = 0;
    virtual void insertResponse(const ResponseRecord& response) = 0;
    /// Those of the ids that no document of the project has.
    virtual QStringList missingDocuments(const QString& projectId, const QStringList& ids) = 0;

    /// @return nothing when the task has no state.
    virtual std::optional<TaskStateRecord> taskState(const QString& taskId) = 0;
    /// The states as a JSON array, in the order of their creation. Throws StoreTooSlow.
    virtual JsonPieces taskStateListJson(const TaskStateQuery& query) = 0;
    /// How many states there are. Throws StoreTooSlow.
    virtual int taskStateCount(const TaskStateQuery& query) = 0;
    /// Adds the state, or replaces the one that its task has.
    virtual void putTaskState(const TaskStateRecord& state) = 0;

    /// True as soon as a token was ever created, revoked ones included: revoking the last must not open the
    /// service.
    virtual bool hasTokens() = 0;
    /// @return the tokens whose hash begins with these bytes, revoked and expired ones too. The store looks
    /// for the beginning only, since how long an index takes tells what stands in it; see findToken().
    virtual QList<TokenRecord> tokensByHashBeginning(const QByteArray& beginning) = 0;
    virtual QList<TokenRecord> tokens() = 0;
    /// Adds the token; @p token.id is given by the store. @return the id.
    virtual qint64 addToken(const TokenRecord& token) = 0;
    /// @return false when there is no such token; revoking twice keeps the first time.
    virtual bool revokeToken(qint64 tokenId, const QString& revokedAt) = 0;
    virtual QList<RightsRecord> rights(qint64 tokenId) = 0;
    /// Adds what the token may do in one project and category, or replaces what stood there.
    virtual void setRights(qint64 tokenId, const RightsRecord& rights) = 0;

    /// @return the stored JSON value, empty when nothing is stored.
    virtual QByteArray userSetting(const QString& userId, const QString& key) = 0;
    virtual void setUserSetting(const QString& userId, const QString& key, const QByteArray& value) = 0;

    /// What changes plans and nodes gives each plan that it touches another version, at commit(). It has to
    /// stand between begin() and commit(), or a crash may leave the change without its version.
    virtual void insertPlan(const PlanRecord& plan) = 0;
    virtual void insertPlanNode(const PlanNodeRecord& node) = 0;
    /// The same, unless another node has the id. @return false then, and nothing is inserted.
    virtual bool addPlanNode(const PlanNodeRecord& node) = 0;
    /// The same for some of many nodes, in as few steps as the database allows. @return the places of those
    /// whose id another node has, and which were not inserted.
    virtual QVector<int> addPlanNodes(const QVector<PlanNodeRecord>& nodes, int first, int count) = 0;
    virtual void insertDocument(const DocumentRecord& document) = 0;

    /// Every category that the plan's nodes have.
    virtual QStringList categoriesOfNodes(const QString& planId) = 0;
    /// Writes every field of the plan that has this id.
    virtual void updatePlan(const PlanRecord& plan) = 0;
    /// Moves the plan's nodes of one category into another; their stamps stay.
    virtual void moveNodes(const QString& planId, const QString& fromCategory, const QString& toCategory) = 0;
    /// Writes every field of the node that has this id.
    virtual void updatePlanNode(const PlanNodeRecord& node) = 0;
    /// The same for nodes with an id each of its own.
    virtual void updatePlanNodes(const QVector<PlanNodeRecord>& nodes) = 0;
    /// Removes the plan's nodes whose ids are not among @p ids.
    virtual void keepPlanNodes(const QString& planId, const QStringList& ids) = 0;
    /// @return false when there is no such node.
    virtual bool removePlanNode(const QString& planNodeId) = 0;
    /// Copies the nodes of @p fromPlanId into @p plan: with ids made of @p idPrefix and 8 hex digits in row
    /// order, without GUIDs of their own, and with the plan's stamp. Numbers inside the plan stay.
    virtual void copyPlanNodes(const QString& fromPlanId, const PlanRecord& plan,
                               const QString& idPrefix) = 0;
    /// Removes the plan and its nodes. @return false when there is no such plan.
    virtual bool removePlan(const QString& planId) = 0;

    /// What is written between begin and commit becomes visible at once or, after rollback or a crash, not at
    /// all.
    virtual void begin() = 0;
    virtual void commit() = 0;
    virtual void rollback() noexcept = 0;

    /// Does what can wait until the client has its answer. Not to be called within a transaction.
    virtual void tidyUp() noexcept = 0;
};

/// A transaction that is undone unless it reaches commit().
class Transaction
{
public:
    explicit Transaction(Store& store)
        : m_store(store)
    {
        m_store.begin();
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction()
    {
        if (!m_done) {
            m_store.rollback();
        }
    }
    void commit()
    {
        m_store.commit();
        m_done = true;
    }

private:
    Store& m_store;
    bool m_done = false;
};

} // namespace PlanService
