#pragma once

#include <QByteArray>
#include <QVector>

#include <stdexcept>

namespace PlanService {

/// Where a value stands in a JSON text.
struct JsonSlice
{
    int begin = 0;
    int end = 0;
};

/// A member of an object; the key is as written, with its quotes and escapes.
struct JsonMember
{
    JsonSlice key;
    JsonSlice value;
};

/// The text does not split; position() is where.
class JsonSplitError : public std::runtime_error
{
public:
    explicit JsonSplitError(int position)
        : std::runtime_error("not well-formed JSON")
        , m_position(position)
    {
    }
    int position() const { return m_position; }

private:
    int m_position;
};

/// Where the string ends whose first character is at @p at: at its closing quote, or at @p end when it has
/// none.
const char* stringEnd(const char* at, const char* end);

/// The members of the object that @p json consists of, in order and without looking into the values: they
/// only have to close their strings and brackets. A large text is parsed piece by piece this way; a tree of
/// all its values would take several times its size. Throws JsonSplitError.
QVector<JsonMember> splitObject(const QByteArray& json);

/// The elements of the array at @p array. Throws JsonSplitError.
QVector<JsonSlice> splitArray(const QByteArray& json, const JsonSlice& array);

/// The text at @p slice; it stays good as long as @p json does.
inline QByteArray textOf(const QByteArray& json, const JsonSlice& slice)
{
    return QByteArray::fromRawData(json.constData() + slice.begin, slice.end - slice.begin);
}

} // namespace PlanService
