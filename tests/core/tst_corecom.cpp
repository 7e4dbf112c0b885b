// The core communicator against a real peer on the loopback interface: frame
// cutting across reads, misaddressed and rejected frames, retry timing, TLS
// selection, shutdown, and the log lines of the link.
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QtTest>
#include <mutex>

#include "LoopbackPeer.h"
#include "core/TavoGlobals.h"

namespace {
// Log lines arrive from the socket thread as well. (A standard mutex: the
// ThreadSanitizer run sees its ordering, not that of Qt's.)
std::mutex logMutex;
QStringList logLines;
void captureLog(QtMsgType, const QMessageLogContext&, const QString& text)
{
    std::lock_guard<std::mutex> lock(logMutex);
    logLines.append(text);
}
bool logged(const QString& line)
{
    std::lock_guard<std::mutex> lock(logMutex);
    return logLines.contains(line);
}

// The arguments of a signal emitted on the socket's thread, taken in on this
// one: a QSignalSpy would append to its list on the emitting thread while the
// test reads it here.
class QueuedSpy : public QObject
{
public:
    template <typename Signal> QueuedSpy(const CTavoCoreCommunicator* sender, Signal signal)
    {
        connect(sender, signal, this, [this](auto... args) { calls.append(QVariantList{QVariant::fromValue(args)...}); },
                Qt::QueuedConnection);
    }
    int count() const { return calls.size(); }
    QList<QVariantList> calls;
};

QByteArray toUs(const QByteArray& payload)
{
    return LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui, payload);
}
}  // namespace

class TestCoreCom : public QObject
{
    Q_OBJECT
    std::unique_ptr<LoopbackPeer> peer;
    ComPtr com;
    Receiver r;

    // A peer and a communicator named zedagui that is listened to.
    void open(LoopbackPeer::Mode mode = LoopbackPeer::Plain, const QString& server = "127.0.0.1",
              bool secure = false)
    {
        peer.reset(new LoopbackPeer(mode));
        peer->start();
        com.reset(new CTavoCoreCommunicator(server, peer->serverPort(), "zedagui", secure));
        connect(com.get(), &CTavoCoreCommunicator::messageReceived, &r, &Receiver::onMessage);
    }
    QString port() const { return QString::number(peer->serverPort()); }

private slots:
    void init() { qInstallMessageHandler(captureLog); }
    void cleanup()
    {
        com.reset();
        peer.reset();
        r.got.clear();
        bRebootInitiated = false;
        qInstallMessageHandler(nullptr);
        std::lock_guard<std::mutex> lock(logMutex);
        logLines.clear();
    }

    void registersFirstOnEachConnection()
    {
        open();
        QueuedSpy identified(com.get(), &CTavoCoreCommunicator::connectedAndIdentified);
        QVERIFY(peer->waitForFrames(1));
        const PeerFrame& reg = peer->frames.first();
        QCOMPARE((QList<int>{reg.header.source, reg.header.destination, reg.header.msgType}), (QList<int>{1, 256, 0}));
        QCOMPARE(reg.payload, QByteArray("zedagui"));
        QVERIFY(appDefsIsValidHdr(&reg.header));
        QTRY_COMPARE(identified.count(), 1);
        QVERIFY(com->isIdentified());
        QVERIFY(logged("zedagui Connected to ZEDA Core application at 127.0.0.1:" + port()));
        QVERIFY(logged("CTavoCoreCommunicator::connectNotify - zedagui"));

        // A forced disconnection is logged and never retried.
        com->disconnectSocket();
        QTRY_COMPARE(peer->disconnects, 1);
        QTRY_VERIFY(logged("zedagui disconnected ZEDA Core application from 127.0.0.1:" + port()));
        QVERIFY(!com->isIdentified());
        QTest::qWait(300);
        QCOMPARE(peer->connections, 1);
    }

    void framesSplitAndJoinedAcrossReads()
    {
        open();
        QVERIFY(peer->waitForFrames(1));
        // Two frames in one write arrive in order.
        peer->writeRaw(toUs("first") + LoopbackPeer::frame(GuiAppsDbs, GuiAppsT(GuiAppsZedagui | GuiAppsBrowser),
                                                          "second", GuiAppsMsgDb));
        QTRY_COMPARE(r.got.size(), 2);
        QCOMPARE(r.got[0].data + r.got[1].data, QByteArray("firstsecond"));
        QCOMPARE((QList<int>{r.got[0].source, r.got[1].source, r.got[1].type}), (QList<int>{256, 8, 1}));

        // Fifteen bytes, then a header alone, then its payload in pieces: one
        // delivery, after the last piece, and no side effect before.
        const QByteArray payload(3000, 'x');
        const QByteArray frame = toUs(payload);
        for (const QByteArray& piece : {frame.left(15), frame.mid(15, 1), frame.mid(16, 1000),
                                        frame.mid(1016, 1999)}) {
            peer->writeRaw(piece);
            QTest::qWait(100);
            QCOMPARE(r.got.size(), 2);
        }
        peer->writeRaw(frame.mid(3015));
        QTRY_COMPARE(r.got.size(), 3);
        QCOMPARE(r.got[2].data, payload);

        // Many small frames in one write: all of them, in order.
        QByteArray burst;
        for (int i = 0; i < 2000; ++i)
            burst += toUs(QByteArray::number(i));
        peer->writeRaw(burst);
        QTRY_COMPARE_WITH_TIMEOUT(r.got.size(), 2003, 10000);
        for (int i = 0; i < 2000; i += 199)
            QCOMPARE(r.got[3 + i].data, QByteArray::number(i));
        QCOMPARE(peer->connections, 1);
        QCOMPARE(peer->disconnects, 0);
    }

    void misaddressedFrameCostsTheConnection()
    {
        open();
        QVERIFY(peer->waitForFrames(1));
        peer->writeRaw(LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsBrowser, "not mine"));
        QTRY_COMPARE(peer->connections, 2);
        QVERIFY(peer->waitForFrames(2));
        QCOMPARE(peer->frames[1].payload, QByteArray("zedagui"));
        QCOMPARE(r.got.size(), 0);
        QVERIFY(logged("Received a message that's not intended for this app, the message "
                       "destination is set to browser, len = 8"));
        // The new connection works as before.
        peer->writeRaw(toUs("mine"));
        QTRY_COMPARE(r.got.size(), 1);
        QCOMPARE(r.got[0].data, QByteArray("mine"));
    }

    void rejectedHeaders()
    {
        open();
        QVERIFY(peer->waitForFrames(1));
        // A bad checksum with our destination: an empty payload is delivered and
        // the next 16 bytes are read as a header, as they are. So is a negative length.
        QByteArray bad = toUs("");
        bad[13] = char(bad[13] + 1);
        GuiAppsMsgHdrT negative;
        appDefsAssembleHdr(negative, GuiAppsTavoapp, GuiAppsZedagui, -4, GuiAppsMsgTxml);
        peer->writeRaw(bad + toUs("next") + QByteArray(reinterpret_cast<const char*>(&negative), 16)
                       + toUs("ok"));
        QTRY_COMPARE(r.got.size(), 4);
        QCOMPARE((QList<QByteArray>{r.got[0].data, r.got[1].data, r.got[2].data, r.got[3].data}),
                 (QList<QByteArray>{"", "next", "", "ok"}));
        QCOMPARE(peer->connections, 1);
        QVERIFY(logged("CoreCommunicator: received corrupted data, message header failed validation"));

        // A message type out of range addressed elsewhere: rejected, then reconnected.
        QByteArray wrongType = LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsBrowser, "");
        wrongType[12] = 9;
        wrongType[13] = char(wrongType[13] + 9);
        peer->writeRaw(wrongType);
        QTRY_COMPARE(peer->connections, 2);
        QCOMPARE(r.got.size(), 4);
    }

    void sendsFramesAndNeverEmptyOnes()
    {
        open();
        QVERIFY(peer->waitForFrames(1));
        com->send("", GuiAppsTavoapp, GuiAppsMsgTxml);
        com->send("query", GuiAppsDbs, GuiAppsMsgDb);
        QVERIFY(peer->waitForFrames(2));
        QTest::qWait(100);
        QCOMPARE(peer->frames.size(), 2);
        const PeerFrame& query = peer->frames[1];
        QCOMPARE(query.payload, QByteArray("query"));
        QCOMPARE((QList<int>{query.header.source, query.header.destination, query.header.msgType}), (QList<int>{1, 8, 1}));
        QCOMPARE(peer->raw.size(), 0);  // nothing but whole frames
    }

    void retryEveryFiveSeconds()
    {
        // Find a free port, then leave it closed.
        quint16 port;
        {
            QTcpServer probe;
            probe.listen(QHostAddress::LocalHost);
            port = probe.serverPort();
        }
        com.reset(new CTavoCoreCommunicator("127.0.0.1", port, "zedagui", false));
        QueuedSpy refused(com.get(), &CTavoCoreCommunicator::socketConnectionError);
        connect(com.get(), &CTavoCoreCommunicator::messageReceived, &r, &Receiver::onMessage);
        QTRY_COMPARE(refused.count(), 1);
        QElapsedTimer since;
        since.start();
        QCOMPARE(refused.calls.first().first().toString(), QStringLiteral("zedagui"));
        QVERIFY(logged("CoreCom Error Detected: The connection was refused by the peer (or timed "
                       "out) for the app:zedagui"));
        peer.reset(new LoopbackPeer);
        QCOMPARE(peer->start(port), port);
        QTRY_COMPARE_WITH_TIMEOUT(peer->connections, 1, 8000);
        const qint64 waited = since.elapsed();
        QVERIFY2(waited > 4500 && waited < 6500, qPrintable(QString::number(waited)));
        QVERIFY(peer->waitForFrames(1));
    }

    void tlsOnlyForARemoteServer_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("server");
        QTest::addColumn<bool>("encrypted");
        // Secure, but the loopback address: plain TCP, registration on connect.
        QTest::newRow("loopback text") << int(LoopbackPeer::Plain) << "127.0.0.1" << false;
        // Any other name: the registration comes after the handshake.
        QTest::newRow("other name") << int(LoopbackPeer::Tls) << "localhost" << true;
    }
    void tlsOnlyForARemoteServer()
    {
        QFETCH(int, mode);
        QFETCH(QString, server);
        open(LoopbackPeer::Mode(mode), server, true);
        QVERIFY(peer->waitForFrames(1, 8000));
        QCOMPARE(peer->frames[0].payload, QByteArray("zedagui"));
        QTEST(com->isEncrypted(), "encrypted");
        peer->writeRaw(toUs("secret"));
        QTRY_COMPARE(r.got.size(), 1);
        QCOMPARE(r.got[0].data, QByteArray("secret"));
    }

    void sendBeforeTheHandshakeIsDropped()
    {
        open(LoopbackPeer::TlsLater, "localhost", true);
        QTRY_COMPARE(peer->connections, 1);
        QTest::qWait(200);  // TCP stands, the handshake waits for the peer
        com->send("early", GuiAppsTavoapp, GuiAppsMsgTxml);
        QTest::qWait(200);
        peer->startTls();
        QVERIFY(peer->waitForFrames(1, 8000));
        com->send("late", GuiAppsTavoapp, GuiAppsMsgTxml);
        QVERIFY(peer->waitForFrames(2));
        QTest::qWait(100);
        QCOMPARE(peer->frames.size(), 2);
        QCOMPARE(peer->frames[0].payload + peer->frames[1].payload, QByteArray("zedaguilate"));
    }

    void serverAddressChangeOnlyWhenDifferent()
    {
        open();
        QVERIFY(peer->waitForFrames(1));
        QSignalSpy requested(com.get(), &CTavoCoreCommunicator::reconnectToServerRequested);
        com->setServerAddress("127.0.0.1");
        QTest::qWait(200);
        QCOMPARE(requested.count(), 0);
        QCOMPARE(peer->connections, 1);
        // Same host by another name: a new connection and a new registration.
        com->setServerAddress("localhost");
        QTRY_COMPARE(peer->connections, 2);
        QVERIFY(peer->waitForFrames(2));
        QCOMPARE(requested.count(), 1);
    }

    void rebootSilencesTheLink()
    {
        open();
        QVERIFY(peer->waitForFrames(1));
        __atomic_store_n(&bRebootInitiated, true, __ATOMIC_RELAXED);
        peer->writeRaw(toUs("late"));
        com->send("ignored", GuiAppsTavoapp, GuiAppsMsgTxml);
        QTest::qWait(300);
        QCOMPARE(r.got.size(), 0);
        QCOMPARE(peer->frames.size(), 1);
        // The peer goes away: nothing comes back.
        peer->socket()->abort();
        QTest::qWait(600);
        QCOMPARE(peer->connections, 1);
    }

    void shutDownClosesAndStopsTheThread()
    {
        open();
        QVERIFY(peer->waitForFrames(1));
        com->shutDown();
        QTRY_COMPARE(peer->disconnects, 1);
        QCOMPARE(com->thread(), QThread::currentThread());
        delete com.release();
        QTest::qWait(200);
        QCOMPARE(peer->connections, 1);
    }
};

QTEST_GUILESS_MAIN(TestCoreCom)
#include "tst_corecom.moc"
