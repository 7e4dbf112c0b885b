#include "StopSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {
int g_pair[2] = {-1, -1};

void onSignal(int)
{
    const int saved = errno;
    const char byte = 1;
    // A full pair means a stop is already on its way.
    const ssize_t ignored = ::write(g_pair[1], &byte, 1);
    (void)ignored;
    errno = saved;
}
}  // namespace

namespace stopsignals {

bool install(std::function<void()> onStop)
{
    if (g_pair[0] < 0) {
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_pair) != 0) {
            std::perror("socketpair for the stop signals");
            return false;
        }
        ::fcntl(g_pair[1], F_SETFL, O_NONBLOCK);
    }
    // Owned by the application: it lives as long as the loop it serves.
    auto* notifier = new QSocketNotifier(g_pair[0], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [onStop] {
        char byte = 0;
        const ssize_t ignored = ::read(g_pair[0], &byte, 1);
        (void)ignored;
        if (onStop)
            onStop();
        else
            QCoreApplication::quit();
    });
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
    return true;
}

}  // namespace stopsignals
