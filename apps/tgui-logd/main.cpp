// tgui-logd: the log server. Drains the log queue and writes one readable line
// per record: time, label, level, text and the count of messages the client
// could not deliver before it. Statistics records become one line each.
#include <QCommandLineParser>
#include <QCoreApplication>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

#include "LogRecordWriter.h"
#include "ProgramCommandLine.h"
#include "log/RtosProtMsgQ.h"
#include "log/UtilLog.h"
#include "log/UtilLogMsg.h"

namespace {
volatile sig_atomic_t g_stop = 0;

void onSignal(int)
{
    g_stop = 1;
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("tgui-logd"));

    QCommandLineParser cli;
    QCommandLineOption queue({"q", "queue"}, "Read the queue <name> (default: $TGUI_LOG_QUEUE or smqlogq).",
                             "name");
    QCommandLineOption output({"o", "output"}, "Append the lines to <file> instead of standard output.",
                              "file");
    QCommandLineOption count({"n", "count"}, "Stop after <count> records.", "count");
    QCommandLineOption unlinkQueue({"u", "unlink"}, "Remove the queue's name when stopping.");
    cli.addOptions({queue, output, count, unlinkQueue});
    cmdline::parse(cli, QStringLiteral("Log server of TGUILib: prints the records of the log queue, "
                                       "one line each, until SIGTERM or SIGINT."));
    long long limit = -1;
    if (!cmdline::number(cli, count, 1, LLONG_MAX, &limit))
        return cmdline::UsageError;
    if (cli.isSet(queue)) {
        // The name becomes "/name": one path component.
        const QString name = cli.value(queue);
        if (name.isEmpty() || name.contains(QLatin1Char('/')) || name.size() > 251)
            return cmdline::usageError(
                QStringLiteral("--queue wants a name of 1 to 251 characters without '/', not '%1'").arg(name));
        setenv("TGUI_LOG_QUEUE", name.toLocal8Bit().constData(), 1);
    }
    const QByteArray outName = cli.value(output).toLocal8Bit();
    const char* outPath = cli.isSet(output) ? outName.constData() : nullptr;
    const bool unlinkAtEnd = cli.isSet(unlinkQueue);

    FILE* out = stdout;
    if (outPath) {
        out = fopen(outPath, "a");
        if (!out) {
            fprintf(stderr, "tgui-logd: cannot open %s: %s\n", outPath, strerror(errno));
            return 1;
        }
    }
    static char outBuffer[1 << 16];
    setvbuf(out, outBuffer, _IOFBF, sizeof outBuffer);

    struct sigaction action;
    memset(&action, 0, sizeof action);
    action.sa_handler = onSignal;  // no SA_RESTART: a blocked receive returns
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);

    rtosProtMsgQInfo info;
    rtosProtMsgQInfoZero(&info);
    rtosProtMsgQInfoSetName(&info, utilLogQueueName());
    rtosProtMsgQCreate(&info, UTIL_LOG_QUEUE_CAPACITY, (int)sizeof(utilLogMsg),
                       RTOS_PROT_MSGQ_OPT_BLOCKING);
    rtosProtMsgQ waiting = utilLogQueueOpen(&info, RTOS_PROT_MSGQ_MODE_RX);
    // A second, non-blocking handle drains bursts; the output is flushed only
    // when the queue runs dry.
    rtosProtMsgQInfoSetOptions(&info, 0);
    rtosProtMsgQ draining = waiting ? rtosProtMsgQOpenExisting(&info, RTOS_PROT_MSGQ_MODE_RX)
                                    : nullptr;
    if (!waiting || !draining) {
        fprintf(stderr, "tgui-logd: cannot open queue %s\n", info.name);
        rtosProtMsgQClose(waiting);
        return 1;
    }
    struct mq_attr attr;
    mq_getattr(draining->mqd, &attr);
    std::vector<char> buffer((size_t)attr.mq_msgsize + 1);
    fprintf(stderr, "tgui-logd: reading %s (%ld records of %ld bytes)\n", info.name,
            (long)attr.mq_maxmsg, (long)attr.mq_msgsize);

    // The wait is bounded: a stop that comes between the check of g_stop and
    // the start of the wait would otherwise wait for the next record.
    const int waitTicks = qMax(1, rtosLinuxProtGetTicksPerSec() / 5);
    unsigned long long records = 0, ignored = 0;
    while (!g_stop && (limit < 0 || (long long)records < limit)) {
        int n = rtosProtMsgQReceive(draining, buffer.data(), (int)attr.mq_msgsize, -1);
        if (n < 0 && errno == EAGAIN) {
            fflush(out);
            n = rtosProtMsgQReceive(waiting, buffer.data(), (int)attr.mq_msgsize, waitTicks);
        }
        if (n < 0) {
            if (errno == EINTR || errno == EAGAIN || errno == ETIMEDOUT)
                continue;
            fprintf(stderr, "tgui-logd: receive failed: %s\n", strerror(errno));
            break;
        }
        if (writeLogRecord(out, buffer.data(), n))
            ++records;
        else
            ++ignored;
    }
    fflush(out);
    fprintf(stderr, "tgui-logd: %llu records, %llu ignored\n", records, ignored);
    rtosProtMsgQClose(draining);
    rtosProtMsgQClose(waiting);
    if (unlinkAtEnd)
        rtosProtMsgQDelete(&info);
    if (out != stdout)
        fclose(out);
    return 0;
}
