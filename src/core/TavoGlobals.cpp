#include "core/TavoGlobals.h"

bool bRebootInitiated = false;
