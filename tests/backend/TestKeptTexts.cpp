// The texts of plans that a process keeps: which ones, how many, and what those who are sent them count for.

#include "Text.h"
#include "http/ReplyMemory.h"
#include "store/PlanCache.h"

#include <QtTest>

using namespace PlanService;
using KvTest::operator""_s;

namespace {

std::shared_ptr<PlanText> textOf(int bytes)
{
    return std::make_shared<PlanText>(
        PlanText{{QByteArray(bytes / 2, 'a'), QByteArray(bytes - bytes / 2, 'b')}});
}

} // namespace

class TestKeptTexts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsWhatWasAskedForLast()
    {
        PlanCache cache(100);
        cache.keep("a"_s, "1"_s, textOf(40));
        cache.keep("b"_s, "1"_s, textOf(40));
        QVERIFY(cache.find("a"_s, "1"_s));
        cache.keep("c"_s, "1"_s, textOf(40));
        QVERIFY(cache.find("a"_s, "1"_s) && cache.find("c"_s, "1"_s));
        QVERIFY(!cache.find("b"_s, "1"_s));
        QCOMPARE(cache.numbers().bytes, qint64(80));
        QCOMPARE(cache.numbers().hits, qint64(3));
        QCOMPARE(cache.numbers().misses, qint64(1));
        // One as large as all of it takes the place of all.
        cache.keep("d"_s, "1"_s, textOf(100));
        QVERIFY(cache.find("d"_s, "1"_s) && !cache.find("a"_s, "1"_s) && !cache.find("c"_s, "1"_s));
        QCOMPARE(cache.numbers().bytes, qint64(100));
        // One that is larger leaves it as it is.
        cache.keep("e"_s, "1"_s, textOf(101));
        QVERIFY(cache.find("d"_s, "1"_s) && !cache.find("e"_s, "1"_s));
    }

    void knowsOneVersionOfAPlan()
    {
        PlanCache cache(100);
        const auto first = textOf(10);
        const auto second = textOf(20);
        cache.keep("a"_s, "1"_s, first);
        QCOMPARE(cache.find("a"_s, "1"_s), first);
        QVERIFY(!cache.find("a"_s, "2"_s));
        cache.keep("a"_s, "2"_s, second);
        QCOMPARE(cache.find("a"_s, "2"_s), second);
        QVERIFY(!cache.find("a"_s, "1"_s));
        QCOMPARE(cache.numbers().bytes, qint64(20));
        // What became too large goes.
        cache.keep("a"_s, "3"_s, textOf(101));
        QVERIFY(!cache.find("a"_s, "2"_s) && !cache.find("a"_s, "3"_s));
        QCOMPARE(cache.numbers().bytes, qint64(0));
    }

    void keepsNothingWithoutVersionOrRoom()
    {
        PlanCache cache(100);
        cache.keep("a"_s, QString(), textOf(10));
        QVERIFY(!cache.find("a"_s, QString()));
        QCOMPARE(cache.numbers().misses, qint64(0));
        PlanCache none(0);
        none.keep("a"_s, "1"_s, textOf(10));
        QVERIFY(!none.find("a"_s, "1"_s));
        QCOMPARE(none.numbers().bytes, qint64(0));
        QCOMPARE(none.numbers().misses, qint64(0));
    }

    void repliesOfOneTextCountOnce()
    {
        ReplyMemory memory(100);
        const auto full = [&memory] {
            return memory.standAside([] {});
        };
        PlanText text;
        auto one = memory.lease(60, &text.lease);
        auto two = memory.lease(60, &text.lease);
        QVERIFY(!full());
        auto three = memory.lease(60); // of its own
        QVERIFY(full());
        one.reset();
        QVERIFY(full());
        two.reset();
        QVERIFY(!full());
        two = memory.lease(60, &text.lease);
        QVERIFY(full());
    }
};

QTEST_GUILESS_MAIN(TestKeptTexts)
#include "TestKeptTexts.moc"
