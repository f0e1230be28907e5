#include "JsonSlices.h"

#include <cstring>

namespace PlanService {

namespace {

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// Walks over a text from value to value.
class Splitter
{
public:
    Splitter(const QByteArray& json, int begin, int end)
        : m_text(json.constData())
        , m_at(begin)
        , m_end(end)
    {
    }

    void skipSpace()
    {
        while (m_at < m_end && isSpace(m_text[m_at])) {
            ++m_at;
        }
    }
    bool take(char c)
    {
        skipSpace();
        if (m_at < m_end && m_text[m_at] == c) {
            ++m_at;
            return true;
        }
        return false;
    }
    void expect(char c)
    {
        if (!take(c)) {
            throw JsonSplitError(m_at);
        }
    }
    void expectEnd()
    {
        skipSpace();
        if (m_at != m_end) {
            throw JsonSplitError(m_at);
        }
    }
    JsonSlice string()
    {
        skipSpace();
        const int begin = m_at;
        if (m_at == m_end || m_text[m_at] != '"') {
            throw JsonSplitError(m_at);
        }
        passString();
        return {begin, m_at};
    }
    JsonSlice value()
    {
        skipSpace();
        const int begin = m_at;
        int depth = 0;
        while (m_at < m_end) {
            const char c = m_text[m_at];
            if (depth == 0 && (c == ',' || c == '}' || c == ']' || isSpace(c))) {
                break;
            }
            if (c == '"') {
                passString();
                continue;
            }
            ++m_at;
            depth += c == '{' || c == '[' ? 1 : (c == '}' || c == ']' ? -1 : 0);
        }
        if (m_at == begin || depth != 0) {
            throw JsonSplitError(m_at);
        }
        return {begin, m_at};
    }

private:
    void passString()
    {
        const char* const quote = stringEnd(m_text + m_at + 1, m_text + m_end);
        m_at = static_cast<int>(quote - m_text);
        if (m_at == m_end) {
            throw JsonSplitError(m_end);
        }
        ++m_at;
    }

    const char* m_text;
    int m_at;
    int m_end;
};

} // namespace

const char* stringEnd(const char* at, const char* end)
{
    const char* const begin = at;
    for (; at < end; ++at) {
        at = static_cast<const char*>(std::memchr(at, '"', static_cast<std::size_t>(end - at)));
        if (at == nullptr) {
            return end;
        }
        // Backslashes in front of it escape each other, and an odd one escapes the quote.
        const char* escape = at;
        while (escape > begin && escape[-1] == '\\') {
            --escape;
        }
        if ((at - escape) % 2 == 0) {
            return at;
        }
    }
    return end;
}

QVector<JsonMember> splitObject(const QByteArray& json)
{
    Splitter splitter(json, 0, json.size());
    QVector<JsonMember> members;
    splitter.expect('{');
    if (!splitter.take('}')) {
        do {
            JsonMember member;
            member.key = splitter.string();
            splitter.expect(':');
            member.value = splitter.value();
            members.append(member);
        } while (splitter.take(','));
        splitter.expect('}');
    }
    splitter.expectEnd();
    return members;
}

QVector<JsonSlice> splitArray(const QByteArray& json, const JsonSlice& array)
{
    Splitter splitter(json, array.begin, array.end);
    QVector<JsonSlice> elements;
    splitter.expect('[');
    if (!splitter.take(']')) {
        do {
            elements.append(splitter.value());
        } while (splitter.take(','));
        splitter.expect(']');
    }
    splitter.expectEnd();
    return elements;
}

} // namespace PlanService
