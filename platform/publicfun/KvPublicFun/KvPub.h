#pragma once

#include <KvPublicFun/KvPublicFunExport.h>

#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariant>

/// Small helpers that the libraries of the application share. None of them fails, blocks or keeps state that
/// a caller could see; all may be called from any thread.
namespace KvPub {

/// The one form in which date-times travel: "yyyy-MM-ddThh:mm:ss.zzz", the wall-clock time of the site.
KVPUBLICFUN_EXPORT QString getDateTimeFormat();

/// Reads a date-time of ISO 8601 as local wall-clock time, to the millisecond.
///
/// Read are: `yyyy-MM-dd`, alone (the first moment of that day, as a rule midnight) or followed by "T" or one
/// space and `hh:mm` or `hh:mm:ss`, the latter with or without a fraction after "." or ","; then nothing, "Z"
/// or an offset `+hh:mm`, `+hhmm` or `+hh` (also with "-"). Years are 0001 to 9999. Digits of a fraction
/// beyond the third are cut off, never rounded up, so that no text moves into the next day. 24:00 is the next
/// midnight.
///
/// @return with "Z" or an offset, that instant converted to local time; else the wall-clock time as it is
/// read. Of an hour that occurs twice (end of daylight saving) one is chosen. A time that the local clock
/// skips (start of daylight saving) is kept as a date-time with the fixed UTC offset in force before the
/// skip: so it is valid, stands for the right instant, and `getQStringByDateTime` gives the same text back;
/// its `toLocalTime()` is what the clock showed then. Any other text gives a null date-time.
KVPUBLICFUN_EXPORT QDateTime getDateTimeByQString(const QString& text);

/// Writes @p dateTime in the form of `getDateTimeFormat`: date and time as its own time spec shows them,
/// without any time zone. Always in the digits 0 to 9, whatever the user's language. Years above 9999 take
/// more digits, negative ones a sign.
/// @return "" for a null or invalid date-time.
KVPUBLICFUN_EXPORT QString getQStringByDateTime(const QDateTime& dateTime);

/// Whether @p a goes before @p b as a reader expects it: runs of digits by their value, whatever their length
/// and leading zeros, the rest by the rules of the user's language (`QLocale()`; in the C locale by character
/// code). With Qt::CaseInsensitive, upper and lower case are the same.
///
/// A strict weak order, fit for `std::sort`, as long as the default locale stays the same. Texts that differ
/// in leading zeros only are equivalent.
KVPUBLICFUN_EXPORT bool naturalSort(const QString& a, const QString& b, Qt::CaseSensitivity cs);

/// Whether both lists hold the same texts in the same order.
KVPUBLICFUN_EXPORT bool isStringListSame(const QStringList& a, const QStringList& b);

/// Compares two lists by membership; order and repetition make no difference.
/// @param[out] added texts of @p newList that @p oldList lacks, each once, in the order of @p newList
/// @param[out] removed texts of @p oldList that @p newList lacks, each once, in the order of @p oldList
/// Both outputs are replaced; they may be the same objects as the inputs.
KVPUBLICFUN_EXPORT void getStringListChange(const QStringList& oldList, const QStringList& newList,
                                            QStringList& added, QStringList& removed);

/// Removes from @p b each key whose value @p a holds too. Values are compared as a whole, however deep they
/// are: type and content, 1 and 1.0 being the same number, a missing key being no value at all (so a null
/// stays).
KVPUBLICFUN_EXPORT void removeCommonJsonValue(const QJsonObject& a, QJsonObject& b);

/// Each variant's text (`QVariant::toString`), one for one; a variant without a text form gives "".
KVPUBLICFUN_EXPORT QStringList getStrListFromVarList(const QVariantList& list);

/// Model identifier to the identifiers of its linked entities, as JSON: `[{"modelId": key, "entityIds":
/// [...]}]`, one element per entry, in key order, entries without entities included.
KVPUBLICFUN_EXPORT QJsonArray linksEntityToJsonArray(const QMap<QString, QStringList>& links);

/// Reads what `linksEntityToJsonArray` writes. Elements that are no object are skipped; a missing "modelId"
/// reads as "" and a missing "entityIds" as an empty list. When a model occurs again, its entities are
/// appended, so that no link is lost.
KVPUBLICFUN_EXPORT QMap<QString, QStringList> jsonArrayToLinksEntity(const QJsonArray& array);

} // namespace KvPub
