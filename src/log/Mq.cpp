#include "log/Mq.h"

#include <fcntl.h>

mqd_t mqOpen(const char* name, int flags, mode_t mode, struct mq_attr* attr)
{
    if (!name)
        return (mqd_t)-1;
    if (flags & O_CREAT)
        return mq_open(name, flags, mode, attr);
    return mq_open(name, flags);
}

int mqClose(mqd_t queue)
{
    return mq_close(queue);
}

int mqSend(mqd_t queue, const char* data, size_t size, unsigned priority)
{
    return mq_send(queue, data, size, priority);
}

int mqTimedSend(mqd_t queue, const char* data, size_t size, unsigned priority,
                const struct timespec* absTimeout)
{
    return mq_timedsend(queue, data, size, priority, absTimeout);
}

ssize_t mqReceive(mqd_t queue, char* buffer, size_t size, unsigned* priority)
{
    return mq_receive(queue, buffer, size, priority);
}

ssize_t mqTimedReceive(mqd_t queue, char* buffer, size_t size, unsigned* priority,
                       const struct timespec* absTimeout)
{
    return mq_timedreceive(queue, buffer, size, priority, absTimeout);
}

int mqGetAttr(mqd_t queue, struct mq_attr* attr)
{
    return mq_getattr(queue, attr);
}

int mqUnlink(const char* name)
{
    return name ? mq_unlink(name) : -1;
}
