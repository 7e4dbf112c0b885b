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

namespace {
// Switched by the core link's thread, read by every thread that logs.
bool serverLogOn()
{
    return __atomic_load_n(&CTavoGuiLog::m_bEnabled, __ATOMIC_RELAXED);
}
}  // namespace

void guiLog(UtilLogLevelT level, const char* format, ...)
{
    if (!format)
        return;
    CTavoGuiLog* log = hostGuiLog;
    if (log && serverLogOn() && log->dropsLevel(level))
        return;
    va_list args;
    va_start(args, format);
    if (hostGuiLog && serverLogOn()) {
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
    if (hostGuiLog && serverLogOn())
        hostGuiLog->logRaw(level, data);
    else
        qCDebug(lcTgui, "%.16383s", data);
}
