#pragma once
#include "tgui_export.h"
// One remote SOAP endpoint: its URL, the access and proxy credentials, the
// state of HTTP authentication, and the request templates of its operations,
// read from the Qt resource ":/rc/<name>Template.xml".
//
// A template either has no "SoapOperationItem" element, and the whole document
// is the one template of the service, or one "SoapOperationItem name=..." per
// operation: the item's first child is the operation's body content, and the
// first item also holds the common "soap:Envelope" whose "soap:Body" receives
// it. Services are made, owned and found by name by CTavoSoapAccessMgr.
#include <QDomNode>
#include <QMap>
#include <QObject>
#include <QString>
#include <QUrl>

class QAuthenticator;
class QNetworkProxy;
class QNetworkReply;

class TGUI_EXPORT CSoapService : public QObject
{
    Q_OBJECT
public:
    // The numbers appear in logs and in authStatus(int).
    enum AuthenticationStateT {
        AuthNotAttempted = 0,
        AuthSucceeded = 1,
        AuthInProgress = 2,
        AuthFailed = 3,
    };

    CSoapService(QString name, QString url, QString userName, QString password);
    ~CSoapService() override;

    // Both return whether anything changed. New access credentials put the
    // state back to "not attempted", so that the next challenge is answered afresh.
    bool setAccessCredentials(const QString& userName, const QString& password);
    bool setProxyAccessCredentials(const QString& userName, const QString& password);
    // Whether the pair differs from the stored access credentials.
    bool isNewCredential(const QString& userName, const QString& password);
    // Settles the state from the reply that followed an answered challenge.
    void evaluateAuthenticationState(QNetworkReply* reply);
    void reset();
    // Only "succeeded" is taken, and only when it is new.
    void setAuthState(AuthenticationStateT state);

    // Unknown names get an empty entry, so that the caller reads an empty text.
    QDomNode& getOperationTemplate(const QString& operation);
    QString& getOperationTemplateXml(const QString& operation);
    void parseTemplateFile();
    // Clears the node after all its children, depth first.
    void deleteNode(QDomNode& node);

    const QString& name() const { return m_name; }
    const QUrl& url() const { return m_url; }
    bool isValid() const { return m_valid; }
    AuthenticationStateT authState() const { return m_authState; }
    int operation() const { return m_operation; }
    void setOperation(int operation) { m_operation = operation; }
    const QString& userName() const { return m_userName; }
    const QString& password() const { return m_password; }
    const QString& proxyUserName() const { return m_proxyUserName; }
    const QString& proxyPassword() const { return m_proxyPassword; }
    const QString& templateXml() const { return m_templateXml; }
    bool usesAuthentication() const { return m_usesAuthentication; }
    void setUsesAuthentication(bool uses) { m_usesAuthentication = uses; }

signals:
    void authStatus(int state);

public slots:
    // Answers the HTTP layer's challenge for this service's URL only.
    void authenticate(QNetworkReply* pReply, QAuthenticator* pAuthenticator);
    void onAuthenticationRelyFinished();
    void proxyAuthenticate(const QNetworkProxy& proxy, QAuthenticator* authenticator);

protected:
    QUrl m_url;
    QString m_userName;
    QString m_password;
    QString m_proxyUserName;
    QString m_proxyPassword;
    QString m_name;
    QMap<QString, QDomNode> m_operationTemplates;
    QMap<QString, QString> m_operationTemplatesXml;
    QString m_templateXml;
    bool m_valid = false;
    AuthenticationStateT m_authState = AuthNotAttempted;
    int m_operation = 4;  // QNetworkAccessManager::PostOperation
    bool m_usesAuthentication = false;
};
