#include "log/UtilLog.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <unistd.h>

#include "log/Mq.h"
#include "log/UtilLogC.h"

UtilLogC* utilLogClient = nullptr;

namespace {
std::mutex g_sharedMutex;
UtilLogSharedConfigT* g_shared = nullptr;
int g_sharedId = -1;
}  // namespace

void utilLogInternalErrorV(const char* format, va_list args)
{
    if (!format)
        return;
    char line[1024];
    vsnprintf(line, sizeof line, format, args);
    printf("%s\n", line);
    fflush(stdout);
}

void utilLogInternalError(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    utilLogInternalErrorV(format, args);
    va_end(args);
}

int utilLogCreate(const char* label, int instance, UtilLogLevelT level, bool initialEntry)
{
    if (!label || !*label || level >= UTIL_LOG_LEVEL_NEVER || level < 0) {
        utilLogInternalError("UtilLogCreate: Invalid parameters.");
        return -1;
    }
    utilLogDestroy();
    utilLogClient = new UtilLogC(label, instance, level, initialEntry);
    return 0;
}

void utilLogDestroy()
{
    delete utilLogClient;
    utilLogClient = nullptr;
}

void utilVlog(UtilLogLevelT level, const char* format, va_list args)
{
    if (utilLogClient)
        utilLogClient->vlog(level, format, args);
}

void utilLog(UtilLogLevelT level, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    utilVlog(level, format, args);
    va_end(args);
}

void utilLogRawData(UtilLogLevelT level, const char* data, int length)
{
    if (utilLogClient)
        utilLogClient->logRawData(level, data, length);
}

int utilLogLevelSet(UtilLogLevelT level)
{
    if (!utilLogClient || level < 0 || level > UTIL_LOG_LEVEL_NEVER)
        return -1;
    utilLogClient->setLevel(level);
    return 0;
}

UtilLogLevelT utilLogActiveLevelGet()
{
    return utilLogClient ? utilLogClient->getActiveLevel() : UTIL_LOG_LEVEL_NEVER;
}

static bool parseLevel(const char* text, int* level)
{
    if (!text)
        return false;
    char* end = nullptr;
    errno = 0;
    const long value = strtol(text, &end, 10);
    if (end == text || errno != 0 || value < 0 || value > UTIL_LOG_LEVEL_NEVER)
        return false;
    while (*end == ' ' || *end == '\t' || *end == '\n' || *end == '\r')
        ++end;
    if (*end)
        return false;
    *level = (int)value;
    return true;
}

int utilLogLevelSetFromParam(const char* param)
{
    int level;
    if (!parseLevel(param, &level)) {
        utilLogInternalError("utilLogLevelSetFromParam: invalid level <%s>", param ? param : "");
        return -1;
    }
    return utilLogLevelSet(level);
}

int utilLogLevelSetCallback(const char* value)
{
    return utilLogLevelSetFromParam(value);
}

int utilLogLevelGetCallback(char* buffer, int size)
{
    if (!buffer || size <= 0)
        return -1;
    const int n = snprintf(buffer, size, "%d", utilLogActiveLevelGet());
    return n < size ? 0 : -1;
}

uint32_t utilLogSharedLabelWord(const char* label)
{
    uint32_t word = 0;
    if (!label)
        return 0;
    for (int i = 0; i < 4 && label[i]; ++i)
        word |= (uint32_t)(unsigned char)label[i] << (8 * i);
    return word;
}

int utilLogSharedConfigInit()
{
    std::lock_guard<std::mutex> lock(g_sharedMutex);
    if (g_shared)
        return 0;
    bool created = true;
    int id = shmget(utilLogSharedKey(), UTIL_LOG_SHARED_SIZE, IPC_CREAT | IPC_EXCL | 0666);
    if (id < 0 && errno == EEXIST) {
        created = false;
        id = shmget(utilLogSharedKey(), UTIL_LOG_SHARED_SIZE, 0);
    }
    if (id < 0) {
        utilLogInternalError("utilLogSharedConfigInit: shmget failed: %s", strerror(errno));
        return -1;
    }
    void* base = shmat(id, nullptr, 0);
    if (base == (void*)-1) {
        utilLogInternalError("utilLogSharedConfigInit: shmat failed: %s", strerror(errno));
        return -1;
    }
    auto* config = static_cast<UtilLogSharedConfigT*>(base);
    // Whoever made the segment writes the magic last; give a creator that is
    // still at it a moment before taking a segment without magic as garbage.
    for (int i = 0; !created && i < 20; ++i) {
        if (__atomic_load_n(&config->magic, __ATOMIC_ACQUIRE) == UTIL_LOG_SHARED_MAGIC)
            break;
        usleep(5000);
    }
    if (__atomic_load_n(&config->magic, __ATOMIC_ACQUIRE) != UTIL_LOG_SHARED_MAGIC) {
        memset(base, 0, UTIL_LOG_SHARED_SIZE);
        config->generation = 1;
        __atomic_store_n(&config->magic, UTIL_LOG_SHARED_MAGIC, __ATOMIC_RELEASE);
    }
    g_shared = config;
    g_sharedId = id;
    return 0;
}

UtilLogSharedConfigT* utilLogSharedConfigGet()
{
    return g_shared;
}

int utilLogSharedConfigRemove()
{
    std::lock_guard<std::mutex> lock(g_sharedMutex);
    int id = g_sharedId;
    if (g_shared)
        shmdt(g_shared);
    g_shared = nullptr;
    g_sharedId = -1;
    if (id < 0)
        id = shmget(utilLogSharedKey(), 0, 0);
    if (id < 0)
        return -1;
    return shmctl(id, IPC_RMID, nullptr) == 0 ? 0 : -1;
}

static UtilLogSharedEntryT* findEntry(const char* label, int instance, bool add)
{
    const uint32_t word = utilLogSharedLabelWord(label);
    UtilLogSharedEntryT* freeEntry = nullptr;
    for (UtilLogSharedEntryT& entry : g_shared->entries) {
        if (entry.label == word && entry.instance == (uint32_t)instance)
            return &entry;
        if (!freeEntry && entry.label == 0)
            freeEntry = &entry;
    }
    if (!add || !freeEntry)
        return nullptr;
    freeEntry->instance = (uint32_t)instance;
    freeEntry->level = 4;
    freeEntry->statsEnabled = 0;
    freeEntry->label = word;
    return freeEntry;
}

static bool validEntryArgs(const char* label, int instance, UtilLogLevelT level)
{
    return label && *label && instance >= 0 && level >= 0 && level <= UTIL_LOG_LEVEL_NEVER;
}

int utilLogSharedConfigEntryAdd(const char* label, int instance, UtilLogLevelT level,
                                bool statsEnabled)
{
    if (!validEntryArgs(label, instance, level) || utilLogSharedConfigInit() != 0)
        return -1;
    std::lock_guard<std::mutex> lock(g_sharedMutex);
    UtilLogSharedEntryT* entry = findEntry(label, instance, true);
    if (!entry) {
        utilLogInternalError("utilLogSharedConfigEntryAdd: no free entry for %s", label);
        return -1;
    }
    entry->level = (uint32_t)level;
    entry->statsEnabled = statsEnabled ? 1 : 0;
    __atomic_add_fetch(&g_shared->generation, 1, __ATOMIC_RELEASE);
    return (int)(entry - g_shared->entries);
}

int utilLogSharedConfigActiveLevelSet(const char* label, int instance, UtilLogLevelT level)
{
    if (!validEntryArgs(label, instance, level) || utilLogSharedConfigInit() != 0)
        return -1;
    std::lock_guard<std::mutex> lock(g_sharedMutex);
    UtilLogSharedEntryT* entry = findEntry(label, instance, true);
    if (!entry)
        return -1;
    entry->level = (uint32_t)level;
    __atomic_add_fetch(&g_shared->generation, 1, __ATOMIC_RELEASE);
    return 0;
}

int utilLogSharedConfigActiveLevelGet(const char* label, int instance)
{
    if (!label || !*label || utilLogSharedConfigInit() != 0)
        return -1;
    std::lock_guard<std::mutex> lock(g_sharedMutex);
    const UtilLogSharedEntryT* entry = findEntry(label, instance, false);
    return entry ? (int)entry->level : -1;
}

uint32_t utilLinuxLogTickStampGet()
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (uint32_t)((unsigned long long)now.tv_sec * 1000u + now.tv_nsec / 1000000);
}

const char* utilLogQueueName()
{
    static const char* const name = [] {
        const char* env = getenv("TGUI_LOG_QUEUE");
        return (env && *env) ? strdup(env) : UTIL_LOG_QUEUE_NAME;
    }();
    return name;
}

key_t utilLogSharedKey()
{
    static const key_t key = [] {
        const char* env = getenv("TGUI_LOG_SHM_KEY");
        if (env && *env) {
            char* end = nullptr;
            const unsigned long value = strtoul(env, &end, 0);
            if (end && !*end && value != 0 && value <= 0xFFFFFFFFul)
                return (key_t)(uint32_t)value;
            utilLogInternalError("TGUI_LOG_SHM_KEY <%s> is not a key; using 0x%X", env,
                                 UTIL_LOG_SHARED_KEY);
        }
        return (key_t)UTIL_LOG_SHARED_KEY;
    }();
    return key;
}

static int systemQueueLimit()
{
    FILE* file = fopen("/proc/sys/fs/mqueue/msg_max", "r");
    int limit = -1;
    if (file) {
        if (fscanf(file, "%d", &limit) != 1)
            limit = -1;
        fclose(file);
    }
    return limit;
}

rtosProtMsgQ utilLogQueueOpen(rtosProtMsgQInfo* info, int mode)
{
    if (!info)
        return nullptr;
    // An existing queue keeps its attributes: open it without the creation
    // attempt that the system might refuse.
    const mqd_t probe = mqOpen(info->name, O_RDONLY | O_NONBLOCK, 0, nullptr);
    if (probe != (mqd_t)-1) {
        mqClose(probe);
        return rtosProtMsgQOpenExisting(info, mode);
    }
    rtosProtMsgQ queue = rtosProtMsgQOpen(info, mode);
    if (queue || (errno != EINVAL && errno != EMFILE && errno != EPERM))
        return queue;
    const int limit = systemQueueLimit();
    if (limit <= 0 || limit >= info->capacity)
        return nullptr;
    utilLogInternalError("Log queue %s: capacity %d refused by the system, using %d", info->name,
                         info->capacity, limit);
    info->capacity = limit;
    return rtosProtMsgQOpen(info, mode);
}
