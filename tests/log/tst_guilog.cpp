// guiLog before any log client: the text goes to qDebug, formatted with printf
// rules into a buffer of 16383 characters.
#include <QtTest>

#include "log/CTavoGuiLog.h"
#include "log/GuiLog.h"

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
};

QTEST_GUILESS_MAIN(TestGuiLog)
#include "tst_guilog.moc"
