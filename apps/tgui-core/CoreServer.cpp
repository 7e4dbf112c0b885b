#include "CoreServer.h"

#include <QCoreApplication>
#include <QDir>
#include <QDomDocument>
#include <QDomElement>
#include <QFile>
#include <QHostAddress>
#include <QProcess>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTextStream>
#include <csignal>
#include <cerrno>
#include <cstdio>

#include "CTXMLUriLib.h"

namespace {
void out(const QString& line)
{
    // One line per fact: scripts and tests read this stream.
    std::fprintf(stdout, "%s\n", line.toUtf8().constData());
    std::fflush(stdout);
}

QString oneLine(const QByteArray& payload)
{
    QString text = QString::fromUtf8(payload);
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    text.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    text.replace(QLatin1Char('\r'), QLatin1String("\\r"));
    return text;
}

QString nameOf(int bit)
{
    const char* name = appDefsName(GuiAppsT(bit));
    return name ? QString::fromLatin1(name) : QString::number(bit);
}
}  // namespace

CoreServer::CoreServer(QObject* parent) : QTcpServer(parent)
{
    m_stepTimer.setSingleShot(true);
    connect(&m_stepTimer, &QTimer::timeout, this, &CoreServer::step);
    m_waitTimeout.setSingleShot(true);
    m_reportRetry.setSingleShot(true);
    connect(&m_reportRetry, &QTimer::timeout, this, [this] {
        if (!m_reportPeer.isEmpty())
            askForReport(m_reportPeer);
    });
    connect(&m_waitTimeout, &QTimer::timeout, this, [this] {
        QString what = m_waitingFor.isEmpty() ? m_expecting : m_waitingFor;
        if (!m_reportPeer.isEmpty()) {
            what = m_matchName.isEmpty() ? QStringLiteral("a report of %1").arg(m_reportPeer)
                                         : QStringLiteral("%1 %2=%3 in a report of %4")
                                               .arg(m_matchName, m_matchAttribute, m_matchValue, m_reportPeer);
        }
        out(QStringLiteral("SCENARIO timeout waiting for %1").arg(what));
        QCoreApplication::exit(3);
    });
}

CoreServer::~CoreServer()
{
    for (QProcess* child : qAsConst(m_children)) {
        child->terminate();
        if (!child->waitForFinished(3000))
            child->kill();
        child->waitForFinished(1000);
    }
    qDeleteAll(m_children);
    qDeleteAll(m_peers);
}

void CoreServer::setTls(const QSslCertificate& cert, const QSslKey& key)
{
    m_tls = true;
    m_cert = cert;
    m_key = key;
}

void CoreServer::incomingConnection(qintptr descriptor)
{
    QTcpSocket* socket = nullptr;
    if (m_tls) {
        auto* ssl = new QSslSocket(this);
        if (!ssl->setSocketDescriptor(descriptor)) {
            delete ssl;
            return;
        }
        QSslConfiguration config = ssl->sslConfiguration();
        config.setLocalCertificate(m_cert);
        config.setPrivateKey(m_key);
        config.setProtocol(QSsl::TlsV1_2OrLater);
        config.setPeerVerifyMode(QSslSocket::VerifyNone);
        ssl->setSslConfiguration(config);
        connect(ssl, QOverload<const QList<QSslError>&>::of(&QSslSocket::sslErrors), ssl,
                [](const QList<QSslError>& errors) {
                    for (const QSslError& e : errors)
                        out(QStringLiteral("TLS error %1").arg(e.errorString()));
                });
        ssl->startServerEncryption();
        socket = ssl;
    } else {
        socket = new QTcpSocket(this);
        if (!socket->setSocketDescriptor(descriptor)) {
            delete socket;
            return;
        }
    }
    // Frames are routed one by one as they come: none may wait for an acknowledgement.
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    auto* peer = new Peer;
    peer->socket = socket;
    m_peers.append(peer);
    out(QStringLiteral("CONNECT %1:%2%3")
            .arg(socket->peerAddress().toString())
            .arg(socket->peerPort())
            .arg(m_tls ? QStringLiteral(" tls") : QString()));
    connect(socket, &QIODevice::readyRead, this, [this, peer] { onReadyRead(peer); });
    connect(socket, &QAbstractSocket::disconnected, this, [this, peer] { onGone(peer); });
}

void CoreServer::onReadyRead(Peer* peer)
{
    peer->buffer += peer->socket->readAll();
    const int headerLength = appDefsHeaderLength();
    int at = 0;
    for (;;) {
        GuiAppsMsgHdrT hdr;
        const int size = appDefsFrameLength(peer->buffer.constData() + at, peer->buffer.size() - at, &hdr);
        if (size == 0)
            break;
        if (size < 0) {
            out(QStringLiteral("REJECT %1 invalid header, closing").arg(peer->name));
            peer->buffer.clear();
            peer->socket->abort();
            return;
        }
        const QByteArray payload = peer->buffer.mid(at + headerLength, hdr.length);
        at += size;
        handleFrame(peer, hdr, payload);
        if (!m_peers.contains(peer))
            return;
    }
    peer->buffer.remove(0, at);
}

void CoreServer::handleFrame(Peer* peer, const GuiAppsMsgHdrT& hdr, const QByteArray& payload)
{
    const int forCore = hdr.destination & GuiAppsTavoapp;
    if (forCore && peer->bit == 0 && hdr.msgType == GuiAppsMsgTxml) {
        GuiAppsT app = GuiAppsNone;
        char name[64] = {0};
        char extra[64] = {0};
        appDefsParseRegsitration(payload.constData(), app, name, extra, int(sizeof name) - 1,
                                 int(sizeof extra) - 1);
        if (app == GuiAppsNone) {
            out(QStringLiteral("REJECT unknown registration '%1'").arg(oneLine(payload)));
            return;
        }
        peer->bit = app;
        peer->name = QString::fromLatin1(name);
        out(QStringLiteral("REGISTER %1").arg(peer->name));
        broadcastStatus();
        if (!m_waitingFor.isEmpty() && m_waitingFor == peer->name) {
            m_waitingFor.clear();
            m_waitTimeout.stop();
            m_stepTimer.start(0);
        }
        return;
    }
    if (forCore && hdr.msgType == GuiAppsMsgUiReport) {
        // A whole screen as XML: too long for one line of the log.
        out(QStringLiteral("UIREPORT %1 bytes=%2").arg(peer->name.isEmpty() ? QStringLiteral("?") : peer->name).arg(payload.size()));
        onUiReport(peer->name, payload);
    } else if (forCore) {
        const QString line = QStringLiteral("EVENT %1 type=%2 %3")
                                 .arg(peer->name.isEmpty() ? QStringLiteral("?") : peer->name)
                                 .arg(int(hdr.msgType))
                                 .arg(oneLine(payload));
        out(line);
        onEventSeen(line);
    }
    const int others = hdr.destination & ~int(GuiAppsTavoapp);
    if (!others)
        return;
    const QByteArray frame =
        QByteArray(reinterpret_cast<const char*>(&hdr), int(sizeof hdr)) + payload;
    int routed = 0;
    const QString from = peer->name;  // the sender itself may be dropped below
    const QList<Peer*> peers = m_peers;  // a peer over its limit leaves the list
    for (Peer* p : peers) {
        if ((p->bit & others) && m_peers.contains(p) && writeTo(p, frame.constData(), frame.size()))
            ++routed;
    }
    const QString line = QStringLiteral("ROUTE %1 -> %2 type=%3 len=%4 peers=%5")
                             .arg(from, nameOf(others))
                             .arg(int(hdr.msgType))
                             .arg(hdr.length)
                             .arg(routed);
    out(line);
    // A scenario may wait for a frame between peers, as for one to the core.
    onEventSeen(line);
}

void CoreServer::onGone(Peer* peer)
{
    m_peers.removeAll(peer);
    out(QStringLiteral("DISCONNECT %1").arg(peer->name.isEmpty() ? QStringLiteral("?") : peer->name));
    // Whatever the socket still reports must not reach the peer deleted here.
    peer->socket->disconnect(this);
    peer->socket->deleteLater();
    const bool registered = peer->bit != 0;
    delete peer;
    if (registered)
        broadcastStatus();
}

int CoreServer::connectedMask() const
{
    int mask = GuiAppsTavoapp;
    for (const Peer* p : m_peers)
        mask |= p->bit;
    return mask;
}

void CoreServer::broadcastStatus()
{
    const int mask = connectedMask();
    const QByteArray doc = QByteArray("<TXML><Event uri=\"")
                           + CTXMLUriLib::uri(TxmlUriAppStatus)
                           + "\"></Event><AppStatus mask=\"" + QByteArray::number(mask)
                           + "\"/></TXML>";
    const int sent = sendToMask(mask & ~int(GuiAppsTavoapp), doc, GuiAppsMsgTxml);
    out(QStringLiteral("STATUS mask=%1 peers=%2").arg(mask).arg(sent));
}

int CoreServer::sendToMask(int mask, const QByteArray& payload, GuiAppsMsgTypeT type)
{
    int sent = 0;
    const QList<Peer*> peers = m_peers;  // a peer over its limit leaves the list
    for (Peer* p : peers) {
        if (!(p->bit & mask) || !m_peers.contains(p))
            continue;
        char* frame = appDefsAssembleMessage(GuiAppsTavoapp, GuiAppsT(p->bit), payload.constData(),
                                             payload.size(), type);
        const bool written = writeTo(p, frame, appDefsHeaderLength() + payload.size());
        delete[] frame;
        if (written)
            ++sent;
    }
    return sent;
}

bool CoreServer::writeTo(Peer* peer, const char* data, qint64 size)
{
    // A peer that does not read would make the core hold everything sent to
    // it: past the limit the peer is cut off instead.
    if (peer->socket->bytesToWrite() + size > m_queueLimit) {
        out(QStringLiteral("DROP %1 does not read: %2 bytes waiting, limit %3, closing")
                .arg(peer->name.isEmpty() ? QStringLiteral("?") : peer->name)
                .arg(peer->socket->bytesToWrite() + size)
                .arg(m_queueLimit));
        peer->socket->abort();
        // abort() reports the disconnection only for a socket that stood connected.
        if (m_peers.contains(peer))
            onGone(peer);
        return false;
    }
    peer->socket->write(data, size);
    return true;
}

// --- scenario ----------------------------------------------------------------

bool CoreServer::loadScenario(const QString& path, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        *error = file.errorString();
        return false;
    }
    QTextStream in(&file);
    in.setCodec("UTF-8");
    while (!in.atEnd())
        m_scenario.append(in.readLine());
    return true;
}

void CoreServer::startScenario()
{
    if (!m_scenario.isEmpty())
        m_stepTimer.start(0);
}

int CoreServer::maskOf(const QString& word) const
{
    bool isNumber = false;
    const int number = word.toInt(&isNumber, 0);
    if (isNumber)
        return number;
    int mask = 0;
    for (const QString& part : word.split(QLatin1Char('|'), Qt::SkipEmptyParts))
        mask |= appDefsType(part.toLatin1().constData());
    return mask;
}

void CoreServer::startPeer(const QString& peer, const QString& arguments)
{
    auto* child = new QProcess(this);
    const QString dir = m_programDir.isEmpty() ? QCoreApplication::applicationDirPath() : m_programDir;
    child->setProgram(dir + QStringLiteral("/tgui-") + peer);
    child->setArguments(QProcess::splitCommand(arguments)
                        + QStringList{QStringLiteral("--server"), QStringLiteral("127.0.0.1"), QStringLiteral("--port"),
                                      QString::number(serverPort()), QStringLiteral("--exit-with-parent")});
    // Its log goes to our standard error; our standard output stays one fact per line.
    child->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child->setStandardOutputFile(QProcess::nullDevice());
    child->start();
    if (!child->waitForStarted(5000)) {
        out(QStringLiteral("SCENARIO cannot start %1: %2").arg(child->program(), child->errorString()));
        delete child;
        return;
    }
    m_children.append(child);
    out(QStringLiteral("SCENARIO started tgui-%1 pid=%2").arg(peer).arg(child->processId()));
}

void CoreServer::onEventSeen(const QString& line)
{
    if (!m_expecting.isEmpty() && line.contains(m_expecting)) {
        m_expecting.clear();
        m_waitTimeout.stop();
        m_stepTimer.start(0);
    }
}

void CoreServer::step()
{
    while (m_line < m_scenario.size()) {
        const QString raw = m_scenario.at(m_line++);
        const QString line = raw.trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        const int space = line.indexOf(QLatin1Char(' '));
        const QString verb = space < 0 ? line : line.left(space);
        const QString rest = space < 0 ? QString() : line.mid(space + 1).trimmed();
        const int restSpace = rest.indexOf(QLatin1Char(' '));
        const QString arg1 = restSpace < 0 ? rest : rest.left(restSpace);
        const QString tail = restSpace < 0 ? QString() : rest.mid(restSpace + 1);

        if (verb == QLatin1String("sleep")) {
            m_stepTimer.start(arg1.toInt());
            return;
        }
        if (verb == QLatin1String("wait")) {
            bool present = false;
            for (const Peer* p : qAsConst(m_peers))
                present = present || p->name == arg1;
            if (present)
                continue;
            m_waitingFor = arg1;
            m_waitTimeout.start(tail.isEmpty() ? 30000 : tail.toInt());
            return;
        }
        if (verb == QLatin1String("expect")) {
            m_expecting = rest;
            m_waitTimeout.start(30000);
            return;
        }
        if (verb == QLatin1String("send") || verb == QLatin1String("sendfile")
            || verb == QLatin1String("senddb")) {
            QByteArray payload = tail.toUtf8();
            if (verb == QLatin1String("sendfile")) {
                QFile file(tail);
                if (!file.open(QIODevice::ReadOnly)) {
                    out(QStringLiteral("SCENARIO line %1: cannot read %2").arg(m_line).arg(tail));
                    continue;
                }
                payload = file.readAll();
            }
            const GuiAppsMsgTypeT type = verb == QLatin1String("senddb") ? GuiAppsMsgDb : GuiAppsMsgTxml;
            const int sent = sendToMask(maskOf(arg1), payload, type);
            out(QStringLiteral("SENT %1 bytes to %2 peers=%3").arg(payload.size()).arg(arg1).arg(sent));
            continue;
        }
        if (verb == QLatin1String("report") || verb == QLatin1String("expectreport")) {
            // report <peer> <file> | expectreport <peer> <name> <attribute>=<value to the end of the line>
            const QString what = tail.trimmed();
            const int gap = what.indexOf(QLatin1Char(' '));
            const QStringList words = gap < 0 ? QStringList{what} : QStringList{what.left(gap), what.mid(gap + 1).trimmed()};
            const bool saving = verb == QLatin1String("report");
            const int equals = saving || words.size() < 2 ? -1 : words.at(1).indexOf(QLatin1Char('='));
            if (arg1.isEmpty() || what.isEmpty() || (!saving && equals <= 0)) {
                out(QStringLiteral("SCENARIO line %1: %2 needs %3").arg(m_line).arg(verb)
                        .arg(saving ? QStringLiteral("<peer> <file>") : QStringLiteral("<peer> <name> <attribute>=<value>")));
                continue;
            }
            m_reportPeer = arg1;
            m_reportFile.clear();
            m_matchName.clear();
            if (saving) {
                m_reportFile = QDir(m_reportDir.isEmpty() ? QDir::currentPath() : m_reportDir).absoluteFilePath(words.at(0));
            } else {
                m_matchName = words.at(0);
                m_matchAttribute = words.at(1).left(equals);
                m_matchValue = words.at(1).mid(equals + 1);
            }
            m_waitTimeout.start(30000);
            askForReport(arg1);
            return;
        }
        if (verb == QLatin1String("sync")) {
            // A UI report is answered after every frame sent before it: its
            // arrival says the peer has caught up, however slow it runs.
            if (arg1.isEmpty()) {
                out(QStringLiteral("SCENARIO line %1: sync needs <peer>").arg(m_line));
                continue;
            }
            m_reportPeer = arg1;
            m_reportFile.clear();
            m_matchName.clear();
            m_syncing = true;
            m_waitTimeout.start(30000);
            askForReport(arg1);
            return;
        }
        if (verb == QLatin1String("start")) {
            startPeer(arg1, tail);
            continue;
        }
        if (verb == QLatin1String("stop")) {
            // Ends a process of the scenario's world (a proxy, say) with SIGTERM:
            // its pid, or $NAME for the pid held in that environment variable.
            const QString pidText = arg1.startsWith(QLatin1Char('$')) ? qEnvironmentVariable(arg1.mid(1).toUtf8().constData())
                                                                     : arg1;
            bool ok = false;
            const qint64 pid = pidText.toLongLong(&ok);
            if (!ok || pid <= 1) {
                out(QStringLiteral("SCENARIO line %1: no process to stop in '%2'").arg(m_line).arg(arg1));
                continue;
            }
            if (::kill(pid_t(pid), SIGTERM) == 0)
                out(QStringLiteral("SCENARIO stopped %1").arg(pid));
            else
                out(QStringLiteral("SCENARIO line %1: cannot stop %2: %3").arg(m_line).arg(pid).arg(QString::fromLocal8Bit(std::strerror(errno))));
            continue;
        }
        if (verb == QLatin1String("quit")) {
            out(QStringLiteral("SCENARIO done"));
            QCoreApplication::exit(arg1.toInt());
            return;
        }
        out(QStringLiteral("SCENARIO line %1: unknown command '%2'").arg(m_line).arg(verb));
    }
    out(QStringLiteral("SCENARIO done"));
}

// --- UI reports --------------------------------------------------------------

void CoreServer::askForReport(const QString& peer)
{
    const QByteArray doc = QByteArray("<TXML><Event uri=\"") + CTXMLUriLib::uri(TxmlUriUiReport) + "\"></Event></TXML>";
    sendToMask(maskOf(peer), doc, GuiAppsMsgTxml);
}

namespace {
// The first element, in document order, with name=NAME and attribute=VALUE.
bool showsValue(const QDomElement& element, const QString& name, const QString& attribute, const QString& value)
{
    if (element.attribute(QStringLiteral("name")) == name && element.hasAttribute(attribute)
        && element.attribute(attribute) == value)
        return true;
    for (QDomElement child = element.firstChildElement(); !child.isNull(); child = child.nextSiblingElement()) {
        if (showsValue(child, name, attribute, value))
            return true;
    }
    return false;
}
}  // namespace

void CoreServer::onUiReport(const QString& peer, const QByteArray& xml)
{
    if (m_reportPeer.isEmpty() || peer != m_reportPeer)
        return;
    if (m_syncing) {
        out(QStringLiteral("SYNC %1").arg(peer));
        finishReportStep();
        return;
    }
    if (!m_reportFile.isEmpty()) {
        QFile file(m_reportFile);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(xml) != xml.size())
            out(QStringLiteral("SCENARIO cannot write %1: %2").arg(m_reportFile, file.errorString()));
        else
            out(QStringLiteral("REPORT %1 saved %2 bytes to %3").arg(peer).arg(xml.size()).arg(m_reportFile));
        finishReportStep();
        return;
    }
    QDomDocument document;
    QString error;
    if (!document.setContent(xml, &error)) {
        out(QStringLiteral("REPORT %1 is not XML: %2").arg(peer, error));
    } else if (showsValue(document.documentElement(), m_matchName, m_matchAttribute, m_matchValue)) {
        out(QStringLiteral("REPORT %1 shows %2 %3=%4").arg(peer, m_matchName, m_matchAttribute, m_matchValue));
        finishReportStep();
        return;
    }
    // Not yet: ask again shortly, until the step's time is up.
    m_reportRetry.start(200);
}

void CoreServer::finishReportStep()
{
    m_reportPeer.clear();
    m_reportFile.clear();
    m_matchName.clear();
    m_syncing = false;
    m_reportRetry.stop();
    m_waitTimeout.stop();
    m_stepTimer.start(0);
}
