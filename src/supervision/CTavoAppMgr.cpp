#include "supervision/CTavoAppMgr.h"

#include <QCoreApplication>
#include <QFile>
#include <QSettings>

#include "core/TavoGlobals.h"
#include "log/GuiLog.h"
#include "supervision/CTavoApplication.h"

namespace {
QString s_persistentRoot = QStringLiteral("/ffs0");

// A value with a comma comes back from QSettings as a list: join it again.
QString textValue(QSettings* settings, const QString& key)
{
    const QVariant value = settings->value(key);
    if (value.type() == QVariant::StringList)
        return value.toStringList().join(QLatin1Char(','));
    return value.toString();
}
}  // namespace

CTavoAppMgr::CTavoAppMgr(QObject* parent, const QString& configFile)
    : QObject(parent), m_configFile(configFile), m_settings(new QSettings(configFile, QSettings::IniFormat, this))
{
    parseConfigFile();
}

CTavoAppMgr::~CTavoAppMgr()
{
    qDeleteAll(m_applications);
}

QString CTavoAppMgr::persistentRoot()
{
    return s_persistentRoot;
}

void CTavoAppMgr::setPersistentRoot(const QString& path)
{
    s_persistentRoot = path;
}

void CTavoAppMgr::parseConfigFile()
{
    m_settings->sync();
    const QString group = QCoreApplication::applicationName() + QLatin1Char('/');
    QString autoStart = textValue(m_settings, group + QLatin1String("AutoStart"));
    const bool alwaysRestart = m_settings->value(group + QLatin1String("AlwaysRestart"), false).toBool();
    const QString autoStartOn = textValue(m_settings, group + QLatin1String("AutoStartOn"));
    // The list serves on this platform only.
    if (!autoStartOn.isEmpty() && autoStartOn.toLower() != QLatin1String("linux"))
        autoStart.clear();
    m_appNames = autoStart.split(QLatin1Char(' '), Qt::SkipEmptyParts);

    QList<CTavoApplication*> previous = m_applications;
    m_applications.clear();
    const bool auxPort = QFile::exists(s_persistentRoot + QLatin1String("/auxport.enable"));
    for (int i = 0; i < m_appNames.size(); ++i) {
        const QString& entry = m_appNames.at(i);
        if (entry.section(QLatin1Char('('), 0, 0) == QLatin1String("em") && !auxPort)
            continue;
        CTavoApplication* app = nullptr;
        for (int k = 0; k < previous.size(); ++k) {
            CTavoApplication* old = previous.at(k);
            if (old->objectName() == entry && old->index() == unsigned(i) && old->alwaysRestart() == alwaysRestart) {
                app = previous.takeAt(k);
                break;
            }
        }
        if (!app) {
            app = new CTavoApplication(unsigned(i), entry, m_settings, this, alwaysRestart);
            app->setObjectName(entry);
            app->setLogFiles(entry);
            connect(app, &CTavoApplication::unlocked, this, &CTavoAppMgr::onUnlocked);
            connect(app, &QProcess::errorOccurred, this, &CTavoAppMgr::onApplicationError);
            connect(app, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
                    &CTavoAppMgr::onApplicationFinished);
            connect(app, &QProcess::started, this, &CTavoAppMgr::onApplicationStarted);
            connect(app, &QProcess::stateChanged, this, &CTavoAppMgr::onApplicationStateChanged);
        }
        m_applications.append(app);
    }
    qDeleteAll(previous);
}

CTavoApplication* CTavoAppMgr::application(const QString& name) const
{
    for (CTavoApplication* app : m_applications) {
        if (app->name() == name)
            return app;
    }
    return nullptr;
}

void CTavoAppMgr::onUnlocked(uint)
{
}

void CTavoAppMgr::onStartRequested(bool noneBlockedApps)
{
    // A hook may change the list while a child starts.
    const QList<CTavoApplication*> apps = m_applications;
    for (CTavoApplication* app : apps) {
        if (app->isDisabled())
            continue;
        if (!noneBlockedApps && app->isBlocked())
            m_blockedStarted = true;
        if (noneBlockedApps != app->isBlocked())
            app->start();
        app->waitForStarted(30000);
    }
}

void CTavoAppMgr::shutDownAllApps()
{
    const QList<CTavoApplication*> apps = m_applications;
    for (CTavoApplication* app : apps) {
        if (app->isConsole())
            app->kill();
        else
            app->terminate();
        app->waitForFinished(2000);
    }
}

void CTavoAppMgr::startApplication(const QString& name)
{
    if (name.isEmpty()) {
        guiLog(3, "CTavoAppMgr::startApplication: no application name given");
        return;
    }
    const QList<CTavoApplication*> apps = m_applications;
    for (CTavoApplication* app : apps) {
        if (app->name().endsWith(name))
            app->start();
    }
}

void CTavoAppMgr::terminateApplication(const QString& name)
{
    const QList<CTavoApplication*> apps = m_applications;
    if (!name.isEmpty()) {
        for (CTavoApplication* app : apps) {
            if (app->name().endsWith(name)) {
                app->terminate();
                app->waitForFinished(30000);
            }
        }
        return;
    }
    __atomic_store_n(&bRebootInitiated, true, __ATOMIC_RELAXED);  // read by the core link's thread
    for (CTavoApplication* app : apps) {
        if (app->name().endsWith(QLatin1String("browser")))
            continue;
        app->shutDown();
        app->waitForFinished(30000);
    }
}

void CTavoAppMgr::onApplicationError(QProcess::ProcessError)
{
}

void CTavoAppMgr::onApplicationFinished(int, QProcess::ExitStatus)
{
}

void CTavoAppMgr::onApplicationStarted()
{
}

void CTavoAppMgr::onApplicationStateChanged(QProcess::ProcessState)
{
}
