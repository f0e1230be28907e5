#include "PlanClient.h"

#include "CellText.h"

#include <KvNetwork/NetworkManager.h>
#include <KvPublicFun/KvPub.h>
#include <plandata/KvPlanData.h>
#include <setting/KvPlanSetting.h>

#include <QtCore/QSet>
#include <QtGui/QKeyEvent>
#include <QtGui/QWindow>
#include <QtWidgets/QApplication>
#include <QtWidgets/QWidget>

#include <algorithm>

namespace {

constexpr int patienceMs = 300;
constexpr int pageSize = 500;
constexpr int nameCells = 80; // of a name in a message

KvPlanData& facade()
{
    return *KvPlanData::instance();
}

bool isInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ContextMenu:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::Drop:
        return true;
    default:
        return false;
    }
}

} // namespace

PlanClient::PlanClient(QObject* parent)
    : QObject(parent)
{
    connect(&NetworkManager::instance(), &NetworkManager::requestFinished, this,
            [this](const KvNetworkReport& report) {
                if (report.category == KvNetworkReport::Ok)
                    return;
                m_failure = report;
                m_hasFailed = true;
            });
    m_patience.setSingleShot(true);
    m_patience.setTimerType(Qt::PreciseTimer); // a coarse one may be early
    m_patience.setInterval(patienceMs);
}

PlanClient::~PlanClient() = default;

bool PlanClient::run(const QString& task, Kind kind, const std::function<bool()>& call)
{
    if (m_isBusy || m_isClosing)
        return false;
    for (;;) {
        if (attempt(task, call))
            return true;
        if (m_isClosing || !m_askAgain ||
            !m_askAgain(planFailure(task, kind == Kind::Writes, m_hasFailed ? &m_failure : nullptr)))
            return false;
    }
}

bool PlanClient::attempt(const QString& task, const std::function<bool()>& call)
{
    m_isBusy = true;
    m_hasFailed = false;
    const auto showWait = connect(&m_patience, &QTimer::timeout, this, [this, task] {
        m_isWaitShown = true;
        QApplication::setOverrideCursor(Qt::WaitCursor);
        Q_EMIT waitingFor(task);
    });
    m_patience.start();
    qApp->installEventFilter(this);
    Q_EMIT busyChanged(true);
    // Some operations of the library answer true whatever happened.
    const bool isDone = call() && !m_hasFailed;
    qApp->removeEventFilter(this);
    m_patience.stop();
    disconnect(showWait);
    m_isBusy = false;
    if (m_isWaitShown) {
        m_isWaitShown = false;
        QApplication::restoreOverrideCursor();
        Q_EMIT waitingFor(QString());
    }
    Q_EMIT busyChanged(false);
    return isDone;
}

bool PlanClient::eventFilter(QObject* watched, QEvent* event)
{
    const auto* const widget = qobject_cast<QWidget*>(watched);
    if (m_question && (widget ? widget->window() == m_question : watched == m_question->windowHandle()))
        return QObject::eventFilter(watched, event);
    // An action gets its shortcut itself; all other input goes to windows and from there to widgets.
    if (event->type() == QEvent::Shortcut) {
        if (QKeySequence::keyBindings(QKeySequence::Quit)
                .contains(static_cast<QShortcutEvent*>(event)->key()))
            Q_EMIT quitRequested();
        return true;
    }
    if (isInput(event->type()) && (watched->isWidgetType() || watched->isWindowType()))
        return true;
    return QObject::eventFilter(watched, event);
}

bool PlanClient::readPlans(const KvPlanCondition& condition, QList<KvPlan>& plans)
{
    QList<KvPlan> read;
    const bool isRead = run(tr("read the list of plans"), Kind::Reads, [&] {
        read.clear();
        int before = -1;
        while (before != read.size() && !m_hasFailed) {
            before = read.size();
            facade().getPlanRangeData(condition, before, pageSize, read);
            if (read.size() < before + pageSize)
                break;
        }
        return true;
    });
    if (!isRead)
        return false;
    std::sort(read.begin(), read.end(), [](const KvPlan& a, const KvPlan& b) {
        return KvPub::naturalSort(a.name, b.name, Qt::CaseInsensitive);
    });
    plans = read;
    return true;
}

bool PlanClient::readPlan(const QString& id, KvPlan& plan)
{
    return run(tr("read the plan"), Kind::Reads, [&] { return facade().getPlanById(id, plan); });
}

bool PlanClient::createPlan(KvPlan& plan)
{
    const KvPlan wanted = plan; // a failure overwrites it, and the next attempt needs it
    return run(tr("create the plan \"%1\"").arg(fitted(plan.name, nameCells)), Kind::Writes, [&] {
        plan = wanted;
        return facade().createPlan(plan);
    });
}

bool PlanClient::renamePlan(const QString& id, const QString& name)
{
    return run(tr("rename the plan to \"%1\"").arg(fitted(name, nameCells)), Kind::Writes, [&] {
        // Read first: what is sent is the difference to what was read.
        KvPlan plan;
        if (!facade().getPlanById(id, plan))
            return false;
        plan.name = name;
        return facade().updatePlan(plan);
    });
}

bool PlanClient::copyPlan(const QString& id, KvPlan& plan)
{
    return run(tr("copy the plan"), Kind::Writes, [&] { return facade().copyPlanById(id, plan); });
}

bool PlanClient::deletePlan(const QString& id, const QString& name)
{
    return run(tr("delete the plan \"%1\"").arg(fitted(name, nameCells)), Kind::Writes,
               [&] { return facade().deletePlan(id); });
}

bool PlanClient::readNodes(const QString& planId, QList<KvPlanNode>& nodes)
{
    QList<KvPlanNode> read;
    const bool isRead = run(tr("read the tasks"), Kind::Reads, [&] {
        read.clear();
        return facade().getPlanNodesByPlanId(planId, read);
    });
    if (isRead)
        nodes = read;
    return isRead;
}

PlanClient::Saved PlanClient::saveNodes(const QString& planId, const SaveList& list)
{
    const auto save = [&](const QList<KvPlanNode>& nodes) {
        facade().savePlanNodes(planId, nodes);
        return true;
    };
    QList<KvPlanNode> toCreate = list.toCreate;
    bool isUnknown = false;
    const bool isCreated = toCreate.isEmpty() || run(tr("save the tasks"), Kind::Writes, [&] {
                               if (isUnknown && !leaveOutCreated(planId, toCreate))
                                   return false;
                               save(toCreate);
                               isUnknown = m_hasFailed && isOutcomeUnknown(m_failure);
                               return true;
                           });
    if (!isCreated)
        return isUnknown ? Saved::Unknown : Saved::Nothing;
    // An update that is made twice is made once.
    if (list.toUpdate.isEmpty() ||
        run(tr("save the tasks"), Kind::Writes, [&] { return save(list.toUpdate); }))
        return Saved::All;
    return list.toCreate.isEmpty() ? Saved::Nothing : Saved::Created;
}

bool PlanClient::leaveOutCreated(const QString& planId, QList<KvPlanNode>& toCreate)
{
    QList<KvPlanNode> kept;
    facade().getPlanNodesByPlanId(planId, kept);
    if (m_hasFailed)
        return false;
    QSet<QPair<int, QString>> known;
    for (const KvPlanNode& node : qAsConst(kept))
        known.insert({node.uniqueId, node.name});
    toCreate.erase(std::remove_if(toCreate.begin(), toCreate.end(),
                                  [&known](const KvPlanNode& node) {
                                      return known.contains({node.uniqueId, node.name});
                                  }),
                   toCreate.end());
    return true;
}

SaveList PlanClient::changes(const QList<KvPlanNode>& nodes) const
{
    SaveList list;
    QStringList toDelete; // the library knows no rule for it
    facade().distributePlanNodes(nodes, list.toCreate, list.toUpdate, toDelete);
    return list;
}

bool PlanClient::hasChanged(const QList<KvPlanNode>& nodes) const
{
    return facade().hasChanged(nodes);
}

QList<KvPlanNode> PlanClient::asRead(const QList<KvPlanNode>& nodes) const
{
    QList<KvPlanNode> read;
    for (const KvPlanNode& node : nodes) {
        KvPlanNode cached;
        facade().getPlanNodeFromCacheById(node.id, cached);
        read.append(cached);
    }
    return read;
}

bool PlanClient::readResponses(const QString& nodeId, QList<KvPlanNodeResponse>& responses)
{
    return run(tr("read the reports of the task"), Kind::Reads,
               [&] { return facade().getPlanNodeResponses(nodeId, responses); });
}

bool PlanClient::reportProgress(const QString& nodeId, KvPlanNodeResponse& response)
{
    const KvPlanNodeResponse wanted = response;
    return run(tr("report progress"), Kind::Writes, [&] {
        response = wanted;
        return facade().createPlanNodeResponse(nodeId, response);
    });
}

bool PlanClient::readStatistics(const QString& category, KvPlanStatistics& statistics)
{
    return run(tr("count the tasks"), Kind::Reads,
               [&] { return facade().geStatistics(category, statistics); });
}

bool PlanClient::readQuantities(const QString& category, const QString& period,
                                QList<KvStatisticsQuantity>& quantities)
{
    return run(tr("count the finished tasks"), Kind::Reads,
               [&] { return facade().getPlanNodeQuantities(quantities, category, period); });
}

bool PlanClient::readRights(const QString& category)
{
    return run(tr("ask for your rights"), Kind::Reads, [&] {
        facade().initAuth(category);
        return true;
    });
}

PlanRights PlanClient::rights() const
{
    PlanRights rights;
    rights.mayCreate = facade().getCreateAuth();
    rights.mayEdit = facade().getEditAuth();
    rights.mayDelete = facade().getDeleteAuth();
    rights.mayReadAll = facade().getReadAuth();
    rights.mayExport = facade().getExportAuth();
    return rights;
}

bool PlanClient::readHiddenColumns(QStringList& keys)
{
    const bool isRead = run(tr("read which columns are hidden"), Kind::Reads, [&] {
        KvPlanSetting::instance()->LoadPlanSetting();
        return true;
    });
    keys = KvPlanSetting::instance()->GetGanttHideHeader();
    return isRead;
}

bool PlanClient::saveHiddenColumns(const QStringList& keys)
{
    return run(tr("keep which columns are hidden"), Kind::Writes,
               [&] { return KvPlanSetting::instance()->SetGanttHideHeader(keys); });
}
