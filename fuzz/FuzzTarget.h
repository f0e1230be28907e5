#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QString>

#include <cstddef>
#include <cstdint>

#if defined(__SANITIZE_ADDRESS__)
#define KV_COUNTS_LEAKS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KV_COUNTS_LEAKS
#endif
#endif
#ifdef KV_COUNTS_LEAKS
#include <sanitizer/lsan_interface.h>
#endif

/// One input of a fuzz target. Each target is a file with this function: the fuzzer calls it with inputs that
/// it makes up, the replay program with those that are kept. It returns 0, or ends the program by fail().
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace KvFuzz {

inline QByteArray bytesOf(const std::uint8_t* data, std::size_t size)
{
    return QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size));
}

/// The document that the bytes are. What it consists of is not looked at for leaks: Qt's parser leaks a list
/// or object whose key occurs again in the same object.
inline QJsonDocument documentOf(const QByteArray& json)
{
#ifdef KV_COUNTS_LEAKS
    const __lsan::ScopedDisabler disabled;
#endif
    return QJsonDocument::fromJson(json);
}

/// Ends the program, so that the fuzzer keeps the input, and tells what does not hold.
[[noreturn]] inline void fail(const QString& what)
{
    qFatal("%s", what.toUtf8().constData());
}

inline void require(bool holds, const char* what)
{
    if (!holds)
        fail(QString::fromUtf8(what));
}

/// @p difference: what differs, for people; empty when nothing does.
inline void requireEqual(const QString& difference, const char* what)
{
    if (!difference.isEmpty())
        fail(QString::fromUtf8(what) + QLatin1Char('\n') + difference);
}

} // namespace KvFuzz
