#pragma once
#include "tgui_export.h"
// The one network access manager of a process for web services. Every request
// first passes proxy selection: a proxy auto-config script (through the pac
// evaluator) or a fixed list in the form of a script's result gives an ordered
// list of proxies per URL, evaluated once per URL; unreachable proxies are
// dropped by a TCP probe of up to 3000 ms each; the chosen one becomes Qt's
// application proxy; a transaction that hits a proxy failure asks for the next
// with onChangeProxy. It also owns the SOAP services and settles SSL errors.
#include <QList>
#include <QMap>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QSslError>
#include <QString>

class CSoapService;

// One candidate proxy; noProxy for a DIRECT (or other non-PROXY) entry.
struct TGUI_EXPORT proxyInfo {
    QNetworkProxy proxy;
    bool noProxy = false;
};

// The proxies of one URL and the index of the one in use.
struct TGUI_EXPORT proxyData {
    int index = 0;
    QList<proxyInfo> proxies;
};

class TGUI_EXPORT CTavoSoapAccessMgr : public QNetworkAccessManager
{
    Q_OBJECT
public:
    // Created on first use; lives until destroyAccessManager().
    static CTavoSoapAccessMgr* getAccessManager();
    static void destroyAccessManager();

    // A known name only takes the new credentials. A service whose template
    // cannot be read is not installed. Both give whether the name is now served.
    bool installService(QString name, QString url, QString userName, QString password);
    bool installService(QString name, CSoapService* service);
    CSoapService* getService(const QString& name);
    void removeService(QString name);
    void setServiceCredentials(QString name, QString userName, QString password);

    void setProxyCredentials(QString userName, QString password);
    // A list in the form of a script's result ("PROXY host:port; DIRECT");
    // once set it wins over a script. An empty list is ignored.
    void setCustomProxies(QString proxyList);
    void assignPac(const char* pacFile);
    // Forgets the script context and every URL's proxies; no application proxy.
    void clearProxyData();
    // After a proxy failure: true when the URL has another proxy to try.
    bool onChangeProxy(QString url, QNetworkReply::NetworkError error, QString errorText);
    void prepareProxyList(QString url, QString proxyList);
    void setNetworkProxy(proxyInfo info);

    // The proxies resolved for a URL (empty data when none yet).
    proxyData proxyDataFor(const QString& url) const { return m_proxyMap.value(url); }
    bool hasProxyData(const QString& url) const { return m_proxyMap.contains(url); }
    bool hasPacContext() const { return m_pacContext != nullptr; }
    bool usesCustomProxies() const { return m_useCustomProxies; }
    bool proxyUsesAdCredentials() const { return m_proxyUsesAdCredentials; }
    void setProxyUsesAdCredentials(bool uses) { m_proxyUsesAdCredentials = uses; }
    QList<CSoapService*> services() const { return m_services.values(); }

    // Whether an SSL error fails the reply (true) or is ignored (false).
    static bool m_bValidateCaCerts;

signals:
    void needNewCredentials(const QString& serviceName);
    void reportProxyFailure(QNetworkReply::NetworkError error);
    // "host:port" of the proxy now in use, "" for none.
    void reportProxyData(QString proxy);

public slots:
    void onFinished(QNetworkReply* pReply);
    void onSslErrors(QNetworkReply* reply, const QList<QSslError>& errors);

protected:
    CTavoSoapAccessMgr();
    ~CTavoSoapAccessMgr() override;
    QNetworkReply* createRequest(Operation op, const QNetworkRequest& request, QIODevice* outgoingData) override;

    QMap<QString, CSoapService*> m_services;
    void* m_pacContext = nullptr;
    QMap<QString, proxyData> m_proxyMap;
    QString m_proxyUserName;
    QString m_proxyPassword;
    bool m_useCustomProxies = false;
    QString m_customProxies;
    bool m_proxyUsesAdCredentials = false;

private:
    void connectService(const QString& name, CSoapService* service);
    static CTavoSoapAccessMgr* m_instance;
};
