// End to end: tgui-logd drains the queue, this process logs as a GUI process
// does, and tgui-logctl changes its level and statistics while it runs.
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <csignal>

#include "LogTestSupport.h"
#include "log/CTavoGuiLog.h"
#include "log/GuiLog.h"
#include "log/UtilLog.h"
#include "log/UtilLogC.h"

namespace {
QString binary(const char* name)
{
    return QString::fromLocal8Bit(TGUI_BIN_DIR) + "/" + name;
}

// Exit code of tgui-logctl (-1 if it crashed or hung); its output in *out.
int logctl(const QStringList& args, QByteArray* out = nullptr)
{
    QProcess process;
    process.start(binary("tgui-logctl"), args);
    if (!process.waitForFinished(10000) || process.exitStatus() != QProcess::NormalExit)
        return -1;
    if (out)
        *out = process.readAllStandardOutput();
    return process.exitCode();
}

rtosProtMsgQ openLogQueue(int mode)
{
    rtosProtMsgQInfo info;
    rtosProtMsgQInfoZero(&info);
    rtosProtMsgQInfoSetName(&info, utilLogQueueName());
    return rtosProtMsgQOpenExisting(&info, mode);
}
}  // namespace

class TestLogd : public QObject
{
    Q_OBJECT
    QTemporaryDir dir;
    QProcess server;
    QString outPath;

    QStringList lines() const
    {
        QFile file(outPath);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
    }
    // The first line that holds `needle`, waiting up to five seconds for it.
    QString lineWith(const QString& needle, int waitMs = 5000) const
    {
        for (int waited = 0;; waited += 50) {
            for (const QString& line : lines()) {
                if (line.contains(needle))
                    return line;
            }
            if (waited >= waitMs)
                return {};
            QTest::qWait(50);
        }
    }

private slots:
    void initTestCase()
    {
        logtest::useRunNames("logd");
        QVERIFY(dir.isValid());
        outPath = dir.filePath("log.txt");
        server.start(binary("tgui-logd"), {"-o", outPath, "-u"});
        QVERIFY(server.waitForStarted());
        for (int i = 0; i < 100 && !server.readAllStandardError().contains("reading"); ++i)
            QTest::qWait(50);
        QCOMPARE(server.state(), QProcess::Running);

        hostGuiLog = new CTavoGuiLog("tgui", 0, true);
        CTavoGuiLog::m_bEnabled = true;
    }
    void cleanupTestCase()
    {
        delete hostGuiLog;
        hostGuiLog = nullptr;
        CTavoGuiLog::m_bEnabled = false;
        utilLogDestroy();
        if (server.state() == QProcess::Running) {
            server.terminate();
            server.waitForFinished(5000);
        }
        logctl({"remove"});
    }

    void linesCarryTimeLabelLevelAndText()
    {
        guiLog(5, "hello %d", 5);
        QVERIFY(!lineWith("hello 5").isEmpty());
        const QRegularExpression shape("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d tgui  (<.*)$");
        const QStringList got = lines();
        QCOMPARE(got.size(), 2);
        QCOMPARE(shape.match(got[0]).captured(1),
                 QString("<8> Initial log entry. Current logging level 4"));
        QCOMPARE(shape.match(got[1]).captured(1), QString("<5> hello 5"));
    }

    void logctlChangesTheRunningLevel()
    {
        guiLog(2, "hidden before");
        QCOMPARE(logctl({"level", "tgui", "0", "2"}), 0);
        guiLog(2, "shown after");
        guiLog(7, "never");
        QVERIFY(lineWith("shown after").contains("<2>"));
        QVERIFY(lineWith("hidden before", 0).isEmpty());
        QVERIFY(lineWith("never", 0).isEmpty());

        QCOMPARE(logctl({"level", "tgui", "0", "9"}), 2);
        QCOMPARE(logctl({"level", "brow", "1", "0"}), 0);
        QByteArray listed;
        QCOMPARE(logctl({"list"}, &listed), 0);
        QVERIFY(listed.contains("tgui 0 level 2 stats off"));
        QVERIFY(listed.contains("brow 1 level 0 stats off"));
    }

    void missedCountArrivesAfterAStall()
    {
        // The server stalls; the queue fills and the client counts.
        QVERIFY(::kill(server.processId(), SIGSTOP) == 0);
        UtilLogC* client = utilLogGet();
        QVERIFY(client);
        for (int i = 0; i < 100000 && client->getMissedMessages() < 4; ++i)
            guiLog(4, "burst %d", i);
        QCOMPARE(client->getMissedMessages(), 4u);
        QVERIFY(::kill(server.processId(), SIGCONT) == 0);
        QTest::qWait(100);
        guiLog(4, "after the stall");
        QCOMPARE(client->getMissedMessages(), 0u);
        QVERIFY(lineWith("after the stall").endsWith("after the stall [missed 4]"));
        QVERIFY(!lineWith("burst 0", 0).contains("missed"));
    }

    void statisticsSwitchedOnByLogctl()
    {
        QCOMPARE(logctl({"stats", "tgui", "0", "on"}), 0);
        guiLog(5, "counting");
        QTest::qWait(1100);
        guiLog(5, "a second later");
        const QString stats = lineWith("<stats>");
        QVERIFY(stats.contains("tgui  <stats>"));
        QVERIFY(stats.contains(" L5=2,"));
        QCOMPARE(logctl({"stats", "tgui", "0", "off"}), 0);
    }

    void hostileRecordsAreBoundedAndShown()
    {
        rtosProtMsgQ queue = openLogQueue(RTOS_PROT_MSGQ_MODE_TX);
        QVERIFY(queue);
        utilLogMsg msg;
        memset(&msg, 'A', sizeof msg);  // no terminator anywhere
        msg.type = UTIL_LOG_MSG_TEXT;
        msg.level = 3;
        msg.missed = 0;
        msg.text[0] = '\n';  // shown as '?'
        QCOMPARE(rtosProtMsgQSend(queue, &msg, sizeof msg, 0, 1), 0);
        const uint32_t unknown[2] = {77, 8};
        QCOMPARE(rtosProtMsgQSend(queue, unknown, sizeof unknown, 0, 1), 0);
        rtosProtMsgQClose(queue);
        QVERIFY(!lineWith("ignored record of type 77").isEmpty());
        QVERIFY(lineWith("AAAAA <3> ?AAA", 0).endsWith(QString(511, 'A')));
    }

    void serverStopsCleanly()
    {
        server.terminate();
        QVERIFY(server.waitForFinished(5000));
        QCOMPARE(server.exitStatus(), QProcess::NormalExit);
        QCOMPARE(server.exitCode(), 0);
        QVERIFY(server.readAllStandardError().contains("records"));
        QVERIFY(!openLogQueue(RTOS_PROT_MSGQ_MODE_RX));  // -u removed the queue's name
    }
};

QTEST_GUILESS_MAIN(TestLogd)
#include "tst_logd.moc"
