#include "FreshDatabase.h"
#include "Text.h"
#include "store/OpenStore.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using namespace PlanService;
using KvTest::operator""_s;

namespace {

PlanRecord plan(const QString& id)
{
    return {id,
            "p1"_s,
            "c1"_s,
            "Tower \"A\" 塔楼"_s,
            {},
            {},
            "ann"_s,
            QJsonDocument(QJsonObject{{"_id"_s, id}, {"name"_s, "Tower \"A\" 塔楼"_s}})
                .toJson(QJsonDocument::Compact)};
}

PlanNodeRecord node(const QString& planId, const QString& id, int row, int uniqueId, int parent)
{
    PlanNodeRecord record;
    record.id = id;
    record.planId = planId;
    record.projectId = "p1"_s;
    record.name = id;
    record.rowNumber = row;
    record.uniqueId = uniqueId;
    record.parentTaskId = parent;
    record.createdBy = "ann"_s;
    record.document = QJsonDocument(QJsonObject{{"_id"_s, id}, {"id"_s, row}}).toJson(QJsonDocument::Compact);
    return record;
}

QJsonObject objectOf(const JsonPieces& pieces)
{
    return QJsonDocument::fromJson(pieces.join()).object();
}

} // namespace

class TestStore : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    std::unique_ptr<KvTest::FreshDatabase> m_database;
    QString m_path;

private Q_SLOTS:
    void init()
    {
        static int number = 0;
        m_database = std::make_unique<KvTest::FreshDatabase>(m_folder.filePath("%1.db"_s.arg(++number)));
        m_path = m_database->name();
    }

    void derivesWhatNodesDoNotStore()
    {
        const auto store = openStore(m_path, MissingDatabase::Create);
        store->insertPlan(plan("a"_s));
        store->insertPlan(plan("b"_s));
        PlanNodeRecord milestone = node("a"_s, "n2"_s, 2, 12, 11);
        milestone.startDate = milestone.finishDate = "2026-05-01T08:00:00.000"_s;
        PlanNodeRecord task = node("a"_s, "n3"_s, 3, 13, 13);
        task.startDate = "2026-05-01T08:00:00.000"_s;
        task.finishDate = "2026-05-02T17:00:00.000"_s;
        store->insertPlanNode(node("a"_s, "n1"_s, 1, 11, -1));
        store->insertPlanNode(milestone);
        store->insertPlanNode(task);
        store->insertPlanNode(node("b"_s, "m1"_s, 1, 21, 13));

        const QJsonArray tasks = objectOf(store->planJson("a"_s)).value("tasks"_s).toArray();
        QCOMPARE(tasks.size(), 3);
        const auto flag = [&](int row, const char* key) {
            return tasks.at(row).toObject().value(QLatin1String(key));
        };
        QCOMPARE(flag(0, "planName").toString(), "Tower \"A\" 塔楼"_s);
        QCOMPARE(flag(0, "summary"), QJsonValue(true));
        QCOMPARE(flag(0, "milestone"), QJsonValue(false)); // no dates are no equal dates
        QCOMPARE(flag(1, "summary"), QJsonValue(false));
        QCOMPARE(flag(1, "milestone"), QJsonValue(true));
        QCOMPARE(flag(2, "milestone"), QJsonValue(false));
        // It names itself as its parent, and a node of another plan names its number.
        QCOMPARE(flag(2, "summary"), QJsonValue(false));
    }

    void givesEveryNodeOnceInRowOrder()
    {
        const auto store = openStore(m_path, MissingDatabase::Create);
        constexpr int count = 3000; // a multiple of a piece, and rows that share a number across the seam
        Transaction transaction(*store);
        store->insertPlan(plan("a"_s));
        for (int i = count - 1; i >= 0; --i) {
            store->insertPlanNode(node("a"_s, "n%1"_s.arg(i, 5, 10, QLatin1Char('0')), i / 7 - 5, i, -1));
        }
        transaction.commit();
        const QJsonArray tasks = objectOf(store->planJson("a"_s)).value("tasks"_s).toArray();
        QCOMPARE(tasks.size(), count);
        QCOMPARE(store->planNodeCount("a"_s), count);
        for (int i = 0; i < count; ++i) {
            QCOMPARE(tasks.at(i).toObject().value("_id"_s).toString(),
                     "n%1"_s.arg(i, 5, 10, QLatin1Char('0')));
        }
    }

    void givesAPlanWithoutNodes()
    {
        const auto store = openStore(m_path, MissingDatabase::Create);
        store->insertPlan(plan("a"_s));
        QCOMPARE(objectOf(store->planJson("a"_s)).value("tasks"_s), QJsonValue(QJsonArray()));
        QCOMPARE(store->planJson("b"_s), JsonPieces());
        QCOMPARE(store->planNodeJson("b"_s, true), JsonPieces());
        QVERIFY(!store->planOwnership("b"_s));
        QVERIFY(!store->planNodeOwnership("b"_s));
    }

    void embedsDocumentsInTheNodesOrder()
    {
        const auto store = openStore(m_path, MissingDatabase::Create);
        store->insertPlan(plan("a"_s));
        store->insertDocument({"d1"_s, "p1"_s, "{\"_id\":\"d1\"}"});
        store->insertDocument({"d2"_s, "p1"_s, "{\"_id\":\"d2\"}"});
        PlanNodeRecord record = node("a"_s, "n1"_s, 1, 1, -1);
        record.document = "{\"_id\":\"n1\",\"documentIds\":[\"d2\",\"gone\",\"d1\"]}";
        store->insertPlanNode(record);
        const QJsonArray documents =
            objectOf(store->planNodeJson("n1"_s, true)).value("documents"_s).toArray();
        QCOMPARE(documents, QJsonArray({QJsonObject{{"_id"_s, "d2"_s}}, QJsonObject{{"_id"_s, "d1"_s}}}));
        QVERIFY(!objectOf(store->planNodeJson("n1"_s, false)).contains("documents"_s));
    }

    void countsEverybodyNamedAsOwner()
    {
        const auto store = openStore(m_path, MissingDatabase::Create);
        store->insertPlan(plan("a"_s));
        PlanNodeRecord record = node("a"_s, "n1"_s, 1, 1, -1);
        const QStringList people{"bo"_s, "cy"_s, "two\nlines"_s, "a\\b"_s, "c\\\nd\\n"_s};
        record.people = peopleText(people);
        store->insertPlanNode(record);
        QCOMPARE(store->planNodeOwnership("n1"_s)->users, QStringList{"ann"_s} + people);
        QCOMPARE(store->planOwnership("a"_s)->users, QStringList({"ann"_s}));
    }

    void undoesATransactionThatDoesNotCommit()
    {
        const auto store = openStore(m_path, MissingDatabase::Create);
        {
            const Transaction transaction(*store);
            store->insertPlan(plan("a"_s));
            QVERIFY(store->planOwnership("a"_s));
        }
        QVERIFY(!store->planOwnership("a"_s));
        QVERIFY_EXCEPTION_THROWN(store->insertPlanNode(node("missing plan"_s, "n"_s, 1, 1, -1)), StoreError);
    }

    void keepsSettingsByUser()
    {
        const auto store = openStore(m_path, MissingDatabase::Create);
        store->setUserSetting("ann"_s, "k"_s, "[1]");
        store->setUserSetting("ann"_s, "k"_s, "[2]");
        store->setUserSetting(QString(), "k"_s, "\"层\"");
        QCOMPARE(store->userSetting("ann"_s, "k"_s), QByteArray("[2]"));
        QCOMPARE(store->userSetting(QString(), "k"_s), "\"层\""_s.toUtf8());
        QCOMPARE(store->userSetting("bo"_s, "k"_s), QByteArray());
    }
};

QTEST_GUILESS_MAIN(TestStore)
#include "TestStore.moc"
