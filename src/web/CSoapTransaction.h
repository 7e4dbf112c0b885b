#pragma once
#include "tgui_export.h"
// One request and its reply against an installed SOAP service: the request as
// a DOM made from the service's template, serialised, logged and posted
// through CTavoSoapAccessMgr, guarded by an optional abort timer; redirects
// are followed or reported, a proxy failure moves on to the next proxy, and
// the parsed reply or the error goes to the owner by signal. Derive from it or
// drive it from outside; one object may send several times.
//
//   CSoapTransaction t("Directory");
//   t.prepareReqDom("GetEntries");
//   t.findFirstElement("filter").appendChild(...);
//   connect(&t, &CSoapTransaction::ready, ...);
//   t.sendRequest();
#include <QDomDocument>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

#include "web/CSoapService.h"
#include "web/CTavoSoapAccessMgr.h"
class QTimer;

class TGUI_EXPORT CSoapTransaction : public QObject
{
    Q_OBJECT
public:
    // m_status values.
    enum { StatusNew = 0, StatusDone = 1, StatusInProgress = 2, StatusFailed = 3 };

    explicit CSoapTransaction(const QString& serviceName, QObject* parent = nullptr);
    ~CSoapTransaction() override;

    // Loads the operation's template into the request DOM ("" for the whole
    // template of the service). The same name again keeps the filled DOM and
    // gives false.
    bool prepareReqDom(const QString& operation);
    // The first element of that tag name in the request DOM, or a null element.
    QDomElement findFirstElement(const QString& tag);
    void setUrl(const QString& url);
    // A single-shot timer that aborts the reply in flight; none by default.
    void createAbortTimer(int milliseconds);
    void abortRequest();
    void setCustomHeader(QString& name, QString& value);
    void setHeader(QNetworkRequest::KnownHeaders header, QString& value);
    // A header of the reply as UTF-8; "" when there is none or no reply.
    QString getHeaderValue(QString name);
    // Whether the reply failed because of its proxy (never for an abort).
    bool proxyError(QNetworkReply* reply);
    bool sendRequest();

    int status() const { return m_status; }
    const QString& request() const { return m_request; }
    const QString& response() const { return m_response; }
    const QString& operationName() const { return m_operation; }
    QDomDocument& requestDom() { return m_requestDom; }
    QDomDocument& responseDom() { return m_responseDom; }
    QNetworkRequest* networkRequest() const { return m_networkRequest; }
    CSoapService* service() const { return m_service; }
    QNetworkReply* reply() const { return m_reply; }
    const QString& lastResponseTime() const { return m_lastResponseTime; }
    const QString& parseErrorText() const { return m_parseErrorText; }
    int parseErrorLine() const { return m_parseErrorLine; }
    int parseErrorColumn() const { return m_parseErrorColumn; }
    void setRequestArgument(const QString& argument) { m_requestArgument = argument; }
    void setRawBody(const QString& body) { m_rawBody = body; }
    void setPlainResponse(bool plain) { m_plainResponse = plain; }
    void setFollowRedirects(bool follow) { m_followRedirects = follow; }
    bool followRedirects() const { return m_followRedirects; }

    // Offered to derived classes for their requests' User-Agent; the base
    // class does not set it.
    static QString m_defaultUserAgent;
    // Redirects followed in a row before the chain is given up.
    static const int kMaxRedirects = 20;

signals:
    void ready(QDomDocument* pDocument);
    void readyPlainResponse(const QString& data);
    void redirectUrlResponse(QUrl url);
    void networkError(QNetworkReply::NetworkError error);

public slots:
    void onError(QNetworkReply::NetworkError code);
    void onFinished();
    void onTimeout();

protected:
    QString m_request;
    QString m_response;
    QString m_operation;
    QNetworkRequest* m_networkRequest = nullptr;
    QDomDocument m_requestDom;
    QDomDocument m_responseDom;
    QPointer<CSoapService> m_service;
    QPointer<CTavoSoapAccessMgr> m_accessMgr;
    QString m_userData;  // for derived classes
    int m_status = StatusNew;
    QString m_lastResponseTime;
    QString m_parseErrorText;
    int m_parseErrorLine = 0;
    int m_parseErrorColumn = 0;
    int m_userValue = 0;  // for derived classes
    QPointer<QNetworkReply> m_reply;
    QTimer* m_abortTimer = nullptr;
    QString m_requestArgument;
    QString m_rawBody;
    bool m_plainResponse = false;
    bool m_followRedirects = true;

private:
    void finishError(QNetworkReply* reply);
    void finishSuccess(QNetworkReply* reply);
    int m_redirects = 0;
};
