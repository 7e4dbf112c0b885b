#include "CZedaSupervisor.h"

#include "core/TavoGlobals.h"
#include "log/GuiLog.h"
#include "supervision/CTavoApplication.h"

CZedaSupervisor::CZedaSupervisor(QObject* parent, const QString& configFile)
    : CTavoAppMgr(parent, configFile)
{
}

CZedaSupervisor::~CZedaSupervisor()
{
    for (CTavoApplication* app : applications()) {
        app->shutDown();
        app->waitForFinished(2000);
    }
}

bool CZedaSupervisor::kill(const QString& name)
{
    CTavoApplication* app = application(name);
    if (!app || app->state() != QProcess::Running) {
        guiLog(3, "zedagui: no running child %s to kill", qPrintable(name));
        return false;
    }
    guiLog(2, "zedagui: killing child %s", qPrintable(name));
    app->kill();
    return true;
}

void CZedaSupervisor::onApplicationStateChanged(QProcess::ProcessState state)
{
    auto* app = qobject_cast<CTavoApplication*>(sender());
    if (!app || state == QProcess::Starting)
        return;
    const int run = app->restartCount() + 1;
    if (state == QProcess::Running) {
        m_running.insert(app);
        emit childStateChanged(app->name(), QStringLiteral("running"), run, QString());
        return;
    }
    // A start that failed is reported as an error.
    if (!m_running.remove(app))
        return;
    const bool crashed = app->exitStatus() == QProcess::CrashExit;
    QString detail = crashed ? QStringLiteral("signal %1").arg(app->exitCode())
                             : QStringLiteral("exit code %1").arg(app->exitCode());
    // The rules of CTavoApplication, a crash counting as exit code 0.
    if (!bRebootInitiated && (app->alwaysRestart() || (!crashed && app->exitCode() != 0 && !app->isConsole())))
        detail += QStringLiteral(", restart in %1 s").arg(CTavoApplication::restartDelay() / 1000.0);
    emit childStateChanged(app->name(), QStringLiteral("stopped"), run, detail);
}

void CZedaSupervisor::onApplicationError(QProcess::ProcessError error)
{
    auto* app = qobject_cast<CTavoApplication*>(sender());
    if (app && error == QProcess::FailedToStart)
        emit childStateChanged(app->name(), QStringLiteral("failed"), app->restartCount() + 1, app->errorString());
}
