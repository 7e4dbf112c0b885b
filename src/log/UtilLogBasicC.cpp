#include "log/UtilLogBasicC.h"

#include <cstdio>

#include "log/UtilLog.h"

void utilLogRateLimiterInit(UtilLogRateLimiterT* limiter, unsigned intervalMs,
                            unsigned windowSec)
{
    if (!limiter)
        return;
    limiter->intervalMs = intervalMs;
    limiter->windowSec = windowSec;
    limiter->lastSent.tv_sec = 0;
    limiter->lastSent.tv_nsec = 0;
    limiter->windowStart = 0;
    limiter->dropped = 0;
}

bool utilLogRateLimiterPass(UtilLogRateLimiterT* limiter, unsigned* dropped)
{
    if (dropped)
        *dropped = 0;
    if (!limiter)
        return true;
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    const bool started = limiter->lastSent.tv_sec != 0 || limiter->lastSent.tv_nsec != 0;
    const long long sinceLastMs = (long long)(now.tv_sec - limiter->lastSent.tv_sec) * 1000
                                  + (now.tv_nsec - limiter->lastSent.tv_nsec) / 1000000;
    if (started && sinceLastMs <= (long long)limiter->intervalMs
        && now.tv_sec - limiter->windowStart <= (time_t)limiter->windowSec) {
        ++limiter->dropped;
        return false;
    }
    limiter->lastSent = now;
    if (!started || now.tv_sec - limiter->windowStart > (time_t)limiter->windowSec)
        limiter->windowStart = now.tv_sec;
    if (dropped)
        *dropped = limiter->dropped;
    limiter->dropped = 0;
    return true;
}

static void printInternalError(const char* format, va_list args)
{
    utilLogInternalErrorV(format, args);
}

UtilLogBasicC::UtilLogBasicC(UtilLogLevelT level, UtilLogOutputFnT internalError)
    : m_initialLevel(level), m_internalError(internalError ? internalError : printInternalError)
{
}

UtilLogBasicC::~UtilLogBasicC() = default;

void UtilLogBasicC::log(UtilLogLevelT level, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    vlog_internal(level, format, args, nullptr);
    va_end(args);
}

void UtilLogBasicC::vlog(UtilLogLevelT level, const char* format, va_list args,
                         UtilLogRateLimiterT* rateLimiter)
{
    vlog_internal(level, format, args, rateLimiter);
}

UtilLogLevelT UtilLogBasicC::getActiveLevel()
{
    return getActiveLevel_internal();
}

void UtilLogBasicC::setLevel(UtilLogLevelT level)
{
    setLevel_internal(level);
}

void UtilLogBasicC::internalError(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    m_internalError(format, args);
    va_end(args);
}
