#include "Reply.h"

#include "../json/JsonWriter.h"

namespace PlanService {

ApiError::ApiError(int status, const QString& code, const QString& message, const QString& field)
    : std::runtime_error(message.toStdString())
    , m_status(status)
    , m_code(code)
    , m_field(field)
{
}

Reply ApiError::reply() const
{
    JsonWriter json;
    json.beginObject().key("error").beginObject();
    json.key("code").text(m_code);
    json.key("message").utf8(what());
    json.key("field").text(m_field);
    json.endObject().endObject();
    return {m_status, {json.take()}, m_headers, {}};
}

ApiError& ApiError::withHeader(const QByteArray& name, const QByteArray& value)
{
    m_headers.append({name, value});
    return *this;
}

} // namespace PlanService
