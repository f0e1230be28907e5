#include "Description.h"

#include "Text.h"

#include <QFile>
#include <QRegularExpression>

namespace KvTest {

Description::Description(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    static const QRegularExpression pair("^(?:\"([^\"]+)\"|([^\\s:\"]+)):\\s*(.*)$"_s);
    QStringList keys;
    QList<int> indents;
    int listIndent = -1;
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        const QString text = line.trimmed();
        const int indent = line.indexOf(text);
        if (text.isEmpty() || (listIndent >= 0 && indent > listIndent)) {
            continue;
        }
        listIndent = text.startsWith("- "_s) ? indent : -1;
        const QRegularExpressionMatch match = pair.match(text);
        if (listIndent >= 0 || !match.hasMatch()) {
            continue;
        }
        while (!indents.isEmpty() && indents.last() >= indent) {
            indents.removeLast();
            keys.removeLast();
        }
        indents.append(indent);
        keys.append(match.captured(1) + match.captured(2));
        m_values.insert(keys, match.captured(3));
    }
}

QStringList Description::keysBelow(const QStringList& path) const
{
    QStringList keys;
    for (auto it = m_values.cbegin(); it != m_values.cend(); ++it) {
        if (it.key().size() == path.size() + 1 && it.key().mid(0, path.size()) == path) {
            keys.append(it.key().last());
        }
    }
    return keys;
}

QStringList Description::operations() const
{
    QStringList operations;
    const QStringList paths = keysBelow({"paths"_s});
    for (const QString& path : paths) {
        const QStringList methods = keysBelow({"paths"_s, path});
        for (const QString& method : methods) {
            operations.append(method.toUpper() + QLatin1Char(' ') + path);
        }
    }
    operations.sort();
    return operations;
}

QStringList Description::statuses(const QString& operation) const
{
    const QString method = operation.section(QLatin1Char(' '), 0, 0).toLower();
    return keysBelow({"paths"_s, operation.section(QLatin1Char(' '), 1), method, "responses"_s});
}

QMap<QString, QString> Description::properties(const QString& schema) const
{
    static const QRegularExpression type("type:\\s*(\\w+)"_s);
    const QStringList path{"components"_s, "schemas"_s, schema, "properties"_s};
    QMap<QString, QString> properties;
    const QStringList names = keysBelow(path);
    for (const QString& name : names) {
        const QStringList key = path + QStringList{name};
        const QString nested = m_values.value(key + QStringList{"type"_s});
        properties.insert(name, nested.isEmpty() ? type.match(m_values.value(key)).captured(1) : nested);
    }
    return properties;
}

} // namespace KvTest
