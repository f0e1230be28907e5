// Pictures of the simulation by the window's menu, and those that the documents show, on the real service.

#include "SimulationViewer.h"

#include <KvNetwork/KvBaseApi.h>
#include <KvSoftBase/KvSoftBase.h>
#include <SimulationExport.h>
#include <SimulationScreenshots.h>

#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStatusBar>

using KvTest::ServiceProcess;

namespace {

// In the middle of the schedule.
struct Viewer : SimulationViewer
{
    explicit Viewer(const QString& model)
        : isReady(openBuilding(model))
    {
        simulation().playback()->setDate(QDateTime(QDate(2026, 6, 15), QTime(12, 0)));
    }

    QString status() const { return window.statusBar()->currentMessage(); }

    bool isReady;
};

int coloursOf(const QImage& image)
{
    QSet<QRgb> found;
    for (int y = 0; y < image.height(); y += 3) {
        for (int x = 0; x < image.width(); x += 3)
            found.insert(image.pixel(x, y));
    }
    return found.size();
}

// In shades of the colour of what is finished.
int builtOf(const QImage& image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor colour = image.pixelColor(x, y);
            count += colour.blue() > 100 && colour.red() < 60 && colour.green() < colour.blue() ? 1 : 0;
        }
    }
    return count;
}

void chooseFile(const QString& path)
{
    Person::answer([path](QWidget* dialog) {
        auto* const files = qobject_cast<QFileDialog*>(dialog);
        QVERIFY(files);
        files->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(path);
        static_cast<QDialog*>(files)->accept();
    });
}

// Presses Write in the dialog of the frames once it is filled in; @p run meanwhile.
void exportFrames(
    const QString& folder, double rate, const std::function<void(QWidget* dialog)>& run = [](QWidget*) {})
{
    Person::answer([=](QWidget* dialog) {
        QVERIFY(qobject_cast<FrameExportDialog*>(dialog));
        dialog->findChild<QLineEdit*>(QStringLiteral("frameFolder"))->setText(folder);
        dialog->findChild<QSpinBox*>(QStringLiteral("frameWidth"))->setValue(160);
        dialog->findChild<QSpinBox*>(QStringLiteral("frameHeight"))->setValue(90);
        dialog->findChild<QDoubleSpinBox*>(QStringLiteral("frameRate"))->setValue(rate);
        run(dialog);
        Person::click(dialog, "writeFrames");
    });
}

} // namespace

class SimulationExportTest : public QObject
{
    Q_OBJECT

private:
    ServiceProcess m_service;
    QTemporaryDir m_folder;
    QString m_model;

    QString path(const char* name) const { return m_folder.filePath(QLatin1String(name)); }

private Q_SLOTS:
    void initTestCase()
    {
        QApplication::setQuitOnLastWindowClosed(false);
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        m_model = path("tower.gltf");
        const QJsonObject seeded = m_service.seed({QStringLiteral("--model"), m_model});
        QVERIFY2(!seeded.isEmpty(), qPrintable(m_service.failure()));
        QVERIFY2(m_service.start(), qPrintable(m_service.failure()));
        KvBaseApi::GetInstance().setBaseApi(m_service.baseUrl());
        GetSoftCache()->setCurrentProjectId(seeded.value(QLatin1String("projectId")).toString());
        SetSettingsDirectory(m_folder.path());
    }

    void aPictureOfWhatIsSeen()
    {
        Viewer viewer(m_model);
        QVERIFY(viewer.isReady);
        const QString first = path("first.png");
        chooseFile(first);
        viewer.action("exportSimulation")->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(viewer.status(), QStringLiteral("Written: ") + first, 30000);
        const QImage picture(first);
        QCOMPARE(picture.size(), QSize(1920, 1080));
        QVERIFY2(coloursOf(picture) > 8, qPrintable(QString::number(coloursOf(picture))));

        // Another date looks otherwise.
        viewer.simulation().playback()->setDate(QDateTime(QDate(2026, 4, 1), QTime(12, 0)));
        const QString second = path("second.jpg");
        chooseFile(second);
        viewer.action("exportSimulation")->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(viewer.status(), QStringLiteral("Written: ") + second, 30000);
        QCOMPARE(QImage(second).size(), QSize(1920, 1080));
        const int built = builtOf(picture);
        const int builtBefore = builtOf(QImage(second));
        QVERIFY2(built > 2 * builtBefore,
                 qPrintable(QStringLiteral("%1, before %2").arg(built).arg(builtBefore)));

        // Nothing happens when no file is chosen.
        const QStringList before = QDir(m_folder.path()).entryList(QDir::Files);
        Person::answer([](QWidget* dialog) { static_cast<QDialog*>(dialog)->reject(); });
        viewer.action("exportSimulation")->trigger();
        QCOMPARE(QDir(m_folder.path()).entryList(QDir::Files), before);
    }

    void aPictureThatCannotBeWrittenIsTold()
    {
        Viewer viewer(m_model);
        QVERIFY(viewer.isReady);
        chooseFile(path("nowhere/picture.png"));
        viewer.action("exportSimulation")->trigger();
        QString said;
        Person::answer([&said](QWidget* dialog) {
            auto* const box = qobject_cast<QMessageBox*>(dialog);
            QVERIFY(box);
            said = box->text();
            box->accept();
        });
        QTRY_VERIFY_WITH_TIMEOUT(!said.isEmpty(), 30000);
        QVERIFY2(said.contains(QStringLiteral("picture.png cannot be written")), qPrintable(said));
    }

    void framesByTheMenu()
    {
        Viewer viewer(m_model);
        QVERIFY(viewer.isReady);
        TimeLineSet set = viewer.simulation().settings()->set();
        set.DayForS = 100.0;
        viewer.simulation().settings()->setSet(set);
        viewer.simulation().playback()->play();
        const QString folder = path("frames");
        exportFrames(folder, 2.0, [](QWidget* dialog) {
            // What will be written is told before; without a folder nothing can be.
            auto* const field = dialog->findChild<QLineEdit*>(QStringLiteral("frameFolder"));
            auto* const write = dialog->findChild<QPushButton*>(QStringLiteral("writeFrames"));
            QStringList labels;
            for (const QLabel* const label : dialog->findChildren<QLabel*>())
                labels.append(label->text());
            QVERIFY2(labels.contains(QStringLiteral("6 frames, 100 days of the schedule in a second")),
                     qPrintable(labels.join(QLatin1Char('\n'))));
            const QString chosen = field->text();
            field->clear();
            QVERIFY(!write->isEnabled());
            field->setText(chosen);
            QVERIFY(write->isEnabled());
        });
        viewer.action("exportFrames")->trigger();
        QCOMPARE(viewer.status(), QStringLiteral("6 frames written."));
        QCOMPARE(QDir(folder).entryList(QDir::Files).size(), 6);
        QVERIFY(!viewer.simulation().playback()->clock().isPlaying());

        // Canceled after some.
        const QString other = path("canceled");
        exportFrames(other, 120.0, [](QWidget* dialog) {
            auto* const progress = dialog->findChild<QProgressBar*>(QStringLiteral("frameProgress"));
            QObject::connect(progress, &QProgressBar::valueChanged, dialog, [dialog](int value) {
                if (value == 3)
                    Person::click(dialog, "cancelFrames");
            });
        });
        viewer.action("exportFrames")->trigger();
        const int written = QDir(other).entryList(QDir::Files | QDir::Hidden).size();
        QVERIFY(written >= 3 && written < 200);
        QCOMPARE(viewer.status(), QStringLiteral("Canceled after %1 frames.").arg(written));
    }

    void aSequenceThatCannotBeIsTold()
    {
        Viewer viewer(m_model);
        QVERIFY(viewer.isReady);
        TimeLineSet set = viewer.simulation().settings()->set();
        set.DayForS = 0.01;
        viewer.simulation().settings()->setSet(set);
        bool isSeen = false;
        Person::answer([&](QWidget* dialog) {
            dialog->findChild<QLineEdit*>(QStringLiteral("frameFolder"))->setText(path("never"));
            dialog->findChild<QDoubleSpinBox*>(QStringLiteral("frameRate"))->setValue(120.0);
            for (const QLabel* const label : dialog->findChildren<QLabel*>())
                isSeen = isSeen || label->text().contains(QStringLiteral("more than 100000 frames"));
            QVERIFY(!dialog->findChild<QPushButton*>(QStringLiteral("writeFrames"))->isEnabled());
            static_cast<QDialog*>(dialog)->reject();
        });
        viewer.action("exportFrames")->trigger();
        QVERIFY(isSeen);
        QVERIFY(!QFileInfo::exists(path("never")));
    }

    // The last one, as it leaves the window as it is on the pictures.
    void picturesOfTheDocuments()
    {
        Viewer viewer(m_model);
        QVERIFY(viewer.isReady);
        const QDir folder(path("documents"));
        QVERIFY(writeSimulationScreenshots(viewer.window, folder.path(),
                                           QDateTime(QDate(2026, 6, 15), QTime(12, 0))));
        QCOMPARE(folder.entryList(QDir::Files, QDir::Name),
                 QStringList({QStringLiteral("floors.png"), QStringLiteral("simulation.png"),
                              QStringLiteral("strip.png")}));
        for (const QString& name : folder.entryList(QDir::Files)) {
            const QImage picture(folder.filePath(name));
            QVERIFY2(coloursOf(picture) > 20, qPrintable(name));
        }
        QVERIFY(!writeSimulationScreenshots(viewer.window, m_model + QStringLiteral("/folder"), {}));
    }
};

QTEST_MAIN(SimulationExportTest)
#include "SimulationExportTest.moc"
