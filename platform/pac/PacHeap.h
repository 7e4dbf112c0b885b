#pragma once
// The bookkeeping of one evaluator context: its memory count and cap, the
// deadline of the script run in progress, its clock and its last error. It is
// the Duktape heap's user data and goes away with the heap's last block.
#include <string>
#include <time.h>

#include <duktape.h>

struct PacHeap {
    size_t limit = 0;        // bytes the context may hold
    size_t used = 0;         // bytes held now
    size_t blocks = 0;       // blocks held now
    unsigned timeoutMs = 0;  // one run of script code
    bool running = false;    // a deadline is set
    timespec deadline{};
    double fixedNow = -1.0;  // ms since 1970 for the date helpers; < 0: the system clock
    bool armed = false;      // the heap exists: its last freed block releases this record
    // Why the last allocation was refused, to name the cause when Duktape can only
    // say "DoubleError" (its error object could not be made either).
    enum Refusal { None, Limit, Deadline } refused = None;
    std::string lastError;
};

// The record of a context made by alloc_ctx; null for any other heap.
PacHeap* pacHeapOf(duk_context* ctx);
