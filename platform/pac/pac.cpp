// The evaluator's entry points: reading a script, making a context that has
// run it, and asking it for the proxies of a URL, each within the context's
// memory cap and the per-run time cap.
#include "pac.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

#include "PacHeap.h"
#include "PacHelpers.h"

namespace {
const size_t kMaxScriptBytes = 1024 * 1024;
std::atomic<unsigned> g_timeoutMs{1000};
std::atomic<size_t> g_heapBytes{16 * 1024 * 1024};
// Why the last alloc_ctx of this thread failed: its context is gone by then.
thread_local std::string t_allocError;

// Every block carries its size in front, so that the context's total is exact.
struct alignas(16) BlockHeader {
    size_t size;
};
const size_t kHeader = sizeof(BlockHeader);

bool pastDeadline(const PacHeap* heap, long graceMs = 0)
{
    if (!heap->running)
        return false;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    timespec end = heap->deadline;
    end.tv_sec += graceMs / 1000;
    end.tv_nsec += (graceMs % 1000) * 1000000L;
    if (end.tv_nsec >= 1000000000L) {
        end.tv_sec += 1;
        end.tv_nsec -= 1000000000L;
    }
    return now.tv_sec > end.tv_sec || (now.tv_sec == end.tv_sec && now.tv_nsec >= end.tv_nsec);
}

// Past the deadline the executor throws its timeout error, which needs memory
// of its own: allocations fail only somewhat later.
long allocationGraceMs(const PacHeap* heap)
{
    const long quarter = long(heap->timeoutMs / 4);
    return quarter > 50 ? quarter : 50;
}

// Native helpers (a join of a huge array, say) run no bytecode, so the clock is
// also checked here: well past the deadline every allocation fails and the call ends.
void* pacAlloc(void* udata, duk_size_t size)
{
    auto* heap = static_cast<PacHeap*>(udata);
    if (size > heap->limit || heap->used > heap->limit - size) {
        heap->refused = PacHeap::Limit;
        return nullptr;
    }
    if (pastDeadline(heap, allocationGraceMs(heap))) {
        heap->refused = PacHeap::Deadline;
        return nullptr;
    }
    auto* block = static_cast<BlockHeader*>(std::malloc(kHeader + size));
    if (!block)
        return nullptr;
    block->size = size;
    heap->used += size;
    ++heap->blocks;
    return reinterpret_cast<char*>(block) + kHeader;
}

void pacFree(void* udata, void* ptr)
{
    if (!ptr)
        return;
    auto* heap = static_cast<PacHeap*>(udata);
    auto* block = reinterpret_cast<BlockHeader*>(static_cast<char*>(ptr) - kHeader);
    heap->used -= block->size;
    --heap->blocks;
    std::free(block);
    // The heap's own record is the last block Duktape frees.
    if (heap->armed && heap->blocks == 0)
        delete heap;
}

void* pacRealloc(void* udata, void* ptr, duk_size_t size)
{
    if (!ptr)
        return pacAlloc(udata, size);
    auto* heap = static_cast<PacHeap*>(udata);
    auto* block = reinterpret_cast<BlockHeader*>(static_cast<char*>(ptr) - kHeader);
    const size_t old = block->size;
    if (size == 0) {
        pacFree(udata, ptr);
        return nullptr;
    }
    if (size > old && (size - old > heap->limit || heap->used > heap->limit - (size - old))) {
        heap->refused = PacHeap::Limit;
        return nullptr;
    }
    if (size > old && pastDeadline(heap, allocationGraceMs(heap))) {
        heap->refused = PacHeap::Deadline;
        return nullptr;
    }
    auto* grown = static_cast<BlockHeader*>(std::realloc(block, kHeader + size));
    if (!grown)
        return nullptr;
    grown->size = size;
    heap->used = heap->used - old + size;
    return reinterpret_cast<char*>(grown) + kHeader;
}

// Only reached for an error outside any protected call, which our entry
// points never leave room for: there is no way to go on inside Duktape.
void pacFatal(void*, const char* message)
{
    std::fprintf(stderr, "pac: fatal Duktape error: %s\n", message ? message : "?");
    std::abort();
}

void startClock(PacHeap* heap)
{
    clock_gettime(CLOCK_MONOTONIC, &heap->deadline);
    heap->deadline.tv_sec += heap->timeoutMs / 1000;
    heap->deadline.tv_nsec += long(heap->timeoutMs % 1000) * 1000000L;
    if (heap->deadline.tv_nsec >= 1000000000L) {
        heap->deadline.tv_sec += 1;
        heap->deadline.tv_nsec -= 1000000000L;
    }
    heap->running = true;
    heap->refused = PacHeap::None;
}

// Keeps the error value's text and drops it from the stack.
// Describing an out-of-memory error takes memory too: a little room over the
// cap, for this only.
void takeError(duk_context* ctx, PacHeap* heap)
{
    const size_t headroom = 64 * 1024;
    heap->limit += headroom;
    const char* text = duk_safe_to_string(ctx, -1);
    heap->lastError = text && *text ? text : "error";
    if (heap->lastError.rfind("DoubleError", 0) == 0 && heap->refused != PacHeap::None)
        heap->lastError += heap->refused == PacHeap::Limit ? " (alloc failed: the heap limit)"
                                                           : " (alloc failed: timeout)";
    duk_pop(ctx);
    heap->limit -= headroom;
}

char* copyText(const char* text, size_t length)
{
    auto* out = static_cast<char*>(std::malloc(length + 1));
    if (!out)
        return nullptr;
    std::memcpy(out, text, length);
    out[length] = '\0';
    return out;
}

struct ScriptRun {
    const char* text;
    size_t length;
};

duk_ret_t runScript(duk_context* ctx, void* udata)
{
    const auto* run = static_cast<const ScriptRun*>(udata);
    duk_push_string(ctx, "proxy.pac");
    duk_compile_lstring_filename(ctx, 0, run->text, run->length);
    duk_call(ctx, 0);
    duk_pop(ctx);
    duk_get_global_string(ctx, "FindProxyForURL");
    const bool ok = duk_is_function(ctx, -1);
    duk_pop(ctx);
    if (!ok)
        return duk_error(ctx, DUK_ERR_TYPE_ERROR, "the script defines no function FindProxyForURL");
    return 0;
}

struct Query {
    const char* url;
    const char* host;
};

duk_ret_t callFind(duk_context* ctx, void* udata)
{
    const auto* q = static_cast<const Query*>(udata);
    duk_get_global_string(ctx, "FindProxyForURL");
    duk_push_string(ctx, q->url);
    duk_push_string(ctx, q->host);
    duk_call(ctx, 2);
    if (!duk_is_string(ctx, -1)) {
        duk_pop(ctx);
        duk_push_string(ctx, "undefined");
    }
    return 1;
}
}  // namespace

extern "C" int pac_exec_timeout_check(void* heap_udata)
{
    auto* heap = static_cast<PacHeap*>(heap_udata);
    return heap && pastDeadline(heap);
}

PacHeap* pacHeapOf(duk_context* ctx)
{
    if (!ctx)
        return nullptr;
    duk_memory_functions funcs{};
    duk_get_memory_functions(ctx, &funcs);
    return funcs.alloc_func == pacAlloc ? static_cast<PacHeap*>(funcs.udata) : nullptr;
}

extern "C" char* read_pacfile(const char* path)
{
    if (!path || !*path)
        return nullptr;
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return nullptr;
    struct stat st{};
    char* text = nullptr;
    if (fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0 && size_t(st.st_size) <= kMaxScriptBytes) {
        text = static_cast<char*>(std::malloc(size_t(st.st_size) + 1));
        size_t have = 0;
        while (text && have < size_t(st.st_size)) {
            const ssize_t n = read(fd, text + have, size_t(st.st_size) - have);
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                break;
            have += size_t(n);
        }
        // A file that changed size under us, or text with a NUL in it, is refused.
        if (text && (have != size_t(st.st_size) || std::memchr(text, '\0', have))) {
            std::free(text);
            text = nullptr;
        }
        if (text)
            text[have] = '\0';
    }
    close(fd);
    return text;
}

extern "C" duk_context* alloc_ctx(const char* script)
{
    if (!script || !*script) {
        t_allocError = "empty script";
        return nullptr;
    }
    auto* heap = new (std::nothrow) PacHeap;
    if (!heap)
        return nullptr;
    heap->limit = g_heapBytes.load();
    heap->timeoutMs = g_timeoutMs.load();
    duk_context* ctx = duk_create_heap(pacAlloc, pacRealloc, pacFree, heap, pacFatal);
    if (!ctx) {
        delete heap;
        t_allocError = "no memory for a heap";
        return nullptr;
    }
    heap->armed = true;

    const ScriptRun run{script, std::strlen(script)};
    startClock(heap);
    bool ok = duk_safe_call(ctx, pacInstallHelpers, nullptr, 0, 1) == DUK_EXEC_SUCCESS;
    if (ok) {
        duk_pop(ctx);
        ok = duk_safe_call(ctx, runScript, const_cast<ScriptRun*>(&run), 0, 1) == DUK_EXEC_SUCCESS;
    }
    // The error is read without the clock: its text needs memory of its own.
    heap->running = false;
    if (!ok)
        takeError(ctx, heap);
    else
        duk_pop(ctx);
    if (!ok) {
        t_allocError = heap->lastError;
        // The heap's last block releases the record.
        duk_destroy_heap(ctx);
        return nullptr;
    }
    t_allocError.clear();
    return ctx;
}

extern "C" char* find_proxy(duk_context* ctx, const char* url, const char* host)
{
    PacHeap* heap = pacHeapOf(ctx);
    if (!heap)
        return nullptr;
    heap->lastError.clear();
    if (!url || !host) {
        heap->lastError = "find_proxy: no URL or host";
        return nullptr;
    }
    startClock(heap);
    Query query{url, host};
    char* result = nullptr;
    const bool ok = duk_safe_call(ctx, callFind, &query, 0, 1) == DUK_EXEC_SUCCESS;
    heap->running = false;
    if (ok) {
        duk_size_t length = 0;
        const char* text = duk_get_lstring(ctx, -1, &length);
        result = copyText(text ? text : "", text ? length : 0);
        duk_pop(ctx);
    } else {
        takeError(ctx, heap);
    }
    return result;
}

extern "C" void pac_set_limits(unsigned timeout_ms, size_t heap_bytes)
{
    if (timeout_ms)
        g_timeoutMs = timeout_ms;
    if (heap_bytes)
        g_heapBytes = heap_bytes;
}

extern "C" void pac_set_time(duk_context* ctx, double epoch_ms)
{
    if (PacHeap* heap = pacHeapOf(ctx))
        heap->fixedNow = epoch_ms;
}

extern "C" const char* pac_last_error(duk_context* ctx)
{
    if (!ctx)
        return t_allocError.c_str();
    PacHeap* heap = pacHeapOf(ctx);
    return heap ? heap->lastError.c_str() : "";
}
