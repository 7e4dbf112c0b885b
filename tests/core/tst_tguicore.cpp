// The simulated core as a real process: registrations, routing by destination
// mask, status masks, printed events and TLS. zedagui playing a scenario to it
// is the demo's end-to-end test.
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "LoopbackPeer.h"
#include "ProgramProcess.h"
#include "core/TavoGlobals.h"

#include "CTXMLRoot.h"

namespace {

// tgui-core on a free loopback port.
struct Core : ProgramProcess {
    explicit Core(const QStringList& extra = {})
        : ProgramProcess(QStringLiteral("tgui-core"), QStringList{"--port", "0", "--listen", "127.0.0.1"} + extra)
    {
    }
    bool has(const QString& part) { return out().contains(part); }
    quint16 port() { return listeningPort(8000); }
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
        // The peer's own copy of the new mask may come after the GUI's.
        QTRY_VERIFY(!db.got.isEmpty());

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

    // A registered peer that never reads is cut off once its queue passes the
    // limit; the others go on, and SIGTERM then ends the core with code 0.
    void dropsAPeerThatDoesNotReadAndStopsOnSignal()
    {
        Core core({"--queue-limit", "1048576"});
        const quint16 port = core.port();
        QVERIFY(port);
        const int silent = ::socket(AF_INET, SOCK_STREAM, 0);
        QVERIFY(silent >= 0);
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(port);
        to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        QCOMPARE(::connect(silent, reinterpret_cast<sockaddr*>(&to), sizeof to), 0);
        const QByteArray registration = LoopbackPeer::frame(GuiAppsZedagui, GuiAppsTavoapp, "zedagui");
        QCOMPARE(::send(silent, registration.constData(), size_t(registration.size()), 0),
                 ssize_t(registration.size()));
        QTRY_VERIFY_WITH_TIMEOUT(core.has("REGISTER zedagui"), 10000);

        Receiver db;
        ComPtr dbs(new CTavoCoreCommunicator("127.0.0.1", port, "dbs", false));
        connect(dbs.get(), &CTavoCoreCommunicator::messageReceived, &db, &Receiver::onMessage);
        QTRY_VERIFY_WITH_TIMEOUT(core.has("REGISTER dbs"), 10000);
        const QByteArray big(1024 * 1024, 'x');
        for (int i = 0; i < 48 && !core.has("DROP zedagui"); ++i) {
            dbs->send(const_cast<char*>(big.constData()), GuiAppsZedagui, GuiAppsMsgDb);
            QTest::qWait(20);
        }
        QTRY_VERIFY_WITH_TIMEOUT(core.has("DROP zedagui does not read"), 20000);
        QTRY_VERIFY_WITH_TIMEOUT(core.has("DISCONNECT zedagui"), 10000);
        // The status mask without the dropped peer reaches the one left.
        QTRY_VERIFY_WITH_TIMEOUT(!db.got.isEmpty() && db.got.last().data.contains("mask=\"264\""), 10000);
        ::close(silent);

        QCOMPARE(core.stop(), 0);
        QVERIFY(core.out().contains("STOPPING"));
    }

};

QTEST_GUILESS_MAIN(TestTguiCore)
#include "tst_tguicore.moc"
