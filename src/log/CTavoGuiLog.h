#pragma once
#include "tgui_export.h"
// The process's log client as seen by guiLog: a known process name gets the
// one queue client of the process, at level 4.
#include <cstdarg>

#include "log/GuiLog.h"
#include "log/UtilLog.h"
#include "log/UtilLogC.h"

class TGUI_EXPORT CTavoGuiLog
{
public:
    // `name` is looked up among "tgui", "brow", "osd", "pdc", "ec", "dbs",
    // "qml", "em"; any other name leaves the process without a client.
    CTavoGuiLog(const char* name, int instance, bool initialEntry);
    ~CTavoGuiLog();
    CTavoGuiLog(const CTavoGuiLog&) = delete;
    CTavoGuiLog& operator=(const CTavoGuiLog&) = delete;

    void log(UtilLogLevelT level, const char* format, va_list args);
    void logRaw(UtilLogLevelT level, const char* data);
    // 7 when there is no client.
    static UtilLogLevelT getActiveLevel();
    // True when the client would drop a message of `level` unformatted.
    bool dropsLevel(UtilLogLevelT level) const
    {
        UtilLogC* client = m_hasClient ? utilLogGet() : nullptr;
        return client && client->wouldDrop(level);
    }
    // True when the name found a client.
    bool hasClient() const { return m_hasClient; }

    // True while the process is linked to the core; until then guiLog uses qDebug.
    static bool m_bEnabled;

private:
    bool m_hasClient;
};
