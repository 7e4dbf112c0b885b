// SOAP transactions from template to parsed reply against the real endpoint,
// directly and through real proxies: failing over when a proxy stops,
// redirects, bad replies, the log guards, abort timers, reuse and stale replies.
#include <QtTest>

#include <QNetworkReply>
#include <QTemporaryDir>

#include "WebPeers.h"
#include "web/CSoapService.h"
#include "web/CSoapTransaction.h"
#include "web/CTavoSoapAccessMgr.h"

Q_DECLARE_METATYPE(QDomDocument*)

namespace {
const QString kRemote = QStringLiteral("http://directory.test/soap");

// The signals of one transaction.
struct Watch {
    explicit Watch(CSoapTransaction* t)
        : transaction(t), ready(t, &CSoapTransaction::ready), plain(t, &CSoapTransaction::readyPlainResponse),
          redirect(t, &CSoapTransaction::redirectUrlResponse), error(t, &CSoapTransaction::networkError)
    {
    }
    bool waitEnd(int ms = 15000)
    {
        QElapsedTimer clock;
        clock.start();
        while (ended() == 0 && clock.elapsed() < ms)
            QTest::qWait(20);
        return ended() > 0;
    }
    // Sends the request and waits for its end.
    bool send(int ms = 15000) { return transaction->sendRequest() && waitEnd(ms); }
    int ended() const { return ready.count() + plain.count() + redirect.count() + error.count(); }
    QNetworkReply::NetworkError lastError() const
    {
        return error.isEmpty() ? QNetworkReply::NoError : error.last().at(0).value<QNetworkReply::NetworkError>();
    }
    CSoapTransaction* transaction;
    QSignalSpy ready, plain, redirect, error;
};

QString text(const QDomDocument& doc, const QString& tag)
{
    return doc.elementsByTagName(tag).item(0).toElement().text();
}

// The lines logged right after the marker line.
QStringList after(const QStringList& log, const QString& marker)
{
    const int at = log.lastIndexOf(marker);
    return at < 0 ? QStringList() : log.mid(at + 1);
}
}  // namespace

class TestTransaction : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;
    SoapPeer m_endpoint;
    TinyProxy m_proxyB;

    CTavoSoapAccessMgr* mgr() { return CTavoSoapAccessMgr::getAccessManager(); }

    void install(const QString& url)
    {
        QVERIFY(mgr()->installService("Directory", url, "", ""));
    }

    QString writePac(const QString& result)
    {
        static int n = 0;
        const QString path = m_dir.filePath(QStringLiteral("t%1.pac").arg(++n));
        QFile file(path);
        file.open(QIODevice::WriteOnly);
        file.write("function FindProxyForURL(url, host) { return '" + result.toUtf8() + "'; }");
        return path;
    }

private slots:
    void initTestCase()
    {
        qRegisterMetaType<QDomDocument*>("QDomDocument*");
        QVERIFY(m_dir.isValid());
        QVERIFY(m_endpoint.start({"--tls"}));
        QVERIFY(m_proxyB.start(m_endpoint.port()));
    }

    void cleanup()
    {
        CTavoSoapAccessMgr::destroyAccessManager();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void cleanupTestCase()
    {
        m_proxyB.stop();
        QCOMPARE(m_endpoint.stop(), 0);
    }

    void aCallFromTemplateToParsedReplyThroughAProxy()
    {
        install(kRemote);
        mgr()->assignPac(writePac(QStringLiteral("PROXY localhost:%1").arg(m_proxyB.port())).toUtf8().constData());
        CSoapTransaction t("Directory");
        QVERIFY(t.networkRequest());
        QCOMPARE(t.networkRequest()->header(QNetworkRequest::ContentTypeHeader).toString(),
                 QStringLiteral("text/xml; charset=utf-8"));
        QVERIFY(t.prepareReqDom("GetEntries"));
        QDomElement filter = t.findFirstElement("filter");
        QVERIFY(!filter.isNull());
        filter.appendChild(t.requestDom().createTextNode("b"));
        QVERIFY(t.findFirstElement("nothing").isNull());

        Watch w(&t);
        QString viaDuringSignal;
        connect(&t, &CSoapTransaction::ready, this, [&] { viaDuringSignal = t.getHeaderValue("X-Request-Via"); });
        LogCatcher log;
        QVERIFY(t.sendRequest());
        QCOMPARE(t.status(), int(CSoapTransaction::StatusInProgress));
        QVERIFY(w.waitEnd());
        QCOMPARE(w.ready.count(), 1);
        QCOMPARE(w.error.count(), 0);
        QCOMPARE(t.status(), int(CSoapTransaction::StatusDone));
        QDomDocument* reply = w.ready.at(0).at(0).value<QDomDocument*>();
        QCOMPARE(reply, &t.responseDom());
        QCOMPARE(text(*reply, "count"), QStringLiteral("1"));
        QCOMPARE(text(*reply, "name"), QStringLiteral("Bob Keller"));
        QVERIFY(viaDuringSignal.contains("tinyproxy"));
        QVERIFY(t.getHeaderValue("X-Request-Via").contains("tinyproxy"));  // after the signal
        QVERIFY(QDateTime::fromString(t.lastResponseTime(), Qt::TextDate).isValid());
        QVERIFY(t.request().contains("<filter>b</filter>"));
        QVERIFY(t.request().contains("\n    <soap:Body>"));
        QVERIFY(log.contains("SOAP REQUEST:"));
        QVERIFY(log.contains("SOAP RESPONSE:"));
        QVERIFY(log.contains("'Directory' Service configured SSL protocol is '"));
        QVERIFY(m_endpoint.lines().last().contains("/soap via=1.1"));
        // The reply goes a second after the end.
        QTest::qWait(1300);
        QCOMPARE(t.getHeaderValue("X-Request-Via"), QString());
        QVERIFY(!t.reply());

        // Reused: the same DOM goes again.
        Watch again(&t);
        QVERIFY(again.send());
        QCOMPARE(again.ready.count(), 1);
    }

    void theNextProxyTakesOverWhenOneStops()
    {
        TinyProxy first;
        TinyProxy last;
        QVERIFY(first.start(m_endpoint.port()));
        QVERIFY(last.start(m_endpoint.port()));
        // Through a tunnel (https) a refused proxy is a proxy error; see below for http.
        const QString secure = QStringLiteral("https://directory.test/soap");
        install(secure);
        // Different hosts: the same host would keep the application proxy.
        mgr()->assignPac(writePac(QStringLiteral("PROXY 127.0.0.1:%1; PROXY localhost:%2")
                                      .arg(first.port())
                                      .arg(last.port()))
                             .toUtf8()
                             .constData());
        QSignalSpy reported(mgr(), &CTavoSoapAccessMgr::reportProxyData);
        QSignalSpy failures(mgr(), &CTavoSoapAccessMgr::reportProxyFailure);
        CSoapTransaction t("Directory");
        QVERIFY(t.prepareReqDom("Ping"));
        Watch w(&t);
        QVERIFY(w.send());
        QCOMPARE(w.ready.count(), 1);
        QCOMPARE(reported.last().at(0).toString(), QStringLiteral("127.0.0.1:%1").arg(first.port()));

        first.stop();
        LogCatcher log;
        Watch retry(&t);
        QVERIFY(retry.send());
        QCOMPARE(retry.error.count(), 0);
        QCOMPARE(retry.ready.count(), 1);
        QCOMPARE(reported.last().at(0).toString(), QStringLiteral("localhost:%1").arg(last.port()));
        QCOMPARE(mgr()->proxyDataFor(secure).index, 1);
        QVERIFY(log.contains("'Directory' Service CSoapTransaction network error = "));
        QVERIFY(log.contains(" ctx non empty index 1 for url " + secure));
        QCOMPARE(failures.count(), 0);

        // The last one goes too: the error reaches the owner, and the list
        // starts from its first proxy again.
        last.stop();
        Watch fail(&t);
        QVERIFY(fail.send());
        QCOMPARE(fail.error.count(), 1);
        QCOMPARE(failures.count(), 1);
        // Qt 5 names a tunnel's refused proxy in the text; its code varies (101, 99).
        QCOMPARE(failures.at(0).at(0).value<QNetworkReply::NetworkError>(), fail.lastError());
        QCOMPARE(mgr()->proxyDataFor(secure).index, 0);
        QCOMPARE(t.status(), int(CSoapTransaction::StatusFailed));
    }

    void aRefusedProxyForPlainHttpIsNotAProxyError()
    {
        // Qt 5 talks plain http to an HTTP proxy as to any server: a refused
        // proxy reads "Connection refused", without the word the test looks for.
        TinyProxy first;
        QVERIFY(first.start(m_endpoint.port()));
        install(kRemote);
        mgr()->setCustomProxies(QStringLiteral("PROXY 127.0.0.1:%1; PROXY localhost:%2").arg(first.port()).arg(m_proxyB.port()));
        CSoapTransaction t("Directory");
        QVERIFY(t.prepareReqDom("Ping"));
        Watch w(&t);
        QVERIFY(w.send());
        QCOMPARE(w.ready.count(), 1);
        first.stop();
        Watch fail(&t);
        QVERIFY(fail.send());
        QCOMPARE(fail.lastError(), QNetworkReply::ConnectionRefusedError);
        QCOMPARE(mgr()->proxyDataFor(kRemote).index, 0);
    }

    void redirects()
    {
        install(m_endpoint.url("/redirect?to=%2Fsoap%3Fthere%3D1"));
        CSoapTransaction follow("Directory");
        QVERIFY(follow.prepareReqDom("Ping"));
        Watch w(&follow);
        LogCatcher log;
        QVERIFY(follow.sendRequest());
        QVERIFY(w.waitEnd());
        QCOMPARE(w.ready.count(), 1);
        QVERIFY(log.contains("CSoapTransaction redirect url is = " + m_endpoint.url("/soap?there=1")));

        CSoapTransaction report("Directory");
        report.setFollowRedirects(false);
        QVERIFY(report.prepareReqDom("Ping"));
        Watch r(&report);
        QVERIFY(r.send());
        QCOMPARE(r.ready.count(), 0);
        QCOMPARE(r.redirect.count(), 1);
        QCOMPARE(r.redirect.at(0).at(0).toUrl(), QUrl(m_endpoint.url("/soap?there=1")));

        CSoapTransaction loop("Directory");
        loop.setUrl(m_endpoint.url("/redirect-loop"));
        QVERIFY(loop.prepareReqDom("Ping"));
        Watch l(&loop);
        const int before = m_endpoint.lines().size();
        QVERIFY(loop.sendRequest());
        QVERIFY(l.waitEnd(30000));
        QCOMPARE(l.lastError(), QNetworkReply::TooManyRedirectsError);
        QCOMPARE(m_endpoint.lines().size() - before, CSoapTransaction::kMaxRedirects + 1);
        QCOMPARE(loop.status(), int(CSoapTransaction::StatusFailed));
    }

    void badReplies_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("operation");
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("parseError");
        QTest::newRow("empty 200") << "/empty" << "Ping" << int(QNetworkReply::UnknownContentError) << false;
        QTest::newRow("not XML") << "/notxml" << "Ping" << int(QNetworkReply::UnknownContentError) << true;
        QTest::newRow("server error") << "/soap?status=500" << "Ping" << int(QNetworkReply::InternalServerError)
                                      << false;
        QTest::newRow("unknown operation") << "/soap" << "Unknown" << int(QNetworkReply::InternalServerError) << false;
        QTest::newRow("not found") << "/soap?status=404" << "Ping" << int(QNetworkReply::ContentNotFoundError) << false;
        QTest::newRow("closed port") << "closed" << "Ping" << int(QNetworkReply::ConnectionRefusedError) << false;
    }

    void badReplies()
    {
        QFETCH(QString, path);
        QFETCH(QString, operation);
        QFETCH(int, error);
        QFETCH(bool, parseError);
        install(path == QLatin1String("closed") ? QStringLiteral("http://127.0.0.1:%1/soap").arg(closedPort())
                                                : m_endpoint.url(path));
        CSoapTransaction t("Directory");
        QVERIFY(t.prepareReqDom(operation));
        Watch w(&t);
        LogCatcher log;
        QVERIFY(t.sendRequest());
        QVERIFY(w.waitEnd());
        QCOMPARE(w.ready.count(), 0);
        QCOMPARE(w.error.count(), 1);
        QCOMPARE(int(w.lastError()), error);
        QCOMPARE(t.status(), int(CSoapTransaction::StatusFailed));
        QCOMPARE(!t.parseErrorText().isEmpty(), parseError);
        if (parseError)
            QVERIFY(t.parseErrorLine() > 0 && t.parseErrorColumn() > 0);
        if (error == QNetworkReply::UnknownContentError) {
            QVERIFY(log.contains("CSoapTransaction error parsing SOAP response message, error is "));
        } else {
            QVERIFY(log.contains("'Directory' Service CSoapTransaction network error = "));
            QVERIFY(log.contains("CSoapTransaction error = "));
            QVERIFY(log.contains("SOAP ERROR RESPONSE:"));
        }
        if (error == QNetworkReply::InternalServerError) {
            QVERIFY(t.response().contains("soap:Fault"));
            QVERIFY(log.contains("Error response header: \"Server: tgui-soapd\""));
        }
    }

    void theLogStaysBounded()
    {
        install(m_endpoint.url("/soap"));
        const auto exchange = [&](const QString& url, int requestChars, LogCatcher& log) {
            CSoapTransaction t("Directory");
            t.setUrl(url);
            t.prepareReqDom("Echo");
            QString serialised;
            {
                QTextStream stream(&serialised);
                t.requestDom().save(stream, 4);
            }
            t.setRequestArgument(QString(requestChars - (serialised.size() - 2), QLatin1Char('x')));
            Watch w(&t);
            log.clear();
            t.sendRequest();
            w.waitEnd();
            return t.request().size();
        };
        LogCatcher log;
        // 15999 characters go in one piece.
        QCOMPARE(exchange(m_endpoint.url("/soap"), 15999, log), 15999);
        QCOMPARE(after(log.lines(), "SOAP REQUEST:").value(0).size(), 15999);
        // 16000 in a slice of 16000; 200000 in ten slices.
        exchange(m_endpoint.url("/soap"), 16000, log);
        QCOMPARE(after(log.lines(), "SOAP REQUEST:").value(0).size(), 16000);
        QVERIFY(after(log.lines(), "SOAP REQUEST:").value(1).size() < 16000);
        exchange(m_endpoint.url("/soap"), 200000, log);
        QStringList slices = after(log.lines(), "SOAP REQUEST:");
        int full = 0;
        while (full < slices.size() && slices.at(full).size() == 16000)
            ++full;
        QCOMPARE(full, 10);
        // The echo of 200000 characters is over the guard: not logged.
        QVERIFY(log.contains("Received large reply that is "));
        QVERIFY(!log.contains("SOAP RESPONSE:"));

        // A reply of exactly 100000 bytes is logged; one byte more is not.
        exchange(m_endpoint.url("/soap?size=100000"), 100, log);
        QVERIFY(log.contains("SOAP RESPONSE:"));
        QVERIFY(!log.contains("Received large"));
        exchange(m_endpoint.url("/soap?size=100001"), 100, log);
        QVERIFY(log.contains("Received large reply that is 100001 bytes in size, so not logging the reply at debug level"));
        QVERIFY(!log.contains("SOAP RESPONSE:"));
        exchange(m_endpoint.url("/soap?status=500&size=200000"), 100, log);
        QVERIFY(log.contains("Received large error reply that is 200000 bytes in size"));
        QVERIFY(!log.contains("SOAP ERROR RESPONSE:"));
        QVERIFY(!log.contains("Error response header"));
    }

    void abortTimersNeverMoveToAnotherProxy()
    {
        SilentProxy silent;
        install(kRemote);
        mgr()->setCustomProxies(QStringLiteral("PROXY 127.0.0.1:%1; PROXY localhost:%2")
                                    .arg(silent.serverPort())
                                    .arg(m_proxyB.port()));
        CSoapTransaction t("Directory");
        t.createAbortTimer(400);
        QVERIFY(t.prepareReqDom("Ping"));
        Watch w(&t);
        LogCatcher log;
        QElapsedTimer clock;
        clock.start();
        QVERIFY(t.sendRequest());
        QVERIFY(w.waitEnd());
        QVERIFY(clock.elapsed() < 5000);
        QCOMPARE(w.lastError(), QNetworkReply::OperationCanceledError);
        QCOMPARE(w.ready.count(), 0);
        QVERIFY(log.contains(" CSoapTransaction::onTimeout "));
        QCOMPARE(mgr()->proxyDataFor(kRemote).index, 0);
        QVERIFY(!t.proxyError(nullptr));

        // An endpoint that never answers, directly, and an abort by hand.
        CTavoSoapAccessMgr::destroyAccessManager();
        install(m_endpoint.url("/hang"));
        CSoapTransaction hang("Directory");
        QVERIFY(hang.prepareReqDom("Ping"));
        Watch h(&hang);
        QVERIFY(hang.sendRequest());
        QTest::qWait(300);
        QCOMPARE(h.ended(), 0);
        hang.abortRequest();
        QCOMPARE(h.lastError(), QNetworkReply::OperationCanceledError);
        QVERIFY(!hang.reply());
        hang.abortRequest();  // nothing in flight: nothing happens
        QCOMPARE(h.ended(), 1);
    }

    void requestShapes()
    {
        install(m_endpoint.url("/soap"));
        CSoapTransaction t("Directory");
        // The same name again keeps what the caller filled in.
        QVERIFY(t.prepareReqDom("Echo"));
        t.findFirstElement("text").firstChild().setNodeValue("filled");
        QVERIFY(!t.prepareReqDom("Echo"));
        QCOMPARE(t.findFirstElement("text").text(), QStringLiteral("filled"));
        QVERIFY(!t.prepareReqDom("Nope"));
        QCOMPARE(t.operationName(), QStringLiteral("Echo"));

        // A raw body instead of the DOM, and the reply as plain text.
        t.setRawBody("<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\"><soap:Body>"
                     "<Echo><text>raw body</text></Echo></soap:Body></soap:Envelope>");
        t.setPlainResponse(true);
        QString name = QStringLiteral("X-Custom");
        QString value = QStringLiteral("v\u00e9");
        t.setCustomHeader(name, value);
        Watch w(&t);
        QVERIFY(w.send());
        QCOMPARE(w.plain.count(), 1);
        QCOMPARE(w.ready.count(), 0);
        QVERIFY(w.plain.at(0).at(0).toString().contains("<text>raw body</text>"));
        QVERIFY(t.request().contains("<text>raw body</text>"));
        QCOMPARE(t.status(), int(CSoapTransaction::StatusDone));

        // A GET for a service whose operation is not a post.
        mgr()->getService("Directory")->setOperation(QNetworkAccessManager::GetOperation);
        CSoapTransaction get("Directory");
        Watch g(&get);
        QVERIFY(g.send());
        QCOMPARE(text(get.responseDom(), "PingResponse"), QStringLiteral("pong"));
        QVERIFY(m_endpoint.lines().last().contains("GET /soap"));

        // The whole template of a service without operations.
        QVERIFY(mgr()->installService("Whole", m_endpoint.url("/soap"), "", ""));
        CSoapTransaction whole("Whole");
        QVERIFY(whole.prepareReqDom(QString()));
        QCOMPARE(whole.findFirstElement("text").text(), QStringLiteral("whole"));
        QVERIFY(!whole.prepareReqDom("Echo"));

        // No such service: no request.
        CSoapTransaction none("Nope");
        QVERIFY(!none.networkRequest());
        QVERIFY(!none.prepareReqDom("Ping"));
        QVERIFY(!none.sendRequest());
        QCOMPARE(none.status(), int(CSoapTransaction::StatusInProgress));
        QCOMPARE(none.getHeaderValue("X"), QString());
        QCOMPARE(CSoapTransaction::m_defaultUserAgent, QStringLiteral("Kvint_0000-UA"));
    }

    void aGoodReplyCountsAsSignedInWhenTheServiceSaysSo()
    {
        install(m_endpoint.url("/soap"));
        CSoapService* service = mgr()->getService("Directory");
        QSignalSpy status(service, &CSoapService::authStatus);
        for (bool uses : {false, true}) {
            service->setUsesAuthentication(uses);
            CSoapTransaction t("Directory");
            t.prepareReqDom("Ping");
            Watch w(&t);
            t.sendRequest();
            QVERIFY(w.waitEnd());
            QCOMPARE(int(service->authState()), uses ? 1 : 0);
        }
        QCOMPARE(status.count(), 1);
    }

    void staleAndOrphanedReplies()
    {
        install(m_endpoint.url("/soap"));
        CSoapTransaction t("Directory");
        t.prepareReqDom("Ping");
        Watch w(&t);
        LogCatcher log;
        t.setUrl(m_endpoint.url("/soap?delay=700"));
        QVERIFY(t.sendRequest());
        t.setUrl(m_endpoint.url("/soap"));
        QVERIFY(t.sendRequest());
        QVERIFY(w.waitEnd());
        QTest::qWait(1200);
        // The late first reply is logged and disturbs nothing.
        QCOMPARE(w.ready.count(), 1);
        QCOMPARE(w.error.count(), 0);
        QVERIFY(log.contains("CSoapTransaction::onFinished() called for old reply"));
        QCOMPARE(t.status(), int(CSoapTransaction::StatusDone));

        // The service goes while a reply is on its way; then the transaction.
        auto* orphan = new CSoapTransaction("Directory");
        orphan->setUrl(m_endpoint.url("/soap?delay=300"));
        orphan->prepareReqDom("Ping");
        Watch o(orphan);
        QVERIFY(orphan->sendRequest());
        mgr()->removeService("Directory");
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!orphan->service());
        QVERIFY(o.waitEnd());
        QCOMPARE(o.ready.count(), 1);
        QVERIFY(!orphan->sendRequest());
        auto* inFlight = new CSoapTransaction("Directory");
        delete inFlight;
        install(m_endpoint.url("/soap?delay=500"));
        inFlight = new CSoapTransaction("Directory");
        inFlight->prepareReqDom("Ping");
        QVERIFY(inFlight->sendRequest());
        delete inFlight;
        delete orphan;
        QTest::qWait(700);
    }
};

QTEST_GUILESS_MAIN(TestTransaction)
#include "tst_transaction.moc"
