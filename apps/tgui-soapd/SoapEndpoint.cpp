#include "SoapEndpoint.h"

#include <QDomDocument>
#include <QPointer>
#include <QSocketNotifier>
#include <QSslSocket>
#include <QTimer>
#include <QUrlQuery>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>

namespace {
const int kMaxHeaderBytes = 64 * 1024;
const int kMaxBodyBytes = 8 * 1024 * 1024;
const int kMaxDelayMs = 120000;
const int kMaxReplyBytes = 64 * 1024 * 1024;

struct Entry {
    const char* name;
    const char* number;
};
const Entry kDirectory[] = {
    {"Alice Martin", "201"},
    {"Bob Keller", "202"},
    {"Carol Novak", "203"},
};

QByteArray reason(int status)
{
    switch (status) {
    case 200: return "OK";
    case 302: return "Found";
    case 400: return "Bad Request";
    case 401: return "Unauthorized";
    case 404: return "Not Found";
    case 413: return "Payload Too Large";
    case 500: return "Internal Server Error";
    case 503: return "Service Unavailable";
    default: return "Status";
    }
}

QByteArray xmlEscaped(const QString& text)
{
    return text.toHtmlEscaped().toUtf8();
}

// Pads an XML document to exactly size bytes with a comment after its root.
QByteArray padded(QByteArray document, qint64 size)
{
    const qint64 room = size - document.size() - 7;  // "<!--" + "-->"
    if (room > 0 && size <= kMaxReplyBytes)
        document += "<!--" + QByteArray(int(room), 'x') + "-->";
    return document;
}

void say(const QByteArray& line)
{
    std::fprintf(stdout, "%s\n", line.constData());
    std::fflush(stdout);
}
}  // namespace

SoapEndpoint::SoapEndpoint(QObject* parent)
    : QTcpServer(parent)
{
}

void SoapEndpoint::setTls(const QSslCertificate& certificate, const QSslKey& key)
{
    m_certificate = certificate;
    m_key = key;
}

void SoapEndpoint::setCredentials(const QString& user, const QString& password)
{
    m_user = user;
    m_password = password;
}

void SoapEndpoint::incomingConnection(qintptr descriptor)
{
    // The first byte tells a TLS handshake from plain HTTP; it has to be known
    // before a socket object reads anything.
    auto* notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier, descriptor] {
        notifier->setEnabled(false);
        notifier->deleteLater();
        unsigned char first = 0;
        const ssize_t peeked = ::recv(int(descriptor), &first, 1, MSG_PEEK);
        auto* socket = new QSslSocket(this);
        if (peeked <= 0 || !socket->setSocketDescriptor(descriptor)) {
            if (socket->socketDescriptor() == -1)
                ::close(int(descriptor));
            socket->deleteLater();
            return;
        }
        auto buffer = std::make_shared<QByteArray>();
        connect(socket, &QSslSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QSslSocket::readyRead, this, [this, socket, buffer] {
            buffer->append(socket->readAll());
            Request request;
            switch (parse(*buffer, &request)) {
            case Parse::Incomplete:
                return;
            case Parse::Bad:
                reply(socket, 400, fault("soap:Client", "malformed HTTP request"));
                return;
            case Parse::TooLarge:
                reply(socket, 413, fault("soap:Client", "request too large"));
                return;
            case Parse::Done:
                break;
            }
            buffer->clear();
            serve(socket, request);
        });
        if (first == 0x16 && !m_key.isNull()) {
            socket->setLocalCertificate(m_certificate);
            socket->setPrivateKey(m_key);
            socket->startServerEncryption();
        }
    });
}

SoapEndpoint::Parse SoapEndpoint::parse(QByteArray& buffer, Request* request)
{
    const int headerEnd = buffer.indexOf("\r\n\r\n");
    if (headerEnd < 0)
        return buffer.size() > kMaxHeaderBytes ? Parse::TooLarge : Parse::Incomplete;
    const QList<QByteArray> lines = buffer.left(headerEnd).split('\n');
    const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
    if (first.size() != 3 || !first.at(2).startsWith("HTTP/1."))
        return Parse::Bad;
    request->method = first.at(0);
    QByteArray target = first.at(1);
    for (int i = 1; i < lines.size(); ++i) {
        const int colon = lines.at(i).indexOf(':');
        if (colon <= 0)
            return Parse::Bad;
        request->headers.insert(lines.at(i).left(colon).trimmed().toLower(), lines.at(i).mid(colon + 1).trimmed());
    }
    request->host = request->headers.value("host");
    // A proxy sends the absolute form; the origin form is what is served.
    if (target.startsWith("http://") || target.startsWith("https://")) {
        const int authority = target.indexOf("//") + 2;
        const int path = target.indexOf('/', authority);
        request->host = target.mid(authority, path < 0 ? -1 : path - authority);
        target = path < 0 ? QByteArray("/") : target.mid(path);
    }
    request->target = target;
    bool ok = true;
    const qint64 length = request->headers.value("content-length", "0").toLongLong(&ok);
    if (!ok || length < 0)
        return Parse::Bad;
    if (length > kMaxBodyBytes)
        return Parse::TooLarge;
    if (buffer.size() < headerEnd + 4 + length)
        return Parse::Incomplete;
    request->body = buffer.mid(headerEnd + 4, int(length));
    return Parse::Done;
}

void SoapEndpoint::serve(QSslSocket* socket, const Request& request)
{
    const int number = ++m_requests;
    // A tunnel for https through a proxy: agree, then talk TLS inside it.
    if (request.method == "CONNECT") {
        say("CONNECT " + QByteArray::number(number) + " " + request.target);
        if (m_key.isNull()) {
            reply(socket, 503, fault("soap:Server", "no TLS certificate"));
            return;
        }
        socket->write("HTTP/1.1 200 Connection established\r\n\r\n");
        socket->setLocalCertificate(m_certificate);
        socket->setPrivateKey(m_key);
        socket->startServerEncryption();
        return;
    }

    QByteArray path = request.target;
    const int question = path.indexOf('?');
    if (question >= 0)
        path.truncate(question);
    const QByteArray via = request.headers.value("via", "direct");

    QByteArray user = "-";
    if (path.startsWith("/auth")) {
        const QByteArray expected = "Basic " + QString(m_user + QLatin1Char(':') + m_password).toUtf8().toBase64();
        const QByteArray given = request.headers.value("authorization");
        if (given.isEmpty() || given != expected) {
            say("REQUEST " + QByteArray::number(number) + " " + request.method + " " + request.target
                + " op=- via=" + via + " auth=" + (given.isEmpty() ? "none" : "refused"));
            reply(socket, 401, fault("soap:Client", "authentication required"),
                  {{"WWW-Authenticate", "Basic realm=\"tgui-soapd\""}});
            return;
        }
        user = m_user.toUtf8();
        path = path.mid(5);
        if (path.isEmpty())
            path = "/";
    }
    say("REQUEST " + QByteArray::number(number) + " " + request.method + " " + request.target + " via=" + via
        + " user=" + user);

    const QUrlQuery query(QString::fromUtf8(question >= 0 ? request.target.mid(question + 1) : QByteArray()));
    const int delay = qBound(0, query.queryItemValue(QStringLiteral("delay")).toInt(), kMaxDelayMs);
    if (path == "/hang")
        return;  // holds the connection without a word until the peer gives up
    if (delay > 0) {
        QPointer<QSslSocket> guard(socket);
        Request later = request;
        QTimer::singleShot(delay, this, [this, guard, later, path, user] {
            if (guard)
                serveSoap(guard, later, path, user);
        });
        return;
    }
    serveSoap(socket, request, path, user);
}

void SoapEndpoint::serveSoap(QSslSocket* socket, const Request& request, const QByteArray& path, const QByteArray& user)
{
    const int question = request.target.indexOf('?');
    const QUrlQuery query(QString::fromUtf8(question >= 0 ? request.target.mid(question + 1) : QByteArray()));
    const qint64 size = query.queryItemValue(QStringLiteral("size")).toLongLong();
    const int status = query.hasQueryItem(QStringLiteral("status"))
                           ? qBound(100, query.queryItemValue(QStringLiteral("status")).toInt(), 599)
                           : 200;
    const QList<QPair<QByteArray, QByteArray>> common = {
        {"X-Request-Number", QByteArray::number(m_requests)},
        {"X-Request-Via", request.headers.value("via", "direct")},
        {"X-Request-User", user},
    };

    if (path == "/redirect-loop") {
        reply(socket, 302, QByteArray(), common + QList<QPair<QByteArray, QByteArray>>{{"Location", "/redirect-loop"}});
        return;
    }
    if (path == "/redirect") {
        const QByteArray to = query.queryItemValue(QStringLiteral("to"), QUrl::FullyDecoded).toUtf8();
        reply(socket, 302, QByteArray(), common + QList<QPair<QByteArray, QByteArray>>{{"Location", to.isEmpty() ? "/soap" : to}});
        return;
    }
    if (path == "/empty") {
        reply(socket, status, QByteArray(), common);
        return;
    }
    if (path == "/notxml") {
        reply(socket, status, "this is <not xml", common, "text/plain");
        return;
    }

    QString operation = QStringLiteral("Ping");
    QDomElement call;
    if (request.method == "POST") {
        QDomDocument document;
        if (!document.setContent(request.body, true)) {
            reply(socket, 500, padded(fault("soap:Client", "the request is not XML"), size), common);
            return;
        }
        const QDomElement body = document.documentElement().firstChildElement(QStringLiteral("Body"));
        call = body.firstChildElement();
        if (call.isNull()) {
            reply(socket, 500, padded(fault("soap:Client", "the request has no operation"), size), common);
            return;
        }
        operation = call.localName();
    } else if (request.method != "GET") {
        reply(socket, 500, fault("soap:Client", "only POST and GET"), common);
        return;
    }

    QByteArray content;
    if (operation == QLatin1String("GetEntries")) {
        const QString filter = call.firstChildElement(QStringLiteral("filter")).text().trimmed();
        QByteArray entries;
        int count = 0;
        for (const Entry& e : kDirectory) {
            if (!filter.isEmpty() && !QString::fromUtf8(e.name).startsWith(filter, Qt::CaseInsensitive))
                continue;
            ++count;
            entries += QByteArray("<entry><name>") + e.name + "</name><number>" + e.number + "</number></entry>";
        }
        content = "<GetEntriesResponse xmlns=\"urn:tgui-directory\"><count>" + QByteArray::number(count) + "</count>"
                  + entries + "</GetEntriesResponse>";
    } else if (operation == QLatin1String("Echo")) {
        content = "<EchoResponse xmlns=\"urn:tgui-directory\"><text>" + xmlEscaped(call.text()) + "</text></EchoResponse>";
    } else if (operation == QLatin1String("Ping")) {
        content = "<PingResponse xmlns=\"urn:tgui-directory\">pong</PingResponse>";
    } else {
        reply(socket, 500, padded(fault("soap:Client", "unknown operation " + operation.toUtf8()), size),
              common + QList<QPair<QByteArray, QByteArray>>{{"X-Soap-Operation", operation.toUtf8()}});
        return;
    }
    const QByteArray body = status == 200 ? envelope(content) : fault("soap:Server", "status asked for");
    reply(socket, status, padded(body, size),
          common + QList<QPair<QByteArray, QByteArray>>{{"X-Soap-Operation", operation.toUtf8()}});
}

void SoapEndpoint::reply(QSslSocket* socket, int status, const QByteArray& body,
                         const QList<QPair<QByteArray, QByteArray>>& headers, const QByteArray& contentType)
{
    QByteArray head = "HTTP/1.1 " + QByteArray::number(status) + " " + reason(status) + "\r\n";
    head += "Server: tgui-soapd\r\nConnection: close\r\n";
    if (!body.isEmpty())
        head += "Content-Type: " + contentType + "\r\n";
    head += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    for (const auto& h : headers)
        head += h.first + ": " + h.second + "\r\n";
    socket->write(head + "\r\n");
    socket->write(body);
    socket->disconnectFromHost();
}

QByteArray SoapEndpoint::envelope(const QByteArray& bodyContent)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\"><soap:Body>"
           + bodyContent + "</soap:Body></soap:Envelope>";
}

QByteArray SoapEndpoint::fault(const QByteArray& code, const QByteArray& text)
{
    return envelope("<soap:Fault><faultcode>" + code + "</faultcode><faultstring>" + text
                    + "</faultstring></soap:Fault>");
}
