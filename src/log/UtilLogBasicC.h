#pragma once
#include "tgui_export.h"
// Abstract log: level filtering and formatting entry points; a concrete log
// decides where records go.
#include <cstdarg>
#include <ctime>

#include "log/UtilLogMsg.h"

typedef void (*UtilLogOutputFnT)(const char* format, va_list args);

// Lets at most one message through per `intervalMs` during the first
// `windowSec` seconds of a window; dropped messages are counted and the count
// is reported with the next message that passes.
struct UtilLogRateLimiterT
{
    unsigned intervalMs;
    unsigned windowSec;
    struct timespec lastSent;
    time_t windowStart;
    unsigned dropped;
};

TGUI_EXPORT void utilLogRateLimiterInit(UtilLogRateLimiterT* limiter, unsigned intervalMs,
                            unsigned windowSec);
// True if the message may pass; then *dropped takes (and clears) the drop count.
TGUI_EXPORT bool utilLogRateLimiterPass(UtilLogRateLimiterT* limiter, unsigned* dropped);

class TGUI_EXPORT UtilLogBasicC
{
public:
    // `internalError` prints the log's own errors; null prints to standard output.
    UtilLogBasicC(UtilLogLevelT level, UtilLogOutputFnT internalError);
    virtual ~UtilLogBasicC();
    UtilLogBasicC(const UtilLogBasicC&) = delete;
    UtilLogBasicC& operator=(const UtilLogBasicC&) = delete;

    void log(UtilLogLevelT level, const char* format, ...) __attribute__((format(printf, 3, 4)));
    void vlog(UtilLogLevelT level, const char* format, va_list args,
              UtilLogRateLimiterT* rateLimiter = nullptr);
    UtilLogLevelT getActiveLevel();
    void setLevel(UtilLogLevelT level);

protected:
    virtual void vlog_internal(UtilLogLevelT level, const char* format, va_list args,
                               UtilLogRateLimiterT* rateLimiter) = 0;
    virtual UtilLogLevelT getActiveLevel_internal() = 0;
    virtual void setLevel_internal(UtilLogLevelT level) = 0;

    void internalError(const char* format, ...) __attribute__((format(printf, 2, 3)));

    UtilLogLevelT m_initialLevel;
    UtilLogOutputFnT m_internalError;
};
