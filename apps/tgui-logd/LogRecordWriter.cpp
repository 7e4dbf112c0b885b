#include "LogRecordWriter.h"

#include <cstddef>
#include <cstring>
#include <ctime>

#include "log/UtilLogMsg.h"

namespace {
void timeText(time_t seconds, char* out, size_t size)
{
    struct tm tm;
    if (!localtime_r(&seconds, &tm) || strftime(out, size, "%Y-%m-%d %H:%M:%S", &tm) == 0)
        snprintf(out, size, "%lld", (long long)seconds);
}

// Labels and texts come from other processes: bound and sanitise them.
void copyText(char* out, const char* in, size_t max)
{
    size_t n = strnlen(in, max);
    for (size_t i = 0; i < n; ++i) {
        const unsigned char c = (unsigned char)in[i];
        out[i] = (c < 0x20 && c != '\t') || c == 0x7f ? '?' : (char)c;
    }
    out[n] = '\0';
}

void writeText(FILE* out, const utilLogMsg& msg)
{
    char when[32], label[8], text[sizeof msg.text + 1];
    timeText((time_t)msg.time, when, sizeof when);
    copyText(label, msg.label, UTIL_LOG_LABEL_MAX);
    copyText(text, msg.text, UTIL_LOG_TEXT_MAX);
    fprintf(out, "%s %-5s <%d> %s", when, label, (int)msg.level, text);
    if (msg.missed)
        fprintf(out, " [missed %u]", msg.missed);
    fputc('\n', out);
}

void writeStats(FILE* out, const utilLogStatsMsg& msg)
{
    char when[32], label[8];
    timeText(time(nullptr), when, sizeof when);
    copyText(label, msg.label, UTIL_LOG_LABEL_MAX);
    fprintf(out, "%s %-5s <stats> %u ms", when, label, msg.elapsedMs);
    for (int lv = 0; lv < UTIL_LOG_LEVELS; ++lv) {
        const uint32_t* c = msg.counters[lv];
        fprintf(out, " L%d=%u,%u/s,%u/%u/%u", lv, c[UTIL_LOG_STAT_COUNT], c[UTIL_LOG_STAT_RATE],
                c[UTIL_LOG_STAT_DECAY1], c[UTIL_LOG_STAT_DECAY2], c[UTIL_LOG_STAT_DECAY3]);
    }
    if (msg.missed)
        fprintf(out, " [missed %u]", msg.missed);
    fputc('\n', out);
}

}  // namespace

bool writeLogRecord(FILE* out, const char* data, int size)
{
    uint32_t type = 0;
    if (size >= 4)
        memcpy(&type, data, 4);
    if (type == UTIL_LOG_MSG_TEXT && size >= (int)offsetof(utilLogMsg, text)) {
        utilLogMsg msg;
        memset(&msg, 0, sizeof msg);
        memcpy(&msg, data, size < (int)sizeof msg ? size : sizeof msg);
        writeText(out, msg);
        return true;
    }
    if (type == UTIL_LOG_MSG_STATS && size >= (int)sizeof(utilLogStatsMsg)) {
        utilLogStatsMsg msg;
        memcpy(&msg, data, sizeof msg);
        writeStats(out, msg);
        return true;
    }
    fprintf(out, "tgui-logd: ignored record of type %u and %d bytes\n", type, size);
    return false;
}
