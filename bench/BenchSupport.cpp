// The malloc interposer behind BenchSupport.h.
#include "BenchSupport.h"

#include <QFontDatabase>

#include <cstddef>
#include <malloc.h>

std::atomic<long long> g_allocations{0};
std::atomic<long long> g_liveBytes{0};
std::atomic<BenchAllocHook> g_allocHook{nullptr};

QFont benchFont(int pixelSize)
{
    const int id = QFontDatabase::addApplicationFont(
        QStringLiteral("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"));
    QFont font(QFontDatabase::applicationFontFamilies(id).value(0, QStringLiteral("DejaVu Sans")));
    font.setPixelSize(pixelSize);
    return font;
}

#ifndef BENCH_NO_MALLOC_HOOKS
extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);
void __libc_free(void*);

// The hook may allocate; what it allocates is not reported to it again.
static thread_local bool t_inHook = false;

static void callHook(void* p, long long bytes, bool allocated)
{
    BenchAllocHook hook = g_allocHook.load(std::memory_order_relaxed);
    if (!hook || t_inHook)
        return;
    t_inHook = true;
    hook(p, bytes, allocated);
    t_inHook = false;
}

static void noteAlloc(void* p)
{
    if (p) {
        const long long bytes = static_cast<long long>(malloc_usable_size(p));
        g_allocations.fetch_add(1, std::memory_order_relaxed);
        g_liveBytes.fetch_add(bytes, std::memory_order_relaxed);
        callHook(p, bytes, true);
    }
}

static void noteFree(void* p)
{
    if (p) {
        const long long bytes = static_cast<long long>(malloc_usable_size(p));
        g_liveBytes.fetch_sub(bytes, std::memory_order_relaxed);
        callHook(p, bytes, false);
    }
}

void* malloc(size_t size)
{
    void* p = __libc_malloc(size);
    noteAlloc(p);
    return p;
}

void* calloc(size_t n, size_t size)
{
    void* p = __libc_calloc(n, size);
    noteAlloc(p);
    return p;
}

void* realloc(void* old, size_t size)
{
    noteFree(old);
    void* p = __libc_realloc(old, size);
    if (p) {
        noteAlloc(p);
    } else if (old && size != 0) {
        // The old block survives a failed realloc.
        const long long bytes = static_cast<long long>(malloc_usable_size(old));
        g_liveBytes.fetch_add(bytes, std::memory_order_relaxed);
        callHook(old, bytes, true);
    }
    return p;
}

void* memalign(size_t alignment, size_t size)
{
    void* p = __libc_memalign(alignment, size);
    noteAlloc(p);
    return p;
}

void* aligned_alloc(size_t alignment, size_t size)
{
    return memalign(alignment, size);
}

int posix_memalign(void** out, size_t alignment, size_t size)
{
    void* p = memalign(alignment, size);
    if (!p)
        return 12; // ENOMEM
    *out = p;
    return 0;
}

void free(void* p)
{
    noteFree(p);
    __libc_free(p);
}
}
#endif
