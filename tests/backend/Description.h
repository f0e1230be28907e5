#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

namespace KvTest {

/// What docs/openapi.yaml says about paths and schemas. It reads the part of YAML that the file is written
/// in: nested maps by indentation and flow maps of one line; lists are passed over.
class Description
{
public:
    explicit Description(const QString& path);

    /// "GET /health" and so on, sorted.
    QStringList operations() const;
    /// The statuses an operation, named as above, may answer.
    QStringList statuses(const QString& operation) const;
    /// Names of a schema's properties, with their types; an empty type is any.
    QMap<QString, QString> properties(const QString& schema) const;
    QString version() const
    {
        return m_values.value(QStringList{QStringLiteral("info"), QStringLiteral("version")});
    }

private:
    QStringList keysBelow(const QStringList& path) const;

    QMap<QStringList, QString> m_values; ///< text behind each key, by the keys that lead to it
};

} // namespace KvTest
