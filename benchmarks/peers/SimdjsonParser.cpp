#include "OtherParsers.h"
#include "PlainReading.h"

#include <simdjson.h>

#include <string_view>

namespace {

class Members
{
public:
    explicit Members(const simdjson::dom::object& object)
        : m_object(object)
    {
    }

    QString text(const char* key) const
    {
        std::string_view text;
        return m_object[key].get(text) == simdjson::SUCCESS ? textOf(text) : QString();
    }

    int number(const char* key) const { return int(real(key)); }

    double real(const char* key) const
    {
        double value = 0;
        return m_object[key].get(value) == simdjson::SUCCESS ? value : 0;
    }

    bool flag(const char* key) const
    {
        bool value = false;
        return m_object[key].get(value) == simdjson::SUCCESS && value;
    }

    QStringList texts(const char* key) const
    {
        QStringList list;
        simdjson::dom::array array;
        if (m_object[key].get(array) == simdjson::SUCCESS) {
            for (const simdjson::dom::element element : array)
                list.append(textOf(element.get_string().value()));
        }
        return list;
    }

    template<class Read>
    void member(const char* key, Read read) const
    {
        simdjson::dom::object object;
        if (m_object[key].get(object) == simdjson::SUCCESS)
            read(Members(object));
    }

    template<class Read>
    void each(const char* key, Read read) const
    {
        simdjson::dom::array array;
        if (m_object[key].get(array) == simdjson::SUCCESS) {
            for (const simdjson::dom::element element : array)
                read(Members(element.get_object().value()));
        }
    }

private:
    static QString textOf(std::string_view text) { return QString::fromUtf8(text.data(), int(text.size())); }

    simdjson::dom::object m_object;
};

} // namespace

KvPlan planBySimdjson(const QByteArray& json)
{
    simdjson::dom::parser parser;
    const simdjson::dom::element document = parser.parse(json.constData(), std::size_t(json.size()));
    KvPlan plan;
    readPlainly(Members(document.get_object().value()), plan);
    return plan;
}
