// guiLog before any log client: the text goes to qDebug, formatted with printf
// rules into a buffer of 16383 characters. With a client and the core link up,
// it goes to the log queue instead.
#include <QtTest>

#include "LogTestSupport.h"
#include "log/CTavoGuiLog.h"
#include "log/GuiLog.h"
#include "log/UtilLog.h"
#include "log/UtilLogC.h"

namespace {
QStringList captured;
void captureHandler(QtMsgType, const QMessageLogContext&, const QString& msg)
{
    captured << msg;
}
}  // namespace

class TestGuiLog : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { logtest::useRunNames("guilog"); }
    void cleanupTestCase()
    {
        delete hostGuiLog;
        hostGuiLog = nullptr;
        CTavoGuiLog::m_bEnabled = false;
        utilLogDestroy();
        utilLogSharedConfigRemove();
    }
    void init()
    {
        captured.clear();
        qInstallMessageHandler(captureHandler);
    }
    void cleanup() { qInstallMessageHandler(nullptr); }

    void formatsThroughQDebugWithoutClient()
    {
        QVERIFY(!hostGuiLog);
        guiLog(3, "%s Connected to %s:%d", "zedagui", "127.0.0.1", 10010);
        QCOMPARE(captured, QStringList() << "zedagui Connected to 127.0.0.1:10010");
    }

    void longTextIsCutAt16383Characters()
    {
        const QByteArray big(20000, 'x');
        guiLog(5, "%s", big.constData());
        QCOMPARE(captured.size(), 1);
        QCOMPARE(captured.first().size(), 16383);
    }

    void rawTextPassesUnformatted()
    {
        guiLogRaw(2, "100% raw %s");
        guiLogRaw(2, nullptr);
        QCOMPARE(captured, QStringList() << "100% raw %s");
    }

    void nameOutsideTableHasNoClient()
    {
        logtest::Receiver receiver;
        CTavoGuiLog log("zedagui", 0, true);
        QVERIFY(!log.hasClient());
        QCOMPARE(CTavoGuiLog::getActiveLevel(), 7);
        hostGuiLog = &log;
        CTavoGuiLog::m_bEnabled = true;
        guiLog(5, "still to the console");
        hostGuiLog = nullptr;
        CTavoGuiLog::m_bEnabled = false;
        QCOMPARE(captured, QStringList() << "still to the console");
        QVERIFY(receiver.drain().isEmpty());
    }

    void eachTableNameGetsItsLabel()
    {
        logtest::Receiver receiver;
        for (const char* name : {"tgui", "brow", "osd", "pdc", "ec", "dbs", "qml", "em"}) {
            CTavoGuiLog log(name, 0, true);
            QVERIFY(log.hasClient());
            QCOMPARE(CTavoGuiLog::getActiveLevel(), 4);
            const QVector<QByteArray> records = receiver.drain();
            QCOMPARE(records.size(), 1);
            const utilLogMsg msg = logtest::asText(records[0]);
            QCOMPARE(QByteArray(msg.label), QByteArray(name));
            QCOMPARE(msg.level, 8);
        }
    }

    void queueOnlyWhileEnabled()
    {
        logtest::Receiver receiver;
        hostGuiLog = new CTavoGuiLog("tgui", 0, false);
        guiLog(5, "before the core link %d", 1);
        QCOMPARE(captured, QStringList() << "before the core link 1");
        QVERIFY(receiver.drain().isEmpty());

        captured.clear();
        CTavoGuiLog::m_bEnabled = true;
        guiLog(5, "linked %s", "up");
        guiLog(3, "below the level");
        guiLog(7, "never sent");
        guiLog(8, "always sent");
        guiLogRaw(4, "raw one\r\nraw two");
        QVERIFY(captured.isEmpty());
        QCOMPARE(logtest::texts(receiver.drain()),
                 QStringList({"linked up", "always sent", "raw one", "raw two"}));

        CTavoGuiLog::m_bEnabled = false;
        guiLog(5, "link down");
        QCOMPARE(captured, QStringList() << "link down");
        QVERIFY(receiver.drain().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestGuiLog)
#include "tst_guilog.moc"
