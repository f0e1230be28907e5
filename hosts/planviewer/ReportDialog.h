#pragma once

#include <model/KvPlanRecords.h>

#include <QtWidgets/QDialog>

class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QSpinBox;

/// Asks what to report on a task: progress, actual dates, a remark.
class ReportDialog : public QDialog
{
    Q_OBJECT

public:
    explicit ReportDialog(const KvPlanNode& task, QWidget* parent = nullptr);

    KvPlanNodeResponse response() const;

private:
    void check();

    QString m_taskId;
    QSpinBox* m_percentage;
    QLineEdit* m_start;
    QLineEdit* m_finish;
    QPlainTextEdit* m_remark;
    QPushButton* m_send;
};
