#include <model/KvKeptValues.h>

#include <cstring>

namespace Kv {

namespace {

constexpr quint64 factor = 0x9e3779b97f4a7c15; // 2^64 divided by the golden ratio

quint64 mixed(quint64 hash, quint64 next)
{
    hash = (hash ^ next) * factor;
    return hash ^ (hash >> 32);
}

} // namespace

// Four characters at a time: qHash takes one, which is a good part of what reading a text costs. Texts that
// meet in one place only displace each other.
uint keptHash(const QString& text)
{
    const QChar* rest = text.constData();
    int left = text.size();
    quint64 hash = quint64(left);
    for (; left >= 4; left -= 4, rest += 4) {
        quint64 four = 0;
        std::memcpy(&four, rest, sizeof four);
        hash = mixed(hash, four);
    }
    for (; left > 0; --left, ++rest)
        hash = (hash ^ rest->unicode()) * factor;
    // Once more, as the last character of four has come no further than the uppermost bits.
    return uint((hash * factor) >> 32);
}

uint keptHash(const QStringList& texts)
{
    return texts.isEmpty() ? 0 : keptHash(texts.first());
}

uint keptHash(const KvTextLists& map)
{
    return map.isEmpty() ? 0 : keptHash(map.firstKey());
}

uint keptHash(const KvWallClock& time)
{
    return uint(
        mixed(mixed(0, quint64(time.first.toJulianDay())), quint64(time.second.msecsSinceStartOfDay())));
}

uint keptHash(const KvAmount& amount)
{
    quint64 bits = 0;
    std::memcpy(&bits, &amount.value, sizeof bits);
    return uint(mixed(mixed(0, bits), quint64(amount.units)));
}

} // namespace Kv
