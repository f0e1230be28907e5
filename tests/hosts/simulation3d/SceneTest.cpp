// What is drawn, pixel by pixel.

#include "Models.h"

#include <GraphicsCheck.h>
#include <SceneRenderer.h>
#include <SimulationView.h>

#include <QtTest/QtTest>

using Solidity = ElementLooks::Solidity;

namespace {

// Two flat boxes, left and right of each other, so that their upper sides fill much of the picture.
std::shared_ptr<const BuildingModel> twoSlabs()
{
    return std::make_shared<BuildingModel>(Models::data({{QStringLiteral("left"), {0, 0, 0}, {4, 1, 8}},
                                                         {QStringLiteral("right"), {5, 0, 0}, {9, 1, 8}}}),
                                           QSet<QString>());
}

SceneCamera fromAbove(const BuildingModel& model, double aspect)
{
    SceneCamera camera;
    camera.orbit(-35.0, 61.0); // from the front, nearly straight down
    camera.fitFromHere(model.box(), aspect);
    return camera;
}

QImage draw(SceneRenderer& renderer)
{
    QImage image;
    bool isDone = false;
    renderer.draw([&](const QImage& drawn) {
        image = drawn;
        isDone = true;
    });
    if (!QTest::qWaitFor([&] { return isDone; }, 60000))
        return {};
    return image;
}

ElementLooks::Look solid(const QColor& colour, double share = 1.0,
                         Kv::QGrowthType growth = Kv::GrowBottomToTop)
{
    return {Solidity::Solid, colour, share, growth};
}

// Where the middle of an element's upper side is in a picture.
QPoint topOf(const BuildingModel& model, int element, const SceneCamera& camera, const QSize& size,
             int view = 0, int views = 1)
{
    const Box box = model.elements().at(element).box;
    const QVector3D top(box.centre().x(), box.high.y(), box.centre().z());
    const QPointF at = camera.seenAt(top, double(size.width()) / views / size.height());
    return {int((at.x() + view) / views * size.width()), int(at.y() * size.height())};
}

} // namespace

class SceneTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thereIsOpenGl() { QCOMPARE(GraphicsCheck::fault(), QString()); }

    void elementsHaveTheirColours()
    {
        const auto model = twoSlabs();
        const QSize size(320, 240);
        SceneRenderer renderer(model, size, true, false);
        renderer.setBackground(QColor(10, 20, 30));
        const SceneCamera camera = fromAbove(*model, 320.0 / 240.0);
        renderer.setCamera(camera);
        ElementLooks& looks = renderer.looks(BuildingScene::Planned);
        looks.set(0, solid(QColor(0, 204, 102)));
        looks.set(1, solid(QColor(255, 0, 0)));
        QImage image = draw(renderer);
        QCOMPARE(image.size(), size);
        QCOMPARE(image.pixelColor(topOf(*model, 0, camera, size)), QColor(0, 204, 102));
        QCOMPARE(image.pixelColor(topOf(*model, 1, camera, size)), QColor(255, 0, 0));
        QCOMPARE(image.pixelColor(0, 0), QColor(10, 20, 30));

        // The next picture shows the next looks, not those before.
        for (int round = 0; round < 6; ++round) {
            const QColor colour(40 * round, 255 - 40 * round, 128);
            looks.set(0, solid(colour));
            looks.set(1, round % 2 ? ElementLooks::Look() : solid(Qt::blue));
            image = draw(renderer);
            QCOMPARE(image.pixelColor(topOf(*model, 0, camera, size)), colour);
            QCOMPARE(image.pixelColor(topOf(*model, 1, camera, size)),
                     round % 2 ? QColor(10, 20, 30) : QColor(Qt::blue));
        }
    }
};

QTEST_MAIN(SceneTest)
#include "SceneTest.moc"
