#pragma once

#include <QtCore/QByteArray>

#include <random>

namespace KvFuzz {

/// The JSON text with one change to what it says: a value of another type or size, a member gone, renamed,
/// repeated or put elsewhere. A text that is no JSON gets a byte changed, inserted, repeated or taken away.
///
/// Qt's own parser is not built for fuzzing, so a fuzzer that changes bytes alone learns nothing from it and
/// rarely gets past it.
QByteArray mutated(const QByteArray& text, std::mt19937& random);

} // namespace KvFuzz
