#pragma once
// Heap accounting for the benchmarks: every program under bench/ links a
// malloc interposer, so allocations of Qt and of the library are seen too.
// Under AddressSanitizer the sanitizer owns malloc and nothing is counted.
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
