#include "TextTable.h"

#include "CellText.h"

namespace {

constexpr int gap = 2;
constexpr int narrowest = 8; // cells that a shortened column keeps

} // namespace

void TextTable::addColumn(const QString& title, Alignment alignment)
{
    m_columns.append({title, alignment, false, cellWidth(title)});
}

void TextTable::addTextColumn(const QString& title)
{
    m_columns.append({title, Left, true, cellWidth(title)});
}

void TextTable::addRow(const QStringList& cells)
{
    QStringList row;
    row.reserve(m_columns.size());
    for (int i = 0; i < m_columns.size(); ++i) {
        row.append(fitted(cells.value(i), 0));
        m_columns[i].width = qMax(m_columns.at(i).width, cellWidth(row.last()));
    }
    m_rows.append(row);
}

void TextTable::shorten(QVector<Column>& columns, int width)
{
    int excess = gap * (columns.size() - 1) - width;
    for (const Column& column : qAsConst(columns))
        excess += column.width;
    while (excess > 0) {
        Column* widest = nullptr;
        int next = narrowest; // width of the one to go on with
        for (Column& column : columns) {
            if (!column.canShorten || column.width <= narrowest)
                continue;
            if (!widest || column.width > widest->width) {
                next = widest ? widest->width : next;
                widest = &column;
            } else {
                next = qMax(next, column.width);
            }
        }
        if (!widest)
            return;
        // Two of the same width take turns, cell by cell.
        const int cells = qMin(excess, qMax(1, widest->width - next));
        widest->width -= cells;
        excess -= cells;
    }
}

QString TextTable::toText(int width) const
{
    QVector<Column> columns = m_columns;
    if (width > 0)
        shorten(columns, width);

    QString text;
    const auto addLine = [&](const QStringList& cells) {
        QString line;
        for (int i = 0; i < columns.size(); ++i) {
            const QString cell = fitted(cells.at(i), columns.at(i).width);
            const QString padding(qMax(0, columns.at(i).width - cellWidth(cell)), QLatin1Char(' '));
            if (i > 0)
                line += QString(gap, QLatin1Char(' '));
            line += columns.at(i).alignment == Right ? padding + cell : cell + padding;
        }
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        text += line + QLatin1Char('\n');
    };

    QStringList titles;
    QStringList rules;
    for (const Column& column : qAsConst(columns)) {
        titles.append(column.title);
        rules.append(QString(column.width, QChar(0x2500)));
    }
    addLine(titles);
    addLine(rules);
    for (const QStringList& row : m_rows)
        addLine(row);
    return text;
}
