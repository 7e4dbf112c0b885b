#pragma once
// SIGTERM and SIGINT as a clean stop for every program with an event loop:
// the handler only writes a byte into a socket pair (a signal handler may not
// touch Qt); the event loop reads it and calls the program's stop, which ends
// the loop with exit code 0 after the program's own stop order.
#include <functional>

class QObject;

namespace stopsignals {

// Installs the handlers for SIGTERM and SIGINT. onStop runs on the thread of
// the event loop, once per signal; without one, QCoreApplication::quit().
// Returns false (with a line on standard error) when the pair cannot be made.
bool install(std::function<void()> onStop = {});

}  // namespace stopsignals
