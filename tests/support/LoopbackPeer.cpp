#include "LoopbackPeer.h"

#include <QElapsedTimer>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QtTest>

#include "SelfSignedCert.h"

LoopbackPeer::LoopbackPeer(Mode mode, QObject* parent) : QTcpServer(parent), m_mode(mode)
{
    if (mode != Plain) {
        const SelfSignedCert made = makeSelfSignedCert("loopback-peer");
        m_cert = QSslCertificate(made.certPem, QSsl::Pem);
        m_key = QSslKey(made.keyPem, QSsl::Ec, QSsl::Pem);
    }
}

quint16 LoopbackPeer::start(quint16 port)
{
    listen(QHostAddress::LocalHost, port);
    return serverPort();
}

void LoopbackPeer::incomingConnection(qintptr descriptor)
{
    if (m_socket) {
        m_socket->disconnect(this);
        m_socket->abort();
        m_socket->deleteLater();
    }
    raw.clear();
    ++connections;
    if (m_mode == TlsLater) {
        m_pending = descriptor;
        return;
    }
    QTcpSocket* socket = nullptr;
    if (m_mode == Tls) {
        auto* ssl = new QSslSocket(this);
        ssl->setSocketDescriptor(descriptor);
        QSslConfiguration config = ssl->sslConfiguration();
        config.setLocalCertificate(m_cert);
        config.setPrivateKey(m_key);
        config.setProtocol(QSsl::TlsV1_2OrLater);
        ssl->setSslConfiguration(config);
        ssl->startServerEncryption();
        socket = ssl;
    } else {
        socket = new QTcpSocket(this);
        socket->setSocketDescriptor(descriptor);
    }
    m_socket = socket;
    connect(socket, &QIODevice::readyRead, this, &LoopbackPeer::onReadyRead);
    connect(socket, &QAbstractSocket::disconnected, this, [this] { ++disconnects; });
}

void LoopbackPeer::startTls()
{
    if (m_pending < 0)
        return;
    const qintptr descriptor = m_pending;
    m_pending = -1;
    m_mode = Tls;
    incomingConnection(descriptor);
    --connections;
}

void LoopbackPeer::onReadyRead()
{
    const QByteArray bytes = m_socket->readAll();
    raw += bytes;
    allRaw += bytes;
    for (;;) {
        PeerFrame f;
        const int size = appDefsFrameLength(raw.constData(), raw.size(), &f.header);
        if (size == 0)
            break;
        if (size < 0) {
            // Nothing after a broken header can be cut: the test sees no more frames.
            qWarning("LoopbackPeer: invalid frame header, %d bytes dropped", int(raw.size()));
            raw.clear();
            break;
        }
        f.payload = raw.mid(appDefsHeaderLength(), size - appDefsHeaderLength());
        raw.remove(0, size);
        frames.append(f);
    }
}

bool LoopbackPeer::waitForFrames(int count, int ms)
{
    QElapsedTimer t;
    t.start();
    while (frames.size() < count && t.elapsed() < ms)
        QTest::qWait(10);
    return frames.size() >= count;
}

void LoopbackPeer::writeRaw(const QByteArray& bytes)
{
    if (m_socket) {
        m_socket->write(bytes);
        m_socket->flush();
    }
}

QByteArray LoopbackPeer::frame(GuiAppsT source, GuiAppsT destination, const QByteArray& payload,
                               GuiAppsMsgTypeT type)
{
    char* data = appDefsAssembleMessage(source, destination, payload.constData(), payload.size(), type);
    const QByteArray bytes(data, 16 + payload.size());
    delete[] data;
    return bytes;
}
