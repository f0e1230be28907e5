#include "ClientJson.h"

#include "../http/Reply.h"
#include "JsonSlices.h"

#include <QJsonArray>
#include <QSet>

#include <algorithm>
#include <deque>
#include <memory>
#include <string_view>
#include <vector>

namespace PlanService {

namespace {

/// Qt's parser goes no deeper, so it gives up before it meets what stands behind.
constexpr std::size_t deepestNesting = 1024;

/// An object or a list that is open. Keys stand in one row for all levels, those of an inner one behind those
/// of the outer: walking through a small node asks for no memory.
struct Level
{
    bool isObject = false;
    bool atKey = false;
    std::string_view key;                   ///< the one that stands before the value
    std::size_t firstKey = 0;               ///< of its own, in the row of them
    std::unique_ptr<QSet<QByteArray>> many; ///< all of its own, once there are many
};

/// Keys whose values are lists or objects: as a rule a few in each object.
class Keys
{
public:
    bool contains(const Level& level, std::string_view key) const
    {
        if (level.many) {
            return level.many->contains(bytes(key));
        }
        return std::find(m_row.begin() + static_cast<std::ptrdiff_t>(level.firstKey), m_row.end(), key) !=
               m_row.end();
    }

    /// @p level is the innermost one.
    void add(Level& level, std::string_view key)
    {
        constexpr std::size_t few = 16;
        if (!level.many && m_row.size() - level.firstKey < few) {
            m_row.push_back(key);
            return;
        }
        if (!level.many) {
            level.many = std::make_unique<QSet<QByteArray>>();
            for (std::size_t i = level.firstKey; i < m_row.size(); ++i) {
                level.many->insert(bytes(m_row[i]));
            }
        }
        level.many->insert(bytes(key));
    }

    std::size_t size() const { return m_row.size(); }
    void forget(const Level& level) { m_row.resize(level.firstKey); }

private:
    static QByteArray bytes(std::string_view key)
    {
        return QByteArray::fromRawData(key.data(), static_cast<int>(key.size()));
    }

    std::vector<std::string_view> m_row;
};

/// What stands between the quotes; one with escapes is read, as the same key may be written in several ways.
std::string_view keyOf(std::string_view raw, std::deque<QByteArray>& read)
{
    if (raw.find('\\') == std::string_view::npos) {
        return raw;
    }
    const QByteArray text("[\"" + QByteArray(raw.data(), static_cast<int>(raw.size())) + "\"]");
    read.push_back(QJsonDocument::fromJson(text).array().at(0).toString().toUtf8());
    return {read.back().constData(), static_cast<std::size_t>(read.back().size())};
}

} // namespace

QString repeatedKey(const QByteArray& json)
{
    std::vector<Level> levels;
    levels.reserve(8);
    levels.emplace_back();
    Keys keys;
    std::deque<QByteArray> read;
    const char* const end = json.constData() + json.size();
    for (const char* at = json.constData(); at < end; ++at) {
        Level& level = levels.back();
        switch (*at) {
        case '"': {
            const char* const begin = at + 1;
            at = stringEnd(begin, end);
            if (level.isObject && level.atKey) {
                level.atKey = false;
                level.key = keyOf({begin, static_cast<std::size_t>(at - begin)}, read);
                if (keys.contains(level, level.key)) {
                    return QString::fromUtf8(level.key.data(), static_cast<int>(level.key.size()));
                }
            }
            break;
        }
        case '{':
        case '[':
            if (level.isObject) {
                keys.add(level, level.key);
            }
            if (levels.size() > deepestNesting) {
                return QString();
            }
            levels.emplace_back();
            levels.back().isObject = levels.back().atKey = *at == '{';
            levels.back().firstKey = keys.size();
            break;
        case '}':
        case ']':
            if (levels.size() > 1) {
                keys.forget(level);
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
