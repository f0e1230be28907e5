// Pictures of the simulation from the command line, on the real service, drawn by software.

#include "KvplanProcess.h"

#include <ServiceProcess.h>

#include <QtCore/QDir>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>
#include <QtTest/QtTest>

#include <csignal>

using KvTest::Kvplan;
using KvTest::KvplanRun;
using KvTest::ServiceProcess;
using KvTest::words;

namespace {

// Shades of a colour that faces have by their direction; others are grey, white or of another hue.
int pixelsOfHue(const QImage& image, int hue)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor colour = image.pixelColor(x, y);
            count += colour.hsvSaturation() > 150 && qAbs(colour.hsvHue() - hue) < 8 ? 1 : 0;
        }
    }
    return count;
}

int pixelsOf(const QImage& image, QColor state)
{
    return pixelsOfHue(image, state.hsvHue());
}

const QColor finished(0, 153, 255);
const QColor late(255, 0, 0);

} // namespace

class KvplanSimulateTest : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    QTemporaryDir m_folder;
    QString m_planId;
    QString m_model;

    QString path(const char* name) const { return m_folder.filePath(QLatin1String(name)); }

    Kvplan kvplan() const
    {
        Kvplan made(m_service.baseUrl());
        made.setEnvironment(QStringLiteral("KV_PROJECT_ID"), QStringLiteral("sample-project"));
        made.setEnvironment(QStringLiteral("KV_SETTINGS_DIR"), m_folder.filePath(QStringLiteral("settings")));
        return made;
    }

    QStringList simulate(const QString& output, const char* options) const
    {
        return QStringList{QStringLiteral("simulate"), m_planId, output, QStringLiteral("--model"), m_model} +
               words(options);
    }

    static QStringList files(const QString& folder)
    {
        return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    }

    QImage picture(const char* options)
    {
        const QString file = path("picture.png");
        const KvplanRun run = kvplan().run(simulate(file, options) << QStringLiteral("--yes"));
        return run.exitCode == 0 ? QImage(file) : QImage();
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_model = path("tower.gltf");
        const QJsonObject seeded = m_service.seed({QStringLiteral("--model"), m_model});
        QVERIFY2(!seeded.isEmpty(), qPrintable(m_service.failure()));
        m_planId = seeded.value(QLatin1String("planId")).toString();
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        QVERIFY(QDir(m_folder.path()).mkdir(QStringLiteral("settings")));
    }

    void framesOfThePlansDates()
    {
        const QString folder = path("all/of it");
        const KvplanRun run = kvplan().run(simulate(folder, "--speed 60 --rate 1 --size 320x180"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.text(), folder + QStringLiteral(": 5 frames, 2026-03-02 08:00 to 2026-09-27 17:00\n"));
        QCOMPARE(files(folder),
                 words("frame-0001.png frame-0002.png frame-0003.png frame-0004.png frame-0005.png"));
        int before = -1;
        for (const QString& file : files(folder)) {
            const QImage frame(QDir(folder).filePath(file));
            QCOMPARE(frame.size(), QSize(320, 180));
            const int built = pixelsOf(frame.copy(0, 0, 160, 180), finished); // as planned
            QVERIFY2(built > before,
                     qPrintable(QStringLiteral("%1: %2 after %3").arg(file).arg(built).arg(before)));
            before = built;
        }
        QVERIFY(before > 1000);
    }

    void framesOfAPeriodThatIsGiven_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<QString>("told");
        QTest::newRow("days, the last one whole")
            << QStringLiteral("--from 2026-06-01 --to 2026-06-02")
            << QStringLiteral("3 frames, 2026-06-01 00:00 to 2026-06-03 00:00");
        QTest::newRow("times") << QStringLiteral("--from 2026-06-01T12:00 --to 2026-06-02T13:00")
                               << QStringLiteral("3 frames, 2026-06-01 12:00 to 2026-06-02 13:00");
        QTest::newRow("one moment") << QStringLiteral("--from 2026-06-01T12:00 --to 2026-06-01T12:00")
                                    << QStringLiteral("1 frames, 2026-06-01 12:00 to 2026-06-01 12:00");
        QTest::newRow("from a date on") << QStringLiteral("--from 2026-09-26")
                                        << QStringLiteral("3 frames, 2026-09-26 00:00 to 2026-09-27 17:00");
    }
    void framesOfAPeriodThatIsGiven()
    {
        QFETCH(QString, options);
        QFETCH(QString, told);
        const QString folder = path("period");
        const QString all = options + QStringLiteral(" --speed 1 --rate 1 --size 64x48 --yes");
        const KvplanRun run = kvplan().run(simulate(folder, qPrintable(all)));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), folder + QStringLiteral(": ") + told + QLatin1Char('\n'));
        const int count = told.section(QLatin1Char(' '), 0, 0).toInt();
        QCOMPARE(files(folder).size(), count);
        QVERIFY(QDir(folder).removeRecursively());
    }

    void onePictureShowsWhatWasAskedFor()
    {
        const QImage planned = picture("--at 2026-07-15T12:00 --views planned --size 200x200");
        QCOMPARE(planned.size(), QSize(200, 200));
        QVERIFY(pixelsOf(planned, finished) > 1000);
        QCOMPARE(pixelsOf(planned, late), 0);
        const QImage actual = picture("--at 2026-06-15 --views actual --size 200x200");
        QVERIFY(pixelsOf(actual, late) > 10); // what is late is seen as that
        const QImage both = picture("--at 2026-07-15T12:00 --size 400x200");
        QVERIFY(pixelsOf(both.copy(0, 0, 200, 200), finished) > 1000);
        QVERIFY(pixelsOf(both.copy(0, 0, 200, 200), finished) >
                pixelsOf(both.copy(200, 0, 200, 200), finished));
        const QImage apart = picture("--at 2026-07-15T12:00 --views planned --size 200x200 --spread 1");
        QVERIFY(!apart.isNull() && apart != planned);
    }

    // As planviewer keeps them for the plan.
    void modelAndViewsAreThoseOfThePlan()
    {
        {
            QSettings kept(path("settings/planviewer.ini"), QSettings::IniFormat);
            kept.beginGroup(QStringLiteral("simulation-") + m_planId);
            kept.setValue(QStringLiteral("model"), m_model);
            kept.setValue(QStringLiteral("views"), QStringLiteral("planned"));
        }
        const QString file = path("kept.png");
        const KvplanRun run = kvplan().run({QStringLiteral("simulate"), m_planId, file,
                                            QStringLiteral("--at"), QStringLiteral("2026-07-15T12:00"),
                                            QStringLiteral("--size"), QStringLiteral("200x200")});
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), file + QStringLiteral(": 2026-07-15 12:00\n"));
        QCOMPARE(QImage(file), picture("--at 2026-07-15T12:00 --views planned --size 200x200"));
        QVERIFY(QFile::remove(path("settings/planviewer.ini")));
    }

    void filesAreReplacedOnlyWhenThatIsWanted()
    {
        const QString folder = path("twice");
        const char* const options = "--speed 200 --rate 1 --size 64x48";
        QCOMPARE(kvplan().run(simulate(folder, options)).exitCode, 0);
        const QStringList there = files(folder);
        QCOMPARE(there.size(), 3);
        QFile last(QDir(folder).filePath(there.last()));
        QVERIFY(last.resize(0));

        for (const char* const answer : {"", "n\n"}) {
            Kvplan asked = kvplan();
            asked.setInput(answer);
            const KvplanRun run = asked.run(simulate(folder, options));
            QCOMPARE(run.exitCode, 5);
            QVERIFY2(run.error().contains(QStringLiteral("3 of these frames are in")),
                     qPrintable(run.error()));
            QCOMPARE(last.size(), qint64(0));
        }
        Kvplan agreed = kvplan();
        agreed.setInput("y\n");
        QCOMPARE(agreed.run(simulate(folder, options)).exitCode, 0);
        QVERIFY(!QImage(last.fileName()).isNull());
        QVERIFY(last.resize(0));
        QCOMPARE(kvplan().run(simulate(folder, options) << QStringLiteral("--yes")).exitCode, 0);
        QVERIFY(!QImage(last.fileName()).isNull());
        QCOMPARE(files(folder), there);

        const QString file = path("once.png");
        QFile once(file);
        QVERIFY(once.open(QIODevice::WriteOnly));
        once.close();
        const KvplanRun run = kvplan().run(simulate(file, "--at 2026-06-15"));
        QCOMPARE(run.exitCode, 5);
        QVERIFY2(run.error().contains(QStringLiteral("Write over \"") + file), qPrintable(run.error()));
        QCOMPARE(once.size(), qint64(0));
    }

    void cancelLeavesWholeFiles_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("Ctrl+C") << SIGINT;
        QTest::newRow("asked to end") << SIGTERM;
    }
    void cancelLeavesWholeFiles()
    {
        QFETCH(int, signal);
        const QString folder = path("canceled");
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("KV_BASE_API"), m_service.baseUrl());
        environment.insert(QStringLiteral("KV_SETTINGS_DIR"), path("settings"));
        process.setProcessEnvironment(environment);
        process.start(Kvplan::program(), simulate(folder, "--speed 3 --rate 100 --size 320x180"));
        QVERIFY(process.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(files(folder).contains(QStringLiteral("frame-0003.png")) ||
                                     process.state() == QProcess::NotRunning,
                                 60000);
        QVERIFY(process.processId() > 0); // 0 would be everybody here
        QCOMPARE(::kill(pid_t(process.processId()), signal), 0);
        QVERIFY(process.waitForFinished());
        const QString said = QString::fromUtf8(process.readAllStandardError());
        QVERIFY2(process.exitStatus() == QProcess::NormalExit, qPrintable(said));
        QVERIFY2(process.exitCode() == 130, qPrintable(said));
        const QStringList written = files(folder);
        QVERIFY(written.size() >= 3);
        QVERIFY2(said.startsWith(QStringLiteral("kvplan: canceled; %1 of ").arg(written.size())),
                 qPrintable(said));
        for (const QString& file : written)
            QCOMPARE(QImage(QDir(folder).filePath(file)).size(), QSize(320, 180));
        QVERIFY(QDir(folder).removeRecursively());
    }

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
        const QString folder = path("faults");
        const KvplanRun run = kvplan().run(simulate(folder, qPrintable(options.trimmed())));
        QCOMPARE(run.faultOfFailure(exitCode), QString());
        QVERIFY2(run.error().contains(said), qPrintable(run.error()));
        QVERIFY(!QFileInfo::exists(folder));
    }

    void faultsOfPlanModelAndFolderAreTold()
    {
        const auto fault = [this](const QStringList& arguments, int exitCode, const QString& said) {
            const KvplanRun run = kvplan().run(QStringList(QStringLiteral("simulate")) + arguments);
            const QString wrong = run.faultOfFailure(exitCode);
            return !wrong.isEmpty() ? wrong : run.error().contains(said) ? QString() : run.error();
        };
        const QString model = QStringLiteral("--model=") + m_model;
        const QString folder = path("faults");
        QCOMPARE(fault({m_planId, folder}, 2, QStringLiteral("no model of the building")), QString());
        QCOMPARE(fault({QStringLiteral("nope"), folder, model}, 1, QStringLiteral("there is no plan 'nope'")),
                 QString());
        const KvplanRun made =
            kvplan().run({QStringLiteral("create"), QStringLiteral("empty"), QStringLiteral("--json")});
        const QString empty = KvTest::textOf(made.object(), "id");
        QVERIFY2(!empty.isEmpty(), qPrintable(made.error()));
        QCOMPARE(fault({empty, folder, model}, 4, QStringLiteral("the plan has no dates")), QString());

        QFile other(path("other.obj"));
        QVERIFY(other.open(QIODevice::WriteOnly));
        other.write("o elsewhere\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
        other.close();
        QCOMPARE(
            fault({m_planId, folder, QStringLiteral("--model=") + other.fileName()}, 4,
                  QStringLiteral("no task of the plan names an element of the model ") + other.fileName()),
            QString());
        QVERIFY(!QFileInfo::exists(folder));

        const QString inFile = other.fileName() + QStringLiteral("/frames");
        QCOMPARE(fault({m_planId, inFile, model}, 3, QStringLiteral("cannot be made")), QString());
        QCOMPARE(fault({m_planId, inFile + QStringLiteral(".png"), model, QStringLiteral("--at=2026-06-15")},
                       3, QStringLiteral("cannot be written")),
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
        process.start(alone, {QStringLiteral("simulate"), m_planId, path("nowhere"),
                              QStringLiteral("--server"), m_service.baseUrl()});
        QVERIFY(process.waitForFinished());
        const QString said = QString::fromUtf8(process.readAllStandardError());
        QVERIFY2(process.exitCode() == 6 && said.contains(QStringLiteral("install planviewer")),
                 qPrintable(said));
    }
};

QTEST_GUILESS_MAIN(KvplanSimulateTest)
#include "KvplanSimulateTest.moc"
