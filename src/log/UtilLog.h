#pragma once
#include "tgui_export.h"
// utilLog...: the flat interface to the process's one log client, the shared
// configuration segment, and the helpers the log server and tools share.
//
// The queue name ("smqlogq") and the segment key (0x832D88F9) can be
// overridden, for test runs side by side, by the environment variables
// TGUI_LOG_QUEUE and TGUI_LOG_SHM_KEY, read once per process.
#include <cstdarg>
#include <cstdint>
#include <sys/types.h>

#include "log/RtosProtMsgQ.h"
#include "log/UtilLogMsg.h"

class UtilLogC;

// Creates the process's client. 0, or -1 for an empty label or a level of 7 or more.
TGUI_EXPORT int utilLogCreate(const char* label, int instance, UtilLogLevelT level, bool initialEntry);
// Ends the process's client (the next utilLogCreate makes a new one).
TGUI_EXPORT void utilLogDestroy();
// The process's client, or null.
extern TGUI_EXPORT UtilLogC* utilLogClient;
inline UtilLogC* utilLogGet()
{
    return utilLogClient;
}

TGUI_EXPORT void utilLog(UtilLogLevelT level, const char* format, ...) __attribute__((format(printf, 2, 3)));
TGUI_EXPORT void utilVlog(UtilLogLevelT level, const char* format, va_list args);
TGUI_EXPORT void utilLogRawData(UtilLogLevelT level, const char* data, int length);
// 0, or -1 without a client or for a level outside 0..7.
TGUI_EXPORT int utilLogLevelSet(UtilLogLevelT level);
// The active level, 7 without a client.
TGUI_EXPORT UtilLogLevelT utilLogActiveLevelGet();
// Sets the level from its decimal text; 0 or -1.
TGUI_EXPORT int utilLogLevelSetFromParam(const char* param);
// Parameter callbacks: set takes the level as text, get writes it as text.
TGUI_EXPORT int utilLogLevelSetCallback(const char* value);
TGUI_EXPORT int utilLogLevelGetCallback(char* buffer, int size);
// Prints straight to standard output with a newline.
TGUI_EXPORT void utilLogInternalError(const char* format, ...) __attribute__((format(printf, 1, 2)));
TGUI_EXPORT void utilLogInternalErrorV(const char* format, va_list args);

// Creates the shared configuration segment if missing and attaches to it
// writable. 0 or -1.
TGUI_EXPORT int utilLogSharedConfigInit();
// Adds or updates the entry of label and instance; its index or -1.
TGUI_EXPORT int utilLogSharedConfigEntryAdd(const char* label, int instance, UtilLogLevelT level,
                                bool statsEnabled);
// 0 or -1; adds the entry if missing.
TGUI_EXPORT int utilLogSharedConfigActiveLevelSet(const char* label, int instance, UtilLogLevelT level);
// The level of the entry, or -1.
TGUI_EXPORT int utilLogSharedConfigActiveLevelGet(const char* label, int instance);
// The attached segment (after utilLogSharedConfigInit), or null.
TGUI_EXPORT UtilLogSharedConfigT* utilLogSharedConfigGet();
// Detaches and removes the segment. 0 or -1.
TGUI_EXPORT int utilLogSharedConfigRemove();
TGUI_EXPORT uint32_t utilLogSharedLabelWord(const char* label);

// Milliseconds of the monotonic clock, wrapping at 32 bits.
TGUI_EXPORT uint32_t utilLinuxLogTickStampGet();
TGUI_EXPORT const char* utilLogQueueName();
TGUI_EXPORT key_t utilLogSharedKey();
// Opens the log queue described by `info` (created with its capacity if
// missing). Where the system refuses that capacity, falls back to the system's
// largest and says so.
TGUI_EXPORT rtosProtMsgQ utilLogQueueOpen(rtosProtMsgQInfo* info, int mode);
