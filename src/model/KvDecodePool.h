#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QJsonValue>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

namespace Kv {

/// Reads values that repeat from record to record of one reply and keeps each of them once.
///
/// The nodes of a plan share their plan, project, category and people, and start and finish on a few hundred
/// working days. Sharing the text saves most of a plan's memory; remembering dates saves the time-zone
/// look-up that every local date-time costs. What is read does not depend on what the pool holds. Its size is
/// bounded.
class KvDecodePool
{
public:
    /// A text that other records probably hold too. Text of a single record is read by QJsonValue::toString.
    QString text(const QJsonValue& value);

    /// A date-time in the service's text form; anything else reads as a null date-time.
    QDateTime dateTime(const QJsonValue& value);

    /// An array of identifiers; anything else reads as an empty list.
    QStringList idList(const QJsonValue& value);

private:
    struct KnownDate
    {
        QString text;
        QDateTime dateTime;
    };

    QSet<QString> m_texts;
    QSet<QStringList> m_lists;
    QVector<KnownDate> m_dates; // indexed by the hash of the text; a newcomer takes the place
};

/// An array of identifiers, each the string of its JSON value; anything else reads as an empty list.
QStringList idListFromJson(const QJsonValue& value);

} // namespace Kv
