#pragma once

#include <QString>

namespace KvTest {

/// "text"_s is a QString of UTF-8 text.
inline QString operator""_s(const char* text, std::size_t size)
{
    return QString::fromUtf8(text, static_cast<int>(size));
}

} // namespace KvTest
