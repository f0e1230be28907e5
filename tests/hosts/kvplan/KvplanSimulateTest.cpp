// Pictures of the simulation from the command line, on the real service, drawn by software.

#include "KvplanSimulateFixture.h"

#include <QtCore/QSettings>
#include <QtGui/QImage>
#include <QtTest/QtTest>

#include <csignal>
#include <unistd.h>

using KvTest::Kvplan;
using KvTest::KvplanRun;
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

// In a process group of its own, as a shell starts it: Ctrl+C reaches all programs of the group.
class GroupProcess : public QProcess
{
protected:
    void setupChildProcess() override { setpgid(0, 0); }
};

bool hasChildren(qint64 process)
{
    QFile children(QStringLiteral("/proc/%1/task/%1/children").arg(process));
    return children.open(QIODevice::ReadOnly) && !children.readAll().isEmpty();
}

const QColor finished(0, 153, 255);
const QColor late(255, 0, 0);

} // namespace

class KvplanSimulateTest : public QObject, private KvplanSimulateFixture
{
    Q_OBJECT

private:
    QProcessEnvironment environment() const
    {
        QProcessEnvironment made = QProcessEnvironment::systemEnvironment();
        made.insert(QStringLiteral("KV_BASE_API"), service.baseUrl());
        made.insert(QStringLiteral("KV_SETTINGS_DIR"), path("settings"));
        return made;
    }

    static QStringList files(const QString& frames)
    {
        return QDir(frames).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    }

    QImage picture(const char* options)
    {
        const QString file = path("picture.png");
        const KvplanRun run = kvplan().run(simulate(file, options) << QStringLiteral("--yes"));
        return run.exitCode == 0 ? QImage(file) : QImage();
    }

private Q_SLOTS:
    void initTestCase() { QCOMPARE(start(), QString()); }

    void framesOfThePlansDates()
    {
        const QString frames = path("all/of it");
        const KvplanRun run = kvplan().run(simulate(frames, "--speed 60 --rate 1 --size 320x180"));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.text(), frames + QStringLiteral(": 5 frames, 2026-03-02 08:00 to 2026-09-27 17:00\n"));
        QCOMPARE(files(frames),
                 words("frame-0001.png frame-0002.png frame-0003.png frame-0004.png frame-0005.png"));
        int before = -1;
        for (const QString& file : files(frames)) {
            const QImage frame(QDir(frames).filePath(file));
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
                                    << QStringLiteral("1 frame, 2026-06-01 12:00 to 2026-06-01 12:00");
        QTest::newRow("from a date on") << QStringLiteral("--from 2026-09-26")
                                        << QStringLiteral("3 frames, 2026-09-26 00:00 to 2026-09-27 17:00");
    }
    void framesOfAPeriodThatIsGiven()
    {
        QFETCH(QString, options);
        QFETCH(QString, told);
        const QString frames = path("period");
        const QString all = options + QStringLiteral(" --speed 1 --rate 1 --size 64x48 --yes");
        const KvplanRun run = kvplan().run(simulate(frames, qPrintable(all)));
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), frames + QStringLiteral(": ") + told + QLatin1Char('\n'));
        const int count = told.section(QLatin1Char(' '), 0, 0).toInt();
        QCOMPARE(files(frames).size(), count);
        QVERIFY(QDir(frames).removeRecursively());
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
            kept.beginGroup(QStringLiteral("simulation-") + planId);
            kept.setValue(QStringLiteral("model"), model);
            kept.setValue(QStringLiteral("views"), QStringLiteral("planned"));
        }
        const QString file = path("kept.png");
        const KvplanRun run = kvplan().run({QStringLiteral("simulate"), planId, file, QStringLiteral("--at"),
                                            QStringLiteral("2026-07-15T12:00"), QStringLiteral("--size"),
                                            QStringLiteral("200x200")});
        QCOMPARE(run.error(), QString());
        QCOMPARE(run.text(), file + QStringLiteral(": 2026-07-15 12:00\n"));
        QCOMPARE(QImage(file), picture("--at 2026-07-15T12:00 --views planned --size 200x200"));
        QVERIFY(QFile::remove(path("settings/planviewer.ini")));
    }

    void filesAreReplacedOnlyWhenThatIsWanted()
    {
        const QString frames = path("twice");
        const char* const options = "--speed 200 --rate 1 --size 64x48";
        QCOMPARE(kvplan().run(simulate(frames, options)).exitCode, 0);
        const QStringList there = files(frames);
        QCOMPARE(there.size(), 3);
        QFile last(QDir(frames).filePath(there.last()));
        QVERIFY(last.resize(0));

        for (const char* const answer : {"", "n\n"}) {
            Kvplan asked = kvplan();
            asked.setInput(answer);
            const KvplanRun run = asked.run(simulate(frames, options));
            QCOMPARE(run.exitCode, 5);
            QVERIFY2(run.error().contains(QStringLiteral("3 of these frames are in")),
                     qPrintable(run.error()));
            QCOMPARE(last.size(), qint64(0));
        }
        Kvplan agreed = kvplan();
        agreed.setInput("y\n");
        QCOMPARE(agreed.run(simulate(frames, options)).exitCode, 0);
        QVERIFY(!QImage(last.fileName()).isNull());
        QVERIFY(last.resize(0));
        QCOMPARE(kvplan().run(simulate(frames, options) << QStringLiteral("--yes")).exitCode, 0);
        QVERIFY(!QImage(last.fileName()).isNull());
        QCOMPARE(files(frames), there);

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
        const QString frames = path("canceled");
        QProcess process;
        process.setProcessEnvironment(environment());
        process.start(Kvplan::program(), simulate(frames, "--speed 3 --rate 100 --size 320x180"));
        QVERIFY(process.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(files(frames).contains(QStringLiteral("frame-0003.png")) ||
                                     process.state() == QProcess::NotRunning,
                                 60000);
        QVERIFY(process.processId() > 0); // 0 would be everybody here
        QCOMPARE(::kill(pid_t(process.processId()), signal), 0);
        QVERIFY(process.waitForFinished());
        const QString said = QString::fromUtf8(process.readAllStandardError());
        QVERIFY2(process.exitStatus() == QProcess::NormalExit, qPrintable(said));
        QVERIFY2(process.exitCode() == 130, qPrintable(said));
        const QStringList written = files(frames);
        QVERIFY(written.size() >= 3);
        QVERIFY2(said.startsWith(QStringLiteral("kvplan: canceled; %1 of ").arg(written.size())),
                 qPrintable(said));
        for (const QString& file : written)
            QCOMPARE(QImage(QDir(frames).filePath(file)).size(), QSize(320, 180));
        QVERIFY(QDir(frames).removeRecursively());
    }

    void cancelWhileTheModelIsRead()
    {
        QFile large(path("large.obj"));
        QVERIFY(large.open(QIODevice::WriteOnly));
        constexpr int triangles = 100000;
        for (int i = 0; i < triangles; ++i)
            large.write(QByteArray("v ") + QByteArray::number(i) + " 0 0\nv 0 " + QByteArray::number(i) +
                        " 0\nv 0 0 1\nf -1 -2 -3\n");
        large.close();
        GroupProcess process;
        process.setProcessEnvironment(environment());
        process.start(Kvplan::program(),
                      {QStringLiteral("simulate"), planId, path("large.png"), QStringLiteral("--at"),
                       QStringLiteral("2026-06-15"), QStringLiteral("--model"), large.fileName()});
        QVERIFY(process.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(hasChildren(process.processId()) || process.state() == QProcess::NotRunning,
                                 60000);
        QVERIFY(process.processId() > 0); // 0 would be everybody here
        QCOMPARE(::kill(-pid_t(process.processId()), SIGINT), 0);
        QVERIFY(process.waitForFinished());
        QCOMPARE(QString::fromUtf8(process.readAllStandardError()),
                 QStringLiteral("kvplan: canceled; no picture was written\n"));
        QCOMPARE(process.exitCode(), 130);
        QVERIFY(!QFileInfo::exists(path("large.png")));
    }

    void progressIsToldOnATerminal()
    {
        const QString frames = path("told");
        const KvplanRun run = kvplan().runOnTerminal(
            simulate(frames, "--speed 20 --rate 10 --size 640x360 --views planned"), 80);
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.text().contains(QStringLiteral("drawing … ")) &&
                     run.text().contains(QStringLiteral(" %")),
                 qPrintable(run.text()));
        QVERIFY2(run.text().endsWith(frames +
                                     QStringLiteral(": 106 frames, 2026-03-02 08:00 to 2026-09-27 17:00\n")),
                 qPrintable(run.text()));
    }
};

QTEST_GUILESS_MAIN(KvplanSimulateTest)
#include "KvplanSimulateTest.moc"
