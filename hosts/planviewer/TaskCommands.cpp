#include "TaskCommands.h"

#include "TaskColumns.h"
#include "TaskEdit.h"
#include "TaskModel.h"
#include "TaskText.h"

#include <QtCore/QCoreApplication>

namespace {

QString say(const char* text)
{
    return QCoreApplication::translate("TaskCommands", text);
}

// A menu takes an ampersand for a mnemonic.
QString menuText(const QString& name)
{
    return TaskText::label(name, 40).replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace

EditTaskCommand::EditTaskCommand(TaskModel* model, int position, const KvPlanNode& edited, int column)
    : QUndoCommand(say(QT_TRANSLATE_NOOP("TaskCommands", "change of %1 of \"%2\""))
                       .arg(TaskColumn::title(column), menuText(edited.name)))
    , m_model(model)
    , m_changes{{position, model->tasks().at(position).node, edited}}
    , m_movesDates(column == TaskColumn::Start || column == TaskColumn::Finish)
{
}

void EditTaskCommand::redo()
{
    if (!m_movesDates || m_changes.size() > 1) {
        for (const Change& change : qAsConst(m_changes))
            m_model->replace(change.position, change.after);
        return;
    }
    // What the tasks above become shows only once those below are changed.
    const int edited = m_changes.first().position;
    m_model->replace(edited, m_changes.first().after);
    for (int above = m_model->tasks().at(edited).parent; above != -1;
         above = m_model->tasks().at(above).parent) {
        const KvPlanNode before = m_model->tasks().at(above).node;
        KvPlanNode after = before;
        if (!TaskEdit::spanChildren(m_model->tasks(), above, after))
            break;
        m_changes.append({above, before, after});
        m_model->replace(above, after);
    }
}

void EditTaskCommand::undo()
{
    for (int i = m_changes.size() - 1; i >= 0; --i)
        m_model->replace(m_changes.at(i).position, m_changes.at(i).before);
}

AddTaskCommand::AddTaskCommand(TaskModel* model, const KvPlanNode& node, int parent)
    : QUndoCommand(say(QT_TRANSLATE_NOOP("TaskCommands", "new task \"%1\"")).arg(menuText(node.name)))
    , m_model(model)
    , m_node(node)
    , m_parent(parent)
{
}

void AddTaskCommand::redo()
{
    m_model->append(m_node, m_parent);
}

void AddTaskCommand::undo()
{
    m_model->removeLast();
}
