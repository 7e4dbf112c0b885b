#pragma once
// What the two programs of bench_footprint share: the figures a child process
// reports on standard output ("key value" lines) and the attribution of its heap
// to the part of the toolkit that holds it.
#include <QtGlobal>

// Milliseconds since this process started, from /proc (10 ms steps).
qint64 footprintMsSinceProcessStart();
// Charges every block handed out from now on to its user (see bench_footprint.cpp).
void footprintStartAttribution();
// Prints time to the first frame, peak and steady resident memory, the heap in use
// (by user when attributed) and resident memory by map.
void footprintReport(qint64 firstFrameMs);

// The texts of zedagui's home screen after its configuration, for the bare program.
extern const char* const kFootprintTexts[5];
extern const char* const kFootprintIntro;
