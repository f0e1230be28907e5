// Where the service refuses to listen, for each combination of address, tokens, TLS and what was said.

#include "Failure.h"
#include "Text.h"
#include "access/Exposure.h"

#include <QtTest>

using namespace PlanService;
using KvTest::operator""_s;

class TestExposure : public QObject
{
    Q_OBJECT

private:
    /// What it refuses with; empty when it does not.
    static QString refusalOf(const Exposure& exposure)
    {
        try {
            refuseUnsafe(exposure);
        } catch (const Failure& failure) {
            return failure.message();
        }
        return QString();
    }

private Q_SLOTS:
    void everyCombination_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<bool>("isReachable");
        QTest::newRow("localhost") << "localhost"_s << false;
        QTest::newRow("loopback") << "127.0.0.1"_s << false;
        QTest::newRow("another loopback address") << "127.8.9.10"_s << false;
        QTest::newRow("loopback of IPv6") << "::1"_s << false;
        QTest::newRow("every address") << "0.0.0.0"_s << true;
        QTest::newRow("every address of IPv6") << "::"_s << true;
        QTest::newRow("one of the site's") << "192.168.1.5"_s << true;
        QTest::newRow("loopback written in IPv6's way") << "::ffff:127.0.0.1"_s << true;
        QTest::newRow("not quite loopback") << "12.7.0.1"_s << true;
        QTest::newRow("nothing") << QString() << true;
    }
    void everyCombination()
    {
        QFETCH(QString, address);
        QFETCH(bool, isReachable);
        for (int bits = 0; bits < 16; ++bits) {
            const auto bit = [&](int place) {
                return (bits >> place & 1) != 0;
            };
            Exposure exposure;
            exposure.address = address;
            exposure.hasTokens = bit(0);
            exposure.hasTls = bit(1);
            exposure.withoutTokens = bit(2) ? withoutTokensPhrase() : QString();
            exposure.withoutTls = bit(3) ? withoutTlsPhrase() : QString();
            const bool lacksTokens = isReachable && !bit(0) && !bit(2);
            const bool lacksTls = isReachable && !bit(1) && !bit(3);
            const QString refusal = refusalOf(exposure);
            QCOMPARE(refusal.isEmpty(), !lacksTokens && !lacksTls);
            QCOMPARE(refusal.contains("without tokens"_s), lacksTokens);
            QCOMPARE(refusal.contains("without TLS"_s), lacksTls && !lacksTokens);
            // It tells how to say so, and where.
            QCOMPARE(refusal.contains("--without-tokens "_s + withoutTokensPhrase()), lacksTokens);
            QCOMPARE(refusal.contains("--without-tls "_s + withoutTlsPhrase()), lacksTls && !lacksTokens);
            QVERIFY(refusal.isEmpty() || refusal.contains(address));
        }
    }

    void takesNothingButThePhrases_data()
    {
        QTest::addColumn<QString>("said");
        QTest::newRow("yes") << "yes"_s;
        QTest::newRow("in capitals") << withoutTokensPhrase().toUpper();
        QTest::newRow("a part") << withoutTokensPhrase().chopped(1);
        QTest::newRow("a space behind") << withoutTokensPhrase() + " "_s;
    }
    void takesNothingButThePhrases()
    {
        QFETCH(QString, said);
        for (const QString& address : {"0.0.0.0"_s, "127.0.0.1"_s}) {
            const QString tokens = refusalOf({address, true, true, said, QString()});
            QVERIFY2(tokens.contains(withoutTokensPhrase()) && tokens.contains(said), qPrintable(tokens));
            const QString tls = refusalOf({address, true, true, QString(), said});
            QVERIFY2(tls.contains(withoutTlsPhrase()) && tls.contains(said), qPrintable(tls));
            // The one phrase does not stand for the other.
            QVERIFY(!refusalOf({address, true, true, withoutTlsPhrase(), QString()}).isEmpty());
            QVERIFY(!refusalOf({address, true, true, QString(), withoutTokensPhrase()}).isEmpty());
        }
    }
};

QTEST_GUILESS_MAIN(TestExposure)
#include "TestExposure.moc"
