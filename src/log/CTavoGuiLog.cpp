#include "log/CTavoGuiLog.h"

#include <QDebug>
#include <cstdio>
#include <cstring>

#include "log/UtilLog.h"
#include "log/UtilLogC.h"

bool CTavoGuiLog::m_bEnabled = false;

namespace {
struct GuiLogLabelT
{
    const char* label;
    int instance;
};
const GuiLogLabelT guiLogLabels[] = {
    {"tgui", 0}, {"brow", 0}, {"osd", 0}, {"pdc", 0}, {"ec", 0}, {"dbs", 0}, {"qml", 0}, {"em", 0},
};

void toConsole(const char* format, va_list args)
{
    char buffer[16383 + 1];
    vsnprintf(buffer, sizeof buffer, format, args);
    qDebug("%s", buffer);
}
}  // namespace

CTavoGuiLog::CTavoGuiLog(const char* name, int, bool initialEntry) : m_hasClient(false)
{
    if (!name)
        return;
    for (const GuiLogLabelT& entry : guiLogLabels) {
        if (strcmp(entry.label, name) == 0) {
            m_hasClient = utilLogCreate(entry.label, entry.instance, 4, initialEntry) == 0;
            return;
        }
    }
}

// The client is the process's and lives until the process ends.
CTavoGuiLog::~CTavoGuiLog() = default;

void CTavoGuiLog::log(UtilLogLevelT level, const char* format, va_list args)
{
    if (!format)
        return;
    UtilLogC* client = m_hasClient ? utilLogGet() : nullptr;
    if (client)
        client->vlog(level, format, args);
    else
        toConsole(format, args);
}

void CTavoGuiLog::logRaw(UtilLogLevelT level, const char* data)
{
    if (!data)
        return;
    UtilLogC* client = m_hasClient ? utilLogGet() : nullptr;
    if (client)
        client->logRawData(level, data, -1);
    else
        qDebug("%.16383s", data);
}

UtilLogLevelT CTavoGuiLog::getActiveLevel()
{
    UtilLogC* client = utilLogGet();
    return client ? client->getActiveLevel() : UTIL_LOG_LEVEL_NEVER;
}
