// zedagui as a real process against a core peer of the test: a skin it cannot
// use, the stop signals, and a soak of forced reconnects and garbage after
// which it must still register, answer a press and hold its threads,
// descriptors and memory.
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>
#include <csignal>

#include "LoopbackPeer.h"

namespace {
const QString kRunDir = qEnvironmentVariable("TGUI_RUN_DIR", TGUI_SOURCE_DIR "/run");
const QString kBinDir = qEnvironmentVariable("TGUI_BIN_DIR", TGUI_BIN_DIR);

QByteArray document(const QByteArray& body) { return "<TXML>" + body + "</TXML>"; }

int entries(const QString& dir) { return QDir(dir).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size(); }

// Resident size in kB from /proc.
qint64 residentKb(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}

// A run folder with the sample skin's files, a profile naming skinFile, and
// zedagui started in it, linked to the test's peer.
class Gui
{
public:
    Gui(LoopbackPeer& peer, const QByteArray& skinFile, const QByteArray& skinText, bool writeSkin)
    {
        QDir run(dir.path());
        run.mkpath("Skins");
        QFile::link(kRunDir + "/Skins/default", dir.filePath("Skins/default"));
        QFile::link(kRunDir + "/Skins/common", dir.filePath("Skins/common"));
        QFile::copy(kRunDir + "/qt.conf", dir.filePath("qt.conf"));
        if (writeSkin) {
            QFile skin(dir.filePath(QString::fromLatin1(skinFile)));
            skin.open(QIODevice::WriteOnly);
            skin.write(skinText);
        }
        QFile conf(dir.filePath("Skins/default.conf"));
        conf.open(QIODevice::WriteOnly);
        conf.write("[zedagui]\nSkinFile=" + skinFile + "\nComServerIP=127.0.0.1\nComServerPort="
                   + QByteArray::number(peer.serverPort()) + "\n");
        conf.close();
        process.setWorkingDirectory(dir.path());
        // Freed memory goes back to use soon, so that the resident size shows growth, not quarantine.
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("ASAN_OPTIONS", env.value("ASAN_OPTIONS") + ":quarantine_size_mb=4");
        process.setProcessEnvironment(env);
        process.start(kBinDir + "/zedagui", {"--deadline", "300000"});
    }
    ~Gui()
    {
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished(5000);
        }
    }
    QString log()
    {
        err += QString::fromUtf8(process.readAllStandardError());
        return err;
    }
    QTemporaryDir dir;
    QProcess process;
    QString err;
};

int registrations(const LoopbackPeer& peer)
{
    int count = 0;
    for (const PeerFrame& f : peer.frames)
        count += f.header.destination == GuiAppsTavoapp && f.payload == "zedagui";
    return count;
}

int framesContaining(const LoopbackPeer& peer, const QByteArray& part)
{
    int count = 0;
    for (const PeerFrame& f : peer.frames)
        count += f.payload.contains(part);
    return count;
}

// The GUI on the present connection gets the configuration and a press on the
// Messages tile, and answers with the tile's event.
bool answersAPress(LoopbackPeer& peer)
{
    const int before = framesContaining(peer, "uri=\"Home:Messages\"");
    peer.writeRaw(LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui,
                                      document("<Event uri=\"Core:Config\">language=en-us;step=home</Event>")));
    QTest::qWait(200);
    peer.writeRaw(LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui,
                                      document("<Event uri=\"Demo:Press\">key=Messages</Event>")));
    QElapsedTimer t;
    t.start();
    while (framesContaining(peer, "uri=\"Home:Messages\"") == before && t.elapsed() < 20000)
        QTest::qWait(20);
    return framesContaining(peer, "uri=\"Home:Messages\"") > before;
}
}  // namespace

class TestZedagui : public QObject
{
    Q_OBJECT
private slots:
    // With a skin it cannot use, zedagui says so and takes the one built into
    // it: its screens have sizes and a press lands. A stop signal then ends it
    // cleanly with exit code 0.
    void unusableSkinFallsBackAndSignalsStop_data()
    {
        QTest::addColumn<QByteArray>("skinFile");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("write");
        QTest::addColumn<QString>("problem");
        QTest::addColumn<int>("signal");
        QFile sample(kRunDir + "/Skins/default/default.xml");
        QVERIFY(sample.open(QIODevice::ReadOnly));
        const QByteArray good = sample.readAll();
        QByteArray garbage(4096, '\0');
        for (char& c : garbage)
            c = char(QRandomGenerator::global()->bounded(256));
        QTest::newRow("sample, SIGTERM") << QByteArray("Skins/default/default.xml") << QByteArray() << false
                                         << QString() << int(SIGTERM);
        QTest::newRow("missing, SIGINT") << QByteArray("Skins/none.xml") << QByteArray() << false
                                         << QString("it cannot be read") << int(SIGINT);
        QTest::newRow("empty") << QByteArray("Skins/empty.xml") << QByteArray() << true
                               << QString("it cannot be read") << int(SIGTERM);
        QTest::newRow("truncated") << QByteArray("Skins/cut.xml") << good.left(good.indexOf("<Name>home</Name>"))
                                   << true << QString("it has no item \"home\"") << int(SIGTERM);
        QTest::newRow("garbage") << QByteArray("Skins/garbage.xml") << garbage << true
                                 << QString("it cannot be read") << int(SIGTERM);
    }
    void unusableSkinFallsBackAndSignalsStop()
    {
        QFETCH(QByteArray, skinFile);
        QFETCH(QByteArray, text);
        QFETCH(bool, write);
        QFETCH(QString, problem);
        QFETCH(int, signal);
        LoopbackPeer peer;
        QVERIFY(peer.start());
        Gui gui(peer, skinFile, text, write);
        QVERIFY(gui.process.waitForStarted(10000));
        QTRY_VERIFY_WITH_TIMEOUT(registrations(peer) == 1, 30000);
        QVERIFY2(answersAPress(peer), qPrintable(gui.log().right(3000)));
        const QString unusable = QStringLiteral("zedagui: the skin %1 is unusable (").arg(QString::fromLatin1(skinFile));
        if (problem.isEmpty()) {
            QVERIFY(!gui.log().contains("is unusable"));
        } else {
            QVERIFY2(gui.log().contains(unusable + problem), qPrintable(gui.log().right(3000)));
            QVERIFY(gui.log().contains("); using the sample skin built into zedagui"));
        }

        ::kill(pid_t(gui.process.processId()), signal);
        QVERIFY(gui.process.waitForFinished(20000));
        QCOMPARE(gui.process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(gui.process.exitCode(), 0);
        QVERIFY(gui.log().contains("zedagui: stopping on a signal"));
    }

    // 100 reconnects forced by frames for another process, then a storm of
    // garbage: zedagui registers again each time, still answers, and keeps its
    // threads, descriptors and memory.
    void soakOfReconnectsAndGarbage()
    {
        LoopbackPeer peer;
        QVERIFY(peer.start());
        Gui gui(peer, "Skins/default/default.xml", QByteArray(), false);
        QVERIFY(gui.process.waitForStarted(10000));
        QTRY_VERIFY_WITH_TIMEOUT(registrations(peer) == 1, 30000);
        QVERIFY(answersAPress(peer));
        const qint64 pid = gui.process.processId();
        const QString proc = QStringLiteral("/proc/%1/").arg(pid);
        // Warm-up: the first reconnects allocate what every later one reuses.
        for (int i = 0; i < 20; ++i) {
            const int before = registrations(peer);
            peer.writeRaw(LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsDbs, "not for you"));
            QTRY_VERIFY_WITH_TIMEOUT(registrations(peer) > before, 10000);
        }
        const int threads = entries(proc + "task");
        const int fds = entries(proc + "fd");
        const qint64 rss = residentKb(pid);

        for (int i = 0; i < 100; ++i) {
            const int before = registrations(peer);
            const int connections = peer.connections;
            peer.writeRaw(LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsDbs, "not for you"));
            QTRY_VERIFY_WITH_TIMEOUT(registrations(peer) > before && peer.connections > connections, 10000);
        }
        // Garbage frames: random headers and payloads, on whatever connection stands.
        QRandomGenerator random(26);
        for (int burst = 0; burst < 100; ++burst) {
            QByteArray junk;
            for (int i = 0; i < 100; ++i) {
                QByteArray frame(16 + int(random.bounded(64)), '\0');
                for (char& c : frame)
                    c = char(random.bounded(256));
                junk += frame;
            }
            peer.writeRaw(junk);
            QTest::qWait(5);
        }
        // The peer hangs up on the last of it: the GUI comes back by its retry
        // timer, whatever half frame it was waiting for.
        QTest::qWait(500);
        const int before = registrations(peer);
        if (peer.socket())
            peer.socket()->abort();
        QTRY_VERIFY_WITH_TIMEOUT(registrations(peer) > before, 20000);
        QTRY_VERIFY_WITH_TIMEOUT(peer.socket() && peer.socket()->state() == QAbstractSocket::ConnectedState, 10000);
        QTest::qWait(300);
        QVERIFY2(answersAPress(peer), qPrintable(gui.log().right(3000)));

        QVERIFY2(entries(proc + "task") <= threads,
                 qPrintable(QStringLiteral("%1 -> %2 threads").arg(threads).arg(entries(proc + "task"))));
        QVERIFY2(entries(proc + "fd") <= fds, qPrintable(QStringLiteral("%1 -> %2 descriptors").arg(fds).arg(entries(proc + "fd"))));
        const qint64 grown = residentKb(pid) - rss;
        QVERIFY2(grown < 24 * 1024, qPrintable(QStringLiteral("grew by %1 kB").arg(grown)));
        QVERIFY(gui.process.state() == QProcess::Running);

        gui.process.terminate();
        QVERIFY(gui.process.waitForFinished(20000));
        QCOMPARE(gui.process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(gui.process.exitCode(), 0);
    }
};

QTEST_GUILESS_MAIN(TestZedagui)
#include "tst_zedagui.moc"
