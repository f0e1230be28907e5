#include "FreshDatabase.h"
#include "SampleText.h"
#include "store/OpenStore.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>
#include <QtTest>

using namespace PlanService;
using KvTest::ofSize;
using KvTest::sampleNodes;
using KvTest::sampleText;
using KvTest::operator""_s;

namespace {

/// The nodes by unique id, to follow parents and links.
QMap<int, QJsonObject> byUniqueId(const QJsonArray& nodes)
{
    QMap<int, QJsonObject> map;
    for (const QJsonValue& node : nodes) {
        map.insert(node.toObject().value("uniqueId"_s).toInt(), node.toObject());
    }
    return map;
}

QDateTime date(const QJsonObject& node, const QString& key)
{
    return QDateTime::fromString(node.value(key).toString(), Qt::ISODateWithMs);
}

} // namespace

class TestSample : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isTheSameEveryTime()
    {
        const SampleOptions usual;
        QCOMPARE(sampleText(usual), sampleText(usual));
        // The same bytes on every machine: a change here is a change of every recorded plan id and benchmark.
        QCOMPARE(SampleProject(usual).plan().id, "9483880f7b31d8294ab1aeed"_s);
    }

    void differsWithEveryOption()
    {
        QVector<SampleOptions> all(9);
        all[1].projectId = "other"_s;
        all[2].category = "other"_s;
        all[3].floors = 5;
        all[4].nodes = 100;
        all[5].seed = 2;
        all[6].language = SampleLanguage::English;
        all[7].start = QDate(2027, 1, 4);
        all[8].status = QDate(2026, 4, 1);
        QSet<QString> ids;
        QSet<QByteArray> texts;
        for (const SampleOptions& options : qAsConst(all)) {
            ids.insert(SampleProject(options).plan().id);
            texts.insert(sampleText(options));
        }
        QCOMPARE(ids.size(), all.size());
        QCOMPARE(texts.size(), all.size());
    }

    void hasTheWantedSize_data()
    {
        QTest::addColumn<int>("nodes");
        for (const int nodes : {1, 2, 3, 10, 50, 400, 999, 10000}) {
            QTest::addRow("%d", nodes) << nodes;
        }
    }
    void hasTheWantedSize()
    {
        QFETCH(int, nodes);
        const QJsonArray sample = sampleNodes(ofSize(nodes));
        QCOMPARE(sample.size(), nodes);
        QSet<QString> ids;
        for (int i = 0; i < nodes; ++i) {
            ids.insert(sample.at(i).toObject().value("_id"_s).toString());
            QCOMPARE(sample.at(i).toObject().value("id"_s).toInt(), i + 1);
        }
        QCOMPARE(ids.size(), nodes);
    }

    void usualTowerHasSomeFourHundredNodes()
    {
        const int size = sampleNodes(SampleOptions()).size();
        QVERIFY2(size > 350 && size < 450, qPrintable(QString::number(size)));
    }

    void hasFourLevelsAndSummariesAboveThem()
    {
        const QJsonArray nodes = sampleNodes(SampleOptions());
        const QMap<int, QJsonObject> map = byUniqueId(nodes);
        QSet<int> parents;
        QMap<int, int> level;
        for (const QJsonValue& value : nodes) {
            const QJsonObject node = value.toObject();
            const int parent = node.value("parentTaskID"_s).toInt();
            QVERIFY(parent == -1 || level.contains(parent)); // parents come first
            level.insert(node.value("uniqueId"_s).toInt(), level.value(parent, 0) + 1);
            parents.insert(parent);
        }
        QSet<int> levels;
        for (auto it = level.cbegin(); it != level.cend(); ++it) {
            levels.insert(it.value());
            const QJsonObject node = map.value(it.key());
            QCOMPARE(node.value("summary"_s), QJsonValue(parents.contains(it.key())));
            QCOMPARE(node.value("milestone"_s),
                     QJsonValue(node.value("startDate"_s) == node.value("finishDate"_s)));
        }
        QCOMPARE(levels, QSet<int>({1, 2, 3, 4}));
    }

    void linksHaveAllTypesAndHoldInThePlannedDates()
    {
        const QJsonArray nodes = sampleNodes(SampleOptions());
        const QMap<int, QJsonObject> map = byUniqueId(nodes);
        QMap<int, QSet<int>> signs; // of lags, by type
        QSet<int> units;
        for (const QJsonValue& value : nodes) {
            const QJsonObject node = value.toObject();
            const QJsonArray links = node.value("predecessors"_s).toArray();
            for (const QJsonValue& linkValue : links) {
                const QJsonObject link = linkValue.toObject();
                QCOMPARE(link.keys().size(), 8);
                QCOMPARE(link.value("TargetPlanNodeUniqueID"_s).toString(),
                         QString::number(node.value("uniqueId"_s).toInt()));
                QCOMPARE(link.value("TargetPlanNodeID"_s), node.value("id"_s));
                const QJsonObject source = map.value(link.value("SourcePlanNodeUniqueID"_s).toInt());
                QCOMPARE(link.value("SourcePlanNodeID"_s), source.value("id"_s));
                QCOMPARE(link.value("SourcePlanNodeName"_s), source.value("name"_s));
                const int lag = link.value("Lag"_s).toObject().value("Duration"_s).toInt();
                const int unit = link.value("Lag"_s).toObject().value("Units"_s).toInt();
                const int type = link.value("Type"_s).toInt();
                signs[type].insert(lag > 0 ? 1 : (lag < 0 ? -1 : 0));
                units.insert(unit);
                const QString from = type == 0 || type == 1 ? "finishDate"_s : "startDate"_s;
                const QString to = type == 0 || type == 2 ? "finishDate"_s : "startDate"_s;
                // Work ends at 17 and goes on at 8: the fifteen hours of the night between count for nothing.
                const qint64 hours = date(source, from).secsTo(date(node, to)) / 3600;
                QVERIFY2(hours >= (unit == 1 ? lag : lag * 24 - 15),
                         qPrintable(node.value("name"_s).toString()));
            }
        }
        QCOMPARE(signs.keys(), QList<int>({0, 1, 2, 3}));
        QCOMPARE(signs.value(1), QSet<int>({-1, 0, 1}));
        QVERIFY(signs.value(0).contains(-1) && signs.value(0).contains(1));
        QVERIFY(signs.value(2).contains(-1) && signs.value(2).contains(1));
        QCOMPARE(units, QSet<int>({1, 2}));
    }

    void summariesSpanTheirChildren()
    {
        const QJsonArray nodes = sampleNodes(SampleOptions());
        const QMap<int, QJsonObject> map = byUniqueId(nodes);
        for (const QJsonValue& value : nodes) {
            const QJsonObject node = value.toObject();
            const int parent = node.value("parentTaskID"_s).toInt();
            if (parent != -1) {
                QVERIFY(date(map.value(parent), "startDate"_s) <= date(node, "startDate"_s));
                QVERIFY(date(map.value(parent), "finishDate"_s) >= date(node, "finishDate"_s));
            }
        }
    }

    void showsEverythingAPlanCanHold()
    {
        const QJsonArray nodes = sampleNodes(SampleOptions());
        QSet<QString> seen;
        for (const QJsonValue& value : nodes) {
            const QJsonObject node = value.toObject();
            const double progress = node.value("finishedPercentage"_s).toDouble();
            const bool started = !node.value("actualStartDate"_s).toString().isEmpty();
            const bool finished = !node.value("actualFinishDate"_s).toString().isEmpty();
            QCOMPARE(finished, qFuzzyCompare(progress, 100.0));
            QVERIFY(started || progress == 0.0);
            QVERIFY(node.value("displaySimulation"_s).isDouble());
            seen.insert(finished ? "finished"_s : (started ? "in work"_s : "not started"_s));
            if (finished && date(node, "actualFinishDate"_s) > date(node, "finishDate"_s)) {
                seen.insert("late"_s);
            }
            if (finished && date(node, "actualFinishDate"_s) < date(node, "finishDate"_s)) {
                seen.insert("ahead"_s);
            }
            for (const char* list :
                 {"userIds", "executeIds", "cooperateIds", "documentIds", "materialBills", "entity"}) {
                if (!node.value(QLatin1String(list)).toArray().isEmpty()) {
                    seen.insert(QLatin1String(list));
                }
            }
            if (node.value("milestone"_s).toBool()) {
                seen.insert("milestone"_s);
            }
            if (!node.value("entityHideDate"_s).toString().isEmpty()) {
                seen.insert("hidden"_s);
            }
        }
        const QSet<QString> wanted{"finished"_s,    "in work"_s,       "not started"_s, "late"_s,
                                   "ahead"_s,       "userIds"_s,       "executeIds"_s,  "cooperateIds"_s,
                                   "documentIds"_s, "materialBills"_s, "entity"_s,      "milestone"_s,
                                   "hidden"_s};
        QCOMPARE(seen, wanted);
    }

    void speaksTheWantedLanguage()
    {
        SampleOptions options;
        options.language = SampleLanguage::Chinese;
        QVERIFY(!sampleText(options).contains("Pour concrete"));
        QVERIFY(sampleText(options).contains("混凝土浇筑"));
        options.language = SampleLanguage::English;
        QVERIFY(sampleText(options).contains("Pour concrete"));
        QVERIFY(!sampleText(options).contains("混凝土浇筑"));
    }

    void floorsCarryTheirNumber_data()
    {
        QTest::addColumn<int>("language");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("both") << static_cast<int>(SampleLanguage::Both)
                              << QStringList{"第1层 Floor 1"_s, "第2层 Floor 2"_s};
        QTest::newRow("Chinese") << static_cast<int>(SampleLanguage::Chinese)
                                 << QStringList{"第1层"_s, "第2层"_s};
        QTest::newRow("English") << static_cast<int>(SampleLanguage::English)
                                 << QStringList{"Floor 1"_s, "Floor 2"_s};
    }
    void floorsCarryTheirNumber()
    {
        QFETCH(int, language);
        QFETCH(QStringList, names);
        SampleOptions options;
        options.floors = 2;
        options.language = static_cast<SampleLanguage>(language);
        // A name of a floor and nothing else, with or without its number.
        const QRegularExpression floor("^(第?\\d*层)? ?(Floor( \\d+)?)?$"_s);
        QStringList found;
        const QJsonArray nodes = sampleNodes(options);
        for (const QJsonValue& node : nodes) {
            const QString name = node.toObject().value("name"_s).toString();
            if (floor.match(name).hasMatch()) {
                found.append(name);
            }
        }
        QVERIFY(found.size() > 4);
        QCOMPARE(QSet<QString>(found.begin(), found.end()), QSet<QString>(names.begin(), names.end()));
    }

    void servedPlanIsTheSample_data()
    {
        QTest::addColumn<int>("nodes");
        QTest::newRow("one tower") << 0;
        QTest::newRow("several towers") << 2500;
    }
    void servedPlanIsTheSample()
    {
        QFETCH(int, nodes);
        const QTemporaryDir folder;
        KvTest::FreshDatabase database(folder.filePath("a.db"_s));
        const auto store = openStore(database.name(), MissingDatabase::Create);
        const SampleProject project(ofSize(nodes));
        seedStore(project, *store);
        QByteArray served;
        const JsonPieces pieces = store->planJson(project.plan().id);
        for (const QByteArray& piece : pieces) {
            served += piece;
        }
        QCOMPARE(served, sampleText(ofSize(nodes)));
        QVERIFY_EXCEPTION_THROWN(seedStore(project, *store), StoreError);
    }

    void everyNamedDocumentIsThere()
    {
        const QTemporaryDir folder;
        KvTest::FreshDatabase database(folder.filePath("a.db"_s));
        const auto store = openStore(database.name(), MissingDatabase::Create);
        seedStore(SampleProject(SampleOptions()), *store);
        const QJsonArray nodes = sampleNodes(SampleOptions());
        for (const QJsonValue& value : nodes) {
            const QString id = value.toObject().value("_id"_s).toString();
            const QJsonObject node = QJsonDocument::fromJson(store->planNodeJson(id, true).first()).object();
            QStringList documents;
            const QJsonArray embedded = node.value("documents"_s).toArray();
            for (const QJsonValue& document : embedded) {
                QVERIFY(document.toObject().value("fileSize"_s).toInt() > 0);
                documents += document.toObject().value("_id"_s).toString();
            }
            QCOMPARE(QJsonValue(QJsonArray::fromStringList(documents)), node.value("documentIds"_s));
        }
    }

    void reportsFitTheNodes()
    {
        const QTemporaryDir folder;
        KvTest::FreshDatabase database(folder.filePath("a.db"_s));
        const auto store = openStore(database.name(), MissingDatabase::Create);
        const SampleProject project{SampleOptions()};
        seedStore(project, *store);
        KvTest::FreshDatabase other(folder.filePath("b.db"_s));
        const auto again = openStore(other.name(), MissingDatabase::Create);
        seedStore(project, *again);
        QSet<int> codes;
        int reported = 0;
        int withDocuments = 0;
        const QJsonArray nodes = sampleNodes(SampleOptions());
        for (const QJsonValue& value : nodes) {
            const QJsonObject node = value.toObject();
            const QString id = node.value("_id"_s).toString();
            const JsonPieces json = store->responseListJson(id, true);
            QCOMPARE(again->responseListJson(id, true), json);
            const QJsonArray responses = QJsonDocument::fromJson(json.join()).array();
            const auto state = store->taskState(id);
            QCOMPARE(state.has_value(), !responses.isEmpty());
            if (!state) {
                continue;
            }
            ++reported;
            codes.insert(state->state);
            const QJsonObject last = responses.last().toObject();
            QCOMPARE(last.value("_id"_s).toString(), state->responseId);
            QCOMPARE(last.value("percentage"_s), node.value("finishedPercentage"_s));
            QCOMPARE(last.value("actualFinishDate"_s), node.value("actualFinishDate"_s));
            QString before;
            for (const QJsonValue& response : responses) {
                QCOMPARE(response.toObject().value("actualStartDate"_s), node.value("actualStartDate"_s));
                QVERIFY(before < response.toObject().value("createdAt"_s).toString());
                before = response.toObject().value("createdAt"_s).toString();
                const QJsonArray documents = response.toObject().value("documents"_s).toArray();
                QCOMPARE(documents.size(), response.toObject().value("documentIds"_s).toArray().size());
                withDocuments += documents.isEmpty() ? 0 : 1;
            }
        }
        QVERIFY2(reported > 30 && withDocuments > 20, qPrintable(QString::number(reported)));
        QCOMPARE(codes, (QSet<int>{1, 2}));
    }
};

QTEST_GUILESS_MAIN(TestSample)
#include "TestSample.moc"
