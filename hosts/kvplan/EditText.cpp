#include "EditText.h"

#include "CellText.h"
#include "Output.h"
#include "RecordJson.h"
#include "TextTable.h"

#include <algorithm>

namespace {

int countNew(const QVector<NodeEdit>& edits)
{
    return int(std::count_if(edits.begin(), edits.end(), [](const NodeEdit& edit) { return edit.isNew; }));
}

QString tasks(int count)
{
    return count == 1 ? QStringLiteral("1 task") : QStringLiteral("%1 tasks").arg(count);
}

} // namespace

QString editsTable(const QVector<NodeEdit>& edits, int rows)
{
    TextTable table;
    table.addColumn(QStringLiteral("Row"), TextTable::Right);
    table.addTextColumn(QStringLiteral("Task"));
    table.addColumn(QStringLiteral("Field"));
    table.addTextColumn(QStringLiteral("Is"));
    table.addTextColumn(QStringLiteral("Becomes"));
    int shown = 0;
    int changes = 0;
    for (const NodeEdit& edit : edits) {
        bool isFirst = true;
        for (const FieldChange& change : edit.changes) {
            ++changes;
            if (shown == rows)
                continue;
            ++shown;
            // The first line of a task names it.
            table.addRow({isFirst ? QString::number(edit.node.planNodeId) : QString(),
                          isFirst ? edit.node.name : QString(), change.field->name,
                          edit.isNew ? QStringLiteral("new") : change.field->shown(change.was),
                          change.field->shown(change.becomes)});
            isFirst = false;
        }
    }
    const QString text = shown > 0 ? table.toText(terminalWidth()) : QString();
    return shown == changes ? text : text + QStringLiteral("… and %1 more changes\n").arg(changes - shown);
}

QString editsSentence(const QVector<NodeEdit>& edits)
{
    const int created = countNew(edits);
    const int changed = edits.size() - created;
    if (created == 0)
        return QStringLiteral("change %1").arg(tasks(changed));
    const QString creation = QStringLiteral("create %1").arg(tasks(created));
    return changed == 0 ? creation : creation + QStringLiteral(" and change %1").arg(changed);
}

QJsonObject editsToJson(const QVector<NodeEdit>& edits)
{
    QJsonArray toCreate;
    QJsonArray toUpdate;
    for (const NodeEdit& edit : edits) {
        if (edit.isNew) {
            toCreate.append(nodeToJson(edit.node));
            continue;
        }
        QJsonObject changes;
        for (const FieldChange& change : edit.changes)
            changes.insert(change.field->name, QJsonObject{{QStringLiteral("was"), change.was},
                                                           {QStringLiteral("becomes"), change.becomes}});
        toUpdate.append(QJsonObject{{QStringLiteral("id"), edit.node.id},
                                    {QStringLiteral("name"), edit.node.name},
                                    {QStringLiteral("changes"), changes}});
    }
    return {{QStringLiteral("toCreate"), toCreate}, {QStringLiteral("toUpdate"), toUpdate}};
}
