#include <KvPublicFun/KvPub.h>

#include <QtCore/QCollator>
#include <QtCore/QLocale>
#include <QtCore/QVarLengthArray>

#include <utility>

namespace {

using Text = QVarLengthArray<QChar, 256>;

struct Kept
{
    explicit Kept(Qt::CaseSensitivity cs)
        : collator(locale.collation())
    {
        collator.setCaseSensitivity(cs);
    }

    QLocale locale;
    QCollator collator;
};

struct Collators
{
    Kept sensitive{Qt::CaseSensitive};
    Kept insensitive{Qt::CaseInsensitive};
};

/// A collator is costly to build and not safe to share between threads, so each thread keeps one for each
/// case sensitivity, until the default locale changes.
QCollator& collatorFor(Qt::CaseSensitivity cs)
{
    // The main thread's objects go before static ones, which may still ask: they find none and get new ones.
    thread_local Collators* collators = nullptr;
    struct Cleaner
    {
        ~Cleaner() { delete std::exchange(collators, nullptr); }
    };
    if (collators == nullptr) {
        thread_local Cleaner cleaner;
        collators = new Collators;
    }
    Kept& kept = cs == Qt::CaseSensitive ? collators->sensitive : collators->insensitive;
    if (kept.locale != QLocale())
        kept = Kept(cs);
    return kept.collator;
}

void appendNumber(Text& out, int number, int digits)
{
    int divisor = 1;
    for (int i = 1; i < digits; ++i)
        divisor *= 10;
    for (; divisor > 0; divisor /= 10)
        out.append(QChar(ushort('0' + number / divisor % 10)));
}

/// Puts the number of digits in front of a run of digits, itself such that a longer run sorts behind a
/// shorter one digit by digit: 0 to 8 digits take one character, more take a nine, the length of the length,
/// the length.
void appendLength(Text& out, int length)
{
    if (length <= 8) {
        appendNumber(out, length, 1);
        return;
    }
    int digitsOfLength = 1;
    for (int rest = length / 10; rest > 0; rest /= 10)
        ++digitsOfLength;
    appendNumber(out, 9, 1);
    appendNumber(out, digitsOfLength - 1, 1);
    appendNumber(out, length, digitsOfLength);
}

/// The value of a decimal digit of any script, -1 for every other character. Names are mostly ASCII, which
/// needs no look-up in the tables of Unicode.
int digitOf(QChar character)
{
    const ushort code = character.unicode();
    if (code < 0x80)
        return code >= '0' && code <= '9' ? code - '0' : -1;
    return character.isDigit() ? character.digitValue() : -1;
}

/// Rewrites a text so that plain comparison orders its numbers by value. QCollator's own numeric mode does
/// not do: it is ignored in the C locale, and elsewhere it breaks up numbers beyond some length.
void makeComparable(const QString& text, Text& out)
{
    const QChar* at = text.constData();
    const QChar* const end = at + text.size();
    while (at != end) {
        if (digitOf(*at) < 0) {
            out.append(*at++);
            continue;
        }
        while (at != end && digitOf(*at) == 0)
            ++at;
        const QChar* const first = at;
        while (at != end && digitOf(*at) >= 0)
            ++at;
        appendLength(out, static_cast<int>(at - first));
        for (const QChar* digit = first; digit != at; ++digit)
            out.append(QChar(ushort('0' + digitOf(*digit))));
    }
}

} // namespace

namespace KvPub {

bool naturalSort(const QString& a, const QString& b, Qt::CaseSensitivity cs)
{
    Text comparableA;
    Text comparableB;
    makeComparable(a, comparableA);
    makeComparable(b, comparableB);
    return collatorFor(cs).compare(comparableA.constData(), comparableA.size(), comparableB.constData(),
                                   comparableB.size()) < 0;
}

} // namespace KvPub
