// A SOAP service: templates from Qt resources in both forms, credentials and
// the states of HTTP authentication against the real endpoint's Basic
// challenges.
#include <QtTest>

#include <QAuthenticator>
#include <QDomDocument>
#include <QNetworkReply>

#include "WebPeers.h"
#include "web/CSoapService.h"
#include "web/CTavoSoapAccessMgr.h"

namespace {
struct ServiceProbe : CSoapService {
    using CSoapService::CSoapService;
    int xmlEntries() const { return m_operationTemplatesXml.size(); }
    int nodeEntries() const { return m_operationTemplates.size(); }
};

QList<int> states(const QSignalSpy& spy)
{
    QList<int> out;
    for (const QList<QVariant>& args : spy)
        out.append(args.at(0).toInt());
    return out;
}
}  // namespace

class TestSoapService : public QObject
{
    Q_OBJECT
    SoapPeer m_endpoint;

    // Posts a Ping through the access manager and waits for the end.
    QNetworkReply::NetworkError post(const QString& url)
    {
        QNetworkRequest request{QUrl(url)};
        request.setHeader(QNetworkRequest::ContentTypeHeader, "text/xml; charset=utf-8");
        QNetworkReply* reply = CTavoSoapAccessMgr::getAccessManager()->post(
            request, QByteArray("<soap:Envelope xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\">"
                                "<soap:Body><Ping/></soap:Body></soap:Envelope>"));
        QSignalSpy done(reply, &QNetworkReply::finished);
        if (!done.wait(10000))
            return QNetworkReply::TimeoutError;
        const QNetworkReply::NetworkError error = reply->error();
        reply->deleteLater();
        return error;
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_endpoint.start({"--user", "alice", "--password", "secret"}));
    }

    void cleanup()
    {
        CTavoSoapAccessMgr::destroyAccessManager();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void cleanupTestCase()
    {
        QCOMPARE(m_endpoint.stop(), 0);
    }

    void operationTemplatesShareTheFirstItemsEnvelope()
    {
        ServiceProbe service("Directory", "http://directory.test/soap", "alice", "secret");
        QVERIFY(service.isValid());
        QCOMPARE(service.nodeEntries(), 4);
        for (const char* op : {"GetEntries", "Echo", "Ping"}) {
            const QString xml = service.getOperationTemplateXml(op);
            QDomDocument doc;
            QVERIFY2(doc.setContent(xml), op);
            QCOMPARE(doc.documentElement().tagName(), QStringLiteral("soap:Envelope"));
            const QDomElement body = doc.documentElement().firstChildElement("soap:Body");
            QCOMPARE(body.childNodes().count(), 1);  // its own content only
            QCOMPARE(body.firstChildElement().tagName(), QString::fromLatin1(op));
            QVERIFY(!doc.documentElement().firstChildElement("soap:Header").isNull());
            // Written with an indent of four (a node below its document starts one level in).
            QVERIFY2(xml.contains("\n        <soap:Body>\n            <" + QString::fromLatin1(op)), qPrintable(xml));
            QCOMPARE(service.getOperationTemplate(op).toElement().tagName(), QStringLiteral("soap:Envelope"));
        }
        QVERIFY(service.templateXml().isEmpty());
        // An unknown name reads empty and leaves an empty entry behind.
        QCOMPARE(service.getOperationTemplateXml("Nope"), QString());
        QVERIFY(service.getOperationTemplate("Nope").isNull());
        QCOMPARE(service.xmlEntries(), 5);
        QCOMPARE(service.nodeEntries(), 5);
    }

    void otherTemplateForms()
    {
        CSoapService whole("Whole", "http://directory.test/whole", "", "");
        QVERIFY(whole.isValid());
        QVERIFY(whole.templateXml().contains("\n <soap:Body>"));
        QVERIFY(whole.getOperationTemplateXml("Echo").isEmpty());

        // No envelope in the first item: each template is the item's content.
        CSoapService bare("Bare", "http://directory.test/bare", "", "");
        QVERIFY(bare.isValid());
        QVERIFY2(bare.getOperationTemplateXml("Raw").trimmed().startsWith("<Raw xmlns=\"urn:tgui-directory\">"),
                 qPrintable(bare.getOperationTemplateXml("Raw")));
        QCOMPARE(bare.getOperationTemplateXml("Other").trimmed(), QStringLiteral("<Other/>"));

        LogCatcher log;
        CSoapService missing("Nothing", "http://directory.test/", "", "");
        QVERIFY(!missing.isValid());
        QVERIFY(log.contains("'Nothing' Service template file not exist."));
        CSoapService broken("Broken", "http://directory.test/", "", "");
        QVERIFY(!broken.isValid());

        // The access manager installs only services with a template.
        CTavoSoapAccessMgr* mgr = CTavoSoapAccessMgr::getAccessManager();
        QVERIFY(!mgr->installService("Nothing", "http://directory.test/", "", ""));
        QVERIFY(!mgr->getService("Nothing"));
        QVERIFY(mgr->installService("Bare", new CSoapService("Bare", "http://x/", "", "")));
        QVERIFY(!mgr->installService("Broken", nullptr));
        auto* twin = new CSoapService("Bare", "http://y/", "", "");
        QVERIFY(!mgr->installService("Bare", twin));  // a known name
        delete twin;
        auto* invalid = new CSoapService("Nothing", "http://x/", "", "");
        QVERIFY(!mgr->installService("Other", invalid));
        delete invalid;
        QVERIFY(mgr->installService("Directory", "http://directory.test/soap", "alice", "secret"));
        // A known name takes new credentials only.
        QVERIFY(mgr->installService("Directory", "http://elsewhere/", "bob", "pw"));
        QCOMPARE(mgr->getService("Directory")->url(), QUrl("http://directory.test/soap"));
        QCOMPARE(mgr->getService("Directory")->userName(), QStringLiteral("bob"));
        mgr->removeService("Directory");
        QVERIFY(!mgr->getService("Directory"));
    }

    void credentialsResetTheStateOnlyWhenTheyChange()
    {
        CSoapService service("Directory", "http://directory.test/soap", "alice", "secret");
        QSignalSpy status(&service, &CSoapService::authStatus);
        service.setAuthState(CSoapService::AuthFailed);  // only "succeeded" is taken
        QCOMPARE(int(service.authState()), 0);
        service.setAuthState(CSoapService::AuthSucceeded);
        service.setAuthState(CSoapService::AuthSucceeded);
        QCOMPARE(states(status), QList<int>{1});

        LogCatcher log;
        QVERIFY(!service.setAccessCredentials("alice", "secret"));
        QCOMPARE(int(service.authState()), 1);
        QVERIFY(service.setAccessCredentials("alice", "other"));
        QCOMPARE(int(service.authState()), 0);
        QVERIFY(log.contains("'Directory' Service setAccessCredentials for userName = 'alice'"));
        QVERIFY(!log.contains("other"));  // never the password

        log.clear();
        QVERIFY(!service.isNewCredential("alice", "other"));
        QVERIFY(log.lines().isEmpty());
        QVERIFY(service.isNewCredential("bob", "x"));
        QCOMPARE(log.count("Exchange Client User name changed"), 1);
        QCOMPARE(log.count("Exchange Client password changed"), 1);

        QVERIFY(service.setProxyAccessCredentials("proxyuser", "pw"));
        QVERIFY(!service.setProxyAccessCredentials("proxyuser", "pw"));
        QCOMPARE(service.proxyUserName(), QStringLiteral("proxyuser"));
        service.reset();
        QVERIFY(service.userName().isEmpty() && service.password().isEmpty());
        QCOMPARE(service.proxyUserName(), QStringLiteral("proxyuser"));

        // Unknown services ask for nothing; a null reply changes nothing.
        service.evaluateAuthenticationState(nullptr);
        service.authenticate(nullptr, nullptr);
        service.proxyAuthenticate(QNetworkProxy(QNetworkProxy::HttpProxy, "p", 1, "u"), nullptr);
        QCOMPARE(int(service.authState()), 0);
    }

    void deleteNodeEmptiesTheTree()
    {
        QDomDocument doc;
        doc.setContent(QStringLiteral("<a><b><c/><d>text</d></b><e/></a>"));
        QDomNode root = doc.documentElement();
        QDomNode b = root.firstChild();
        CSoapService service("Bare", "http://x/", "", "");
        service.deleteNode(root);
        QVERIFY(root.isNull());
        QVERIFY(!b.hasChildNodes());
        QVERIFY(b.parentNode().isNull());
    }

    void authenticationStatesAgainstTheEndpoint_data()
    {
        QTest::addColumn<QString>("password");
        QTest::addColumn<int>("error");
        QTest::addColumn<QList<int>>("signalled");
        QTest::newRow("right") << "secret" << int(QNetworkReply::NoError) << QList<int>{1};
        // Qt asks a second time; the same answer ends the reply with 204.
        QTest::newRow("wrong") << "guess" << int(QNetworkReply::AuthenticationRequiredError) << QList<int>{3};
    }

    void authenticationStatesAgainstTheEndpoint()
    {
        QFETCH(QString, password);
        QFETCH(int, error);
        QFETCH(QList<int>, signalled);
        CTavoSoapAccessMgr* mgr = CTavoSoapAccessMgr::getAccessManager();
        const QString url = m_endpoint.url("/auth/soap");
        QVERIFY(mgr->installService("Directory", url, "alice", password));
        // A second service elsewhere hears the same challenges and ignores them.
        QVERIFY(mgr->installService("Whole", m_endpoint.url("/auth/whole"), "alice", password));
        CSoapService* service = mgr->getService("Directory");
        QSignalSpy status(service, &CSoapService::authStatus);
        QSignalSpy other(mgr->getService("Whole"), &CSoapService::authStatus);

        LogCatcher log;
        QCOMPARE(int(post(url)), error);
        QCOMPARE(states(status), signalled);
        QCOMPARE(int(service->authState()), signalled.last());
        QCOMPARE(int(mgr->getService("Whole")->authState()), 0);
        QCOMPARE(other.count(), 0);
        QVERIFY(log.contains("CSoapService::authenticate, setting credentials to alice"));
        QVERIFY(log.contains("'Directory' Service onAuthenticationReplyFinished, m_authState = 2"));

        // A second reply changes nothing more (and with good credentials Qt
        // sends them unasked).
        QCOMPARE(int(post(url)), error);
        QCOMPARE(states(status), signalled);

        // New credentials: the next challenge is answered afresh.
        mgr->setServiceCredentials("Directory", "alice", "secret");
        QCOMPARE(int(service->authState()), error ? 0 : 1);
        if (error) {
            mgr->clearAccessCache();
            QCOMPARE(int(post(url)), int(QNetworkReply::NoError));
            QCOMPARE(states(status), (QList<int>{3, 1}));
        }
        const QStringList lines = m_endpoint.lines();
        QVERIFY(lines.filter("auth=none").size() >= 1);
    }
};

QTEST_GUILESS_MAIN(TestSoapService)
#include "tst_soapservice.moc"
