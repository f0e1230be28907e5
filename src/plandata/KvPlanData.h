#pragma once

#include <KvPlanData/KvPlanDataExport.h>
#include <model/KvPlanRecords.h>

#include <QtCore/QJsonObject>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

/// The one object through which a host reads and writes schedule data.
///
/// Every operation that asks the service blocks its caller until the reply has come, or until the network
/// library gives up waiting. Events of the thread are handled meanwhile, so an operation may be entered again
/// from a timer or an event handler; the inner call ends first, then the outer one, each with its own reply.
///
/// Failure is the returned false and nothing else. The signal `NetworkManager::requestFinished` tells why.
///
/// Each operation names its request, below the base address; {project} is the current project of KvSoftBase.
/// One that names none asks nobody, or does so by way of another operation.
///
/// What was read or written successfully is kept in caches, as copies; a look-up hands out a copy. No lock is
/// taken: use the object from one thread. Only its creation is thread-safe.
class KVPLANDATA_EXPORT KvPlanData
{
public:
    /// The object, created by the first call and destroyed at process exit.
    static KvPlanData* instance();

    /// An independent snapshot of the caches and rights; it shares their data until one side writes.
    KvPlanData(const KvPlanData& other);
    /// Takes over the caches and rights of @p other, as a copy does.
    KvPlanData& operator=(const KvPlanData& other);

    /// Empties the caches. The user's rights stay as they are.
    void clear();

    // Plans

    /// Creates @p plan on the service, with its nodes, and caches what the service made of it under its new
    /// id.
    ///
    /// Blocks. A plan without a project is created in the current one. On success @p plan holds the service's
    /// record, with its id.
    /// @return false when the request failed; @p plan is then overwritten (as a rule empty) and no cache
    /// changes.
    ///
    /// Request: `POST task-service/plans`.
    bool createPlan(KvPlan& plan);

    /// Sends what differs between @p plan and the plan cached under its id, and caches the service's answer.
    ///
    /// Blocks, unless nothing differs: @p plan then becomes the cached record, without a request. Two hosts
    /// that change different fields of a plan both keep their change. Read the plan first: against a plan
    /// that is not cached an empty one is compared and put into the cache, where it stays after a failure; as
    /// an empty plan has no id, the service then refuses the request.
    /// @return false when the request failed; @p plan is then overwritten (as a rule empty).
    ///
    /// Request: `PUT task-service/plans/{id}`.
    bool updatePlan(KvPlan& plan);

    /// Deletes a plan, with its nodes, on the service. Blocks. The caches keep their copies, so that names
    /// stay known.
    ///
    /// Request: `DELETE task-service/plans/{id}`.
    bool deletePlan(const QString& id);

    /// Has the service copy a plan with its nodes, reads the copy into @p plan and caches it under its own
    /// id. Blocks. @return false when the request failed; @p plan is then overwritten and no cache changes.
    ///
    /// Request: `PUT task-service/plans/{id}/copy`.
    bool copyPlanById(const QString& id, KvPlan& plan);

    /// Adds the current project's plans to @p plans and sorts the whole list by name in natural order, case
    /// ignored ("Plan 2" before "plan 10"); plans of equal names stand in no defined order.
    ///
    /// Blocks. All four caches are emptied first, also when the request then fails; then every plan of the
    /// list is cached under its id. @param flag has no effect; it stays for existing hosts.
    /// @return false when the request failed; @p plans is sorted all the same.
    ///
    /// Request: `GET task-service/projects/{project}/plans`.
    bool getAllPlan(QList<KvPlan>& plans, bool flag);

    /// The names of all cached plans, in ascending order of their ids, empty and repeated ones included.
    /// Never asks the service: before any read the list is empty.
    QStringList getAllPlanNames();

    /// How many plans of the current project meet @p condition. Blocks; caches nothing.
    /// @return false when the request failed; @p count is then 0.
    ///
    /// Request: `GET task-service/projects/{project}/plans?where=…&only_count=true`.
    bool getPlanRangeCount(const KvPlanCondition& condition, int& count);

    /// Adds a page of the plans that meet @p condition to @p plans: @p limit of them after the first @p skip.
    ///
    /// Blocks. On success the plan cache, and no other, is emptied and filled with the page.
    /// @return true, also when the request failed: existing hosts tell a failure by the unchanged list.
    ///
    /// Request: `GET task-service/projects/{project}/plans?where=…&skip=…&limit=…`.
    bool getPlanRangeData(const KvPlanCondition& condition, int skip, int limit, QList<KvPlan>& plans);

    /// Reads one plan, with its nodes, from the service and keeps a copy in the plan cache under @p id.
    ///
    /// Blocks. Always asks the service, also for a plan in the cache.
    /// @return false when the request failed; @p plan is then overwritten by what the reply held (as a rule
    /// empty; only `mppFilePath` stays) and no cache changes.
    ///
    /// Request: `GET task-service/plans/{id}`.
    bool getPlanById(const QString& id, KvPlan& plan);

    /// Copies the plan cached under @p id into @p plan, without a request, even when the service has
    /// meanwhile changed or deleted it; a plan that is not cached is read as by getPlanById().
    bool getPlanFromCacheById(const QString& id, KvPlan& plan);

    /// The name of the plan cached under @p id; a null string when there is none. Never asks the service, so
    /// a plan is nameless here until this process has read it.
    QString getPlanName(const QString& id) const;

    // Plan nodes

    /// Creates @p node on the service and caches what the service made of it under its new id.
    ///
    /// Blocks. A node without a project is created in the current one; its `planId` names its plan, an empty
    /// one leaves it outside any plan. On success @p node holds the service's record, with its id; the
    /// predecessors of the reply are added to those that @p node holds.
    /// @return false when the request failed; @p node is then overwritten (as a rule empty) and no cache
    /// changes.
    ///
    /// Request: `POST task-service/planNodes`.
    bool createPlanNode(KvPlanNode& node);

    /// Creates all @p nodes in a plan, in one request that the service carries out whole or not at all, and
    /// caches each of the service's records under its id.
    ///
    /// Blocks. Every node is created in the current project, whatever its `projectId` says.
    /// @param[in,out] nodes replaced by the service's records, in the order of its reply.
    /// @return false when the request failed; @p nodes is then empty and no cache changes.
    ///
    /// Request: `POST task-service/plans/{planId}/planNodes`.
    bool createPlanNodes(const QString& planId, QList<KvPlanNode>& nodes);

    /// Sends what differs between @p node and the node cached under its id, and caches the service's answer.
    ///
    /// Blocks, unless nothing differs: @p node then becomes the cached record, without a request. Two hosts
    /// that change different fields of a node both keep their change. The predecessors of the reply are added
    /// to those that @p node holds. Read the node first: against a node that is not cached an empty one is
    /// compared and put into the cache, where it stays after a failure; as an empty node has no id, the
    /// service then refuses the request.
    /// @return false when the request failed; @p node is then overwritten (as a rule empty).
    ///
    /// Request: `PUT task-service/planNodes/{id}`.
    bool updatePlanNode(KvPlanNode& node);

    /// Sends what differs between each of @p nodes and the node cached under its id, in one request that the
    /// service carries out whole or not at all.
    ///
    /// Blocks; the request is sent also when nothing differs. The cache keeps the nodes as they were before
    /// the edit, so that hasChanged() goes on to report them: read them again to see what the service kept.
    /// A node that is not cached is sent whole, and leaves an empty entry in the cache, also after a failure.
    /// @param[in,out] nodes empty afterwards, whatever the outcome: pass a copy.
    /// @return false when the request failed.
    ///
    /// Request: `PUT task-service/planNodes`.
    bool updatePlanNodes(QList<KvPlanNode>& nodes);

    /// Deletes a node on the service. Blocks. The cache keeps its copy.
    ///
    /// Request: `DELETE task-service/planNodes/{id}`.
    bool deletePlanNodeById(const QString& id);

    /// Deletes nodes on the service, in one request, which is sent for an empty list too. Blocks. The cache
    /// keeps its copies.
    ///
    /// Request: `DELETE task-service/planNodes?queryParam=…`.
    bool deletePlanNodesByIds(const QStringList& ids);

    /// Reads one node, with its documents, from the service and keeps a copy in the node cache under @p id.
    ///
    /// Blocks. Always asks the service. Pass a freshly constructed node, as for getPlanNodeFromCacheById().
    /// @return false when the request failed; @p node is then overwritten and no cache changes.
    ///
    /// Request: `GET task-service/planNodes/{id}?expand=true`.
    bool getPlanNodeById(const QString& id, KvPlanNode& node);

    /// Copies the plan node cached under @p id into @p node, without a request; a node that is not cached is
    /// read from the service, with its documents, and cached under @p id.
    ///
    /// Pass a freshly constructed node: predecessors that are read are added to those that @p node holds.
    /// @return false when the request failed; @p node is then overwritten and no cache changes.
    bool getPlanNodeFromCacheById(const QString& id, KvPlanNode& node);

    /// Adds all nodes of a plan to @p nodes; see getPlanNodesByPlanIds().
    bool getPlanNodesByPlanId(const QString& planId, QList<KvPlanNode>& nodes);

    /// Adds all nodes of the plans to @p nodes, with their documents, and caches each under its id.
    ///
    /// Blocks. The category of the first plan, which is read and cached when it is not cached yet, is asked
    /// for in all of them: pass plans of one category. An empty list of plans sends nothing.
    /// @return true, also when the request failed: existing hosts tell a failure by the unchanged list.
    ///
    /// Request: `GET task-service/projects/{project}/planNodes?where=…&category=…&expand=true`.
    bool getPlanNodesByPlanIds(const QStringList& planIds, QList<KvPlanNode>& nodes);

    /// Adds a page of the current user's tasks that are not finished to @p nodes, the earliest planned finish
    /// first: @p limit of them after the first @p skip, of one @p category or, if empty, of all. Blocks;
    /// caches nothing.
    /// @return false when the request failed; @p nodes is then unchanged.
    ///
    /// Request: `GET task-service/projects/{project}/planNodes?type=todo&…`.
    bool getAllPlanNodes(int skip, int limit, QList<KvPlanNode>& nodes, const QString& category);

    /// How many nodes of the plan that @p condition names meet it. Blocks; caches nothing.
    /// @return false when the request failed; @p count is then 0. Without a plan id also false, without a
    /// request and with @p count untouched.
    ///
    /// Request: `GET task-service/plans/{planId}/planNodes?where=…&only_count=true`.
    bool getPlanNodeRangeCount(const KvPlanNodeCondition& condition, int& count);

    /// Adds a page of the nodes that meet @p condition to @p nodes: @p limit of them after the first @p skip.
    ///
    /// Blocks. On success the node cache is emptied, and the page is not put into it.
    /// @return true, also when the request failed or, without a plan id, was not sent: existing hosts tell a
    /// failure by the unchanged list.
    ///
    /// Request: `GET task-service/plans/{planId}/planNodes?where=…&skip=…&limit=…`.
    bool getPlanNodeRangeData(const KvPlanNodeCondition& condition, int skip, int limit,
                              QList<KvPlanNode>& nodes);

    /// Creates those of @p nodes that have no id in the plan, then sends what changed in the others, each
    /// group in one request; a group without nodes sends nothing. distributePlanNodes() tells beforehand
    /// which those are.
    ///
    /// Blocks. Nothing is deleted. No failure is told: read the nodes again, or watch
    /// `NetworkManager::requestFinished`. Cache effects as of createPlanNodes() and updatePlanNodes().
    void savePlanNodes(const QString& planId, const QList<KvPlanNode>& nodes);

    // Changes

    /// Always false. Pass the edited nodes to learn whether there is something to save.
    bool hasChanged() const;

    /// Whether savePlanNodes() would have something of @p nodes to create or to update. Never asks the
    /// service; compares as distributePlanNodes() does.
    bool hasChanged(const QList<KvPlanNode>& nodes) const;

    /// Adds the nodes without an id to @p toCreate and those that differ from the node cached under their id,
    /// or are not cached, to @p toUpdate, each in the order of @p nodes. Never asks the service.
    ///
    /// Compared are id, numbers, name, planned and actual dates, progress, the settings of the simulation,
    /// workloads, people and linked entities. A change of anything else, such as `remark` or `predecessors`,
    /// is no change here.
    /// @param toDeleteIds never touched: nodes that are missing from @p nodes are not reported.
    void distributePlanNodes(const QList<KvPlanNode>& nodes, QList<KvPlanNode>& toCreate,
                             QList<KvPlanNode>& toUpdate, QStringList& toDeleteIds) const;

    /// Adds the models that cached nodes of the plans link to to @p modelIds, in ascending order of the
    /// nodes' ids; a model is added once for each node that links to it. Never asks the service: nodes that
    /// were not read contribute nothing.
    void getPlanRelateModelInfo(const QStringList& planIds, QStringList& modelIds);

    // Progress

    /// Adds the progress responses of a node to @p responses, oldest first, with their documents. Blocks;
    /// caches nothing. @return false when the request failed; @p responses is then unchanged.
    ///
    /// Request: `GET task-service/planNodes/{planNodeId}/responses?order=createdAt&expand=true`.
    bool getPlanNodeResponses(const QString& planNodeId, QList<KvPlanNodeResponse>& responses);

    /// Reports progress on a node. Blocks; caches nothing: a node that the report moves along keeps its state
    /// in the node cache until it is read again.
    ///
    /// On success @p response holds the service's record; documents of the reply are added to those that
    /// @p response holds, and their ids to its `documentIds`.
    /// @return false when the request failed; @p response is then overwritten (as a rule empty but for its
    /// documents).
    ///
    /// Request: `POST task-service/planNodes/{planNodeId}/responses`.
    bool createPlanNodeResponse(const QString& planNodeId, KvPlanNodeResponse& response);

    /// Adds how many of the current user's tasks were finished in each @p period ("day", "week", "month" or
    /// "year") to @p quantities, of one @p category or, if empty, of all. Blocks; caches nothing.
    /// @return false when the request failed; @p quantities is then unchanged.
    ///
    /// Request: `GET task-service/projects/{project}/planNodes_quantities_statistics?…`.
    bool getPlanNodeQuantities(QList<KvStatisticsQuantity>& quantities, const QString& category,
                               const QString& period);

    /// Counts the current user's tasks by status and situation, of one @p category or, if empty, of all.
    /// Blocks; caches nothing. The name is kept as it is for existing hosts.
    /// @return false when the request failed; @p statistics is then empty.
    ///
    /// Request: `GET task-service/projects/{project}/planNodes_statistics?…`.
    bool geStatistics(const QString& category, KvPlanStatistics& statistics);

    // The current user

    /// Asks the service for the current user's rights in the current project and @p category, which the
    /// functions below then tell. Blocks for five requests. A right whose request fails stays as it was.
    ///
    /// Request: `GET task-service/projects/{project}/auth?key=…&moduleKey=plan&category=…`.
    void initAuth(const QString& category);

    /// Whether the user may create, edit, delete, read or export plans, as the last initAuth() found; false
    /// before it. What the service does with a request it decides by itself. The right to read means all
    /// plans: a user who may read their own only does not have it here.
    bool getCreateAuth();
    bool getEditAuth();   ///< as getCreateAuth()
    bool getDeleteAuth(); ///< as getCreateAuth()
    bool getReadAuth();   ///< as getCreateAuth()
    bool getExportAuth(); ///< as getCreateAuth()

    /// Reads a setting that the service keeps for the current user. Blocks; caches nothing.
    /// @param[out] value {key: setting}; empty when nothing is stored, and on failure.
    /// @return false when the request failed.
    ///
    /// Request: `GET user-service/settings/{key}`.
    bool loadSetting(const QString& key, QJsonObject& value);

    /// Stores a setting of the current user on the service. Blocks; caches nothing.
    /// @param value {"value": setting}
    /// @return false when the request failed.
    ///
    /// Request: `PUT user-service/settings/{key}`.
    bool saveSetting(const QString& key, const QJsonObject& value);

    // Metering states, kept by the state service and cached by the task (plan node) that they belong to

    /// Creates a state in the current project and caches it. Blocks. The service gives it its first state
    /// code, whatever @p state says; send one by updateMeteringState().
    /// @return false when the request failed; @p state is then overwritten (as a rule empty) and no cache
    /// changes.
    ///
    /// Request: `POST ka-rond-service/taskstates`.
    bool createMeteringState(KvMeteringState& state);

    /// Sets the state code of a task and caches the service's record. Blocks.
    /// @return false when the request failed; @p state is then overwritten (as a rule empty) and no cache
    /// changes.
    ///
    /// Request: `PUT ka-rond-service/tasks/{taskId}/taskstates`.
    bool updateMeteringState(KvMeteringState& state);

    /// Replaces @p states by those of the plans in the current project and caches each; of two states of one
    /// task the later in the list stays. Blocks; an empty list of plans is asked for too.
    /// @return false when the request failed; @p states is then empty and no cache changes.
    ///
    /// Request: `GET ka-rond-service/projects/{project}/taskstates?where=…`.
    bool getMeteringState(const QStringList& planIds, QList<KvMeteringState>& states);

    /// Copies the cached state of a task into @p state. Never asks the service.
    /// @return false, with @p state untouched, when none was read, created or updated in this process since
    /// the cache was last emptied.
    bool getPlanNodeMeteringState(const QString& taskId, KvMeteringState& state);

private:
    friend struct KvPlanDataTestAccess; // the tests' way to what no operation reads

    KvPlanData();
    ~KvPlanData();

    QMap<QString, KvPlan> m_planCache;                   // by id
    QMap<QString, KvPlanNode> m_planNodeCache;           // by id
    QMap<QString, KvMeteringState> m_meteringStateCache; // by task id, the node that the state belongs to
    // Whether a plan came by itself (true) or in a list (false). No operation reads it.
    QMap<QString, bool> m_planDetailLoaded;
    bool m_createAuth = false;
    bool m_editAuth = false;
    bool m_deleteAuth = false;
    bool m_exportAuth = false;
    bool m_readAuth = false;
};
