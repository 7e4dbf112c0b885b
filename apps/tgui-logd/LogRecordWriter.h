#pragma once
// The log server's record writer: one queue record of another process, any
// bytes, as one readable line (time, label, level, text, missed count) or one
// statistics line. Labels and texts are bounded and sanitised.
#include <cstdio>

// Returns true for a record that was written, false (with an "ignored" line)
// for one of unknown type or too short.
bool writeLogRecord(FILE* out, const char* data, int size);
