#include "NodeFields.h"

#include "CellText.h"
#include "RecordValues.h"

#include <QtCore/QHash>
#include <QtCore/QJsonDocument>

#include <algorithm>

namespace {

constexpr const char* told = "the service tells it";
constexpr const char* unknown = "the service does not keep it";
constexpr const char* stays = "a task stays where it was created";

template<auto member>
QJsonValue valueOf(const KvPlanNode& node)
{
    return toJson(node.*member);
}

template<auto member>
bool setValueOf(KvPlanNode& node, const QJsonValue& value)
{
    return fromJson(value, node.*member);
}

bool setPercentage(KvPlanNode& node, const QJsonValue& value)
{
    double percentage = 0;
    if (!fromJson(value, percentage) || percentage > 100)
        return false;
    node.finishedPercentage = percentage;
    return true;
}

bool always(const KvPlanNode&)
{
    return true;
}

template<auto member>
bool unlessEmpty(const KvPlanNode& node)
{
    return !(node.*member).isEmpty();
}

template<auto member>
bool unlessNegative(const KvPlanNode& node)
{
    return node.*member >= 0;
}

bool guidIsSent(const KvPlanNode& node)
{
    return !node.guid.isEmpty() && node.guid != node.id;
}

bool effectIsSent(const KvPlanNode& node)
{
    return node.dynamicEffect != -1;
}

template<auto member>
NodeField changeable(const char* name, NodeField::Form form, bool (*isSent)(const KvPlanNode&) = always)
{
    return {QLatin1String(name), form, nullptr, valueOf<member>, setValueOf<member>, isSent};
}

template<auto member>
NodeField fixed(const char* name, NodeField::Form form, const char* why)
{
    return {QLatin1String(name), form, why, valueOf<member>, nullptr, nullptr};
}

using Node = KvPlanNode;

QVector<NodeField> makeFields()
{
    return {
        fixed<&Node::id>("id", NodeField::Text, told),
        changeable<&Node::category>("category", NodeField::Text, unlessEmpty<&Node::category>),
        changeable<&Node::name>("name", NodeField::Text, unlessEmpty<&Node::name>),
        {QLatin1String("finishedPercentage"), NodeField::Percentage, nullptr,
         valueOf<&Node::finishedPercentage>, setPercentage, unlessNegative<&Node::finishedPercentage>},
        changeable<&Node::planNodeId>("planNodeId", NodeField::WholeNumber),
        changeable<&Node::uniqueId>("uniqueId", NodeField::WholeNumber),
        changeable<&Node::parentTaskId>("parentTaskId", NodeField::WholeNumber),
        changeable<&Node::guid>("guid", NodeField::Text, guidIsSent),
        fixed<&Node::planId>("planId", NodeField::Text, stays),
        fixed<&Node::planName>("planName", NodeField::Text, told),
        fixed<&Node::projectId>("projectId", NodeField::Text, stays),
        fixed<&Node::notes>("notes", NodeField::Text, unknown),
        fixed<&Node::summary>("summary", NodeField::Flag, told),
        fixed<&Node::milestone>("milestone", NodeField::Flag, told),
        changeable<&Node::predecessors>("predecessors", NodeField::Json),
        changeable<&Node::startDate>("startDate", NodeField::Date),
        changeable<&Node::finishDate>("finishDate", NodeField::Date),
        fixed<&Node::duration>("duration", NodeField::Json, unknown),
        fixed<&Node::startText>("startText", NodeField::Text, unknown),
        fixed<&Node::durationText>("durationText", NodeField::Text, unknown),
        fixed<&Node::finishSlack>("finishSlack", NodeField::Json, unknown),
        fixed<&Node::finishText>("finishText", NodeField::Text, unknown),
        fixed<&Node::type>("type", NodeField::WholeNumber, unknown),
        changeable<&Node::remark>("remark", NodeField::Text, unlessEmpty<&Node::remark>),
        changeable<&Node::isDistributed>("isDistributed", NodeField::Flag),
        changeable<&Node::dynamicEffect>("dynamicEffect", NodeField::WholeNumber, effectIsSent),
        changeable<&Node::displaySimulation>("displaySimulation", NodeField::Flag),
        changeable<&Node::entityHideDate>("entityHideDate", NodeField::Date),
        changeable<&Node::entityHideType>("entityHideType", NodeField::WholeNumber),
        changeable<&Node::planWorkload>("planWorkload", NodeField::WholeNumber,
                                        unlessNegative<&Node::planWorkload>),
        changeable<&Node::actualWorkload>("actualWorkload", NodeField::WholeNumber,
                                          unlessNegative<&Node::actualWorkload>),
        fixed<&Node::createdAt>("createdAt", NodeField::Date, told),
        fixed<&Node::updatedAt>("updatedAt", NodeField::Date, told),
        fixed<&Node::createdBy>("createdBy", NodeField::Text, told),
        fixed<&Node::updatedBy>("updatedBy", NodeField::Text, told),
        changeable<&Node::actualStartDate>("actualStartDate", NodeField::Date),
        changeable<&Node::actualFinishDate>("actualFinishDate", NodeField::Date),
        changeable<&Node::userIds>("userIds", NodeField::List),
        changeable<&Node::executeIds>("executeIds", NodeField::List),
        changeable<&Node::cooperateIds>("cooperateIds", NodeField::List),
        changeable<&Node::links>("links", NodeField::Json),
        changeable<&Node::documentIds>("documentIds", NodeField::List),
        fixed<&Node::documents>("documents", NodeField::Json, told),
        changeable<&Node::materialBills>("materialBills", NodeField::Json),
    };
}

QJsonValue readNumber(const QString& text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber ? QJsonValue(number) : QJsonValue(QJsonValue::Undefined);
}

QJsonValue readFlag(const QString& text)
{
    const QString word = text.toLower();
    if (word == QLatin1String("true") || word == QLatin1String("yes"))
        return true;
    if (word == QLatin1String("false") || word == QLatin1String("no"))
        return false;
    return QJsonValue::Undefined;
}

QJsonValue readJson(const QString& text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (document.isArray())
        return document.array();
    return document.isObject() ? QJsonValue(document.object()) : QJsonValue(QJsonValue::Undefined);
}

QJsonValue readList(const QString& text)
{
    if (text.startsWith(QLatin1Char('[')))
        return readJson(text);
    QJsonArray list;
    const QStringList parts = text.split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString& part : parts)
        list.append(part.trimmed());
    return list;
}

QString shownDate(const QString& text)
{
    QString shown = text;
    shown.replace(10, 1, QLatin1Char(' '));
    if (shown.endsWith(QLatin1String(".000")))
        shown.chop(4);
    if (shown.size() == 19 && shown.endsWith(QLatin1String(":00")))
        shown.chop(3);
    return shown;
}

// "1004/1+2": after task 1004 by a link of type 1, two units later.
QString shownLinks(const QJsonArray& links)
{
    QStringList shown;
    for (const QJsonValue& link : links) {
        const double lag = link[QLatin1String("lag")][QLatin1String("value")].toDouble();
        shown.append(
            QStringLiteral("%1/%2%3%4")
                .arg(link[QLatin1String("sourcePlanNodeUniqueId")].toInt())
                .arg(link[QLatin1String("type")].toInt())
                .arg(lag > 0 ? QStringLiteral("+") : QString(), lag == 0 ? QString() : QString::number(lag)));
    }
    return shown.join(QLatin1Char(' '));
}

// "m1=e1,e2 m2=e7": each key with its list.
QString shownLists(const QJsonObject& lists)
{
    QStringList shown;
    for (auto entry = lists.begin(); entry != lists.end(); ++entry)
        shown.append(entry.key() + QLatin1Char('=') +
                     entry.value().toVariant().toStringList().join(QLatin1Char(',')));
    return shown.join(QLatin1Char(' '));
}

int editDistance(const QString& a, const QString& b)
{
    QVector<int> row(b.size() + 1);
    for (int j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (int i = 1; i <= a.size(); ++i) {
        int diagonal = row[0];
        row[0] = i;
        for (int j = 1; j <= b.size(); ++j) {
            const int changed = diagonal + (a.at(i - 1) == b.at(j - 1) ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, changed});
        }
    }
    return row[b.size()];
}

} // namespace

QString NodeField::expectation() const
{
    switch (form) {
    case Text:
        return QStringLiteral("a text");
    case WholeNumber:
        return QStringLiteral("a whole number");
    case Percentage:
        return QStringLiteral("a number from 0 to 100");
    case Flag:
        return QStringLiteral("true or false");
    case Date:
        return QStringLiteral("a date as in 2026-03-05 or 2026-03-05T08:00");
    case List:
        return QStringLiteral("a list of identifiers");
    case Json:
        break;
    }
    return name == QLatin1String("predecessors")
               ? QStringLiteral("a JSON array of links as \"show --json\" prints them")
               : QStringLiteral("a JSON object of lists as \"show --json\" prints it");
}

QJsonValue NodeField::read(const QString& text) const
{
    switch (form) {
    case Text:
        return text;
    case WholeNumber:
        return readNumber(text);
    case Percentage:
        return readNumber(text.endsWith(QLatin1Char('%')) ? text.chopped(1) : text);
    case Flag:
        return readFlag(text);
    case Date:
        return text.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
    case List:
        return readList(text);
    case Json:
        break;
    }
    return readJson(text);
}

QString NodeField::shown(const QJsonValue& json) const
{
    QString text;
    switch (form) {
    case Text:
        text = json.toString();
        break;
    case WholeNumber:
        text = QString::number(json.toDouble(), 'f', 0);
        break;
    case Percentage:
        text = json.toDouble() < 0 ? QString() : QString::number(json.toDouble()) + QLatin1Char('%');
        break;
    case Flag:
        text = json.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
        break;
    case Date:
        text = json.isNull() ? QString() : shownDate(json.toString());
        break;
    case List:
        text = json.toVariant().toStringList().join(QLatin1Char(','));
        break;
    case Json:
        text = json.isArray() ? shownLinks(json.toArray()) : shownLists(json.toObject());
        break;
    }
    return text.isEmpty() ? QStringLiteral("–") : fitted(text, 0);
}

const QVector<NodeField>& nodeFields()
{
    static const QVector<NodeField> fields = makeFields();
    return fields;
}

const NodeField* nodeField(const QString& name)
{
    static const QHash<QString, const NodeField*> fields = [] {
        QHash<QString, const NodeField*> byName;
        for (const NodeField& field : nodeFields())
            byName.insert(field.name, &field);
        return byName;
    }();
    return fields.value(name);
}

QString adviceOnField(const QString& name)
{
    const QString wanted = name.left(40).toLower();
    const NodeField* nearest = nullptr;
    int least = wanted.size() / 3 + 2; // so many slips and it is another word
    for (const NodeField& field : nodeFields()) {
        const int distance = editDistance(wanted, QString(field.name).toLower());
        if (distance < least) {
            least = distance;
            nearest = &field;
        }
    }
    return nearest ? QStringLiteral(" (did you mean \"%1\"?)").arg(nearest->name) : QString();
}
