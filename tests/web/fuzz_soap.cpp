// Both ends of a SOAP call on hostile bytes, over real loopback connections.
// The first byte chooses the end: even, the rest is the whole HTTP reply a
// server sends to a CSoapTransaction (status line, headers, body; or, with
// bit 1 set, only the body behind a valid 200 header), which must end in
// ready, a plain response, a redirect or an error; odd, the rest is what a
// client sends to tgui-soapd's endpoint before it hangs up.
// The service is the tests' "Directory" (its template from web.qrc).
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>

#include <cstdint>
#include <cstdio>

#include "SoapEndpoint.h"
#include "web/CSoapTransaction.h"
#include "web/CTavoSoapAccessMgr.h"

namespace {
struct World {
    QTcpServer replier;  // answers every connection with the current input
    SoapEndpoint endpoint;
    QByteArray reply;
};

void pump(int rounds)
{
    for (int i = 0; i < rounds; ++i)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

World* world()
{
    static int argc = 1;
    static char name[] = "fuzz_soap";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = new QCoreApplication(argc, argv);
    (void)app;
    static World* w = [] {
        // The endpoint prints one line per request and the transaction logs
        // every reply; nobody reads them here.
        if (!freopen("/dev/null", "w", stdout))
            return static_cast<World*>(nullptr);
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        auto* made = new World;
        made->endpoint.setCredentials(QStringLiteral("user"), QStringLiteral("secret"));
        if (!made->replier.listen(QHostAddress::LocalHost, 0) || !made->endpoint.listen(QHostAddress::LocalHost, 0))
            return static_cast<World*>(nullptr);
        QObject::connect(&made->replier, &QTcpServer::newConnection, &made->replier, [made] {
            while (QTcpSocket* socket = made->replier.nextPendingConnection()) {
                QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
                // The reply goes out once the request has come, then the line closes.
                QObject::connect(socket, &QTcpSocket::readyRead, socket, [made, socket] {
                    socket->readAll();
                    if (socket->property("answered").toBool())
                        return;
                    socket->setProperty("answered", true);
                    socket->write(made->reply);
                    socket->disconnectFromHost();
                });
            }
        });
        const QString url = QStringLiteral("http://127.0.0.1:%1/soap").arg(made->replier.serverPort());
        CTavoSoapAccessMgr::getAccessManager()->installService(QStringLiteral("Directory"), url, QString(), QString());
        return made;
    }();
    return w;
}

void toTransaction(World* w, const QByteArray& bytes, bool bodyOnly)
{
    w->reply = bodyOnly ? "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: "
                              + QByteArray::number(bytes.size()) + "\r\n\r\n" + bytes
                        : bytes;
    CSoapTransaction t(QStringLiteral("Directory"));
    // A redirect must not lead the fuzzer off this machine.
    t.setFollowRedirects(false);
    t.setRawBody(QStringLiteral("<Envelope><Body><Ping/></Body></Envelope>"));
    t.createAbortTimer(2000);
    int ended = 0;
    QObject::connect(&t, &CSoapTransaction::ready, [&ended](QDomDocument*) { ++ended; });
    QObject::connect(&t, &CSoapTransaction::readyPlainResponse, [&ended](const QString&) { ++ended; });
    QObject::connect(&t, &CSoapTransaction::redirectUrlResponse, [&ended](const QUrl&) { ++ended; });
    QObject::connect(&t, &CSoapTransaction::networkError, [&ended](QNetworkReply::NetworkError) { ++ended; });
    if (!t.sendRequest())
        return;
    QElapsedTimer clock;
    clock.start();
    while (ended == 0 && clock.elapsed() < 3000)
        pump(1);
    if (ended == 0) {
        std::fprintf(stderr, "fuzz_soap: the transaction never ended\n");
        std::abort();
    }
}

void toEndpoint(World* w, const QByteArray& bytes)
{
    QTcpSocket peer;
    peer.connectToHost(QHostAddress::LocalHost, w->endpoint.serverPort());
    if (!peer.waitForConnected(1000))
        return;
    peer.write(bytes);
    peer.waitForBytesWritten(1000);
    pump(4);
    peer.readAll();
    peer.abort();
    pump(2);
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    World* w = world();
    if (!w || size < 1)
        return 0;
    const QByteArray bytes(reinterpret_cast<const char*>(data) + 1, int(size - 1));
    if (data[0] & 1)
        toEndpoint(w, bytes);
    else
        toTransaction(w, bytes, data[0] & 2);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return 0;
}
