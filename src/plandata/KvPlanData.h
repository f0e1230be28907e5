#pragma once

#include <KvPlanData/KvPlanDataExport.h>
#include <model/KvPlanRecords.h>

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
/// What was read or written successfully is kept in caches, as copies; a look-up hands out a copy. No lock is
/// taken: use the object from one thread. Only its creation is thread-safe.
class KVPLANDATA_EXPORT KvPlanData
{
public:
    /// The object, created by the first call and destroyed at process exit.
    static KvPlanData* instance();

    /// An independent snapshot of the caches and rights; it shares their data until one side writes.
    KvPlanData(const KvPlanData& other);
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
    bool createPlan(KvPlan& plan);

    /// Sends what differs between @p plan and the plan cached under its id, and caches the service's answer.
    ///
    /// Blocks, unless nothing differs: @p plan then becomes the cached record, without a request. Two hosts
    /// that change different fields of a plan both keep their change. Read the plan first: against a plan
    /// that is not cached an empty one is compared and put into the cache, where it stays after a failure; as
    /// an empty plan has no id, the service then refuses the request.
    /// @return false when the request failed; @p plan is then overwritten (as a rule empty).
    bool updatePlan(KvPlan& plan);

    /// Deletes a plan, with its nodes, on the service. Blocks. The caches keep their copies, so that names
    /// stay known.
    bool deletePlan(const QString& id);

    /// Has the service copy a plan with its nodes, reads the copy into @p plan and caches it under its own
    /// id. Blocks. @return false when the request failed; @p plan is then overwritten and no cache changes.
    bool copyPlanById(const QString& id, KvPlan& plan);

    /// Adds the current project's plans to @p plans and sorts the whole list by name in natural order, case
    /// ignored ("Plan 2" before "plan 10"); plans of equal names stand in no defined order.
    ///
    /// Blocks. All four caches are emptied first, also when the request then fails; then every plan of the
    /// list is cached under its id. @param flag has no effect; it stays for existing hosts.
    /// @return false when the request failed; @p plans is sorted all the same.
    bool getAllPlan(QList<KvPlan>& plans, bool flag);

    /// The names of all cached plans, in ascending order of their ids, empty and repeated ones included.
    /// Never asks the service: before any read the list is empty.
    QStringList getAllPlanNames();

    /// How many plans of the current project meet @p condition. Blocks; caches nothing.
    /// @return false when the request failed; @p count is then 0.
    bool getPlanRangeCount(const KvPlanCondition& condition, int& count);

    /// Adds a page of the plans that meet @p condition to @p plans: @p limit of them after the first @p skip.
    ///
    /// Blocks. On success the plan cache, and no other, is emptied and filled with the page.
    /// @return true, also when the request failed: existing hosts tell a failure by the unchanged list.
    bool getPlanRangeData(const KvPlanCondition& condition, int skip, int limit, QList<KvPlan>& plans);

    /// Reads one plan, with its nodes, from the service and keeps a copy in the plan cache under @p id.
    ///
    /// Blocks. Always asks the service, also for a plan in the cache.
    /// @return false when the request failed; @p plan is then overwritten by what the reply held (as a rule
    /// empty; only `mppFilePath` stays) and no cache changes.
    bool getPlanById(const QString& id, KvPlan& plan);

    /// Copies the plan cached under @p id into @p plan, without a request, even when the service has
    /// meanwhile changed or deleted it; a plan that is not cached is read as by getPlanById().
    bool getPlanFromCacheById(const QString& id, KvPlan& plan);

    /// The name of the plan cached under @p id; a null string when there is none. Never asks the service, so
    /// a plan is nameless here until this process has read it.
    QString getPlanName(const QString& id) const;

    // Plan nodes

    /// Copies the plan node cached under @p id into @p node, without a request; a node that is not cached is
    /// read from the service, with its documents, and cached under @p id.
    ///
    /// Pass a freshly constructed node: predecessors that are read are added to those that @p node holds.
    /// @return false when the request failed; @p node is then overwritten and no cache changes.
    bool getPlanNodeFromCacheById(const QString& id, KvPlanNode& node);

private:
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
