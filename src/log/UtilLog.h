#pragma once
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
int utilLogCreate(const char* label, int instance, UtilLogLevelT level, bool initialEntry);
// Ends the process's client (the next utilLogCreate makes a new one).
void utilLogDestroy();
// The process's client, or null.
extern UtilLogC* utilLogClient;
inline UtilLogC* utilLogGet()
{
    return utilLogClient;
}

void utilLog(UtilLogLevelT level, const char* format, ...) __attribute__((format(printf, 2, 3)));
void utilVlog(UtilLogLevelT level, const char* format, va_list args);
void utilLogRawData(UtilLogLevelT level, const char* data, int length);
// 0, or -1 without a client or for a level outside 0..7.
int utilLogLevelSet(UtilLogLevelT level);
// The active level, 7 without a client.
UtilLogLevelT utilLogActiveLevelGet();
// Sets the level from its decimal text; 0 or -1.
int utilLogLevelSetFromParam(const char* param);
// Parameter callbacks: set takes the level as text, get writes it as text.
int utilLogLevelSetCallback(const char* value);
int utilLogLevelGetCallback(char* buffer, int size);
// Prints straight to standard output with a newline.
void utilLogInternalError(const char* format, ...) __attribute__((format(printf, 1, 2)));
void utilLogInternalErrorV(const char* format, va_list args);

// Creates the shared configuration segment if missing and attaches to it
// writable. 0 or -1.
int utilLogSharedConfigInit();
// Adds or updates the entry of label and instance; its index or -1.
int utilLogSharedConfigEntryAdd(const char* label, int instance, UtilLogLevelT level,
                                bool statsEnabled);
// 0 or -1; adds the entry if missing.
int utilLogSharedConfigActiveLevelSet(const char* label, int instance, UtilLogLevelT level);
// The level of the entry, or -1.
int utilLogSharedConfigActiveLevelGet(const char* label, int instance);
// The attached segment (after utilLogSharedConfigInit), or null.
UtilLogSharedConfigT* utilLogSharedConfigGet();
// Detaches and removes the segment. 0 or -1.
int utilLogSharedConfigRemove();
uint32_t utilLogSharedLabelWord(const char* label);

// Milliseconds of the monotonic clock, wrapping at 32 bits.
uint32_t utilLinuxLogTickStampGet();
const char* utilLogQueueName();
key_t utilLogSharedKey();
// Opens the log queue described by `info` (created with its capacity if
// missing). Where the system refuses that capacity, falls back to the system's
// largest and says so.
rtosProtMsgQ utilLogQueueOpen(rtosProtMsgQInfo* info, int mode);
