// The global lock between real processes: tgui-child sets, holds and reads
// the flag of a name while this process reads and writes it.
#include <QProcess>
#include <QtTest>

#include "SupervisionTestSupport.h"
#include "supervision/CTavoGlobalLock.h"

namespace {
// What a fresh process reads: "locked=0" or "locked=1".
QByteArray readInChild(const QString& name)
{
    QProcess reader;
    reader.start(childProgram(), {"--lock", name, "--get-lock"});
    if (!reader.waitForFinished(30000) || reader.exitCode() != 0)
        return "failed: " + reader.readAllStandardError();
    return reader.readAllStandardOutput().trimmed();
}
}  // namespace

class TestGlobalLock : public QObject
{
    Q_OBJECT

private slots:
    void sharedBetweenProcessesWhileHeld()
    {
        const QString name = QStringLiteral("tgui-test-lock-%1").arg(QCoreApplication::applicationPid());
        QProcess holder;
        holder.start(childProgram(), {"--lock", name, "--set-lock", "1", "--sleep", "-1"});
        QVERIFY(holder.waitForStarted(30000));

        {
            CTavoGlobalLock here(name);
            QVERIFY(here.isValid());
            QCOMPARE(here.name(), name);
            QTRY_VERIFY_WITH_TIMEOUT(here.locked(), 30000);

            // Our writes reach the others, through the same segment.
            here.setLocked(false);
            QCOMPARE(readInChild(name), QByteArray("locked=0"));
            CTavoGlobalLock second(name);
            QVERIFY(!second.locked());
            second.setLocked(true);
            QVERIFY(here.locked());
            QCOMPARE(readInChild(name), QByteArray("locked=1"));

            // The flag outlives the process that set it while we hold it.
            holder.terminate();
            QVERIFY(holder.waitForFinished(30000));
            QCOMPARE(holder.exitCode(), 0);
            QVERIFY(here.locked());
        }
        // Nobody holds the segment any more: the flag is gone with it.
        QCOMPARE(readInChild(name), QByteArray("locked=0"));
        CTavoGlobalLock fresh(name);
        QVERIFY(fresh.isValid());
        QVERIFY(!fresh.locked());
    }

    void aLockWithoutSegmentReadsFalse()
    {
        LogCapture log;
        CTavoGlobalLock broken{QString()};
        QVERIFY(!broken.isValid());
        QVERIFY2(log.has("QSharedMemory::create failed, error 3"), qPrintable(log.all()));
        QVERIFY(!broken.locked());
        broken.setLocked(true);
        QVERIFY(!broken.locked());
        QCOMPARE(log.count("Accessing invalid CTavoGlobalLock "), 3);
    }
};

QTEST_GUILESS_MAIN(TestGlobalLock)
#include "tst_globallock.moc"
