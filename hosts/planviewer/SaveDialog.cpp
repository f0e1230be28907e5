#include "SaveDialog.h"

#include "TaskColumns.h"
#include "TaskText.h"

#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTreeWidget>
#include <QtWidgets/QVBoxLayout>

QStringList taskDifferences(const KvPlanNode& before, const KvPlanNode& after)
{
    QStringList differences;
    const auto compare = [&](int column, const QString& was, const QString& is) {
        if (was != is)
            differences.append(QStringLiteral("%1: %2 → %3")
                                   .arg(TaskColumn::title(column), was.isEmpty() ? QStringLiteral("–") : was,
                                        is.isEmpty() ? QStringLiteral("–") : is));
    };
    if (before.name != after.name) // also where they differ behind what is shown
        differences.append(QStringLiteral("%1: %2 → %3")
                               .arg(TaskColumn::title(TaskColumn::Name), TaskText::label(before.name, 60),
                                    TaskText::label(after.name, 60)));
    compare(TaskColumn::Start, TaskText::dateTime(before.startDate), TaskText::dateTime(after.startDate));
    compare(TaskColumn::Finish, TaskText::dateTime(before.finishDate), TaskText::dateTime(after.finishDate));
    compare(TaskColumn::Progress, TaskText::percent(before.finishedPercentage),
            TaskText::percent(after.finishedPercentage));
    compare(TaskColumn::ActualStart, TaskText::dateTime(before.actualStartDate),
            TaskText::dateTime(after.actualStartDate));
    compare(TaskColumn::ActualFinish, TaskText::dateTime(before.actualFinishDate),
            TaskText::dateTime(after.actualFinishDate));
    return differences;
}

SaveDialog::SaveDialog(const SaveList& list, const QList<KvPlanNode>& before, QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("saveDialog"));
    setWindowTitle(tr("Save the plan"));
    resize(640, 420);
    auto* const tree = new QTreeWidget;
    tree->setAccessibleName(tr("What will be saved"));
    tree->setHeaderLabels({tr("Task"), tr("Change")});
    tree->setColumnWidth(0, 280);
    const auto group = [tree](const QString& title) {
        auto* const item = new QTreeWidgetItem(tree, {title});
        item->setFirstColumnSpanned(true);
        return item;
    };
    if (!list.toCreate.isEmpty()) {
        auto* const created = group(tr("To be created: %1").arg(list.toCreate.size()));
        for (const KvPlanNode& task : list.toCreate)
            new QTreeWidgetItem(created, {TaskText::label(task.name), TaskText::date(task.startDate) +
                                                                          QStringLiteral(" – ") +
                                                                          TaskText::date(task.finishDate)});
    }
    if (!list.toUpdate.isEmpty()) {
        auto* const updated = group(tr("To be updated: %1").arg(list.toUpdate.size()));
        for (int i = 0; i < list.toUpdate.size(); ++i)
            new QTreeWidgetItem(
                updated, {TaskText::label(list.toUpdate.at(i).name),
                          taskDifferences(before.value(i), list.toUpdate.at(i)).join(QLatin1String("; "))});
    }
    tree->expandAll();
    for (int i = 0; i < tree->topLevelItemCount(); ++i)
        tree->topLevelItem(i)->setFirstColumnSpanned(true);

    auto* const buttons = new QDialogButtonBox;
    QPushButton* const save = buttons->addButton(tr("&Save"), QDialogButtonBox::AcceptRole);
    save->setObjectName(QStringLiteral("save"));
    save->setDefault(true);
    buttons->addButton(tr("&Cancel"), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("The service will be asked for these changes:")));
    layout->addWidget(tree);
    layout->addWidget(buttons);
}
