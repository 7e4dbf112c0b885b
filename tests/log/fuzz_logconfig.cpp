// The shared log configuration as other processes may leave it: any bytes in
// the segment, then the reads and writes every log client makes.
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "log/UtilLog.h"
#include "log/UtilLogMsg.h"

namespace {
UtilLogSharedConfigT* segment()
{
    static UtilLogSharedConfigT* shared = [] {
        // A segment of this run only, removed at the end.
        const unsigned key = 0x5B000000u | ((unsigned)getpid() & 0xFFFFFF);
        char text[16];
        snprintf(text, sizeof text, "%u", key);
        setenv("TGUI_LOG_SHM_KEY", text, 1);
        utilLogSharedConfigInit();
        atexit([] { utilLogSharedConfigRemove(); });
        return utilLogSharedConfigGet();
    }();
    return shared;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    UtilLogSharedConfigT* shared = segment();
    if (!shared)
        return 0;
    memset(shared, 0, sizeof *shared);
    memcpy(shared, data, size < sizeof *shared ? size : sizeof *shared);
    for (const char* label : {"tgui", "dbs", "brow", "x", "toolong"}) {
        for (int instance : {0, 1, 255, -1})
            (void)utilLogSharedConfigActiveLevelGet(label, instance);
    }
    utilLogSharedConfigActiveLevelSet("tgui", 0, 3);
    utilLogSharedConfigEntryAdd("osd", 2, 4, true);
    (void)utilLogSharedConfigActiveLevelGet("osd", 2);
    return 0;
}
