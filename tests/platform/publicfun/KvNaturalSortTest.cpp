#include <KvPublicFun/KvPub.h>

#include <QtCore/QLocale>
#include <QtCore/QRandomGenerator>
#include <QtCore/QVector>
#include <QtTest/QtTest>

#include <algorithm>
#include <atomic>
#include <thread>

namespace {

const QStringList Locales = {QStringLiteral("C"), QStringLiteral("en_US"), QStringLiteral("zh_CN"),
                             QStringLiteral("de_DE"), QStringLiteral("sv_SE")};

QString randomText(QRandomGenerator& random)
{
    static const QStringList pieces = {
        QStringLiteral("0"),     QStringLiteral("1"),        QStringLiteral("9"),     QStringLiteral("00"),
        QStringLiteral("12"),    QStringLiteral("99999999"), QStringLiteral("a"),     QStringLiteral("A"),
        QStringLiteral("b"),     QStringLiteral(" "),        QStringLiteral("-"),     QStringLiteral("."),
        QStringLiteral("plan "), QString::fromUtf8("é"),     QString::fromUtf8("第"), QString::fromUtf8("层"),
        QString::fromUtf8("２"), QString::fromUtf8("٣"),     QString::fromUtf8("²"),  QString::fromUtf8("😀"),
        QString(QChar(0xd800)),  QString(QChar(0x301)),      QString(QChar(0)),       QString::fromUtf8("ß"),
    };
    QString text;
    for (int count = random.bounded(6); count > 0; --count)
        text += pieces.at(random.bounded(pieces.size()));
    return text;
}

QString randomNumber(QRandomGenerator& random, int maxDigits)
{
    QString number(random.bounded(3), QLatin1Char('0'));
    for (int count = random.bounded(maxDigits); count >= 0; --count)
        number += QLatin1Char(char('0' + random.bounded(10)));
    return number;
}

bool isSmaller(QString a, QString b)
{
    while (a.startsWith(QLatin1Char('0')))
        a.remove(0, 1);
    while (b.startsWith(QLatin1Char('0')))
        b.remove(0, 1);
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

} // namespace

class KvNaturalSortTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QLocale::setDefault(QLocale::c()); }
    void sorts_data();
    void sorts();
    void treatsAsEquivalent_data();
    void treatsAsEquivalent();
    void followsTheUsersLanguage();
    void comparesNumbersOfAnyLength_data() { locales(); }
    void comparesNumbersOfAnyLength();
    void isAStrictWeakOrder_data();
    void isAStrictWeakOrder();
    void mayBeUsedFromSeveralThreads();

private:
    static void locales()
    {
        QTest::addColumn<QString>("locale");
        for (const QString& locale : Locales)
            QTest::newRow(qPrintable(locale)) << locale;
    }
};

void KvNaturalSortTest::sorts_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QStringList>("sorted");

    const QList<QPair<const char*, QStringList>> cases = {
        {"plans",
         {QStringLiteral("Plan"), QStringLiteral("Plan 1"), QStringLiteral("Plan 2"),
          QStringLiteral("Plan 10"), QStringLiteral("Plan 100")}},
        {"floors in Chinese",
         {QString::fromUtf8("第1层"), QString::fromUtf8("第2层"), QString::fromUtf8("第10层"),
          QString::fromUtf8("第11层")}},
        {"leading zeros",
         {QStringLiteral("B1"), QStringLiteral("B002"), QStringLiteral("B03"), QStringLiteral("B010")}},
        {"section numbers",
         {QStringLiteral("1.2"), QStringLiteral("1.2.9"), QStringLiteral("1.2.10"), QStringLiteral("1.10"),
          QStringLiteral("2.1")}},
        {"around eight digits",
         {QStringLiteral("9999999"), QStringLiteral("10000000"), QStringLiteral("99999999"),
          QStringLiteral("100000000"), QStringLiteral("999999999"), QStringLiteral("9999999999"),
          QStringLiteral("10000000000")}},
        {"full-width digits",
         {QString::fromUtf8("楼２"), QString::fromUtf8("楼3"), QString::fromUtf8("楼１０")}},
        {"numbers before letters",
         {QString(), QStringLiteral("0"), QStringLiteral("7"), QStringLiteral("70"), QStringLiteral("a")}},
        {"number in the middle",
         {QStringLiteral("a2b"), QStringLiteral("a2c"), QStringLiteral("a10a"), QStringLiteral("aa")}},
    };
    for (const QString& locale : Locales) {
        for (const auto& [name, sorted] : cases)
            QTest::addRow("%s, %s", name, qPrintable(locale)) << locale << sorted;
    }
}

void KvNaturalSortTest::sorts()
{
    QFETCH(QString, locale);
    QFETCH(QStringList, sorted);
    QLocale::setDefault(QLocale(locale));
    for (const Qt::CaseSensitivity cs : {Qt::CaseSensitive, Qt::CaseInsensitive}) {
        for (int i = 0; i < sorted.size(); ++i) {
            for (int k = 0; k < sorted.size(); ++k)
                QCOMPARE(KvPub::naturalSort(sorted.at(i), sorted.at(k), cs), i < k);
        }
    }
}

void KvNaturalSortTest::treatsAsEquivalent_data()
{
    QTest::addColumn<QString>("a");
    QTest::addColumn<QString>("b");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<bool>("caseInsensitive");
    QTest::newRow("same text") << QStringLiteral("Plan 7") << QStringLiteral("Plan 7") << true << true;
    QTest::newRow("leading zeros") << QStringLiteral("Plan 7") << QStringLiteral("Plan 007") << true << true;
    QTest::newRow("case") << QStringLiteral("PLAN 7") << QStringLiteral("plan 7") << false << true;
    QTest::newRow("both empty") << QString() << QStringLiteral("") << true << true;
    QTest::newRow("other number") << QStringLiteral("Plan 7") << QStringLiteral("Plan 8") << false << false;
}

void KvNaturalSortTest::treatsAsEquivalent()
{
    QFETCH(QString, a);
    QFETCH(QString, b);
    QFETCH(bool, caseSensitive);
    QFETCH(bool, caseInsensitive);
    const auto equivalent = [&](Qt::CaseSensitivity cs) {
        return !KvPub::naturalSort(a, b, cs) && !KvPub::naturalSort(b, a, cs);
    };
    for (const QString& locale : Locales) {
        QLocale::setDefault(QLocale(locale));
        QCOMPARE(equivalent(Qt::CaseSensitive), caseSensitive);
        QCOMPARE(equivalent(Qt::CaseInsensitive), caseInsensitive);
    }
}

void KvNaturalSortTest::followsTheUsersLanguage()
{
    const QString umlaut = QString::fromUtf8("öl");
    const QString zone = QStringLiteral("zone");
    QLocale::setDefault(QLocale(QStringLiteral("de_DE")));
    QVERIFY(KvPub::naturalSort(umlaut, zone, Qt::CaseSensitive));
    QVERIFY(KvPub::naturalSort(QStringLiteral("a"), QStringLiteral("B"), Qt::CaseSensitive));
    QLocale::setDefault(QLocale(QStringLiteral("sv_SE")));
    QVERIFY(KvPub::naturalSort(zone, umlaut, Qt::CaseSensitive));
    QLocale::setDefault(QLocale::c());
    QVERIFY(KvPub::naturalSort(QStringLiteral("B"), QStringLiteral("a"), Qt::CaseSensitive));
    QVERIFY(KvPub::naturalSort(QStringLiteral("a"), QStringLiteral("B"), Qt::CaseInsensitive));
}

void KvNaturalSortTest::comparesNumbersOfAnyLength()
{
    QFETCH(QString, locale);
    QLocale::setDefault(QLocale(locale));
    QRandomGenerator random(11);
    for (int i = 0; i < 4000; ++i) {
        const int maxDigits = i % 100 == 0 ? 3000 : (i % 2 == 0 ? 3 : 24);
        const QString a = randomNumber(random, maxDigits);
        const QString b = i % 5 == 0 ? QStringLiteral("0") + a : randomNumber(random, maxDigits);
        QCOMPARE(KvPub::naturalSort(QStringLiteral("n") + a, QStringLiteral("n") + b, Qt::CaseSensitive),
                 isSmaller(a, b));
    }
}

void KvNaturalSortTest::isAStrictWeakOrder_data()
{
    locales();
}

void KvNaturalSortTest::isAStrictWeakOrder()
{
    QFETCH(QString, locale);
    QLocale::setDefault(QLocale(locale));
    QRandomGenerator random(5);
    for (int round = 0; round < 20; ++round) {
        const Qt::CaseSensitivity cs = round % 2 == 0 ? Qt::CaseSensitive : Qt::CaseInsensitive;
        QStringList texts;
        for (int i = 0; i < 50; ++i)
            texts.append(randomText(random));
        const int count = texts.size();
        QVector<QVector<bool>> less(count, QVector<bool>(count));
        for (int a = 0; a < count; ++a) {
            for (int b = 0; b < count; ++b)
                less[a][b] = KvPub::naturalSort(texts.at(a), texts.at(b), cs);
        }
        const auto equivalent = [&less](int a, int b) {
            return !less.at(a).at(b) && !less.at(b).at(a);
        };
        for (int a = 0; a < count; ++a) {
            QVERIFY(!less.at(a).at(a));
            for (int b = 0; b < count; ++b) {
                QVERIFY(!(less.at(a).at(b) && less.at(b).at(a)));
                for (int c = 0; c < count; ++c) {
                    QVERIFY(!(less.at(a).at(b) && less.at(b).at(c)) || less.at(a).at(c));
                    QVERIFY(!(equivalent(a, b) && equivalent(b, c)) || equivalent(a, c));
                }
            }
        }
    }
}

void KvNaturalSortTest::mayBeUsedFromSeveralThreads()
{
    QLocale::setDefault(QLocale(QStringLiteral("zh_CN")));
    std::atomic<int> wrong{0};
    const auto compare = [&wrong] {
        for (int i = 1; i < 2000; ++i) {
            const QString smaller = QString::fromUtf8("第%1层").arg(i);
            const QString larger = QString::fromUtf8("第%1层").arg(i + 1);
            if (!KvPub::naturalSort(smaller, larger, i % 2 == 0 ? Qt::CaseSensitive : Qt::CaseInsensitive))
                ++wrong;
        }
    };
    std::thread other(compare);
    compare();
    other.join();
    QCOMPARE(wrong.load(), 0);
}

QTEST_GUILESS_MAIN(KvNaturalSortTest)
#include "KvNaturalSortTest.moc"
