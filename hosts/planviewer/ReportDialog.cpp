#include "ReportDialog.h"

#include "TaskEdit.h"
#include "TaskText.h"

#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>

namespace {

bool isDateOrEmpty(const QString& text)
{
    return text.trimmed().isEmpty() || QDate::fromString(text.trimmed(), Qt::ISODate).isValid();
}

QDateTime dateOf(const QLineEdit& edit, const QTime& time)
{
    const QDate day = QDate::fromString(edit.text().trimmed(), Qt::ISODate);
    return day.isValid() ? QDateTime(day, time) : QDateTime();
}

QLineEdit* dateEdit(const QString& objectName, const QDateTime& date)
{
    auto* const edit = new QLineEdit(TaskText::date(date));
    edit->setObjectName(objectName);
    edit->setPlaceholderText(QStringLiteral("2026-03-05"));
    return edit;
}

} // namespace

ReportDialog::ReportDialog(const KvPlanNode& task, QWidget* parent)
    : QDialog(parent)
    , m_taskId(task.id)
    , m_percentage(new QSpinBox)
    , m_start(dateEdit(QStringLiteral("reportStart"), task.actualStartDate))
    , m_finish(dateEdit(QStringLiteral("reportFinish"), task.actualFinishDate))
    , m_remark(new QPlainTextEdit)
{
    setObjectName(QStringLiteral("reportDialog"));
    setWindowTitle(tr("Report progress"));
    m_percentage->setObjectName(QStringLiteral("reportPercentage"));
    m_percentage->setRange(0, 100);
    m_percentage->setSuffix(QStringLiteral(" %"));
    m_percentage->setValue(qBound(0, qRound(task.finishedPercentage), 100));
    m_remark->setObjectName(QStringLiteral("reportRemark"));
    m_remark->setTabChangesFocus(true);
    m_remark->setMaximumHeight(100);
    auto* const form = new QFormLayout(this);
    auto* const name = new QLabel(TaskText::label(task.name));
    name->setTextFormat(Qt::PlainText);
    name->setWordWrap(true);
    form->addRow(name);
    form->addRow(tr("&Done"), m_percentage);
    form->addRow(tr("Actual &start"), m_start);
    form->addRow(tr("Actual &finish"), m_finish);
    form->addRow(tr("&Remark"), m_remark);
    auto* const buttons = new QDialogButtonBox;
    m_send = buttons->addButton(tr("&Report"), QDialogButtonBox::AcceptRole);
    m_send->setObjectName(QStringLiteral("report"));
    m_send->setDefault(true);
    buttons->addButton(tr("&Cancel"), QDialogButtonBox::RejectRole);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_start, &QLineEdit::textChanged, this, &ReportDialog::check);
    connect(m_finish, &QLineEdit::textChanged, this, &ReportDialog::check);
}

void ReportDialog::check()
{
    const bool isFine = isDateOrEmpty(m_start->text()) && isDateOrEmpty(m_finish->text());
    m_send->setEnabled(isFine);
    m_send->setToolTip(isFine ? QString() : tr("Write dates as 2026-03-05, or leave them empty."));
}

KvPlanNodeResponse ReportDialog::response() const
{
    KvPlanNodeResponse response;
    response.hostId = m_taskId;
    response.percentage = m_percentage->value();
    response.actualStartDate = dateOf(*m_start, TaskEdit::morning());
    response.actualFinishDate = dateOf(*m_finish, TaskEdit::evening());
    response.remark = m_remark->toPlainText();
    return response;
}
