#pragma once

#include "PostgresTools.h"

#include <QTemporaryFile>

#include <map>
#include <memory>

namespace PlanService {

/// What a file of pg_dump holds of a planservice database: rows and numbers, nothing else. The file may come
/// from anywhere and say anything; no statement, function or table definition of it is ever run. What it says
/// is data for statements that are written here.
class PostgresArchive
{
public:
    struct Rows
    {
        QByteArray columns; ///< names, separated by a comma and a blank
        qint64 count = 0;
        std::unique_ptr<QTemporaryFile> file; ///< one row a line as COPY takes them; goes with the object
    };
    /// Where the numbers of a table go on.
    struct Sequence
    {
        QByteArray name;
        QByteArray lastNumber;
        bool used = true; ///< the last number was given to a row
    };

    /// Reads the file from its first byte to its last, and puts the rows of each table into a file beside it.
    /// Tables and sequences that are not of @p tables are passed over. Throws Failure when the file is no
    /// backup of planservice, or not whole.
    /// @param tables as the server writes their names.
    PostgresArchive(const PostgresTools& tools, const QString& file, const QStringList& tables);

    int schemaVersion() const { return m_version; }
    /// How many rows there are of a table.
    qint64 count(const QString& table) const;

    /// Lines for psql that put the table's rows into the database, and its numbers where they were.
    QByteArray fillingScript(const QString& table) const;

private:
    void readLine(const QByteArray& line);
    void beginRows(const QByteArray& line);
    void readRow(const QByteArray& line);
    void readSequence(const QByteArray& line);
    [[noreturn]] void refuse() const;

    QString m_name;
    QStringList m_tables;
    int m_version = 0;
    std::map<QString, Rows> m_rows;
    std::map<QString, Sequence> m_sequences; ///< by table
    /// Those that the next lines are of.
    enum class Place
    {
        Elsewhere,
        ForeignRows,
        Versions,
        Rows
    } m_place = Place::Elsewhere;
    Rows* m_current = nullptr;
};

} // namespace PlanService
