#pragma once

#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QTimer>

class PlanClient;
class QAction;
class QHeaderView;
class QMenu;

/// The widths, order and visibility of the task tree's columns, kept for the user: widths and order on this
/// machine, hidden columns on the service. A hidden column keeps its width.
class ColumnLayout : public QObject
{
    Q_OBJECT

public:
    ColumnLayout(QHeaderView* header, PlanClient* client, QObject* parent = nullptr);
    /// Writes what is not written yet.
    ~ColumnLayout() override;

    /// Widths and order as they were left.
    void restore();
    /// Asks the service which columns are hidden.
    void restoreHidden();
    /// All columns shown, in their original widths and order; kept like any other choice.
    void resetToDefaults();
    void setColumnHidden(int column, bool isHidden);
    /// A checkable action for each column, then the defaults.
    QMenu* menu() const { return m_menu; }
    /// Writes widths and order now. A user who drags a column makes hundreds of widths, so they wait a
    /// moment.
    void flush();

private:
    void apply(const QStringList& hiddenKeys);
    void resized(int column, int width);

    QHeaderView* m_header;
    PlanClient* m_client;
    QMenu* m_menu;
    QList<QAction*> m_actions; // by column
    QMap<QString, int> m_widths;
    QTimer m_later;
    bool m_isApplying = false;
};
