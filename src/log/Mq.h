#pragma once
#include "tgui_export.h"
// mq...: thin wrappers of the POSIX message queue calls, one per call. They
// return what the system call returns and leave errno as it set it.
#include <mqueue.h>
#include <sys/types.h>
#include <ctime>

TGUI_EXPORT mqd_t mqOpen(const char* name, int flags, mode_t mode, struct mq_attr* attr);
TGUI_EXPORT int mqClose(mqd_t queue);
TGUI_EXPORT int mqSend(mqd_t queue, const char* data, size_t size, unsigned priority);
TGUI_EXPORT int mqTimedSend(mqd_t queue, const char* data, size_t size, unsigned priority,
                const struct timespec* absTimeout);
TGUI_EXPORT ssize_t mqReceive(mqd_t queue, char* buffer, size_t size, unsigned* priority);
TGUI_EXPORT ssize_t mqTimedReceive(mqd_t queue, char* buffer, size_t size, unsigned* priority,
                       const struct timespec* absTimeout);
TGUI_EXPORT int mqGetAttr(mqd_t queue, struct mq_attr* attr);
TGUI_EXPORT int mqUnlink(const char* name);
