#pragma once
// A real peer on the loopback interface for the core link's tests: it accepts
// connections (plain, or TLS with a certificate made on the spot), cuts the
// bytes it receives into frames and writes whatever bytes a test gives it.
#include <QByteArray>
#include <QList>
#include <QPointer>
#include <QSslCertificate>
#include <QSslKey>
#include <QTcpServer>
#include <QTcpSocket>

#include <memory>

#include "core/CTavoCoreCommunicator.h"

struct PeerFrame {
    GuiAppsMsgHdrT header;
    QByteArray payload;
};

class LoopbackPeer : public QTcpServer
{
    Q_OBJECT
public:
    enum Mode { Plain, Tls, TlsLater };  // TlsLater: handshake only on startTls()
    explicit LoopbackPeer(Mode mode = Plain, QObject* parent = nullptr);

    quint16 start(quint16 port = 0);
    QTcpSocket* socket() const { return m_socket; }
    bool waitForFrames(int count, int ms = 5000);
    void startTls();

    void writeRaw(const QByteArray& bytes);
    static QByteArray frame(GuiAppsT source, GuiAppsT destination, const QByteArray& payload,
                            GuiAppsMsgTypeT type = GuiAppsMsgTxml);

    QList<PeerFrame> frames;   // every whole frame received, over all connections
    QByteArray raw;            // bytes of the present connection not yet cut
    QByteArray allRaw;         // every byte ever received (decrypted for TLS)
    int connections = 0;
    int disconnects = 0;

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    void onReadyRead();
    Mode m_mode;
    QPointer<QTcpSocket> m_socket;
    QSslCertificate m_cert;
    QSslKey m_key;
    qintptr m_pending = -1;
};

// Collects what a communicator delivers; lives on the test thread, so the
// queued deliveries arrive here in order.
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

// A communicator that is shut down before it is deleted, as the manager does.
struct ComDeleter {
    void operator()(CTavoCoreCommunicator* com) const
    {
        com->shutDown();
        delete com;
    }
};
using ComPtr = std::unique_ptr<CTavoCoreCommunicator, ComDeleter>;
