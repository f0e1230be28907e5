#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QHash>
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
/// look-up that every local date-time costs. What is read does not depend on what the pool holds. Its size is
/// fixed: a newcomer takes the place that its hash gives it.
class KvDecodePool
{
public:
    /// @p text, sharing its data with an equal text of another record.
    QString shared(const QString& text);

    /// The date-time of a text in the service's form; null when it is in another.
    QDateTime dateTime(const QString& text);

    /// The identifiers in a JSON array, each the string of its value.
    QStringList idList(const QCborArray& array);

private:
    template<class Value>
    class Memory
    {
    public:
        template<class Make>
        const Value& find(const QString& text, Make make)
        {
            if (m_places.isEmpty())
                m_places.resize(placeCount);
            Place& place = m_places[int(qHash(text) & uint(placeCount - 1))];
            if (place.text != text) {
                place.value = make(text);
                place.text = text;
            }
            return place.value;
        }

    private:
        static constexpr int placeCount = 1024; // a power of two
        struct Place
        {
            QString text; // never empty when the place is taken
            Value value;
        };
        QVector<Place> m_places;
    };

    Memory<QString> m_texts;
    Memory<QDateTime> m_dates;
    Memory<QStringList> m_singles; // lists of one identifier, by that identifier
};

} // namespace Kv
