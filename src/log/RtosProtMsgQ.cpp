#include "log/RtosProtMsgQ.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

#include "log/Mq.h"

void rtosProtMsgQInfoZero(rtosProtMsgQInfo* info)
{
    if (info)
        memset(info, 0, sizeof *info);
}

void rtosProtMsgQInfoSetOptions(rtosProtMsgQInfo* info, int options)
{
    if (!info)
        return;
    info->options = options;
    info->flags = (options & RTOS_PROT_MSGQ_OPT_BLOCKING) ? 0 : O_NONBLOCK;
}

void rtosProtMsgQInfoSetName(rtosProtMsgQInfo* info, const char* name)
{
    if (!info)
        return;
    if (!name)
        name = "";
    // A caller's own leading slash would make the name invalid for mq_open.
    while (*name == '/')
        ++name;
    info->name[0] = '/';
    size_t n = strnlen(name, RTOS_PROT_MSGQ_NAME_MAX);
    memcpy(info->name + 1, name, n);
    info->name[1 + n] = '\0';
}

int rtosProtMsgQCreate(rtosProtMsgQInfo* info, int capacity, int messageSize, int options)
{
    if (!info || capacity <= 0 || messageSize <= 0) {
        printf("info=%p,qsize=%d,msgSize=%d,option=0x%x", (void*)info, capacity, messageSize,
               (unsigned)options);
        fflush(stdout);
        return -1;
    }
    info->capacity = capacity;
    info->msgSize = messageSize;
    rtosProtMsgQInfoSetOptions(info, options);
    return 0;
}

void rtosLinuxProtMsgQErrorShow(const char* function, const rtosProtMsgQInfo* info)
{
    const int err = errno;
    printf("rtosLinuxMsg::%s:failed: qName=<%s> mid=<0x%x> errno=<%d:%s>\n",
           function ? function : "", info ? info->name : "", info ? (unsigned)info->mqd : 0u,
           err, strerror(err));
    fflush(stdout);
    errno = err;
}

static rtosProtMsgQ openQueue(const rtosProtMsgQInfo* info, int mode, bool create,
                              const char* function)
{
    if (!info || info->name[0] != '/') {
        errno = EINVAL;
        rtosLinuxProtMsgQErrorShow(function, info);
        return nullptr;
    }
    mqd_t mqd;
    if (create) {
        struct mq_attr attr;
        memset(&attr, 0, sizeof attr);
        attr.mq_maxmsg = info->capacity;
        attr.mq_msgsize = info->msgSize;
        mqd = mqOpen(info->name, info->flags | O_RDWR | O_CREAT, 0666, &attr);
    } else {
        mqd = mqOpen(info->name, info->flags | O_RDWR, 0, nullptr);
    }
    if (mqd == (mqd_t)-1) {
        rtosLinuxProtMsgQErrorShow(function, info);
        return nullptr;
    }
    auto* queue = static_cast<rtosProtMsgQ>(malloc(sizeof(LinuxProtMsgQIdT)));
    if (!queue) {
        mqClose(mqd);
        return nullptr;
    }
    *queue = *info;
    queue->mqd = mqd;
    queue->mode = mode;
    return queue;
}

rtosProtMsgQ rtosProtMsgQOpen(const rtosProtMsgQInfo* info, int mode)
{
    return openQueue(info, mode, true, "rtosProtMsgQOpen");
}

rtosProtMsgQ rtosProtMsgQOpenExisting(const rtosProtMsgQInfo* info, int mode)
{
    return openQueue(info, mode, false, "rtosProtMsgQOpenExisting");
}

int rtosProtMsgQClose(rtosProtMsgQ queue)
{
    if (!queue)
        return -1;
    const int rc = mqClose(queue->mqd);
    free(queue);
    return rc;
}

int rtosLinuxProtGetTicksPerSec()
{
    static const long ticks = sysconf(_SC_CLK_TCK);
    return ticks > 0 ? (int)ticks : 100;
}

// Absolute real-time deadline for a timeout in ticks; 0 ticks is the epoch,
// which has passed, so the timed call does not wait.
static struct timespec deadline(int timeoutTicks)
{
    struct timespec ts = {0, 0};
    if (timeoutTicks == 0)
        return ts;
    const int perSec = rtosLinuxProtGetTicksPerSec();
    clock_gettime(CLOCK_REALTIME, &ts);
    ts.tv_sec += timeoutTicks / perSec;
    ts.tv_nsec += (long)(timeoutTicks % perSec) * (1000000000L / perSec);
    if (ts.tv_nsec >= 1000000000L) {
        ts.tv_sec += 1;
        ts.tv_nsec -= 1000000000L;
    }
    return ts;
}

int rtosProtMsgQSend(rtosProtMsgQ queue, const void* data, int size, int timeoutTicks,
                     unsigned priority)
{
    if (!queue || !data || size < 0)
        return -1;
    int rc;
    if (timeoutTicks < 0) {
        rc = mqSend(queue->mqd, static_cast<const char*>(data), (size_t)size, priority);
    } else {
        const struct timespec ts = deadline(timeoutTicks);
        rc = mqTimedSend(queue->mqd, static_cast<const char*>(data), (size_t)size, priority,
                         &ts);
    }
    return rc == 0 ? 0 : -1;
}

int rtosProtMsgQReceive(rtosProtMsgQ queue, void* buffer, int size, int timeoutTicks)
{
    if (!queue || !buffer || size < 0)
        return -1;
    ssize_t n;
    if (timeoutTicks < 0) {
        n = mqReceive(queue->mqd, static_cast<char*>(buffer), (size_t)size, nullptr);
    } else {
        const struct timespec ts = deadline(timeoutTicks);
        n = mqTimedReceive(queue->mqd, static_cast<char*>(buffer), (size_t)size, nullptr, &ts);
    }
    return n < 0 ? -1 : (int)n;
}

int rtosProtMsgQNumMsgs(rtosProtMsgQ queue)
{
    if (!queue)
        return -1;
    struct mq_attr attr;
    if (mqGetAttr(queue->mqd, &attr) != 0)
        return -1;
    return (int)attr.mq_curmsgs;
}

int rtosProtMsgQDelete(const rtosProtMsgQInfo* info)
{
    if (!info || info->name[0] != '/')
        return -1;
    return mqUnlink(info->name) == 0 ? 0 : -1;
}
