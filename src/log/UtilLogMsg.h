#pragma once
// The records a log client sends to the log server, and the layout of the
// shared configuration segment. All words are little-endian 32-bit.
#include <cstddef>
#include <cstdint>
#include <type_traits>

typedef int UtilLogLevelT;

#define UTIL_LOG_QUEUE_NAME "smqlogq"
#define UTIL_LOG_QUEUE_CAPACITY 5000
#define UTIL_LOG_QUEUE_OPTIONS 12
#define UTIL_LOG_TEXT_MAX 512
#define UTIL_LOG_LABEL_MAX 5
#define UTIL_LOG_LEVEL_MAX_FILTERED 6  // 0..6 are filtered
#define UTIL_LOG_LEVEL_NEVER 7         // 7 (and above, but 8) is never sent
#define UTIL_LOG_LEVEL_ALWAYS 8        // the initial log entry
#define UTIL_LOG_LEVELS 9

#define UTIL_LOG_MSG_TEXT 1
#define UTIL_LOG_MSG_STATS 9

struct utilLogMsg
{
    uint32_t type;     // UTIL_LOG_MSG_TEXT
    uint32_t size;     // 36 plus the text length for a line
    uint32_t missed;   // messages not delivered before this one
    uint32_t tick;     // utilLinuxLogTickStampGet()
    uint32_t time;     // seconds since the epoch
    int32_t level;
    char label[6];
    char reserved[2];
    char text[516];    // NUL-terminated, at most 512 characters
};
static_assert(sizeof(utilLogMsg) == 548, "log record is 548 bytes");
static_assert(offsetof(utilLogMsg, type) == 0, "record layout");
static_assert(offsetof(utilLogMsg, size) == 4, "record layout");
static_assert(offsetof(utilLogMsg, missed) == 8, "record layout");
static_assert(offsetof(utilLogMsg, tick) == 12, "record layout");
static_assert(offsetof(utilLogMsg, time) == 16, "record layout");
static_assert(offsetof(utilLogMsg, level) == 20, "record layout");
static_assert(offsetof(utilLogMsg, label) == 24, "record layout");
static_assert(offsetof(utilLogMsg, reserved) == 30, "record layout");
static_assert(offsetof(utilLogMsg, text) == 32, "record layout");
static_assert(alignof(utilLogMsg) == 4, "record alignment");

// Per level: messages in the last period, messages per second, and three counts
// that decay by 0.1, 0.2 and 0.4 per elapsed millisecond.
enum { UTIL_LOG_STAT_COUNT, UTIL_LOG_STAT_RATE, UTIL_LOG_STAT_DECAY1, UTIL_LOG_STAT_DECAY2,
       UTIL_LOG_STAT_DECAY3, UTIL_LOG_STAT_FIELDS };

struct utilLogStatsMsg
{
    uint32_t type;       // UTIL_LOG_MSG_STATS
    uint32_t size;       // 208
    uint32_t missed;
    uint32_t tick;
    uint32_t elapsedMs;  // length of the period the counts cover
    char label[6];
    char reserved[2];
    uint32_t counters[UTIL_LOG_LEVELS][UTIL_LOG_STAT_FIELDS];
};
static_assert(sizeof(utilLogStatsMsg) == 208, "statistics record is 208 bytes");
static_assert(offsetof(utilLogStatsMsg, missed) == 8, "statistics layout");
static_assert(offsetof(utilLogStatsMsg, tick) == 12, "statistics layout");
static_assert(offsetof(utilLogStatsMsg, elapsedMs) == 16, "statistics layout");
static_assert(offsetof(utilLogStatsMsg, label) == 20, "statistics layout");
static_assert(offsetof(utilLogStatsMsg, counters) == 28, "statistics layout");
static_assert(alignof(utilLogStatsMsg) == 4, "statistics alignment");

#define UTIL_LOG_SHARED_KEY 0x832D88F9u
#define UTIL_LOG_SHARED_SIZE 4096
#define UTIL_LOG_SHARED_MAGIC 0x938217D3u
#define UTIL_LOG_SHARED_ENTRIES 255

// One entry per process log; the label word holds the first four characters
// of the label, zero-padded, so labels are told apart by those.
struct UtilLogSharedEntryT
{
    uint32_t label;
    uint32_t instance;
    uint32_t level;
    uint32_t statsEnabled;
};

struct UtilLogSharedConfigT
{
    uint32_t magic;
    uint32_t generation;  // bumped after every change
    UtilLogSharedEntryT entries[UTIL_LOG_SHARED_ENTRIES];
};
static_assert(sizeof(UtilLogSharedEntryT) == 16, "configuration entry is four words");
static_assert(offsetof(UtilLogSharedEntryT, instance) == 4, "entry layout");
static_assert(offsetof(UtilLogSharedEntryT, level) == 8, "entry layout");
static_assert(offsetof(UtilLogSharedEntryT, statsEnabled) == 12, "entry layout");
static_assert(offsetof(UtilLogSharedConfigT, generation) == 4, "configuration layout");
static_assert(offsetof(UtilLogSharedConfigT, entries) == 8, "configuration layout");
static_assert(sizeof(UtilLogSharedConfigT) == 8 + 16 * UTIL_LOG_SHARED_ENTRIES, "configuration size");
static_assert(sizeof(UtilLogSharedConfigT) <= UTIL_LOG_SHARED_SIZE, "fits the segment");
static_assert(alignof(UtilLogSharedConfigT) == 4, "configuration alignment");

// Same on x86-64 and 32-bit ARM: records and segment are plain memory of
// fixed-width fields, sent and mapped as they are.
static_assert(std::is_trivially_copyable<utilLogMsg>::value && std::is_standard_layout<utilLogMsg>::value
                  && std::is_trivially_copyable<utilLogStatsMsg>::value
                  && std::is_standard_layout<utilLogStatsMsg>::value
                  && std::is_trivially_copyable<UtilLogSharedConfigT>::value
                  && std::is_standard_layout<UtilLogSharedConfigT>::value,
              "log layouts are plain memory");
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "records are sent in host order, which must be little-endian");
