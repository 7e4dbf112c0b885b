#include "log/GuiLog.h"

#include <QCoreApplication>
#include <QDebug>
#include <QElapsedTimer>
#include <QMutex>
#include <QLoggingCategory>
#include <cstdio>

#include "log/CTavoGuiLog.h"
#include "log/GuiLogConsole.h"

namespace {
// The console fallback is qDebug in the category "tgui", so that a host can
// silence it or route it, e.g. QT_LOGGING_RULES="tgui.debug=false".
Q_LOGGING_CATEGORY(lcTgui, "tgui")

// Repeat suppression, the way system loggers do it: a line equal to the one
// before is only counted, and the count goes out as one line before the next
// different line, after RepeatFlushMs of repeats, or when the application ends.
// A peer that provokes the same error thousands of times then costs a few lines.
constexpr qint64 RepeatFlushMs = 30000;

struct ConsoleState {
    QMutex mutex{QMutex::Recursive};  // a message handler may log again
    QByteArray last;
    int repeats = 0;
    QElapsedTimer since;  // the first repeat not yet reported
    bool flushAtExit = false;
};

ConsoleState& consoleState()
{
    static ConsoleState* state = new ConsoleState;  // outlives every static destructor
    return *state;
}

void reportRepeatsLocked(ConsoleState& state)
{
    if (state.repeats > 0)
        qCDebug(lcTgui, "last line repeated %d times", state.repeats);
    state.repeats = 0;
}

void flushRepeats()
{
    ConsoleState& state = consoleState();
    QMutexLocker lock(&state.mutex);
    reportRepeatsLocked(state);
    state.last.clear();
    state.flushAtExit = false;
}
}  // namespace

void guiLogConsole(const char* text, int length)
{
    if (!lcTgui().isDebugEnabled())
        return;
    const QByteArray line = QByteArray::fromRawData(text, length < 0 ? int(qstrlen(text)) : length);
    ConsoleState& state = consoleState();
    QMutexLocker lock(&state.mutex);
    if (!state.last.isNull() && line == state.last) {
        if (state.repeats++ == 0)
            state.since.start();
        else if (state.since.elapsed() >= RepeatFlushMs)
            reportRepeatsLocked(state);
        if (!state.flushAtExit && QCoreApplication::instance()) {
            state.flushAtExit = true;
            qAddPostRoutine(flushRepeats);
        }
        return;
    }
    reportRepeatsLocked(state);
    state.last = QByteArray(line.constData(), line.size());
    qCDebug(lcTgui, "%.*s", int(line.size()), line.constData());
}

CTavoGuiLog* hostGuiLog = nullptr;

void guiLog(UtilLogLevelT level, const char* format, ...)
{
    if (!format)
        return;
    CTavoGuiLog* log = hostGuiLog;
    if (log && CTavoGuiLog::m_bEnabled && log->dropsLevel(level))
        return;
    va_list args;
    va_start(args, format);
    if (hostGuiLog && CTavoGuiLog::m_bEnabled) {
        hostGuiLog->log(level, format, args);
    } else {
        char buffer[16383 + 1];
        const int length = vsnprintf(buffer, sizeof buffer, format, args);
        guiLogConsole(buffer, qBound(0, length, int(sizeof buffer) - 1));
    }
    va_end(args);
}

void guiLogRaw(UtilLogLevelT level, const char* data)
{
    if (!data)
        return;
    if (hostGuiLog && CTavoGuiLog::m_bEnabled)
        hostGuiLog->logRaw(level, data);
    else
        guiLogConsole(data, int(qstrnlen(data, 16383)));
}
