// Log throughput and the cost of a filtered-out guiLog call.
//  1. guiLog below the active level, beside a bare out-of-line compare.
//  2. records per second from one client to tgui-logd, beside raw 548-byte
//     queue sends of the same size; the client waits for room in the queue so
//     that every record arrives and the server confirms the count.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <cstdio>
#include <sched.h>
#include <unistd.h>

#include "log/CTavoGuiLog.h"
#include "log/GuiLog.h"
#include "log/RtosProtMsgQ.h"
#include "log/UtilLog.h"
#include "log/UtilLogC.h"

namespace {
volatile int activeLevel = 4;
volatile int sink = 0;

__attribute__((noinline)) void bareCompare(int level, const char* format, ...)
{
    if (level < activeLevel)
        return;
    sink = format[0];
}

template <typename F>
double nsPerCall(long calls, F f)
{
    QElapsedTimer timer;
    timer.start();
    for (long i = 0; i < calls; ++i)
        f(i);
    return double(timer.nsecsElapsed()) / calls;
}

struct Server
{
    QProcess process;
    bool start(long records)
    {
        process.start(QCoreApplication::applicationDirPath() + "/tgui-logd",
                      {"-o", "/dev/null", "-n", QString::number(records)});
        if (!process.waitForStarted())
            return false;
        for (int i = 0; i < 200 && !process.readAllStandardError().contains("reading"); ++i)
            process.waitForReadyRead(50);
        return process.state() == QProcess::Running;
    }
};

// Waits while the queue is full, so nothing is dropped.
void waitForRoom(rtosProtMsgQ probe, int capacity)
{
    while (rtosProtMsgQNumMsgs(probe) >= capacity)
        sched_yield();
}

double throughput(long records, bool throughClient, rtosProtMsgQ probe, int capacity)
{
    Server server;
    if (!server.start(records))
        return -1;
    utilLogMsg raw;
    memset(&raw, 0, sizeof raw);
    raw.type = UTIL_LOG_MSG_TEXT;
    raw.level = 4;
    memcpy(raw.label, "tgui", 5);
    snprintf(raw.text, sizeof raw.text, "call state changed to %d on line %d", 3, 1);
    raw.size = 36 + strlen(raw.text);
    QElapsedTimer timer;
    timer.start();
    for (long i = 0; i < records; ++i) {
        waitForRoom(probe, capacity);
        if (throughClient)
            guiLog(4, "call state changed to %d on line %ld", 3, i);
        else
            rtosProtMsgQSend(probe, &raw, sizeof raw, 0, 1);
    }
    server.process.waitForFinished(60000);
    const double seconds = timer.nsecsElapsed() / 1e9;
    const QByteArray summary = server.process.readAllStandardError();
    if (!summary.contains(QByteArray::number((qlonglong)records) + " records"))
        fprintf(stderr, "server summary: %s\n", summary.constData());
    return records / seconds;
}
}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QByteArray queueName = "bench_log_" + QByteArray::number(getpid());
    setenv("TGUI_LOG_QUEUE", queueName.constData(), 1);
    setenv("TGUI_LOG_SHM_KEY", QByteArray::number(0x5B000000u | (getpid() & 0xFFFFFF)), 1);

    rtosProtMsgQInfo info;
    rtosProtMsgQInfoZero(&info);
    rtosProtMsgQInfoSetName(&info, utilLogQueueName());
    rtosProtMsgQCreate(&info, UTIL_LOG_QUEUE_CAPACITY, (int)sizeof(utilLogMsg),
                       UTIL_LOG_QUEUE_OPTIONS);
    rtosProtMsgQ probe = utilLogQueueOpen(&info, RTOS_PROT_MSGQ_MODE_TX);
    if (!probe)
        return 1;
    const int capacity = probe->capacity;

    hostGuiLog = new CTavoGuiLog("tgui", 0, false);
    CTavoGuiLog::m_bEnabled = true;
    utilLogSharedConfigInit();  // attached: the generation word is read per call

    const long calls = 20000000;
    const double filtered = nsPerCall(calls, [](long i) { guiLog(1, "detail %ld", i); });
    const double bare = nsPerCall(calls, [](long i) { bareCompare(1, "detail %ld", i); });
    printf("filtered-out guiLog: %6.2f ns/call   bare out-of-line compare: %6.2f ns/call\n",
           filtered, bare);

    const long records = 200000;
    const double viaClient = throughput(records, true, probe, capacity);
    const double viaRaw = throughput(records, false, probe, capacity);
    printf("to tgui-logd (queue of %d): guiLog %9.0f records/s   raw 548-byte send %9.0f "
           "records/s\n",
           capacity, viaClient, viaRaw);

    CTavoGuiLog::m_bEnabled = false;
    delete hostGuiLog;
    hostGuiLog = nullptr;
    utilLogDestroy();
    utilLogSharedConfigRemove();
    rtosProtMsgQClose(probe);
    rtosProtMsgQDelete(&info);
    return 0;
}
