// The child side of bench_footprint: figures and heap attribution.
#include "FootprintSupport.h"

#include <QByteArray>
#include <QFile>
#include <QHash>
#include <QList>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <execinfo.h>
#include <mutex>
#include <unistd.h>
#include <unordered_map>

#include "BenchSupport.h"

const char* const kFootprintTexts[5] = {"Home", "Messages", "Contacts", "Call history", "Settings"};
const char* const kFootprintIntro =
    "<div align=\"center\"><b>Connected to the core</b> &middot; Directory offline</div>";

namespace {

// ---------------------------------------------------------------- the figures

// Milliseconds since this process started, from /proc (10 ms steps).
qint64 msSinceProcessStart()
{
    QFile stat(QStringLiteral("/proc/self/stat"));
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = stat.readAll();
    const int close = text.lastIndexOf(')');
    const QList<QByteArray> fields = text.mid(close + 2).split(' ');
    if (close < 0 || fields.size() < 20)
        return -1;
    const qint64 ticks = fields.at(19).toLongLong();
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return qint64(now.tv_sec) * 1000 + now.tv_nsec / 1000000 - ticks * 1000 / sysconf(_SC_CLK_TCK);
}

// A field of /proc/self/status in kB ("VmHWM", "VmRSS").
long long statusKb(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray key = QByteArray(field) + ':';
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(key))
            return line.mid(key.size()).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}

// ------------------------------------------------------- the heap by its user

enum UserT { UserQt, UserSkin, UserImages, UserFonts, UserWidgets, UserWeb, UserCore, UserCount };
const char* const kUserKeys[UserCount] = {"qt", "skin", "images", "fonts", "widgets", "web", "core"};

struct Attribution
{
    std::mutex mutex;
    std::unordered_map<void*, unsigned char> live;  // block to its user
    std::unordered_map<void*, signed char> frames;  // return address to a user, -1 none, -2 stop
    long long bytes[UserCount] = {};
    const void* exeBase = nullptr;
};
Attribution* s_attribution = nullptr;

bool has(const char* text, const char* part)
{
    return text && std::strstr(text, part);
}

// The user a frame stands for: a part of the toolkit, a library that serves one,
// -2 where the event loop or the program's start is reached, -1 for anything else.
signed char frameUser(void* address, const void* exeBase)
{
    Dl_info info{};
    if (!dladdr(address, &info))
        return -1;
    // Functions the library hides are named after the exported one before them,
    // which in practice is one of the same source file.
    const char* file = info.dli_fname;
    const char* name = info.dli_sname;
    if (has(name, "notify") || has(name, "QEventLoop") || has(name, "4exec") || has(name, "QApplicationC")
        || (info.dli_fbase == exeBase && has(name, "main")))
        return -2;
    if (has(file, "WebKit"))
        return UserWeb;
    if (has(name, "CTavoParagraph")
        && (has(name, "Html") || has(name, "CachedImage") || has(name, "sharedWebPage") || has(name, "finishImage")))
        return UserWeb;
    if (has(name, "CTavoResourceRepository") || has(name, "CIconResource") || has(name, "CTavoIconRepository")
        || has(name, "CTavoImage") || has(file, "Qt5Svg"))
        return UserImages;
    if (has(name, "CTavoStyleSheet") || has(name, "CTavoWidgetStyle") || has(name, "TavoSkinConfig")
        || has(name, "TavoProfile") || has(name, "setManagerStyle") || has(file, "libexpat"))
        return UserSkin;
    if (has(file, "libfontconfig") || has(file, "libfreetype") || has(name, "QFontDatabase")
        || has(name, "QFontEngine") || has(name, "QFontCache") || has(name, "loadFonts") || has(name, "GlyphCache"))
        return UserFonts;
    if (has(name, "CTavoCoreCommunicator") || has(file, "Qt5Network") || has(file, "libtxml") || has(name, "CTXML")
        || has(name, "appDefs") || has(name, "tavoToolSendAppMsg") || has(name, "CTavoDb"))
        return UserCore;
    if (has(name, "CTavo") || has(name, "KineticScroll") || has(name, "formatText") || info.dli_fbase == exeBase)
        return UserWidgets;
    return -1;
}

[[maybe_unused]] void attribute(void* block, long long bytes, bool allocated)
{
    Attribution& a = *s_attribution;
    if (!allocated) {
        std::lock_guard<std::mutex> lock(a.mutex);
        const auto it = a.live.find(block);
        if (it != a.live.end()) {
            a.bytes[it->second] -= bytes;
            a.live.erase(it);
        }
        return;
    }
    // The stack is read and named outside the lock: the loader takes a lock of its
    // own, and a thread that holds it may be allocating.
    void* stack[64];
    const int depth = backtrace(stack, 64);
    int i = 0;
    // The interposer's own frames.
    for (; i < depth; ++i) {
        Dl_info info{};
        if (!dladdr(stack[i], &info) || info.dli_fbase != a.exeBase)
            break;
    }
    unsigned char user = UserQt;
    for (; i < depth; ++i) {
        signed char found = -1;
        bool known = false;
        {
            std::lock_guard<std::mutex> lock(a.mutex);
            const auto it = a.frames.find(stack[i]);
            if ((known = it != a.frames.end()))
                found = it->second;
        }
        if (!known) {
            found = frameUser(stack[i], a.exeBase);
            std::lock_guard<std::mutex> lock(a.mutex);
            a.frames.emplace(stack[i], found);
        }
        if (found == -2)
            break;
        if (found >= 0) {
            user = static_cast<unsigned char>(found);
            break;
        }
    }
    std::lock_guard<std::mutex> lock(a.mutex);
    a.live[block] = user;
    a.bytes[user] += bytes;
}

void startAttribution()
{
#ifndef BENCH_NO_MALLOC_HOOKS
    s_attribution = new Attribution;
    Dl_info self{};
    dladdr(reinterpret_cast<void*>(&statusKb), &self);
    s_attribution->exeBase = self.dli_fbase;
    void* warm[4];
    backtrace(warm, 4);  // loads the unwinder before the hook needs it
    g_allocHook.store(&attribute);
#endif
}

// ------------------------------------------------------------------ the report

void report(const char* key, long long value)
{
    std::printf("%s %lld\n", key, value);
}

void reportSteady(qint64 firstFrameMs)
{
    report("first_frame_ms", firstFrameMs);
    report("peak_kb", statusKb("VmHWM"));
    report("steady_kb", statusKb("VmRSS"));
    report("heap_bytes", g_liveBytes.load());
    // Resident memory by what is mapped: each library and font file, the heap,
    // and anonymous maps (large blocks, thread stacks, Qt's and WebKit's own pools).
    QFile smaps(QStringLiteral("/proc/self/smaps"));
    if (smaps.open(QIODevice::ReadOnly)) {
        QHash<QByteArray, long long> byMap;
        QByteArray current;
        long long privateDirty = 0;
        for (const QByteArray& line : smaps.readAll().split('\n')) {
            if (line.startsWith("Private_Dirty:")) {
                privateDirty += line.mid(14).trimmed().split(' ').value(0).toLongLong();
            } else if (line.startsWith("Rss:")) {
                byMap[current] += line.mid(4).trimmed().split(' ').value(0).toLongLong();
            } else if (!line.isEmpty() && !std::isupper(static_cast<unsigned char>(line.at(0)))) {
                const QList<QByteArray> parts = line.simplified().split(' ');
                current = parts.size() >= 6 ? parts.at(5).mid(parts.at(5).lastIndexOf('/') + 1) : QByteArray("anonymous");
            }
        }
        for (auto it = byMap.begin(); it != byMap.end(); ++it)
            report(QByteArray("map:" + it.key()).constData(), it.value());
        // What this process alone holds: written pages, not shared library code.
        report("private_dirty_kb", privateDirty);
    }
    if (s_attribution) {
        g_allocHook.store(nullptr);
        std::lock_guard<std::mutex> lock(s_attribution->mutex);
        // Qt itself: also all that was made before the attribution started.
        long long others = 0;
        for (int u = UserQt + 1; u < UserCount; ++u) {
            others += s_attribution->bytes[u];
            report(QByteArray("heap_").append(kUserKeys[u]).constData(), s_attribution->bytes[u]);
        }
        report("heap_qt", g_liveBytes.load() - others);
    }
    std::fflush(stdout);
}


} // namespace

qint64 footprintMsSinceProcessStart()
{
    return msSinceProcessStart();
}

void footprintStartAttribution()
{
    startAttribution();
}

void footprintReport(qint64 firstFrameMs)
{
    reportSteady(firstFrameMs);
}
