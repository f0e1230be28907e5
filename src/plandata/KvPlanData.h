#pragma once

#include <KvPlanData/KvPlanDataExport.h>
#include <model/KvPlanRecords.h>

#include <QtCore/QMap>
#include <QtCore/QString>

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

    /// Reads one plan, with its nodes, from the service and keeps a copy in the plan cache under @p id.
    ///
    /// Blocks. Always asks the service, also for a plan in the cache.
    /// @return false when the request failed; @p plan is then overwritten by what the reply held (as a rule
    /// empty; only `mppFilePath` stays) and no cache changes.
    bool getPlanById(const QString& id, KvPlan& plan);

    /// Copies the plan cached under @p id into @p plan, without a request, even when the service has
    /// meanwhile changed or deleted it; a plan that is not cached is read as by getPlanById().
    bool getPlanFromCacheById(const QString& id, KvPlan& plan);

    /// Copies the plan node cached under @p id into @p node, without a request; a node that is not cached is
    /// read from the service, with its documents, and cached under @p id.
    ///
    /// Pass a freshly constructed node: predecessors that are read are added to those that @p node holds.
    /// @return false when the request failed; @p node is then overwritten and no cache changes.
    bool getPlanNodeFromCacheById(const QString& id, KvPlanNode& node);

    /// The name of the plan cached under @p id; a null string when there is none. Never asks the service, so
    /// a plan is nameless here until this process has read it.
    QString getPlanName(const QString& id) const;

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
