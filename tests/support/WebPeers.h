#pragma once
// The real peers of the web tests, all on 127.0.0.1: Debian's tinyproxy on a
// free port with its own configuration in a temporary folder, our SOAP
// endpoint tgui-soapd, a closed port, a proxy that accepts and never answers,
// and a catcher of guiLog lines (they go to qDebug without a log client).
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QTcpServer>
#include <QTemporaryDir>

class TinyProxy
{
public:
    TinyProxy() = default;
    ~TinyProxy() { stop(); }
    // upstream: a port of 127.0.0.1 that every request is passed to (our
    // endpoint, which also speaks the proxy's absolute form); 0 for none.
    bool start(quint16 upstream = 0, const QString& user = QString(), const QString& password = QString());
    void stop();
    bool isRunning() const { return m_process.state() == QProcess::Running; }
    quint16 port() const { return m_port; }
    qint64 pid() const { return m_process.processId(); }
    QString log() const;

private:
    QTemporaryDir m_dir;
    QProcess m_process;
    quint16 m_port = 0;
};

class SoapPeer
{
public:
    SoapPeer() = default;
    ~SoapPeer() { stop(); }
    bool start(const QStringList& arguments = {});
    // Stops it with SIGTERM; its exit code (0 for a clean stop), -1 if it had to be killed.
    int stop();
    quint16 port() const { return m_port; }
    // Every line it printed after LISTENING.
    QStringList lines();
    QString url(const QString& path, const QString& host = QStringLiteral("127.0.0.1")) const;

private:
    QProcess m_process;
    quint16 m_port = 0;
    QByteArray m_pending;
    QStringList m_lines;
};

// A port of 127.0.0.1 that nothing listens on: connections are refused.
quint16 closedPort();

// Accepts connections and never says a word.
class SilentProxy : public QTcpServer
{
public:
    SilentProxy();

protected:
    void incomingConnection(qintptr descriptor) override;
};

// Collects debug messages (guiLog's output without a log client) while alive.
class LogCatcher
{
public:
    LogCatcher();
    ~LogCatcher();
    QStringList lines() const;
    int count(const QString& text) const;
    bool contains(const QString& text) const { return count(text) > 0; }
    void clear();
};
