// The nodes of a plan: read through the facade, with codec and cache, and by hand, where the reply is
// downloaded and parsed and no more; created through the facade and the service, and by hand, where the rows
// that the service made of them go straight into the database: into the same table with the same indexes,
// and, for comparison, only their documents into a table that has nothing but its key. On SQLite, or on the
// server that the environment variable KV_TEST_DATABASE names.

#include "BareRequest.h"
#include "RatioMain.h"

#include <FreshDatabase.h>
#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>
#include <ServiceProcess.h>
#include <plandata/KvPlanData.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>
#include <QtCore/QUrl>
#include <QtCore/QUrlQuery>
#include <QtCore/QVector>
#include <QtNetwork/QNetworkAccessManager>
#include <QtSql/QSqlDatabase>
#include <QtSql/QSqlQuery>

#include <cstdio>

namespace {

constexpr int readCount = 100000;
constexpr int createCount = 10000;

void readThroughFacade(benchmark::State& state, const QString& planId)
{
    for (auto _ : state) {
        QList<KvPlanNode> nodes;
        KvPlanData::instance()->getPlanNodesByPlanId(planId, nodes);
        if (nodes.size() != readCount)
            return state.SkipWithError("the nodes were not read");
    }
}

// The same nodes, from the same endpoint, as the facade asks for them.
void readByHand(benchmark::State& state, const QString& planId, const QString& category)
{
    QNetworkAccessManager manager;
    const QString path =
        QStringLiteral("task-service/projects/%1/planNodes?where={\"planId\":{\"$in\":[\"%2\"]}}"
                       "&category=%3&expand=true")
            .arg(GetSoftCache()->currentProjectId(), planId, category);
    for (auto _ : state) {
        const QJsonDocument document = QJsonDocument::fromJson(bareGet(manager, path));
        if (document.array().size() != readCount)
            return state.SkipWithError("the nodes were not read");
    }
}

void createThroughFacade(benchmark::State& state, const QString& planId, const QList<KvPlanNode>* nodes)
{
    for (auto _ : state) {
        QList<KvPlanNode> created = *nodes;
        if (!KvPlanData::instance()->createPlanNodes(planId, created) || created.size() != nodes->size())
            return state.SkipWithError("the nodes were not created");
    }
}

// SQLite takes a row at a time as quickly as many; a server is asked for many at once.
int rowsAtOnce()
{
    return KvTest::FreshDatabase::isPostgres() ? 100 : 1;
}

struct Rows
{
    Rows(const QString& table, const QStringList& columns)
    {
        const QString row = QLatin1Char('(') +
                            QStringList(QVector<QString>(columns.size(), QStringLiteral("?")).toList())
                                .join(QLatin1Char(',')) +
                            QLatin1Char(')');
        insertion =
            QStringLiteral("INSERT INTO %1 (%2) VALUES %3")
                .arg(table, columns.join(QStringLiteral(", ")),
                     QStringList(QVector<QString>(rowsAtOnce(), row).toList()).join(QLatin1Char(',')));
    }

    QString insertion; // of rowsAtOnce() rows
    QVector<QVariantList> values;
};

// Every run gives ids of its own.
void insertByHand(benchmark::State& state, const Rows* rows, int idColumn)
{
    QSqlDatabase database = QSqlDatabase::database();
    static qint64 run = 0;
    for (auto _ : state) {
        ++run;
        database.transaction();
        QSqlQuery insert(database);
        insert.prepare(rows->insertion);
        int place = 0;
        for (int row = 0; row < rows->values.size(); ++row) {
            const QVariantList& values = rows->values.at(row);
            for (int i = 0; i < values.size(); ++i)
                insert.bindValue(place++, i == idColumn ? QStringLiteral("%1").arg(run << 32 | row, 24, 16,
                                                                                   QLatin1Char('0'))
                                                        : values.at(i));
            if ((row + 1) % rowsAtOnce() != 0)
                continue;
            place = 0;
            if (!insert.exec())
                return state.SkipWithError("rows were not inserted");
        }
        if (!database.commit())
            return state.SkipWithError("the rows were not committed");
    }
}

QStringList textsOf(const QString& sql, const QSqlDatabase& database)
{
    QStringList texts;
    QSqlQuery query(sql, database);
    while (query.next())
        texts.append(query.value(0).toString());
    return texts;
}

void readValues(Rows& rows, const QStringList& columns, const QString& planId, const QSqlDatabase& database)
{
    QSqlQuery query(database);
    query.prepare(QStringLiteral("SELECT %1 FROM planNodes WHERE planId = ? LIMIT %2")
                      .arg(columns.join(QStringLiteral(", ")))
                      .arg(createCount));
    query.addBindValue(planId);
    query.exec();
    while (query.next()) {
        QVariantList values;
        for (int i = 0; i < columns.size(); ++i)
            values.append(query.value(i));
        rows.values.append(values);
    }
}

// What the service keeps of the nodes of a plan, with the table and the indexes in which it does.
Rows sameTable(const QString& serviceFile, const QString& planId, int& idColumn)
{
    const QString name = QStringLiteral("service");
    QStringList schema;
    QStringList columns;
    QVector<QVariantList> values;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        database.setDatabaseName(serviceFile);
        database.open();
        schema = textsOf(QStringLiteral("SELECT sql FROM sqlite_master WHERE tbl_name = 'planNodes'"
                                        " AND sql IS NOT NULL ORDER BY type DESC"),
                         database);
        columns = textsOf(QStringLiteral("SELECT name FROM pragma_table_info('planNodes')"
                                         " WHERE name <> 'number'"),
                          database);
        Rows read(QStringLiteral("planNodes"), columns);
        readValues(read, columns, planId, database);
        values = read.values;
    }
    QSqlDatabase::removeDatabase(name);
    for (const QString& statement : qAsConst(schema))
        QSqlQuery(statement, QSqlDatabase::database());
    idColumn = columns.indexOf(QStringLiteral("id"));
    Rows rows(QStringLiteral("planNodes"), columns);
    rows.values = values;
    return rows;
}

// The same in PostgreSQL, beside the service's table.
Rows sameTableOnServer(const QString& planId, int& idColumn)
{
    const QSqlDatabase database = QSqlDatabase::database();
    QSqlQuery(QStringLiteral("CREATE TABLE byHand (LIKE planNodes INCLUDING ALL)"), database);
    const QStringList columns =
        textsOf(QStringLiteral("SELECT column_name FROM information_schema.columns"
                               " WHERE table_schema = current_schema() AND table_name = 'plannodes'"
                               " AND column_name <> 'number' ORDER BY ordinal_position"),
                database);
    idColumn = columns.indexOf(QStringLiteral("id"));
    Rows rows(QStringLiteral("byHand"), columns);
    readValues(rows, columns, planId, database);
    return rows;
}

// The database in which rows are inserted by hand: as safe as the service's own.
bool openByHand(const QString& serviceDatabase, const QString& folder)
{
    if (KvTest::FreshDatabase::isPostgres()) {
        const QUrl url(serviceDatabase);
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"));
        database.setHostName(url.host());
        database.setPort(url.port(5432));
        database.setUserName(url.userName());
        database.setPassword(url.password());
        database.setDatabaseName(url.path().mid(1));
        const QString schema = QUrlQuery(url).queryItemValue(QStringLiteral("application_name"));
        return database.open() && QSqlQuery(database).exec(QStringLiteral("SET search_path TO ") + schema);
    }
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"));
    database.setDatabaseName(folder + QStringLiteral("/by-hand.sqlite"));
    if (!database.open())
        return false;
    for (const char* statement : {"PRAGMA journal_mode = WAL", "PRAGMA synchronous = FULL"})
        QSqlQuery(QString::fromLatin1(statement), database);
    return true;
}

// Of the same rows the ids and the documents alone.
Rows documentsAlone(const Rows& rows, int idColumn)
{
    QSqlQuery(
        QStringLiteral("CREATE TABLE byHandDocuments (id TEXT NOT NULL PRIMARY KEY, document TEXT NOT NULL)"),
        QSqlDatabase::database());
    Rows documents(QStringLiteral("byHandDocuments"), {QStringLiteral("id"), QStringLiteral("document")});
    for (const QVariantList& values : rows.values)
        documents.values.append({values.at(idColumn), values.last()});
    return documents;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    KvTest::ServiceProcess service;
    const QJsonObject read = service.seed({QStringLiteral("--nodes"), QString::number(readCount),
                                           QStringLiteral("--project"), QStringLiteral("site")});
    if (read.isEmpty() || !service.start()) {
        std::fprintf(stderr, "no service to ask: %s\n", qUtf8Printable(service.failure()));
        return 2;
    }
    KvBaseApi::GetInstance().setBaseApi(service.baseUrl());
    GetSoftCache()->setCurrentProjectId(QStringLiteral("site"));
    const QString planId = read.value(QLatin1String("planId")).toString();
    const QString category = read.value(QLatin1String("category")).toString();

    // The nodes to create, without ids, and what the service keeps of them.
    QList<KvPlanNode> nodes;
    KvPlanData::instance()->getPlanNodesByPlanId(planId, nodes);
    nodes = nodes.mid(0, createCount);
    for (KvPlanNode& node : nodes) {
        node.id.clear();
        node.guid.clear();
    }
    KvPlan target;
    target.name = QStringLiteral("Created in batches");
    target.category = category;
    if (!KvPlanData::instance()->createPlan(target)) {
        std::fprintf(stderr, "no plan to create nodes in\n");
        return 2;
    }
    QList<KvPlanNode> created = nodes;
    KvPlanData::instance()->createPlanNodes(target.id, created);

    const QTemporaryDir folder;
    int idColumn = -1;
    if (!openByHand(service.database(), folder.path())) {
        std::fprintf(stderr, "no database to write to by hand\n");
        return 2;
    }
    const Rows rows = KvTest::FreshDatabase::isPostgres()
                          ? sameTableOnServer(target.id, idColumn)
                          : sameTable(service.databaseFile(), target.id, idColumn);
    const Rows documents = documentsAlone(rows, idColumn);
    if (created.size() != createCount || rows.values.size() != createCount) {
        std::fprintf(stderr, "no nodes to compare with\n");
        return 2;
    }

    const std::string on = KvTest::FreshDatabase::isPostgres() ? ", PostgreSQL" : ", SQLite";
    const auto millisecond = [](benchmark::internal::Benchmark* registered) {
        registered->UseRealTime()->Unit(benchmark::kMillisecond);
    };
    millisecond(benchmark::RegisterBenchmark("getPlanNodesByPlanIds", readThroughFacade, planId));
    millisecond(benchmark::RegisterBenchmark("download and fromJson", readByHand, planId, category));
    compare("getPlanNodesByPlanIds / download and fromJson" + on, "getPlanNodesByPlanIds/real_time",
            "download and fromJson/real_time", 1.6);
    millisecond(benchmark::RegisterBenchmark("createPlanNodes", createThroughFacade, target.id, &nodes));
    const QList<KvPlanNode> fewer[] = {nodes.mid(0, 1000), nodes.mid(0, 3000), nodes};
    for (const QList<KvPlanNode>& some : fewer) {
        const std::string name = "create/" + std::to_string(some.size());
        millisecond(benchmark::RegisterBenchmark(name.c_str(), createThroughFacade, target.id, &some));
    }
    growth("createPlanNodes" + on, "create", {1000, 3000, createCount}, 1.1);
    millisecond(benchmark::RegisterBenchmark("insert rows", insertByHand, &rows, idColumn));
    millisecond(benchmark::RegisterBenchmark("insert documents", insertByHand, &documents, 0));
    compare("createPlanNodes / insert rows" + on, "createPlanNodes/real_time", "insert rows/real_time", 4);
    compare("createPlanNodes / insert documents alone" + on, "createPlanNodes/real_time",
            "insert documents/real_time", 0);
    return runBenchmarks(argc, argv);
}
