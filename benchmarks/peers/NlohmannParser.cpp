#include "OtherParsers.h"
#include "PlainReading.h"

#include <nlohmann/json.hpp>

namespace {

class Members
{
public:
    explicit Members(const nlohmann::json& object)
        : m_object(object)
    {
    }

    QString text(const char* key) const
    {
        const nlohmann::json* value = find(key);
        return value && value->is_string() ? textOf(*value) : QString();
    }

    int number(const char* key) const { return int(real(key)); }

    double real(const char* key) const
    {
        const nlohmann::json* value = find(key);
        return value && value->is_number() ? value->get<double>() : 0;
    }

    bool flag(const char* key) const
    {
        const nlohmann::json* value = find(key);
        return value && value->is_boolean() && value->get<bool>();
    }

    QStringList texts(const char* key) const
    {
        QStringList list;
        const nlohmann::json* value = find(key);
        if (value && value->is_array()) {
            for (const nlohmann::json& element : *value)
                list.append(textOf(element));
        }
        return list;
    }

    template<class Read>
    void member(const char* key, Read read) const
    {
        if (const nlohmann::json* value = find(key))
            read(Members(*value));
    }

    template<class Read>
    void each(const char* key, Read read) const
    {
        const nlohmann::json* value = find(key);
        if (value && value->is_array()) {
            for (const nlohmann::json& element : *value)
                read(Members(element));
        }
    }

private:
    static QString textOf(const nlohmann::json& value)
    {
        return QString::fromStdString(value.get_ref<const std::string&>());
    }

    const nlohmann::json* find(const char* key) const
    {
        const auto found = m_object.find(key);
        return found != m_object.end() ? &*found : nullptr;
    }

    const nlohmann::json& m_object;
};

} // namespace

KvPlan planByNlohmann(const QByteArray& json)
{
    const nlohmann::json document = nlohmann::json::parse(json.cbegin(), json.cend());
    KvPlan plan;
    readPlainly(Members(document), plan);
    return plan;
}
