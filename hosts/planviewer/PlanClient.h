#pragma once

#include "PlanFailure.h"

#include <model/KvPlanRecords.h>

#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <functional>

class QWidget;

/// What a save would do; see KvPlanData::distributePlanNodes().
struct SaveList
{
    QList<KvPlanNode> toCreate;
    QList<KvPlanNode> toUpdate;
    bool isEmpty() const { return toCreate.isEmpty() && toUpdate.isEmpty(); }
};

/// What the user may do in the current project and a category.
struct PlanRights
{
    bool mayCreate = false;
    bool mayEdit = false;
    bool mayDelete = false;
    bool mayReadAll = false;
    bool mayExport = false;
};

/// The one class that talks to the library. Its requests block until they are over, while the windows stay
/// painted; meanwhile mouse and keyboard reach no widget, so that nothing is sent twice, except that a window
/// can be closed. After 300 ms it tells that it waits. A request that fails is told, and sent again as long
/// as the user wants that; all answer whether it was done in the end.
class PlanClient : public QObject
{
    Q_OBJECT

public:
    explicit PlanClient(QObject* parent = nullptr);
    ~PlanClient() override;

    /// Who tells the user of a failure and answers whether to try again. Without one nothing is tried again.
    void setAskAgain(std::function<bool(const PlanFailure& failure)> askAgain)
    {
        m_askAgain = std::move(askAgain);
    }

    bool isBusy() const { return m_isBusy; }
    /// A dialog that mouse and keyboard reach even while a request waits; null: none. It must send nothing.
    void setQuestion(QWidget* dialog) { m_question = dialog; }
    /// From now on nothing is sent, told or tried again; what is under way ends by itself or with the
    /// application.
    void close() { m_isClosing = true; }

    /// Plans that meet @p condition, in natural order of their names. The plan cache is filled anew.
    bool readPlans(const KvPlanCondition& condition, QList<KvPlan>& plans);
    bool readPlan(const QString& id, KvPlan& plan);
    bool createPlan(KvPlan& plan);
    bool renamePlan(const QString& id, const QString& name);
    bool copyPlan(const QString& id, KvPlan& plan);
    bool deletePlan(const QString& id, const QString& name);

    bool readNodes(const QString& planId, QList<KvPlanNode>& nodes);
    enum class Saved
    {
        Nothing,
        Unknown, ///< the new tasks or not, as no answer told; none of the changed ones
        Created, ///< the new tasks, but not the changed ones
        All
    };
    /// Creates and updates what changes() told, in two requests, each done as a whole or not at all and tried
    /// again by itself. No task is created twice: when no answer told whether the new ones were, trying again
    /// reads the plan first and leaves out those that are there.
    Saved saveNodes(const QString& planId, const SaveList& list);
    /// What saveNodes() would do; asks nobody.
    SaveList changes(const QList<KvPlanNode>& nodes) const;
    bool hasChanged(const QList<KvPlanNode>& nodes) const;
    /// The tasks of @p nodes as they were read, in the same order; asks nobody as long as all were.
    QList<KvPlanNode> asRead(const QList<KvPlanNode>& nodes) const;

    bool readResponses(const QString& nodeId, QList<KvPlanNodeResponse>& responses);
    bool reportProgress(const QString& nodeId, KvPlanNodeResponse& response);
    bool readStatistics(const QString& category, KvPlanStatistics& statistics);
    bool readQuantities(const QString& category, const QString& period,
                        QList<KvStatisticsQuantity>& quantities);

    bool readRights(const QString& category);
    PlanRights rights() const;

    /// Keys of the hidden columns, which the service keeps for the user.
    bool readHiddenColumns(QStringList& keys);
    bool saveHiddenColumns(const QStringList& keys);

Q_SIGNALS:
    void busyChanged(bool isBusy);
    /// 300 ms into a request: what is waited for. Empty when the wait is over.
    void waitingFor(const QString& task);
    /// The user pressed the key that closes the application.
    void quitRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    enum class Kind
    {
        Reads,
        Writes
    };

    bool run(const QString& task, Kind kind, const std::function<bool()>& call);
    bool attempt(const QString& task, const std::function<bool()>& call);
    bool leaveOutCreated(const QString& planId, QList<KvPlanNode>& toCreate);

    std::function<bool(const PlanFailure&)> m_askAgain;
    KvNetworkReport m_failure;
    QWidget* m_question = nullptr;
    QTimer m_patience;
    bool m_hasFailed = false;
    bool m_isBusy = false;
    bool m_isWaitShown = false;
    bool m_isClosing = false;
};
