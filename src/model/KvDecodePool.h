#pragma once

#include <model/KvJsonMembers.h>
#include <model/KvKeptValues.h>

#include <QtCore/QCborValue>
#include <QtCore/QDateTime>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

class QCborArray;

namespace Kv {

/// Remembers values that repeat from record to record of one reply, so that each is kept, or worked out,
/// once.
///
/// The nodes of a plan share their plan, project, category and people, and start and finish on a few hundred
/// working days. Sharing the text saves most of a plan's memory; remembering dates saves the time-zone
/// look-up that every local date-time costs. What is read does not depend on what the pool holds.
class KvDecodePool
{
public:
    /// @param recordCount how many records will be read, or a guess; it decides the pool's size.
    explicit KvDecodePool(int recordCount = 1);

    /// @p text, sharing its data with an equal text of another record.
    QString shared(const QString& text);

    /// The same for a map of lists, and for the keys of one that is not shared.
    KvTextLists shared(const KvTextLists& map);
    void shareKeys(KvTextLists& map);

    /// The text of a member that mostly equals that of the record before, as the plan of a plan's nodes does:
    /// it is then not even read again.
    QString repeated(const KvJsonMember& member);

    /// The same for a date-time in the service's form.
    QDateTime repeatedDateTime(const KvJsonMember& member);

    /// The date-time of a text in the service's form; null when it is in another.
    QDateTime dateTime(const QString& text);

    /// The date-time of a text in the exchange format's form; null when it is in another.
    QDateTime exchangeDateTime(const QString& text);

    /// The identifiers in a JSON array, each the string of its value.
    QStringList idList(const QCborArray& array);

    /// The same where the array mostly equals the one read before in this way; empty when @p value is none.
    QStringList repeatedIdList(const QCborValue& value);

private:
    template<class Value>
    struct Last
    {
        QCborValue value;
        Value made;

        template<class Make>
        const Value& of(const QCborValue& next, Make make)
        {
            if (value != next) {
                made = make(next);
                value = next;
            }
            return made;
        }
    };

    template<class Value, class Make>
    Value repeated(QVector<Last<Value>>& lasts, const KvJsonMember& member, Make make)
    {
        if (member.isMissing())
            return make(QCborValue());
        if (lasts.isEmpty())
            lasts.resize(KvJsonMember::mostFields);
        return lasts[member.field()].of(member.value(), make);
    }

    // By field. Fields of different records may share a place: what is made depends on the value alone.
    QVector<Last<QString>> m_lastTexts;
    QVector<Last<QDateTime>> m_lastDates;
    Last<QStringList> m_lastList;
    KvKeptValues<QString> m_texts;
    KvKeptValues<QString, QDateTime> m_dates;
    KvKeptValues<QString, QDateTime> m_exchangeDates;
    KvKeptValues<QString, QStringList> m_singles; // lists of one identifier, by that identifier
    KvKeptValues<KvTextLists> m_maps;
};

} // namespace Kv
