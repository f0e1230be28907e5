#pragma once

#include "TaskList.h"

#include <model/KvPlanRecords.h>

#include <QtCore/QDate>
#include <QtWidgets/QTextBrowser>

/// Everything known of one task: dates, people, documents, material bills, linked entities, and what was
/// reported on it once somebody asked for that.
class DetailsPanel : public QTextBrowser
{
    Q_OBJECT

public:
    explicit DetailsPanel(QWidget* parent = nullptr);

    void showNothing();
    void showTask(const TaskList& tasks, int position, const QDate& today);
    /// Adds the reports of the task that is shown.
    void showResponses(const QList<KvPlanNodeResponse>& responses);

Q_SIGNALS:
    /// The user wants to see what was reported on the task.
    void responsesWanted();

private:
    QString m_task; // what is shown of it, without reports
};
