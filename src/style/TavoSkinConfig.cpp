#include "style/TavoSkinConfig.h"

#include "log/GuiLog.h"
#include "style/TavoProfile.h"

QString tavoGetSkinConfigFile()
{
    // Without a profile file there is no skin configuration to name.
    const QString profileFile = tavoGetDefaultConfigFile();
    QString path;
    if (!profileFile.isEmpty())
        path = QString::asprintf("Skins/%s.conf", tavoReadActiveProfile(profileFile, true).toUtf8().constData());
    guiLog(0, "Active profile: %s", path.toUtf8().constData());
    return path;
}

QString tavoGetDefaultSkinFile(const QString& applicationName)
{
    const bool mainApplication = applicationName == QLatin1String("zedagui");
    const QByteArray name = applicationName.toUtf8();
    return QString::asprintf("Skins/default/default%s%s.xml", mainApplication ? "" : "-",
                             mainApplication ? "" : name.constData());
}
