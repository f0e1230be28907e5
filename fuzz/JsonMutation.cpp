#include "JsonMutation.h"

#include "FuzzTarget.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace KvFuzz {

namespace {

class Mutation
{
public:
    explicit Mutation(std::mt19937& random)
        : m_random(random)
    {
    }

    QJsonObject changed(QJsonObject object)
    {
        if (object.isEmpty() || chance(8)) {
            object.insert(chance(2) ? QStringLiteral("_id") : text(), value());
            return object;
        }
        const QStringList keys = object.keys();
        const QString key = keys.at(number(keys.size()));
        switch (number(6)) {
        case 0:
            object.remove(key);
            break;
        case 1:
            object.insert(keys.at(number(keys.size())), object.value(key));
            break;
        case 2:
            object.insert(text(), object.take(key));
            break;
        default:
            object.insert(key, changed(object.value(key)));
        }
        return object;
    }

    QJsonArray changed(QJsonArray array)
    {
        if (array.isEmpty() || chance(8)) {
            array.append(value());
            return array;
        }
        const int at = number(array.size());
        switch (number(6)) {
        case 0:
            array.removeAt(at);
            break;
        case 1:
            array.insert(number(array.size()), QJsonValue(array.at(at)));
            break;
        default:
            array.replace(at, changed(QJsonValue(array.at(at))));
        }
        return array;
    }

    QByteArray changed(QByteArray bytes)
    {
        if (bytes.isEmpty())
            return QByteArray(1, static_cast<char>(number(256)));
        const int at = number(bytes.size());
        switch (number(4)) {
        case 0:
            bytes[at] = static_cast<char>(number(256));
            break;
        case 1:
            bytes.insert(at, static_cast<char>(number(256)));
            break;
        case 2:
            bytes.insert(at, bytes.mid(at, 1 + number(16)));
            break;
        default:
            bytes.remove(at, 1 + number(8));
        }
        return bytes;
    }

private:
    int number(int below) { return static_cast<int>(m_random() % static_cast<unsigned>(below)); }
    bool chance(int one) { return number(one) == 0; }

    QJsonValue changed(const QJsonValue& old)
    {
        if (chance(4))
            return value();
        if (old.isObject())
            return changed(old.toObject());
        if (old.isArray())
            return changed(old.toArray());
        if (old.isString())
            return changed(old.toString());
        if (old.isDouble())
            return chance(2) ? old.toDouble() + number(3) - 1 : -old.toDouble();
        return value();
    }

    QString changed(QString old)
    {
        const int at = number(old.size() + 1);
        if (at < old.size() && chance(2))
            old[at] = character();
        else if (chance(2))
            old.insert(at, character());
        else
            old = old.left(at);
        return old;
    }

    QChar character()
    {
        static const QString some = QString::fromUtf8("09-:T.Z+ aA\"\\/%&=?#{}[]$()*|\n\t层é");
        return chance(8) ? QChar(static_cast<ushort>(number(0x10000))) : some.at(number(some.size()));
    }

    QString text()
    {
        QString made;
        for (int i = number(6); i > 0; --i)
            made += character();
        return made;
    }

    QJsonValue value()
    {
        static const double numbers[] = {0,
                                         1,
                                         -1,
                                         2,
                                         0.5,
                                         1e15,
                                         9007199254740993.0,
                                         1e300,
                                         -1e-300,
                                         2147483647,
                                         2147483648.0,
                                         -2147483649.0,
                                         100};
        switch (number(8)) {
        case 0:
            return QJsonValue::Null;
        case 1:
            return chance(2);
        case 2:
        case 3:
            return numbers[number(static_cast<int>(sizeof(numbers) / sizeof(*numbers)))];
        case 4:
            return QJsonArray();
        case 5:
            return QJsonObject();
        case 6:
            return QStringLiteral("2024-03-05T08:00:00.000");
        default:
            return text();
        }
    }

    std::mt19937& m_random;
};

} // namespace

QByteArray mutated(const QByteArray& text, std::mt19937& random)
{
    Mutation mutation(random);
    const QJsonDocument document = documentOf(text);
    if (document.isObject())
        return QJsonDocument(mutation.changed(document.object())).toJson(QJsonDocument::Compact);
    if (document.isArray())
        return QJsonDocument(mutation.changed(document.array())).toJson(QJsonDocument::Compact);
    return mutation.changed(text);
}

} // namespace KvFuzz
