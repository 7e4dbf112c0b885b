// The log client against a real queue and a real shared configuration
// segment, read back the way the log server reads them.
#include <QTemporaryFile>
#include <QtTest>
#include <thread>

#include "LogTestSupport.h"
#include "log/UtilLog.h"
#include "log/UtilLogC.h"

using namespace logtest;

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
        QVERIFY(receiver->capacity() > 0);
    }
    void cleanupTestCase()
    {
        utilLogDestroy();
        delete receiver;
        utilLogSharedConfigRemove();
    }
    void init() { receiver->drain(); }

    void recordLayoutAsReceived()
    {
        const uint32_t before = (uint32_t)time(nullptr);
        UtilLogC client("tgui", 0, 4, true);
        QVERIFY(client.isConnected());
        client.log(5, "call %d to %s", 42, "Bob");
        const QVector<QByteArray> records = receiver->drain();
        QCOMPARE(records.size(), 2);

        const QByteArray initial = records[0];
        QCOMPARE(initial.size(), 548);
        auto word = [](const QByteArray& r, int offset) {
            const auto* p = reinterpret_cast<const unsigned char*>(r.constData() + offset);
            return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
        };
        const QByteArray initialText("Initial log entry. Current logging level 4");
        QCOMPARE(word(initial, 0), 1u);
        QCOMPARE(word(initial, 4), uint32_t(36 + initialText.size()));
        QCOMPARE(word(initial, 8), 0u);
        QCOMPARE(word(initial, 20), 8u);
        QCOMPARE(initial.mid(24, 6), QByteArray("tgui\0\0", 6));
        QCOMPARE(QByteArray(initial.constData() + 32), initialText);

        const QByteArray line = records[1];
        QCOMPARE(word(line, 20), 5u);
        QCOMPARE(QByteArray(line.constData() + 32), QByteArray("call 42 to Bob"));
        QCOMPARE(word(line, 4), uint32_t(36 + 14));
        QVERIFY(word(line, 16) >= before && word(line, 16) <= before + 5);
        QVERIFY(word(line, 12) - word(initial, 12) < 5000);  // ticks in ms
    }

    void textCutAt512()
    {
        UtilLogC client("tgui", 0, 4, false);
        const QByteArray big(600, 'x');
        client.log(5, "%s", big.constData());
        const QVector<QByteArray> records = receiver->drain();
        QCOMPARE(records.size(), 1);
        const utilLogMsg msg = asText(records[0]);
        QCOMPARE(QByteArray(msg.text), big.left(512));
        QCOMPARE(msg.size, 36u + 512u);
        QVERIFY(!QByteArray(msg.text).contains("MessagesMissed"));
    }

    void longLabelIsCutAndReported()
    {
        UtilLogC client("toolong", 3, 4, false);
        QCOMPARE(QByteArray(client.getLabel()), QByteArray("toolo"));
        const QVector<QByteArray> records = receiver->drain();
        QCOMPARE(records.size(), 1);
        const utilLogMsg msg = asText(records[0]);
        QCOMPARE(msg.level, 5);
        QCOMPARE(QByteArray(msg.label), QByteArray("toolo"));
        QCOMPARE(QByteArray(msg.text), QByteArray("Truncating label from toolong"));
    }

    void levelFilter()
    {
        UtilLogC client("tgui", 0, 4, false);
        for (int level = -1; level <= 9; ++level)
            client.log(level, "level %d", level);
        QCOMPARE(levels(receiver->drain()), QVector<int>({4, 5, 6, 8}));

        client.setLevel(0);
        for (int level = 0; level <= 8; ++level)
            client.log(level, "level %d", level);
        QCOMPARE(levels(receiver->drain()), QVector<int>({0, 1, 2, 3, 4, 5, 6, 8}));

        client.setLevel(7);  // everything off but the always-level
        client.setLevel(12);  // refused
        QCOMPARE(client.getActiveLevel(), 7);
        for (int level = 0; level <= 8; ++level)
            client.log(level, "level %d", level);
        QCOMPARE(levels(receiver->drain()), QVector<int>({8}));
    }

    void sharedLevelTakesEffectAtNextMessage()
    {
        QCOMPARE(utilLogSharedConfigInit(), 0);
        UtilLogC client("pdc", 1, 4, false);
        UtilLogC other("pdc", 2, 4, false);
        client.log(2, "before");
        QVERIFY(receiver->drain().isEmpty());

        QCOMPARE(utilLogSharedConfigActiveLevelSet("pdc", 1, 2), 0);
        QCOMPARE(utilLogSharedConfigActiveLevelGet("pdc", 1), 2);
        QCOMPARE(utilLogSharedConfigActiveLevelGet("pdc", 9), -1);
        client.log(2, "after");
        other.log(2, "other instance");
        QCOMPARE(texts(receiver->drain()), QStringList({"after"}));
        QCOMPARE(client.getActiveLevel(), 2);
        QCOMPARE(other.getActiveLevel(), 4);

        // A local change stands until the segment changes again.
        client.setLevel(5);
        client.log(3, "hidden");
        QCOMPARE(utilLogSharedConfigActiveLevelSet("pdc", 1, 3), 0);
        client.log(3, "shown");
        QCOMPARE(texts(receiver->drain()), QStringList({"shown"}));
    }

    void segmentWithWrongMagicIsIgnored()
    {
        QCOMPARE(utilLogSharedConfigInit(), 0);
        UtilLogSharedConfigT* config = utilLogSharedConfigGet();
        QCOMPARE(config->magic, UTIL_LOG_SHARED_MAGIC);
        QCOMPARE(utilLogSharedConfigActiveLevelSet("ec", 0, 0), 0);
        config->magic = 0xdeadbeef;
        UtilLogC client("ec", 0, 4, false);
        client.log(0, "detailed");
        client.log(4, "normal");
        QCOMPARE(texts(receiver->drain()), QStringList({"normal"}));
        config->magic = UTIL_LOG_SHARED_MAGIC;
    }

    void statisticsRecords()
    {
        QVERIFY(utilLogSharedConfigEntryAdd("qml", 0, 4, true) >= 0);
        UtilLogC client("qml", 0, 4, false);
        client.log(5, "first");  // switches statistics on and counts
        QVERIFY(client.isStatsEnabled());
        client.log(1, "filtered but counted");
        QTest::qWait(1100);
        client.log(3, "after a second");
        QVector<QByteArray> records = receiver->drain();
        QCOMPARE(records.size(), 2);  // "first" and the statistics; 3 is below the level
        QCOMPARE(records[1].size(), 208);
        utilLogStatsMsg stats;
        memcpy(&stats, records[1].constData(), sizeof stats);
        QCOMPARE(stats.type, 9u);
        QCOMPARE(stats.size, 208u);
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

    void missedMessagesTravelInNextRecord()
    {
        UtilLogC client("dbs", 0, 4, false);
        const int capacity = receiver->capacity();
        for (int i = 0; i < capacity + 3; ++i)
            client.log(4, "fill %d", i);
        QCOMPARE(client.getMissedMessages(), 3u);

        char buffer[8192];
        QVERIFY(rtosProtMsgQReceive(receiver->queue, buffer, sizeof buffer, 0) > 0);
        client.log(4, "gets through");
        QCOMPARE(client.getMissedMessages(), 0u);
        const QVector<QByteArray> records = receiver->drain();
        QCOMPARE(records.size(), capacity);
        const utilLogMsg last = asText(records.last());
        QCOMPARE(QByteArray(last.text), QByteArray("gets through"));
        QCOMPARE(last.missed, 3u);
        QCOMPARE(asText(records.first()).missed, 0u);
    }

    void rateLimiterReportsDrops()
    {
        UtilLogC client("brow", 0, 4, false);
        UtilLogRateLimiterT limiter;
        utilLogRateLimiterInit(&limiter, 200, 60);
        auto logLimited = [&](const char* text) {
            va_list none;
            [&](const char* format, ...) {
                va_start(none, format);
                client.vlog(4, format, none, &limiter);
                va_end(none);
            }("%s", text);
        };
        logLimited("first");
        logLimited("dropped 1");
        logLimited("dropped 2");
        QTest::qWait(250);
        logLimited("next");
        QCOMPARE(texts(receiver->drain()), QStringList({"first", "next MessagesMissed:2"}));

        // A text at the limit keeps its 512 characters and loses the note.
        logLimited("soon");
        QTest::qWait(250);
        const QByteArray big(600, 'y');
        logLimited(big.constData());
        const QStringList got = texts(receiver->drain());
        QCOMPARE(got.size(), 1);
        QCOMPARE(got[0].size(), 512);
    }

    void rawHexFormattedAndFileLines()
    {
        UtilLogC client("osd", 0, 4, false);
        client.logRawData(4, "one\r\ntwo\nthree\r\n\nfour", -1);
        QCOMPARE(texts(receiver->drain()), QStringList({"one", "two", "three", "", "four"}));
        client.logRawData(2, "below the level", -1);
        QVERIFY(receiver->drain().isEmpty());

        const QByteArray long1000(1000, 'z');
        client.logFormatLine(5, long1000.constData(), long1000.size(), 4);
        QStringList pieces = texts(receiver->drain());
        QCOMPARE(pieces.size(), 2);
        QCOMPARE(pieces[0], "    " + QString(508, 'z'));
        QCOMPARE(pieces[1], "    " + QString(492, 'z'));

        const unsigned char bytes[] = {0x00, 0x7f, 0xff};
        client.logHexData(4, bytes, sizeof bytes);
        QCOMPARE(texts(receiver->drain()), QStringList({" 00 7f ff"}));

        QTemporaryFile file;
        QVERIFY(file.open());
        file.write("alpha\nbeta\r\n");
        file.flush();
        client.logFile(4, file.fileName().toLocal8Bit().constData());
        client.logFile(4, "/nonexistent/file.txt");
        QCOMPARE(texts(receiver->drain()),
                 QStringList({"alpha", "beta", "logFile: failed to open /nonexistent/file.txt"}));
    }

    void flatInterface()
    {
        QCOMPARE(utilLogActiveLevelGet(), 7);
        QCOMPARE(utilLogLevelSet(3), -1);  // no client yet
        QCOMPARE(utilLogCreate("", 0, 4, false), -1);
        QCOMPARE(utilLogCreate(nullptr, 0, 4, false), -1);
        QCOMPARE(utilLogCreate("em", 0, 7, false), -1);
        QVERIFY(!utilLogGet());

        QCOMPARE(utilLogCreate("em", 0, 4, true), 0);
        QCOMPARE(utilLogActiveLevelGet(), 4);
        utilLog(4, "flat %s", "call");
        utilLogRawData(5, "raw\nlines", -1);
        QCOMPARE(texts(receiver->drain()),
                 QStringList({"Initial log entry. Current logging level 4", "flat call", "raw",
                              "lines"}));

        QCOMPARE(utilLogLevelSetFromParam("2"), 0);
        QCOMPARE(utilLogActiveLevelGet(), 2);
        QCOMPARE(utilLogLevelSetFromParam("x"), -1);
        QCOMPARE(utilLogLevelSetFromParam("9"), -1);
        QCOMPARE(utilLogLevelSetFromParam(nullptr), -1);
        QCOMPARE(utilLogLevelSetCallback("3"), 0);
        char text[8];
        QCOMPARE(utilLogLevelGetCallback(text, sizeof text), 0);
        QCOMPARE(QByteArray(text), QByteArray("3"));
        utilLogDestroy();
        QCOMPARE(utilLogActiveLevelGet(), 7);
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
        QVector<QByteArray> records;
        for (int round = 0; round < 2000 && records.size() < 800; ++round) {
            records += receiver->drain();
            QThread::usleep(100);
        }
        for (std::thread& thread : threads)
            thread.join();
        records += receiver->drain();
        // Every record that arrived is whole; the rest were counted as missed.
        for (const QByteArray& r : records)
            QVERIFY(QByteArray(asText(r).text).startsWith("thread "));
        QVERIFY(records.size() > 0);
    }
};

QTEST_GUILESS_MAIN(TestLogClient)
#include "tst_logclient.moc"
