#include "PlanActions.h"

#include "CellText.h"
#include "ImportCheck.h"
#include "PlanListPanel.h"
#include "TaskText.h"

#include <model/KvPlanDataUtils.h>

#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QRegularExpression>
#include <QtCore/QSaveFile>
#include <QtWidgets/QAction>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>

namespace {

constexpr int nameCells = 80; // of a plan's name in a message

} // namespace

QString plainText(const QString& text)
{
    return QString(text).remove(QRegularExpression(QStringLiteral("\\(&.\\)|&|…")));
}

QString fileName(const QString& planName)
{
    constexpr int longest = 80;
    QString name = fitted(planName, longest);
    name.replace(QRegularExpression(QStringLiteral("[\\\\/:*?\"<>|]")), QStringLiteral("_"));
    return name.trimmed();
}

void allow(QAction* action, bool isAllowed, const QString& reason)
{
    action->setEnabled(isAllowed);
    action->setToolTip(isAllowed ? action->iconText() : reason);
    action->setStatusTip(isAllowed ? QString() : reason);
}

PlanActions::PlanActions(PlanClient* client, PlanListPanel* list, QWidget* window)
    : QObject(window)
    , m_client(client)
    , m_list(list)
    , m_window(window)
    , m_create(add("newPlan", tr("&New plan…"), &PlanActions::create))
    , m_rename(add("renamePlan", tr("&Rename plan…"), &PlanActions::rename))
    , m_copy(add("copyPlan", tr("&Copy plan"), &PlanActions::copy))
    , m_remove(add("deletePlan", tr("&Delete plan…"), &PlanActions::remove))
    , m_import(add("importPlan", tr("&Import plan…"), &PlanActions::importFile))
    , m_export(add("exportPlan", tr("E&xport plan…"), &PlanActions::exportFile))
{
    m_create->setShortcut(QKeySequence::New);
    m_rename->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_R);
    m_import->setShortcut(Qt::CTRL | Qt::Key_I);
    m_export->setShortcut(Qt::CTRL | Qt::Key_E);
    connect(list, &PlanListPanel::selectionChanged, this, &PlanActions::update);
    update();
}

QAction* PlanActions::add(const char* name, const QString& text, void (PlanActions::*slot)())
{
    auto* const action = new QAction(text, this);
    action->setObjectName(QString::fromLatin1(name));
    action->setIconText(plainText(text));
    connect(action, &QAction::triggered, this, slot);
    return action;
}

QList<QAction*> PlanActions::actions() const
{
    return {m_create, m_rename, m_copy, m_remove, m_import, m_export};
}

void PlanActions::setRights(const PlanRights& rights)
{
    m_rights = rights;
    update();
}

void PlanActions::update()
{
    const bool isSelected = !m_list->selected().id.isEmpty();
    const QString select = tr("Select a plan first.");
    const auto allowOne = [&](QAction* action, bool isAllowed, const QString& reason, bool needsPlan) {
        allow(action, isAllowed && (isSelected || !needsPlan), isAllowed ? select : reason);
    };
    const QString mayNotCreate = tr("You may not create plans here.");
    allowOne(m_create, m_rights.mayCreate, mayNotCreate, false);
    allowOne(m_import, m_rights.mayCreate, mayNotCreate, false);
    allowOne(m_copy, m_rights.mayCreate, mayNotCreate, true);
    allowOne(m_rename, m_rights.mayEdit, tr("You may not edit plans here."), true);
    allowOne(m_remove, m_rights.mayDelete, tr("You may not delete plans here."), true);
    allowOne(m_export, m_rights.mayExport, tr("You may not export plans here."), true);
}

bool PlanActions::askName(const QString& title, QString& name, QString* category)
{
    QDialog dialog(m_window);
    dialog.setObjectName(QStringLiteral("nameDialog"));
    dialog.setWindowTitle(title);
    auto* const form = new QFormLayout(&dialog);
    auto* const nameEdit = new QLineEdit(name);
    nameEdit->setObjectName(QStringLiteral("planName"));
    nameEdit->setMinimumWidth(320);
    nameEdit->selectAll();
    form->addRow(tr("&Name"), nameEdit);
    auto* const categoryEdit = new QLineEdit(category ? *category : QString());
    categoryEdit->setObjectName(QStringLiteral("planCategory"));
    if (category)
        form->addRow(tr("C&ategory"), categoryEdit);
    else
        delete categoryEdit;
    auto* const buttons = new QDialogButtonBox;
    QPushButton* const accept = buttons->addButton(tr("&OK"), QDialogButtonBox::AcceptRole);
    accept->setDefault(true);
    buttons->addButton(tr("&Cancel"), QDialogButtonBox::RejectRole);
    form->addRow(buttons);
    const auto check = [&] {
        accept->setEnabled(!nameEdit->text().trimmed().isEmpty());
    };
    connect(nameEdit, &QLineEdit::textChanged, &dialog, check);
    check();
    connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    name = nameEdit->text().trimmed();
    if (category)
        *category = categoryEdit->text().trimmed();
    return true;
}

void PlanActions::tell(const QString& title, const QString& text, const QStringList& details)
{
    QMessageBox box(QMessageBox::Warning, title, text, QMessageBox::NoButton, m_window);
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(TaskText::plain(details.join(QLatin1Char('\n'))));
    box.addButton(tr("&Close"), QMessageBox::AcceptRole);
    box.exec();
}

void PlanActions::create()
{
    KvPlan plan;
    plan.category = m_list->selected().category;
    if (!askName(tr("New plan"), plan.name, &plan.category) || !m_client->createPlan(plan))
        return;
    m_list->refresh();
    m_list->select(plan.id);
    Q_EMIT planMade(plan);
}

void PlanActions::rename()
{
    const KvPlan plan = m_list->selected();
    QString name = plan.name;
    if (!askName(tr("Rename plan"), name, nullptr) || name == plan.name ||
        !m_client->renamePlan(plan.id, name))
        return;
    m_list->refresh();
    Q_EMIT planRenamed(plan.id, name);
}

void PlanActions::copy()
{
    KvPlan copy;
    if (!m_client->copyPlan(m_list->selected().id, copy))
        return;
    m_list->refresh();
    m_list->select(copy.id);
    Q_EMIT told(tr("The copy is \"%1\".").arg(fitted(copy.name, nameCells)));
}

void PlanActions::remove()
{
    const KvPlan plan = m_list->selected();
    QMessageBox box(QMessageBox::Question, tr("Delete plan"),
                    tr("Delete the plan \"%1\" with all its tasks?").arg(fitted(plan.name, nameCells)),
                    QMessageBox::NoButton, m_window);
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(tr("This cannot be undone."));
    QPushButton* const agree = box.addButton(tr("&Delete"), QMessageBox::DestructiveRole);
    agree->setObjectName(QStringLiteral("delete"));
    QPushButton* const keep = box.addButton(tr("&Keep"), QMessageBox::RejectRole);
    box.setDefaultButton(keep);
    box.exec();
    if (box.clickedButton() != agree || !m_client->deletePlan(plan.id, plan.name))
        return;
    Q_EMIT planRemoved(plan.id);
    m_list->refresh();
}

void PlanActions::importFile()
{
    const QString path = QFileDialog::getOpenFileName(m_window, tr("Import a schedule"), QString(),
                                                      tr("Exchange JSON (*.json);;All files (*)"));
    if (path.isEmpty())
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        tell(tr("Import plan"), tr("\"%1\" cannot be read.").arg(path), {file.errorString()});
        return;
    }
    const ImportFindings findings = checkImport(file);
    if (!findings.problems.isEmpty()) {
        tell(tr("Import plan"),
             tr("\"%1\" is not in order, so nothing was sent.").arg(QFileInfo(path).fileName()),
             findings.problems);
        return;
    }
    KvPlan plan = findings.plan;
    if (plan.name.isEmpty())
        plan.name = QFileInfo(path).completeBaseName();
    plan.category = m_list->selected().category;
    if (!askName(tr("Import plan"), plan.name, &plan.category))
        return;
    for (KvPlanNode& task : plan.planNodes)
        task.category = plan.category;
    if (!m_client->createPlan(plan))
        return;
    m_list->refresh();
    m_list->select(plan.id);
    Q_EMIT planMade(plan);
}

void PlanActions::exportFile()
{
    const KvPlan selected = m_list->selected();
    const QString path = QFileDialog::getSaveFileName(m_window, tr("Export the plan"),
                                                      fileName(selected.name) + QStringLiteral(".json"),
                                                      tr("Exchange JSON (*.json)"));
    KvPlan plan;
    if (path.isEmpty() || !m_client->readPlan(selected.id, plan))
        return;
    QJsonObject object;
    KvPlanDataUtils::planToJsonObjectMPXJ(plan, object);
    const QByteArray json = QJsonDocument(object).toJson();
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(json) != json.size() || !file.commit())
        tell(tr("Export plan"), tr("\"%1\" cannot be written.").arg(path), {file.errorString()});
    else
        Q_EMIT told(tr("Written: %1").arg(path));
}
