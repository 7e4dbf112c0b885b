#pragma once
// The "Directory" status line: a strip under the home tiles that shows what a
// SOAP call to the directory service answered (how many entries, through which
// proxy) or why it failed, with a red band when the sign-in was refused. The
// service's proxies come from a proxy script; the access manager fails over to
// the next proxy when one stops answering.
#include <QPointer>
#include <QString>

#include "layout/CTavoLayoutWidget.h"

class CSoapTransaction;
class CTavoLabelWidget;
class CTavoWidget;

class CZedaDirectoryScreen : public CTavoLayoutWidget
{
    Q_OBJECT
public:
    explicit CZedaDirectoryScreen(QWidget* parent);

    void applySkin(const QString& style, const QString& attributes);
    // The service's URL, the proxy script and the account; without a URL the
    // line says the directory is not configured.
    void configure(const QString& url, const QString& pacFile, const QString& user, const QString& password);
    // Asks the directory for its entries; a user or password given replaces
    // the stored one first. finished() follows when the call has ended.
    void request(const QString& user, const QString& password, const QString& step);
    // Put away when another screen than home is shown; the next call shows it again.
    void followScreen(bool homeShown);
    QString statusText() const;
    bool signInFailed() const;

signals:
    void finished(const QString& step, const QString& summary);

private:
    bool ensureService();
    void showLine(const QString& line, bool failed);
    void end(const QString& summary);

    CTavoWidget* m_failedBand;
    CTavoLabelWidget* m_title;
    CTavoLabelWidget* m_status;
    QPointer<CSoapTransaction> m_call;
    QString m_step;
    QString m_proxy;
    QString m_user;
    QString m_url;
    QString m_pacFile;
    QString m_password;
    bool m_configured = false;
};
