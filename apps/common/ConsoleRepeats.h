#pragma once
// The console of a program, the way system loggers write one: Qt's messages
// (and with them guiLog's console lines) go to standard error one line each,
// but a line equal to the one before is only counted. The count goes out as
// "last line repeated N times" before the next different line, after 30 s of
// repeats, or when the program ends. A peer that provokes the same error
// thousands of times then costs two lines. Every message still reaches Qt's
// message system first: only what is written is folded.
#include <cstdio>

namespace consolerepeats {

// Installs the message handler, writing to out.
void install(FILE* out = stderr);

// Writes a pending count now (the end of the program does it by itself).
void flush();

}  // namespace consolerepeats
