#pragma once

#include "PlanClient.h"

class PlanListPanel;
class QAction;
class QWidget;

/// A menu's text without marks of keys and dots, for tool bars and tooltips.
QString plainText(const QString& text);
/// A name for a file of that plan: without what no file system takes, and not too long.
QString fileName(const QString& planName);

/// Switches an action off with the reason in its tooltip, or on.
void allow(QAction* action, bool isAllowed, const QString& reason);

/// What can be done with whole plans: create, rename, copy, delete, import and export of exchange JSON.
class PlanActions : public QObject
{
    Q_OBJECT

public:
    PlanActions(PlanClient* client, PlanListPanel* list, QWidget* window);

    QList<QAction*> actions() const;
    /// What the user may do in the category of the selected plan.
    void setRights(const PlanRights& rights);
    /// To be called when another plan is selected.
    void update();

    void create();
    void rename();
    void copy();
    void remove();
    void importFile();
    void exportFile();

Q_SIGNALS:
    void planMade(const KvPlan& plan);
    void planRenamed(const QString& id, const QString& name);
    /// Before it is deleted, for whoever shows it.
    void planRemoved(const QString& id);
    void told(const QString& text);

private:
    QAction* add(const char* name, const QString& text, void (PlanActions::*slot)());
    bool askName(const QString& title, QString& name, QString* category);
    void tell(const QString& title, const QString& text, const QStringList& details = {});

    PlanClient* m_client;
    PlanListPanel* m_list;
    QWidget* m_window;
    PlanRights m_rights;
    QAction* m_create;
    QAction* m_rename;
    QAction* m_copy;
    QAction* m_remove;
    QAction* m_import;
    QAction* m_export;
};
