#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

#include <optional>

namespace PlanService {

constexpr int longestText = 131072; ///< UTF-16 units of any text in a body
/// UTF-8 bytes of names that databases keep in indexes, of projects, categories and users: two of them and
/// what stands beside them fit into the 2,700 bytes that PostgreSQL has for an entry.
constexpr int longestIndexedName = 1000;

/// Reads the members of an object that a client sent. A member that is not there reads as its empty value;
/// one of the wrong type throws ApiError 400 that names it, as "projectData[3].predecessors[0].Lag".
class FieldReader
{
public:
    explicit FieldReader(const QJsonObject& object)
        : m_object(object)
    {
    }
    /// Element @p index of the list @p list of @p parent, which has to outlive the reader.
    FieldReader(const FieldReader* parent, const char* list, int index, const QJsonValue& element);
    /// The object under @p key of @p parent.
    FieldReader(const FieldReader* parent, const char* key);

    bool has(const char* key) const { return m_object.contains(QLatin1String(key)); }
    bool hasNumber(const char* key) const { return m_object.value(QLatin1String(key)).isDouble(); }
    QString text(const char* key) const;
    /// A text of at most longestIndexedName.
    QString indexedName(const char* key) const;
    /// The same as text(); null reads as empty text too, as clients write ids that are not set.
    QString textOrNull(const char* key) const;
    /// Empty, or yyyy-MM-ddThh:mm:ss.zzz; see siteDate().
    QString date(const char* key) const;
    std::optional<int> whole(const char* key) const;
    std::optional<double> number(const char* key) const;
    std::optional<bool> flag(const char* key) const;
    QStringList texts(const char* key) const;
    QJsonArray array(const char* key) const;

    /// "projectData[3].name", for messages.
    QString pathOf(const char* key) const;
    [[noreturn]] void refuse(const char* key, const QString& code, const QString& message) const;

private:
    QString path() const;
    [[noreturn]] void wrongType(const char* key, const char* wanted) const;
    QString checked(const char* key, const QJsonValue& value) const;

    QJsonObject m_object;
    const FieldReader* m_parent = nullptr;
    const char* m_name = nullptr; ///< in the parent
    int m_index = -1;             ///< -1: the parent's member itself
};

/// A date of the site's wall clock in the one form that is stored, so that texts compare as dates do:
/// yyyy-MM-ddThh:mm:ss.zzz. Reads it with a space for the T, shorter fractions, without fraction, without
/// seconds and without time. @return nothing for other text, for a time zone and for days that do not exist.
std::optional<QString> siteDate(const QString& text);

/// The present in the same form.
QString siteNow();

/// For quoting what a client sent: its first characters, with dots where some were left out.
QString shortened(const QString& text);

} // namespace PlanService
