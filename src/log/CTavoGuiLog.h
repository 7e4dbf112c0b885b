#pragma once
// The process's log client as seen by guiLog.
#include <cstdarg>

#include "log/GuiLog.h"

class CTavoGuiLog
{
public:
    CTavoGuiLog(const char* name, int instance, bool initialEntry);
    ~CTavoGuiLog();

    void log(UtilLogLevelT level, const char* format, va_list args);
    void logRaw(UtilLogLevelT level, const char* data);
    static UtilLogLevelT getActiveLevel();

    // True while the process is linked to the core; until then guiLog uses qDebug.
    static bool m_bEnabled;
};
