// Bars of numbers: in proportion, never longer than allowed, and nothing that is there is invisible.

#include <BarChart.h>

#include <QtTest/QtTest>

Q_DECLARE_METATYPE(QVector<BarPart>)

class BarChartTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bars_data()
    {
        QTest::addColumn<QVector<BarPart>>("parts");
        QTest::addColumn<int>("most");
        QTest::addColumn<QString>("expected");
        const QChar a = QLatin1Char('a');
        const QChar b = QLatin1Char('b');
        const QChar c = QLatin1Char('c');
        const auto text = [](const char* bar) {
            return QString::fromLatin1(bar);
        };
        QTest::newRow("all") << QVector<BarPart>{{10, a}} << 10 << text("aaaaaaaaaa");
        QTest::newRow("half") << QVector<BarPart>{{5, a}} << 10 << text("aaaaa");
        QTest::newRow("nothing") << QVector<BarPart>{{0, a}} << 10 << text("");
        QTest::newRow("nothing at all") << QVector<BarPart>{{0, a}} << 0 << text("");
        QTest::newRow("next to nothing") << QVector<BarPart>{{1, a}} << 1000000 << text("a");
        QTest::newRow("parts") << QVector<BarPart>{{2, a}, {3, b}, {5, c}} << 10 << text("aabbbccccc");
        QTest::newRow("roundings do not add up")
            << QVector<BarPart>{{33, a}, {33, b}, {34, c}} << 100 << text("aaabbbbccc");
        QTest::newRow("a small part is seen")
            << QVector<BarPart>{{1, a}, {99, b}} << 100 << text("abbbbbbbbb");
        QTest::newRow("never too long")
            << QVector<BarPart>{{1, a}, {1, b}, {998, c}} << 1000 << text("abcccccccc");
        QTest::newRow("large numbers")
            << QVector<BarPart>{{1000000000, a}, {1000000000, b}} << 2000000000 << text("aaaaabbbbb");
        QTest::newRow("negative") << QVector<BarPart>{{-5, a}, {5, b}} << 10 << text("bbbbb");
    }

    void bars()
    {
        QFETCH(QVector<BarPart>, parts);
        QFETCH(int, most);
        QTEST(bar(parts, most, 10), "expected");
    }
};

QTEST_GUILESS_MAIN(BarChartTest)
#include "BarChartTest.moc"
