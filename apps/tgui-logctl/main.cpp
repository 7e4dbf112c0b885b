// tgui-logctl: edits the shared log configuration, so that the level or the
// statistics switch of a running process changes at its next message.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "log/UtilLog.h"
#include "log/UtilLogMsg.h"

namespace {
void usage(FILE* out)
{
    fprintf(out,
            "usage: tgui-logctl [-k key] command\n"
            "  init                          create the shared segment\n"
            "  level LABEL INSTANCE LEVEL    set the level (0..7) of a log\n"
            "  stats LABEL INSTANCE on|off   switch statistics of a log\n"
            "  get LABEL INSTANCE            print the level of a log\n"
            "  list                          print every entry\n"
            "  remove                        remove the shared segment\n"
            "  -k key  segment key (default: $TGUI_LOG_SHM_KEY or 0x832D88F9)\n");
}

bool number(const char* text, long min, long max, int* value)
{
    char* end = nullptr;
    errno = 0;
    const long n = strtol(text, &end, 10);
    if (end == text || *end || errno || n < min || n > max)
        return false;
    *value = (int)n;
    return true;
}

bool entryArgs(char** args, int count, int* instance)
{
    if (count < 2 || !*args[0] || !number(args[1], 0, 0x7fffffff, instance)) {
        fprintf(stderr, "tgui-logctl: expected LABEL INSTANCE\n");
        return false;
    }
    return true;
}

const UtilLogSharedEntryT* findEntry(const char* label, int instance)
{
    const UtilLogSharedConfigT* config = utilLogSharedConfigGet();
    const uint32_t word = utilLogSharedLabelWord(label);
    for (const UtilLogSharedEntryT& entry : config->entries) {
        if (entry.label == word && entry.instance == (uint32_t)instance)
            return &entry;
    }
    return nullptr;
}
}  // namespace

int main(int argc, char** argv)
{
    int opt;
    while ((opt = getopt(argc, argv, "+k:h")) != -1) {
        if (opt == 'k') {
            setenv("TGUI_LOG_SHM_KEY", optarg, 1);
        } else if (opt == 'h') {
            usage(stdout);
            return 0;
        } else {
            usage(stderr);
            return 2;
        }
    }
    if (optind >= argc) {
        usage(stderr);
        return 2;
    }
    const char* command = argv[optind];
    char** args = argv + optind + 1;
    const int count = argc - optind - 1;

    if (strcmp(command, "remove") == 0)
        return utilLogSharedConfigRemove() == 0 ? 0 : 1;
    if (utilLogSharedConfigInit() != 0)
        return 1;
    int instance = 0;
    if (strcmp(command, "init") == 0)
        return 0;
    if (strcmp(command, "level") == 0) {
        int level;
        if (!entryArgs(args, count, &instance))
            return 2;
        if (count < 3 || !number(args[2], 0, UTIL_LOG_LEVEL_NEVER, &level)) {
            fprintf(stderr, "tgui-logctl: LEVEL must be 0..7\n");
            return 2;
        }
        return utilLogSharedConfigActiveLevelSet(args[0], instance, level) == 0 ? 0 : 1;
    }
    if (strcmp(command, "stats") == 0) {
        if (!entryArgs(args, count, &instance))
            return 2;
        if (count < 3 || (strcmp(args[2], "on") != 0 && strcmp(args[2], "off") != 0)) {
            fprintf(stderr, "tgui-logctl: expected on or off\n");
            return 2;
        }
        const UtilLogSharedEntryT* entry = findEntry(args[0], instance);
        const int level = entry ? (int)entry->level : 4;
        return utilLogSharedConfigEntryAdd(args[0], instance, level, strcmp(args[2], "on") == 0)
                       >= 0
                   ? 0
                   : 1;
    }
    if (strcmp(command, "get") == 0) {
        if (!entryArgs(args, count, &instance))
            return 2;
        const UtilLogSharedEntryT* entry = findEntry(args[0], instance);
        if (!entry) {
            fprintf(stderr, "tgui-logctl: no entry for %s %d\n", args[0], instance);
            return 1;
        }
        printf("%u %s\n", entry->level, entry->statsEnabled ? "on" : "off");
        return 0;
    }
    if (strcmp(command, "list") == 0) {
        const UtilLogSharedConfigT* config = utilLogSharedConfigGet();
        printf("generation %u\n", config->generation);
        for (const UtilLogSharedEntryT& entry : config->entries) {
            if (!entry.label)
                continue;
            char label[5] = {};
            for (int i = 0; i < 4; ++i)
                label[i] = (char)((entry.label >> (8 * i)) & 0xff);
            printf("%-4s %u level %u stats %s\n", label, entry.instance, entry.level,
                   entry.statsEnabled ? "on" : "off");
        }
        return 0;
    }
    fprintf(stderr, "tgui-logctl: unknown command %s\n", command);
    usage(stderr);
    return 2;
}
