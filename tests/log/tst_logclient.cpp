// The log client and guiLog against a real queue and a real shared
// configuration segment, read back the way the log server reads them.
#include <QTemporaryFile>
#include <QtTest>
#include <memory>
#include <sys/resource.h>
#include <thread>

#include "LogTestSupport.h"
#include "log/CTavoGuiLog.h"
#include "log/GuiLog.h"
#include "log/UtilLog.h"
#include "log/UtilLogC.h"

using namespace logtest;

namespace {
QStringList console;
QStringList consoleCategories;  // "category type" of each console line
void toConsole(QtMsgType type, const QMessageLogContext& context, const QString& msg)
{
    console << msg;
    consoleCategories << QString("%1 %2").arg(context.category).arg(int(type));
}

void logLimited(UtilLogC& client, UtilLogRateLimiterT* limiter, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    client.vlog(4, format, args, limiter);
    va_end(args);
}
}  // namespace

class TestLogClient : public QObject
{
    Q_OBJECT
    Receiver* receiver = nullptr;

private slots:
    void initTestCase()
    {
        useRunNames("client");
        receiver = new Receiver;
        QVERIFY(receiver->queue);
        qInstallMessageHandler(toConsole);
    }
    void cleanupTestCase()
    {
        qInstallMessageHandler(nullptr);
        utilLogDestroy();
        delete receiver;
        utilLogSharedConfigRemove();
    }
    void init()
    {
        receiver->drain();
        console.clear();
        consoleCategories.clear();
    }

    void guiLogWithoutClientGoesToConsole()
    {
        guiLog(3, "%s Connected to %s:%d", "zedagui", "127.0.0.1", 10010);
        guiLogRaw(2, "100% raw %s");
        const QByteArray big(20000, 'x');
        guiLog(5, "%s", big.constData());
        guiLogRaw(5, big.constData());
        guiLogRaw(2, nullptr);
        QCOMPARE(console, QStringList({"zedagui Connected to 127.0.0.1:10010", "100% raw %s",
                                       QString(16383, 'x'), QString(16383, 'x')}));
        // Debug messages of the category "tgui": a host filters them by rule.
        const QString debugOfTgui = QString("tgui %1").arg(int(QtDebugMsg));
        QCOMPARE(consoleCategories, QStringList({debugOfTgui, debugOfTgui, debugOfTgui, debugOfTgui}));
        QLoggingCategory::setFilterRules("tgui.debug=false");
        guiLog(5, "filtered out");
        guiLogRaw(5, "filtered out");
        QLoggingCategory::setFilterRules(QString());
        guiLog(5, "back");
        QCOMPARE(console.mid(4), QStringList({"back"}));

        // A name outside the table gives no client, even with the link up.
        CTavoGuiLog log("zedagui", 0, true);
        QCOMPARE(CTavoGuiLog::getActiveLevel(), 7);
        hostGuiLog = &log;
        CTavoGuiLog::m_bEnabled = true;
        guiLog(5, "still to the console");
        hostGuiLog = nullptr;
        CTavoGuiLog::m_bEnabled = false;
        QCOMPARE(console.last(), QString("still to the console"));
        QVERIFY(receiver->drain().isEmpty());
    }

    void guiLogToQueueOnlyWhileEnabled()
    {
        for (const char* name : {"tgui", "brow", "osd", "pdc", "ec", "dbs", "qml", "em"}) {
            CTavoGuiLog log(name, 3, true);
            QCOMPARE(CTavoGuiLog::getActiveLevel(), 4);
            const QVector<QByteArray> records = receiver->drain();
            QCOMPARE(QByteArray(asText(records.value(0)).label), QByteArray(name));
            QCOMPARE(utilLogGet()->getInstance(), 0);
        }
        CTavoGuiLog log("tgui", 0, false);
        hostGuiLog = &log;
        for (bool enabled : {false, true, false}) {
            CTavoGuiLog::m_bEnabled = enabled;
            guiLog(5, "linked %d", int(enabled));
            guiLog(3, "below the level");
            guiLog(7, "never sent");
            guiLog(8, "always sent");
            guiLogRaw(4, "raw one\r\nraw two");
        }
        hostGuiLog = nullptr;
        CTavoGuiLog::m_bEnabled = false;
        const QStringList all = {"below the level", "never sent", "always sent", "raw one\r\nraw two"};
        QCOMPARE(console, QStringList({"linked 0"}) + all + QStringList({"linked 0"}) + all);
        QCOMPARE(texts(receiver->drain()),
                 QStringList({"linked 1", "always sent", "raw one", "raw two"}));
    }

    void recordAsReceived()
    {
        const uint32_t before = (uint32_t)time(nullptr);
        UtilLogC client("toolong", 0, 4, true);
        client.log(5, "call %d to %s", 42, "Bob");
        const QByteArray big(600, 'x');
        client.log(5, "%s", big.constData());
        const QVector<QByteArray> records = receiver->drain();
        QCOMPARE(records.size(), 4);
        QCOMPARE(texts(records), QStringList({"Initial log entry. Current logging level 4",
                                              "Truncating label from toolong", "call 42 to Bob",
                                              QString(512, 'x')}));
        for (int i = 0; i < records.size(); ++i) {
            const utilLogMsg msg = asText(records[i]);
            QCOMPARE(records[i].size(), 548);
            QCOMPARE(msg.type, 1u);
            QCOMPARE(msg.size, uint32_t(36 + strlen(msg.text)));
            QCOMPARE(msg.level, QVector<int>({8, 5, 5, 5})[i]);
            QCOMPARE(QByteArray(msg.label, 6), QByteArray("toolo\0", 6));
            QVERIFY(msg.time >= before && msg.time <= before + 5);
            QVERIFY(msg.tick - asText(records[0]).tick < 5000);  // ms
        }
    }

    void levelFilter_data()
    {
        QTest::addColumn<int>("active");
        QTest::addColumn<QStringList>("sent");
        QTest::newRow("4") << 4 << QStringList({"4", "5", "6", "8"});
        QTest::newRow("0") << 0 << QStringList({"0", "1", "2", "3", "4", "5", "6", "8"});
        QTest::newRow("7: all off but 8") << 7 << QStringList({"8"});
    }
    void levelFilter()
    {
        QFETCH(int, active);
        UtilLogC client("tgui", 0, 4, false);
        client.setLevel(active);
        client.setLevel(12);  // refused
        QCOMPARE(client.getActiveLevel(), active);
        for (int level = -1; level <= 9; ++level)
            client.log(level, "%d", level);
        QTEST(texts(receiver->drain()), "sent");
    }

    void sharedLevelTakesEffectAtNextMessage()
    {
        QCOMPARE(utilLogSharedConfigInit(), 0);
        UtilLogC client("pdc", 1, 4, false);
        UtilLogC other("pdc", 2, 4, false);
        client.log(2, "before");
        QCOMPARE(utilLogSharedConfigActiveLevelSet("pdc", 1, 2), 0);
        QCOMPARE((QList<int>{utilLogSharedConfigActiveLevelGet("pdc", 1), utilLogSharedConfigActiveLevelGet("pdc", 9),
                             client.getActiveLevel()}),
                 (QList<int>{2, -1, 4}));
        client.log(2, "after");
        other.log(2, "other instance");
        QCOMPARE(client.getActiveLevel(), 2);
        // A local change stands until the segment changes again.
        client.setLevel(5);
        client.log(3, "hidden");
        QCOMPARE(utilLogSharedConfigActiveLevelSet("pdc", 1, 3), 0);
        client.log(3, "shown");
        // The initial entry names the level the client was made with.
        UtilLogC late("pdc", 1, 4, true);
        QCOMPARE(late.getActiveLevel(), 3);
        QCOMPARE(texts(receiver->drain()),
                 QStringList({"after", "shown", "Initial log entry. Current logging level 4"}));
    }

    void segmentWithWrongMagicIsIgnored()
    {
        QCOMPARE(utilLogSharedConfigInit(), 0);
        UtilLogSharedConfigT* config = utilLogSharedConfigGet();
        UtilLogC attached("ec", 1, 4, false);
        attached.log(4, "attached");
        config->magic = 0xdeadbeef;
        QCOMPARE(utilLogSharedConfigActiveLevelSet("ec", 0, 0), 0);
        QCOMPARE(utilLogSharedConfigActiveLevelSet("ec", 1, 0), 0);
        UtilLogC fresh("ec", 0, 4, false);
        attached.log(0, "detailed 1");
        fresh.log(0, "detailed 0");
        fresh.log(4, "normal");
        config->magic = UTIL_LOG_SHARED_MAGIC;
        attached.log(0, "magic back");
        QCOMPARE(texts(receiver->drain()), QStringList({"attached", "normal", "magic back"}));
    }

    void statisticsRecords()
    {
        QVERIFY(utilLogSharedConfigEntryAdd("qml", 0, 4, true) >= 0);
        UtilLogC client("qml", 0, 4, false);
        client.log(5, "first");  // switches statistics on and counts
        client.log(1, "filtered but counted");
        QTest::qWait(1100);
        client.log(3, "after a second");
        QVector<QByteArray> records = receiver->drain();
        QCOMPARE(records.size(), 2);  // "first" and the statistics; 3 is below the level
        utilLogStatsMsg stats;
        memcpy(&stats, records[1].constData(), sizeof stats);
        QVERIFY(records[1].size() == 208 && stats.type == 9 && stats.size == 208);
        QCOMPARE(QByteArray(stats.label), QByteArray("qml"));
        QVERIFY(stats.elapsedMs >= 1000 && stats.elapsedMs < 5000);
        // Levels 0..1 saw three messages, 2..3 two, 4..5 one, above none.
        const uint32_t expected[9] = {3, 3, 2, 2, 1, 1, 0, 0, 0};
        for (int lv = 0; lv < 9; ++lv) {
            QCOMPARE(stats.counters[lv][UTIL_LOG_STAT_COUNT], expected[lv]);
            QCOMPARE(stats.counters[lv][UTIL_LOG_STAT_RATE],
                     uint32_t(expected[lv] * 1000ull / stats.elapsedMs));
            // 1000 ms lower every decaying count far below zero: clamped.
            QCOMPARE(stats.counters[lv][UTIL_LOG_STAT_DECAY1], 0u);
        }
        QVERIFY(utilLogSharedConfigEntryAdd("qml", 0, 4, false) >= 0);
        client.log(5, "off again");
        QVERIFY(!client.isStatsEnabled());
    }

    void rateLimiterReportsDrops()
    {
        UtilLogC client("brow", 0, 4, false);
        UtilLogRateLimiterT limiter;
        utilLogRateLimiterInit(&limiter, 200, 60);
        for (const char* text : {"first", "dropped 1", "dropped 2"})
            logLimited(client, &limiter, "%s", text);
        QTest::qWait(250);
        logLimited(client, &limiter, "next");
        // A text at the limit keeps its 512 characters and loses the note.
        logLimited(client, &limiter, "dropped");
        QTest::qWait(250);
        logLimited(client, &limiter, "%s", QByteArray(600, 'y').constData());
        QCOMPARE(texts(receiver->drain()),
                 QStringList({"first", "next MessagesMissed:2", QString(512, 'y')}));
    }

    void rawHexFormattedAndFileLines()
    {
        UtilLogC client("osd", 0, 4, false);
        client.logRawData(4, "one\r\ntwo\nthree\r\n\nfour", -1);
        client.logRawData(2, "below the level", -1);
        const QByteArray long1000(1000, 'z');
        client.logFormatLine(5, long1000.constData(), long1000.size(), 4);
        QStringList got = texts(receiver->drain());  // the queue may hold only 10
        const unsigned char bytes[] = {0x00, 0x7f, 0xff};
        client.logHexData(4, bytes, sizeof bytes);
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write("alpha\nbeta\r\n");
        file.flush();
        client.logFile(4, file.fileName().toLocal8Bit().constData());
        client.logFile(4, "/nonexistent/file.txt");
        QCOMPARE(got + texts(receiver->drain()),
                 QStringList({"one", "two", "three", "", "four", "    " + QString(508, 'z'),
                              "    " + QString(492, 'z'), " 00 7f ff", "alpha", "beta",
                              "logFile: failed to open /nonexistent/file.txt"}));
    }

    void flatInterface()
    {
        utilLogDestroy();
        QCOMPARE(utilLogActiveLevelGet(), 7);
        QCOMPARE(utilLogLevelSet(3), -1);  // no client yet
        const QByteArray refused = captureStdout([] {
            for (const char* label : {"", static_cast<const char*>(nullptr)})
                QCOMPARE(utilLogCreate(label, 0, 4, false), -1);
            QCOMPARE(utilLogCreate("em", 0, 7, false), -1);
        });
        QCOMPARE(refused, QByteArray("UtilLogCreate: Invalid parameters.\n").repeated(3));
        QCOMPARE(utilLogCreate("em", 0, 4, false), 0);
        utilLog(4, "flat %s", "call");
        utilLogRawData(5, "raw\nlines", -1);
        QCOMPARE(texts(receiver->drain()), QStringList({"flat call", "raw", "lines"}));
        QVERIFY(utilLogLevelSetFromParam("2") == 0 && utilLogActiveLevelGet() == 2);
        for (const char* bad : {"x", "9", static_cast<const char*>(nullptr)})
            QCOMPARE(utilLogLevelSetFromParam(bad), -1);
        char text[8];
        QVERIFY(utilLogLevelSetCallback("3") == 0 && utilLogLevelGetCallback(text, sizeof text) == 0);
        QCOMPARE(QByteArray(text), QByteArray("3"));
    }

    void threadsShareOneClient()
    {
        UtilLogC client("tgui", 0, 0, false);
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&client, t] {
                for (int i = 0; i < 200; ++i)
                    client.log(4, "thread %d message %d", t, i);
            });
        }
        QStringList got;
        for (int round = 0; round < 2000 && got.size() < 800; ++round, QThread::usleep(100))
            got += texts(receiver->drain());
        for (std::thread& thread : threads)
            thread.join();
        // Every record that arrived is whole; the rest were counted as missed.
        got += texts(receiver->drain());
        QVERIFY(!got.isEmpty());
        QCOMPARE(got.filter(QRegularExpression("^thread \\d message \\d+$")), got);
    }

    void withoutServerToStandardOutput()
    {
        // No queue of that name and no room to make one: the client stays unconnected.
        delete receiver;
        receiver = nullptr;
        struct rlimit saved, none;
        QCOMPARE(getrlimit(RLIMIT_MSGQUEUE, &saved), 0);
        none = saved;
        none.rlim_cur = 0;
        std::unique_ptr<UtilLogC> client;
        UtilLogRateLimiterT limiter;
        utilLogRateLimiterInit(&limiter, 200, 60);
        const QByteArray out = captureStdout([&] {
            setrlimit(RLIMIT_MSGQUEUE, &none);
            client.reset(new UtilLogC("ec", 0, 4, true));
            setrlimit(RLIMIT_MSGQUEUE, &saved);
            for (int level = 0; level <= 9; ++level)
                client->log(level, "level %d", level);
            for (const char* text : {"first", "dropped 1", "dropped 2"})
                logLimited(*client, &limiter, "%s", text);
            QTest::qWait(250);
            logLimited(*client, &limiter, "next");
        });
        QVERIFY(!client->isConnected());
        QVERIFY2(out.endsWith("rtosProtMsgQOpen TX failed \nConnection to log server failed\n"
                              "Initial log entry. Current logging level 4\nlevel 3\nlevel 4\n"
                              "level 5\nlevel 6\nlevel 7\nlevel 8\nlevel 9\nfirst\n"
                              "next MissedMessages:2\n"),
                 out.constData());

        // The queue can be made now.
        const QByteArray again = captureStdout([&] {
            QCOMPARE(client->connect(), 0);
            QCOMPARE(client->connect(), 0);
        });
        QVERIFY(again.endsWith("Log |ec| Already connected\n"));
        receiver = new Receiver;
        client->log(4, "connected");
        QCOMPARE(texts(receiver->drain()), QStringList({"connected"}));
    }
};

QTEST_GUILESS_MAIN(TestLogClient)
#include "tst_logclient.moc"
