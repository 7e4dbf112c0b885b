// The binary layouts shared between processes, byte for byte on every
// architecture: this build's frame, log record, shared log configuration and
// global lock segment
// against the golden files written by the x86-64 build and by the 32-bit ARM
// build (tests/core/wire, made by wire_sample_writer), and each golden file
// read back field by field by this build.
#include <QtTest>
#include <cstring>

#include "WireSamples.h"

namespace {
const QStringList kArchitectures{"x86_64", "arm"};

QByteArray golden(const QString& layout, const QString& arch)
{
    QFile file(QStringLiteral(TGUI_SOURCE_DIR "/tests/core/wire/") + layout + "-" + arch + ".bin");
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Where two byte strings part, for a failure message that names the field.
QString firstDifference(const QByteArray& a, const QByteArray& b)
{
    const int n = qMin(a.size(), b.size());
    for (int i = 0; i < n; ++i) {
        if (a[i] != b[i])
            return QString("byte %1: 0x%2 against 0x%3")
                .arg(i)
                .arg(uchar(a[i]), 2, 16, QChar('0'))
                .arg(uchar(b[i]), 2, 16, QChar('0'));
    }
    return a.size() == b.size() ? QString() : QString("sizes %1 and %2").arg(a.size()).arg(b.size());
}
}  // namespace

class TestWireLayout : public QObject
{
    Q_OBJECT
    QHash<QString, QByteArray> made;

private slots:
    void initTestCase()
    {
        logtest::useRunNames("wire");
        for (const auto& sample : wiresamples::all()) {
            QVERIFY2(!sample.second.isEmpty(), qPrintable(sample.first));
            made.insert(sample.first, sample.second);
        }
        qInfo("architecture %s", qPrintable(wiresamples::architecture()));
    }

    void sameBytesAsEveryArchitecture_data()
    {
        QTest::addColumn<QString>("layout");
        QTest::addColumn<QString>("arch");
        for (const QString& layout : QStringList{"frame", "logrecord", "logconfig", "globallock"}) {
            for (const QString& arch : kArchitectures)
                QTest::newRow(qPrintable(layout + "/" + arch)) << layout << arch;
        }
    }
    void sameBytesAsEveryArchitecture()
    {
        QFETCH(QString, layout);
        QFETCH(QString, arch);
        const QByteArray theirs = golden(layout, arch);
        QVERIFY2(!theirs.isEmpty(), "golden file missing: run wire_sample_writer");
        const QString diff = firstDifference(made.value(layout), theirs);
        QVERIFY2(diff.isEmpty(), qPrintable(layout + " of this build against " + arch + ": " + diff));
    }

    void readFrame_data()
    {
        QTest::addColumn<QString>("arch");
        for (const QString& arch : kArchitectures)
            QTest::newRow(qPrintable(arch)) << arch;
    }
    void readFrame()
    {
        QFETCH(QString, arch);
        const QByteArray bytes = golden("frame", arch);
        QCOMPARE(bytes.size(), 16 + int(strlen(wiresamples::kFramePayload)));
        GuiAppsT source = GuiAppsNone, destination = GuiAppsNone;
        int length = -1;
        GuiAppsMsgTypeT type = GuiAppsMsgReserved;
        QVERIFY(appDefsParseHeader(bytes.constData(), source, destination, length, type));
        QCOMPARE((QList<int>{source, destination, length, type}),
                 (QList<int>{GuiAppsZedagui, GuiAppsTavoapp | GuiAppsDbs,
                             int(strlen(wiresamples::kFramePayload)), GuiAppsMsgTxml}));
        GuiAppsMsgHdrT header;
        memcpy(&header, bytes.constData(), sizeof header);
        QCOMPARE(int(header.reserved), 0);
        QCOMPARE(bytes.mid(16), QByteArray(wiresamples::kFramePayload));
    }

    void readLogRecord_data() { readFrame_data(); }
    void readLogRecord()
    {
        QFETCH(QString, arch);
        const QByteArray bytes = golden("logrecord", arch);
        QCOMPARE(bytes.size(), 548);
        utilLogMsg msg;
        memcpy(&msg, bytes.constData(), sizeof msg);
        const int textLength = int(strlen(wiresamples::kLogText));
        QCOMPARE((QList<uint32_t>{msg.type, msg.size, msg.missed, msg.tick, msg.time, uint32_t(msg.level)}),
                 (QList<uint32_t>{UTIL_LOG_MSG_TEXT, uint32_t(36 + textLength), 0, wiresamples::kTick,
                                  wiresamples::kTime, 3}));
        QCOMPARE(QByteArray(msg.label, 6), QByteArray("tgui\0\0", 6));
        QCOMPARE(QByteArray(msg.text), QByteArray(wiresamples::kLogText));
        // Past the text the record is zero, so no stray process memory travels.
        QCOMPARE(bytes.mid(32 + textLength), QByteArray(548 - 32 - textLength, '\0'));
        QCOMPARE(QByteArray(msg.reserved, 2), QByteArray(2, '\0'));
    }

    void readSharedConfig_data() { readFrame_data(); }
    void readSharedConfig()
    {
        QFETCH(QString, arch);
        const QByteArray bytes = golden("logconfig", arch);
        QCOMPARE(bytes.size(), int(sizeof(UtilLogSharedConfigT)));
        UtilLogSharedConfigT config;
        memcpy(&config, bytes.constData(), sizeof config);
        QCOMPARE(config.magic, UTIL_LOG_SHARED_MAGIC);
        QCOMPARE(config.generation, 4u);  // made, two entries added, one level changed
        const UtilLogSharedEntryT& tgui = config.entries[0];
        const UtilLogSharedEntryT& brow = config.entries[1];
        QCOMPARE((QList<uint32_t>{tgui.label, tgui.instance, tgui.level, tgui.statsEnabled}),
                 (QList<uint32_t>{utilLogSharedLabelWord("tgui"), 0, 1, 1}));
        QCOMPARE((QList<uint32_t>{brow.label, brow.instance, brow.level, brow.statsEnabled}),
                 (QList<uint32_t>{utilLogSharedLabelWord("brow"), 1, 5, 0}));
        QCOMPARE(bytes.mid(8 + 2 * 16), QByteArray(bytes.size() - 8 - 2 * 16, '\0'));
        // The label word is the first four characters in memory order.
        QCOMPARE(bytes.mid(8, 4), QByteArray("tgui"));
    }

    // Each architecture's segment, put into a fresh segment, is what this
    // build's lock reads; a cleared flag reads as unlocked.
    void readGlobalLock_data() { readFrame_data(); }
    void readGlobalLock()
    {
        QFETCH(QString, arch);
        const QByteArray bytes = golden("globallock", arch);
        QCOMPARE(bytes.size(), int(sizeof(TavoGlobalLockSegmentT)));
        QCOMPARE(bytes, QByteArray(1, '\x01') + QByteArray(15, '\0'));
        const QString name = wiresamples::globalLockName() + "-" + arch;
        QSharedMemory segment(name);
        QVERIFY2(segment.create(bytes.size()), qPrintable(segment.errorString()));
        memcpy(segment.data(), bytes.constData(), size_t(bytes.size()));
        CTavoGlobalLock lock(name);
        QVERIFY(lock.isValid());
        QVERIFY(lock.locked());
        static_cast<char*>(segment.data())[0] = 0;
        QVERIFY(!lock.locked());
    }
};

QTEST_GUILESS_MAIN(TestWireLayout)
#include "tst_wirelayout.moc"
