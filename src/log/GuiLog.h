#pragma once
#include "tgui_export.h"
// guiLog: the one log call of the toolkit. printf formats; levels 0 (most
// detailed) to 5 (most severe), 8 always passes. Without an enabled log client
// the text goes to qDebug in the logging category "tgui" (QT_LOGGING_RULES).
#include <cstdarg>

typedef int UtilLogLevelT;

class CTavoGuiLog;
extern TGUI_EXPORT CTavoGuiLog* hostGuiLog;

TGUI_EXPORT void guiLog(UtilLogLevelT level, const char* format, ...) __attribute__((format(printf, 2, 3)));
TGUI_EXPORT void guiLogRaw(UtilLogLevelT level, const char* data);
