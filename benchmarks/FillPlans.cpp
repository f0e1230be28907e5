// Puts many plans without nodes into a database of planservice, for planservice-load.sh.

#include <json/JsonWriter.h>
#include <store/OpenStore.h>

#include <cstdio>

using namespace PlanService;

namespace {

PlanRecord numbered(const QString& project, int number)
{
    PlanRecord plan;
    plan.id = QStringLiteral("%1-%2").arg(project).arg(number, 8, 16, QLatin1Char('0'));
    plan.projectId = project;
    plan.category = QStringLiteral("construction");
    plan.name = QStringLiteral("Plan %1").arg(number);
    plan.createdAt = QStringLiteral("2026-03-02T%1:%2:%3.%4")
                         .arg(number / 3600000 % 24, 2, 10, QLatin1Char('0'))
                         .arg(number / 60000 % 60, 2, 10, QLatin1Char('0'))
                         .arg(number / 1000 % 60, 2, 10, QLatin1Char('0'))
                         .arg(number % 1000, 3, 10, QLatin1Char('0'));
    plan.updatedAt = plan.createdAt;
    JsonWriter json;
    json.beginObject();
    json.key("_id").text(plan.id);
    json.key("category").text(plan.category);
    json.key("projectId").text(plan.projectId);
    json.key("name").text(plan.name);
    json.key("createdAt").text(plan.createdAt);
    json.key("createdBy").text(plan.createdBy);
    json.key("updatedAt").text(plan.updatedAt);
    json.key("updatedBy").text(plan.createdBy);
    json.key("projectFileId").text(QString());
    json.key("public").number(1);
    json.key("ranges").texts({});
    json.endObject();
    plan.document = json.take();
    return plan;
}

} // namespace

/// fill_plans DATABASE PROJECT COUNT
int main(int argc, char** argv)
{
    if (argc != 4) {
        std::fputs("usage: fill_plans DATABASE PROJECT COUNT\n", stderr);
        return 2;
    }
    try {
        const auto store = openStore(QString::fromLocal8Bit(argv[1]), MissingDatabase::Create);
        Transaction transaction(*store);
        const int count = QByteArray(argv[3]).toInt();
        for (int i = 0; i < count; ++i) {
            store->insertPlan(numbered(QString::fromLocal8Bit(argv[2]), i));
        }
        transaction.commit();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "fill_plans: %s\n", error.what());
        return 1;
    }
    return 0;
}
