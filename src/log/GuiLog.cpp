#include "log/GuiLog.h"

#include <QDebug>
#include <QLoggingCategory>
#include <cstdio>

#include "log/CTavoGuiLog.h"

namespace {
// The console fallback is qDebug in the category "tgui", so that a host can
// silence it or route it, e.g. QT_LOGGING_RULES="tgui.debug=false".
Q_LOGGING_CATEGORY(lcTgui, "tgui")
}  // namespace

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
        qCDebug(lcTgui, "%s", buffer);
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
        qCDebug(lcTgui, "%.16383s", data);
}
