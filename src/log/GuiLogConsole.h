#pragma once
// The console path of the library, shared by guiLog and the log client when
// no log server takes the text; not exported. One line in the logging
// category "tgui"; identical lines in a row are counted and reported as
// "last line repeated N times". length -1: up to the NUL.
void guiLogConsole(const char* text, int length = -1);
