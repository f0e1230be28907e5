#pragma once

#include <QtCore/QJsonDocument>
#include <QtCore/QStringList>

class QIODevice;

/// A file of JSON as a person hands it over. Tells a waiting one how far its reading is.
class JsonFile
{
public:
    /// Reads @p file to its end; at most a gibibyte.
    /// @return false when it is no JSON; @p problems has a line then that says why and, where it can, at
    /// which line and column.
    bool read(QIODevice& file, QStringList& problems);

    const QJsonDocument& document() const { return m_document; }

    /// Whether going through it takes a person's time.
    bool isLong() const { return m_isLong; }

private:
    QJsonDocument m_document;
    bool m_isLong = false;
};
