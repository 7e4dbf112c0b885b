#include "style/TavoProfile.h"
#include "style/TavoSkinConfig.h"

#include <QFile>
#include <QSettings>
#include <QStringList>

#include "log/GuiLog.h"

QString tavoGetDefaultConfigFile()
{
    static const char kList[] = "/tmp/qt.conf:/usr/local/root/qt.conf:qt.conf";
    const QStringList candidates = QString::fromLatin1(kList).split(QLatin1Char(':'));
    for (const QString& path : candidates) {
        if (QFile::exists(path)) {
            guiLog(0, "Using config: %s from %s", qPrintable(path), kList);
            return path;
        }
    }
    guiLog(5, "qt.conf has not been found, list: %s", kList);
    return QString();
}

QString tavoGetActiveProfile(bool keepSuffix)
{
    return tavoReadActiveProfile(tavoGetDefaultConfigFile(), keepSuffix);
}

QString tavoReadActiveProfile(const QString& file, bool keepSuffix)
{
    if (file.isEmpty())
        return QString();
    QSettings ini(file, QSettings::IniFormat);
    QString profile = ini.value(QStringLiteral("Profile/Active")).toString();
    if (!keepSuffix) {
        for (const char* suffix : {"_sfb", "_opensip", "_bsft"}) {
            const int at = profile.indexOf(QLatin1String(suffix));
            if (at >= 0) {
                profile.remove(at, int(qstrlen(suffix)));
                break;
            }
        }
    }
    return profile;
}
