#include "TaskDelegate.h"

#include "TaskColumns.h"

#include <QtWidgets/QLineEdit>
#include <QtWidgets/QSpinBox>

QWidget* TaskDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                    const QModelIndex& index) const
{
    if (index.column() == TaskColumn::Progress) {
        auto* const box = new QSpinBox(parent);
        box->setRange(0, 100);
        box->setFrame(false);
        box->setAccessibleName(TaskColumn::title(index.column()));
        return box;
    }
    QWidget* const editor = QStyledItemDelegate::createEditor(parent, option, index);
    if (auto* const text = qobject_cast<QLineEdit*>(editor)) {
        text->setAccessibleName(TaskColumn::title(index.column()));
        if (index.column() != TaskColumn::Name)
            text->setPlaceholderText(QStringLiteral("2026-03-05"));
    }
    return editor;
}

QSize TaskDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const
{
    return {option.rect.width(), option.fontMetrics.height() + 10};
}
