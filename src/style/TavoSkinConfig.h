#pragma once
#include "tgui_export.h"
// Where the skin of an application is configured. The library's own: the
// manager reads these for its constructor; hosts see the results through
// CTavoLayoutMgr::configFile() and skinFile().
#include <QString>

// "Skins/<active profile>.conf", suffix kept, or empty without a profile file;
// logs the path as the active profile.
TGUI_AUTOTEST_EXPORT QString tavoGetSkinConfigFile();
// "Skins/default/default.xml" for "zedagui", "Skins/default/default-<app>.xml" otherwise.
TGUI_AUTOTEST_EXPORT QString tavoGetDefaultSkinFile(const QString& applicationName);
// tavoGetActiveProfile of a given profile file; an empty path gives an empty profile.
QString tavoReadActiveProfile(const QString& file, bool keepSuffix);
