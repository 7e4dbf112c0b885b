#include "web/CSoapTransaction.h"

#include <QDateTime>
#include <QSslConfiguration>
#include <QTextStream>
#include <QTimer>

#include "log/GuiLog.h"
#include "web/CSoapService.h"
#include "web/CTavoSoapAccessMgr.h"

namespace {
const int kSliceChars = 16000;
const int kMaxSlices = 10;
const qint64 kLargeReplyBytes = 100000;

// Long texts go in slices, and only so many of them, to keep the log bounded.
void logSliced(int level, const QString& text)
{
    if (text.size() < kSliceChars) {
        guiLogRaw(level, text.toUtf8().constData());
        return;
    }
    for (int i = 0; i < kMaxSlices && i * kSliceChars < text.size(); ++i)
        guiLogRaw(level, text.mid(i * kSliceChars, kSliceChars).toUtf8().constData());
}
}  // namespace

QString CSoapTransaction::m_defaultUserAgent = QStringLiteral("Kvint_0000-UA");

CSoapTransaction::CSoapTransaction(const QString& serviceName, QObject* parent)
    : QObject(parent)
{
    m_accessMgr = CTavoSoapAccessMgr::getAccessManager();
    if (m_accessMgr)
        m_service = m_accessMgr->getService(serviceName);
    if (!m_accessMgr || !m_service) {
        guiLog(4, "CSoapTransaction: no service '%s'", qPrintable(serviceName));
        return;
    }
    m_networkRequest = new QNetworkRequest(m_service->url());
    m_networkRequest->setSslConfiguration(QSslConfiguration::defaultConfiguration());
    m_networkRequest->setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("text/xml; charset=utf-8"));
    m_networkRequest->setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Automatic);
    m_networkRequest->setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    m_networkRequest->setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    m_networkRequest->setAttribute(QNetworkRequest::HttpPipeliningAllowedAttribute, true);
}

CSoapTransaction::~CSoapTransaction()
{
    delete m_networkRequest;
    if (m_abortTimer) {
        m_abortTimer->stop();
        m_abortTimer->deleteLater();
    }
    if (m_reply) {
        m_reply->disconnect();
        m_reply->deleteLater();
    }
}

bool CSoapTransaction::prepareReqDom(const QString& operation)
{
    if (!m_service)
        return false;
    if (operation.isEmpty()) {
        m_requestDom.clear();
        return m_requestDom.setContent(m_service->templateXml());
    }
    const QString& xml = m_service->getOperationTemplateXml(operation);
    if (xml.isEmpty())
        return false;
    // The caller may have filled it already.
    if (operation == m_operation)
        return false;
    m_requestDom.clear();
    m_operation = operation;
    return m_requestDom.setContent(xml);
}

QDomElement CSoapTransaction::findFirstElement(const QString& tag)
{
    return m_requestDom.elementsByTagName(tag).item(0).toElement();
}

void CSoapTransaction::setUrl(const QString& url)
{
    if (m_networkRequest)
        m_networkRequest->setUrl(QUrl(url));
}

void CSoapTransaction::createAbortTimer(int milliseconds)
{
    if (!m_abortTimer) {
        m_abortTimer = new QTimer(this);
        m_abortTimer->setSingleShot(true);
    }
    m_abortTimer->setInterval(milliseconds);
}

void CSoapTransaction::abortRequest()
{
    if (m_abortTimer)
        m_abortTimer->stop();
    if (m_reply)
        m_reply->abort();
    m_reply.clear();
}

void CSoapTransaction::onTimeout()
{
    guiLog(2, " CSoapTransaction::onTimeout ");
    if (m_reply)
        m_reply->abort();
    m_reply.clear();
}

void CSoapTransaction::setCustomHeader(QString& name, QString& value)
{
    if (m_networkRequest)
        m_networkRequest->setRawHeader(name.toUtf8(), value.toUtf8());
}

void CSoapTransaction::setHeader(QNetworkRequest::KnownHeaders header, QString& value)
{
    if (m_networkRequest)
        m_networkRequest->setHeader(header, value);
}

QString CSoapTransaction::getHeaderValue(QString name)
{
    if (!m_reply)
        return QString();
    return QString::fromUtf8(m_reply->rawHeader(name.toUtf8()));
}

bool CSoapTransaction::proxyError(QNetworkReply* reply)
{
    if (!reply)
        return false;
    // A timed-out or aborted reply never moves on to another proxy.
    if (reply->error() == QNetworkReply::OperationCanceledError)
        return false;
    return reply->errorString().toLower().contains(QLatin1String("proxy"))
           || reply->error() == QNetworkReply::UnknownNetworkError;
}

bool CSoapTransaction::sendRequest()
{
    m_request.clear();
    {
        QTextStream stream(&m_request);
        m_requestDom.save(stream, 4);
    }
    if (!m_requestArgument.isEmpty())
        m_request = m_request.arg(m_requestArgument);
    m_status = StatusInProgress;
    if (!m_networkRequest)
        return false;

    guiLogRaw(0, "SOAP REQUEST:");
    logSliced(0, m_request);

    m_accessMgr = CTavoSoapAccessMgr::getAccessManager();
    if (!m_service || !m_accessMgr) {
        guiLog(4, "CSoapTransaction::sendRequest the service is gone");
        m_status = StatusFailed;
        return false;
    }
    guiLog(0, "'%s' Service configured SSL protocol is '%d'", qPrintable(m_service->name()),
           int(m_networkRequest->sslConfiguration().protocol()));

    if (m_service->operation() == QNetworkAccessManager::PostOperation) {
        if (!m_rawBody.isEmpty())
            m_request = m_rawBody;
        m_reply = m_accessMgr->post(*m_networkRequest, m_request.toUtf8());
    } else {
        m_reply = m_accessMgr->get(*m_networkRequest);
    }
    if (!m_reply)
        return false;
    connect(m_reply.data(), &QNetworkReply::errorOccurred, this, &CSoapTransaction::onError);
    connect(m_reply.data(), &QNetworkReply::finished, this, &CSoapTransaction::onFinished);
    if (m_abortTimer) {
        connect(m_abortTimer, &QTimer::timeout, this, &CSoapTransaction::onTimeout, Qt::UniqueConnection);
        m_abortTimer->start();
    }
    return true;
}

void CSoapTransaction::onError(QNetworkReply::NetworkError code)
{
    auto* from = qobject_cast<QNetworkReply*>(sender());
    if (from != m_reply)
        guiLog(4, "CSoapTransaction::onError() called for old reply");
    guiLog(3, "CSoapTransaction error = %s (%d)", from ? qPrintable(from->errorString()) : "", int(code));
}

void CSoapTransaction::onFinished()
{
    auto* from = qobject_cast<QNetworkReply*>(sender());
    if (from != m_reply) {
        guiLog(4, "CSoapTransaction::onFinished() called for old reply");
        // An earlier reply that ends late leaves the newer request alone,
        // timer and all; a call that is not a reply's goes on with m_reply.
        if (from) {
            QTimer::singleShot(1000, from, SLOT(deleteLater()));
            return;
        }
    }
    if (m_abortTimer)
        m_abortTimer->stop();
    QNetworkReply* reply = m_reply;
    if (!reply)
        return;
    const QVariant target = reply->attribute(QNetworkRequest::RedirectionTargetAttribute);
    const QUrl redirect = target.toUrl();
    if (target.isValid() && !redirect.isEmpty()) {
        const QUrl resolved = reply->url().resolved(redirect);
        guiLog(2, "CSoapTransaction redirect url is = %s", qPrintable(resolved.toString()));
        if (!m_followRedirects) {
            m_redirects = 0;
            emit redirectUrlResponse(resolved);
        } else if (++m_redirects > kMaxRedirects) {
            // A server that keeps sending us on would never end the exchange.
            guiLog(4, "CSoapTransaction gave up after %d redirects", kMaxRedirects);
            m_redirects = 0;
            m_status = StatusFailed;
            emit networkError(QNetworkReply::TooManyRedirectsError);
        } else {
            m_networkRequest->setUrl(resolved);
            sendRequest();
        }
    } else {
        m_redirects = 0;
        if (reply->error() != QNetworkReply::NoError)
            finishError(reply);
        else
            finishSuccess(reply);
    }
    // The late deletion lets getHeaderValue work during the signal and after it.
    QTimer::singleShot(1000, reply, SLOT(deleteLater()));
}

void CSoapTransaction::finishError(QNetworkReply* reply)
{
    QPointer<CSoapTransaction> alive(this);
    m_status = StatusFailed;
    const qint64 size = reply->size();
    const bool large = size > kLargeReplyBytes;
    if (large)
        guiLog(0, "Received large error reply that is %lld bytes in size, so not logging the reply at debug level",
               static_cast<long long>(size));
    m_response = reply->isOpen() ? QString::fromUtf8(reply->readAll()) : QString();
    const QNetworkReply::NetworkError error = reply->error();
    const QString errorText = reply->errorString();
    guiLog(3, "'%s' Service CSoapTransaction network error = %s (%d)",
           m_service ? qPrintable(m_service->name()) : "", qPrintable(errorText), int(error));

    bool retried = false;
    if (proxyError(reply) && m_accessMgr && m_networkRequest
        && m_accessMgr->onChangeProxy(m_networkRequest->url().toString(), error, errorText)) {
        // The next proxy takes the same request; this attempt reports nothing.
        retried = true;
        sendRequest();
    }
    if (!retried)
        emit networkError(error);
    if (!alive || large)
        return;
    const QList<QNetworkReply::RawHeaderPair> headers = reply->rawHeaderPairs();
    for (const QNetworkReply::RawHeaderPair& header : headers)
        guiLog(3, "Error response header: \"%s: %s\"", header.first.constData(), header.second.constData());
    guiLogRaw(3, "SOAP ERROR RESPONSE:");
    logSliced(3, m_response);
}

void CSoapTransaction::finishSuccess(QNetworkReply* reply)
{
    if (m_service && m_service->usesAuthentication())
        m_service->setAuthState(CSoapService::AuthSucceeded);
    const qint64 size = reply->size();
    const bool large = size > kLargeReplyBytes;
    if (large)
        guiLog(0, "Received large reply that is %lld bytes in size, so not logging the reply at debug level",
               static_cast<long long>(size));
    m_response = QString::fromUtf8(reply->readAll());
    m_parseErrorText.clear();
    m_parseErrorLine = 0;
    m_parseErrorColumn = 0;
    if (!large) {
        guiLogRaw(0, "SOAP RESPONSE:");
        logSliced(0, m_response);
    }
    m_lastResponseTime = QDateTime::currentDateTime().toString(Qt::TextDate);
    m_status = StatusDone;
    m_responseDom.clear();
    if (m_plainResponse) {
        emit readyPlainResponse(m_response);
        return;
    }
    if (!m_response.isEmpty()
        && m_responseDom.setContent(m_response, &m_parseErrorText, &m_parseErrorLine, &m_parseErrorColumn)) {
        emit ready(&m_responseDom);
        return;
    }
    m_status = StatusFailed;
    guiLog(4, "CSoapTransaction error parsing SOAP response message, error is \"%s\", line %d, col %d",
           qPrintable(m_parseErrorText), m_parseErrorLine, m_parseErrorColumn);
    emit networkError(QNetworkReply::UnknownContentError);
}
