#pragma once
// zedagui as the supervisor of a child process (the "AutoStart" list of its
// group in the skin configuration): the children start with the GUI, are
// restarted by their rules, and every change of their state is reported.
#include <QSet>
#include <QString>

#include "supervision/CTavoAppMgr.h"

class CZedaSupervisor : public CTavoAppMgr
{
    Q_OBJECT
public:
    CZedaSupervisor(QObject* parent, const QString& configFile);
    // Every child is shut down for good: no restart while the GUI goes.
    ~CZedaSupervisor() override;

    // Ends the child as a crash would (SIGKILL); false if it does not run.
    bool kill(const QString& name);

signals:
    // state: "running", "stopped" or "failed"; run counts from 1; detail says
    // how a run ended ("signal 9", "exit code 3").
    void childStateChanged(const QString& name, const QString& state, int run, const QString& detail);

protected slots:
    void onApplicationStateChanged(QProcess::ProcessState state) override;
    void onApplicationError(QProcess::ProcessError error) override;

private:
    QSet<QObject*> m_running;
};
