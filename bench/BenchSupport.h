#pragma once
// Shared by the benchmarks. Heap accounting: every program under bench/ links a
// malloc interposer, so allocations of Qt and of the library are seen too.
// Under AddressSanitizer the sanitizer owns malloc and nothing is counted.
#include <QElapsedTimer>
#include <QFont>

#include <atomic>

#if defined(__SANITIZE_ADDRESS__)
#define BENCH_NO_MALLOC_HOOKS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define BENCH_NO_MALLOC_HOOKS 1
#endif
#endif

extern std::atomic<long long> g_allocations;  // blocks handed out so far
extern std::atomic<long long> g_liveBytes;    // usable bytes currently held

// Called for every block handed out (allocated true) and given back, with its
// usable size, when set; never for the hook's own allocations. For benchmarks
// that attribute the heap to its users (bench_footprint).
typedef void (*BenchAllocHook)(void* block, long long bytes, bool allocated);
extern std::atomic<BenchAllocHook> g_allocHook;

// Frames per second and heap allocations per frame of `frame`, after `warm`
// frames that fill the caches.
struct BenchRun
{
    double fps = 0;
    double allocationsPerFrame = 0;
};

template <typename Frame>
BenchRun benchFrames(int warm, int frames, Frame frame)
{
    for (int i = 0; i < warm; ++i)
        frame();
    const long long before = g_allocations.load();
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < frames; ++i)
        frame();
    BenchRun run;
    run.fps = frames * 1e9 / double(timer.nsecsElapsed());
    run.allocationsPerFrame = double(g_allocations.load() - before) / frames;
    return run;
}

// DejaVu Sans loaded from its file at `pixelSize`, so figures do not move with
// the machine's font configuration. Needs a QGuiApplication.
QFont benchFont(int pixelSize);
