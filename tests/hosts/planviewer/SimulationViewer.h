#pragma once

#include "Person.h"

#include <PlaybackBar.h>
#include <SimulationPage.h>
#include <SimulationView.h>

/// The window with the model of a building in sight.
struct SimulationViewer : Person
{
    SimulationPage& simulation() { return *window.simulationPage(); }
    SimulationView& view() { return *simulation().view(); }

    bool openBuilding(const QString& path)
    {
        open(0);
        window.showSimulation();
        simulation().setReaderProgram(QStringLiteral(MODEL_READER));
        simulation().openModel(path);
        return QTest::qWaitFor([this] { return !simulation().isReading(); }, 60000) &&
               simulation().hasModel();
    }

    /// What is on the screen, once what was changed before is drawn.
    QImage screen()
    {
        QImage image;
        bool isDone = false;
        view().takePicture([&](const QImage& taken) {
            image = taken;
            isDone = true;
        });
        return QTest::qWaitFor([&] { return isDone; }, 30000) ? image : QImage();
    }

    /// An element that stands, in a colour that was not seen, with nothing of another before the middle of
    /// its upper side.
    int elementInSight(BuildingScene::View which, const QSet<QRgb>& seen = {})
    {
        for (int i = 0; i < simulation().model()->elements().size(); ++i) {
            const ElementLooks::Look& look = view().looks(which)->look(i);
            if (look.solidity != ElementLooks::Solidity::Solid || seen.contains(look.colour.rgb()))
                continue;
            const QPoint place = topOf(i, which);
            bool isSeen = view().rect().contains(place);
            for (const QPoint& beside :
                 {QPoint(0, 0), QPoint(-2, 0), QPoint(2, 0), QPoint(0, -2), QPoint(0, 2)}) {
                BuildingScene::View found = BuildingScene::Planned;
                isSeen = isSeen && view().elementAt(place + beside, &found) == i && found == which;
            }
            if (isSeen)
                return i;
        }
        return BuildingModel::none;
    }

    /// Where the middle of its upper side is seen.
    QPoint topOf(int element, BuildingScene::View which)
    {
        const Box box = view().looks(which)->drawnBox(element);
        if (box.isNothing())
            return {-1, -1};
        const QVector3D top(box.centre().x(), box.high.y(), box.centre().z());
        const QPointF at = view().camera().seenAt(top, view().aspect());
        const bool areTwo = view().isShown(BuildingScene::Planned) && view().isShown(BuildingScene::Actual);
        const double across = areTwo ? (at.x() + int(which)) / 2.0 : at.x();
        return {int(across * view().width()), int(at.y() * view().height())};
    }

    void lookFromAbove()
    {
        SceneCamera camera;
        camera.fit(simulation().model()->box(), view().aspect());
        camera.orbit(0.0, 55.0);
        view().setCamera(camera);
    }
};
