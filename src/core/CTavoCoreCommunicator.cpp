#include "core/CTavoCoreCommunicator.h"

#include <QCoreApplication>
#include <QHostAddress>
#include <QMetaMethod>
#include <QSslCipher>
#include <QSslConfiguration>
#include <QTimer>
#include <cstring>

#include "core/TavoGlobals.h"
#include "log/CTavoGuiLog.h"
#include "log/GuiLog.h"

// The owner's thread and the socket's thread share a few flags and the server
// address; the flags are read without a lock, so as atomics.
//
// ThreadSanitizer cannot see the ordering that Qt's own locks give (futexes in
// a library built without it): the hand-overs between the two threads (a
// request posted to the socket's thread, a call run there and waited for, the
// end of the thread) are told to it here. Nothing in other builds.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TGUI_TELL_TSAN 1
extern "C" void __tsan_acquire(void* addr);
extern "C" void __tsan_release(void* addr);
#endif
#endif

namespace {
inline void handOver(const void* at)
{
#ifdef TGUI_TELL_TSAN
    __tsan_release(const_cast<void*>(at));
#else
    (void)at;
#endif
}

inline void takeOver(const void* at)
{
#ifdef TGUI_TELL_TSAN
    __tsan_acquire(const_cast<void*>(at));
#else
    (void)at;
#endif
}

inline bool rebooting()
{
    return __atomic_load_n(&bRebootInitiated, __ATOMIC_RELAXED);
}
}  // namespace

namespace {
const char kLoopback[] = "127.0.0.1";
const int kRetryMs = 5000;
const int kFirstConnectMs = 50;
// Frames in one read are delivered by recursion; past this depth the rest
// continues from the event loop, so a flood of small frames cannot exhaust
// the stack.
const int kMaxReadDepth = 256;

const char* const kErrorTexts[] = {
    "The connection was refused by the peer (or timed out)",
    "The remote host closed the connection. Note that the client socket (i.e., this socket) will "
    "be closed after the remote close notification has been sent.",
    "The host address was not found.",
    "The socket operation failed because the application lacked the required privileges.",
    "The local system ran out of resources (e.g., too many sockets).",
    "The socket operation timed out.",
    "The datagram was larger than the operating system's limit (which can be as low as 8192 bytes).",
    "An error occurred with the network (e.g., the network cable was accidentally plugged out).",
    "The address specified to QUdpSocket::bind() is already in use and was set to be exclusive.",
    "The address specified to QUdpSocket::bind() does not belong to the host.",
    "The requested socket operation is not supported by the local operating system (e.g., lack of "
    "IPv6 support).",
    "Used by QAbstractSocketEngine only, The last operation attempted has not finished yet (still "
    "in progress in the background).",
    "The socket is using a proxy, and the proxy requires authentication.",
    "The SSL/TLS handshake failed, so the connection was closed (only used in QSslSocket)",
    "Could not contact the proxy server because the connection to that server was denied",
    "The connection to the proxy server was closed unexpectedly (before the connection to the "
    "final peer was established)",
    "The connection to the proxy server timed out or the proxy server stopped responding in the "
    "authentication phase.",
    "The proxy address set with setProxy() (or the application proxy) was not found.",
    "The connection negotiation with the proxy server because the response from the proxy server "
    "could not be understood.",
};
const char kUnidentified[] = "An unidentified error occurred.";
}  // namespace

void CTavoCoreCommunicator::registerMetaTypes()
{
    qRegisterMetaType<GuiAppsT>("GuiAppsT");
    qRegisterMetaType<GuiAppsMsgTypeT>("GuiAppsMsgTypeT");
}

CTavoCoreCommunicator::CTavoCoreCommunicator(const QString& server, int port, const QString& appName,
                                             bool secure)
    : QSslSocket(nullptr), m_secure(secure), m_server(server), m_port(port)
{
    resetFrameState();
    m_appName = appName.isEmpty() ? QCoreApplication::applicationName() : appName;
    m_appId = appDefsType(m_appName.toUtf8().constData());
    setObjectName(QStringLiteral("CTavoCoreCommunicator"));
    m_thread.setObjectName(m_appName + QStringLiteral("-corecom"));
    registerMetaTypes();

    // The peer is not verified. The protocol is the oldest one the TLS
    // library still negotiates (see docs/porting.md).
    QSslConfiguration config = QSslConfiguration::defaultConfiguration();
    config.setProtocol(QSsl::TlsV1_2OrLater);
    config.setCiphers(QSslConfiguration::supportedCiphers());
    config.setPeerVerifyMode(QSslSocket::VerifyNone);
    // The socket takes protocol, mode and ciphers from this configuration.
    setSslConfiguration(config);
    setProtocol(QSsl::TlsV1_2OrLater);
    setPeerVerifyMode(QSslSocket::VerifyNone);

    connect(this, &QAbstractSocket::connected, this, &CTavoCoreCommunicator::onConnected);
    connect(this, &QAbstractSocket::disconnected, this, &CTavoCoreCommunicator::onDisconnected);
    connect(this, &QIODevice::readyRead, this, &CTavoCoreCommunicator::onReadyRead);
    connect(this, &CTavoCoreCommunicator::messageRequested, this,
            &CTavoCoreCommunicator::onMessageRequested);
    connect(this, &CTavoCoreCommunicator::forceDisconnect, this,
            &CTavoCoreCommunicator::onForceDisconnect);
    connect(this, &QAbstractSocket::errorOccurred, this, &CTavoCoreCommunicator::onError);
    connect(this, &QIODevice::bytesWritten, this, &CTavoCoreCommunicator::sendQueuedMessages);
    connect(this, &CTavoCoreCommunicator::reconnectToServerRequested, this,
            &CTavoCoreCommunicator::reconnectToServer);
    connect(this, QOverload<const QList<QSslError>&>::of(&QSslSocket::sslErrors), this,
            &CTavoCoreCommunicator::onSslErrors, Qt::DirectConnection);

    m_reconnectTimer = new QTimer(this);
    m_reconnectTimer->setSingleShot(true);
    connect(m_reconnectTimer, &QTimer::timeout, this, &CTavoCoreCommunicator::onTimeout);
    m_reconnectTimer->start(0);
    // Emitted on the socket's thread as its last act.
    connect(&m_thread, &QThread::finished, [this] { handOver(&m_thread); });
}

CTavoCoreCommunicator::~CTavoCoreCommunicator()
{
    if (m_thread.isRunning()) {
        // Socket notifiers and timers may only be touched by their own thread:
        // close there and come home before the thread ends.
        QThread* home = QThread::currentThread();
        runInSocketThread([this, home] {
            m_reconnectTimer->stop();
            abort();
            moveToThread(home);
        });
        m_thread.quit();
        m_thread.wait();
        takeOver(&m_thread);
    }
}

template <typename Fn> void CTavoCoreCommunicator::runInSocketThread(Fn fn)
{
    if (thread() == QThread::currentThread() || !thread()->isRunning()) {
        fn();
        return;
    }
    handOver(&m_thread);
    QMetaObject::invokeMethod(
        this,
        [this, &fn] {
            takeOver(&m_thread);
            fn();
            handOver(&m_thread);
        },
        Qt::BlockingQueuedConnection);
    takeOver(&m_thread);
}

void CTavoCoreCommunicator::send(const char* text, GuiAppsT destination, GuiAppsMsgTypeT type)
{
    if (rebooting() || !text)
        return;
    handOver(&m_thread);
    emit messageRequested(QByteArray(text), destination, type);
}

void CTavoCoreCommunicator::setServerAddress(const QString& address)
{
    if (address != serverAddress()) {
        handOver(&m_thread);
        emit reconnectToServerRequested(address);
    }
}

void CTavoCoreCommunicator::disconnectSocket()
{
    handOver(&m_thread);
    emit forceDisconnect();
}

void CTavoCoreCommunicator::shutDown()
{
    disconnect();
    // Called from the owner's side: the queue and the socket belong to the
    // socket's thread, which then hands the socket back to be destroyed here.
    QThread* home = QThread::currentThread();
    runInSocketThread([this, home] {
        m_queue.clear();
        onForceDisconnect();
        m_reconnectTimer->stop();
        if (thread() != home)
            moveToThread(home);
    });
    if (m_thread.isRunning()) {
        m_thread.exit(0);
        if (m_thread.wait(1000))
            takeOver(&m_thread);
    }
}

void CTavoCoreCommunicator::connectNotify(const QMetaMethod& signal)
{
    QSslSocket::connectNotify(signal);
    if (signal != QMetaMethod::fromSignal(&CTavoCoreCommunicator::messageReceived))
        return;
    if (m_thread.isRunning() || rebooting())
        return;
    // Only the owner's thread may hand the socket over.
    if (thread() != QThread::currentThread())
        return;
    guiLog(0, "CTavoCoreCommunicator::connectNotify - %s", qPrintable(m_appName));
    m_reconnectTimer->start(kFirstConnectMs);
    resetFrameState();
    m_thread.start(QThread::InheritPriority);
    // The timer is a child and moves along.
    moveToThread(&m_thread);
}

bool CTavoCoreCommunicator::useTls() const
{
    return m_secure && serverAddress() != QLatin1String(kLoopback);
}

void CTavoCoreCommunicator::connectToServer()
{
    if (useTls()) {
        disconnect(this, &QAbstractSocket::connected, this, &CTavoCoreCommunicator::onConnected);
        connect(this, &QSslSocket::encrypted, this, &CTavoCoreCommunicator::onConnected,
                Qt::UniqueConnection);
        connectToHostEncrypted(serverAddress(), quint16(m_port), QIODevice::ReadWrite);
    } else {
        disconnect(this, &QSslSocket::encrypted, this, &CTavoCoreCommunicator::onConnected);
        connect(this, &QAbstractSocket::connected, this, &CTavoCoreCommunicator::onConnected,
                Qt::UniqueConnection);
        connectToHost(serverAddress(), quint16(m_port), QIODevice::ReadWrite);
    }
}

void CTavoCoreCommunicator::disconnectAndWait(int graceMs)
{
    if (state() != QAbstractSocket::UnconnectedState && state() != QAbstractSocket::ClosingState)
        disconnectFromHost();
    if (graceMs > 0 && state() == QAbstractSocket::ClosingState)
        waitForDisconnected(graceMs);
    if (state() != QAbstractSocket::UnconnectedState && !waitForDisconnected(5000)) {
        guiLog(3, "Timed out while disconnecting from %s at %s:%d", qPrintable(m_appName),
               qPrintable(peerAddress().toString()), int(peerPort()));
    }
}

void CTavoCoreCommunicator::resetFrameState()
{
    std::memset(&m_header, 0, sizeof m_header);
    m_bytesExpected = 0;
}

void CTavoCoreCommunicator::reconnect()
{
    if (rebooting() || state() == QAbstractSocket::ConnectingState)
        return;
    disconnectAndWait(1000);
    resetFrameState();
    connectToServer();
}

void CTavoCoreCommunicator::reconnectToServer(const QString& address)
{
    if (rebooting())
        return;
    takeOver(&m_thread);
    {
        std::lock_guard<std::mutex> lock(m_serverMutex);
        m_server = address;
    }
    if (state() != QAbstractSocket::UnconnectedState && state() != QAbstractSocket::ClosingState) {
        disconnectAndWait(1000);
        close();
    }
    m_queue.clear();
    resetFrameState();
    connectToServer();
}

void CTavoCoreCommunicator::onTimeout()
{
    if (!rebooting() && state() == QAbstractSocket::UnconnectedState)
        reconnect();
}

void CTavoCoreCommunicator::onError(QAbstractSocket::SocketError error)
{
    if (rebooting())
        return;
    printErrorMessage(int(error));
    m_reconnectTimer->start(kRetryMs);
    if (int(error) <= 2)
        emit socketConnectionError(m_appName);
}

void CTavoCoreCommunicator::onConnected()
{
    if (rebooting())
        return;
    __atomic_store_n(&CTavoGuiLog::m_bEnabled, true, __ATOMIC_RELAXED);
    guiLog(3, "%s Connected to ZEDA Core application at %s:%d", qPrintable(m_appName),
           qPrintable(peerAddress().toString()), int(peerPort()));
    const QByteArray name = m_appName.toLatin1();
    send(name.constData(), GuiAppsTavoapp, GuiAppsMsgTxml);
    m_identified.storeRelease(1);
    emit connectedAndIdentified();
}

void CTavoCoreCommunicator::onDisconnected()
{
    if (rebooting())
        return;
    __atomic_store_n(&CTavoGuiLog::m_bEnabled, false, __ATOMIC_RELAXED);
    guiLog(3, "%s disconnected ZEDA Core application from %s:%d", qPrintable(m_appName),
           qPrintable(peerAddress().toString()), int(peerPort()));
    m_identified.storeRelease(0);
}

void CTavoCoreCommunicator::onForceDisconnect()
{
    takeOver(&m_thread);
    if (state() == QAbstractSocket::UnconnectedState || state() == QAbstractSocket::ClosingState)
        return;
    disconnectAndWait(0);
    close();
    resetFrameState();
}

void CTavoCoreCommunicator::onReadyRead()
{
    if (rebooting())
        return;
    if (useTls() && !isEncrypted())
        return;

    if (m_bytesExpected == 0) {
        if (bytesAvailable() < qint64(sizeof m_header))
            return;
        const qint64 got = read(reinterpret_cast<char*>(&m_header), qint64(sizeof m_header));
        if (got == qint64(sizeof m_header) && appDefsIsValidHdr(&m_header)) {
            m_bytesExpected = m_header.length;
        } else {
            // No resynchronisation: the next 16 bytes are trusted to be a header.
            guiLog(4, "CoreCommunicator: received corrupted data, message header failed validation");
        }
    }
    if (m_bytesExpected >= 0x1000000) {
        guiLog(4, "CoreCommunicator: received corrupted data, messages are discarded");
        readAll();
        m_bytesExpected = 0;
        return;
    }
    if (bytesAvailable() < qint64(m_bytesExpected))
        return;

    // A negative length counts as satisfied and yields an empty payload.
    const QByteArray payload = m_bytesExpected > 0 ? read(m_bytesExpected) : QByteArray();
    if (m_header.destination & m_appId) {
        emit messageReceived(payload, GuiAppsT(m_header.source), GuiAppsMsgTypeT(m_header.msgType));
    } else {
        // No peer bit at all names nobody: print what glibc prints for a null %s.
        const char* name = appDefsName(GuiAppsT(m_header.destination));
        guiLog(4,
               "Received a message that's not intended for this app, the message destination is "
               "set to %s, len = %d",
               name ? name : "(null)", m_header.length);
        reconnect();
    }
    m_bytesExpected = 0;
    if (bytesAvailable() >= 1) {
        if (m_readDepth >= kMaxReadDepth) {
            QMetaObject::invokeMethod(this, &CTavoCoreCommunicator::onReadyRead, Qt::QueuedConnection);
            return;
        }
        ++m_readDepth;
        onReadyRead();
        --m_readDepth;
    }
}

void CTavoCoreCommunicator::onMessageRequested(QByteArray data, GuiAppsT destination,
                                               GuiAppsMsgTypeT type)
{
    takeOver(&m_thread);
    if (rebooting())
        return;
    if (useTls() && !isEncrypted())
        return;
    if (state() != QAbstractSocket::ConnectedState)
        return;
    sendQueuedMessages(0);
    if (data.isEmpty())
        return;
    coreComMsgT msg;
    msg.data = data;
    appDefsAssembleHdr(msg.header, m_appId, destination, data.size(), type);
    msg.stage = 0;
    msg.written = 0;
    msg.queued = false;
    if (sendMsg(msg) == -1)
        printErrorMessage(-1);
}

void CTavoCoreCommunicator::prepareIO(coreComMsgT& msg, char** data, int& toWrite, int& total)
{
    if (msg.stage == 0) {
        *data = reinterpret_cast<char*>(&msg.header) + msg.written;
        toWrite = int(sizeof msg.header) - msg.written;
        total = int(sizeof msg.header);
    } else if (msg.stage == 1) {
        *data = msg.data.data() + msg.written;
        toWrite = msg.header.length - msg.written;
        total = msg.header.length;
    }
}

int CTavoCoreCommunicator::sendMsg(coreComMsgT& msg)
{
    char* data = nullptr;
    int toWrite = 0;
    int total = 0;
    prepareIO(msg, &data, toWrite, total);
    if (!data || toWrite <= 0)
        return -1;
    const qint64 n = write(data, toWrite);
    if (n < 0)
        return int(n);
    msg.written += int(n);
    if (msg.written < total) {
        queueMsg(msg);
        return 1;
    }
    ++msg.stage;
    if (msg.stage > 1)
        return 0;
    msg.written = 0;
    return sendMsg(msg);
}

void CTavoCoreCommunicator::queueMsg(const coreComMsgT& msg)
{
    if (rebooting() || msg.queued)
        return;
    coreComMsgT copy = msg;
    copy.queued = true;
    m_queue.append(copy);
}

void CTavoCoreCommunicator::sendQueuedMessages(qint64)
{
    if (rebooting())
        return;
    while (!m_queue.isEmpty()) {
        if (sendMsg(m_queue.first()) != 0)
            return;
        m_queue.removeFirst();
    }
}

void CTavoCoreCommunicator::onSslErrors(const QList<QSslError>&)
{
    // Deliberately neither ignored nor reported: the peer is not verified, and
    // a failed handshake surfaces as socket error 13.
}

void CTavoCoreCommunicator::printErrorMessage(int error)
{
    const int count = int(sizeof kErrorTexts / sizeof kErrorTexts[0]);
    const char* text = (error >= 0 && error < count) ? kErrorTexts[error] : kUnidentified;
    guiLog(3, "CoreCom Error Detected: %s for the app:%s", text, qPrintable(m_appName));
}
