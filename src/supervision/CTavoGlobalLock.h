#pragma once
#include "tgui_export.h"
// A boolean shared by every process of the device under a name, kept in the
// first byte of a 16-byte QSharedMemory segment. The segment's own lock guards
// each access; the class never waits for the flag. The segment, and with it
// the flag, lasts while at least one process holds a CTavoGlobalLock of that
// name.
#include <QString>

class QSharedMemory;

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
