#pragma once
// Shared by the benchmarks. Heap accounting: every program under bench/ links a
// malloc interposer, so allocations of Qt and of the library are seen too.
// Under AddressSanitizer the sanitizer owns malloc and nothing is counted.
#include <QApplication>
#include <QElapsedTimer>
#include <QFont>
#include <QKeyEvent>
#include <QWidget>

#include <atomic>
#include <cstdio>
#include <functional>

#if defined(__SANITIZE_ADDRESS__)
#define BENCH_NO_MALLOC_HOOKS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define BENCH_NO_MALLOC_HOOKS 1
#endif
#endif

#ifdef BENCH_NO_MALLOC_HOOKS
constexpr bool kBenchCounted = false;  // allocation figures read "n/a"
#else
constexpr bool kBenchCounted = true;
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

// Microseconds and heap allocations per step: `step` runs `rounds` times after
// `warm`, each followed by `undo` outside the counted window, so that every
// round starts from the same state.
struct BenchStep
{
    double micros = 0;
    double allocations = 0;
};

inline BenchStep benchSteps(int warm, int rounds, const std::function<void()>& step,
                            const std::function<void()>& undo)
{
    for (int i = 0; i < warm; ++i) {
        step();
        undo();
    }
    qint64 nanos = 0;
    long long allocations = 0;
    QElapsedTimer timer;
    for (int i = 0; i < rounds; ++i) {
        const long long before = g_allocations.load();
        timer.start();
        step();
        nanos += timer.nsecsElapsed();
        allocations += g_allocations.load() - before;
        undo();
    }
    return {nanos / 1000.0 / rounds, double(allocations) / rounds};
}

// Time and heap allocations per call of `call(i)`: `warm` calls (0, 1, ...)
// keep first-time set-up out of the figure, then i runs from `first` on.
struct BenchPerCall
{
    double usPerCall = 0;
    double allocationsPerCall = 0;
};

template <typename Call>
BenchPerCall benchPerCall(int warm, int first, int calls, Call call)
{
    for (int i = 0; i < warm; ++i)
        call(i);
    const long long before = g_allocations.load();
    QElapsedTimer timer;
    timer.start();
    for (int i = first; i < first + calls; ++i)
        call(i);
    BenchPerCall f;
    f.usPerCall = double(timer.nsecsElapsed()) / 1000.0 / calls;
    f.allocationsPerCall = double(g_allocations.load() - before) / calls;
    return f;
}

// "  <what, width wide> <us> us   <n> allocations".
inline void benchPrintPerCall(int width, const char* what, const BenchPerCall& f)
{
    if (kBenchCounted)
        std::printf("  %-*s %10.2f us   %8.1f allocations\n", width, what, f.usPerCall, f.allocationsPerCall);
    else
        std::printf("  %-*s %10.2f us   allocations n/a\n", width, what, f.usPerCall);
}

// A key pressed and released on `w`, delivered directly.
inline void benchKey(QWidget* w, Qt::Key key, const QString& text, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QKeyEvent down(QEvent::KeyPress, key, modifiers, text);
    QApplication::sendEvent(w, &down);
    QKeyEvent up(QEvent::KeyRelease, key, modifiers, text);
    QApplication::sendEvent(w, &up);
}
