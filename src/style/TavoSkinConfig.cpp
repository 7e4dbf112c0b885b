#include "style/TavoSkinConfig.h"

#include "log/GuiLog.h"
#include "style/TavoProfile.h"

QString tavoGetSkinConfigFile()
{
    const QString profile = tavoGetActiveProfile(true);
    guiLog(0, "Active profile: %s", profile.toUtf8().constData());
    return QString::asprintf("Skins/%s.conf", profile.toUtf8().constData());
}

QString tavoGetDefaultSkinFile(const QString& applicationName)
{
    const bool mainApplication = applicationName == QLatin1String("zedagui");
    const QByteArray name = applicationName.toUtf8();
    return QString::asprintf("Skins/default/default%s%s.xml", mainApplication ? "" : "-",
                             mainApplication ? "" : name.constData());
}
