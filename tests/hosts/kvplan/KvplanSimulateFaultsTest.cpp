// Why "kvplan simulate" draws nothing: each cause is told in one line, and nothing is left behind.

#include "KvplanSimulateFixture.h"

#include <QtTest/QtTest>

using KvTest::Kvplan;
using KvTest::KvplanRun;

class KvplanSimulateFaultsTest : public QObject, private KvplanSimulateFixture
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QCOMPARE(start(), QString()); }

    void faultsAreTold_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("said");
        const auto row = [](const char* name, const char* options, int exitCode, const char* said) {
            QTest::newRow(name) << QString::fromLatin1(options) << exitCode << QString::fromLatin1(said);
        };
        row("a size without height", "--size 640", 2, "--size takes width and height");
        row("a size of three sides", "--size 64x48x32", 2, "--size takes width and height");
        row("a size that is too small", "--size 8x8", 2, "a picture has sides from 16 to 4096 pixels");
        row("a size that is too large", "--size 5000x100", 2, "a picture has sides from");
        row("no number", "--rate fast", 2, "--rate takes a number from 0.1 to 120, not \"fast\"");
        row("no number at all", "--rate nan", 2, "--rate takes a number");
        row("too slow", "--speed 0", 2, "--speed takes a number from 0.01 to 365");
        row("other views", "--views all", 2, "--views takes planned, actual or both");
        row("no date", "--from soon", 2, "--from takes a date as in");
        row("a period the wrong way round", "--from 2026-06-02 --to 2026-06-01", 2,
            "--to 2026-06-01 is before --from 2026-06-02");
        row("a period after the plan's end", "--from 2027-06-02", 2,
            "the frames would end on 2026-09-27 17:00, before they begin on 2027-06-02 00:00");
        row("too many frames", "--rate 120 --speed 0.01", 2, "more than 100000 frames");
        row("a picture of a period", "--at 2026-06-15 --rate 5", 2, "which has no --rate");
        row("a picture of another kind", "--at 2026-06-15", 2, "ends in .png or .jpg");
        row("no model named", "--model= ", 2, "--model takes a file");
        row("a model that is missing", "--model gone.obj", 4, "there is no model file gone.obj");
        row("a service that is not there", "--server http://127.0.0.1:1/", 1, "cannot read the plan");
    }
    void faultsAreTold()
    {
        QFETCH(QString, options);
        QFETCH(int, exitCode);
        QFETCH(QString, said);
        const QString frames = path("faults");
        const KvplanRun run = kvplan().run(simulate(frames, qPrintable(options.trimmed())));
        QCOMPARE(run.faultOfFailure(exitCode), QString());
        QVERIFY2(run.error().contains(said), qPrintable(run.error()));
        QVERIFY(!QFileInfo::exists(frames));
    }

    void faultsOfPlanModelAndFolderAreTold()
    {
        const auto fault = [this](const QStringList& arguments, int exitCode, const QString& said) {
            const KvplanRun run = kvplan().run(QStringList(QStringLiteral("simulate")) + arguments);
            const QString wrong = run.faultOfFailure(exitCode);
            return !wrong.isEmpty() ? wrong : run.error().contains(said) ? QString() : run.error();
        };
        const QString ofBuilding = QStringLiteral("--model=") + model;
        const QString frames = path("faults");
        QCOMPARE(fault({planId, frames}, 2, QStringLiteral("no model of the building")), QString());
        QCOMPARE(
            fault({QStringLiteral("nope"), frames, ofBuilding}, 1, QStringLiteral("there is no plan 'nope'")),
            QString());
        const KvplanRun made =
            kvplan().run({QStringLiteral("create"), QStringLiteral("empty"), QStringLiteral("--json")});
        const QString empty = KvTest::textOf(made.object(), "id");
        QVERIFY2(!empty.isEmpty(), qPrintable(made.error()));
        QCOMPARE(fault({empty, frames, ofBuilding}, 4, QStringLiteral("the plan has no dates")), QString());

        QFile other(path("other.obj"));
        QVERIFY(other.open(QIODevice::WriteOnly));
        other.write("o elsewhere\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
        other.close();
        QCOMPARE(
            fault({planId, frames, QStringLiteral("--model=") + other.fileName()}, 4,
                  QStringLiteral("no task of the plan names an element of the model ") + other.fileName()),
            QString());
        QVERIFY(!QFileInfo::exists(frames));

        const QString inFile = other.fileName() + QStringLiteral("/frames");
        QCOMPARE(fault({planId, inFile, ofBuilding}, 3, QStringLiteral("cannot be made")), QString());
        QCOMPARE(
            fault({planId, inFile + QStringLiteral(".png"), ofBuilding, QStringLiteral("--at=2026-06-15")}, 3,
                  QStringLiteral("cannot be written")),
            QString());
    }

    void whereNothingCanBeDrawnThatIsTold_data()
    {
        QTest::addColumn<QString>("variable");
        QTest::addColumn<QString>("value"); // null: taken away
        QTest::addColumn<QString>("said");
        QTest::newRow("no display") << QStringLiteral("DISPLAY") << QString()
                                    << QStringLiteral("there is no display server");
        QTest::newRow("a display that is gone") << QStringLiteral("DISPLAY") << QStringLiteral(":64999")
                                                << QStringLiteral("there is no display server");
        QTest::newRow("no OpenGL") << QStringLiteral("QT_XCB_GL_INTEGRATION") << QStringLiteral("none")
                                   << QStringLiteral("there is no OpenGL 3.2 here");
        QTest::newRow("an old OpenGL") << QStringLiteral("MESA_GL_VERSION_OVERRIDE") << QStringLiteral("2.1")
                                       << QStringLiteral("there is no OpenGL 3.2 here");
    }
    void whereNothingCanBeDrawnThatIsTold()
    {
        QFETCH(QString, variable);
        QFETCH(QString, value);
        QFETCH(QString, said);
        Kvplan there = kvplan();
        there.setEnvironment(variable, value);
        const KvplanRun run = there.run(simulate(path("nowhere"), "--rate 1"));
        QCOMPARE(run.faultOfFailure(6), QString());
        QVERIFY2(run.error().contains(said), qPrintable(run.error()));
        QVERIFY(!QFileInfo::exists(path("nowhere")));
        // Its texts need neither.
        QCOMPARE(there.run({QStringLiteral("simulate"), QStringLiteral("--help")}).exitCode, 0);
    }

    void withoutPlanviewerThatIsTold()
    {
        const QString alone = path("kvplan");
        QVERIFY(QFile::copy(Kvplan::program(), alone));
        QProcess process;
        process.start(alone, {QStringLiteral("simulate"), planId, path("nowhere"), QStringLiteral("--server"),
                              service.baseUrl()});
        QVERIFY(process.waitForFinished());
        const QString said = QString::fromUtf8(process.readAllStandardError());
        QVERIFY2(process.exitCode() == 6 && said.contains(QStringLiteral("install planviewer")),
                 qPrintable(said));
    }
};

QTEST_GUILESS_MAIN(KvplanSimulateFaultsTest)
#include "KvplanSimulateFaultsTest.moc"
