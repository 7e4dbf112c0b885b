#pragma once
#include "tgui_export.h"
// A boolean shared by every process of the device under a name, kept in the
// first byte of a 16-byte QSharedMemory segment. The segment's own lock guards
// each access; the class never waits for the flag. The segment, and with it
// the flag, lasts while at least one process holds a CTavoGlobalLock of that
// name.
#include <QString>
#include <cstddef>
#include <cstdint>
#include <type_traits>

class QSharedMemory;

// The segment as every process of the device sees it, x86-64 and 32-bit ARM
// alike: the flag in the first byte, the rest reserved and zero.
struct TavoGlobalLockSegmentT {
    uint8_t locked;
    uint8_t reserved[15];
};
static_assert(sizeof(TavoGlobalLockSegmentT) == 16, "the lock's segment is 16 bytes");
static_assert(offsetof(TavoGlobalLockSegmentT, locked) == 0, "the flag is the first byte");
static_assert(alignof(TavoGlobalLockSegmentT) == 1, "the segment has no padding to align");
static_assert(std::is_trivially_copyable<TavoGlobalLockSegmentT>::value
                  && std::is_standard_layout<TavoGlobalLockSegmentT>::value,
              "the segment is plain memory");

class TGUI_EXPORT CTavoGlobalLock
{
public:
    explicit CTavoGlobalLock(const QString& name);
    ~CTavoGlobalLock();
    CTavoGlobalLock(const CTavoGlobalLock&) = delete;
    CTavoGlobalLock& operator=(const CTavoGlobalLock&) = delete;

    // false, with a log line, when the segment could not be made.
    bool locked();
    void setLocked(bool value);

    bool isValid() const { return m_memory != nullptr; }
    const QString& name() const { return m_name; }

private:
    QSharedMemory* m_memory;
    QString m_name;
};
