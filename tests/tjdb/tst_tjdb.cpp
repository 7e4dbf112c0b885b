// The database link's text format: what a request and a response look like
// on the wire (the examples of docs/tjdb.md), that any value survives the
// trip, and that a malformed message is refused whole.
#include <QtTest>

#include "CTJDbReq.h"
#include "CTJDbResp.h"

using namespace TJDB;

class TestTjdb : public QObject
{
    Q_OBJECT
private slots:
    void requestTextAndBack()
    {
        CTJDbReq req;
        req.set(ReqElementToken, "{5c1b0f8e-2c57-4a53-9d1b-0c6e8f0e6a11}");
        req.set(ReqElementDbName, "user");
        req.set(ReqElementSubscriber, "192.168.1.20");
        req.set(ReqElementSql, "SELECT OID, * FROM contacts");
        CTJDbCommand sub;
        sub.setSubscribe(SubscribeAll, "contacts");
        req.addCommand(sub);
        const std::string text = req.serialize();
        QCOMPARE(QByteArray::fromStdString(text),
                 QByteArray("TJDB/1 request\n2={5c1b0f8e-2c57-4a53-9d1b-0c6e8f0e6a11}\n3=user\n"
                            "4=SELECT OID, * FROM contacts\n16=192.168.1.20\nsubscribe=65535|contacts\n"));

        CTJDbReq back;
        QVERIFY(back.parse(text));
        QCOMPARE(back.getStr(ReqElementSql), "SELECT OID, * FROM contacts");
        QCOMPARE(back.numOfCommands(), 1);
        QCOMPARE(int(back.command(0).kind()), int(CTJDbCommand::KindSubscribe));
        QCOMPARE(back.command(0).subscribeType(), 65535);
        QCOMPARE(back.command(0).table(), "contacts");
        QCOMPARE(int(back.command(5).kind()), int(CTJDbCommand::KindNone));
        QCOMPARE(back.serialize(), text);

        // The one-line form a scenario writes: ';' between items, "\r\n" also ends one.
        QVERIFY(back.parse("TJDB/1 request;2=demo-1;4=UPDATE t SET a = b %7C%7C 'x'%3B\r\n3=user;;"));
        QCOMPARE(back.getStr(ReqElementSql), "UPDATE t SET a = b || 'x';");
        QCOMPARE(back.getStr(ReqElementDbName), "user");
        QCOMPARE(back.numOfCommands(), 0);
        // A raw '|' is plain text inside an element.
        QVERIFY(back.parse("TJDB/1 request\n4=SELECT a || b"));
        QCOMPARE(back.getStr(ReqElementSql), "SELECT a || b");
    }

    void numbersAndAbsentElements()
    {
        CTJDbResp resp;
        QVERIFY(resp.parse("TJDB/1 response\n10=12\n11=-1\n12=x\n14=99999999999\n18=+7\n200=kept\nlater=skipped"));
        QCOMPARE(resp.getInt(ReqElementTotalRows), 12);
        QCOMPARE(resp.getInt(ReqElementStartRow), -1);
        QCOMPARE(resp.getInt(ReqElementEndRow, -5), -5);         // not a number
        QCOMPARE(resp.getInt(ReqElementNotification, 3), 3);     // beyond int
        QCOMPARE(resp.getLongLong(ReqElementNotification), 99999999999LL);
        QCOMPARE(resp.getInt(ReqElementChanges), 7);
        QCOMPARE(resp.getInt(ReqElementToken, 4), 4);            // absent
        QCOMPARE(resp.getStr(ReqElementToken), "");
        QCOMPARE(resp.getStr(200), "kept");
        QVERIFY(!resp.has(ReqElementToken) && resp.has(200));
        resp.set(300, "ignored");
        resp.set(ReqElementEndRow, -1);
        resp.set(ReqElementLastInsertId, 1LL << 40);
        QVERIFY(!resp.has(300));
        QCOMPARE(resp.getInt(ReqElementEndRow), -1);
        QCOMPARE(resp.getLongLong(ReqElementLastInsertId), 1LL << 40);
        resp.remove(200);
        QVERIFY(!resp.has(200));
    }

    void responseRowsSurviveAnyText()
    {
        CTJDbResp resp;
        resp.set(ReqElementToken, "t");
        resp.set(ReqElementTotalRows, 3);
        resp.set(ReqElementStartRow, 0);
        resp.set(ReqElementEndRow, 2);
        resp.set(ReqElementNotification, NotificationSync);
        resp.setColumns({"rowid", "name", "note|x"});
        resp.addRow({"1", "Ada Lovelace", "a;b\nc\r%d|e"});
        resp.addRow({"2", nullptr, ""});
        const char blob[] = {'a', '\0', 'b'};
        const char* fields[] = {"3", "Caf\xc3\xa9 \x7f", blob};
        const int lengths[] = {-1, -1, 3};
        resp.addRow(fields, lengths, 3);
        resp.addRow({"4"});  // missing fields are NULL
        const std::string text = resp.serialize();
        QCOMPARE(QByteArray::fromStdString(text),
                 QByteArray("TJDB/1 response\n2=t\n10=3\n11=0\n12=2\n14=-1\ncolumns=rowid|name|note%7Cx\n"
                            "row=1|Ada Lovelace|a%3Bb%0Ac%0D%25d%7Ce\nrow=2|%N|\n"
                            "row=3|Caf\xc3\xa9 %7F|a%00b\nrow=4|%N|%N\n"));

        CTJDbResp back;
        QVERIFY(back.parse(text));
        QCOMPARE(back.numOfRows(), 4);
        QCOMPARE(back.numOfCols(), 3);
        QCOMPARE(back.colName(2), "note|x");
        QCOMPARE(back.colName(3), "");
        QCOMPARE(back.field(0, 2), "a;b\nc\r%d|e");
        QVERIFY(back.isNull(1, 1) && !back.isNull(1, 2));
        QCOMPARE(back.field(1, 1), "");
        QCOMPARE(QByteArray(back.field(2, 2), back.fieldLength(2, 2)), QByteArray(blob, 3));
        QCOMPARE(back.field(2, 1), "Caf\xc3\xa9 \x7f");
        QCOMPARE(back.field(9, 0), "");
        QCOMPARE(back.fieldLength(-1, 0), 0);
        QVERIFY(!back.isNull(9, 9));
        QCOMPARE(back.serialize(), text);

        // Columns given anew drop the rows; a response without columns has no rows.
        back.setColumns({"a"});
        QCOMPARE(back.numOfRows(), 0);
        CTJDbResp empty;
        QVERIFY(empty.parse("TJDB/1 response\n2=t\n10=0\n11=0\n12=-1\n17=no such table: x"));
        QCOMPARE(empty.numOfCols(), 0);
        QCOMPARE(empty.getStr(ReqElementError), "no such table: x");
        // One column whose name is empty is still a column.
        QVERIFY(empty.parse("TJDB/1 response\ncolumns=\nrow=\nrow=%N"));
        QCOMPARE(empty.numOfCols(), 1);
        QCOMPARE(empty.numOfRows(), 2);
        QVERIFY(!empty.isNull(0, 0) && empty.isNull(1, 0));
    }

    void malformedMessagesAreRefusedWhole_data()
    {
        QTest::addColumn<bool>("request");
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << true << QByteArray();
        QTest::newRow("no magic") << true << QByteArray("2=t\n4=SELECT 1");
        QTest::newRow("response as request") << true << QByteArray("TJDB/1 response\n2=t");
        QTest::newRow("request as response") << false << QByteArray("TJDB/1 request\n2=t");
        QTest::newRow("other version") << true << QByteArray("TJDB/2 request\n2=t");
        QTest::newRow("item without =") << true << QByteArray("TJDB/1 request\n2=t\nSELECT 1");
        QTest::newRow("element 256") << true << QByteArray("TJDB/1 request\n256=x");
        QTest::newRow("element -1") << true << QByteArray("TJDB/1 request\n-1=x");
        QTest::newRow("element 99999999999") << true << QByteArray("TJDB/1 request\n99999999999=x");
        QTest::newRow("bad escape") << true << QByteArray("TJDB/1 request\n2=t\n4=LIKE 'a%'");
        QTest::newRow("short escape") << true << QByteArray("TJDB/1 request\n4=%4");
        QTest::newRow("subscribe without table") << true << QByteArray("TJDB/1 request\nsubscribe=65535");
        QTest::newRow("subscribe empty table") << true << QByteArray("TJDB/1 request\nsubscribe=1|");
        QTest::newRow("subscribe NUL table") << true << QByteArray("TJDB/1 request\nsubscribe=1|%00");
        QTest::newRow("subscribe type") << true << QByteArray("TJDB/1 request\nsubscribe=all|t");
        QTest::newRow("row before columns") << false << QByteArray("TJDB/1 response\nrow=1\ncolumns=a");
        QTest::newRow("row too short") << false << QByteArray("TJDB/1 response\ncolumns=a|b\nrow=1");
        QTest::newRow("row too long") << false << QByteArray("TJDB/1 response\ncolumns=a\nrow=1|2");
        QTest::newRow("columns twice") << false << QByteArray("TJDB/1 response\ncolumns=a\ncolumns=b");
        QTest::newRow("bad escape in row") << false << QByteArray("TJDB/1 response\ncolumns=a\nrow=%zz");
        QTest::newRow("bad escape in column") << false << QByteArray("TJDB/1 response\ncolumns=%g0");
        QTest::newRow("too many columns")
            << false << (QByteArray("TJDB/1 response\ncolumns=a") + QByteArray(40000, '|'));
    }

    void malformedMessagesAreRefusedWhole()
    {
        QFETCH(bool, request);
        QFETCH(QByteArray, text);
        CTJDbReq req;
        CTJDbResp resp;
        CTJDbInterface& message = request ? static_cast<CTJDbInterface&>(req) : resp;
        // What an earlier read left behind goes too.
        message.set(ReqElementToken, "old");
        QVERIFY(!message.parse(text.constData(), std::size_t(text.size())));
        QVERIFY(qstrlen(message.error()) > 0);
        QVERIFY(!message.has(ReqElementToken));
        QCOMPARE(req.numOfCommands(), 0);
        QCOMPARE(resp.numOfCols() + resp.numOfRows(), 0);
        QVERIFY(!message.parse(static_cast<const char*>(nullptr)));
    }
};

QTEST_APPLESS_MAIN(TestTjdb)
#include "tst_tjdb.moc"
