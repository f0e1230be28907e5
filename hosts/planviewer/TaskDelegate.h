#pragma once

#include <QtWidgets/QStyledItemDelegate>

/// Edits the cells of the task tree: names and dates as text, progress as a number. All rows are of one
/// height, so that the Gantt chart stays in step.
class TaskDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};
