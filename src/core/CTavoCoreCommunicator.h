#pragma once
#include "tgui_export.h"
// The socket of a GUI process to the core application, served by a thread of
// its own. Connects and reconnects for ever, registers the process, cuts the
// stream into frames and delivers those addressed to this process; frames to
// send may be handed over from any thread.
#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QSslSocket>
#include <QString>
#include <QThread>
#include <mutex>

#include "core/AppDefs.h"

class QTimer;

Q_DECLARE_METATYPE(GuiAppsT)
Q_DECLARE_METATYPE(GuiAppsMsgTypeT)

// One frame on its way out.
struct coreComMsgT {
    GuiAppsMsgHdrT header;
    QByteArray data;   // shared with the caller's array
    int stage;         // 0 header, 1 payload, 2 done
    int written;       // bytes of the current stage already written
    bool queued;       // stands in m_queue
};

class TGUI_EXPORT CTavoCoreCommunicator : public QSslSocket
{
    Q_OBJECT
public:
    CTavoCoreCommunicator(const QString& server, int port, const QString& appName, bool secure);
    ~CTavoCoreCommunicator() override;

    // Any thread. The text travels without its terminating NUL.
    void send(const char* text, GuiAppsT destination, GuiAppsMsgTypeT type);
    void setServerAddress(const QString& address);
    void disconnectSocket();
    void shutDown();

    // Registers the frame enums for queued signals; the constructor calls it.
    static void registerMetaTypes();

    // TLS is used only for a server other than the loopback address; it takes
    // effect at the next connection.
    void setSecure(bool secure) { m_secure = secure; }
    bool isSecure() const { return m_secure; }
    QString serverAddress() const
    {
        std::lock_guard<std::mutex> lock(m_serverMutex);
        return m_server;
    }
    int serverPort() const { return m_port; }
    QString appName() const { return m_appName; }
    GuiAppsT appId() const { return m_appId; }
    bool isIdentified() const { return m_identified.loadAcquire() != 0; }

signals:
    void connectedAndIdentified();
    void messageReceived(QByteArray data, GuiAppsT source, GuiAppsMsgTypeT type);
    void messageRequested(QByteArray data, GuiAppsT destination, GuiAppsMsgTypeT type);
    void forceDisconnect();
    void reconnectToServerRequested(const QString& address);
    void socketConnectionError(const QString& appName);

protected slots:
    virtual void onConnected();
    virtual void onDisconnected();
    virtual void onReadyRead();
    virtual void onMessageRequested(QByteArray data, GuiAppsT destination, GuiAppsMsgTypeT type);
    virtual void reconnect();
    virtual void onTimeout();
    virtual void onError(QAbstractSocket::SocketError error);
    virtual void onForceDisconnect();

    void sendQueuedMessages(qint64 written);
    void reconnectToServer(const QString& address);
    void onSslErrors(const QList<QSslError>& errors);

protected:
    void connectNotify(const QMetaMethod& signal) override;

    void printErrorMessage(int error);
    void prepareIO(coreComMsgT& msg, char** data, int& toWrite, int& total);
    int sendMsg(coreComMsgT& msg);
    void queueMsg(const coreComMsgT& msg);
    bool useTls() const;
    void connectToServer();
    // disconnectFromHost unless already closing, then wait: up to graceMs while
    // closing, and up to 5000 ms more with a log line on a time-out.
    void disconnectAndWait(int graceMs);
    // A header is awaited next; the one being read is forgotten.
    void resetFrameState();
    // Runs fn on the socket's thread and waits for it.
    template <typename Fn> void runInSocketThread(Fn fn);

    QThread m_thread;
    int m_bytesExpected = 0;
    GuiAppsT m_appId = GuiAppsNone;
    QAtomicInt m_identified = 0;
    QList<coreComMsgT> m_queue;
    GuiAppsMsgHdrT m_header;
    bool m_secure = false;
    QString m_server;  // set on the socket's thread, read on any
    mutable std::mutex m_serverMutex;
    int m_port = 0;
    QTimer* m_reconnectTimer = nullptr;
    QString m_appName;

private:
    int m_readDepth = 0;
};
