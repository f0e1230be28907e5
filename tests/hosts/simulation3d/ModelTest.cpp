// Elements of a model, how they look, where they are seen and what a click on them meets; without graphics.

#include "Models.h"

#include <ElementLooks.h>
#include <ElementPick.h>
#include <FaceSides.h>
#include <ModelFile.h>
#include <SceneCamera.h>

#include <QtCore/QBuffer>
#include <QtTest/QtTest>

#include <array>

using Solidity = ElementLooks::Solidity;

Q_DECLARE_METATYPE(Kv::QGrowthType)

namespace {

NamedBox group(const char* name, int parent = -1)
{
    return {QString::fromLatin1(name), {}, {}, parent};
}

NamedBox box(const char* name, float x, float y, int parent = -1)
{
    return {QString::fromUtf8(name), {x, y, 0}, {x + 1, y + 1, 1}, parent};
}

QStringList ids(const BuildingModel& model)
{
    QStringList all;
    for (const BuildingModel::Element& element : model.elements())
        all.append(element.id);
    return all;
}

QByteArray written(const ModelData& data)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    writeModelData(data, buffer);
    return buffer.data();
}

ElementLooks::Look solid(double share = 1.0)
{
    return {Solidity::Solid, Qt::red, share, Kv::GrowBottomToTop};
}

} // namespace

class ModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dataTravelsWhole()
    {
        const ModelData sent = Models::data({group("storey"), box("a", 0, 0, 0), box("墙 b", 2, 0, 0)});
        ModelData got;
        QVERIFY(readModelData(written(sent), got));
        QCOMPARE(got.nodes.size(), 3);
        QCOMPARE(got.nodes.at(2).name, QStringLiteral("墙 b"));
        QCOMPARE(got.nodes.at(2).parent, 0);
        QCOMPARE(got.parts.size(), 2);
        QCOMPARE(got.parts.at(1).firstVertex, 24U);
        QCOMPARE(got.positions, sent.positions);
        QCOMPARE(got.indices, sent.indices);
    }

    void cutOrChangedDataIsRefused()
    {
        const QByteArray whole = written(Models::data({box("a", 0, 0), box("b", 2, 0)}));
        ModelData got;
        QVERIFY(readModelData(whole, got));
        for (int size = 0; size < whole.size(); size += 7) {
            QVERIFY(!readModelData(whole.left(size), got));
            QVERIFY(got.isEmpty());
        }
        QVERIFY(!readModelData(whole + 'x', got));
        QByteArray outside = whole;
        outside.replace(whole.size() - 8, 4, QByteArray(4, '\x7f')); // an index of no vertex
        QVERIFY(!readModelData(outside, got));
    }

    void geometryBelongsToTheNearestKnownNode()
    {
        const auto data = [] {
            return Models::data({group("site"), group("wall-1", 0), box("leaf", 0, 0, 1), box("", 2, 0, 1),
                                 box("loose", 4, 0, 0), box("", 6, 0, 4)});
        };
        const BuildingModel unknown(data(), {});
        QCOMPARE(ids(unknown),
                 QStringList({QStringLiteral("leaf"), QStringLiteral("wall-1"), QStringLiteral("loose")}));
        const BuildingModel known(data(), {QStringLiteral("wall-1"), QStringLiteral("elsewhere")});
        QCOMPARE(ids(known), QStringList({QStringLiteral("wall-1"), QStringLiteral("loose")}));
        QCOMPARE(known.elements().first().parts.size(), 2);
        QCOMPARE(known.elements().first().box.high, QVector3D(3, 1, 1));
        QCOMPARE(known.elementOf(QStringLiteral("wall-1")), 0);
        QCOMPARE(known.elementOf(QStringLiteral("elsewhere")), int(BuildingModel::none));
        QCOMPARE(known.box().low, QVector3D(0, 0, 0));
        QCOMPARE(known.box().high, QVector3D(7, 1, 1));
    }

    void nodesOfOneNameAreOneElement()
    {
        const BuildingModel model(Models::data({box("a", 0, 0), box("b", 2, 0), box("a", 4, 0)}), {});
        QCOMPARE(ids(model), QStringList({QStringLiteral("a"), QStringLiteral("b")}));
        QCOMPARE(model.elements().first().parts.size(), 2);
    }

    void verticesTellTheirElement()
    {
        const BuildingModel model(Models::data({box("a", 0, 0), box("b", 2, 0)}), {});
        const QByteArray bytes = model.vertices();
        QCOMPARE(bytes.size(), 48 * 16);
        const float* const values = reinterpret_cast<const float*>(bytes.constData());
        QCOMPARE(values[3], 0.0F);
        QCOMPARE(values[24 * 4 + 3], 1.0F);
        QVERIFY(values[24 * 4] >= 2.0F);
        QCOMPARE(model.indices().size(), 72 * 4);
    }

    // Only what goes round counterclockwise for the viewer is drawn.
    void allFacesCanBeSeen_data()
    {
        QTest::addColumn<QVector<quint32>>("indices");
        QTest::addColumn<int>("asTheyAre");
        QTest::addColumn<int>("turned");
        const QVector<quint32> box = Models::faces(0);
        const auto mirrored = [](QVector<quint32> triangles) {
            for (int i = 0; i < triangles.size(); i += 3)
                std::swap(triangles[i + 1], triangles[i + 2]);
            return triangles;
        };
        QVector<quint32> second = box;
        for (quint32& index : second)
            index += 24;
        QTest::newRow("a closed box as it is") << box << 12 << 0;
        QTest::newRow("a mirrored one turned") << mirrored(box) << 0 << 12;
        QTest::newRow("one of both, each as it has to be") << box + mirrored(second) << 12 << 12;
        QTest::newRow("a sheet from both sides") << box.mid(0, 6) << 2 << 2;
        QTest::newRow("a box without its lid") << box.mid(6) << 10 << 10;
        QTest::newRow("a tube") << box.mid(12) << 8 << 8;
        QTest::newRow("two opposite faces turned inwards")
            << mirrored(box.mid(0, 12)) + box.mid(12) << 12 << 12;
        QTest::newRow("a closed box beside a sheet") << box + second.mid(0, 6) << 14 << 2;
        QTest::newRow("a line, which is the same from both") << QVector<quint32>{0, 1, 1} << 2 << 0;
        QTest::newRow("nothing") << QVector<quint32>() << 0 << 0;
    }
    void allFacesCanBeSeen()
    {
        QFETCH(QVector<quint32>, indices);
        ModelData data = Models::data({box("a", 0, 0), box("b", 2, 0)});
        data.parts = {{0, 0, data.vertexCount(), 0, quint32(indices.size())}};
        data.indices = indices;
        const QVector<quint32> seen = facesToSee(data, {0});
        const auto key = [](quint32 a, quint32 b, quint32 c) {
            return std::array<quint32, 3>{a, b, c};
        };
        int asTheyAre = 0;
        int turned = 0;
        for (int i = 0; i < seen.size(); i += 3) {
            bool isFound = false;
            for (int k = 0; k < indices.size() && !isFound; k += 3) {
                const bool isSame = key(seen.at(i), seen.at(i + 1), seen.at(i + 2)) ==
                                    key(indices.at(k), indices.at(k + 1), indices.at(k + 2));
                const bool isTurned = !isSame && key(seen.at(i), seen.at(i + 2), seen.at(i + 1)) ==
                                                     key(indices.at(k), indices.at(k + 1), indices.at(k + 2));
                isFound = isSame || isTurned;
                asTheyAre += isSame ? 1 : 0;
                turned += isTurned ? 1 : 0;
            }
            QVERIFY(isFound);
        }
        QTEST(asTheyAre, "asTheyAre");
        QTEST(turned, "turned");
    }

    void facesOfNoPlaceAreNoTrouble()
    {
        ModelData data = Models::data({box("a", 0, 0)});
        for (int i = 0; i < data.positions.size(); i += 5)
            data.positions[i] = float(qQNaN());
        QVERIFY(facesToSee(data, {0}).size() >= data.indices.size());
    }

    void floorsAreTheNodesAboveFromBelow()
    {
        const BuildingModel model(Models::data({group("house"), group("second", 0), box("c", 0, 3, 1),
                                                group("first", 0), box("a", 0, 0, 3), box("b", 2, 0, 3)}),
                                  {});
        QCOMPARE(model.floors(), QStringList({QStringLiteral("first"), QStringLiteral("second")}));
        QCOMPARE(model.elements().at(model.elementOf(QStringLiteral("c"))).floor, 1);
        QCOMPARE(model.elements().at(model.elementOf(QStringLiteral("b"))).floor, 0);
        const BuildingModel flat(Models::data({group("file"), box("a", 0, 0, 0), box("b", 0, 3, 0)}), {});
        QCOMPARE(flat.floors(), QStringList());
        QCOMPARE(flat.elements().first().floor, int(BuildingModel::none));
    }

    void theShareIsKeptFromItsSide_data()
    {
        QTest::addColumn<Kv::QGrowthType>("growth");
        QTest::addColumn<int>("axis");
        QTest::addColumn<double>("low");
        QTest::addColumn<double>("high");
        QTest::newRow("front to back") << Kv::GrowFrontToBack << 2 << 6.0 << 8.0;
        QTest::newRow("back to front") << Kv::GrowBackToFront << 2 << 0.0 << 2.0;
        QTest::newRow("left to right") << Kv::GrowLeftToRight << 0 << 0.0 << 1.0;
        QTest::newRow("right to left") << Kv::GrowRightToLeft << 0 << 3.0 << 4.0;
        QTest::newRow("top to bottom") << Kv::GrowTopToBottom << 1 << 1.5 << 2.0;
        QTest::newRow("bottom to top") << Kv::GrowBottomToTop << 1 << 0.0 << 0.5;
        QTest::newRow("appear") << Kv::GrowAppear << 1 << 0.0 << 2.0;
        QTest::newRow("disappear") << Kv::GrowDisappear << 1 << 0.0 << 0.5;
    }
    void theShareIsKeptFromItsSide()
    {
        QFETCH(Kv::QGrowthType, growth);
        const ElementLooks::Clip clip = ElementLooks::clip({{0, 0, 0}, {4, 2, 8}}, growth, 0.25);
        QTEST(clip.axis, "axis");
        QTEST(double(clip.low), "low");
        QTEST(double(clip.high), "high");
    }

    void aShareOutOfRangeIsNoneOrAll()
    {
        const Box whole{{0, 0, 0}, {4, 2, 8}};
        QCOMPARE(ElementLooks::clip(whole, Kv::GrowBottomToTop, -0.5).high, 0.0F);
        QCOMPARE(ElementLooks::clip(whole, Kv::GrowBottomToTop, 1.5).high, 2.0F);
    }

    void changedRowsAreToldOnce()
    {
        QVector<NamedBox> boxes;
        for (int i = 0; i < ElementLooks::width * 3; ++i)
            boxes.append({QString::number(i), {float(i), 0, 0}, {float(i) + 0.5F, 1, 1}});
        const BuildingModel model(Models::data(boxes), {});
        ElementLooks looks(model);
        QCOMPARE(looks.rows(), 3);
        QCOMPARE(looks.takeChangedColours().count, 3);
        QCOMPARE(looks.takeChangedShapes().count, 3);
        QCOMPARE(looks.takeChangedColours().count, 0);
        looks.set(ElementLooks::width + 5, solid());
        const ElementLooks::Rows colours = looks.takeChangedColours();
        QCOMPARE(colours.first, 1);
        QCOMPARE(colours.count, 1);
        QCOMPARE(looks.takeChangedShapes().count, 0);
        looks.set(ElementLooks::width + 5, solid(0.5));
        looks.setLift(ElementLooks::width * 2, 3.0F);
        const ElementLooks::Rows shapes = looks.takeChangedShapes();
        QCOMPARE(shapes.first, 1);
        QCOMPARE(shapes.count, 2);
        QCOMPARE(looks.takeChangedColours().count, 0);
        looks.setLift(ElementLooks::width * 2, 3.0F);
        looks.set(ElementLooks::width + 5, solid(0.5));
        QCOMPARE(looks.takeChangedShapes().count, 0);
    }

    void coloursTellSolidityAndHighlight()
    {
        const BuildingModel model(Models::data({box("a", 0, 0)}), {});
        ElementLooks looks(model);
        const auto bytes = [&looks] {
            return looks.colours().left(4).toHex();
        };
        QCOMPARE(bytes(), QByteArray("00000000"));
        looks.set(0, {Solidity::Hint, QColor(1, 2, 3), 1.0, Kv::GrowBottomToTop});
        QCOMPARE(bytes(), QByteArray("01020380"));
        looks.set(0, {Solidity::Solid, QColor(255, 0, 90), 1.0, Kv::GrowBottomToTop});
        QCOMPARE(bytes(), QByteArray("ff005aff"));
        looks.setHighlighted(0, true);
        QCOMPARE(bytes(), QByteArray("ff711eff")); // two thirds of the highlight
        looks.setHighlighted(0, false);
        QCOMPARE(bytes(), QByteArray("ff005aff"));
    }

    void theCameraSeesAllAndMeetsWhatItSees()
    {
        const Box building{{0, 0, 0}, {30, 60, 20}};
        for (const double aspect : {0.3, 1.0, 2.5}) {
            SceneCamera camera;
            camera.fit(building, aspect);
            camera.orbit(70.0, 20.0);
            camera.fitFromHere(building, aspect);
            for (int corner = 0; corner < 8; ++corner) {
                const QVector3D point(corner & 1 ? 30 : 0, corner & 2 ? 60 : 0, corner & 4 ? 20 : 0);
                const QPointF at = camera.seenAt(point, aspect);
                QVERIFY(at.x() > 0.0 && at.x() < 1.0 && at.y() > 0.0 && at.y() < 1.0);
                const SceneCamera::Ray ray = camera.ray(at, aspect);
                const QVector3D way = point - ray.from;
                QVERIFY(QVector3D::crossProduct(way, ray.along).length() < 0.01F * way.length());
            }
        }
    }

    void theCameraStopsAboveAndBelow()
    {
        SceneCamera camera;
        camera.fit({{0, 0, 0}, {1, 1, 1}}, 1.0);
        camera.orbit(0.0, 500.0);
        QVERIFY(camera.position().y() > 0.0F);
        QVERIFY(camera.up().y() > 0.0F);
        camera.orbit(0.0, -1000.0);
        QVERIFY(camera.position().y() < 0.0F);
        QVERIFY(camera.up().y() > 0.0F);
        const double before = camera.distance();
        camera.zoom(2.0);
        QCOMPARE(camera.distance(), before / 2.0);
        camera.zoom(0.0);
        QCOMPARE(camera.distance(), before / 2.0);
        const QVector3D centre = camera.centre();
        camera.pan(0.5, 0.0); // half a height to the right: the centre goes to the left
        QVERIFY(camera.seenAt(centre, 1.0).x() > 0.9);
    }

    void aRayMeetsWhatIsDrawnFirst()
    {
        // One behind the other, seen from the front.
        const BuildingModel model(Models::data({{QStringLiteral("near"), {0, 0, 5}, {2, 2, 6}},
                                                {QStringLiteral("far"), {0, 0, 0}, {2, 2, 1}}}),
                                  {});
        ElementLooks looks(model);
        const SceneCamera::Ray low{{1, 0.5F, 20}, {0, 0, -1}};
        const SceneCamera::Ray high{{1, 1.5F, 20}, {0, 0, -1}};
        QCOMPARE(pickElement(model, looks, low), int(BuildingModel::none));
        looks.set(0, solid());
        looks.set(1, solid());
        QCOMPARE(pickElement(model, looks, low), 0);
        looks.set(0, solid(0.5)); // half grown, one looks over it
        QCOMPARE(pickElement(model, looks, low), 0);
        QCOMPARE(pickElement(model, looks, high), 1);
        looks.set(0, {Solidity::Hint, Qt::red, 1.0, Kv::GrowBottomToTop});
        QCOMPARE(pickElement(model, looks, low), 1);
        looks.setLift(1, 10.0F);
        QCOMPARE(pickElement(model, looks, low), int(BuildingModel::none));
        QCOMPARE(pickElement(model, looks, {{1, 11, 20}, {0, 0, -1}}), 1);
        QCOMPARE(pickElement(model, looks, {{1, 11, 20}, {0, 0, 1}}), int(BuildingModel::none));
    }

    void aRayLooksThroughAGapInABox()
    {
        ModelData data; // one triangle, whose box is larger than itself
        data.nodes.append({QStringLiteral("gable"), -1});
        data.positions = {0, 0, 0, 4, 0, 0, 0, 4, 0};
        data.indices = {0, 1, 2};
        data.parts.append({0, 0, 3, 0, 3});
        const BuildingModel model(data, {});
        ElementLooks looks(model);
        looks.set(0, solid());
        QCOMPARE(pickElement(model, looks, {{1, 1, 5}, {0, 0, -1}}), 0);
        QCOMPARE(pickElement(model, looks, {{3, 3, 5}, {0, 0, -1}}), int(BuildingModel::none));
    }

    void filesThatAreNoModelsAreToldBeforeReading_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("said");
        const auto row = [](const char* title, const char* name, const QByteArray& content,
                            const char* said) {
            QTest::newRow(title) << QString::fromLatin1(name) << content << QString::fromLatin1(said);
        };
        row("empty", "empty.obj", {}, "is empty");
        row("another suffix", "model.ifc", "ISO-10303-21;", "no model file by its name");
        row("text", "letter.obj", "Dear reader,\n", "holds no building model");
        row("bytes", "picture.obj", QByteArray("\x89PNG\0\0", 6), "holds no building model");
        row("not JSON", "model.gltf", "o wall\nv 1 2 3\n", "holds no building model");
        row("not GLB", "model.glb", "{\"asset\":{}}", "holds no building model");
        row("a model", "model.obj", "# made by hand\n\no wall\nv 0 0 0\n", "");
        row("glTF", "MODEL.GLTF", "\xEF\xBB\xBF\n {\"asset\":{}}", "");
    }
    void filesThatAreNoModelsAreToldBeforeReading()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(QString, said);
        QTemporaryDir folder;
        const QString path = folder.filePath(name);
        QVERIFY(Models::write(path, content));
        const QString fault = ModelFile::fault(path);
        QVERIFY2(said.isEmpty() ? fault.isEmpty() : fault.contains(said) && fault.contains(name),
                 qPrintable(fault));
    }

    void missingUnreadableAndHugeFilesAreTold()
    {
        QTemporaryDir folder;
        QVERIFY(ModelFile::fault(folder.filePath(QStringLiteral("no.obj")))
                    .contains(QStringLiteral("there is no")));
        QVERIFY(ModelFile::fault(folder.path()).contains(QStringLiteral("is no file")));
        const QString huge = folder.filePath(QStringLiteral("huge.gltf"));
        QFile file(huge);
        QVERIFY(file.open(QIODevice::WriteOnly) &&
                file.resize(200LL * 1024 * 1024)); // takes no room on the disk
        QElapsedTimer time;
        time.start();
        const QString fault = ModelFile::fault(huge);
        QVERIFY2(fault.contains(QStringLiteral("200 MB")) && fault.contains(QStringLiteral("150 MB")),
                 qPrintable(fault));
        QVERIFY(time.elapsed() < 1000);
    }
};

QTEST_GUILESS_MAIN(ModelTest)
#include "ModelTest.moc"
