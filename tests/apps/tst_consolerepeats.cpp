// The programs' console: every line written once, identical lines in a row
// folded into "last line repeated N times", while each message still reaches
// Qt's message system (and so guiLog keeps its contract).
#include <QTemporaryFile>
#include <QtTest>
#include <cstdio>

#include "ConsoleRepeats.h"
#include "log/GuiLog.h"

class TestConsoleRepeats : public QObject
{
    Q_OBJECT
private slots:
    void repeatsAreCountedAndEveryOtherLineStays()
    {
        FILE* out = std::tmpfile();
        QVERIFY(out);
        consolerepeats::install(out);
        for (int i = 0; i < 5000; ++i)
            guiLog(4, "CoreCommunicator: received corrupted data, message header failed validation");
        guiLogRaw(4, "CoreCommunicator: received corrupted data, message header failed validation");
        guiLog(2, "reconnecting");
        guiLog(2, "reconnecting");
        qDebug("connected");
        qDebug("connected");
        qDebug("connected");
        guiLog(2, "done");
        qWarning("done");  // the same text in another category is another line
        guiLog(2, "last");
        guiLog(2, "last");
        consolerepeats::flush();
        qInstallMessageHandler(nullptr);

        std::rewind(out);
        QByteArray text;
        char buffer[4096];
        size_t n;
        while ((n = std::fread(buffer, 1, sizeof buffer, out)) > 0)
            text.append(buffer, int(n));
        std::fclose(out);
        const QList<QByteArray> lines = text.trimmed().split('\n');
        QCOMPARE(lines, QList<QByteArray>({"tgui: CoreCommunicator: received corrupted data, message header failed validation",
                                           "last line repeated 5000 times", "tgui: reconnecting",
                                           "last line repeated 1 times", "connected", "last line repeated 2 times",
                                           "tgui: done", "done", "tgui: last", "last line repeated 1 times"}));
    }
};

QTEST_GUILESS_MAIN(TestConsoleRepeats)
#include "tst_consolerepeats.moc"
