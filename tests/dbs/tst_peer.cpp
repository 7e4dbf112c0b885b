// The database peer as the GUI meets it: tgui-core, tgui-dbs and a layout
// manager as real parts on loopback, a real SQLite file written by the peer,
// by the sqlite3 program and by a second connection of the test. Subscribing,
// resynchronisation in batches, each notification kind, other processes'
// writes, the peer restarting, bad requests, the command line and the core
// starting the peer from a scenario.
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>
#include <sqlite3.h>

#include "CTJDbReq.h"
#include "GuiProfile.h"
#include "ProgramProcess.h"
#include "core/TavoGlobals.h"
#include "data/CTavoDb.h"
#include "layout/CTavoLayoutMgr.h"

namespace {
// Runs SQL on the file through a connection of this process.
bool exec(const QString& path, const QString& sql)
{
    sqlite3* db = nullptr;
    bool ok = sqlite3_open(QFile::encodeName(path).constData(), &db) == SQLITE_OK;
    char* error = nullptr;
    sqlite3_busy_timeout(db, 5000);
    ok = ok && sqlite3_exec(db, sql.toUtf8().constData(), nullptr, nullptr, &error) == SQLITE_OK;
    if (error)
        qWarning("sqlite: %s", error);
    sqlite3_free(error);
    sqlite3_close(db);
    return ok;
}

// The rows of a query, each row's cells joined by '|'.
QStringList rowsOf(const QString& path, const QString& sql)
{
    sqlite3* db = nullptr;
    QStringList rows;
    sqlite3_open(QFile::encodeName(path).constData(), &db);
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(db, sql.toUtf8().constData(), -1, &stmt, nullptr) == SQLITE_OK) {
        while (sqlite3_step(stmt) == SQLITE_ROW) {
            QStringList cells;
            for (int c = 0; c < sqlite3_column_count(stmt); ++c)
                cells.append(QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(stmt, c))));
            rows.append(cells.join('|'));
        }
    }
    sqlite3_finalize(stmt);
    sqlite3_close(db);
    return rows;
}

QStringList rowsOf(const CTavoDbTable& table)
{
    QStringList rows;
    for (int r = 0; r < table.rowCount(); ++r) {
        QStringList cells;
        for (const QVariant& v : table.record(r))
            cells.append(v.toString());
        rows.append(cells.join('|'));
    }
    std::sort(rows.begin(), rows.end(), [](const QString& a, const QString& b) {
        return a.section('|', 0, 0).toLongLong() < b.section('|', 0, 0).toLongLong();
    });
    return rows;
}

// The sqlite3 program: another process writing to the file.
bool sqliteProgram(const QString& path, const QString& sql)
{
    QProcess p;
    p.start(QStringLiteral("sqlite3"), {"-cmd", ".timeout 5000", path, sql});
    return p.waitForFinished(10000) && p.exitCode() == 0 && p.readAllStandardError().isEmpty();
}
}  // namespace

class TestDbsPeer : public QObject
{
    Q_OBJECT

    GuiProfile m_profile;
    QString m_db;
    std::unique_ptr<ProgramProcess> m_core;
    quint16 m_port = 0;
    CTavoLayoutMgr* m_mgr = nullptr;

    std::unique_ptr<ProgramProcess> startDbs(const QStringList& extra = {})
    {
        return std::make_unique<ProgramProcess>(
            "tgui-dbs", QStringList{"--port", QString::number(m_port), "--poll-interval", "50"} + extra + QStringList{m_db});
    }

    // The GUI side: a layout manager whose link to "dbs" is its CTavoDb.
    CTavoDb& gui()
    {
        if (!m_mgr)
            m_mgr = new CTavoLayoutMgr;
        return m_mgr->db();
    }

    CTavoDbTable* subscribed(const QString& name, int rows)
    {
        CTavoDb& db = gui();
        if (!QTest::qWaitFor([&] { return db.isConnected(); }, 15000))
            return nullptr;
        CTavoDbTable* table = db.subscribeToTable(name);
        if (table && !QTest::qWaitFor([&] { return table->rowCount() == rows; }, 10000))
            qWarning("%s has %d rows, not %d", qPrintable(name), table->rowCount(), rows);
        return table;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_profile.make());
    }

    void init()
    {
        bRebootInitiated = false;
        m_core = std::make_unique<ProgramProcess>("tgui-core", QStringList{"--port", "0", "--listen", "127.0.0.1"});
        m_port = m_core->listeningPort();
        QVERIFY(m_port && m_profile.enter(m_port));

        m_db = m_profile.filePath(QString("%1.db").arg(QTest::currentTestFunction()));
        QFile::remove(m_db);
        QString sql = "CREATE TABLE contacts(id INTEGER PRIMARY KEY, name TEXT, number TEXT);"
                      "CREATE TABLE calls(number TEXT, at TEXT);BEGIN;";
        for (int i = 1; i <= 250; ++i)
            sql += QString("INSERT INTO contacts(name, number) VALUES('name %1', '+41 44 %1');").arg(i);
        sql += "INSERT INTO calls VALUES('+1', 'monday'), (NULL, 'tuesday');COMMIT;";
        QVERIFY(exec(m_db, sql));
    }

    void cleanup()
    {
        deleteManager(m_mgr);
        m_core.reset();
        m_profile.leave();
    }

    void subscriptionBatchesAndNotifications()
    {
        auto dbs = startDbs({"--batch-size", "100"});
        CTavoDbTable* contacts = subscribed("contacts", 250);
        QVERIFY(contacts);
        QSignalSpy inserted(contacts, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(contacts, &QAbstractItemModel::rowsRemoved);
        QSignalSpy changed(contacts, &QAbstractItemModel::dataChanged);
        // An INTEGER PRIMARY KEY gives "OID" its own name; the peer names it "rowid".
        QStringList header;
        for (int c = 0; c < contacts->columnCount(); ++c)
            header.append(contacts->headerData(c, Qt::Horizontal).toString());
        QCOMPARE(header, (QStringList{"rowid", "id", "name", "number"}));
        QCOMPARE(rowsOf(*contacts), rowsOf(m_db, "SELECT OID, * FROM contacts"));
        QVERIFY(dbs->err().contains("tgui-dbs: zedagui subscribes to user.contacts as {"));

        // Each notification kind, caused by the GUI's own requests.
        CTavoDb& db = gui();
        db.query("w1", "INSERT INTO contacts(name, number) VALUES('Zoe', '1')");
        QTRY_COMPARE(contacts->rowCount(), 251);
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(contacts->valueByRowId(251, 2).toString(), QStringLiteral("Zoe"));
        db.query("w2", "UPDATE contacts SET number = '2' WHERE name = 'Zoe'");
        QTRY_COMPARE(contacts->valueByRowId(251, 3).toString(), QStringLiteral("2"));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.last().at(0).toModelIndex().row(), 250);
        db.query("w3", "DELETE FROM contacts WHERE id IN (1, 2)");
        QTRY_COMPARE(contacts->rowCount(), 249);
        QCOMPARE(removed.count(), 2);
        QCOMPARE(contacts->rowIndex(1), -1);

        // A transaction's rows arrive with its commit, together; a rollback sends nothing.
        db.query("w4", "BEGIN; INSERT INTO contacts(name) VALUES('a'); INSERT INTO contacts(name) VALUES('b')");
        QTest::qWait(300);
        QCOMPARE(contacts->rowCount(), 249);
        db.query("w5", "COMMIT");
        QTRY_COMPARE(contacts->rowCount(), 251);
        QCOMPARE(inserted.count(), 2);
        db.query("w6", "BEGIN; DELETE FROM contacts; ROLLBACK");
        db.query("w7", "UPDATE contacts SET name = name");
        QTRY_COMPARE(changed.count(), 252);
        QCOMPARE(contacts->rowCount(), 251);
        QCOMPARE(rowsOf(*contacts), rowsOf(m_db, "SELECT OID, * FROM contacts"));

        // A query answered in three batches, and a table without its own row id column.
        QPointer<CTavoDbQuery> query = new CTavoDbQuery("SELECT name FROM contacts ORDER BY id");
        db.execute(*query);
        QTRY_COMPARE(query->rowCount(), 251);
        QCOMPARE(query->data(query->index(250, 0)).toString(), QStringLiteral("b"));
        db.deleteQuery(*query);
        CTavoDbTable* calls = subscribed("calls", 2);
        QVERIFY(calls);
        QCOMPARE(calls->rowIdColumn(), 0);
        QVERIFY(calls->valueByRowId(2, 1).toString().isNull());
        db.query("w8", "INSERT INTO calls VALUES('+2', 'friday')");
        QTRY_COMPARE(calls->rowCount(), 3);
        // Emptied in one step, which SQLite does not report row by row: the table comes whole.
        db.query("w9", "DELETE FROM calls");
        QTRY_COMPARE(calls->rowCount(), 0);
        db.query("w10", "INSERT OR REPLACE INTO contacts(id, name) VALUES(3, 'replaced')");
        // REPLACE deleted the old row unseen: the table comes whole, in batches.
        QTRY_VERIFY(contacts->valueByRowId(3, 2).toString() == QStringLiteral("replaced")
                    && contacts->rowCount() == 251);
        QCOMPARE(dbs->stop(), 0);
    }

    void writesOfOtherProcesses()
    {
        auto dbs = startDbs({"--batch-size", "64"});
        CTavoDbTable* contacts = subscribed("contacts", 250);
        QVERIFY(contacts);
        CTavoDbTable* calls = subscribed("calls", 2);
        QVERIFY(calls);
        QSignalSpy inserted(contacts, &QAbstractItemModel::rowsInserted);

        // The sqlite3 program writes: the whole table comes again, in batches.
        QVERIFY(sqliteProgram(m_db, "BEGIN; INSERT INTO contacts(name) VALUES('from the shell'); DELETE FROM contacts WHERE id < 11; COMMIT;"));
        QTRY_COMPARE(contacts->rowCount(), 241);
        QCOMPARE(inserted.count(), 4);
        QCOMPARE(rowsOf(*contacts), rowsOf(m_db, "SELECT OID, * FROM contacts"));
        QTRY_VERIFY(dbs->err().contains("tgui-dbs: user was changed by another process"));

        // A second connection of this process, and a table that disappears.
        QSignalSpy empty(calls, &CTavoDbTable::tableIsEmpty);
        // One transaction: one change for the peer to see, so the table empties once.
        QVERIFY(exec(m_db, "BEGIN; UPDATE contacts SET number = 'x' WHERE id = 20; DROP TABLE calls; COMMIT;"));
        QTRY_COMPARE(contacts->valueByRowId(20, 3).toString(), QStringLiteral("x"));
        QTRY_COMPARE(empty.count(), 1);
        QCOMPARE(calls->rowCount(), 0);
        // It comes back: so do its rows, to the same subscription.
        QVERIFY(sqliteProgram(m_db, "CREATE TABLE calls(number TEXT); INSERT INTO calls VALUES('+3');"));
        QTRY_COMPARE(calls->rowCount(), 1);
        QCOMPARE(calls->columnCount(), 2);
        // A schema change by the GUI's own request brings the new header.
        gui().query("alter", "ALTER TABLE contacts ADD COLUMN email TEXT");
        QTRY_VERIFY(contacts->columnCount() == 5 && contacts->rowCount() == 241);
        QCOMPARE(dbs->stop(), 0);
    }

    void thePeerRestarts()
    {
        auto dbs = startDbs();
        CTavoDbTable* contacts = subscribed("contacts", 250);
        QVERIFY(contacts);
        QCOMPARE(dbs->stop(), 0);
        QVERIFY(dbs->err().contains("tgui-dbs: stopping"));
        // The cached rows stay while "dbs" is away.
        QTRY_VERIFY(!gui().isConnected());
        QCOMPARE(contacts->rowCount(), 250);
        QVERIFY(sqliteProgram(m_db, "DELETE FROM contacts WHERE id > 100; UPDATE contacts SET name = 'renamed' WHERE id = 5;"));
        QTest::qWait(200);
        QCOMPARE(contacts->rowCount(), 250);

        // Back again: the subscription is renewed and brings what changed meanwhile.
        dbs = startDbs();
        QTRY_VERIFY_WITH_TIMEOUT(gui().isConnected(), 15000);
        QTRY_COMPARE(contacts->rowCount(), 100);
        QCOMPARE(contacts->valueByRowId(5, 2).toString(), QStringLiteral("renamed"));
        QCOMPARE(gui().table("contacts"), contacts);
        // And its notifications flow to the renewed subscription.
        gui().query("w", "DELETE FROM contacts WHERE id = 7");
        QTRY_COMPARE(contacts->rowCount(), 99);
        QCOMPARE(dbs->stop(), 0);
    }

    void badRequestsAreSurvived()
    {
        auto dbs = startDbs({"--query-timeout", "300"});
        CTavoDbTable* contacts = subscribed("contacts", 250);
        QVERIFY(contacts);
        CTavoDb& db = gui();
        tavoToolSendAppMsg("garbage", GuiAppsDbs, GuiAppsMsgDb, false);
        tavoToolSendAppMsg("TJDB/1 request\n4=%zz", GuiAppsDbs, GuiAppsMsgDb, false);
        tavoToolSendAppMsg("TJDB/1 request\n2=x\n3=nosuchdb\n4=SELECT 1", GuiAppsDbs, GuiAppsMsgDb, false);
        db.query("e1", "SELEC nothing");
        db.query("e2", "SELECT * FROM nowhere");
        db.query("e3", "");
        db.query("e4", "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c) SELECT count(*) FROM c");
        // A subscription to a table that does not exist yet gets it once it is made.
        CTavoDbTable* later = db.subscribeToTable("later");
        QVERIFY(later);
        db.query("e5", "CREATE TABLE later(a); INSERT INTO later VALUES('one')");
        QTRY_COMPARE(later->rowCount(), 1);
        QCOMPARE(later->rowIdColumn(), 0);
        QSignalSpy laterEmpty(later, &CTavoDbTable::tableIsEmpty);
        db.query("e6", "DROP TABLE later");
        QTRY_COMPARE(laterEmpty.count(), 1);
        QCOMPARE(later->rowCount(), 0);

        const QStringList expected = {
            "tgui-dbs: unreadable request of 7 bytes from zedagui: not a TJDB/1 request message",
            "tgui-dbs: unreadable request of 20 bytes from zedagui: bad escape in element 4",
            "tgui-dbs: zedagui asks for database 'nosuchdb', which is not served",
            "tgui-dbs: request e1 of zedagui failed: near \"SELEC\": syntax error",
            "tgui-dbs: request e2 of zedagui failed: no such table: nowhere",
            "tgui-dbs: request e4 of zedagui failed: interrupted",
        };
        for (const QString& line : expected)
            QTRY_VERIFY2_WITH_TIMEOUT(dbs->err().contains(line), qPrintable(line), 15000);
        // Nothing of it touched the cached table, and the peer still answers.
        QCOMPARE(contacts->rowCount(), 250);
        db.query("ok", "DELETE FROM contacts WHERE id = 250");
        QTRY_COMPARE(contacts->rowCount(), 249);
        QCOMPARE(dbs->stop(), 0);
    }

    void unusableDatabases_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("text");
        QTest::newRow("missing file") << QStringList{"missing.db"} << 1
                                      << "tgui-dbs: cannot open database user (missing.db): no such file";
        QTest::newRow("not a database") << QStringList{"office=qt.conf"} << 1
                                        << "tgui-dbs: cannot open database office (qt.conf): file is not a database";
        QTest::newRow("bad init script") << QStringList{"--init", "qt.conf", "new.db"} << 1 << "cannot run qt.conf on new.db";
    }

    void unusableDatabases()
    {
        QFETCH(QStringList, args);
        QFETCH(QString, text);
        ProgramProcess dbs("tgui-dbs", args);
        QVERIFY(dbs.process.waitForFinished(10000));
        QTEST(dbs.process.exitCode(), "code");
        QVERIFY2((dbs.out() + dbs.err()).contains(text), qPrintable(dbs.out() + dbs.err()));
        QVERIFY(!QFile::exists("missing.db"));
    }

    void initScriptAndStopWhileAlone()
    {
        QFile script("seed.sql");
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("CREATE TABLE t(a); INSERT INTO t VALUES (1), (2);");
        script.close();
        // No core on this port: the peer keeps trying, and still stops cleanly.
        m_core.reset();
        ProgramProcess dbs("tgui-dbs", {"--port", QString::number(m_port), "--init", "seed.sql", "fresh.db"});
        QTRY_VERIFY(dbs.err().contains("made from the init script"));
        QCOMPARE(rowsOf("fresh.db", "SELECT a FROM t"), (QStringList{"1", "2"}));
        QCOMPARE(dbs.stop(), 0);
        // A second start leaves the tables it finds alone.
        QVERIFY(exec("fresh.db", "DELETE FROM t"));
        ProgramProcess again("tgui-dbs", {"--port", QString::number(m_port), "--init", "seed.sql", "fresh.db"});
        QTRY_VERIFY(again.err().contains("tgui-dbs: serving user from"));
        QCOMPARE(again.stop(), 0);
        QVERIFY(rowsOf("fresh.db", "SELECT a FROM t").isEmpty());
    }

    void theCoreStartsThePeerForAScenario()
    {
        QFile scenario("db.txt");
        QVERIFY(scenario.open(QIODevice::WriteOnly));
        scenario.write("start dbs --batch-size 1000 " + m_db.toUtf8() + "\nwait dbs 20000\n"
                       "senddb dbs TJDB/1 request;2=scenario-1;3=user;4=SELECT count(*) AS n FROM contacts\n"
                       "expect 2=scenario-1\n"
                       "senddb dbs TJDB/1 request;2=scenario-2;4=INSERT INTO calls VALUES('+9', 'now')\n"
                       "expect 2=scenario-2\nquit 0\n");
        scenario.close();
        ProgramProcess core("tgui-core", {"--port", "0", "--listen", "127.0.0.1", "--scenario", "db.txt", "--programs", qEnvironmentVariable("TGUI_BIN_DIR", TGUI_BIN_DIR)});
        QVERIFY(core.process.waitForFinished(30000));
        QCOMPARE(core.process.exitCode(), 0);
        const QString out = core.out();
        QVERIFY2(out.contains("REGISTER dbs"), qPrintable(out));
        QVERIFY(out.contains("EVENT dbs type=1 TJDB/1 response\\n2=scenario-1\\n3=user\\n10=1\\n11=0\\n12=0\\n14=-1\\n"));
        QVERIFY(out.contains("columns=n\\nrow=250\\n"));
        QVERIFY(out.contains("2=scenario-2\\n3=user\\n10=0\\n11=0\\n12=-1\\n14=-1\\n18=1\\n"));
        QCOMPARE(rowsOf(m_db, "SELECT count(*) FROM calls"), QStringList{"3"});
        // The peer it started stops with it.
        const QRegularExpressionMatch pid = QRegularExpression("SCENARIO started tgui-dbs pid=(\\d+)").match(out);
        QVERIFY(pid.hasMatch());
        QTRY_VERIFY(!QFile::exists("/proc/" + pid.captured(1) + "/cmdline"));
    }
};

QTEST_MAIN(TestDbsPeer)
#include "tst_peer.moc"
