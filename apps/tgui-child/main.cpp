// tgui-child: a child process that does what its command line says, in this
// order: records its start in a file, prints to standard output and error,
// sets or reads a global lock, sleeps, crashes or exits with a code. The
// supervision tests and the demo start it under CTavoAppMgr.
//
//   tgui-child --print "hello" --sleep 200 --exit 3
//   tgui-child --sleep -1                  until SIGTERM or SIGINT (exit code 0)
//   tgui-child --lock door --set-lock 1 --sleep -1
//   tgui-child --lock door --get-lock      prints "locked=1" or "locked=0"
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <sys/resource.h>
#include <unistd.h>

#include "ProgramCommandLine.h"
#include "supervision/CTavoGlobalLock.h"

namespace {
volatile sig_atomic_t g_stop = 0;

void onStopSignal(int)
{
    g_stop = 1;
}

// Sleeps ms milliseconds (-1: for ever) or until a stop signal.
void sleepFor(long ms)
{
    const long step = 10;
    for (long slept = 0; !g_stop && (ms < 0 || slept < ms); slept += step) {
        timespec t{0, (ms < 0 ? step : qMin(step, ms - slept)) * 1000000L};
        nanosleep(&t, nullptr);
    }
}
}  // namespace

int main(int argc, char** argv)
{
    // First of all: a stop may come while the process is still starting.
    const bool ignoreTerm = [&] {
        for (int i = 1; i < argc; ++i) {
            if (std::strcmp(argv[i], "--ignore-term") == 0)
                return true;
        }
        return false;
    }();
    std::signal(SIGINT, onStopSignal);
    std::signal(SIGTERM, ignoreTerm ? SIG_IGN : onStopSignal);

    QCoreApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("tgui-child"));

    QCommandLineParser cli;
    const QCommandLineOption record("record", "Append \"started <pid> <arguments>\" to <file>.", "file");
    const QCommandLineOption print("print", "Write <text> and a newline to standard output.", "text");
    const QCommandLineOption error("error", "Write <text> and a newline to standard error.", "text");
    const QCommandLineOption lock("lock", "The global lock <name> for --set-lock and --get-lock.", "name");
    const QCommandLineOption setLock("set-lock", "Set the global lock to <0|1>.", "value");
    const QCommandLineOption getLock("get-lock", "Print \"locked=1\" or \"locked=0\".");
    const QCommandLineOption sleep("sleep", "Sleep <ms> milliseconds, -1 until SIGTERM or SIGINT.", "ms");
    const QCommandLineOption ignoreTermOption("ignore-term", "Ignore SIGTERM while sleeping.");
    const QCommandLineOption crash("crash", "End by a segmentation fault.");
    const QCommandLineOption exitCode("exit", "End with exit code <code> (default 0).", "code");
    cli.addOptions({record, print, error, lock, setLock, getLock, sleep, ignoreTermOption, crash, exitCode});
    cmdline::parse(cli, QStringLiteral("A child process on command, for supervision tests and the demo."));

    qint64 sleepMs = 0;
    qint64 code = 0;
    qint64 lockValue = 0;
    if (!cmdline::number(cli, sleep, -1, INT_MAX, &sleepMs) || !cmdline::number(cli, exitCode, 0, 255, &code)
        || !cmdline::number(cli, setLock, 0, 1, &lockValue))
        return cmdline::UsageError;
    if ((cli.isSet(setLock) || cli.isSet(getLock)) && !cli.isSet(lock))
        return cmdline::usageError(QStringLiteral("--set-lock and --get-lock need --lock <name>"));

    if (cli.isSet(record)) {
        QFile file(cli.value(record));
        if (file.open(QIODevice::Append | QIODevice::Text)) {
            const QStringList args = app.arguments().mid(1);
            file.write(QStringLiteral("started %1 %2\n").arg(getpid()).arg(args.join(QLatin1Char(' '))).toUtf8());
        }
    }
    for (const QString& line : cli.values(print))
        std::printf("%s\n", line.toUtf8().constData());
    std::fflush(stdout);
    for (const QString& line : cli.values(error))
        std::fprintf(stderr, "%s\n", line.toUtf8().constData());

    if (cli.isSet(lock)) {
        CTavoGlobalLock global(cli.value(lock));
        if (cli.isSet(setLock))
            global.setLocked(lockValue == 1);
        if (cli.isSet(getLock)) {
            std::printf("locked=%d\n", global.locked() ? 1 : 0);
            std::fflush(stdout);
        }
        // The segment lives while someone holds it: sleep with it held.
        sleepFor(sleepMs);
    } else {
        sleepFor(sleepMs);
    }
    if (g_stop)
        return 0;

    if (cli.isSet(crash)) {
        // Past the sanitizers' handlers, without a core file.
        rlimit none{0, 0};
        setrlimit(RLIMIT_CORE, &none);
        std::signal(SIGSEGV, SIG_DFL);
        std::raise(SIGSEGV);
    }
    return int(code);
}
