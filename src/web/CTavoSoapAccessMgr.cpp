#include "web/CTavoSoapAccessMgr.h"

#include <QAuthenticator>
#include <QElapsedTimer>
#include <QNetworkRequest>
#include <QTcpSocket>
#include <cstdlib>

#include "log/GuiLog.h"
#include "pac.h"
#include "web/CSoapService.h"

namespace {
const int kProbeTimeoutMs = 3000;
const int kSslLogPeriodMs = 300000;

duk_context* pacContext(void* context)
{
    return static_cast<duk_context*>(context);
}
}  // namespace

bool CTavoSoapAccessMgr::m_bValidateCaCerts = false;
CTavoSoapAccessMgr* CTavoSoapAccessMgr::m_instance = nullptr;

CTavoSoapAccessMgr::CTavoSoapAccessMgr()
{
    connect(this, &QNetworkAccessManager::finished, this, &CTavoSoapAccessMgr::onFinished);
    connect(this, &QNetworkAccessManager::sslErrors, this, &CTavoSoapAccessMgr::onSslErrors);
}

CTavoSoapAccessMgr::~CTavoSoapAccessMgr()
{
    if (m_pacContext)
        duk_destroy_heap(pacContext(m_pacContext));
    if (m_instance == this)
        m_instance = nullptr;
}

CTavoSoapAccessMgr* CTavoSoapAccessMgr::getAccessManager()
{
    if (!m_instance)
        m_instance = new CTavoSoapAccessMgr;
    return m_instance;
}

void CTavoSoapAccessMgr::destroyAccessManager()
{
    CTavoSoapAccessMgr* mgr = m_instance;
    if (!mgr)
        return;
    mgr->clearProxyData();
    mgr->disconnect();
    for (CSoapService* service : qAsConst(mgr->m_services)) {
        mgr->disconnect(service);
        service->disconnect();
        service->deleteLater();
    }
    mgr->m_services.clear();
    mgr->deleteLater();
    m_instance = nullptr;
}

void CTavoSoapAccessMgr::connectService(const QString& name, CSoapService* service)
{
    m_services.insert(name, service);
    connect(this, &QNetworkAccessManager::authenticationRequired, service, &CSoapService::authenticate,
            Qt::DirectConnection);
    connect(this, &QNetworkAccessManager::proxyAuthenticationRequired, service, &CSoapService::proxyAuthenticate,
            Qt::DirectConnection);
}

bool CTavoSoapAccessMgr::installService(QString name, QString url, QString userName, QString password)
{
    if (m_services.contains(name)) {
        setServiceCredentials(name, userName, password);
        return true;
    }
    auto* service = new CSoapService(name, url, userName, password);
    service->setProxyAccessCredentials(m_proxyUserName, m_proxyPassword);
    if (!service->isValid()) {
        guiLog(4, "CTavoSoapAccessMgr::installService '%s' has no usable template, not installed", qPrintable(name));
        delete service;
        return false;
    }
    connectService(name, service);
    return true;
}

bool CTavoSoapAccessMgr::installService(QString name, CSoapService* service)
{
    if (!service || m_services.contains(name) || !service->isValid())
        return false;
    service->setProxyAccessCredentials(m_proxyUserName, m_proxyPassword);
    connectService(name, service);
    return true;
}

CSoapService* CTavoSoapAccessMgr::getService(const QString& name)
{
    return m_services.value(name, nullptr);
}

void CTavoSoapAccessMgr::removeService(QString name)
{
    CSoapService* service = m_services.take(name);
    if (!service)
        return;
    disconnect(service);
    service->disconnect();
    service->deleteLater();
}

void CTavoSoapAccessMgr::setServiceCredentials(QString name, QString userName, QString password)
{
    CSoapService* service = m_services.value(name, nullptr);
    if (!service) {
        guiLog(3, "CTavoSoapAccessMgr::setServiceCredentials no service '%s'", qPrintable(name));
        return;
    }
    service->setAccessCredentials(userName, password);
    service->setProxyAccessCredentials(m_proxyUserName, m_proxyPassword);
}

void CTavoSoapAccessMgr::setProxyCredentials(QString userName, QString password)
{
    m_proxyUserName = userName;
    m_proxyPassword = password;
}

void CTavoSoapAccessMgr::setCustomProxies(QString proxyList)
{
    if (proxyList.isEmpty())
        return;
    m_useCustomProxies = true;
    m_customProxies = proxyList;
}

void CTavoSoapAccessMgr::assignPac(const char* pacFile)
{
    if (!pacFile || !*pacFile) {
        guiLog(2, "CTavoSoapAccessMgr::assignPac pac empty file");
        return;
    }
    clearProxyData();
    char* script = read_pacfile(pacFile);
    if (!script) {
        guiLog(4, "CTavoSoapAccessMgr::assignPac empty JS content");
        return;
    }
    m_pacContext = alloc_ctx(script);
    if (!m_pacContext) {
        guiLog(4, "CTavoSoapAccessMgr::assignPac empty Context");
        guiLog(4, "CTavoSoapAccessMgr::assignPac script refused: %s", pac_last_error(nullptr));
    } else {
        guiLog(2, "CTavoSoapAccessMgr::assignPac pac file is %s ctx is %p", pacFile, m_pacContext);
    }
    std::free(script);
}

void CTavoSoapAccessMgr::clearProxyData()
{
    guiLog(2, "CTavoSoapAccessMgr::clearProxyData ctx %p ", m_pacContext);
    if (m_pacContext) {
        duk_destroy_heap(pacContext(m_pacContext));
        m_pacContext = nullptr;
    }
    m_proxyMap.clear();
    QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::NoProxy));
    guiLog(2, "setNetworkProxy clear Proxy in WebUI");
    emit reportProxyData(QString());
}

QNetworkReply* CTavoSoapAccessMgr::createRequest(Operation op, const QNetworkRequest& request, QIODevice* outgoingData)
{
    QNetworkRequest copy(request);
    const QString url = copy.url().toString();
    if (!m_pacContext && !m_useCustomProxies) {
        guiLog(0, "CTavoSoapAccessMgr::createRequest ctx is empty no proxies");
        return QNetworkAccessManager::createRequest(op, copy, outgoingData);
    }

    const auto stored = m_proxyMap.constFind(url);
    if (stored != m_proxyMap.constEnd()) {
        if (!stored->proxies.isEmpty()) {
            guiLog(0, "Getting the stored result of proxies from the map");
            const int index = qBound(0, stored->index, stored->proxies.size() - 1);
            setNetworkProxy(stored->proxies.at(index));
        } else {
            guiLog(2, "Stored map does not have any proxy");
        }
        return QNetworkAccessManager::createRequest(op, copy, outgoingData);
    }

    guiLog(0, "createRequest start");
    char* pacResult = nullptr;
    if (m_pacContext && !m_useCustomProxies) {
        pacResult = find_proxy(pacContext(m_pacContext), url.toUtf8().constData(),
                               copy.url().host().toUtf8().constData());
        if (!pacResult) {
            guiLog(3, "CTavoSoapAccessMgr::createRequest script gave no result: %s",
                   pac_last_error(pacContext(m_pacContext)));
        } else if (qstrcmp(pacResult, "undefined") == 0) {
            guiLog(4, " JavaScript call result is undefined.The deployed JS should be changed ");
        } else {
            guiLog(2, "pac result %s", pacResult);
            const QString result = QString::fromUtf8(pacResult);
            if (!result.isEmpty())
                prepareProxyList(url, result);
            guiLog(2, "Proxies url %s ", qPrintable(url));
            guiLog(2, "List size %d", m_proxyMap.value(url).proxies.size());
        }
    } else if (m_useCustomProxies) {
        prepareProxyList(url, m_customProxies);
    }

    proxyData& entry = m_proxyMap[url];
    if (entry.proxies.isEmpty()) {
        guiLog(0, "CTavoSoapAccessMgr::createRequest map empty ");
        guiLog(4, "All proxies failed");
        entry.index = 0;
        emit reportProxyFailure(QNetworkReply::UnknownProxyError);
        std::free(pacResult);
        // A request without a URL: the caller gets a reply that fails.
        return QNetworkAccessManager::createRequest(op, QNetworkRequest(QUrl()), nullptr);
    }
    entry.index = 0;
    setNetworkProxy(entry.proxies.at(0));
    std::free(pacResult);
    return QNetworkAccessManager::createRequest(op, copy, outgoingData);
}

void CTavoSoapAccessMgr::prepareProxyList(QString url, QString proxyList)
{
    guiLog(2, "CTavoSoapAccessMgr::prepareProxyList");
    const QStringList entries = proxyList.split(QLatin1Char(';'));
    for (const QString& entry : entries) {
        const QStringList words = entry.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
        // "PROXY a:1;" ends in an empty entry: nothing was asked for there.
        if (words.isEmpty())
            continue;
        if (words.first() == QLatin1String("PROXY")) {
            const QStringList hostPort = words.value(1).split(QLatin1Char(':'));
            const QString host = hostPort.value(0);
            bool portOk = false;
            int port = hostPort.size() > 1 ? hostPort.at(1).toInt(&portOk) : 80;
            if (hostPort.size() > 1 && (!portOk || port <= 0 || port > 65535)) {
                guiLog(3, "CTavoSoapAccessMgr::prepareProxyList bad port '%s', using 80", qPrintable(hostPort.at(1)));
                port = 80;
            }
            QTcpSocket probe;
            probe.setProxy(QNetworkProxy(QNetworkProxy::NoProxy));
            probe.connectToHost(host, quint16(port), QIODevice::ReadWrite);
            if (probe.waitForConnected(kProbeTimeoutMs)) {
                probe.close();
                proxyInfo info;
                info.proxy = QNetworkProxy(QNetworkProxy::HttpProxy, host, quint16(port));
                info.noProxy = false;
                m_proxyMap[url].proxies.append(info);
                guiLog(2, "CTavoSoapAccessMgr::prepareProxyList Add the proxy %s %d", qPrintable(host), port);
            } else {
                const int error = int(probe.error());
                probe.close();
                guiLog(3, "CTavoSoapAccessMgr::prepareProxyList Will not add the proxy %s %d errorCode %d",
                       qPrintable(host), port, error);
            }
        } else {
            proxyInfo info;
            info.proxy = QNetworkProxy(QNetworkProxy::NoProxy);
            info.noProxy = true;
            m_proxyMap[url].proxies.append(info);
        }
    }
}

void CTavoSoapAccessMgr::setNetworkProxy(proxyInfo info)
{
    QString text;
    if (info.noProxy) {
        QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::NoProxy));
        guiLog(2, "setNetworkProxy No HTTP proxy '%s'", qPrintable(m_proxyUserName));
    } else {
        // The same host as the proxy in use: it stays as it is, port and all.
        if (info.proxy.hostName() == QNetworkProxy::applicationProxy().hostName())
            return;
        QNetworkProxy proxy(QNetworkProxy::HttpProxy, info.proxy.hostName(), info.proxy.port(), m_proxyUserName,
                            m_proxyPassword);
        QNetworkProxy::setApplicationProxy(proxy);
        guiLog(2, "setNetworkProxy HTTP proxy as '%s:%d' '%s'", qPrintable(proxy.hostName()), int(proxy.port()),
               qPrintable(m_proxyUserName));
        text = proxy.hostName() + QLatin1Char(':') + QString::number(proxy.port());
    }
    emit reportProxyData(text);
}

bool CTavoSoapAccessMgr::onChangeProxy(QString url, QNetworkReply::NetworkError error, QString errorText)
{
    guiLog(4, "CTavoSoapAccessMgr::onChangeProxy %d, proxy is using AD credentials = %s", int(error),
           m_proxyUsesAdCredentials ? "true" : "false");
    if (!m_pacContext && !m_useCustomProxies)
        return false;
    if ((error == QNetworkReply::ProxyAuthenticationRequiredError
         || error == QNetworkReply::AuthenticationRequiredError)
        && m_proxyUsesAdCredentials) {
        guiLog(4, "CTavoSoapAccessMgr::onChangeProxy ProxyAuthenticationRequiredError ");
        emit reportProxyFailure(QNetworkReply::ProxyAuthenticationRequiredError);
        return false;
    }
    auto entry = m_proxyMap.find(url);
    if (entry != m_proxyMap.end()) {
        entry->index += 1;
        if (entry->index < entry->proxies.size()) {
            guiLog(2, " ctx non empty index %d for url %s", entry->index, qPrintable(url));
            return true;
        }
        entry->index = 0;
    }
    guiLog(4, "All proxies failed");
    guiLog(0, "CTavoSoapAccessMgr::onChangeProxy last error: %s", qPrintable(errorText));
    emit reportProxyFailure(error);
    return false;
}

void CTavoSoapAccessMgr::onFinished(QNetworkReply* pReply)
{
    if (!pReply)
        return;
    const QString url = pReply->url().toString();
    for (CSoapService* service : qAsConst(m_services)) {
        if (service->authState() == CSoapService::AuthInProgress && service->url().toString() == url) {
            service->authenticate(pReply, nullptr);
            service->evaluateAuthenticationState(pReply);
        }
    }
}

void CTavoSoapAccessMgr::onSslErrors(QNetworkReply* reply, const QList<QSslError>& errors)
{
    if (!reply || !m_instance)
        return;
    // Logged on the first error and then at most once per period.
    static QElapsedTimer sinceLogged;
    bool log = false;
    if (!sinceLogged.isValid()) {
        sinceLogged.start();
        log = true;
    } else if (sinceLogged.elapsed() > kSslLogPeriodMs) {
        sinceLogged.restart();
        log = true;
    }
    if (log) {
        for (const QSslError& error : errors)
            guiLog(3, "Soap Access Manager has encountered a SSL error for URL %s [ID:%d], description: %s",
                   qPrintable(reply->url().toString()), int(error.error()), qPrintable(error.errorString()));
    }
    if (m_bValidateCaCerts) {
        guiLog(4, "Soap Access Manager cannot continue due to an SSL error");
        return;
    }
    reply->ignoreSslErrors();
}
