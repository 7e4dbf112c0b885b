#include "CZedaDirectoryScreen.h"

#include <QDomDocument>
#include <QTimer>
#include <cstdio>

#include "log/GuiLog.h"
#include "web/CSoapService.h"
#include "web/CSoapTransaction.h"
#include "web/CTavoSoapAccessMgr.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoWidget.h"

namespace {
const char kService[] = "Directory";
const int kCallTimeoutMs = 15000;

QString text(const char* english)
{
    return CZedaDirectoryScreen::tr(english, english);
}
}  // namespace

CZedaDirectoryScreen::CZedaDirectoryScreen(QWidget* parent)
    : CTavoLayoutWidget(parent)
{
    setObjectName(QStringLiteral("directory"));
    m_failedBand = new CTavoWidget(this, 2);
    m_failedBand->setObjectName(QStringLiteral("directory-failed"));
    m_failedBand->setVisible(false);
    m_title = new CTavoLabelWidget(this);
    m_title->setObjectName(QStringLiteral("directory-title"));
    m_status = new CTavoLabelWidget(this);
    m_status->setObjectName(QStringLiteral("directory-status"));
}

void CZedaDirectoryScreen::applySkin(const QString& style, const QString& attributes)
{
    QString s = style;
    QString a = attributes;
    updateStyle(s, a, true);
    m_title->setText(text(QT_TRANSLATE_NOOP("CZedaDirectoryScreen", "Directory")));
}

void CZedaDirectoryScreen::configure(const QString& url, const QString& pacFile, const QString& user,
                                     const QString& password)
{
    // Taken up at the first call: evaluating the script waits until the
    // directory is wanted, not in the way of the first frame.
    m_url = url;
    m_pacFile = pacFile;
    m_user = user;
    m_password = password;
}

bool CZedaDirectoryScreen::ensureService()
{
    if (m_configured || m_url.isEmpty())
        return m_configured;
    CTavoSoapAccessMgr* mgr = CTavoSoapAccessMgr::getAccessManager();
    if (!m_pacFile.isEmpty())
        mgr->assignPac(m_pacFile.toUtf8().constData());
    if (!mgr->installService(QString::fromLatin1(kService), m_url, m_user, m_password)) {
        guiLog(4, "zedagui: the directory service cannot be installed");
        m_url.clear();
        return false;
    }
    connect(mgr, &CTavoSoapAccessMgr::reportProxyData, this, [this](const QString& proxy) {
        if (!proxy.isEmpty())
            m_proxy = proxy;
    });
    m_configured = true;
    return true;
}

void CZedaDirectoryScreen::request(const QString& user, const QString& password, const QString& step)
{
    m_step = step;
    if (!isVisible())
        Show(false);
    if (!ensureService()) {
        showLine(text(QT_TRANSLATE_NOOP("CZedaDirectoryScreen", "not configured")), true);
        QTimer::singleShot(0, this, [this] { end(QStringLiteral("unconfigured")); });
        return;
    }
    CTavoSoapAccessMgr* mgr = CTavoSoapAccessMgr::getAccessManager();
    if (!user.isEmpty() || !password.isEmpty()) {
        CSoapService* service = mgr->getService(QString::fromLatin1(kService));
        if (!user.isEmpty())
            m_user = user;
        const QString newPassword = password.isEmpty() && service ? service->password() : password;
        mgr->setServiceCredentials(QString::fromLatin1(kService), m_user, newPassword);
        // What Qt learnt for the old account must not answer for the new one.
        mgr->clearAccessCache();
    }
    if (m_call)
        m_call->deleteLater();
    auto* call = new CSoapTransaction(QString::fromLatin1(kService), this);
    m_call = call;
    call->createAbortTimer(kCallTimeoutMs);
    call->prepareReqDom(QStringLiteral("GetEntries"));
    connect(call, &CSoapTransaction::ready, this, [this](QDomDocument* reply) {
        const QString count = reply->elementsByTagName(QStringLiteral("count")).item(0).toElement().text();
        const QString first = reply->elementsByTagName(QStringLiteral("name")).item(0).toElement().text();
        const QString via = m_proxy.isEmpty() ? text(QT_TRANSLATE_NOOP("CZedaDirectoryScreen", "no proxy")) : m_proxy;
        showLine(tr("%1 entries, first %2 \u00b7 via %3 \u00b7 %4").arg(count, first, via, m_user), false);
        end(QStringLiteral("ok count=%1 proxy=%2").arg(count, m_proxy));
    });
    connect(call, &CSoapTransaction::networkError, this, [this](QNetworkReply::NetworkError error) {
        CSoapService* service = CTavoSoapAccessMgr::getAccessManager()->getService(QString::fromLatin1(kService));
        if (service && service->authState() == CSoapService::AuthFailed) {
            showLine(tr("sign-in failed for %1").arg(m_user), true);
            end(QStringLiteral("signin-failed user=%1").arg(m_user));
        } else {
            showLine(tr("unreachable (error %1)").arg(int(error)), true);
            end(QStringLiteral("error code=%1").arg(int(error)));
        }
    });
    if (!call->sendRequest()) {
        showLine(text(QT_TRANSLATE_NOOP("CZedaDirectoryScreen", "cannot send the request")), true);
        QTimer::singleShot(0, this, [this] { end(QStringLiteral("error code=-1")); });
    }
}

void CZedaDirectoryScreen::followScreen(bool homeShown)
{
    // The answer belongs to the moment it came: another screen puts it away,
    // and the next call brings the line back.
    if (!homeShown && isVisible())
        Hide(false);
}

QString CZedaDirectoryScreen::statusText() const
{
    return m_status->text();
}

bool CZedaDirectoryScreen::signInFailed() const
{
    return m_failedBand->isVisible();
}

void CZedaDirectoryScreen::showLine(const QString& line, bool failed)
{
    m_failedBand->setVisible(failed);
    m_status->setText(line);
    update();
}

void CZedaDirectoryScreen::end(const QString& summary)
{
    std::fprintf(stdout, "zedagui: directory %s: %s\n", summary.toUtf8().constData(),
                 m_status->text().toUtf8().constData());
    std::fflush(stdout);
    emit finished(m_step, summary);
}
