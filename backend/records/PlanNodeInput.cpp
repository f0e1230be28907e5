#include "PlanNodeInput.h"

#include "../json/JsonWriter.h"
#include "FieldReader.h"
#include "PlanNodeWriter.h"
#include "SiteClock.h"

#include <QSet>

namespace PlanService {

namespace {

constexpr int longestId = 100;

FieldReader readerOf(const PlanInput& input, int index)
{
    const QJsonObject node = parsedNode(input, index);
    return input.list == nullptr ? FieldReader(node) : FieldReader(nullptr, input.list, index, node);
}

QString sentId(const FieldReader& in, QSet<QString>& seen)
{
    const QString id = in.text("_id");
    if (id.size() > longestId) {
        in.refuse("_id", QStringLiteral("badId"),
                  QStringLiteral("'%1' has %2 characters, at most %3 are accepted")
                      .arg(in.pathOf("_id"))
                      .arg(id.size())
                      .arg(longestId));
    }
    if (!id.isEmpty() && seen.contains(id)) {
        in.refuse("_id", QStringLiteral("duplicateId"),
                  QStringLiteral("'%1' is the id of an earlier node too: '%2'").arg(in.pathOf("_id"), id));
    }
    seen.insert(id);
    return id;
}

QByteArray beginningWith(const QString& id)
{
    JsonWriter json;
    json.beginObject().key("_id").text(id);
    return json.take();
}

} // namespace

NodeIds::NodeIds()
    : m_prefix(newPlanId().left(16))
{
}

QString NodeIds::next()
{
    return m_prefix + QStringLiteral("%1").arg(++m_number, 8, 16, QLatin1Char('0'));
}

QVector<PlanNodeRecord> readPlanNodes(const PlanInput& input, const PlanRecord& plan, const QString& user,
                                      NodeIds& ids, const FindNode& findStored, int rowsBefore)
{
    QVector<PlanNodeRecord> nodes;
    nodes.reserve(input.nodes.size());
    QSet<QString> seen;
    const QString now = siteStamp();
    const Stamp fresh{now, user, now, user};
    for (int i = 0; i < input.nodes.size(); ++i) {
        const FieldReader in = readerOf(input, i);
        PlanNodeRecord node;
        node.id = sentId(in, seen);
        node.planId = plan.id;
        node.projectId = plan.projectId;
        node.category = plan.category;
        node.rowNumber = rowsBefore + i + 1;
        const auto stored = node.id.isEmpty() || !findStored ? std::nullopt : findStored(node.id);
        if (node.id.isEmpty()) {
            node.id = ids.next();
        }
        if (!stored) {
            writePlanNode(node, in, fresh);
        } else {
            Stamp stamp = stampOf(*stored);
            PlanNodeRecord kept = node;
            writePlanNode(kept, in, stamp);
            if (kept.document == stored->document) {
                node = kept;
            } else {
                stamp.updatedAt = qMax(now, stored->updatedAt);
                stamp.updatedBy = user;
                writePlanNode(node, in, stamp);
            }
        }
        nodes.append(node);
    }
    return nodes;
}

void giveId(PlanNodeRecord& node, const QString& id)
{
    node.document.replace(0, beginningWith(node.id).size(), beginningWith(id));
    node.id = id;
}

QStringList categoriesOf(const QVector<PlanNodeRecord>& nodes)
{
    QSet<QString> categories;
    for (const PlanNodeRecord& node : nodes) {
        categories.insert(node.category);
    }
    return {categories.begin(), categories.end()};
}

} // namespace PlanService
