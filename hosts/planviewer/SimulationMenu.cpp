// The main window's menu of the simulation, and what it does.

#include "MainWindow.h"
#include "PlanActions.h"
#include "PlanPage.h"
#include "SimulationExport.h"
#include "SimulationPage.h"

#include <ModelFile.h>
#include <PlaybackBar.h>
#include <SimulationView.h>

#include <QtCore/QFileInfo>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QStatusBar>

void MainWindow::buildSimulationMenu()
{
    // It does not float: a window of its own would be made anew below the scene, which draws on it.
    m_simulationDock = new QDockWidget(tr("Simulation"));
    m_simulationDock->setObjectName(QStringLiteral("simulationDock"));
    m_simulationDock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetClosable);
    m_simulationDock->setWidget(m_simulation);
    addDockWidget(Qt::BottomDockWidgetArea, m_simulationDock);
    m_simulationDock->hide();

    QMenu* const menu = menuBar()->addMenu(tr("&Simulation"));
    menu->setToolTipsVisible(true);
    QAction* const show = m_simulationDock->toggleViewAction();
    show->setObjectName(QStringLiteral("showSimulation"));
    show->setText(tr("&Show the simulation"));
    show->setShortcut(Qt::Key_F6);
    menu->addAction(show);
    m_model = add(menu, "openModel", tr("&Open a model…"), Qt::CTRL | Qt::SHIFT | Qt::Key_O,
                  [this] { openModel(); });
    menu->addSeparator();
    m_buildingViews = {
        add(menu, "playSimulation", tr("&Play or pause"), Qt::Key_F7,
            [this] {
                showSimulation();
                m_simulation->playback()->togglePlaying();
            }),
        add(menu, "fitBuilding", tr("&Whole building"), Qt::Key_F8, [this] { m_simulation->view()->fit(); }),
        add(menu, "exportSimulation", tr("Export a p&icture…"), {}, [this] { exportSimulationPicture(); }),
        add(menu, "exportFrames", tr("Export &frames…"), {}, [this] { exportFrames(); }),
    };
}

void MainWindow::showSimulation()
{
    m_simulationDock->show();
    m_simulationDock->raise();
}

void MainWindow::openModel()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Open a model"),
                                                      QFileInfo(m_simulation->settings()->modelFile()).path(),
                                                      ModelFile::dialogFilter());
    if (path.isEmpty())
        return;
    showSimulation();
    m_simulation->openModel(path);
}

void MainWindow::exportSimulationPicture()
{
    const QString path = QFileDialog::getSaveFileName(this, tr("Export a picture of the simulation"),
                                                      m_page->plan().name + QStringLiteral(".png"),
                                                      tr("Picture (*.png *.jpg)"));
    if (path.isEmpty())
        return;
    constexpr int width = 1920;
    constexpr int height = 1080;
    auto* const maker = new PictureMaker(m_simulation->pictureContent(), {width, height}, this);
    maker->draw(m_simulation->playback()->date(), [this, maker, path](const QImage& picture) {
        maker->deleteLater();
        const QString fault = writePicture(picture, path);
        if (fault.isEmpty())
            statusBar()->showMessage(tr("Written: %1").arg(path), 8000);
        else
            QMessageBox::warning(this, tr("Export a picture of the simulation"), fault);
    });
}

void MainWindow::exportFrames()
{
    m_simulation->playback()->pause();
    FrameExportDialog dialog(m_simulation->pictureContent(), m_simulation->sequence(), this);
    if (dialog.exec() == QDialog::Accepted)
        statusBar()->showMessage(tr("%1 frames written.").arg(dialog.written()), 8000);
    else if (dialog.written() > 0)
        statusBar()->showMessage(tr("Canceled after %1 frames.").arg(dialog.written()), 8000);
}
