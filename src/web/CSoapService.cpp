#include "web/CSoapService.h"

#include <QAuthenticator>
#include <QDomDocument>
#include <QFile>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QTextStream>

#include "log/GuiLog.h"

CSoapService::CSoapService(QString name, QString url, QString userName, QString password)
    : m_url(url), m_userName(userName), m_password(password), m_name(name)
{
    setAccessCredentials(userName, password);
    parseTemplateFile();
}

CSoapService::~CSoapService() = default;

bool CSoapService::setAccessCredentials(const QString& userName, const QString& password)
{
    guiLog(0, "'%s' Service setAccessCredentials for userName = '%s'", qPrintable(m_name), qPrintable(userName));
    if (userName == m_userName && password == m_password)
        return false;
    m_userName = userName;
    m_password = password;
    m_authState = AuthNotAttempted;
    return true;
}

bool CSoapService::setProxyAccessCredentials(const QString& userName, const QString& password)
{
    if (userName == m_proxyUserName && password == m_proxyPassword)
        return false;
    m_proxyUserName = userName;
    m_proxyPassword = password;
    return true;
}

bool CSoapService::isNewCredential(const QString& userName, const QString& password)
{
    bool changed = false;
    if (userName != m_userName) {
        guiLog(0, "Exchange Client User name changed");
        changed = true;
    }
    if (password != m_password) {
        guiLog(0, "Exchange Client password changed");
        changed = true;
    }
    return changed;
}

void CSoapService::reset()
{
    m_userName = QStringLiteral("");
    m_password = QStringLiteral("");
}

void CSoapService::setAuthState(AuthenticationStateT state)
{
    if (state != AuthSucceeded || m_authState == AuthSucceeded)
        return;
    m_authState = AuthSucceeded;
    emit authStatus(AuthSucceeded);
}

void CSoapService::authenticate(QNetworkReply* pReply, QAuthenticator* pAuthenticator)
{
    // One access manager serves every service, so every service hears every challenge.
    QNetworkReply* reply = qobject_cast<QNetworkReply*>(pReply);
    if (!reply || QUrl(reply->url().toString()) != m_url)
        return;
    if (m_authState == AuthNotAttempted) {
        guiLog(3, "CSoapService::authenticate, setting credentials to %s", qPrintable(m_userName));
        m_authState = AuthInProgress;
        if (pAuthenticator) {
            pAuthenticator->setUser(m_userName);
            pAuthenticator->setPassword(m_password);
        }
        connect(reply, &QNetworkReply::finished, this, &CSoapService::onAuthenticationRelyFinished,
                Qt::UniqueConnection);
        return;
    }
    // Same values again: Qt asks at most once more for this reply, then fails it.
    if (pAuthenticator && (pAuthenticator->user() != m_userName || pAuthenticator->password() != m_password)) {
        pAuthenticator->setUser(m_userName);
        pAuthenticator->setPassword(m_password);
    }
}

void CSoapService::onAuthenticationRelyFinished()
{
    evaluateAuthenticationState(qobject_cast<QNetworkReply*>(sender()));
}

void CSoapService::evaluateAuthenticationState(QNetworkReply* reply)
{
    if (!reply)
        return;
    guiLog(2, "'%s' Service onAuthenticationReplyFinished, m_authState = %d, networkReply error = %s (%d)",
           qPrintable(m_name), int(m_authState), qPrintable(reply->errorString()), int(reply->error()));
    if (reply->error() == QNetworkReply::NoError) {
        if (m_authState != AuthSucceeded) {
            guiLog(2, "'%s' Service Authentication succeeded: (current authentication state = %d)",
                   qPrintable(m_name), int(m_authState));
            m_authState = AuthSucceeded;
            emit authStatus(AuthSucceeded);
        }
    } else if (reply->error() == QNetworkReply::AuthenticationRequiredError) {
        if (m_authState != AuthFailed) {
            guiLog(1, "'%s' Service Authentication failed: (current authentication state = %d)",
                   qPrintable(m_name), int(m_authState));
            m_authState = AuthFailed;
            emit authStatus(AuthFailed);
        }
    }
    reply->deleteLater();
}

void CSoapService::proxyAuthenticate(const QNetworkProxy& proxy, QAuthenticator* authenticator)
{
    // The proxy credentials travel in the application proxy itself.
    guiLog(0, "proxyAuthenticate: Proxy user '%s' auth user '%s'", qPrintable(proxy.user()),
           authenticator ? qPrintable(authenticator->user()) : "");
}

QDomNode& CSoapService::getOperationTemplate(const QString& operation)
{
    return m_operationTemplates[operation];
}

QString& CSoapService::getOperationTemplateXml(const QString& operation)
{
    return m_operationTemplatesXml[operation];
}

void CSoapService::parseTemplateFile()
{
    QFile file(QString::asprintf(":/rc/%sTemplate.xml", m_name.toUtf8().constData()));
    if (!file.open(QIODevice::ReadOnly)) {
        guiLog(4, "'%s' Service template file not exist.", qPrintable(m_name));
        return;
    }
    QDomDocument document;
    QString error;
    int line = 0;
    int column = 0;
    if (!document.setContent(&file, &error, &line, &column)) {
        guiLog(4, "'%s' Service template is not XML: %s at %d:%d", qPrintable(m_name), qPrintable(error), line,
               column);
        file.close();
        return;
    }
    const QDomNodeList items = document.elementsByTagName(QStringLiteral("SoapOperationItem"));
    if (items.isEmpty()) {
        m_templateXml = document.toString(1);
        m_valid = true;
        return;
    }
    const QDomElement envelope = items.at(0).firstChildElement(QStringLiteral("soap:Envelope"));
    for (int i = 0; i < items.count(); ++i) {
        QDomElement item = items.at(i).toElement();
        const QString operation = item.attribute(QStringLiteral("name"));
        QDomNode node;
        if (envelope.isNull()) {
            node = item.firstChild().cloneNode(true);
        } else {
            node = envelope.cloneNode(true);
            QDomElement body = node.firstChildElement(QStringLiteral("soap:Body"));
            const QDomNode content = item.firstChild();
            if (!body.isNull() && !content.isNull())
                body.appendChild(content);
        }
        m_operationTemplates[operation] = node;
        QString text;
        QTextStream stream(&text);
        node.save(stream, 4);
        stream.flush();
        m_operationTemplatesXml[operation] = text;
        m_valid = true;
    }
}

void CSoapService::deleteNode(QDomNode& node)
{
    while (node.hasChildNodes()) {
        QDomNode child = node.firstChild();
        node.removeChild(child);
        deleteNode(child);
    }
    node.clear();
}
