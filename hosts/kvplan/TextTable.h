#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

/// A table of text for people. Widths count terminal cells, so that wide (East Asian) characters line up.
class TextTable
{
public:
    enum Alignment
    {
        Left,
        Right
    };

    void addColumn(const QString& title, Alignment alignment = Left);
    void addRow(const QStringList& cells);

    /// The table as lines. With @p width greater than 0 the widest column is shortened, down to a few cells,
    /// until a line fits into @p width cells; 0 shortens nothing.
    QString toText(int width = 0) const;

private:
    struct Column
    {
        QString title;
        Alignment alignment;
        int width;
    };

    QVector<Column> m_columns;
    QVector<QStringList> m_rows;
};

/// Terminal cells that @p text takes.
int cellWidth(const QString& text);

/// @p text on one line and without control characters, shortened to @p width cells with "…" at its end.
QString fitted(const QString& text, int width);

/// A date-time for people, to the minute; empty when it is not set.
QString minuteText(const QDateTime& dateTime);
