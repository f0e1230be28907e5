#include "TextTable.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr int gap = 2;
constexpr int narrowest = 8; // cells that a shortened column keeps

struct Range
{
    uint first;
    uint last;
};

// Characters that take two cells: East Asian wide and fullwidth ones, and emoji.
constexpr Range wide[] = {
    {0x1100, 0x115f},   {0x2329, 0x232a},   {0x2e80, 0x303e}, {0x3041, 0x33ff},   {0x3400, 0x4dbf},
    {0x4e00, 0x9fff},   {0xa000, 0xa4cf},   {0xa960, 0xa97f}, {0xac00, 0xd7a3},   {0xf900, 0xfaff},
    {0xfe30, 0xfe6f},   {0xff00, 0xff60},   {0xffe0, 0xffe6}, {0x1f300, 0x1f64f}, {0x1f680, 0x1f6ff},
    {0x1f900, 0x1faff}, {0x20000, 0x3fffd},
};

int cellsOf(uint character)
{
    const QChar::Category category = QChar::category(character);
    if (category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing ||
        category == QChar::Other_Format)
        return 0;
    const auto range = std::lower_bound(std::begin(wide), std::end(wide), character,
                                        [](const Range& r, uint c) { return r.last < c; });
    return range != std::end(wide) && character >= range->first ? 2 : 1;
}

bool isControl(uint character)
{
    const QChar::Category category = QChar::category(character);
    return category == QChar::Other_Control || category == QChar::Separator_Line ||
           category == QChar::Separator_Paragraph || category == QChar::Other_Surrogate;
}

} // namespace

int cellWidth(const QString& text)
{
    int cells = 0;
    const QVector<uint> characters = text.toUcs4();
    for (const uint character : characters)
        cells += cellsOf(character);
    return cells;
}

QString fitted(const QString& text, int width)
{
    QString kept;
    int cells = 0;
    int keptBeforeEnd = 0; // length of `kept` while there was still a cell for the "…"
    const QVector<uint> characters = text.toUcs4();
    for (uint character : characters) {
        if (isControl(character))
            character = ' '; // a name must not move the cursor or colour the terminal
        const int more = cellsOf(character);
        if (width > 0 && cells + more > width)
            return kept.left(keptBeforeEnd) + QStringLiteral("…");
        kept += QString::fromUcs4(&character, 1);
        cells += more;
        if (cells < width)
            keptBeforeEnd = kept.size();
    }
    return kept;
}

QString minuteText(const QDateTime& dateTime)
{
    return dateTime.toString(QStringLiteral("yyyy-MM-dd hh:mm"));
}

void TextTable::addColumn(const QString& title, Alignment alignment)
{
    m_columns.append({title, alignment, cellWidth(title)});
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

QString TextTable::toText(int width) const
{
    QVector<Column> columns = m_columns;
    if (width > 0 && !columns.isEmpty()) {
        int total = gap * (columns.size() - 1);
        for (const Column& column : qAsConst(columns))
            total += column.width;
        const auto widest =
            std::max_element(columns.begin(), columns.end(),
                             [](const Column& a, const Column& b) { return a.width < b.width; });
        widest->width = qMax(qMin(widest->width, narrowest), widest->width - qMax(0, total - width));
    }

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
