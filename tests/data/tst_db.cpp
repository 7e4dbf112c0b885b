// The database link of a GUI process on its own: the requests it writes,
// where it sends the answers, what a reconnection or a new database name
// does, and queries that are deleted while their answer is on the way.
#include <QtTest>

#include "CTJDbReq.h"
#include "DbTestSupport.h"
#include "data/CTavoDb.h"

using namespace TJDB;

class TestDb : public QObject
{
    Q_OBJECT

    struct Link {
        CTavoDb db;
        QList<CTJDbReq> sent;
        Link()
        {
            QObject::connect(&db, &CTavoDb::tjdbRequest, [this](const QString& text) {
                CTJDbReq req;
                QVERIFY2(req.parse(text.toStdString()), qPrintable(text));
                sent.append(req);
            });
        }
        void answer(const CTJDbResp& r) { db.tjdbResponse(QString::fromStdString(r.serialize())); }
    };

private slots:
    void subscribeOnlyWhileConnected()
    {
        Link link;
        QVERIFY(!link.db.subscribeToTable("contacts"));
        QVERIFY(link.sent.isEmpty());
        QVERIFY(link.db.tables().isEmpty());

        QList<const CTavoDbTable*> created;
        connect(&link.db, &CTavoDb::tableCreated, this,
                [&](const QString& name, const CTavoDbTable* t) { QCOMPARE(t->name(), name); created.append(t); });
        link.db.setConnected(true);
        QVERIFY(link.sent.isEmpty());  // nothing to subscribe to again yet
        CTavoDbTable* table = link.db.subscribeToTable("contacts");
        QVERIFY(table);
        QCOMPARE(table->name(), QStringLiteral("contacts"));
        QCOMPARE(created, (QList<const CTavoDbTable*>{table}));
        QCOMPARE(link.db.subscribeToTable("contacts"), table);
        QCOMPARE(link.db.table("contacts"), table);
        QVERIFY(!link.db.table("calls"));
        QCOMPARE(link.sent.size(), 1);
        const CTJDbReq& req = link.sent.first();
        const QString token = QString::fromUtf8(req.getStr(ReqElementToken));
        QVERIFY(!QUuid(token).isNull());
        QCOMPARE(req.getStr(ReqElementDbName), "user");
        QCOMPARE(req.getStr(ReqElementSql), "SELECT OID, * FROM contacts");
        QCOMPARE(req.numOfCommands(), 1);
        QCOMPARE(req.command(0).subscribeType(), 65535);
        QCOMPARE(req.command(0).table(), "contacts");

        // The answer fills the table; one for a token nobody knows is dropped.
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 2 rows and 2 columns");
        link.answer(dbResponse(token, NotificationSync, {"rowid", "name"}, contactRows(1, 2)));
        QCOMPARE(table->rowCount(), 2);
        QTest::ignoreMessage(QtDebugMsg, "'Table Names' or 'Tables Data' update is not required due to "
                                         "unavailability of token ({00000000-0000-0000-0000-000000000001}) from the cached table");
        link.answer(dbResponse("{00000000-0000-0000-0000-000000000001}", NotificationSync, {"rowid"}, {{"1"}}));
        // Unreadable text has no token at all.
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^CTavoDb: unreadable TJDB response of 9 bytes"));
        QTest::ignoreMessage(QtDebugMsg, "'Table Names' or 'Tables Data' update is not required due to "
                                         "unavailability of token () from the cached table");
        link.db.tjdbResponse("not tjdb!");
        // A failed request keeps what is cached.
        CTJDbResp failed;
        failed.set(ReqElementToken, token.toUtf8().constData());
        failed.set(ReqElementTotalRows, 0);
        failed.set(ReqElementError, "database is locked");
        QTest::ignoreMessage(QtDebugMsg, qPrintable("CTavoDb: request " + token + " failed: database is locked"));
        link.answer(failed);
        QCOMPARE(table->rowCount(), 2);

        // Going down keeps the rows; coming back subscribes again under the old token.
        link.db.setConnected(false);
        QCOMPARE(table->rowCount(), 2);
        QVERIFY(!link.db.subscribeToTable("calls"));
        QTest::ignoreMessage(QtDebugMsg, "Subscribing to contacts");
        link.db.setConnected(true);
        QCOMPARE(link.sent.size(), 2);
        QCOMPARE(QString::fromUtf8(link.sent.last().getStr(ReqElementToken)), token);
        QCOMPARE(link.sent.last().command(0).subscribeType(), 65535);

        // A refresh asks under the table's token.
        link.db.requestUpdate("contacts");
        QCOMPARE(link.sent.size(), 3);
        QCOMPARE(QString::fromUtf8(link.sent.last().getStr(ReqElementToken)), token);
        QCOMPARE(link.sent.last().numOfCommands(), 0);
        link.db.requestUpdate("contacts", "mine");
        QCOMPARE(link.sent.last().getStr(ReqElementToken), "mine");
        QTest::ignoreMessage(QtDebugMsg, "CTavoDb::requestUpdate: no subscribed table 'calls'");
        link.db.requestUpdate("calls");
        QCOMPARE(link.sent.size(), 4);
    }

    void aPeerThatDiesMidAnswer()
    {
        Link link;
        link.db.setConnected(true);
        CTavoDbTable* table = link.db.subscribeToTable("calls");
        const QString token = QString::fromUtf8(link.sent.last().getStr(ReqElementToken));
        // Two of five rows, then "dbs" is gone: what came stays, whole rows only.
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 2 rows and 2 columns");
        link.answer(dbResponse(token, NotificationSync, {"rowid", "name"}, contactRows(1, 2), 5));
        link.db.setConnected(false);
        QCOMPARE(table->rowCount(), 2);
        // Back again: the whole table anew, nothing left of the broken answer.
        QTest::ignoreMessage(QtDebugMsg, "Subscribing to calls");
        link.db.setConnected(true);
        QCOMPARE(QString::fromUtf8(link.sent.last().getStr(ReqElementToken)), token);
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 3 rows and 2 columns");
        link.answer(dbResponse(token, NotificationSync, {"rowid", "name"}, contactRows(7, 9)));
        QCOMPARE(table->rowCount(), 3);
        QCOMPARE(table->rowIndex(1), -1);
        QCOMPARE(table->rowId(2), 9LL);
    }

    void databaseName()
    {
        Link link;
        link.db.setConnected(true);
        CTavoDbTable* a = link.db.subscribeToTable("a");
        link.db.subscribeToTable("b");
        link.sent.clear();

        QTest::ignoreMessage(QtDebugMsg, "Ignoring request to set database name to an empty string");
        link.db.setDbName(QByteArray());
        link.db.setDbName("user");
        QVERIFY(link.sent.isEmpty());

        auto* q = new CTavoDbQuery("SELECT 1");
        link.db.execute(*q);
        const QUuid queryToken(QString::fromUtf8(link.sent.last().getStr(ReqElementToken)));
        QCOMPARE(link.db.getQuery(queryToken), q);
        link.sent.clear();

        // Each table is cancelled under the old name and subscribed under the new one.
        QTest::ignoreMessage(QtDebugMsg, "Subscribing to a");
        QTest::ignoreMessage(QtDebugMsg, "Subscribing to b");
        QTest::ignoreMessage(QtDebugMsg, "Database name changed to 'office'");
        link.db.setDbName("office");
        QCOMPARE(link.db.dbName(), QByteArray("office"));
        QCOMPARE(link.sent.size(), 4);
        QCOMPARE(link.sent[0].command(0).subscribeType(), 0);
        QCOMPARE(link.sent[0].getStr(ReqElementDbName), "user");
        QCOMPARE(link.sent[1].command(0).subscribeType(), 0);
        QCOMPARE(link.sent[2].command(0).subscribeType(), 65535);
        QCOMPARE(link.sent[2].getStr(ReqElementDbName), "office");
        QCOMPARE(link.sent[0].getStr(ReqElementToken), link.sent[2].getStr(ReqElementToken));
        // The pending query is forgotten: its answer no longer finds it.
        QVERIFY(!link.db.getQuery(queryToken));
        delete q;
        QCOMPARE(link.db.table("a"), a);

        // Disconnected, a new name only cancels.
        link.db.setConnected(false);
        link.sent.clear();
        QTest::ignoreMessage(QtDebugMsg, "Database name changed to 'user'");
        link.db.setDbName("user");
        QCOMPARE(link.sent.size(), 2);
    }

    void tableNames()
    {
        Link link;
        QSignalSpy names(&link.db, &CTavoDb::updatedTableNames);
        link.db.updateTableNames();
        const CTJDbReq req = link.sent.last();
        QCOMPARE(req.getStr(ReqElementSql), "SELECT name FROM sqlite_master WHERE type='table';");
        const QString token = QString::fromUtf8(req.getStr(ReqElementToken));
        link.answer(dbResponse(token, NotificationSync, {"name"}, {{"contacts"}, {"calls"}}, 3));
        link.answer(dbResponse(token, NotificationSync, {"name"}, {{"settings"}}, 3, 2));
        QCOMPARE(names.count(), 2);
        QCOMPARE(link.db.tables(), (QStringList{"contacts", "calls", "settings"}));
        // A new answer starts the list anew.
        link.answer(dbResponse(token, NotificationSync, {"name"}, {{"only"}}));
        QCOMPARE(names.last().at(0).toStringList(), QStringList{"only"});
    }

    void queriesAndTheirAnswers()
    {
        Link link;
        QPointer<CTavoDbQuery> q = new CTavoDbQuery("SELECT rowid, name FROM contacts");
        link.db.execute(*q);
        CTJDbReq req = link.sent.last();
        QCOMPARE(req.getStr(ReqElementSql), "SELECT rowid, name FROM contacts");
        QCOMPARE(req.numOfCommands(), 0);
        const QString token = QString::fromUtf8(req.getStr(ReqElementToken));
        const QUuid uuid(token);

        // In two batches: the entry stays until the last one.
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 2 rows and 2 columns");
        link.answer(dbResponse(token, NotificationSync, {"rowid", "name"}, contactRows(1, 2), 3));
        QCOMPARE(link.db.getQuery(uuid), q.data());
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 1 rows and 2 columns");
        link.answer(dbResponse(token, NotificationSync, {"rowid", "name"}, contactRows(3, 3), 3, 2));
        QVERIFY(!link.db.getQuery(uuid));
        QCOMPARE(q->rowCount(), 3);
        // Once complete, an answer under the token is unknown.
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("unavailability of token"));
        link.answer(dbResponse(token, NotificationSync, {"rowid"}, {}));

        // Run again under its old token.
        link.db.execute(uuid, q->query());
        QCOMPARE(QString::fromUtf8(link.sent.last().getStr(ReqElementToken)), token);

        // Deleted before the answer: the answer is dropped, the entry goes when it is complete.
        link.db.execute(*q);
        const QString second = QString::fromUtf8(link.sent.last().getStr(ReqElementToken));
        link.db.deleteQuery(*q);
        QVERIFY(q.isNull());
        link.answer(dbResponse(second, NotificationSync, {"rowid", "name"}, contactRows(1, 1), 2));
        link.answer(dbResponse(second, NotificationSync, {"rowid", "name"}, contactRows(2, 2), 2, 1));
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("unavailability of token"));
        link.answer(dbResponse(second, NotificationSync, {"rowid", "name"}, contactRows(2, 2), 2, 1));

        // Deleted from its own signal while the answer is applied: after updateData returns.
        QPointer<CTavoDbQuery> own = new CTavoDbQuery("SELECT 1");
        link.db.execute(*own);
        const QString third = QString::fromUtf8(link.sent.last().getStr(ReqElementToken));
        connect(own.data(), &QAbstractItemModel::rowsInserted, this, [&] { link.db.deleteQuery(*own); });
        QTest::ignoreMessage(QtDebugMsg, "Synchronizing table with 1 rows and 1 columns");
        link.answer(dbResponse(third, NotificationSync, {"x"}, {{"1"}}));
        QVERIFY(own);
        QTRY_VERIFY(own.isNull());

        // A failed query ends without touching the model.
        QPointer<CTavoDbQuery> bad = new CTavoDbQuery("SELEC");
        link.db.execute(*bad);
        const QString fourth = QString::fromUtf8(link.sent.last().getStr(ReqElementToken));
        CTJDbResp failed;
        failed.set(ReqElementToken, fourth.toUtf8().constData());
        failed.set(ReqElementError, "near \"SELEC\": syntax error");
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("failed: near \"SELEC\": syntax error$"));
        link.answer(failed);
        QVERIFY(!link.db.getQuery(QUuid(fourth)));
        link.db.deleteQuery(*bad);

        // Queries still waiting and all tables go with the link.
        QPointer<CTavoDbQuery> waiting = new CTavoDbQuery("SELECT 2");
        QPointer<CTavoDbTable> table;
        {
            Link other;
            other.db.setConnected(true);
            table = other.db.subscribeToTable("t");
            other.db.execute(*waiting);
        }
        QVERIFY(waiting.isNull() && table.isNull());
    }
};

QTEST_GUILESS_MAIN(TestDb)
#include "tst_db.moc"
