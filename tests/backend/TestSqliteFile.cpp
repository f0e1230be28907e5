#include "Text.h"
#include "store/Migrations.h"
#include "store/OpenStore.h"
#include "store/SqliteDatabase.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using namespace PlanService;
using KvTest::operator""_s;

namespace {

QJsonObject objectOf(const JsonPieces& pieces)
{
    return QJsonDocument::fromJson(pieces.join()).object();
}

QString refusal(const QString& path, MissingDatabase missing = MissingDatabase::Create)
{
    try {
        openStore(path, missing);
    } catch (const StoreError& error) {
        return error.message();
    }
    return QString();
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

} // namespace

class TestSqliteFile : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    QString m_path;

    int newest() const { return migrations().last().version; }

private Q_SLOTS:
    void init()
    {
        static int number = 0;
        m_path = m_folder.filePath("%1.db"_s.arg(++number));
    }

    void createsAnUpToDateDatabase()
    {
        QCOMPARE(inspectDatabaseFile(m_path), DatabaseFile::Missing);
        {
            const auto store = openStore(m_path, MissingDatabase::Create);
            QCOMPARE(store->schemaVersion(), newest());
        }
        QCOMPARE(inspectDatabaseFile(m_path), DatabaseFile::Ours);
        SqliteDatabase database(m_path);
        QCOMPARE(database.value("PRAGMA journal_mode"_s).toString(), "wal"_s);
        QCOMPARE(database.value("PRAGMA integrity_check"_s).toString(), "ok"_s);
    }

    void stepsAreNumberedFromOne()
    {
        for (int i = 0; i < migrations().size(); ++i) {
            QCOMPARE(migrations().at(i).version, i + 1);
        }
    }

    void refusesAMissingDatabase()
    {
        QVERIFY(refusal(m_path, MissingDatabase::Refuse).contains(m_path));
        QVERIFY(!QFile::exists(m_path));
        writeFile(m_path, QByteArray());
        QVERIFY(refusal(m_path, MissingDatabase::Refuse).contains("is empty"_s));
        QCOMPARE(contentOf(m_path), QByteArray());
        QCOMPARE(refusal(m_path, MissingDatabase::Create), QString());
    }

    void leavesForeignFilesAlone_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("text") << "text"_s;
        QTest::newRow("half a header") << "half"_s;
        QTest::newRow("database of another program") << "sqlite"_s;
        QTest::newRow("database of another program with its own id") << "sqlite-id"_s;
    }
    void leavesForeignFilesAlone()
    {
        QFETCH(QString, kind);
        if (kind.startsWith(QLatin1String("sqlite"))) {
            SqliteDatabase other(m_path);
            other.execute("CREATE TABLE t (a)"_s);
            if (kind == QLatin1String("sqlite-id")) {
                other.execute("PRAGMA application_id = 77"_s);
            }
        } else {
            writeFile(m_path, kind == QLatin1String("half") ? QByteArray("SQLite format 3\0half", 20)
                                                            : QByteArray("some notes\n"));
        }
        const QByteArray before = contentOf(m_path);
        QVERIFY(!before.isEmpty());
        const QString message = refusal(m_path);
        QVERIFY2(message.contains(m_path) && message.contains("not a planservice database"_s),
                 qPrintable(message));
        QCOMPARE(contentOf(m_path), before);
        const QFileInfo info(m_path);
        QCOMPARE(info.dir().entryList({info.fileName() + "*"_s}).size(), 1);
    }

    void refusesANewerSchema()
    {
        openStore(m_path, MissingDatabase::Create).reset();
        {
            SqliteDatabase database(m_path);
            database.execute("PRAGMA user_version = 99"_s);
        }
        const QString message = refusal(m_path);
        QVERIFY2(message.contains("99"_s) && message.contains(m_path), qPrintable(message));
        SqliteDatabase database(m_path);
        QCOMPARE(database.value("PRAGMA user_version"_s).toInt(), 99);
    }

    void refusesAFolderAndAnUnreachablePath()
    {
        QVERIFY(refusal(m_folder.path()).contains("is a folder"_s));
        const QString nowhere = m_folder.filePath("no/such/folder/a.db"_s);
        QVERIFY(refusal(nowhere).contains(nowhere));
    }

    void goesOnFromEveryVersion_data()
    {
        QTest::addColumn<int>("version");
        for (int version = 1; version <= newest(); ++version) {
            QTest::addRow("version %d", version) << version;
        }
    }
    void goesOnFromEveryVersion()
    {
        QFETCH(int, version);
        {
            SqliteDatabase database(m_path);
            migrate(database, migrations().mid(0, version));
            QCOMPARE(database.value("PRAGMA user_version"_s).toInt(), version);
        }
        QCOMPARE(inspectDatabaseFile(m_path), DatabaseFile::Ours);
        QCOMPARE(openStore(m_path, MissingDatabase::Refuse)->schemaVersion(), newest());
    }

    void tellsWhoWorksOnOlderNodes()
    {
        const QStringList responsible{"ann"_s, "back\\slash"_s};
        const QStringList cooperating{"line\nend"_s, "引号\""_s};
        {
            SqliteDatabase database(m_path);
            migrate(database, migrations().mid(0, 4));
            database.execute("INSERT INTO plans (id, projectId, category, name, createdBy, document)"
                             " VALUES ('a', 'p1', '', '', '', '{}')"_s);
            const auto insert = [&](const QString& id, const QJsonObject& document) {
                database.run("INSERT INTO planNodes (planId, projectId, category, name, rowNumber, uniqueId,"
                             " parentTaskId, createdBy, id, document)"
                             " VALUES ('a', 'p1', '', '', 1, 1, 1, '', ?, ?)"_s,
                             {id, QString::fromUtf8(QJsonDocument(document).toJson())});
            };
            insert("named"_s, {{"userIds"_s, QJsonArray::fromStringList(responsible)},
                               {"executeIds"_s, QJsonArray()},
                               {"cooperateIds"_s, QJsonArray::fromStringList(cooperating)}});
            insert("nobody"_s, {});
        }
        openStore(m_path, MissingDatabase::Refuse);
        SqliteDatabase database(m_path);
        const QString people = "SELECT people FROM planNodes WHERE id = ?"_s;
        QCOMPARE(database.value(people, {"named"_s}).toString(), peopleText(responsible + cooperating));
        QCOMPARE(database.value(people, {"nobody"_s}).toString(), peopleText({}));
    }

    void keepsNodesWhenTheirTableIsMadeAnew()
    {
        {
            SqliteDatabase database(m_path);
            migrate(database, migrations().mid(0, 5));
            database.execute("INSERT INTO plans (id, projectId, category, name, createdBy, document)"
                             " VALUES ('a', 'p1', '', 'Tower', '', '{\"_id\":\"a\"}')"_s);
            for (const char* id : {"n2", "n1"}) {
                database
                    .run("INSERT INTO planNodes (id, planId, projectId, category, name, rowNumber,"
                         " uniqueId, parentTaskId, createdBy, people, document)"
                         " VALUES (?, 'a', 'p1', '', '', 1, 1, 0, '', char(10) || 'bo' || char(10), ?)"_s,
                         {QString::fromLatin1(id), "{\"_id\":\"%1\"}"_s.arg(QLatin1String(id))})
                    .finish();
            }
            database.execute("INSERT INTO responses (id, planNodeId, createdAt, document)"
                             " VALUES ('r', 'n2', '', '{\"_id\":\"r\"}')"_s);
        }
        const auto store = openStore(m_path, MissingDatabase::Refuse);
        const QJsonArray tasks = objectOf(store->planJson("a"_s)).value("tasks"_s).toArray();
        QCOMPARE(tasks.size(), 2);
        QCOMPARE(tasks.first().toObject().value("_id"_s).toString(), "n1"_s);
        QCOMPARE(store->planNodeOwnership("n1"_s)->projectId, "p1"_s);
        QVERIFY(store->hasResponse("n2"_s, "r"_s));
        // What refers to nodes still goes with them, and so do nodes with their plan.
        QVERIFY(store->removePlanNode("n2"_s));
        QVERIFY(!store->hasResponse("n2"_s, "r"_s));
        QVERIFY(store->removePlan("a"_s));
        QVERIFY(!store->planNodeOwnership("n1"_s));
        SqliteDatabase database(m_path);
        QVERIFY(!database.value("PRAGMA foreign_key_check"_s).isValid());
    }

    void undoesAFailedStep()
    {
        const Migration broken{2, {"CREATE TABLE half (a)"_s, "CREATE NONSENSE"_s}};
        SqliteDatabase database(m_path);
        QVERIFY_EXCEPTION_THROWN(migrate(database, {migrations().first(), broken}), StoreError);
        QCOMPARE(database.value("PRAGMA user_version"_s).toInt(), 1);
        QCOMPARE(database.value("SELECT count(*) FROM sqlite_master WHERE name = 'half'"_s).toInt(), 0);
        migrate(database, migrations());
        QCOMPARE(database.value("PRAGMA user_version"_s).toInt(), newest());
    }

    void survivesACrashInsideAStep()
    {
        SqliteDatabase database(m_path);
        migrate(database, migrations().mid(0, 1));
        database.beginWriting();
        for (const QString& statement : migrations().at(1).statements) {
            database.execute(statement);
        }
        // More than the page cache holds, so that the unfinished step reaches the file.
        database.execute("PRAGMA cache_size = 5"_s);
        database.execute("CREATE TABLE filler AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL "
                         "SELECT i + 1 FROM n WHERE i < 2000) SELECT i, hex(randomblob(200)) AS t FROM n"_s);
        const QString image = m_path + "-image"_s;
        QVERIFY(QFile::copy(m_path, image));
        QVERIFY(QFile::copy(m_path + "-journal"_s, image + "-journal"_s));
        database.rollback();

        const auto store = openStore(image, MissingDatabase::Refuse);
        QCOMPARE(store->schemaVersion(), newest());
        SqliteDatabase restored(image);
        QCOMPARE(restored.value("SELECT count(*) FROM sqlite_master WHERE name = 'filler'"_s).toInt(), 0);
        QCOMPARE(restored.value("PRAGMA integrity_check"_s).toString(), "ok"_s);
    }

    // What a transaction leaves in the write-ahead log goes into the file once the client has its answer, or,
    // where nobody tidies up, when it is a lot.
    void writeAheadLog_data()
    {
        QTest::addColumn<bool>("tidied");
        QTest::addColumn<int>("mebibytes"); // in three transactions
        QTest::addColumn<bool>("moved");
        QTest::newRow("little") << true << 3 << false;
        QTest::newRow("more, tidied up") << true << 15 << true;
        QTest::newRow("more, to be tidied up") << false << 15 << false;
        QTest::newRow("a lot, not tidied up") << false << 69 << true;
    }

    void writeAheadLog()
    {
        QFETCH(bool, tidied);
        QFETCH(int, mebibytes);
        QFETCH(bool, moved);
        const auto store = openStore(m_path, MissingDatabase::Create);
        const qint64 before = QFileInfo(m_path).size();
        for (int part = 0; part < 3; ++part) {
            Transaction transaction(*store);
            store->setUserSetting("ann"_s, QString::number(part),
                                  QByteArray(mebibytes * 1024 * 1024 / 3, 'x'));
            transaction.commit();
            if (tidied) {
                store->tidyUp();
            }
        }
        QCOMPARE(QFileInfo(m_path).size() > before + mebibytes * 1024 * 1024 / 2, moved);
        // Its place in the log is used again.
        const qint64 log = QFileInfo(m_path + "-wal"_s).size();
        store->setUserSetting("ann"_s, "small"_s, "1");
        QCOMPARE(QFileInfo(m_path + "-wal"_s).size() == log, moved);
        QCOMPARE(store->userSetting("ann"_s, "2"_s).size(), mebibytes * 1024 * 1024 / 3);
    }
};

QTEST_GUILESS_MAIN(TestSqliteFile)
#include "TestSqliteFile.moc"
