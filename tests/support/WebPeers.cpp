#include "WebPeers.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMutex>
#include <QNetworkProxy>
#include <QTcpSocket>
#include <QThread>
#include <QtTest>

namespace {
const QString kBinDir = qEnvironmentVariable("TGUI_BIN_DIR", TGUI_BIN_DIR);

bool accepts(quint16 port)
{
    QTcpSocket probe;
    probe.setProxy(QNetworkProxy::NoProxy);
    probe.connectToHost(QHostAddress::LocalHost, port);
    return probe.waitForConnected(200);
}

QMutex g_logLock;
QStringList g_log;
QtMessageHandler g_previous = nullptr;
bool g_quiet = qEnvironmentVariableIsSet("TGUI_TEST_QUIET");

void catchMessage(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    {
        QMutexLocker lock(&g_logLock);
        g_log.append(text);
    }
    // Keep the test's output readable: long lines are cut.
    if (g_previous && !g_quiet)
        g_previous(type, context, text.size() > 300 ? text.left(300) + QStringLiteral("...") : text);
}
}  // namespace

bool TinyProxy::start(quint16 upstream, const QString& user, const QString& password)
{
    for (int attempt = 0; attempt < 3; ++attempt) {
        m_port = closedPort();
        const QString conf = m_dir.filePath(QStringLiteral("tinyproxy-%1.conf").arg(m_port));
        QFile file(conf);
        if (!file.open(QIODevice::WriteOnly))
            return false;
        QByteArray text = "Port " + QByteArray::number(m_port) + "\nListen 127.0.0.1\nTimeout 30\nMaxClients 64\n"
                          "Allow 127.0.0.1\nLogLevel Info\n";
        text += "LogFile \"" + m_dir.filePath(QStringLiteral("tinyproxy.log")).toUtf8() + "\"\n";
        text += "PidFile \"" + m_dir.filePath(QStringLiteral("tinyproxy.pid")).toUtf8() + "\"\n";
        if (upstream)
            text += "Upstream http 127.0.0.1:" + QByteArray::number(upstream) + "\n";
        if (!user.isEmpty())
            text += "BasicAuth " + user.toUtf8() + " " + password.toUtf8() + "\n";
        file.write(text);
        file.close();
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QStringLiteral("tinyproxy"), {QStringLiteral("-d"), QStringLiteral("-c"), conf});
        if (!m_process.waitForStarted(5000))
            return false;
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < 5000 && m_process.state() == QProcess::Running) {
            if (accepts(m_port))
                return true;
            QThread::msleep(20);
        }
        stop();
    }
    return false;
}

void TinyProxy::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(5000)) {
        m_process.kill();
        m_process.waitForFinished(2000);
    }
}

QString TinyProxy::log() const
{
    QFile file(m_dir.filePath(QStringLiteral("tinyproxy.log")));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

bool SoapPeer::start(const QStringList& arguments)
{
    m_process.start(kBinDir + QStringLiteral("/tgui-soapd"), arguments);
    if (!m_process.waitForStarted(5000))
        return false;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 10000 && !m_process.canReadLine())
        m_process.waitForReadyRead(100);
    const QByteArray first = m_process.readLine().trimmed();
    if (!first.startsWith("LISTENING "))
        return false;
    m_port = quint16(first.split(' ').value(1).toUInt());
    return m_port != 0;
}

int SoapPeer::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return m_process.exitCode();
    m_process.terminate();
    if (!m_process.waitForFinished(5000)) {
        m_process.kill();
        m_process.waitForFinished(2000);
        return -1;
    }
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

QStringList SoapPeer::lines()
{
    // What sits in the pipe reaches the buffer only through a wait.
    while (m_process.state() == QProcess::Running && m_process.waitForReadyRead(50))
        m_pending += m_process.readAllStandardOutput();
    m_pending += m_process.readAllStandardOutput();
    int newline;
    while ((newline = m_pending.indexOf('\n')) >= 0) {
        m_lines.append(QString::fromUtf8(m_pending.left(newline)));
        m_pending.remove(0, newline + 1);
    }
    return m_lines;
}

QString SoapPeer::url(const QString& path, const QString& host) const
{
    return QStringLiteral("http://%1:%2%3").arg(host).arg(m_port).arg(path);
}

quint16 closedPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost, 0);
    const quint16 port = server.serverPort();
    server.close();
    return port;
}

SilentProxy::SilentProxy()
{
    listen(QHostAddress::LocalHost, 0);
}

void SilentProxy::incomingConnection(qintptr descriptor)
{
    auto* socket = new QTcpSocket(this);
    socket->setSocketDescriptor(descriptor);
    // Reads what comes so that the peer's writes succeed, answers nothing.
    QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket] { socket->readAll(); });
}

LogCatcher::LogCatcher()
{
    clear();
    g_previous = qInstallMessageHandler(catchMessage);
}

LogCatcher::~LogCatcher()
{
    qInstallMessageHandler(g_previous);
}

QStringList LogCatcher::lines() const
{
    QMutexLocker lock(&g_logLock);
    return g_log;
}

int LogCatcher::count(const QString& text) const
{
    QMutexLocker lock(&g_logLock);
    int n = 0;
    for (const QString& line : qAsConst(g_log))
        n += line.contains(text) ? 1 : 0;
    return n;
}

void LogCatcher::clear()
{
    QMutexLocker lock(&g_logLock);
    g_log.clear();
}
