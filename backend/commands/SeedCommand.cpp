#include "../json/JsonWriter.h"
#include "../seed/SampleModel.h"
#include "../store/OpenStore.h"
#include "SampleFile.h"
#include "SampleOptionsText.h"

#include <optional>

namespace PlanService {

namespace {

void report(const SampleProject& project, int nodes, bool added, bool asJson)
{
    const PlanRecord& plan = project.plan();
    if (asJson) {
        JsonWriter json;
        json.beginObject();
        json.key("projectId").text(plan.projectId);
        json.key("category").text(plan.category);
        json.key("planId").text(plan.id);
        json.key("name").text(plan.name);
        json.key("nodes").number(nodes);
        json.key("added").flag(added);
        json.endObject();
        print(json.result() + '\n');
        return;
    }
    print(QStringLiteral("project %1, plan %2 \"%3\", %4 nodes%5\n")
              .arg(plan.projectId, plan.id, plan.name)
              .arg(nodes)
              .arg(added ? QString() : QStringLiteral(" (already there)")));
}

SampleModelFormat modelFormat(const QString& path)
{
    if (path.endsWith(QLatin1String(".gltf"), Qt::CaseInsensitive)) {
        return SampleModelFormat::Gltf;
    }
    if (path.endsWith(QLatin1String(".obj"), Qt::CaseInsensitive)) {
        return SampleModelFormat::Obj;
    }
    throw UsageError(QStringLiteral("--model '%1' has to end in .gltf or .obj").arg(path));
}

} // namespace

int runSeed(const QStringList& arguments)
{
    Options options(QStringLiteral("seed"),
                    QStringLiteral("Puts a sample project into a database, which is created when missing.\n"
                                   "Either the whole project goes in or nothing. The same options give the\n"
                                   "same project."));
    options.add(QStringLiteral("database"),
                QStringLiteral("SQLite file, or postgresql://user@host:5432/database."),
                QStringLiteral("DATABASE"));
    addSampleOptions(options);
    options.add(QStringLiteral("model"),
                QStringLiteral("Write the building's geometry to this file, glTF 2.0 or Wavefront OBJ by its "
                               "name; its parts are named as the plan's entities."),
                QStringLiteral("FILE"));
    options.add(QStringLiteral("if-missing"),
                QStringLiteral("Succeed without a change when the plan is already there."));
    options.add(QStringLiteral("json"), QStringLiteral("Print the summary as one JSON object."));
    if (!options.parse(arguments)) {
        return 0;
    }
    const QString database = options.required(QStringLiteral("database"));
    const SampleProject project(readSampleOptions(options));
    // Before the database, so that a file that cannot be written leaves everything as it was.
    std::optional<SampleFile> model;
    if (options.has(QStringLiteral("model"))) {
        const QString path = options.required(QStringLiteral("model"));
        const SampleModelFormat format = modelFormat(path);
        model.emplace(path);
        writeSampleModel(project, format, [&model](const QByteArray& piece) { model->write(piece); });
    }
    const auto store = openStore(database, MissingDatabase::Create);
    const bool there = store->planOwnership(project.plan().id).has_value();
    const bool add = !there || !options.has(QStringLiteral("if-missing"));
    if (add) {
        seedStore(project, *store);
    }
    if (model) {
        model->commit();
    }
    report(project, store->planNodeCount(project.plan().id), add, options.has(QStringLiteral("json")));
    return 0;
}

} // namespace PlanService
