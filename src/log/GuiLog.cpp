#include "log/GuiLog.h"

#include <QDebug>
#include <cstdio>

#include "log/CTavoGuiLog.h"

CTavoGuiLog* hostGuiLog = nullptr;

void guiLog(UtilLogLevelT level, const char* format, ...)
{
    if (!format)
        return;
    CTavoGuiLog* log = hostGuiLog;
    if (log && CTavoGuiLog::m_bEnabled && log->dropsLevel(level))
        return;
    va_list args;
    va_start(args, format);
    if (hostGuiLog && CTavoGuiLog::m_bEnabled) {
        hostGuiLog->log(level, format, args);
    } else {
        char buffer[16383 + 1];
        vsnprintf(buffer, sizeof buffer, format, args);
        qDebug("%s", buffer);
    }
    va_end(args);
}

void guiLogRaw(UtilLogLevelT level, const char* data)
{
    if (!data)
        return;
    if (hostGuiLog && CTavoGuiLog::m_bEnabled)
        hostGuiLog->logRaw(level, data);
    else
        qDebug("%.16383s", data);
}
