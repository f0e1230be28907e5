// What is drawn, pixel by pixel.

#include "Models.h"

#include <GraphicsCheck.h>
#include <SceneRenderer.h>
#include <SimulatedBuilding.h>
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

QImage onScreen(SimulationView& view)
{
    QImage image;
    bool isDone = false;
    view.takePicture([&](const QImage& taken) {
        image = taken;
        isDone = true;
    });
    return QTest::qWaitFor([&] { return isDone; }, 30000) ? image : QImage();
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
    void initTestCase() {}
    void thereIsOpenGl() { QCOMPARE(GraphicsCheck::fault(), QString()); }

    // Rows of the textures of those that look otherwise, and of no others.
    void aFrameTouchesWhatChanges()
    {
        constexpr int count = 3 * ElementLooks::width;
        const QDateTime first(QDate(2026, 3, 2), QTime(8, 0));
        QVector<NamedBox> boxes;
        QList<KvPlanNode> nodes;
        for (int i = 0; i < count; ++i) {
            boxes.append({QString::number(i), {float(i), 0, 0}, {float(i) + 0.5F, 1, 1}});
            KvPlanNode node; // one a row is at work at a time
            node.dynamicEffect = Kv::GrowBottomToTop;
            node.startDate = first.addDays(i / ElementLooks::width * 10);
            node.finishDate = node.startDate.addDays(i % ElementLooks::width == 7 ? 10 : 0);
            node.links.insert(QStringLiteral("model"), {QString::number(i)});
            nodes.append(node);
        }
        QVector<const KvPlanNode*> list;
        for (const KvPlanNode& node : qAsConst(nodes))
            list.append(&node);
        const auto model = std::make_shared<const BuildingModel>(Models::data(boxes), QSet<QString>());
        ElementLooks looks(*model);
        SimulatedBuilding building;
        building.setTasks(list, {});
        building.setModel(model);
        SimulatedBuilding::Paint paint;
        for (int state = 0; state < TaskState::count; ++state)
            paint.colours.append(QColor(state, 100, 200));
        const auto touched = [&](const QDateTime& date) {
            building.show(date, paint, looks);
            const ElementLooks::Rows colours = looks.takeChangedColours();
            const ElementLooks::Rows shapes = looks.takeChangedShapes();
            return QVector<int>{colours.first, colours.count, shapes.first, shapes.count};
        };
        QCOMPARE(touched(first.addDays(5)), QVector<int>({0, 3, 0, 3}));
        QCOMPARE(touched(first.addDays(5)), QVector<int>({0, 0, 0, 0}));
        QCOMPARE(touched(first.addDays(6)), QVector<int>({0, 0, 0, 1}));
        QCOMPARE(looks.look(7).share, 0.6);
        QCOMPARE(touched(first.addDays(12)), QVector<int>({0, 2, 0, 2}));
        QCOMPARE(touched(first.addDays(25)), QVector<int>({1, 2, 1, 2}));
        QCOMPARE(touched(first.addDays(26)), QVector<int>({0, 0, 2, 1}));
        paint.set.FinishClr = false; // all are looked at
        QCOMPARE(touched(first.addDays(26)), QVector<int>({0, 3, 0, 0}));
        QCOMPARE(touched(first.addDays(27)), QVector<int>({0, 0, 2, 1}));
    }

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

    // A sheet that a file describes from one side, or a part that it mirrors.
    void facesAreSeenFromBothSides()
    {
        ModelData data;
        data.nodes.append({QStringLiteral("sheet"), -1});
        data.positions = {0, 0, 0, 8, 0, 0, 8, 0, 8, 0, 0, 8};
        data.indices = {0, 1, 2, 0, 2, 3};
        data.parts.append({0, 0, 4, 0, 6});
        const QSize size(64, 64);
        for (const bool isTurned : {false, true}) {
            if (isTurned)
                std::reverse(data.indices.begin(), data.indices.end());
            const auto model = std::make_shared<const BuildingModel>(data, QSet<QString>());
            const SceneCamera camera = fromAbove(*model, 1.0);
            SceneRenderer renderer(model, size, true, false);
            renderer.setCamera(camera);
            renderer.looks(BuildingScene::Planned).set(0, solid(Qt::blue));
            QCOMPARE(draw(renderer).pixelColor(topOf(*model, 0, camera, size)), QColor(Qt::blue));
        }
    }

    // Whatever the order of elements in the file.
    void whatIsInFrontHidesWhatIsBehind_data()
    {
        QTest::addColumn<QStringList>("order");
        QTest::newRow("roof last") << QStringList({QStringLiteral("ground"), QStringLiteral("roof")});
        QTest::newRow("ground last") << QStringList({QStringLiteral("roof"), QStringLiteral("ground")});
    }
    void whatIsInFrontHidesWhatIsBehind()
    {
        QFETCH(QStringList, order);
        QVector<NamedBox> boxes;
        for (const QString& name : order) {
            const float low = name == QStringLiteral("roof") ? 3.0F : 0.0F;
            boxes.append({name, {0, low, 0}, {8, low + 1, 8}});
        }
        const auto model = std::make_shared<const BuildingModel>(Models::data(boxes), QSet<QString>());
        const int roof = model->elementOf(QStringLiteral("roof"));
        const QSize size(320, 240);
        const SceneCamera camera = fromAbove(*model, 320.0 / 240.0);
        const auto paint = [&](ElementLooks& looks) {
            looks.set(roof, solid(Qt::blue));
            looks.set(1 - roof, solid(Qt::red));
        };
        SceneRenderer renderer(model, size, true, false);
        renderer.setCamera(camera);
        paint(renderer.looks(BuildingScene::Planned));
        QCOMPARE(draw(renderer).pixelColor(topOf(*model, roof, camera, size)), QColor(Qt::blue));

        SimulationView view;
        view.resize(size);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        view.setModel(model);
        view.setCamera(camera);
        paint(*view.looks(BuildingScene::Planned));
        view.update3d();
        // Nothing is drawn until all triangles are there.
        const QPoint place = topOf(*model, roof, camera, size);
        QTRY_VERIFY_WITH_TIMEOUT(onScreen(view).pixelColor(place) != QColor(Qt::white), 30000);
        QCOMPARE(onScreen(view).pixelColor(place), QColor(Qt::blue));
    }
};

QTEST_MAIN(SceneTest)
#include "SceneTest.moc"
