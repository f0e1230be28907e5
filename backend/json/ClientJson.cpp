#include "ClientJson.h"

#include "../http/Reply.h"

#include <QJsonArray>
#include <QSet>

#include <vector>

namespace PlanService {

namespace {

/// The keys of one object that have lists or objects as their values: as a rule a few.
class Keys
{
public:
    bool contains(const QByteArray& key) const
    {
        return m_many.isEmpty() ? m_few.contains(key) : m_many.contains(key);
    }

    void add(const QByteArray& key)
    {
        constexpr int few = 16;
        if (m_few.size() < few) {
            m_few.append(key);
            return;
        }
        if (m_many.isEmpty()) {
            m_many = QSet<QByteArray>(m_few.begin(), m_few.end());
        }
        m_many.insert(key);
    }

private:
    QVector<QByteArray> m_few;
    QSet<QByteArray> m_many; ///< all of them, once there are more
};

struct Level
{
    bool isObject = false;
    bool atKey = false;
    QByteArray key; ///< the one that stands before the value
    Keys keys;
};

/// What stands between the quotes; one with escapes is read, as the same key may be written in several ways.
QByteArray keyOf(const char* begin, const char* end)
{
    const QByteArray raw = QByteArray::fromRawData(begin, static_cast<int>(end - begin));
    if (!raw.contains('\\')) {
        return raw;
    }
    return QJsonDocument::fromJson("[\"" + raw + "\"]").array().at(0).toString().toUtf8();
}

const char* stringEnd(const char* at, const char* end)
{
    for (; at < end && *at != '"'; ++at) {
        if (*at == '\\' && at + 1 < end) {
            ++at;
        }
    }
    return at;
}

} // namespace

QString repeatedKey(const QByteArray& json)
{
    std::vector<Level> levels(1);
    const char* const end = json.constData() + json.size();
    for (const char* at = json.constData(); at < end; ++at) {
        Level& level = levels.back();
        switch (*at) {
        case '"': {
            const char* const begin = at + 1;
            at = stringEnd(begin, end);
            if (level.isObject && level.atKey) {
                level.atKey = false;
                level.key = keyOf(begin, at);
                if (level.keys.contains(level.key)) {
                    return QString::fromUtf8(level.key);
                }
            }
            break;
        }
        case '{':
        case '[':
            if (level.isObject) {
                level.keys.add(level.key);
            }
            levels.emplace_back();
            levels.back().isObject = levels.back().atKey = *at == '{';
            break;
        case '}':
        case ']':
            if (levels.size() > 1) {
                levels.pop_back();
            }
            break;
        case ',':
            level.atKey = true;
            break;
        default:
            break;
        }
    }
    return QString();
}

QJsonDocument clientDocument(const QByteArray& json, QJsonParseError* error)
{
    const QString key = repeatedKey(json);
    if (!key.isNull()) {
        throw ApiError(400, QStringLiteral("badJson"),
                       QStringLiteral("the JSON names the key '%1' twice in one object").arg(key.left(40)),
                       key.left(40));
    }
    return QJsonDocument::fromJson(json, error);
}

} // namespace PlanService
