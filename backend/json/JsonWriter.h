#pragma once

#include <QByteArray>
#include <QLocale>
#include <QString>
#include <QStringList>

#include <cstring>

namespace PlanService {

/// Appends JSON text, keys in the order of the calls. A million nodes are written this way, where a tree of
/// values for each would cost more than the rest of the work.
class JsonWriter
{
public:
    JsonWriter() = default;
    /// @param expected bytes that the text will have, more or less.
    explicit JsonWriter(int expected) { m_text.reserve(expected); }

    JsonWriter& beginObject() { return open('{'); }
    JsonWriter& endObject() { return close('}'); }
    JsonWriter& beginArray() { return open('['); }
    JsonWriter& endArray() { return close(']'); }

    JsonWriter& key(const char* name)
    {
        separate();
        const int length = static_cast<int>(std::strlen(name));
        char* at = grow(length + 3);
        *at++ = '"';
        std::memcpy(at, name, static_cast<std::size_t>(length));
        at[length] = '"';
        at[length + 1] = ':';
        m_first = true;
        return *this;
    }
    JsonWriter& text(const QString& value)
    {
        separate();
        if (!appendPlain(value)) {
            appendQuoted(value.toUtf8());
        }
        return *this;
    }
    JsonWriter& utf8(const QByteArray& value)
    {
        separate();
        appendQuoted(value);
        return *this;
    }
    JsonWriter& number(qint64 value)
    {
        separate();
        m_text.append(QByteArray::number(value));
        return *this;
    }
    JsonWriter& real(double value)
    {
        separate();
        m_text.append(QByteArray::number(value, 'g', QLocale::FloatingPointShortest));
        return *this;
    }
    JsonWriter& flag(bool value)
    {
        separate();
        m_text.append(value ? "true" : "false");
        return *this;
    }
    JsonWriter& texts(const QStringList& values)
    {
        beginArray();
        for (const QString& value : values) {
            text(value);
        }
        return endArray();
    }
    /// Text that is JSON already.
    JsonWriter& raw(const QByteArray& json)
    {
        separate();
        m_text.append(json);
        return *this;
    }

    const QByteArray& result() const { return m_text; }
    QByteArray take()
    {
        QByteArray text;
        text.swap(m_text);
        m_first = true;
        return text;
    }

private:
    JsonWriter& open(char bracket)
    {
        separate();
        m_text.append(bracket);
        m_first = true;
        return *this;
    }
    JsonWriter& close(char bracket)
    {
        m_text.append(bracket);
        m_first = false;
        return *this;
    }
    void separate()
    {
        if (!m_first) {
            m_text.append(',');
        }
        m_first = false;
    }
    char* grow(int bytes)
    {
        const int size = m_text.size();
        m_text.resize(size + bytes);
        return m_text.data() + size;
    }
    /// Most texts need no escapes and are ASCII; these go straight in. @return false for the others, then
    /// nothing was appended.
    bool appendPlain(const QString& value)
    {
        const int size = m_text.size();
        char* at = grow(value.size() + 2);
        *at++ = '"';
        for (const QChar c : value) {
            const ushort unit = c.unicode();
            if (unit < 0x20 || unit >= 0x7F || unit == '"' || unit == '\\') {
                m_text.resize(size);
                return false;
            }
            *at++ = static_cast<char>(unit);
        }
        *at = '"';
        return true;
    }
    void appendQuoted(const QByteArray& utf8)
    {
        static const char hex[] = "0123456789abcdef";
        m_text.append('"');
        for (const char c : utf8) {
            const auto byte = static_cast<unsigned char>(c);
            if (c == '"' || c == '\\') {
                m_text.append('\\').append(c);
            } else if (byte < 0x20) {
                m_text.append("\\u00").append(hex[byte >> 4]).append(hex[byte & 15]);
            } else {
                m_text.append(c);
            }
        }
        m_text.append('"');
    }

    QByteArray m_text;
    bool m_first = true;
};

} // namespace PlanService
