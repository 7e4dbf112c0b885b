#pragma once
#include "tgui_export.h"
// The supervisor of the phone's GUI processes: reads the start list of this
// process from its INI file (group named after the application), creates one
// CTavoApplication per entry, starts the ordinary ones and, on a later request,
// the blocked ones, and stops them in order.
//
// INI keys of the process's group: "AutoStart" (entries separated by spaces,
// "name" or "name(option)"), "AlwaysRestart", "AutoStartOn" (a platform other
// than "linux" empties the list); "AutoStartParameters" in a child's own group.
#include <QList>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>

class QSettings;
class CTavoApplication;

class TGUI_EXPORT CTavoAppMgr : public QObject
{
    Q_OBJECT
public:
    // Reads configFile at once.
    CTavoAppMgr(QObject* parent, const QString& configFile);
    ~CTavoAppMgr() override;

    // Reads the start list anew. Entries that are unchanged keep their
    // application (and its running child); others are created or ended.
    void parseConfigFile();
    // Starts the applications whose name ends with name.
    void startApplication(const QString& name);
    // Terminates the applications whose name ends with name. An empty name
    // means the phone is going down: every application but the browser is
    // shut down for good.
    void terminateApplication(const QString& name);

    const QStringList& appNames() const { return m_appNames; }
    const QList<CTavoApplication*>& applications() const { return m_applications; }
    // The application of that exact name, or null.
    CTavoApplication* application(const QString& name) const;
    bool blockedStarted() const { return m_blockedStarted; }
    const QString& configFile() const { return m_configFile; }

    // The device's persistent file system ("/ffs0"), where "auxport.enable"
    // lets the entry "em" start. Tests point it elsewhere.
    static QString persistentRoot();
    static void setPersistentRoot(const QString& path);

public slots:
    void onUnlocked(uint index);
    // true: starts every application that is neither blocked nor disabled;
    // false: the blocked ones. Waits up to 30 s for each to have started.
    void onStartRequested(bool noneBlockedApps = false);
    // Kills console applications, terminates the others, 2 s for each.
    void shutDownAllApps();

protected slots:
    // Hooks for derived supervisors; sender() is the application.
    virtual void onApplicationError(QProcess::ProcessError error);
    virtual void onApplicationFinished(int exitCode, QProcess::ExitStatus exitStatus);
    virtual void onApplicationStarted();
    virtual void onApplicationStateChanged(QProcess::ProcessState state);

private:
    QStringList m_appNames;
    QList<CTavoApplication*> m_applications;
    bool m_blockedStarted = false;
    QString m_configFile;
    QSettings* m_settings;
};
