// The access manager's proxy selection against real proxies: two tinyproxy
// processes in front of the endpoint (as their upstream), proxy scripts and
// custom lists, probes of closed loopback ports, rotation, SSL errors.
// "directory.test" is never resolved: requests for it only ever go to a
// proxy; direct requests go to 127.0.0.1.
#include <QtTest>

#include <QNetworkReply>
#include <QTemporaryDir>

#include "WebPeers.h"
#include "web/CSoapService.h"
#include "web/CTavoSoapAccessMgr.h"

namespace {
const QString kRemote = QStringLiteral("http://directory.test/soap");

struct Answer {
    QNetworkReply::NetworkError error = QNetworkReply::TimeoutError;
    QByteArray via;
};
}  // namespace

class TestAccessMgr : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;
    SoapPeer m_endpoint;
    TinyProxy m_proxyA;
    TinyProxy m_proxyB;

    CTavoSoapAccessMgr* mgr() { return CTavoSoapAccessMgr::getAccessManager(); }

    Answer post(const QString& url)
    {
        QNetworkRequest request{QUrl(url)};
        request.setHeader(QNetworkRequest::ContentTypeHeader, "text/xml; charset=utf-8");
        QNetworkReply* reply = mgr()->post(request, QByteArray("<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\">"
                                                               "<soap:Body><Ping/></soap:Body></soap:Envelope>"));
        Answer answer;
        QSignalSpy done(reply, &QNetworkReply::finished);
        if (reply->isFinished() || done.wait(15000)) {
            answer.error = reply->error();
            answer.via = reply->rawHeader("X-Request-Via");
        }
        reply->deleteLater();
        return answer;
    }

    QString writePac(const QString& body)
    {
        static int n = 0;
        const QString path = m_dir.filePath(QStringLiteral("proxy-%1.pac").arg(++n));
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write(("function FindProxyForURL(url, host) {\n" + body + "\n}\n").toUtf8());
        return path;
    }

    QString proxyA() const { return QStringLiteral("127.0.0.1:%1").arg(m_proxyA.port()); }
    QString proxyB() const { return QStringLiteral("localhost:%1").arg(m_proxyB.port()); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(m_endpoint.start({"--tls"}));
        QVERIFY(m_proxyA.start(m_endpoint.port()));
        QVERIFY(m_proxyB.start(m_endpoint.port()));
    }

    void cleanup()
    {
        CTavoSoapAccessMgr::m_bValidateCaCerts = false;
        CTavoSoapAccessMgr::destroyAccessManager();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(QNetworkProxy::applicationProxy().type(), QNetworkProxy::NoProxy);
    }

    void cleanupTestCase()
    {
        m_proxyA.stop();
        m_proxyB.stop();
        QCOMPARE(m_endpoint.stop(), 0);
    }

    void theScriptIsAskedOncePerUrl()
    {
        const QString direct = m_endpoint.url("/soap");
        LogCatcher log;
        mgr()->assignPac(writePac("if (host === 'directory.test') return 'PROXY " + proxyA() + "; PROXY " + proxyB()
                                  + "';\n return 'DIRECT';")
                             .toUtf8()
                             .constData());
        QVERIFY(mgr()->hasPacContext());
        QVERIFY(log.contains("CTavoSoapAccessMgr::assignPac pac file is "));
        QSignalSpy reported(mgr(), &CTavoSoapAccessMgr::reportProxyData);

        Answer a = post(kRemote);
        QCOMPARE(a.error, QNetworkReply::NoError);
        QVERIFY2(a.via.contains("tinyproxy"), a.via.constData());
        QCOMPARE(reported.count(), 1);
        QCOMPARE(reported.at(0).at(0).toString(), proxyA());
        QCOMPARE(QNetworkProxy::applicationProxy().port(), m_proxyA.port());
        QVERIFY(log.contains("pac result PROXY " + proxyA() + "; PROXY " + proxyB()));
        QVERIFY(log.contains("Add the proxy 127.0.0.1 " + QString::number(m_proxyA.port())));
        QVERIFY(log.contains("Add the proxy localhost " + QString::number(m_proxyB.port())));
        QVERIFY(log.contains("List size 2"));
        const proxyData data = mgr()->proxyDataFor(kRemote);
        QCOMPARE(data.proxies.size(), 2);
        QCOMPARE(data.index, 0);

        // Again: the stored list, no second evaluation.
        a = post(kRemote);
        QCOMPARE(a.error, QNetworkReply::NoError);
        QCOMPARE(log.count("createRequest start"), 1);
        QCOMPARE(log.count("Getting the stored result of proxies from the map"), 1);

        // A DIRECT result alone: one entry without a proxy.
        a = post(direct);
        QCOMPARE(a.error, QNetworkReply::NoError);
        QCOMPARE(a.via, QByteArray("direct"));
        QCOMPARE(mgr()->proxyDataFor(direct).proxies.size(), 1);
        QVERIFY(mgr()->proxyDataFor(direct).proxies.at(0).noProxy);
        QCOMPARE(QNetworkProxy::applicationProxy().type(), QNetworkProxy::NoProxy);
        QCOMPARE(reported.last().at(0).toString(), QString());
        // Each URL keeps its own choice.
        QVERIFY(post(kRemote).via.contains("tinyproxy"));
        QCOMPARE(log.count("createRequest start"), 2);
    }

    void badResultsFailTheRequest_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("logged");
        QTest::newRow("all unreachable") << "/dead" << "Will not add the proxy 127.0.0.1";
        QTest::newRow("undefined") << "/undefined" << " JavaScript call result is undefined.The deployed JS should be changed ";
        QTest::newRow("throws") << "/throws" << "script gave no result";
        QTest::newRow("empty") << "/empty-result" << "pac result ";
    }

    void badResultsFailTheRequest()
    {
        QFETCH(QString, path);
        QFETCH(QString, logged);
        const QString dead = QStringLiteral("127.0.0.1:%1; PROXY 127.0.0.1:%2").arg(closedPort()).arg(closedPort());
        mgr()->assignPac(writePac("if (url.indexOf('/dead') > 0) return 'PROXY " + dead + "';\n"
                                  "if (url.indexOf('/undefined') > 0) return;\n"
                                  "if (url.indexOf('/empty-result') > 0) return '';\n"
                                  "throw new Error('deployment broken');")
                             .toUtf8()
                             .constData());
        const QString url = m_endpoint.url(path);
        QSignalSpy failures(mgr(), &CTavoSoapAccessMgr::reportProxyFailure);
        LogCatcher log;
        const Answer a = post(url);
        QVERIFY(a.error != QNetworkReply::NoError);
        QCOMPARE(failures.count(), 1);
        QCOMPARE(failures.at(0).at(0).value<QNetworkReply::NetworkError>(), QNetworkReply::UnknownProxyError);
        QVERIFY(log.contains(logged));
        QVERIFY(log.contains("CTavoSoapAccessMgr::createRequest map empty "));
        QVERIFY(log.contains("All proxies failed"));
        QVERIFY(m_endpoint.lines().filter(path).isEmpty());
        // The empty list is remembered: the next request goes as the
        // application proxy stands (here: none, to the loopback endpoint).
        QCOMPARE(post(url).error, QNetworkReply::NoError);
        QVERIFY(log.contains("Stored map does not have any proxy"));
        QCOMPARE(failures.count(), 1);
    }

    void proxyListEntries()
    {
        LogCatcher log;
        const quint16 closed = closedPort();
        mgr()->prepareProxyList("u", QStringLiteral("PROXY 127.0.0.1:%1; DIRECT; SOCKS s:1; PROXY 127.0.0.1; PROXY ;"
                                                    " PROXY 127.0.0.1:99999;  PROXY  %2  ;")
                                         .arg(closed)
                                         .arg(proxyA()));
        QVERIFY(log.contains(QStringLiteral("Will not add the proxy 127.0.0.1 %1 errorCode 0").arg(closed)));
        // Without a port, and with a port that is no port: 80.
        QCOMPARE(log.count("the proxy 127.0.0.1 80"), 2);
        QVERIFY(log.contains("Add the proxy 127.0.0.1 " + QString::number(m_proxyA.port())));
        const proxyData data = mgr()->proxyDataFor("u");
        // DIRECT and SOCKS as no proxy, the live proxy; nothing for the empty entry.
        QCOMPARE(data.proxies.size(), 3);
        QVERIFY(data.proxies.at(0).noProxy && data.proxies.at(1).noProxy);
        QCOMPARE(data.proxies.at(2).proxy.port(), m_proxyA.port());
        QCOMPARE(data.proxies.at(2).proxy.type(), QNetworkProxy::HttpProxy);
    }

    void customProxiesWinOverTheScript()
    {
        mgr()->assignPac(writePac("return 'PROXY " + proxyA() + "';").toUtf8().constData());
        mgr()->setCustomProxies(QString());
        QVERIFY(!mgr()->usesCustomProxies());
        mgr()->setCustomProxies("PROXY " + proxyB());
        QSignalSpy reported(mgr(), &CTavoSoapAccessMgr::reportProxyData);
        LogCatcher log;
        QVERIFY(post(kRemote).via.contains("tinyproxy"));
        QCOMPARE(reported.at(0).at(0).toString(), proxyB());
        QVERIFY(!log.contains("pac result"));
        // A custom list alone, without any script.
        mgr()->clearProxyData();
        QVERIFY(!mgr()->hasPacContext());
        QVERIFY(post(kRemote).via.contains("tinyproxy"));
        QCOMPARE(reported.last().at(0).toString(), proxyB());
    }

    void theSameHostKeepsTheProxyWhateverItsPort()
    {
        QSignalSpy reported(mgr(), &CTavoSoapAccessMgr::reportProxyData);
        proxyInfo a;
        a.proxy = QNetworkProxy(QNetworkProxy::HttpProxy, "127.0.0.1", m_proxyA.port());
        proxyInfo b;
        b.proxy = QNetworkProxy(QNetworkProxy::HttpProxy, "127.0.0.1", m_proxyB.port());
        mgr()->setNetworkProxy(a);
        QCOMPARE(reported.count(), 1);
        mgr()->setNetworkProxy(b);
        QCOMPARE(reported.count(), 1);
        QCOMPARE(QNetworkProxy::applicationProxy().port(), m_proxyA.port());
        b.proxy.setHostName("localhost");
        mgr()->setNetworkProxy(b);
        QCOMPARE(reported.count(), 2);
        QCOMPARE(QNetworkProxy::applicationProxy().port(), m_proxyB.port());
        proxyInfo none;
        none.noProxy = true;
        mgr()->setNetworkProxy(none);
        QCOMPARE(reported.last().at(0).toString(), QString());
        QCOMPARE(QNetworkProxy::applicationProxy().type(), QNetworkProxy::NoProxy);
    }

    void rotationThroughTheList()
    {
        // Without a script or a list there is nothing to rotate.
        QVERIFY(!mgr()->onChangeProxy(kRemote, QNetworkReply::ProxyConnectionRefusedError, "refused"));
        mgr()->setCustomProxies("PROXY " + proxyA() + "; PROXY " + proxyB() + "; DIRECT");
        QCOMPARE(post(kRemote).error, QNetworkReply::NoError);
        QSignalSpy failures(mgr(), &CTavoSoapAccessMgr::reportProxyFailure);
        LogCatcher log;
        QVERIFY(mgr()->onChangeProxy(kRemote, QNetworkReply::ProxyConnectionRefusedError, "refused"));
        QVERIFY(log.contains(" ctx non empty index 1 for url " + kRemote));
        QVERIFY(log.contains("CTavoSoapAccessMgr::onChangeProxy 101, proxy is using AD credentials = false"));
        QVERIFY(mgr()->onChangeProxy(kRemote, QNetworkReply::ProxyConnectionRefusedError, "refused"));
        QCOMPARE(mgr()->proxyDataFor(kRemote).index, 2);
        QVERIFY(!mgr()->onChangeProxy(kRemote, QNetworkReply::ProxyTimeoutError, "timeout"));
        QCOMPARE(mgr()->proxyDataFor(kRemote).index, 0);
        QCOMPARE(failures.count(), 1);
        QCOMPARE(failures.at(0).at(0).value<QNetworkReply::NetworkError>(), QNetworkReply::ProxyTimeoutError);
        QVERIFY(log.contains("All proxies failed"));
        // Another URL has no list to move in.
        QVERIFY(!mgr()->onChangeProxy("http://other.test/", QNetworkReply::ProxyNotFoundError, "x"));
        QVERIFY(!mgr()->hasProxyData("http://other.test/"));

        // Refused AD credentials: other proxies cannot help.
        QVERIFY(mgr()->onChangeProxy(kRemote, QNetworkReply::ProxyConnectionRefusedError, "refused"));
        mgr()->setProxyUsesAdCredentials(true);
        for (QNetworkReply::NetworkError e : {QNetworkReply::ProxyAuthenticationRequiredError,
                                              QNetworkReply::AuthenticationRequiredError}) {
            failures.clear();
            QVERIFY(!mgr()->onChangeProxy(kRemote, e, "auth"));
            QCOMPARE(failures.at(0).at(0).value<QNetworkReply::NetworkError>(),
                     QNetworkReply::ProxyAuthenticationRequiredError);
            QCOMPARE(mgr()->proxyDataFor(kRemote).index, 1);
        }
        QVERIFY(log.contains("proxy is using AD credentials = true"));
        QVERIFY(log.contains("CTavoSoapAccessMgr::onChangeProxy ProxyAuthenticationRequiredError "));
    }

    void proxyCredentialsTravelInTheApplicationProxy()
    {
        TinyProxy guarded;
        QVERIFY(guarded.start(m_endpoint.port(), "puser", "ppass"));
        const QString list = QStringLiteral("PROXY 127.0.0.1:%1").arg(guarded.port());
        mgr()->setCustomProxies(list);
        QCOMPARE(post(kRemote).error, QNetworkReply::ProxyAuthenticationRequiredError);
        CTavoSoapAccessMgr::destroyAccessManager();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

        mgr()->setProxyCredentials("puser", "ppass");
        mgr()->setCustomProxies(list);
        QVERIFY(mgr()->installService("Directory", kRemote, "", ""));
        QCOMPARE(mgr()->getService("Directory")->proxyUserName(), QStringLiteral("puser"));
        const Answer a = post(kRemote);
        QCOMPARE(a.error, QNetworkReply::NoError);
        QVERIFY(a.via.contains("tinyproxy"));
        QCOMPARE(QNetworkProxy::applicationProxy().user(), QStringLiteral("puser"));
    }

    void sslErrorsAreIgnoredUnlessValidated()
    {
        const QString secure = QStringLiteral("https://127.0.0.1:%1/soap").arg(m_endpoint.port());
        LogCatcher log;
        QCOMPARE(post(secure).error, QNetworkReply::NoError);
        const int logged = log.count("Soap Access Manager has encountered a SSL error for URL " + secure);
        QVERIFY(logged >= 1);
        // Within five minutes the errors are not logged again.
        QCOMPARE(post(secure).error, QNetworkReply::NoError);
        CTavoSoapAccessMgr::m_bValidateCaCerts = true;
        mgr()->clearAccessCache();
        QCOMPARE(post(secure).error, QNetworkReply::SslHandshakeFailedError);
        QCOMPARE(log.count("Soap Access Manager has encountered a SSL error"), logged);
        QVERIFY(log.contains("Soap Access Manager cannot continue due to an SSL error"));
        mgr()->onSslErrors(nullptr, {});
    }

    void httpsThroughAProxyTunnel()
    {
        mgr()->setCustomProxies("PROXY " + proxyA());
        const Answer a = post("https://directory.test/soap");
        QCOMPARE(a.error, QNetworkReply::NoError);
        QVERIFY(!m_endpoint.lines().filter("CONNECT").isEmpty());
    }

    void clearingAndDestroying()
    {
        QVERIFY(mgr()->installService("Directory", kRemote, "", ""));
        QPointer<CSoapService> service = mgr()->getService("Directory");
        mgr()->assignPac(writePac("return 'PROXY " + proxyA() + "';").toUtf8().constData());
        QCOMPARE(post(kRemote).error, QNetworkReply::NoError);
        QVERIFY(mgr()->hasProxyData(kRemote));

        LogCatcher log;
        QSignalSpy reported(mgr(), &CTavoSoapAccessMgr::reportProxyData);
        // An empty path changes nothing; a missing file or a bad script leaves no script.
        mgr()->assignPac("");
        mgr()->assignPac(nullptr);
        QCOMPARE(log.count("CTavoSoapAccessMgr::assignPac pac empty file"), 2);
        QVERIFY(mgr()->hasPacContext());
        QVERIFY(mgr()->hasProxyData(kRemote));
        mgr()->assignPac(m_dir.filePath("missing.pac").toUtf8().constData());
        QVERIFY(log.contains("CTavoSoapAccessMgr::assignPac empty JS content"));
        QVERIFY(log.contains("CTavoSoapAccessMgr::clearProxyData ctx "));
        QVERIFY(log.contains("setNetworkProxy clear Proxy in WebUI"));
        QVERIFY(!mgr()->hasPacContext());
        QVERIFY(!mgr()->hasProxyData(kRemote));
        QCOMPARE(reported.last().at(0).toString(), QString());
        mgr()->assignPac(writePac("return 'PROXY ' + ;").toUtf8().constData());
        QVERIFY(log.contains("CTavoSoapAccessMgr::assignPac empty Context"));
        QVERIFY(!mgr()->hasPacContext());
        QVERIFY(log.contains("createRequest ctx is empty no proxies") == false);
        QCOMPARE(post(m_endpoint.url("/soap")).error, QNetworkReply::NoError);
        QVERIFY(log.contains("CTavoSoapAccessMgr::createRequest ctx is empty no proxies"));

        CTavoSoapAccessMgr* before = mgr();
        CTavoSoapAccessMgr::destroyAccessManager();
        CTavoSoapAccessMgr::destroyAccessManager();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!service);
        QVERIFY(mgr() != before || !mgr()->getService("Directory"));
        QVERIFY(!mgr()->getService("Directory"));
    }
};

QTEST_GUILESS_MAIN(TestAccessMgr)
#include "tst_accessmgr.moc"
