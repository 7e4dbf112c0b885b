#include "supervision/CTavoGlobalLock.h"

#include <QSharedMemory>

#include "log/GuiLog.h"

CTavoGlobalLock::CTavoGlobalLock(const QString& name)
    : m_memory(new QSharedMemory(name)), m_name(name)
{
    if (m_memory->attach(QSharedMemory::ReadWrite))
        return;
    if (m_memory->create(int(sizeof(TavoGlobalLockSegmentT)), QSharedMemory::ReadWrite))
        return;
    // Another process made it between our two attempts.
    if (m_memory->error() == QSharedMemory::AlreadyExists && m_memory->attach(QSharedMemory::ReadWrite))
        return;
    guiLog(4, "QSharedMemory::create failed, error %d", int(m_memory->error()));
    delete m_memory;
    m_memory = nullptr;
}

CTavoGlobalLock::~CTavoGlobalLock()
{
    delete m_memory;
}

bool CTavoGlobalLock::locked()
{
    if (!m_memory) {
        guiLog(4, "Accessing invalid CTavoGlobalLock %s", qPrintable(m_name));
        return false;
    }
    if (!m_memory->lock()) {
        guiLog(4, "CTavoGlobalLock %s: lock failed, error %d", qPrintable(m_name), int(m_memory->error()));
        return false;
    }
    const bool value = static_cast<const TavoGlobalLockSegmentT*>(m_memory->constData())->locked != 0;
    m_memory->unlock();
    return value;
}

void CTavoGlobalLock::setLocked(bool value)
{
    if (!m_memory) {
        guiLog(4, "Accessing invalid CTavoGlobalLock %s", qPrintable(m_name));
        return;
    }
    if (!m_memory->lock()) {
        guiLog(4, "CTavoGlobalLock %s: lock failed, error %d", qPrintable(m_name), int(m_memory->error()));
        return;
    }
    static_cast<TavoGlobalLockSegmentT*>(m_memory->data())->locked = value ? 1 : 0;
    m_memory->unlock();
}
