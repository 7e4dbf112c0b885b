#pragma once
#include "tgui_export.h"
// The log client: sends fixed-size records to the log server's queue, filters
// by a level that the shared configuration segment can change at run time,
// counts what it could not deliver, and sends statistics when asked to.
#include <mutex>

#include "log/RtosProtMsgQ.h"
#include "log/UtilLogBasicC.h"

struct UtilLogStatsT;

class TGUI_EXPORT UtilLogC : public UtilLogBasicC
{
public:
    UtilLogC(const char* label, int instance, UtilLogLevelT level, bool initialEntry,
             UtilLogOutputFnT internalError = nullptr);
    ~UtilLogC() override;

    // Opens the sending end of the queue, creating the queue if the server has
    // not yet done so. 0 on success.
    int connect();

    // Sends `length` characters of `text` (-1: up to the NUL) behind `indent`
    // spaces, in pieces of 512 minus `indent` characters.
    void logFormatLine(UtilLogLevelT level, const char* text, int length, int indent);
    // Sends raw text one line at a time.
    void logRawData(UtilLogLevelT level, const char* data, int length);
    // Sends bytes as " %02x" each.
    void logHexData(UtilLogLevelT level, const void* data, int length);
    // Sends a file line by line.
    void logFile(UtilLogLevelT level, const char* path);

    // Takes level and statistics switch from the shared configuration when its
    // generation moved.
    void updateParamsFromSharedMemory();
    // Sends the statistics record of the period that is running now.
    void addLogStatistics();

    // True when a message of `level` would certainly be dropped: the check
    // guiLog makes before it formats anything. False whenever the full path
    // has work to do (a new shared generation, statistics, no segment yet).
    bool wouldDrop(UtilLogLevelT level)
    {
        if (!connected || statsOn() || level == UTIL_LOG_LEVEL_ALWAYS)
            return false;
        volatile unsigned int* base = shared();
        if (!base || __atomic_load_n(&base[1], __ATOMIC_ACQUIRE) != generationSeen())
            return false;
        return level > UTIL_LOG_LEVEL_MAX_FILTERED
               || level < __atomic_load_n(&this->level, __ATOMIC_RELAXED);
    }

    bool isConnected() const { return connected; }
    unsigned getMissedMessages() const { return __atomic_load_n(&missedMessages, __ATOMIC_RELAXED); }
    const char* getLabel() const { return label; }
    int getInstance() const { return instance; }
    bool isStatsEnabled() const { return statsOn(); }
    void setStatsEnabled(bool enabled) { __atomic_store_n(&statsEnabled, enabled, __ATOMIC_RELAXED); }

protected:
    void vlog_internal(UtilLogLevelT level, const char* format, va_list args,
                       UtilLogRateLimiterT* rateLimiter) override;
    UtilLogLevelT getActiveLevel_internal() override;
    void setLevel_internal(UtilLogLevelT level) override;

private:
    // Shared configuration refresh, statistics and the level filter: whether a
    // message of `level` goes out.
    bool admit(UtilLogLevelT level)
    {
        if (volatile unsigned int* base = shared()) {
            if (__atomic_load_n(&base[1], __ATOMIC_ACQUIRE) != generationSeen())
                updateParamsFromSharedMemory();
        } else {
            attachIfDue();
        }
        if (statsOn())
            updateLogStatistics(level);
        if (level == UTIL_LOG_LEVEL_ALWAYS)
            return true;
        return level <= UTIL_LOG_LEVEL_MAX_FILTERED
               && level >= __atomic_load_n(&this->level, __ATOMIC_RELAXED);
    }
    // Every thread logs through one client: the segment, the generation seen
    // and the statistics switch are set under m_mutex and read without it.
    volatile unsigned int* shared() const { return __atomic_load_n(&sharedBase, __ATOMIC_ACQUIRE); }
    unsigned int generationSeen() const { return __atomic_load_n(&sharedGeneration, __ATOMIC_RELAXED); }
    bool statsOn() const { return __atomic_load_n(&statsEnabled, __ATOMIC_RELAXED); }
    void attachIfDue();
    bool attachShared();
    void addLogMessage(UtilLogLevelT level, const char* format, va_list args, unsigned dropped);
    void sendText(UtilLogLevelT level, const char* text, int length);
    void formatLine(UtilLogLevelT level, const char* text, int length, int indent);
    int sendRecord(const void* record, int size);
    void updateLogStatistics(UtilLogLevelT level);
    void printLine(UtilLogLevelT level, const char* text, int length);
    int utilLogGetConfigLevel() const { return -1; }

    int level;
    char label[UTIL_LOG_LABEL_MAX + 1];
    int instance;
    unsigned int missedMessages;
    bool connected;
    rtosProtMsgQ queue;
    rtosProtMsgQInfo queueInfo;
    int sharedFd;
    volatile unsigned int* sharedBase;
    unsigned int sharedGeneration;
    bool statsEnabled;
    UtilLogStatsT* stats;

    long m_nextAttachSec;
    std::mutex m_mutex;
};
