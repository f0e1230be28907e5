// Request bodies that the service takes apart without parsing them as a whole: what is JSON is split as it
// is, what is not is refused.

#include "FuzzTarget.h"

#include <http/Reply.h>
#include <json/ClientJson.h>
#include <json/JsonSlices.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

namespace {

using namespace PlanService;

/// The value at a slice, read by itself.
QJsonValue valueAt(const QByteArray& json, const JsonSlice& slice)
{
    KvFuzz::require(0 <= slice.begin && slice.begin < slice.end && slice.end <= json.size(),
                    "a slice outside");
    const QJsonDocument document = KvFuzz::documentOf('[' + textOf(json, slice) + ']');
    KvFuzz::require(document.isArray() && document.array().size() == 1, "a slice that is no value");
    return document.array().first();
}

void checkArray(const QByteArray& json, const JsonSlice& slice, const QJsonArray& expected)
{
    const QVector<JsonSlice> elements = splitArray(json, slice);
    KvFuzz::require(elements.size() == expected.size(), "number of elements");
    for (int i = 0; i < elements.size(); ++i)
        KvFuzz::require(valueAt(json, elements.at(i)) == expected.at(i), "an element");
}

void checkObject(const QByteArray& json, const QJsonObject& expected)
{
    QJsonObject found;
    const QVector<JsonMember> members = splitObject(json);
    for (const JsonMember& member : members) {
        const QJsonValue value = valueAt(json, member.value);
        found.insert(valueAt(json, member.key).toString(), value);
        if (value.isArray())
            checkArray(json, member.value, value.toArray());
    }
    // Of the values of a repeated key, Qt keeps any one.
    KvFuzz::require(found.size() < members.size() || found == expected, "an object put together again");
}

/// Either refused for a key that stands twice, or read without leaving anything behind: the fuzzer looks for
/// leaks, and this is the one place here where the parser is watched.
void checkClientDocument(const QByteArray& json, const QJsonDocument& expected)
{
    try {
        KvFuzz::require(clientDocument(json) == expected, "another document");
    } catch (const ApiError& refusal) {
        KvFuzz::require(refusal.status() == 400 && !repeatedKey(json).isNull(), "another refusal");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray json = KvFuzz::bytesOf(data, size);
    const QJsonDocument document = KvFuzz::documentOf(json);
    checkClientDocument(json, document);
    try {
        if (document.isObject())
            checkObject(json, document.object());
        else if (document.isArray())
            checkArray(json, {0, json.size()}, document.array());
        else
            splitObject(json);
    } catch (const JsonSplitError& error) {
        KvFuzz::require(document.isNull(), "JSON that was refused");
        KvFuzz::require(0 <= error.position() && error.position() <= json.size(), "a position outside");
    }
    return 0;
}
