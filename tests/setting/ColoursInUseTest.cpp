// The counted colours against a plain comparison with each colour of the map.

#include <setting/KvColoursInUse.h>

#include <QtTest/QtTest>

#include <algorithm>
#include <random>

using Map = Kv::ColoursInUse::Map;

namespace {

bool holds(const Map& map, const QColor& drawn)
{
    return std::any_of(map.begin(), map.end(), [&](const QColor& colour) { return colour == drawn; });
}

QString key(unsigned number)
{
    return QString::number(number);
}

} // namespace

class ColoursInUseTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Few keys and few colours, so that all meet: writers that it knows of and writers that it does not.
    void asAPlainComparison()
    {
        std::mt19937 random(3);
        Kv::ColoursInUse inUse;
        Map maps[2];
        const auto colour = [&] {
            const int part = 30 + int(random() % 3);
            const QColor plain(part, 30, 30);
            switch (random() % 6) {
            case 0:
                return plain.toHsv();
            case 1:
                return plain.toExtendedRgb();
            case 2:
                return QColor(part, 30, 30, 7);
            case 3:
                return QColor();
            default:
                return plain;
            }
        };
        int held = 0;
        for (int step = 0; step < 20000; ++step) {
            Map& map = maps[random() % 2];
            switch (random() % 12) {
            case 0:
                inUse.clear(map);
                break;
            case 1:
                map.insert(key(random() % 4), colour());
                break;
            case 2:
                map.remove(key(random() % 4));
                break;
            case 3:
                map = maps[random() % 2];
                break;
            default:
                inUse.insert(map, key(random() % 4), colour());
            }
            for (int part = 30; part < 33; ++part) {
                const QColor drawn(part, 30, 30);
                QCOMPARE(inUse.contains(map, drawn), holds(map, drawn));
                held += holds(map, drawn) ? 1 : 0;
            }
        }
        QVERIFY2(held > 10000 && held < 50000, qPrintable(QString::number(held)));
    }

    // Colours of other than 8 bits a part are compared with some tolerance.
    void coloursBetweenTheSteps()
    {
        int compared = 0;
        for (int step = 0; step <= 0x20000; ++step) {
            QColor fine = QColor(100, 100, 100).toExtendedRgb();
            fine.setRedF(step / double(0x20000));
            const Map map{{QStringLiteral("a"), fine}};
            Kv::ColoursInUse inUse;
            for (int part = std::max(30, fine.red() - 1); part <= std::min(229, fine.red() + 1); ++part) {
                const QColor drawn(part, 100, 100);
                QCOMPARE(inUse.contains(map, drawn), fine == drawn);
                ++compared;
            }
        }
        QVERIFY(compared > 100000);
    }

    void aMapThatIsWrittenThroughItIsNotCopied()
    {
        Kv::ColoursInUse inUse;
        Map map;
        for (unsigned i = 0; i < 100; ++i)
            inUse.insert(map, key(i), QColor(30, 30, int(i)));
        QVERIFY(inUse.contains(map, QColor(30, 30, 50)));
        const QColor* const place = &*qAsConst(map).constFind(key(50));
        inUse.insert(map, key(100), QColor(30, 30, 100));
        QCOMPARE(&*qAsConst(map).constFind(key(50)), place);
    }
};

QTEST_GUILESS_MAIN(ColoursInUseTest)
#include "ColoursInUseTest.moc"
