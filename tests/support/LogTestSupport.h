#pragma once
// Real queues and segments for the log tests, named per test run so that runs
// side by side do not meet; the names go to the environment before the first
// log client reads them.
#include <QByteArray>
#include <QStringList>
#include <QTemporaryFile>
#include <QVector>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "log/RtosProtMsgQ.h"
#include "log/UtilLog.h"
#include "log/UtilLogMsg.h"

namespace logtest {

inline void useRunNames(const char* tag)
{
    const QByteArray queue = QByteArray("tst_") + tag + "_" + QByteArray::number(getpid());
    setenv("TGUI_LOG_QUEUE", queue.constData(), 1);
    const unsigned key = 0x5A000000u | ((unsigned)getpid() & 0xFFFFFF);
    setenv("TGUI_LOG_SHM_KEY", QByteArray::number(key).constData(), 1);
}

// The server's end of the log queue, non-blocking.
struct Receiver
{
    rtosProtMsgQInfo info;
    rtosProtMsgQ queue = nullptr;

    Receiver()
    {
        rtosProtMsgQInfoZero(&info);
        rtosProtMsgQInfoSetName(&info, utilLogQueueName());
        rtosProtMsgQCreate(&info, UTIL_LOG_QUEUE_CAPACITY, (int)sizeof(utilLogMsg),
                           UTIL_LOG_QUEUE_OPTIONS);
        queue = utilLogQueueOpen(&info, RTOS_PROT_MSGQ_MODE_RX);
    }
    ~Receiver()
    {
        rtosProtMsgQClose(queue);
        rtosProtMsgQDelete(&info);
    }
    QVector<QByteArray> drain()
    {
        QVector<QByteArray> records;
        char buffer[8192];
        int n;
        while ((n = rtosProtMsgQReceive(queue, buffer, sizeof buffer, 0)) >= 0)
            records << QByteArray(buffer, n);
        return records;
    }
};

inline utilLogMsg asText(const QByteArray& record)
{
    utilLogMsg msg;
    memset(&msg, 0, sizeof msg);
    memcpy(&msg, record.constData(), qMin<size_t>(record.size(), sizeof msg));
    return msg;
}

inline QStringList texts(const QVector<QByteArray>& records)
{
    QStringList out;
    for (const QByteArray& r : records) {
        if (asText(r).type == UTIL_LOG_MSG_TEXT)
            out << QString::fromUtf8(asText(r).text);
    }
    return out;
}

// What `fn` prints on standard output.
template <typename Fn>
QByteArray captureStdout(Fn fn)
{
    QTemporaryFile file;
    if (!file.open())
        return "no temporary file";
    fflush(stdout);
    const int saved = dup(1);
    dup2(file.handle(), 1);
    fn();
    fflush(stdout);
    dup2(saved, 1);
    close(saved);
    file.seek(0);
    return file.readAll();
}

}  // namespace logtest
