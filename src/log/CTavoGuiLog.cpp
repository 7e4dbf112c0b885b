#include "log/CTavoGuiLog.h"

#include <QDebug>

bool CTavoGuiLog::m_bEnabled = false;

CTavoGuiLog::CTavoGuiLog(const char*, int, bool) {}
CTavoGuiLog::~CTavoGuiLog() = default;

// The queue client replaces this with records to the log server.
void CTavoGuiLog::log(UtilLogLevelT, const char* format, va_list args)
{
    char buffer[16384];
    vsnprintf(buffer, sizeof buffer, format, args);
    qDebug("%s", buffer);
}

void CTavoGuiLog::logRaw(UtilLogLevelT, const char* data)
{
    qDebug("%s", data);
}

UtilLogLevelT CTavoGuiLog::getActiveLevel()
{
    return 7;
}
