// Model files, read by the program of their own.

#include "Models.h"

#include <ModelReader.h>

#include <QtTest/QtTest>

namespace {

struct Outcome
{
    ModelData data;
    QString fault;
    bool isCanceled = false;
    bool isOver = false;
};

QVector<NamedBox> house()
{
    return {{QStringLiteral("storey 1"), {}, {}, -1},
            {QStringLiteral("3cW$t0rq5AR0S9"), {0, 0, 0}, {4, 3, 1}, 0},
            {QStringLiteral("板-slab-2"), {0, 3, 0}, {4, 4, 6}, 0}};
}

} // namespace

class ReaderTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    static Outcome read(ModelReader& reader, const QString& path)
    {
        Outcome outcome;
        QObject scope;
        connect(&reader, &ModelReader::done, &scope, [&](const ModelData& data) {
            outcome.data = data;
            outcome.isOver = true;
        });
        connect(&reader, &ModelReader::failed, &scope, [&](const QString& fault) {
            outcome.fault = fault;
            outcome.isOver = true;
        });
        reader.setProgram(QStringLiteral(MODEL_READER));
        reader.read(path);
        if (!QTest::qWaitFor([&] { return outcome.isOver; }, 60000))
            outcome.fault = QStringLiteral("no end");
        return outcome;
    }

    void compareHouse(const Outcome& outcome)
    {
        QCOMPARE(outcome.fault, QString());
        const BuildingModel model(outcome.data, {});
        QCOMPARE(model.elements().size(), 2);
        for (const NamedBox& box : house()) {
            if (box.parent < 0)
                continue;
            const int element = model.elementOf(box.name);
            QVERIFY2(element != BuildingModel::none, qPrintable(box.name));
            QCOMPARE(model.elements().at(element).box.low, box.low);
            QCOMPARE(model.elements().at(element).box.high, box.high);
        }
        QCOMPARE(outcome.data.indices.size(), 2 * 36);
    }

private Q_SLOTS:
    void planviewerFindsTheReaderFromItsOwnFolder()
    {
        const QString program = ModelReader::programFor(QStringLiteral(PLANVIEWER_FOLDER));
        QCOMPARE(program, QDir::cleanPath(QStringLiteral(MODEL_READER)));
    }

    void namesAndPlacesAreThoseOfTheFile_data()
    {
        QTest::addColumn<QString>("file");
        QByteArray buffer;
        const auto json = [](const QJsonObject& object) {
            return QJsonDocument(object).toJson();
        };
        QVERIFY(Models::write(path("house.obj"), Models::obj(house().mid(1))));
        QTest::newRow("OBJ") << path("house.obj");
        QVERIFY(Models::write(path("house.gltf"),
                              json(Models::gltf(house(), QStringLiteral("the%20house.bin"), buffer))));
        QVERIFY(Models::write(path("the house.bin"), buffer));
        QTest::newRow("glTF with a file beside it") << path("house.gltf");
        Models::gltf(house(), {}, buffer);
        const QString inside =
            QStringLiteral("data:application/octet-stream;base64,") + QString::fromLatin1(buffer.toBase64());
        QVERIFY(Models::write(path("inside.gltf"), json(Models::gltf(house(), inside, buffer))));
        QTest::newRow("glTF with its bytes inside") << path("inside.gltf");
        QVERIFY(Models::write(path("house.glb"), Models::glb(house())));
        QTest::newRow("GLB") << path("house.glb");
        QVERIFY(Models::write(path("房子 und.glb"), Models::glb(house())));
        QTest::newRow("a name in another script") << m_folder.filePath(QStringLiteral("房子 und.glb"));
    }
    void namesAndPlacesAreThoseOfTheFile()
    {
        QFETCH(QString, file);
        if (QString::fromLatin1(QTest::currentDataTag()) == QStringLiteral("a name in another script"))
            QVERIFY(Models::write(file, Models::glb(house())));
        ModelReader reader;
        compareHouse(read(reader, file));
        QVERIFY(!reader.isReading());
    }

    void badFilesAreTold_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("said");
        const auto row = [](const char* title, const char* name, const QByteArray& content,
                            const char* said) {
            QTest::newRow(title) << QString::fromLatin1(name) << content << QString::fromLatin1(said);
        };
        QByteArray buffer;
        const QJsonObject whole = Models::gltf(house(), QStringLiteral("gone.bin"), buffer);
        row("empty", "a.obj", {}, "is empty");
        row("half of a JSON text", "b.gltf", "{\"asset\":{\"version\":\"2.0\"},",
            "holds no building model that");
        row("a glTF without anything", "c.gltf", "{\"asset\":{\"version\":\"2.0\"}}",
            "holds no building model that");
        row("a glTF of the first version", "d.gltf", "{\"asset\":{\"version\":\"1.0\"},\"nodes\":{}}",
            "holds no building model that");
        row("a buffer that is missing", "e.gltf", QJsonDocument(whole).toJson(),
            "holds no building model that");
        row("an OBJ of points", "f.obj", "o wall\nv 0 0 0\nv 1 1 1\n", "holds no");
        row("half of a GLB", "g.glb", Models::glb(house()).left(600), "holds no building model that");
        QJsonObject wild = whole;
        wild.insert(QStringLiteral("nodes"),
                    QJsonArray{QJsonObject{{QStringLiteral("mesh"), 7},
                                           {QStringLiteral("name"), QStringLiteral("x")}}});
        row("a mesh that is not there", "h.gltf", QJsonDocument(wild).toJson(),
            "holds no building model that");
    }
    void badFilesAreTold()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        QFETCH(QString, said);
        QVERIFY(Models::write(m_folder.filePath(name), content));
        ModelReader reader;
        const Outcome outcome = read(reader, m_folder.filePath(name));
        QVERIFY2(outcome.fault.contains(said) && outcome.fault.contains(name), qPrintable(outcome.fault));
        QVERIFY(!reader.isReading());
    }

    void aReaderThatFailsIsTold_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("said");
        QTest::newRow("ends by a signal")
            << QByteArray("kill -SEGV $$") << QStringLiteral("the importer failed");
        QTest::newRow("writes half") << QByteArray("printf 'KvM1'") << QStringLiteral("broke off");
        QTest::newRow("finds no graphics") << QByteArray("exit 5") << QStringLiteral("OpenGL 3.2");
    }
    void aReaderThatFailsIsTold()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, said);
        QVERIFY(Models::write(path("wall.obj"), "o wall\n"));
        const QString program = path("reader.sh");
        QVERIFY(Models::write(program, "#!/bin/sh\n" + script + '\n'));
        QVERIFY(QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QString fault;
        ModelReader reader;
        connect(&reader, &ModelReader::failed, this, [&fault](const QString& told) { fault = told; });
        reader.setProgram(program);
        reader.read(path("wall.obj"));
        QTRY_VERIFY_WITH_TIMEOUT(!fault.isEmpty(), 30000);
        QVERIFY2(fault.contains(said), qPrintable(fault));

        reader.setProgram(path("no-such-program"));
        fault.clear();
        reader.read(path("wall.obj"));
        QTRY_VERIFY_WITH_TIMEOUT(!fault.isEmpty(), 30000);
        QVERIFY2(fault.contains(QStringLiteral("cannot be started")), qPrintable(fault));
    }

    void readingCanBeCanceled()
    {
        QVERIFY(Models::write(path("wall.obj"), "o wall\n"));
        const QString program = path("endless.sh");
        QVERIFY(Models::write(program, "#!/bin/sh\nexec sleep 1000\n"));
        QVERIFY(QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        ModelReader reader;
        QSignalSpy canceled(&reader, &ModelReader::canceled);
        QSignalSpy failed(&reader, &ModelReader::failed);
        reader.setProgram(program);
        reader.cancel();
        QCOMPARE(canceled.size(), 0);
        reader.read(path("wall.obj"));
        QVERIFY(reader.isReading());
        reader.cancel();
        QVERIFY(!reader.isReading());
        QCOMPARE(canceled.size(), 1);
        QCOMPARE(failed.size(), 0);
        // What is read anew takes its place.
        reader.read(path("wall.obj"));
        QVERIFY(Models::write(path("house.glb"), Models::glb(house())));
        compareHouse(read(reader, path("house.glb")));
    }
};

QTEST_GUILESS_MAIN(ReaderTest)
#include "ReaderTest.moc"
