#pragma once
// Sample bytes of every binary layout that crosses a process boundary, made by
// the library's own code on whichever machine this is built for. The writer
// program stores them as tests/core/wire/<layout>-<architecture>.bin; the test
// compares this build's bytes with the files of every architecture, so that an
// x86-64 process and an ARM one read the same bytes the same way.
//
// A new wire structure gets a sample here, a row in tst_wirelayout and a
// golden file per architecture (see README, "32-bit ARM").
#include <QByteArray>
#include <QCoreApplication>
#include <QList>
#include <QPair>
#include <QString>
#include <QSharedMemory>
#include <QSysInfo>
#include <cstring>

#include "LogTestSupport.h"
#include "core/AppDefs.h"
#include "log/UtilLog.h"
#include "log/UtilLogMsg.h"
#include "supervision/CTavoGlobalLock.h"

namespace wiresamples {

// Clock fields of a log record are fixed after receipt: they are the only bytes
// that depend on when the sample was made.
constexpr uint32_t kTick = 0x01020304u;
constexpr uint32_t kTime = 1767225600u;  // 2026-01-01 00:00:00 UTC
constexpr char kFramePayload[] = "<TXML><Event uri=\"Home:Messages\" type=\"1000\" flags=\"1\"></Event></TXML>";
constexpr char kLogText[] = "Connected to 127.0.0.1:10010 \xc3\xa9t\xc3\xa9";

// "x86_64", "arm", ...: the name in the golden files' names.
inline QString architecture()
{
    return QSysInfo::buildCpuArchitecture();
}

// A TXML frame from zedagui to the core and the database peer.
inline QByteArray frame()
{
    const int length = int(strlen(kFramePayload));
    char* raw = appDefsAssembleMessage(GuiAppsZedagui, GuiAppsT(GuiAppsTavoapp | GuiAppsDbs),
                                       kFramePayload, length, GuiAppsMsgTxml);
    const QByteArray bytes(raw, appDefsHeaderLength() + length);
    delete[] raw;
    return bytes;
}

// A line as the log client sends it and the log server receives it, through a
// real queue of this run (the names come from logtest::useRunNames).
inline QByteArray logRecord()
{
    utilLogSharedConfigRemove();
    QByteArray record;
    {
        logtest::Receiver receiver;
        if (receiver.queue && utilLogCreate("tgui", 0, 2, false) == 0) {
            utilLog(3, "Connected to %s:%d %s", "127.0.0.1", 10010, "\xc3\xa9t\xc3\xa9");
            const QVector<QByteArray> records = receiver.drain();
            if (records.size() == 1 && records[0].size() == int(sizeof(utilLogMsg))) {
                record = records[0];
                utilLogMsg msg;
                memcpy(&msg, record.constData(), sizeof msg);
                msg.tick = kTick;
                msg.time = kTime;
                record = QByteArray(reinterpret_cast<const char*>(&msg), sizeof msg);
            }
        }
        utilLogDestroy();
    }
    utilLogSharedConfigRemove();
    return record;
}

// The shared configuration segment after a tool set up two entries and
// changed a level.
inline QByteArray sharedConfig()
{
    utilLogSharedConfigRemove();
    QByteArray bytes;
    if (utilLogSharedConfigEntryAdd("tgui", 0, 2, true) >= 0
        && utilLogSharedConfigEntryAdd("browser", 1, 5, false) >= 0
        && utilLogSharedConfigActiveLevelSet("tgui", 0, 1) == 0) {
        bytes = QByteArray(reinterpret_cast<const char*>(utilLogSharedConfigGet()),
                           sizeof(UtilLogSharedConfigT));
    }
    utilLogSharedConfigRemove();
    return bytes;
}

// A name of this process for a global lock's segment.
inline QString globalLockName()
{
    return QStringLiteral("tgui-wire-lock-%1").arg(QCoreApplication::applicationPid());
}

// A global lock's segment once a process has set the flag, as another process
// attached to it reads it.
inline QByteArray globalLock()
{
    CTavoGlobalLock lock(globalLockName());
    if (!lock.isValid())
        return QByteArray();
    lock.setLocked(true);
    QSharedMemory other(globalLockName());
    if (!other.attach(QSharedMemory::ReadOnly))
        return QByteArray();
    other.lock();
    const QByteArray bytes(static_cast<const char*>(other.constData()), other.size());
    other.unlock();
    return bytes;
}

// Every sample by its file name stem; empty bytes where making one failed.
inline QList<QPair<QString, QByteArray>> all()
{
    return {{"frame", frame()}, {"logrecord", logRecord()}, {"logconfig", sharedConfig()},
            {"globallock", globalLock()}};
}

}  // namespace wiresamples
