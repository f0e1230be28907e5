// The files printed in the documents are what the library reads and writes.

#include <KvSoftBase/KvSoftBase.h>
#include <model/KvPlanDataUtils.h>
#include <setting/KvPlanSetting.h>

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

namespace {

// The code blocks of one language, in order.
QList<QByteArray> blocks(const char* document, const char* language)
{
    QFile file(QStringLiteral(DOCUMENTS_DIR "/") + QLatin1String(document));
    QList<QByteArray> found;
    if (!file.open(QIODevice::ReadOnly))
        return found;
    const QByteArray text = file.readAll();
    const QByteArray opening = QByteArray("\n```") + language + '\n';
    for (int at = text.indexOf(opening); at >= 0; at = text.indexOf(opening, at)) {
        at += opening.size();
        found.append(text.mid(at, text.indexOf("\n```\n", at) + 1 - at));
    }
    return found;
}

} // namespace

class DocumentedFilesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void exchangeFormat();
    void settingsFile();
};

void DocumentedFilesTest::exchangeFormat()
{
    const QList<QByteArray> examples = blocks("exchange-format.md", "json");
    QCOMPARE(examples.size(), 2);
    QJsonParseError error;
    const QJsonObject read = QJsonDocument::fromJson(examples.first(), &error).object();
    QVERIFY2(error.error == QJsonParseError::NoError, qPrintable(error.errorString()));
    KvPlan plan;
    KvPlanDataUtils::jsonObjectToPlanMPXJ(read, plan);
    QCOMPARE(plan.name, QStringLiteral("Tower A"));
    QCOMPARE(plan.mppFilePath, QStringLiteral("/schedules/tower-a.mpp"));
    QCOMPARE(plan.planNodes.size(), 3);
    QCOMPARE(plan.planNodes.at(1).notes, QString(QChar(0)));
    QVERIFY(plan.planNodes.last().milestone);

    QJsonObject written;
    KvPlanDataUtils::planToJsonObjectMPXJ(plan, written);
    const QJsonObject documented = QJsonDocument::fromJson(examples.last(), &error).object();
    QVERIFY2(error.error == QJsonParseError::NoError, qPrintable(error.errorString()));
    QCOMPARE(QJsonDocument(written).toJson(), QJsonDocument(documented).toJson());
}

void DocumentedFilesTest::settingsFile()
{
    const QList<QByteArray> examples = blocks("settings-file.md", "ini");
    QCOMPARE(examples.size(), 1);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("PlanSetting.ini"));
    QFile documented(path);
    QVERIFY(documented.open(QIODevice::WriteOnly));
    QCOMPARE(documented.write(examples.first()), qint64(examples.first().size()));
    documented.close();
    SetSettingsDirectory(folder.path());
    KvPlanSetting& setting = *KvPlanSetting::instance();

    QMap<QString, int> widths;
    setting.GetGanttColumnWidth(widths);
    QCOMPARE(widths, (QMap<QString, int>{{QStringLiteral("name"), 260}, {QStringLiteral("start"), 100}}));
    const QList<QColor> colours = setting.GetSimulateColor();
    QCOMPARE(colours.mid(0, 6), setting.GetDefaultSimulateColor().mid(0, 6));
    QCOMPARE(colours.last().alpha(), 128);
    TimeLineSet set;
    QVERIFY(setting.GetSimulateSetting(QStringLiteral("65f0"), set));
    QCOMPARE(set.DayForS, 2.0);
    QCOMPARE(set.TimeStart, QDateTime(QDate(2026, 3, 2), QTime(8, 0)));
    QVERIFY(!set.UsePlanTime);

    // Written afresh, array by array, it is the same file.
    QVERIFY(QFile::remove(path));
    setting.SetGanttColumnWidth({{QStringLiteral("name"), 1}}); // as nothing is written that is no change
    setting.SetGanttColumnWidth(widths);
    setting.SetSimulateColor(setting.GetDefaultSimulateColor());
    setting.SetSimulateColor(colours);
    setting.SetSimulateSetting(QStringLiteral("65f0"), set);
    QFile written(path);
    QVERIFY(written.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(written.readAll()), QString::fromUtf8(examples.first()));
}

QTEST_GUILESS_MAIN(DocumentedFilesTest)
#include "DocumentedFilesTest.moc"
