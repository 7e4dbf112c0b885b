#pragma once
#include "tgui_export.h"
// rtosProtMsgQ...: the phone's real-time style queue interface over POSIX
// message queues. A description (`rtosProtMsgQInfo`) is filled first; opening
// it gives a handle that owns the queue descriptor.
#include <cstddef>
#include <mqueue.h>

// Longest part of a queue name taken from the caller; the stored name is "/"
// followed by it and a NUL.
#define RTOS_PROT_MSGQ_NAME_MAX 251
// Option bit 4: the queue blocks; without it every operation is non-blocking.
#define RTOS_PROT_MSGQ_OPT_BLOCKING 0x10
// Open modes: receive, send, both. The queue itself is always opened read-write.
#define RTOS_PROT_MSGQ_MODE_RX 1
#define RTOS_PROT_MSGQ_MODE_TX 2
#define RTOS_PROT_MSGQ_MODE_RXTX 3

struct LinuxProtMsgQIdT
{
    int flags;     // open flags: O_NONBLOCK (2048) unless option bit 4 is set
    int capacity;  // messages the queue holds
    int msgSize;   // largest message in bytes
    int options;   // options as given
    int mode;      // mode of the open handle
    mqd_t mqd;     // descriptor of an open handle, -1 in a plain description
    char name[256];
    int reserved[2];
};
static_assert(sizeof(LinuxProtMsgQIdT) == 288, "queue description is 288 bytes");
// Same on x86-64 and 32-bit ARM: mqd_t is an int on Linux, so every field is a
// 32-bit word or a byte.
static_assert(sizeof(mqd_t) == 4, "queue descriptor is a 32-bit int");
static_assert(offsetof(LinuxProtMsgQIdT, flags) == 0, "queue description layout");
static_assert(offsetof(LinuxProtMsgQIdT, capacity) == 4, "queue description layout");
static_assert(offsetof(LinuxProtMsgQIdT, msgSize) == 8, "queue description layout");
static_assert(offsetof(LinuxProtMsgQIdT, options) == 12, "queue description layout");
static_assert(offsetof(LinuxProtMsgQIdT, mode) == 16, "queue description layout");
static_assert(offsetof(LinuxProtMsgQIdT, mqd) == 20, "queue description layout");
static_assert(offsetof(LinuxProtMsgQIdT, name) == 24, "queue description layout");
static_assert(offsetof(LinuxProtMsgQIdT, reserved) == 280, "queue description layout");
static_assert(alignof(LinuxProtMsgQIdT) == 4, "queue description alignment");

typedef LinuxProtMsgQIdT rtosProtMsgQInfo;
// An open queue; null when opening failed.
typedef LinuxProtMsgQIdT* rtosProtMsgQ;

TGUI_EXPORT void rtosProtMsgQInfoZero(rtosProtMsgQInfo* info);
TGUI_EXPORT void rtosProtMsgQInfoSetOptions(rtosProtMsgQInfo* info, int options);
TGUI_EXPORT void rtosProtMsgQInfoSetName(rtosProtMsgQInfo* info, const char* name);
// Stores capacity, size and options; no system call. 0, or -1 for a null description.
TGUI_EXPORT int rtosProtMsgQCreate(rtosProtMsgQInfo* info, int capacity, int messageSize, int options);
// Opens (and creates if needed) the described queue.
TGUI_EXPORT rtosProtMsgQ rtosProtMsgQOpen(const rtosProtMsgQInfo* info, int mode);
// Opens the described queue only if it exists.
TGUI_EXPORT rtosProtMsgQ rtosProtMsgQOpenExisting(const rtosProtMsgQInfo* info, int mode);
TGUI_EXPORT int rtosProtMsgQClose(rtosProtMsgQ queue);
// Timeouts are in ticks: negative waits for ever, 0 does not wait.
TGUI_EXPORT int rtosProtMsgQSend(rtosProtMsgQ queue, const void* data, int size, int timeoutTicks,
                     unsigned priority);
// Bytes received, or -1.
TGUI_EXPORT int rtosProtMsgQReceive(rtosProtMsgQ queue, void* buffer, int size, int timeoutTicks);
TGUI_EXPORT int rtosProtMsgQNumMsgs(rtosProtMsgQ queue);
// Removes the queue's name from the system; open handles keep working.
TGUI_EXPORT int rtosProtMsgQDelete(const rtosProtMsgQInfo* info);
TGUI_EXPORT int rtosLinuxProtGetTicksPerSec();
TGUI_EXPORT void rtosLinuxProtMsgQErrorShow(const char* function, const rtosProtMsgQInfo* info);
