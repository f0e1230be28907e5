// What a person sees of names: one line each, in the right width, and never a control character.

#include <CellText.h>
#include <TextTable.h>

#include <QtTest/QtTest>

class TableTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cellsOfText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("cells");
        QTest::newRow("nothing") << QString() << 0;
        QTest::newRow("Latin") << QStringLiteral("Floor 2") << 7;
        QTest::newRow("Chinese") << QStringLiteral("第2层") << 5;
        QTest::newRow("fullwidth digits") << QStringLiteral("２３") << 4;
        QTest::newRow("halfwidth katakana") << QStringLiteral("ｱｲ") << 2;
        QTest::newRow("Hangul syllables") << QStringLiteral("층") << 2;
        QTest::newRow("Hangul in parts") << QStringLiteral("\u110e\u1173\u11bc") << 2;
        QTest::newRow("composed accent") << QStringLiteral("é") << 1;
        QTest::newRow("combining accent") << QStringLiteral("e\u0301") << 1;
        QTest::newRow("two marks on a letter") << QStringLiteral("o\u0302\u0323") << 1;
        QTest::newRow("emoji above the first plane") << QStringLiteral("🏗") << 1;
        QTest::newRow("wide emoji") << QStringLiteral("😀🚧") << 4;
        QTest::newRow("wide emoji of the first plane") << QStringLiteral("✅") << 2;
        QTest::newRow("zero-width joiner") << QStringLiteral("a\u200db") << 2;
        QTest::newRow("ideograph of the second plane") << QStringLiteral("𠀋") << 2;
        QTest::newRow("diamond and bar") << QStringLiteral("◆█░") << 3;
    }

    void cellsOfText()
    {
        QFETCH(QString, text);
        QTEST(cellWidth(text), "cells");
    }

    void fittedText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("width");
        QTest::addColumn<QString>("expected");
        QTest::newRow("fits") << QStringLiteral("Floor") << 5 << QStringLiteral("Floor");
        QTest::newRow("one too long") << QStringLiteral("Floor") << 4 << QStringLiteral("Flo…");
        QTest::newRow("unlimited") << QStringLiteral("Floor 17") << 0 << QStringLiteral("Floor 17");
        QTest::newRow("only the dots") << QStringLiteral("Floor") << 1 << QStringLiteral("…");
        QTest::newRow("wide fits") << QStringLiteral("第二层") << 6 << QStringLiteral("第二层");
        QTest::newRow("wide, odd width") << QStringLiteral("第二层") << 5 << QStringLiteral("第二…");
        QTest::newRow("wide, no half character") << QStringLiteral("第二层") << 4 << QStringLiteral("第…");
        QTest::newRow("wide into one cell") << QStringLiteral("第二层") << 1 << QStringLiteral("…");
        QTest::newRow("mark stays with its letter")
            << QStringLiteral("e\u0301e\u0301e\u0301") << 2 << QStringLiteral("e\u0301…");
        QTest::newRow("mark at the very end")
            << QStringLiteral("abe\u0301") << 3 << QStringLiteral("abe\u0301");
        QTest::newRow("emoji is not halved") << QStringLiteral("a😀b") << 3 << QStringLiteral("a…");
        QTest::newRow("line breaks") << QStringLiteral("a\nb\r\nc") << 0 << QStringLiteral("a b  c");
        QTest::newRow("tab") << QStringLiteral("a\tb") << 0 << QStringLiteral("a b");
        QTest::newRow("colour sequence") << QStringLiteral("\x1b[31mred") << 0 << QStringLiteral(" [31mred");
        QTest::newRow("one-character sequence start")
            << QStringLiteral("\u009b2Jgone") << 0 << QStringLiteral(" 2Jgone");
        QTest::newRow("bell, backspace and delete")
            << QStringLiteral("a\a\b\u007fb") << 0 << QStringLiteral("a   b");
        QTest::newRow("nul") << QString(QChar(0)) + QLatin1Char('x') << 0 << QStringLiteral(" x");
        QTest::newRow("line and paragraph separators")
            << QStringLiteral("a\u2028b\u2029c") << 0 << QStringLiteral("a b c");
        QTest::newRow("half a surrogate pair")
            << QString(QChar(0xd800)) + QLatin1Char('x') << 0 << QStringLiteral("\ufffdx");
        QTest::newRow("turned writing")
            << QStringLiteral("a\u202egpj.exe\u2066") << 0 << QStringLiteral("agpj.exe");
        QTest::newRow("joined emoji stays whole")
            << QStringLiteral("👷\u200d♀") << 0 << QStringLiteral("👷\u200d♀");
    }

    void fittedText()
    {
        QFETCH(QString, text);
        QFETCH(int, width);
        const QString kept = fitted(text, width);
        QTEST(kept, "expected");
        if (width > 0)
            QVERIFY(cellWidth(kept) <= width);
    }

    // No character of the first two planes gets through that could move the cursor or start a sequence.
    void noControlCharacterIsLeft()
    {
        for (uint character = 0; character < 0x20000; ++character) {
            const QString kept = fitted(QString::fromUcs4(&character, 1), 0);
            for (const QChar unit : kept) {
                const bool isControl = unit.unicode() < 0x20 ||
                                       (unit.unicode() >= 0x7f && unit.unicode() < 0xa0) ||
                                       unit == QChar(0x2028) || unit == QChar(0x2029);
                QVERIFY2(!isControl, qPrintable(QString::number(character, 16)));
            }
        }
    }

    void columnsLineUp()
    {
        TextTable table;
        table.addColumn(QStringLiteral("Row"), TextTable::Right);
        table.addTextColumn(QStringLiteral("Task"));
        table.addColumn(QStringLiteral("Done"), TextTable::Right);
        table.addRow({QStringLiteral("1"), QStringLiteral("第2层 Floor"), QStringLiteral("5%")});
        table.addRow({QStringLiteral("1000"), QStringLiteral("e\u0301"), QStringLiteral("100%")});
        table.addRow({QStringLiteral("2"), QStringLiteral("😀")});
        QCOMPARE(table.toText(), QStringLiteral(" Row  Task         Done\n"
                                                "────  ───────────  ────\n"
                                                "   1  第2层 Floor    5%\n"
                                                "1000  e\u0301            100%\n"
                                                "   2  😀\n"));
    }

    void onlyNamesAreShortened()
    {
        TextTable table;
        table.addColumn(QStringLiteral("Plan"));
        table.addTextColumn(QStringLiteral("Name"));
        table.addRow({QStringLiteral("9483880f7b31d8294ab1aeed"), QStringLiteral("Residential tower")});
        QCOMPARE(table.toText(38), QStringLiteral("Plan                      Name\n"
                                                  "────────────────────────  ────────────\n"
                                                  "9483880f7b31d8294ab1aeed  Residential…\n"));
        // Where it cannot fit, names keep a few cells and identifiers stay whole.
        QCOMPARE(table.toText(10), QStringLiteral("Plan                      Name\n"
                                                  "────────────────────────  ────────\n"
                                                  "9483880f7b31d8294ab1aeed  Residen…\n"));
    }

    void wideNamesAreShortenedFirst_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<QString>("rule");
        // The columns are 30, 20 and 10 cells wide.
        QTest::newRow("fits") << 64 << QStringLiteral("30 20 10");
        QTest::newRow("the widest alone") << 54 << QStringLiteral("20 20 10");
        QTest::newRow("two take turns") << 50 << QStringLiteral("18 18 10");
        QTest::newRow("all three") << 31 << QStringLiteral("9 9 9");
        QTest::newRow("no further") << 1 << QStringLiteral("8 8 8");
    }

    void wideNamesAreShortenedFirst()
    {
        QFETCH(int, width);
        TextTable table;
        QStringList row;
        for (const int cells : {30, 20, 10}) {
            table.addTextColumn(QStringLiteral("Name"));
            row.append(QString(cells, QLatin1Char('x')));
        }
        table.addRow(row);
        const QString rule = table.toText(width).section(QLatin1Char('\n'), 1, 1);
        QStringList widths;
        for (const QString& part : rule.split(QStringLiteral("  ")))
            widths.append(QString::number(part.size()));
        QTEST(widths.join(QLatin1Char(' ')), "rule");
    }

    void rowsAreFilledAndCut()
    {
        TextTable table;
        table.addColumn(QStringLiteral("A"));
        table.addColumn(QStringLiteral("B"));
        table.addRow({QStringLiteral("1")});
        table.addRow({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")});
        QCOMPARE(table.toText(), QStringLiteral("A  B\n─  ─\n1\n1  2\n"));
    }

    void anEmptyTableIsItsHead()
    {
        TextTable table;
        table.addColumn(QStringLiteral("A"));
        QCOMPARE(table.toText(80), QStringLiteral("A\n─\n"));
        QCOMPARE(TextTable().toText(80), QStringLiteral("\n\n"));
    }

    void datesAndPercentages()
    {
        const QDateTime date(QDate(2026, 3, 5), QTime(8, 7, 59));
        QCOMPARE(minuteText(date), QStringLiteral("2026-03-05 08:07"));
        QCOMPARE(dayText(date), QStringLiteral("2026-03-05"));
        QCOMPARE(minuteText(QDateTime()), QString());
        QCOMPARE(dayText(QDateTime()), QString());
        QCOMPARE(percentText(0), QStringLiteral("0%"));
        QCOMPARE(percentText(66.6), QStringLiteral("67%"));
        QCOMPARE(percentText(-1), QString());
    }
};

QTEST_GUILESS_MAIN(TableTest)
#include "TableTest.moc"
