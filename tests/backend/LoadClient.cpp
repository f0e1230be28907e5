#include "LoadClient.h"

#include "PlanNodeRequests.h"

namespace KvTest {

namespace {

constexpr int mostPlans = 5;
constexpr int mostNodes = 60;

QString factOfPlan(const QString& plan)
{
    return "plan "_s + plan;
}

QString factOfNode(const char* kind, const QString& plan, const QString& uniqueId)
{
    return QLatin1String(kind) + QLatin1Char(' ') + plan + QLatin1Char('/') + uniqueId;
}

QString nodeText(const QString& name, int percentage)
{
    return "%1, %2 percent"_s.arg(name).arg(percentage);
}

/// Everything about a node, its responses included.
void forgetNode(Facts& facts, const QString& plan, const QString& uniqueId)
{
    for (const char* kind : {"node", "state"}) {
        facts.remove(factOfNode(kind, plan, uniqueId));
    }
    const QString responses = factOfNode("response", plan, uniqueId) + QLatin1Char('/');
    for (auto it = facts.lowerBound(responses); it != facts.end() && it.key().startsWith(responses);) {
        it = facts.erase(it);
    }
}

QString firstDifference(const Facts& expected, const Facts& found)
{
    for (auto it = expected.begin(); it != expected.end(); ++it) {
        if (found.value(it.key(), "nothing"_s) != it.value()) {
            return "%1 is %2, not %3"_s.arg(it.key(), found.value(it.key(), "missing"_s), it.value());
        }
    }
    for (auto it = found.begin(); it != found.end(); ++it) {
        if (!expected.contains(it.key())) {
            return "%1 is %2, and should not be there"_s.arg(it.key(), it.value());
        }
    }
    return QString();
}

QByteArray compact(const QJsonArray& array)
{
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

} // namespace

LoadClient::LoadClient(int number, quint32 seed)
    : m_name("load%1"_s.arg(number))
    , m_random(seed + static_cast<quint32>(number) * 7919)
    , m_states(1)
{
}

QString LoadClient::pick(const QStringList& from)
{
    return from.at(m_random.bounded(from.size()));
}

QByteArray LoadClient::nodeId(const QString& plan, const QString& uniqueId) const
{
    return (plan + QLatin1Char('-') + uniqueId).toLatin1();
}

QJsonArray LoadClient::nodesFor(const QString& plan, int count, Facts& facts)
{
    QJsonArray nodes;
    for (int i = 0; i < count; ++i) {
        const int uniqueId = ++m_count;
        const QString name = "dig %1"_s.arg(uniqueId);
        const QString id = QString::fromLatin1(nodeId(plan, QString::number(uniqueId)));
        nodes.append(QJsonObject{
            {"_id"_s, id}, {"name"_s, name}, {"uniqueId"_s, uniqueId}, {"finishedPercentage"_s, 0}});
        facts.insert(factOfNode("node", plan, QString::number(uniqueId)), nodeText(name, 0));
    }
    return nodes;
}

LoadClient::Change LoadClient::newPlan()
{
    Change change{"POST", "/task-service/plans", {}, m_states.back()};
    const QString name = "%1-%2"_s.arg(m_name).arg(++m_count);
    const QJsonArray nodes = nodesFor(name, m_random.bounded(1, 15), change.after);
    change.after.insert(factOfPlan(name), m_name);
    change.body = jsonOf({{"projectId"_s, m_name}, {"name"_s, name}, {"projectData"_s, nodes}});
    return change;
}

LoadClient::Change LoadClient::addNodes(const Plan& plan)
{
    Change change{"POST", "/task-service/plans/" + plan.id + "/planNodes", {}, m_states.back()};
    change.body = compact(nodesFor(plan.name, m_random.bounded(1, 20), change.after));
    return change;
}

LoadClient::Change LoadClient::renameNodes(const Plan& plan)
{
    Change change{"PUT", "/task-service/planNodes", {}, m_states.back()};
    QJsonArray nodes;
    const QString name = "renamed %1"_s.arg(++m_count);
    for (const QString& uniqueId : plan.nodes) {
        const QString id = QString::fromLatin1(nodeId(plan.name, uniqueId));
        QString& fact = change.after[factOfNode("node", plan.name, uniqueId)];
        fact = name + fact.mid(fact.lastIndexOf(QLatin1Char(',')));
        nodes.append(QJsonObject{{"_id"_s, id}, {"name"_s, name}});
    }
    change.body = compact(nodes);
    return change;
}

LoadClient::Change LoadClient::removeNodes(const Plan& plan)
{
    Change change{"DELETE", {}, {}, m_states.back()};
    QStringList ids;
    for (int i = 0; i < 3; ++i) {
        const QString uniqueId = pick(plan.nodes);
        forgetNode(change.after, plan.name, uniqueId);
        ids.append(QString::fromLatin1(nodeId(plan.name, uniqueId)));
    }
    ids.removeDuplicates();
    change.target = idsParameter(ids);
    return change;
}

LoadClient::Change LoadClient::report(const Plan& plan)
{
    const QString uniqueId = pick(plan.nodes);
    Change change{
        "POST", "/task-service/planNodes/" + nodeId(plan.name, uniqueId) + "/responses", {}, m_states.back()};
    const QString remark = "report %1"_s.arg(++m_count);
    const int percentage = m_random.bounded(1, 100);
    QString& node = change.after[factOfNode("node", plan.name, uniqueId)];
    node = nodeText(node.left(node.lastIndexOf(QLatin1Char(','))), percentage);
    change.after.insert(factOfNode("response", plan.name, uniqueId) + QLatin1Char('/') + remark,
                        QString::number(percentage));
    change.body = jsonOf({{"percentage"_s, percentage}, {"remark"_s, remark}});
    return change;
}

LoadClient::Change LoadClient::meter(const Plan& plan)
{
    const QString uniqueId = pick(plan.nodes);
    Change change{
        "PUT", "/ka-rond-service/tasks/" + nodeId(plan.name, uniqueId) + "/taskstates", {}, m_states.back()};
    const int state = m_random.bounded(1000);
    change.after.insert(factOfNode("state", plan.name, uniqueId), QString::number(state));
    change.body = jsonOf({{"state"_s, state}});
    return change;
}

LoadClient::Change LoadClient::setSetting()
{
    Change change{"PUT", {}, {}, m_states.back()};
    const QString key = "%1-key%2"_s.arg(m_name).arg(m_random.bounded(5));
    change.target = "/user-service/settings/" + key.toLatin1();
    const int value = ++m_count;
    change.after.insert("setting "_s + key, QString::number(value));
    change.body = jsonOf({{"value"_s, value}});
    return change;
}

LoadClient::Change LoadClient::copyPlan(const Plan& plan)
{
    Change change{"PUT", "/task-service/plans/" + plan.id + "/copy", "{}", m_states.back()};
    const QString name = plan.name + " (2)"_s;
    change.after.insert(factOfPlan(name), m_name);
    for (const QString& uniqueId : plan.nodes) {
        change.after.insert(factOfNode("node", name, uniqueId),
                            m_states.back().value(factOfNode("node", plan.name, uniqueId)));
    }
    return change;
}

LoadClient::Change LoadClient::removePlan(const Plan& plan)
{
    Change change{"DELETE", "/task-service/plans/" + plan.id, {}, {}};
    const QString own = QLatin1Char(' ') + plan.name;
    for (auto it = m_states.back().begin(); it != m_states.back().end(); ++it) {
        const QString rest = it.key().mid(it.key().indexOf(QLatin1Char(' ')));
        if (rest != own && !rest.startsWith(own + QLatin1Char('/'))) {
            change.after.insert(it.key(), it.value());
        }
    }
    return change;
}

LoadClient::Change LoadClient::next()
{
    QStringList originals;
    for (const Plan& plan : qAsConst(m_plans)) {
        if (!plan.isCopy) {
            originals.append(plan.name);
        }
    }
    const int dice = m_random.bounded(100);
    if (originals.isEmpty() || (m_plans.size() < mostPlans && dice < 8)) {
        return newPlan();
    }
    if (m_plans.size() >= mostPlans || dice < 12) {
        return removePlan(m_plans.value(pick(m_plans.keys())));
    }
    const Plan plan = m_plans.value(pick(originals));
    if (plan.nodes.isEmpty() || (plan.nodes.size() < mostNodes && dice < 30)) {
        return addNodes(plan);
    }
    if (dice < 40 && !m_plans.contains(plan.name + " (2)"_s)) {
        return copyPlan(plan);
    }
    if (dice < 60) {
        return renameNodes(plan);
    }
    if (dice < 68) {
        return removeNodes(plan);
    }
    return dice < 84 ? report(plan) : dice < 92 ? meter(plan) : setSetting();
}

void LoadClient::take(const Change& change, const RawReply& reply)
{
    m_states.push_back(change.after);
    m_certain = static_cast<int>(m_states.size()) - 1;
    ++m_counts.acknowledged;
    const QJsonObject object = objectOf(reply);
    if (object.contains("tasks"_s)) {
        Plan& plan = m_plans[object.value("name"_s).toString()];
        plan.id = idOf(object);
        plan.name = object.value("name"_s).toString();
        plan.isCopy = plan.name.endsWith(QLatin1Char(')'));
    }
    // What plans and nodes there are follows from what there is to read.
    for (Plan& plan : m_plans) {
        plan.nodes.clear();
    }
    for (auto it = change.after.begin(); it != change.after.end(); ++it) {
        if (it.key().startsWith("node "_s)) {
            const int slash = it.key().lastIndexOf(QLatin1Char('/'));
            m_plans[it.key().mid(5, slash - 5)].nodes.append(it.key().mid(slash + 1));
        }
    }
    for (auto it = m_plans.begin(); it != m_plans.end();) {
        it = change.after.contains(factOfPlan(it.key())) ? it + 1 : m_plans.erase(it);
    }
}

void LoadClient::run(quint16 port, const std::atomic<bool>& stop, const std::function<void()>& told)
{
    RawHttp http(port);
    while (!stop && m_complaint.isEmpty()) {
        const Change change = next();
        m_after = change.after;
        m_pending = true;
        m_refused = false;
        const RawReply reply = http.request(change.method, change.target, change.body);
        if (reply.status == 0) {
            ++m_counts.unanswered;
            return;
        }
        if (reply.status == 500 || reply.status == 503) {
            ++m_counts.refused;
            ++m_refusals;
            m_refused = true;
            const QString wrong = settle(port);
            if (!wrong.isEmpty()) {
                // Nothing can be read either: that is for the end.
                return;
            }
            told();
            continue;
        }
        m_pending = false;
        if (reply.status != 200 && reply.status != 204) {
            m_complaint = "%1 %2 was answered with %3 %4"_s
                              .arg(QString::fromLatin1(change.method), QString::fromLatin1(change.target))
                              .arg(reply.status)
                              .arg(QString::fromUtf8(reply.body.left(300)));
            return;
        }
        take(change, reply);
        m_complaint = staleRead(http);
        told();
    }
}

QString LoadClient::staleRead(RawHttp& http)
{
    if (m_plans.isEmpty()) {
        return QString();
    }
    const Plan plan = m_plans.value(m_plans.keys().at(m_counts.acknowledged % m_plans.size()));
    const RawReply reply = http.get("/task-service/plans/" + plan.id);
    if (reply.status == 0 || reply.status == 500 || reply.status == 503) {
        return QString(); // the next change meets the same
    }
    Facts found;
    const QJsonArray tasks = objectOf(reply).value("tasks"_s).toArray();
    for (const QJsonValue& value : tasks) {
        const QJsonObject node = value.toObject();
        found.insert(factOfNode("node", plan.name, QString::number(node.value("uniqueId"_s).toInt())),
                     nodeText(node.value("name"_s).toString(), node.value("finishedPercentage"_s).toInt()));
    }
    Facts expected;
    const QString nodes = factOfNode("node", plan.name, QString());
    for (auto it = m_states.back().lowerBound(nodes);
         it != m_states.back().end() && it.key().startsWith(nodes); ++it) {
        expected.insert(it.key(), it.value());
    }
    const QString difference = firstDifference(expected, found);
    return difference.isEmpty() ? QString() : m_name + ": after a change was acknowledged, "_s + difference;
}

LoadClient::Seen LoadClient::look(quint16 port) const
{
    Seen seen;
    RawHttp http(port);
    const auto read = [&](const QByteArray& target) {
        const RawReply reply = http.get(target);
        if (reply.status != 200) {
            seen.failure = "%1 was answered with %2"_s.arg(QString::fromLatin1(target)).arg(reply.status);
        }
        return reply;
    };
    const QByteArray project = m_name.toLatin1();
    const QJsonArray plans = arrayOf(read("/task-service/projects/" + project + "/plans"));
    QMap<QString, QString> nameOfPlan;
    for (const QJsonValue& value : plans) {
        const QJsonObject object = value.toObject();
        const QString name = object.value("name"_s).toString();
        const bool isCopy = name.endsWith(QLatin1Char(')'));
        if (seen.plans.contains(name)) {
            seen.failure = "there are two plans "_s + name;
        }
        seen.plans.insert(name, {idOf(object), name, {}, isCopy});
        seen.facts.insert(factOfPlan(name), object.value("projectId"_s).toString());
    }
    QMap<QString, QPair<QString, QString>> placeOfNode;
    const QJsonArray nodes = arrayOf(read("/task-service/projects/" + project + "/planNodes"));
    for (const QJsonValue& value : nodes) {
        const QJsonObject node = value.toObject();
        const QString plan = node.value("planName"_s).toString();
        const QString uniqueId = QString::number(node.value("uniqueId"_s).toInt());
        const QString fact = factOfNode("node", plan, uniqueId);
        if (seen.facts.contains(fact)) {
            seen.failure = "there are two of "_s + fact;
        }
        seen.facts.insert(
            fact, nodeText(node.value("name"_s).toString(), node.value("finishedPercentage"_s).toInt()));
        seen.plans[plan].nodes.append(uniqueId);
        placeOfNode.insert(node.value("_id"_s).toString(), {plan, uniqueId});
        if (node.value("finishedPercentage"_s).toInt() == 0) {
            continue; // a node that was reported on stands above
        }
        const QJsonArray responses = arrayOf(read("/task-service/planNodes/" + idOf(node) + "/responses"));
        for (const QJsonValue& response : responses) {
            seen.facts.insert(factOfNode("response", plan, uniqueId) + QLatin1Char('/') +
                                  response.toObject().value("remark"_s).toString(),
                              QString::number(response.toObject().value("percentage"_s).toInt()));
        }
    }
    const QJsonArray states = arrayOf(read("/ka-rond-service/projects/" + project + "/taskstates"));
    for (const QJsonValue& value : states) {
        const auto place = placeOfNode.value(value.toObject().value("taskId"_s).toString());
        seen.facts.insert(factOfNode("state", place.first, place.second),
                          QString::number(value.toObject().value("state"_s).toInt()));
    }
    for (int i = 0; i < 5; ++i) {
        const QString key = "%1-key%2"_s.arg(m_name).arg(i);
        const QJsonObject setting = objectOf(read("/user-service/settings/" + key.toLatin1()));
        if (setting.contains("value"_s)) {
            seen.facts.insert("setting "_s + key, QString::number(setting.value("value"_s).toInt()));
        }
    }
    return seen;
}

QString LoadClient::settle(quint16 port)
{
    const Seen seen = look(port);
    if (!seen.failure.isEmpty()) {
        return m_name + ": "_s + seen.failure;
    }
    if (m_pending && seen.facts == m_after && m_after != m_states.back()) {
        m_states.push_back(m_after);
        ++(m_refused ? m_counts.refusedButDone : m_counts.unansweredButDone);
    } else if (seen.facts != m_states.back()) {
        return m_name + ": "_s + firstDifference(m_states.back(), seen.facts) +
               (m_pending ? "; with the last change "_s + firstDifference(m_after, seen.facts) : QString());
    }
    m_pending = false;
    m_certain = static_cast<int>(m_states.size()) - 1;
    m_plans = seen.plans;
    return QString();
}

void LoadClient::forgetPast()
{
    m_states = {m_states.back()};
    m_certain = 0;
}

QString LoadClient::findState(quint16 port, int first, int last) const
{
    const Seen seen = look(port);
    if (!seen.failure.isEmpty()) {
        return m_name + ": "_s + seen.failure;
    }
    for (int i = first; i <= last && i < static_cast<int>(m_states.size()); ++i) {
        if (m_states.at(static_cast<std::size_t>(i)) == seen.facts) {
            return QString();
        }
    }
    return m_name +
           ": what is there is none of the states from %1 to %2; against the first: "_s.arg(first).arg(last) +
           firstDifference(m_states.at(static_cast<std::size_t>(first)), seen.facts);
}

} // namespace KvTest
