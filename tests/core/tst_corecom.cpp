// The core communicator against a real peer on the loopback interface: frame
// cutting across reads, misaddressed and rejected frames, retry timing, TLS
// selection and shutdown.
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QtTest>
#include <memory>

#include "LoopbackPeer.h"
#include "core/CTavoCoreCommunicator.h"
#include "core/TavoGlobals.h"

namespace {
// Lives on the test thread, so the queued deliveries arrive here in order.
class Receiver : public QObject
{
    Q_OBJECT
public:
    struct Msg {
        QByteArray data;
        int source;
        int type;
    };
    QList<Msg> got;
public slots:
    void onMessage(QByteArray data, GuiAppsT source, GuiAppsMsgTypeT type)
    {
        got.append({data, int(source), int(type)});
    }
};

struct ComDeleter {
    void operator()(CTavoCoreCommunicator* com) const
    {
        com->shutDown();
        delete com;
    }
};
using ComPtr = std::unique_ptr<CTavoCoreCommunicator, ComDeleter>;

bool waitFor(const std::function<bool()>& condition, int ms)
{
    QElapsedTimer t;
    t.start();
    while (!condition() && t.elapsed() < ms)
        QTest::qWait(10);
    return condition();
}
}  // namespace

class TestCoreCom : public QObject
{
    Q_OBJECT

    // A communicator named zedagui, listened to, registered with the peer.
    ComPtr connectTo(LoopbackPeer& peer, Receiver& receiver, const QString& server = "127.0.0.1",
                     bool secure = false)
    {
        ComPtr com(new CTavoCoreCommunicator(server, peer.serverPort(), "zedagui", secure));
        connect(com.get(), &CTavoCoreCommunicator::messageReceived, &receiver, &Receiver::onMessage);
        return com;
    }

private slots:
    void init() { bRebootInitiated = false; }
    void cleanup() { bRebootInitiated = false; }

    void registersFirstOnEachConnection()
    {
        LoopbackPeer peer;
        peer.start();
        Receiver r;
        ComPtr com = connectTo(peer, r);
        QSignalSpy identified(com.get(), &CTavoCoreCommunicator::connectedAndIdentified);
        QVERIFY(peer.waitForFrames(1));
        const PeerFrame& reg = peer.frames.first();
        QCOMPARE(reg.header.source, 1);
        QCOMPARE(reg.header.destination, 256);
        QCOMPARE(int(reg.header.msgType), 0);
        QCOMPARE(reg.payload, QByteArray("zedagui"));
        QVERIFY(appDefsIsValidHdr(&reg.header));
        QVERIFY(waitFor([&] { return identified.count() == 1; }, 2000));
        QVERIFY(com->isIdentified());
    }

    void framesSplitAndJoinedAcrossReads()
    {
        LoopbackPeer peer;
        peer.start();
        Receiver r;
        ComPtr com = connectTo(peer, r);
        QVERIFY(peer.waitForFrames(1));

        // Two frames in one write arrive in order.
        peer.writeRaw(LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui, "first")
                      + LoopbackPeer::frame(GuiAppsDbs, GuiAppsT(GuiAppsZedagui | GuiAppsBrowser),
                                            "second", GuiAppsMsgDb));
        QVERIFY(waitFor([&] { return r.got.size() == 2; }, 3000));
        QCOMPARE(r.got[0].data, QByteArray("first"));
        QCOMPARE(r.got[0].source, 256);
        QCOMPARE(r.got[1].data, QByteArray("second"));
        QCOMPARE(r.got[1].source, 8);
        QCOMPARE(r.got[1].type, 1);

        // A header alone, then its payload in pieces: one delivery, after the last piece.
        const QByteArray payload(3000, 'x');
        const QByteArray frame = LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui, payload);
        peer.writeRaw(frame.left(16));
        QTest::qWait(100);
        peer.writeRaw(frame.mid(16, 1000));
        QTest::qWait(100);
        peer.writeRaw(frame.mid(1016, 1999));
        QTest::qWait(150);
        QCOMPARE(r.got.size(), 2);
        peer.writeRaw(frame.mid(3015));
        QVERIFY(waitFor([&] { return r.got.size() == 3; }, 3000));
        QCOMPARE(r.got[2].data, payload);

        // Many small frames in one write: all of them, in order.
        QByteArray burst;
        for (int i = 0; i < 2000; ++i)
            burst += LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui, QByteArray::number(i));
        peer.writeRaw(burst);
        QVERIFY(waitFor([&] { return r.got.size() == 2003; }, 10000));
        for (int i = 0; i < 2000; i += 199)
            QCOMPARE(r.got[3 + i].data, QByteArray::number(i));
        QCOMPARE(peer.connections(), 1);
    }

    void fifteenBytesWaitWithoutSideEffects()
    {
        LoopbackPeer peer;
        peer.start();
        Receiver r;
        ComPtr com = connectTo(peer, r);
        QVERIFY(peer.waitForFrames(1));
        const QByteArray frame = LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui, "after");
        peer.writeRaw(frame.left(15));
        QTest::qWait(300);
        QCOMPARE(r.got.size(), 0);
        QCOMPARE(peer.connections(), 1);
        QCOMPARE(peer.disconnects, 0);
        peer.writeRaw(frame.mid(15));
        QVERIFY(waitFor([&] { return r.got.size() == 1; }, 3000));
        QCOMPARE(r.got[0].data, QByteArray("after"));
    }

    void misaddressedFrameCostsTheConnection()
    {
        LoopbackPeer peer;
        peer.start();
        Receiver r;
        ComPtr com = connectTo(peer, r);
        QVERIFY(peer.waitForFrames(1));
        peer.writeRaw(LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsBrowser, "not mine"));
        QVERIFY(peer.waitForConnections(2));
        QVERIFY(peer.waitForFrames(2));
        QCOMPARE(peer.frames[1].payload, QByteArray("zedagui"));
        QCOMPARE(r.got.size(), 0);
        // The new connection works as before.
        peer.writeRaw(LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui, "mine"));
        QVERIFY(waitFor([&] { return r.got.size() == 1; }, 3000));
        QCOMPARE(r.got[0].data, QByteArray("mine"));
    }

    void rejectedHeaders()
    {
        LoopbackPeer peer;
        peer.start();
        Receiver r;
        ComPtr com = connectTo(peer, r);
        QVERIFY(peer.waitForFrames(1));
        // A bad checksum with our destination: an empty payload is delivered and
        // the next 16 bytes are read as a header, as they are.
        QByteArray bad = LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui, "");
        bad[13] = char(bad[13] + 1);
        peer.writeRaw(bad + LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui, "next"));
        QVERIFY(waitFor([&] { return r.got.size() == 2; }, 3000));
        QCOMPARE(r.got[0].data, QByteArray());
        QCOMPARE(r.got[1].data, QByteArray("next"));
        QCOMPARE(peer.connections(), 1);

        // A message type out of range addressed elsewhere: rejected, then reconnected.
        QByteArray wrongType = LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsBrowser, "");
        wrongType[12] = 9;
        wrongType[13] = char(wrongType[13] + 9);
        peer.writeRaw(wrongType);
        QVERIFY(peer.waitForConnections(2));
        QCOMPARE(r.got.size(), 2);
    }

    void negativeLengthYieldsAnEmptyPayload()
    {
        LoopbackPeer peer;
        peer.start();
        Receiver r;
        ComPtr com = connectTo(peer, r);
        QVERIFY(peer.waitForFrames(1));
        GuiAppsMsgHdrT h;
        appDefsAssembleHdr(h, GuiAppsTavoapp, GuiAppsZedagui, -4, GuiAppsMsgTxml);
        peer.writeRaw(QByteArray(reinterpret_cast<const char*>(&h), 16)
                      + LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui, "ok"));
        QVERIFY(waitFor([&] { return r.got.size() == 2; }, 3000));
        QCOMPARE(r.got[0].data, QByteArray());
        QCOMPARE(r.got[1].data, QByteArray("ok"));
    }

    void sendsFramesAndNeverEmptyOnes()
    {
        LoopbackPeer peer;
        peer.start();
        Receiver r;
        ComPtr com = connectTo(peer, r);
        QVERIFY(peer.waitForFrames(1));
        com->send("", GuiAppsTavoapp, GuiAppsMsgTxml);
        com->send("query", GuiAppsDbs, GuiAppsMsgDb);
        QVERIFY(peer.waitForFrames(2));
        QTest::qWait(100);
        QCOMPARE(peer.frames.size(), 2);
        QCOMPARE(peer.frames[1].payload, QByteArray("query"));
        QCOMPARE(peer.frames[1].header.destination, 8);
        QCOMPARE(int(peer.frames[1].header.msgType), 1);
        QCOMPARE(peer.raw.size(), 0);  // nothing but whole frames
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
        Receiver r;
        ComPtr com(new CTavoCoreCommunicator("127.0.0.1", port, "zedagui", false));
        QSignalSpy refused(com.get(), &CTavoCoreCommunicator::socketConnectionError);
        connect(com.get(), &CTavoCoreCommunicator::messageReceived, &r, &Receiver::onMessage);
        QVERIFY(waitFor([&] { return refused.count() == 1; }, 3000));
        QElapsedTimer since;
        since.start();
        QCOMPARE(refused.first().first().toString(), QStringLiteral("zedagui"));
        LoopbackPeer peer;
        QCOMPARE(peer.start(port), port);
        QVERIFY(peer.waitForConnections(1, 8000));
        const qint64 waited = since.elapsed();
        QVERIFY2(waited > 4500 && waited < 6500, qPrintable(QString::number(waited)));
        QVERIFY(peer.waitForFrames(1));
    }

    void tlsOnlyForARemoteServer()
    {
        // Secure, but the loopback address: plain TCP, registration on connect.
        {
            LoopbackPeer plain;
            plain.start();
            Receiver r;
            ComPtr com = connectTo(plain, r, "127.0.0.1", true);
            QVERIFY(plain.waitForFrames(1));
            QCOMPARE(plain.frames[0].payload, QByteArray("zedagui"));
        }
        // Secure and any other name: the bytes on the wire are a TLS handshake.
        {
            LoopbackPeer plain;
            plain.start();
            Receiver r;
            ComPtr com = connectTo(plain, r, "localhost", true);
            QVERIFY(waitFor([&] { return plain.allRaw.size() >= 5; }, 3000));
            QCOMPARE(int(quint8(plain.allRaw[0])), 0x16);  // handshake record
            QVERIFY(!plain.allRaw.contains("zedagui"));
        }
        // Against a TLS peer the registration comes after the handshake, and
        // frames flow both ways.
        {
            LoopbackPeer tls(LoopbackPeer::Tls);
            tls.start();
            Receiver r;
            ComPtr com = connectTo(tls, r, "localhost", true);
            QVERIFY(tls.waitForFrames(1, 8000));
            QCOMPARE(tls.frames[0].payload, QByteArray("zedagui"));
            QVERIFY(com->isEncrypted());
            tls.writeRaw(LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui, "secret"));
            QVERIFY(waitFor([&] { return r.got.size() == 1; }, 3000));
            QCOMPARE(r.got[0].data, QByteArray("secret"));
        }
    }

    void sendBeforeTheHandshakeIsDropped()
    {
        LoopbackPeer peer(LoopbackPeer::TlsLater);
        peer.start();
        Receiver r;
        ComPtr com = connectTo(peer, r, "localhost", true);
        QVERIFY(peer.waitForConnections(1));
        QTest::qWait(200);  // TCP stands, the handshake waits for the peer
        com->send("early", GuiAppsTavoapp, GuiAppsMsgTxml);
        QTest::qWait(200);
        peer.startTls();
        QVERIFY(peer.waitForFrames(1, 8000));
        com->send("late", GuiAppsTavoapp, GuiAppsMsgTxml);
        QVERIFY(peer.waitForFrames(2));
        QTest::qWait(100);
        QCOMPARE(peer.frames.size(), 2);
        QCOMPARE(peer.frames[0].payload, QByteArray("zedagui"));
        QCOMPARE(peer.frames[1].payload, QByteArray("late"));
    }

    void serverAddressChangeOnlyWhenDifferent()
    {
        LoopbackPeer peer;
        peer.start();
        Receiver r;
        ComPtr com = connectTo(peer, r);
        QVERIFY(peer.waitForFrames(1));
        QSignalSpy requested(com.get(), &CTavoCoreCommunicator::reconnectToServerRequested);
        com->setServerAddress("127.0.0.1");
        QTest::qWait(200);
        QCOMPARE(requested.count(), 0);
        QCOMPARE(peer.connections(), 1);
        // Same host by another name: a new connection and a new registration.
        com->setServerAddress("localhost");
        QVERIFY(peer.waitForConnections(2));
        QVERIFY(peer.waitForFrames(2));
        QCOMPARE(requested.count(), 1);
    }

    void rebootSilencesTheLink()
    {
        LoopbackPeer peer;
        peer.start();
        Receiver r;
        ComPtr com = connectTo(peer, r);
        QVERIFY(peer.waitForFrames(1));
        bRebootInitiated = true;
        peer.writeRaw(LoopbackPeer::frame(GuiAppsTavoapp, GuiAppsZedagui, "late"));
        com->send("ignored", GuiAppsTavoapp, GuiAppsMsgTxml);
        QTest::qWait(300);
        QCOMPARE(r.got.size(), 0);
        QCOMPARE(peer.frames.size(), 1);
        QVERIFY(com->bytesAvailable() >= 0);
        // The peer goes away: nothing comes back.
        peer.socket()->abort();
        QTest::qWait(600);
        QCOMPARE(peer.connections(), 1);
    }

    void shutDownClosesAndStopsTheThread()
    {
        LoopbackPeer peer;
        peer.start();
        Receiver r;
        auto* com = new CTavoCoreCommunicator("127.0.0.1", peer.serverPort(), "zedagui", false);
        connect(com, &CTavoCoreCommunicator::messageReceived, &r, &Receiver::onMessage);
        QVERIFY(peer.waitForFrames(1));
        com->shutDown();
        QVERIFY(peer.waitForDisconnect());
        QCOMPARE(com->thread(), QThread::currentThread());
        delete com;
        QTest::qWait(200);
        QCOMPARE(peer.connections(), 1);
    }

    void aForcedDisconnectIsNotRetried()
    {
        LoopbackPeer peer;
        peer.start();
        Receiver r;
        ComPtr com = connectTo(peer, r);
        QVERIFY(peer.waitForFrames(1));
        com->disconnectSocket();
        QVERIFY(peer.waitForDisconnect());
        QTest::qWait(300);
        QCOMPARE(peer.connections(), 1);
    }
};

QTEST_GUILESS_MAIN(TestCoreCom)
#include "tst_corecom.moc"
