#pragma once
#include "tgui_export.h"
// Which profile the phone runs and where its configuration lies.
#include <QString>

// First of "/tmp/qt.conf", "/usr/local/root/qt.conf", "qt.conf" that exists, or empty.
TGUI_EXPORT QString tavoGetDefaultConfigFile();
// "Active" of group "Profile" in that file; without keepSuffix the first of
// "_sfb", "_opensip", "_bsft" found is removed.
TGUI_EXPORT QString tavoGetActiveProfile(bool keepSuffix);
