#pragma once
#include "tgui_export.h"
// Small process tools.

// Blocks the caller for msec milliseconds. The caller's event loop keeps
// running meanwhile (timers, sockets and painting go on), so a supervisor
// waiting to restart a child does not freeze its screen; the wait ends early
// only when the application is told to quit. Without a QCoreApplication the
// thread sleeps. A negative time is logged and returns at once.
TGUI_EXPORT void tavoToolsDelay(int msec);
