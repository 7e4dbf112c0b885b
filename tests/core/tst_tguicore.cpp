// The simulated core as a real process: registrations, routing by destination
// mask, status masks, printed events, TLS, and zedagui playing a scenario.
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include "LoopbackPeer.h"
#include "core/TavoGlobals.h"

#include "CTXMLRoot.h"

namespace {

// tgui-core on a free port; its output lines are collected.
class Core
{
public:
    explicit Core(const QStringList& extra = {})
    {
        process.setProgram(QStringLiteral(TGUI_BIN_DIR "/tgui-core"));
        process.setArguments(QStringList{"--port", "0", "--listen", "127.0.0.1"} + extra);
        process.setProcessChannelMode(QProcess::SeparateChannels);
        process.start();
    }
    ~Core()
    {
        process.terminate();
        if (!process.waitForFinished(3000))
            process.kill();
        process.waitForFinished(3000);
    }
    bool has(const QString& part)
    {
        output += QString::fromUtf8(process.readAllStandardOutput());
        return output.contains(part);
    }
    quint16 port()
    {
        QElapsedTimer t;
        t.start();
        while (!has("LISTENING ") && t.elapsed() < 8000)
            QTest::qWait(10);
        if (!has("LISTENING "))
            return 0;
        const int at = output.indexOf("LISTENING ") + 10;
        return quint16(output.mid(at, output.indexOf(QRegularExpression("[ \\n]"), at) - at).toUInt());
    }
    QProcess process;
    QString output;
};
}  // namespace

class TestTguiCore : public QObject
{
    Q_OBJECT
private slots:
    void init() { bRebootInitiated = false; }

    void routesByMaskAndReportsStatus()
    {
        Core core;
        const quint16 port = core.port();
        QVERIFY(port);
        Receiver gui, db;
        ComPtr zedagui(new CTavoCoreCommunicator("127.0.0.1", port, "zedagui", false));
        connect(zedagui.get(), &CTavoCoreCommunicator::messageReceived, &gui, &Receiver::onMessage);
        QTRY_VERIFY_WITH_TIMEOUT(core.has("REGISTER zedagui"), 10000);
        QTRY_VERIFY(!gui.got.isEmpty());
        CTXMLRoot root;
        QVERIFY(root.parse(gui.got.last().data));
        QCOMPARE(int(root.appStatus), 256 | 1);

        ComPtr dbs(new CTavoCoreCommunicator("127.0.0.1", port, "dbs", false));
        connect(dbs.get(), &CTavoCoreCommunicator::messageReceived, &db, &Receiver::onMessage);
        QTRY_VERIFY_WITH_TIMEOUT(core.has("REGISTER dbs"), 10000);
        QTRY_VERIFY(gui.got.size() == 2);
        QVERIFY(root.parse(gui.got.last().data));
        QCOMPARE(int(root.appStatus), 256 | 8 | 1);

        // A request of the GUI to "dbs" reaches the database peer, source kept.
        const int before = db.got.size();
        zedagui->send("SELECT 1", GuiAppsDbs, GuiAppsMsgDb);
        QTRY_VERIFY(db.got.size() == before + 1);
        QCOMPARE(db.got.last().data, QByteArray("SELECT 1"));
        QCOMPARE(db.got.last().source, int(GuiAppsZedagui));
        dbs->send("rows", GuiAppsZedagui, GuiAppsMsgDb);
        QTRY_VERIFY(gui.got.last().data == "rows");

        // An event for the core is printed as one line.
        zedagui->send("<TXML><Event uri=\"Gui:Event\">a=1\nb=2</Event></TXML>", GuiAppsTavoapp,
                      GuiAppsMsgTxml);
        QTRY_VERIFY_WITH_TIMEOUT(
            core.has("EVENT zedagui type=0 <TXML><Event uri=\"Gui:Event\">a=1\\nb=2</Event></TXML>\n"),
            10000);

        // The database peer leaves: the GUI hears the new mask.
        dbs.reset();
        QTRY_VERIFY_WITH_TIMEOUT(core.has("DISCONNECT dbs"), 10000);
        QTRY_VERIFY(root.parse(gui.got.last().data) && root.appStatus == 257);
    }

    void tlsWithAGeneratedCertificate()
    {
        QTemporaryDir dir;
        Core core({"--tls", "--write-cert", dir.path()});
        const quint16 port = core.port();
        QVERIFY(port);
        QVERIFY(QFile::exists(dir.filePath("tgui-core.crt")));
        Receiver gui;
        // Any name but the loopback address text selects TLS.
        ComPtr zedagui(new CTavoCoreCommunicator("localhost", port, "zedagui", true));
        connect(zedagui.get(), &CTavoCoreCommunicator::messageReceived, &gui, &Receiver::onMessage);
        QTRY_VERIFY_WITH_TIMEOUT(core.has("REGISTER zedagui"), 10000);
        QTRY_VERIFY(!gui.got.isEmpty());
        QVERIFY(gui.got.first().data.contains("AppStatus"));
    }

    void zedaguiPlaysAScenario()
    {
        QTemporaryDir dir;
        QDir(dir.path()).mkpath("Skins");
        QFile scenario(dir.filePath("scenario.txt"));
        QVERIFY(scenario.open(QIODevice::WriteOnly));
        scenario.write("wait zedagui 20000\n"
                       "send zedagui <TXML><Event uri=\"Core:Config\">language=fr-fr;hours24=1</Event></TXML>\n"
                       "send zedagui <TXML><Softkeys><Softkey label=\"Appeler\" url=\"softkey:539-call\" position=\"0\"/></Softkeys></TXML>\n"
                       "sleep 300\n"
                       "send zedagui <TXML><Translations><T key=\"Call\" value=\"Appeler\"/></Translations></TXML>\n");
        scenario.close();
        Core core({"--scenario", dir.filePath("scenario.txt")});
        const quint16 port = core.port();
        QVERIFY(port);
        QFile qt(dir.filePath("qt.conf"));
        QVERIFY(qt.open(QIODevice::WriteOnly));
        qt.write("[Profile]\nActive=default\n");
        qt.close();
        QFile conf(dir.filePath("Skins/default.conf"));
        QVERIFY(conf.open(QIODevice::WriteOnly));
        conf.write("[zedagui]\nComServerIP=127.0.0.1\nComServerPort=" + QByteArray::number(port) + "\n");
        conf.close();

        QProcess gui;
        gui.setWorkingDirectory(dir.path());
        gui.setProcessChannelMode(QProcess::MergedChannels);
        gui.start(QStringLiteral(TGUI_BIN_DIR "/zedagui"),
                  {"--exit-after", "2500", "--screenshots", dir.filePath("shots")});
        QVERIFY(gui.waitForFinished(30000));
        const QString log = QString::fromUtf8(gui.readAll());
        QCOMPARE(gui.exitCode(), 0);
        QVERIFY2(log.contains("zedagui Connected to ZEDA Core application at 127.0.0.1"), qPrintable(log));
        QVERIFY(log.contains("There is a change in language[New Language(fr-fr)  existing language()]"));
        QVERIFY(log.contains("24hrs format is set to 1"));
        QVERIFY(log.contains("zedagui: 1 softkeys: Appeler"));
        QVERIFY(log.contains("handleTXmlMsg received 1 translated strings"));
        QVERIFY(QFile::exists(dir.filePath("shots/99-end.png")));
        QTRY_VERIFY_WITH_TIMEOUT(core.has("DISCONNECT zedagui"), 10000);
    }
};

QTEST_GUILESS_MAIN(TestTguiCore)
#include "tst_tguicore.moc"
