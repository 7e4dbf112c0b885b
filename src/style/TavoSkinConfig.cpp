#include "style/TavoSkinConfig.h"
QString tavoGetSkinConfigFile() { return QString(); }
QString tavoGetDefaultSkinFile(const QString&) { return QString(); }
