#include "PostgresArchive.h"

#include "../Failure.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace PlanService {

namespace {

/// A name that means itself in SQL, without quotes.
bool isPlainName(const QByteArray& name)
{
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
    });
}

/// A name for psql's \copy, in which only a quote means something else.
QByteArray quotedPath(const QString& path)
{
    return '\'' + QFile::encodeName(path).replace("'", "''") + '\'';
}

} // namespace

PostgresArchive::PostgresArchive(const PostgresTools& tools, const QString& file, const QStringList& tables)
    : m_name(file)
    , m_tables(tables)
{
    if (!QFileInfo(file).isFile()) {
        throw Failure(QStringLiteral("there is no file '%1'; check the path").arg(file));
    }
    tools.run(QStringLiteral("pg_restore"),
              {QStringLiteral("--data-only"), QStringLiteral("--file=-"), QStringLiteral("--"), file},
              [this](const QByteArray& line) { readLine(line); });
    if (m_version == 0 || m_place != Place::Elsewhere || m_rows.count(QStringLiteral("plans")) == 0) {
        refuse();
    }
    for (const auto& entry : m_rows) {
        const Rows& rows = entry.second;
        if (!rows.file->flush()) {
            throw Failure(QStringLiteral("cannot write '%1': %2; name a file in a folder you may write to")
                              .arg(rows.file->fileName(), rows.file->errorString()));
        }
    }
}

void PostgresArchive::refuse() const
{
    throw Failure(QStringLiteral("'%1' is no backup of a planservice database").arg(m_name));
}

void PostgresArchive::readLine(const QByteArray& line)
{
    if (m_place == Place::Elsewhere) {
        if (line.startsWith("COPY ") && line.endsWith(" FROM stdin;\n")) {
            beginRows(line);
        } else if (line.startsWith("SELECT pg_catalog.setval(")) {
            readSequence(line);
        }
    } else if (line == "\\.\n") {
        m_place = Place::Elsewhere;
    } else {
        readRow(line);
    }
}

/// "COPY public.plans (id, projectid) FROM stdin;"
void PostgresArchive::beginRows(const QByteArray& line)
{
    const int open = line.indexOf(" (");
    const int close = line.lastIndexOf(") FROM stdin;\n");
    const QByteArray name = line.left(open).mid(line.left(open).lastIndexOf('.') + 1);
    const QString table = QString::fromUtf8(name);
    m_current = nullptr;
    if (name == "planserviceschema") {
        m_place = Place::Versions;
        return;
    }
    if (open < 0 || close < open || !m_tables.contains(table)) {
        m_place = Place::ForeignRows;
        return;
    }
    const QByteArray columns = line.mid(open + 2, close - open - 2);
    const QList<QByteArray> names = QByteArray(columns).replace(", ", ",").split(',');
    if (m_rows.count(table) > 0 || !std::all_of(names.begin(), names.end(), isPlainName)) {
        refuse();
    }
    Rows& rows = m_rows[table];
    rows.columns = columns;
    rows.file = std::make_unique<QTemporaryFile>(m_name + QStringLiteral(".XXXXXX.part"));
    if (!rows.file->open()) {
        throw Failure(QStringLiteral("cannot write '%1': %2; name a file in a folder you may write to")
                          .arg(rows.file->fileName(), rows.file->errorString()));
    }
    m_current = &rows;
    m_place = Place::Rows;
}

void PostgresArchive::readRow(const QByteArray& line)
{
    if (m_place == Place::Versions) {
        m_version = std::max(m_version, line.trimmed().toInt());
    } else if (m_place == Place::Rows) {
        if (m_current->file->write(line) != line.size()) {
            throw Failure(QStringLiteral("cannot write '%1': %2; is the disk full?")
                              .arg(m_current->file->fileName(), m_current->file->errorString()));
        }
        ++m_current->count;
    }
}

/// "SELECT pg_catalog.setval('public.plannodes_number_seq', 75, true);"
void PostgresArchive::readSequence(const QByteArray& line)
{
    static const QRegularExpression form(QStringLiteral(
        R"(^SELECT pg_catalog\.setval\('[^']*?(([a-z]+)_[a-z]+_seq)', ([0-9]{1,19}), (true|false)\);$)"));
    const QRegularExpressionMatch match = form.match(QString::fromUtf8(line).trimmed());
    if (match.hasMatch() && m_tables.contains(match.captured(2))) {
        m_sequences[match.captured(2)] = {match.captured(1).toLatin1(), match.captured(3).toLatin1(),
                                          match.captured(4) == QLatin1String("true")};
    }
}

qint64 PostgresArchive::count(const QString& table) const
{
    const auto rows = m_rows.find(table);
    return rows == m_rows.end() ? 0 : rows->second.count;
}

QByteArray PostgresArchive::fillingScript(const QString& table) const
{
    QByteArray script;
    const auto rows = m_rows.find(table);
    if (rows != m_rows.end()) {
        script += "\\copy " + table.toLatin1() + " (" + rows->second.columns + ") FROM " +
                  quotedPath(rows->second.file->fileName()) + '\n';
    }
    const auto sequence = m_sequences.find(table);
    if (sequence != m_sequences.end()) {
        script += "SELECT setval('" + sequence->second.name + "', " + sequence->second.lastNumber + ", " +
                  (sequence->second.used ? "true" : "false") + ");\n";
    }
    return script;
}

} // namespace PlanService
