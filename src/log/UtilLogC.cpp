#include "log/UtilLogC.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/ipc.h>
#include <sys/shm.h>

#include "log/UtilLog.h"

struct UtilLogStatsT
{
    struct timespec periodStart;
    uint32_t count[UTIL_LOG_LEVELS];
    double decay[UTIL_LOG_LEVELS][3];
};

static long long msSince(const struct timespec& start, const struct timespec& now)
{
    return (long long)(now.tv_sec - start.tv_sec) * 1000 + (now.tv_nsec - start.tv_nsec) / 1000000;
}

UtilLogC::UtilLogC(const char* label, int instance, UtilLogLevelT level, bool initialEntry,
                   UtilLogOutputFnT internalError)
    : UtilLogBasicC(level, internalError),
      level(level),
      label{},
      instance(instance),
      missedMessages(0),
      connected(false),
      queue(nullptr),
      sharedFd(-1),
      sharedBase(nullptr),
      sharedGeneration(0),
      statsEnabled(false),
      stats(nullptr),
      m_nextAttachSec(0)
{
    if (!label)
        label = "";
    const size_t length = strlen(label);
    memcpy(this->label, label, length < UTIL_LOG_LABEL_MAX ? length : UTIL_LOG_LABEL_MAX);
    const int configured = utilLogGetConfigLevel();
    if (configured >= 0)
        this->level = configured;
    rtosProtMsgQInfoZero(&queueInfo);
    queueInfo.mqd = (mqd_t)-1;
    if (connect() != 0)
        log(4, "Connection to log server failed");
    if (initialEntry)
        log(UTIL_LOG_LEVEL_ALWAYS, "Initial log entry. Current logging level %d", this->level);
    if (length > UTIL_LOG_LABEL_MAX)
        log(5, "Truncating label from %s", label);
}

UtilLogC::~UtilLogC()
{
    if (queue)
        rtosProtMsgQClose(queue);
    if (sharedBase)
        shmdt(const_cast<unsigned int*>(sharedBase));
    free(stats);
}

int UtilLogC::connect()
{
    if (connected) {
        internalError("Log |%s| Already connected", label);
        return 0;
    }
    rtosProtMsgQInfoZero(&queueInfo);
    queueInfo.mqd = (mqd_t)-1;
    rtosProtMsgQInfoSetName(&queueInfo, utilLogQueueName());
    if (rtosProtMsgQCreate(&queueInfo, UTIL_LOG_QUEUE_CAPACITY, (int)sizeof(utilLogMsg),
                           UTIL_LOG_QUEUE_OPTIONS)
        != 0) {
        printf("rtosProtMsgQCreate failed\n");
        fflush(stdout);
        return -1;
    }
    if (queue) {
        rtosProtMsgQClose(queue);
        queue = nullptr;
    }
    queue = utilLogQueueOpen(&queueInfo, RTOS_PROT_MSGQ_MODE_TX);
    if (!queue) {
        printf("rtosProtMsgQOpen TX failed \n");
        fflush(stdout);
        return -1;
    }
    connected = true;
    return 0;
}

void UtilLogC::attachIfDue()
{
    // A process may start before the segment exists: look again once a second
    // rather than with a system call per message.
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    if (now.tv_sec < __atomic_load_n(&m_nextAttachSec, __ATOMIC_RELAXED))
        return;
    __atomic_store_n(&m_nextAttachSec, (long)now.tv_sec + 1, __ATOMIC_RELAXED);
    updateParamsFromSharedMemory();
}

// The first process makes the segment, as it makes the queue, so that a tool
// started later reaches every process at its next message.
static void createSharedIfMissing()
{
    const int id = shmget(utilLogSharedKey(), UTIL_LOG_SHARED_SIZE, IPC_CREAT | IPC_EXCL | 0666);
    if (id < 0)
        return;
    void* base = shmat(id, nullptr, 0);
    if (base == (void*)-1)
        return;
    auto* config = static_cast<UtilLogSharedConfigT*>(base);
    config->generation = 1;
    __atomic_store_n(&config->magic, UTIL_LOG_SHARED_MAGIC, __ATOMIC_RELEASE);
    shmdt(base);
}

bool UtilLogC::attachShared()
{
    createSharedIfMissing();
    const int id = shmget(utilLogSharedKey(), UTIL_LOG_SHARED_SIZE, 0);
    if (id < 0)
        return false;
    void* base = shmat(id, nullptr, SHM_RDONLY);
    if (base == (void*)-1)
        return false;
    auto* words = static_cast<volatile unsigned int*>(base);
    if (words[0] != UTIL_LOG_SHARED_MAGIC) {
        shmdt(base);
        return false;
    }
    sharedFd = id;
    __atomic_store_n(&sharedBase, words, __ATOMIC_RELEASE);
    return true;
}

void UtilLogC::updateParamsFromSharedMemory()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!sharedBase && !attachShared())
        return;
    if (sharedBase[0] != UTIL_LOG_SHARED_MAGIC)
        return;
    const unsigned generation = __atomic_load_n(&sharedBase[1], __ATOMIC_ACQUIRE);
    if (generation == sharedGeneration)
        return;
    const auto* config =
        reinterpret_cast<const volatile UtilLogSharedConfigT*>(const_cast<unsigned*>(sharedBase));
    const uint32_t labelWord = utilLogSharedLabelWord(label);
    for (int i = 0; i < UTIL_LOG_SHARED_ENTRIES; ++i) {
        const volatile UtilLogSharedEntryT& entry = config->entries[i];
        if (entry.label == labelWord && entry.instance == (uint32_t)instance) {
            const uint32_t newLevel = entry.level;
            if (newLevel <= UTIL_LOG_LEVEL_NEVER)
                __atomic_store_n(&level, (int)newLevel, __ATOMIC_RELAXED);
            __atomic_store_n(&statsEnabled, entry.statsEnabled != 0, __ATOMIC_RELAXED);
            break;
        }
    }
    __atomic_store_n(&sharedGeneration, generation, __ATOMIC_RELAXED);
}

void UtilLogC::printLine(UtilLogLevelT, const char* text, int length)
{
    printf("%.*s\n", length, text);
    fflush(stdout);
}

void UtilLogC::vlog_internal(UtilLogLevelT level, const char* format, va_list args,
                             UtilLogRateLimiterT* rateLimiter)
{
    if (!format)
        return;
    if (!connected) {
        if (level < 3)
            return;
        unsigned dropped = 0;
        if (rateLimiter && !utilLogRateLimiterPass(rateLimiter, &dropped))
            return;
        char line[UTIL_LOG_TEXT_MAX + 64];
        int n = vsnprintf(line, UTIL_LOG_TEXT_MAX + 1, format, args);
        n = n < 0 ? 0 : (n > UTIL_LOG_TEXT_MAX ? UTIL_LOG_TEXT_MAX : n);
        if (dropped)
            n += snprintf(line + n, sizeof line - n, " MissedMessages:%u", dropped);
        printLine(level, line, n);
        return;
    }
    if (!admit(level))
        return;
    unsigned dropped = 0;
    if (rateLimiter && !utilLogRateLimiterPass(rateLimiter, &dropped))
        return;
    addLogMessage(level, format, args, dropped);
}

UtilLogLevelT UtilLogC::getActiveLevel_internal()
{
    return __atomic_load_n(&level, __ATOMIC_RELAXED);
}

void UtilLogC::setLevel_internal(UtilLogLevelT newLevel)
{
    if (newLevel < 0 || newLevel > UTIL_LOG_LEVEL_NEVER) {
        internalError("Log |%s|%d| Invalid level %d", label, instance, newLevel);
        return;
    }
    __atomic_store_n(&level, newLevel, __ATOMIC_RELAXED);
}

static void fillHeader(utilLogMsg* msg, UtilLogLevelT level, const char* label, unsigned missed)
{
    memset(msg, 0, sizeof *msg);
    msg->type = UTIL_LOG_MSG_TEXT;
    msg->size = sizeof(utilLogMsg);
    msg->missed = missed;
    msg->tick = utilLinuxLogTickStampGet();
    msg->time = (uint32_t)time(nullptr);
    msg->level = level;
    memcpy(msg->label, label, UTIL_LOG_LABEL_MAX + 1);
}

void UtilLogC::addLogMessage(UtilLogLevelT level, const char* format, va_list args,
                             unsigned dropped)
{
    utilLogMsg msg;
    fillHeader(&msg, level, label, getMissedMessages());
    int n = vsnprintf(msg.text, UTIL_LOG_TEXT_MAX + 1, format, args);
    n = n < 0 ? 0 : (n > UTIL_LOG_TEXT_MAX ? UTIL_LOG_TEXT_MAX : n);
    msg.text[n] = '\0';
    if (dropped) {
        const int extra =
            snprintf(msg.text + n, UTIL_LOG_TEXT_MAX + 1 - n, " MessagesMissed:%u", dropped);
        n = extra < 0 ? n : (n + extra > UTIL_LOG_TEXT_MAX ? UTIL_LOG_TEXT_MAX : n + extra);
    }
    msg.size = 36 + n;
    sendRecord(&msg, sizeof msg);
}

void UtilLogC::sendText(UtilLogLevelT level, const char* text, int length)
{
    if (!connected) {
        printLine(level, text, length);
        return;
    }
    utilLogMsg msg;
    fillHeader(&msg, level, label, getMissedMessages());
    if (length > UTIL_LOG_TEXT_MAX)
        length = UTIL_LOG_TEXT_MAX;
    memcpy(msg.text, text, length);
    msg.text[length] = '\0';
    msg.size = 36 + length;
    sendRecord(&msg, sizeof msg);
}

int UtilLogC::sendRecord(const void* record, int size)
{
    if (!connected || !queue) {
        internalError("Log |%s|%d| Not connected.", label, instance);
        return -1;
    }
    if (rtosProtMsgQSend(queue, record, size, 0, 1) != 0) {
        __atomic_add_fetch(&missedMessages, 1, __ATOMIC_RELAXED);
        return -1;
    }
    __atomic_store_n(&missedMessages, 0, __ATOMIC_RELAXED);
    return 0;
}

void UtilLogC::formatLine(UtilLogLevelT level, const char* text, int length, int indent)
{
    if (indent < 0)
        indent = 0;
    if (indent > UTIL_LOG_TEXT_MAX - 1)
        indent = UTIL_LOG_TEXT_MAX - 1;
    const int piece = UTIL_LOG_TEXT_MAX - indent;
    char line[UTIL_LOG_TEXT_MAX + 1];
    memset(line, ' ', indent);
    int offset = 0;
    do {
        const int n = length - offset < piece ? length - offset : piece;
        memcpy(line + indent, text + offset, n);
        sendText(level, line, indent + n);
        offset += n;
    } while (offset < length);
}

// Without the server every message from level 3 up goes to the console.
static bool levelPrintable(UtilLogLevelT level)
{
    return level >= 3;
}

void UtilLogC::logFormatLine(UtilLogLevelT level, const char* text, int length, int indent)
{
    if (!text)
        return;
    if (length < 0)
        length = (int)strlen(text);
    if (connected ? !admit(level) : !levelPrintable(level))
        return;
    formatLine(level, text, length, indent);
}

void UtilLogC::logRawData(UtilLogLevelT level, const char* data, int length)
{
    if (!data)
        return;
    if (length < 0)
        length = (int)strlen(data);
    if (connected ? !admit(level) : !levelPrintable(level))
        return;
    int start = 0;
    for (int i = 0; i <= length; ++i) {
        const bool end = i == length;
        if (!end && data[i] != '\r' && data[i] != '\n')
            continue;
        if (!end || i > start)
            formatLine(level, data + start, i - start, 0);
        if (!end && data[i] == '\r' && i + 1 < length && data[i + 1] == '\n')
            ++i;
        start = i + 1;
    }
}

void UtilLogC::logHexData(UtilLogLevelT level, const void* data, int length)
{
    if (!data || length <= 0)
        return;
    if (connected ? !admit(level) : !levelPrintable(level))
        return;
    // 170 bytes make 510 characters: each record holds whole bytes.
    const auto* bytes = static_cast<const unsigned char*>(data);
    char line[UTIL_LOG_TEXT_MAX + 1];
    int used = 0;
    for (int i = 0; i < length; ++i) {
        used += snprintf(line + used, sizeof line - used, " %02x", bytes[i]);
        if (used + 3 > UTIL_LOG_TEXT_MAX || i == length - 1) {
            formatLine(level, line, used, 0);
            used = 0;
        }
    }
}

void UtilLogC::logFile(UtilLogLevelT level, const char* path)
{
    FILE* file = path ? fopen(path, "r") : nullptr;
    if (!file) {
        log(4, "logFile: failed to open %s", path ? path : "(null)");
        return;
    }
    if (connected ? admit(level) : levelPrintable(level)) {
        char* line = nullptr;
        size_t capacity = 0;
        ssize_t n;
        while ((n = getline(&line, &capacity, file)) >= 0) {
            while (n > 0 && (line[n - 1] == '\n' || line[n - 1] == '\r'))
                --n;
            formatLine(level, line, (int)n, 0);
        }
        free(line);
    }
    fclose(file);
}

void UtilLogC::updateLogStatistics(UtilLogLevelT level)
{
    if (level < 0 || level >= UTIL_LOG_LEVELS)
        return;
    bool due = false;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        struct timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        if (!stats) {
            stats = static_cast<UtilLogStatsT*>(calloc(1, sizeof(UtilLogStatsT)));
            if (!stats)
                return;
            stats->periodStart = now;
        }
        for (int lv = 0; lv <= level; ++lv) {
            ++stats->count[lv];
            for (double& decay : stats->decay[lv])
                decay += 1.0;
        }
        due = msSince(stats->periodStart, now) >= 1000;
    }
    if (due)
        addLogStatistics();
}

void UtilLogC::addLogStatistics()
{
    utilLogStatsMsg msg;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (!stats)
            return;
        struct timespec now;
        clock_gettime(CLOCK_MONOTONIC, &now);
        long long elapsed = msSince(stats->periodStart, now);
        if (elapsed <= 0)
            elapsed = 1;
        memset(&msg, 0, sizeof msg);
        msg.type = UTIL_LOG_MSG_STATS;
        msg.size = sizeof msg;
        msg.missed = getMissedMessages();
        msg.tick = utilLinuxLogTickStampGet();
        msg.elapsedMs = (uint32_t)elapsed;
        memcpy(msg.label, label, UTIL_LOG_LABEL_MAX + 1);
        static const double factors[3] = {0.1, 0.2, 0.4};
        for (int lv = 0; lv < UTIL_LOG_LEVELS; ++lv) {
            uint32_t* out = msg.counters[lv];
            out[UTIL_LOG_STAT_COUNT] = stats->count[lv];
            out[UTIL_LOG_STAT_RATE] = (uint32_t)((stats->count[lv] * 1000ull) / elapsed);
            for (int k = 0; k < 3; ++k) {
                double& decay = stats->decay[lv][k];
                decay -= (double)elapsed * factors[k];
                if (decay < 0)
                    decay = 0;
                out[UTIL_LOG_STAT_DECAY1 + k] = (uint32_t)(decay + 0.5);
            }
            stats->count[lv] = 0;
        }
        stats->periodStart = now;
    }
    sendRecord(&msg, sizeof msg);
}
