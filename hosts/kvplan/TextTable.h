#pragma once

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

    /// A column of names: the kind that is shortened when the lines are too long.
    void addTextColumn(const QString& title);

    void addRow(const QStringList& cells);

    /// The table as lines. With @p width greater than 0 the columns of names are shortened, the widest first
    /// and none below a few cells, until a line fits into @p width cells; 0 shortens nothing.
    QString toText(int width = 0) const;

private:
    struct Column
    {
        QString title;
        Alignment alignment;
        bool canShorten;
        int width;
    };

    static void shorten(QVector<Column>& columns, int width);

    QVector<Column> m_columns;
    QVector<QStringList> m_rows;
};
