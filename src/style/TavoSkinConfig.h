#pragma once
#include "tgui_export.h"
// Where the skin of an application is configured.
#include <QString>

// "Skins/<active profile>.conf", suffix kept, or empty without a profile file;
// logs the path as the active profile.
TGUI_EXPORT QString tavoGetSkinConfigFile();
// "Skins/default/default.xml" for "zedagui", "Skins/default/default-<app>.xml" otherwise.
TGUI_EXPORT QString tavoGetDefaultSkinFile(const QString& applicationName);
