// Web services: what proxy selection costs a request, and what the service
// layer costs a SOAP round trip, against a real tinyproxy and tgui-soapd on
// 127.0.0.1 (both started here, on free ports).
//   1. createRequest for a URL seen for the first time (script evaluated, one
//      proxy probed) against one whose proxies are stored; the script call alone.
//   2. A CSoapTransaction round trip through the proxy against the same bytes
//      posted with a plain QNetworkAccessManager through the same proxy, and
//      directly.
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "BenchSupport.h"
#include "pac.h"
#include "web/CSoapTransaction.h"
#include "web/CTavoSoapAccessMgr.h"

namespace {
double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.empty() ? 0.0 : v[v.size() / 2];
}

quint16 freePort()
{
    QTcpServer s;
    s.listen(QHostAddress::LocalHost, 0);
    return s.serverPort();
}

bool accepts(quint16 port)
{
    QTcpSocket probe;
    probe.setProxy(QNetworkProxy::NoProxy);
    probe.connectToHost(QHostAddress::LocalHost, port);
    return probe.waitForConnected(200);
}

// The same wait as the transaction's: an event loop left on the signal.
bool waitFinished(QNetworkReply* reply)
{
    if (reply->isFinished())
        return true;
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(10000, &loop, &QEventLoop::quit);
    loop.exec();
    return reply->isFinished();
}

const QByteArray kPing = "<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\">\n"
                         "    <soap:Header/>\n    <soap:Body>\n        <Ping xmlns=\"urn:tgui-directory\"/>\n"
                         "    </soap:Body>\n</soap:Envelope>\n";
}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    // guiLog lines are formatted as in a phone without a log server, but not printed.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    QTemporaryDir dir;

    QProcess endpoint;
    endpoint.start(QCoreApplication::applicationDirPath() + "/tgui-soapd", {"--port", "0"});
    if (!endpoint.waitForStarted() || !endpoint.waitForReadyRead(10000)) {
        std::fprintf(stderr, "bench_web: cannot start tgui-soapd beside this program\n");
        return 1;
    }
    const QByteArray listening = endpoint.readLine().trimmed();
    const quint16 endpointPort = quint16(listening.split(' ').value(1).toUInt());
    endpoint.setStandardOutputFile(QProcess::nullDevice());

    const quint16 proxyPort = freePort();
    QFile conf(dir.filePath("tinyproxy.conf"));
    conf.open(QIODevice::WriteOnly);
    conf.write("Port " + QByteArray::number(proxyPort) + "\nListen 127.0.0.1\nAllow 127.0.0.1\nMaxClients 64\n"
               "LogLevel Critical\nUpstream http 127.0.0.1:" + QByteArray::number(endpointPort) + "\n");
    conf.close();
    QProcess proxy;
    proxy.setProcessChannelMode(QProcess::MergedChannels);
    proxy.start("tinyproxy", {"-d", "-c", conf.fileName()});
    for (int i = 0; i < 100 && !accepts(proxyPort); ++i)
        QThread::msleep(20);
    if (!accepts(proxyPort)) {
        std::fprintf(stderr, "bench_web: tinyproxy did not start (scripts/setup.sh installs it)\n");
        return 1;
    }

    // 1. Proxy selection.
    const QByteArray script = "function FindProxyForURL(url, host) {\n"
                              "  if (isPlainHostName(host) || dnsDomainIs(host, '.local')) return 'DIRECT';\n"
                              "  if (shExpMatch(url, 'http://*.test/*') && weekdayRange('MON', 'SUN'))\n"
                              "    return 'PROXY 127.0.0.1:" + QByteArray::number(proxyPort) + "';\n"
                              "  return 'DIRECT'; }\n";
    QFile pac(dir.filePath("proxy.pac"));
    pac.open(QIODevice::WriteOnly);
    pac.write(script);
    pac.close();

    CTavoSoapAccessMgr* mgr = CTavoSoapAccessMgr::getAccessManager();
    mgr->assignPac(pac.fileName().toUtf8().constData());
    const int urls = 200;
    std::vector<double> first, cached;
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < urls; ++i) {
            QNetworkRequest request(QUrl(QStringLiteral("http://directory.test/soap/%1").arg(i)));
            QElapsedTimer t;
            t.start();
            QNetworkReply* reply = mgr->post(request, kPing);
            (round == 0 ? first : cached).push_back(t.nsecsElapsed() / 1000.0);
            reply->abort();
            reply->deleteLater();
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    duk_context* ctx = alloc_ctx(script.constData());
    std::vector<double> evaluation;
    for (int i = 0; i < 2000; ++i) {
        QElapsedTimer t;
        t.start();
        std::free(find_proxy(ctx, "http://directory.test/soap", "directory.test"));
        evaluation.push_back(t.nsecsElapsed() / 1000.0);
    }
    duk_destroy_heap(ctx);
    std::printf("proxy selection, median of %d requests (us, synchronous part of post):\n", urls);
    std::printf("  first request of a URL (script + probe): %8.1f\n", median(first));
    std::printf("  same URL again (stored proxies):         %8.1f\n", median(cached));
    std::printf("  the script call alone (find_proxy):      %8.1f\n", median(evaluation));

    // 2. Round trips.
    const int trips = 200;
    mgr->installService("Directory", "http://directory.test/soap", "", "");
    std::vector<double> soap, plainProxy, plainDirect;
    CSoapTransaction transaction("Directory");
    transaction.prepareReqDom("Ping");
    int failures = 0;
    QEventLoop loop;
    QObject::connect(&transaction, &CSoapTransaction::ready, &loop, &QEventLoop::quit);
    QObject::connect(&transaction, &CSoapTransaction::networkError, &loop, [&] {
        ++failures;
        loop.quit();
    });
    for (int i = 0; i < trips + 10; ++i) {
        QElapsedTimer t;
        t.start();
        if (transaction.sendRequest())
            loop.exec();
        if (i >= 10)
            soap.push_back(t.nsecsElapsed() / 1e6);
    }
    // The access manager alone, with the transaction's request attributes.
    std::vector<double> managerOnly;
    {
        QNetworkRequest request = *transaction.networkRequest();
        for (int i = 0; i < trips + 10; ++i) {
            QElapsedTimer t;
            t.start();
            QNetworkReply* reply = mgr->post(request, kPing);
            if (!waitFinished(reply) || reply->error() != QNetworkReply::NoError)
                ++failures;
            reply->readAll();
            reply->deleteLater();
            if (i >= 10)
                managerOnly.push_back(t.nsecsElapsed() / 1e6);
        }
    }
    QNetworkAccessManager viaProxy;
    viaProxy.setProxy(QNetworkProxy(QNetworkProxy::HttpProxy, "127.0.0.1", proxyPort));
    QNetworkAccessManager direct;
    direct.setProxy(QNetworkProxy::NoProxy);
    for (auto [nam, url, out] : {std::make_tuple(&viaProxy, QString("http://directory.test/soap"), &plainProxy),
                                 std::make_tuple(&direct, QString("http://127.0.0.1:%1/soap").arg(endpointPort), &plainDirect)}) {
        QNetworkRequest request{QUrl(url)};
        request.setHeader(QNetworkRequest::ContentTypeHeader, "text/xml; charset=utf-8");
        for (int i = 0; i < trips + 10; ++i) {
            QElapsedTimer t;
            t.start();
            QNetworkReply* reply = nam->post(request, kPing);
            if (!waitFinished(reply) || reply->error() != QNetworkReply::NoError)
                ++failures;
            reply->readAll();
            reply->deleteLater();
            if (i >= 10)
                out->push_back(t.nsecsElapsed() / 1e6);
        }
    }
    std::printf("SOAP round trip (Ping), median of %d (ms):\n", trips);
    std::printf("  CSoapTransaction through tinyproxy:           %6.2f\n", median(soap));
    std::printf("  the access manager alone, same request:       %6.2f\n", median(managerOnly));
    std::printf("  plain QNetworkAccessManager through tinyproxy: %6.2f\n", median(plainProxy));
    std::printf("  plain QNetworkAccessManager, direct:           %6.2f\n", median(plainDirect));
    std::printf("failed round trips: %d\n", failures);

    CTavoSoapAccessMgr::destroyAccessManager();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    proxy.terminate();
    proxy.waitForFinished();
    endpoint.terminate();
    endpoint.waitForFinished();
    return failures == 0 ? 0 : 1;
}
