#include "ConsoleRepeats.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMutex>
#include <QString>
#include <cstdlib>

namespace {
constexpr qint64 RepeatFlushMs = 30000;

struct Console {
    QMutex mutex;
    FILE* out = stderr;
    QByteArray last;
    int repeats = 0;
    QElapsedTimer since;  // the first repeat not yet written
};

Console& console()
{
    static Console* state = new Console;  // outlives every static destructor
    return *state;
}

void writeRepeatsLocked(Console& c)
{
    if (c.repeats > 0)
        std::fprintf(c.out, "last line repeated %d times\n", c.repeats);
    c.repeats = 0;
}

void handler(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    const QByteArray line = qFormatLogMessage(type, context, message).toLocal8Bit();
    Console& c = console();
    {
        QMutexLocker lock(&c.mutex);
        if (!c.last.isNull() && line == c.last) {
            if (c.repeats++ == 0)
                c.since.start();
            else if (c.since.elapsed() >= RepeatFlushMs)
                writeRepeatsLocked(c);
        } else {
            writeRepeatsLocked(c);
            c.last = line;
            std::fprintf(c.out, "%s\n", line.constData());
        }
        std::fflush(c.out);
    }
    if (type == QtFatalMsg)
        std::abort();
}
}  // namespace

namespace consolerepeats {

void install(FILE* out)
{
    Console& c = console();
    {
        QMutexLocker lock(&c.mutex);
        c.out = out;
        c.last = QByteArray();
        c.repeats = 0;
    }
    qInstallMessageHandler(handler);
    std::atexit(flush);
}

void flush()
{
    Console& c = console();
    QMutexLocker lock(&c.mutex);
    writeRepeatsLocked(c);
    c.last = QByteArray();
    std::fflush(c.out);
}

}  // namespace consolerepeats
