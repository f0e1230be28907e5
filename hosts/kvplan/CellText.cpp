#include "CellText.h"

#include <QtCore/QVector>

#include <algorithm>
#include <iterator>

namespace {

struct Range
{
    uint first;
    uint last;
};

// Characters that take two cells, in ascending order: East Asian wide and fullwidth ones, and emoji.
constexpr Range wide[] = {
    {0x1100, 0x115f},   {0x231a, 0x231b},   {0x2329, 0x232a},   {0x23e9, 0x23ec},   {0x23f0, 0x23f0},
    {0x23f3, 0x23f3},   {0x25fd, 0x25fe},   {0x2614, 0x2615},   {0x2648, 0x2653},   {0x267f, 0x267f},
    {0x2693, 0x2693},   {0x26a1, 0x26a1},   {0x26aa, 0x26ab},   {0x26bd, 0x26be},   {0x26c4, 0x26c5},
    {0x26ce, 0x26ce},   {0x26d4, 0x26d4},   {0x26ea, 0x26ea},   {0x26f2, 0x26f3},   {0x26f5, 0x26f5},
    {0x26fa, 0x26fa},   {0x26fd, 0x26fd},   {0x2705, 0x2705},   {0x270a, 0x270b},   {0x2728, 0x2728},
    {0x274c, 0x274c},   {0x274e, 0x274e},   {0x2753, 0x2755},   {0x2757, 0x2757},   {0x2795, 0x2797},
    {0x27b0, 0x27b0},   {0x27bf, 0x27bf},   {0x2b1b, 0x2b1c},   {0x2b50, 0x2b50},   {0x2b55, 0x2b55},
    {0x2e80, 0x303e},   {0x3041, 0x33ff},   {0x3400, 0x4dbf},   {0x4e00, 0x9fff},   {0xa000, 0xa4cf},
    {0xa960, 0xa97f},   {0xac00, 0xd7a3},   {0xf900, 0xfaff},   {0xfe10, 0xfe19},   {0xfe30, 0xfe6f},
    {0xff01, 0xff60},   {0xffe0, 0xffe6},   {0x16fe0, 0x18cff}, {0x1aff0, 0x1b2ff}, {0x1f004, 0x1f004},
    {0x1f0cf, 0x1f0cf}, {0x1f18e, 0x1f18e}, {0x1f191, 0x1f19a}, {0x1f200, 0x1f320}, {0x1f32d, 0x1f335},
    {0x1f337, 0x1f37c}, {0x1f37e, 0x1f393}, {0x1f3a0, 0x1f3ca}, {0x1f3cf, 0x1f3d3}, {0x1f3e0, 0x1f3f0},
    {0x1f3f4, 0x1f3f4}, {0x1f3f8, 0x1f43e}, {0x1f440, 0x1f440}, {0x1f442, 0x1f4fc}, {0x1f4ff, 0x1f53d},
    {0x1f54b, 0x1f54e}, {0x1f550, 0x1f567}, {0x1f57a, 0x1f57a}, {0x1f595, 0x1f596}, {0x1f5a4, 0x1f5a4},
    {0x1f5fb, 0x1f64f}, {0x1f680, 0x1f6c5}, {0x1f6cc, 0x1f6cc}, {0x1f6d0, 0x1f6d2}, {0x1f6d5, 0x1f6d7},
    {0x1f6dc, 0x1f6df}, {0x1f6eb, 0x1f6ec}, {0x1f6f4, 0x1f6fc}, {0x1f7e0, 0x1f7eb}, {0x1f7f0, 0x1f7f0},
    {0x1f90c, 0x1f93a}, {0x1f93c, 0x1f945}, {0x1f947, 0x1f9ff}, {0x1fa70, 0x1faff}, {0x20000, 0x3fffd},
};

int cellsOf(uint character)
{
    const QChar::Category category = QChar::category(character);
    if (category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing ||
        category == QChar::Other_Format)
        return 0;
    if (character >= 0x1160 && character <= 0x11ff)
        return 0; // vowels and finals of Hangul stand in the cells of the consonant before them
    const auto range = std::lower_bound(std::begin(wide), std::end(wide), character,
                                        [](const Range& r, uint c) { return r.last < c; });
    return range != std::end(wide) && character >= range->first ? 2 : 1;
}

bool isControl(uint character)
{
    const QChar::Category category = QChar::category(character);
    return category == QChar::Other_Control || category == QChar::Separator_Line ||
           category == QChar::Separator_Paragraph;
}

bool turnsWriting(uint character)
{
    return character == 0x061c || character == 0x200e || character == 0x200f ||
           (character >= 0x202a && character <= 0x202e) || (character >= 0x2066 && character <= 0x2069);
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
        if (turnsWriting(character))
            continue;
        if (isControl(character))
            character = ' ';
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

QString dayText(const QDateTime& dateTime)
{
    return dateTime.toString(QStringLiteral("yyyy-MM-dd"));
}

QString percentText(double percentage)
{
    return percentage < 0 ? QString() : QString::number(percentage, 'f', 0) + QLatin1Char('%');
}
