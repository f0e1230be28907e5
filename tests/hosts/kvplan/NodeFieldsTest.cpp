// The fields of a task by their names: what a person writes, what a program writes, what is shown.

#include <NodeFields.h>
#include <RecordJson.h>

#include <model/KvPlanRecordsDump.h>

#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

class NodeFieldsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // What a program gets it can give back: each field that can be changed, from one full node to another.
    void everyValueGoesBack()
    {
        const KvPlanNode source = KvTest::fullPlanNode(1);
        KvPlanNode target = KvTest::fullPlanNode(2);
        int changed = 0;
        for (const NodeField& field : nodeFields()) {
            QCOMPARE(field.fixed == nullptr, field.setValue != nullptr);
            if (field.fixed)
                continue;
            QJsonValue value = field.value(source);
            if (field.form == NodeField::Percentage)
                value = 12.5; // the full nodes go beyond a hundred
            changed += field.value(target) == value ? 0 : 1;
            QVERIFY2(field.setValue(target, value), field.name.data());
            QVERIFY2(field.value(target) == value, field.name.data());
        }
        QVERIFY2(changed >= 24, qPrintable(QString::number(changed)));
    }

    void valuesOfAnotherTypeAreRefused()
    {
        const QJsonValue values[] = {QJsonValue(true),
                                     QJsonValue(1.5),
                                     QJsonValue(QStringLiteral("text")),
                                     QJsonValue(QJsonArray{QJsonValue(QJsonArray())}),
                                     QJsonValue(QJsonObject{{QStringLiteral("a"), 1}}),
                                     QJsonValue(QJsonValue::Null),
                                     QJsonValue(QJsonValue::Undefined)};
        for (const NodeField& field : nodeFields()) {
            if (field.fixed)
                continue;
            KvPlanNode node = KvTest::fullPlanNode(1);
            int taken = 0;
            for (const QJsonValue& value : values) {
                const QJsonValue before = field.value(node);
                if (field.setValue(node, value))
                    ++taken;
                else
                    QVERIFY2(field.value(node) == before, field.name.data());
            }
            // A flag, a percentage, a text and the null of a date each suit their own kind alone.
            const bool suits = field.form == NodeField::Flag || field.form == NodeField::Percentage ||
                               field.form == NodeField::Text || field.form == NodeField::Date;
            QVERIFY2(taken == (suits ? 1 : 0), field.name.data());
        }
    }

    void written_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("json");
        QTest::addColumn<QString>("shown");
        const auto row = [](const char* name, const char* field, const char* text, const char* json,
                            const char* shown) {
            QTest::newRow(name) << QString::fromUtf8(field) << QString::fromUtf8(text)
                                << QString::fromUtf8(json) << QString::fromUtf8(shown);
        };
        row("text", "name", "第2层 = \"B\"", "[\"第2层 = \\\"B\\\"\"]", "第2层 = \"B\"");
        row("percent", "finishedPercentage", "60", "[60]", "60%");
        row("percent with its sign", "finishedPercentage", "12.5%", "[12.5]", "12.5%");
        row("number", "planWorkload", "12", "[12]", "12");
        row("negative number", "entityHideType", "-3", "[-3]", "-3");
        row("yes", "isDistributed", "yes", "[true]", "yes");
        row("FALSE", "displaySimulation", "FALSE", "[false]", "no");
        row("day", "startDate", "2026-03-05", "[\"2026-03-05T00:00:00.000\"]", "2026-03-05 00:00");
        row("minute", "startDate", "2026-03-05 08:30", "[\"2026-03-05T08:30:00.000\"]", "2026-03-05 08:30");
        row("second", "startDate", "2026-03-05T08:30:15", "[\"2026-03-05T08:30:15.000\"]",
            "2026-03-05 08:30:15");
        row("millisecond", "startDate", "2026-03-05T08:30:00.250", "[\"2026-03-05T08:30:00.250\"]",
            "2026-03-05 08:30:00.250");
        row("no date", "finishDate", "", "[null]", "–");
        row("list", "userIds", "ann, ben", "[[\"ann\",\"ben\"]]", "ann,ben");
        row("no list", "userIds", "", "[[]]", "–");
        row("list with commas inside", "userIds", "[\"a,b\",\"c\"]", "[[\"a,b\",\"c\"]]", "a,b,c");
        row("links", "links", "{\"m2\":[\"e\"],\"m1\":[\"a\",\"b\"]}",
            "[{\"m1\":[\"a\",\"b\"],\"m2\":[\"e\"]}]", "m1=a,b m2=e");
        row("no links", "links", "{}", "[{}]", "–");
        row("predecessors", "predecessors",
            "[{\"sourcePlanNodeUniqueId\":4,\"type\":1},{\"sourcePlanNodeUniqueId\":5,\"lag\":{\"value\":-2}}"
            "]",
            "[[{\"lag\":{\"units\":2,\"value\":0},\"sourcePlanNodeId\":0,\"sourcePlanNodeName\":\"\","
            "\"sourcePlanNodeUniqueId\":4,\"targetPlanNodeId\":0,\"targetPlanNodeName\":\"\","
            "\"targetPlanNodeUniqueId\":\"\",\"type\":1},{\"lag\":{\"units\":2,\"value\":-2},"
            "\"sourcePlanNodeId\":0,\"sourcePlanNodeName\":\"\",\"sourcePlanNodeUniqueId\":5,"
            "\"targetPlanNodeId\":0,\"targetPlanNodeName\":\"\",\"targetPlanNodeUniqueId\":\"\",\"type\":0}]"
            "]",
            "4/1 5/0-2");
    }

    void written()
    {
        QFETCH(QString, field);
        QFETCH(QString, text);
        QFETCH(QString, json);
        const NodeField* found = nodeField(field);
        QVERIFY(found);
        KvPlanNode node = KvTest::fullPlanNode(1);
        QVERIFY(found->setValue(node, found->read(text)));
        const QJsonValue value = found->value(node);
        QCOMPARE(QString::fromUtf8(QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact)), json);
        QTEST(found->shown(value), "shown");
    }

    void whatIsNotSent()
    {
        KvPlanNode node;
        node.id = QStringLiteral("n1");
        node.guid = node.id;
        node.finishedPercentage = -1;
        node.planWorkload = -1;
        node.actualWorkload = -1;
        node.dynamicEffect = -1;
        QStringList left;
        for (const NodeField& field : nodeFields()) {
            if (!field.fixed && !field.isSent(node))
                left.append(field.name);
        }
        QCOMPARE(left, (QStringList{QStringLiteral("category"), QStringLiteral("name"),
                                    QStringLiteral("finishedPercentage"), QStringLiteral("guid"),
                                    QStringLiteral("remark"), QStringLiteral("dynamicEffect"),
                                    QStringLiteral("planWorkload"), QStringLiteral("actualWorkload")}));
    }

    void advice()
    {
        QCOMPARE(adviceOnField(QStringLiteral("nmae")), QStringLiteral(" (did you mean \"name\"?)"));
        QCOMPARE(adviceOnField(QStringLiteral("FINISHEDPERCENT")),
                 QStringLiteral(" (did you mean \"finishedPercentage\"?)"));
        QCOMPARE(adviceOnField(QStringLiteral("weather")), QString());
        QCOMPARE(adviceOnField(QString(100000, QLatin1Char('x'))), QString());
        QCOMPARE(adviceOnField(QString()), QString());
    }
};

QTEST_GUILESS_MAIN(NodeFieldsTest)
#include "NodeFieldsTest.moc"
