// The appDefs functions as a peer process relies on them: the bytes of a frame
// on the wire, header validity limits, the name table and registration texts.
#include <QtTest>
#include <cstring>

#include "core/AppDefs.h"

namespace {
// A header whose checksum adds the whole 32-bit values, reserved included.
GuiAppsMsgHdrT header(int32_t length, int32_t destination, uint8_t type, uint16_t reserved)
{
    const int32_t source = GuiAppsTavoapp;
    GuiAppsMsgHdrT h{length, source, destination, type, 0, reserved};
    h.checksum = uint8_t(uint32_t(length) + uint32_t(source) + uint32_t(destination) + type + reserved);
    return h;
}

QByteArray frameBytes(const QByteArray& payload)
{
    char* frame = appDefsAssembleMessage(GuiAppsTavoapp, GuiAppsZedagui, payload.constData(),
                                         payload.size(), GuiAppsMsgTxml);
    const QByteArray bytes(frame, 16 + payload.size());
    delete[] frame;
    return bytes;
}
}  // namespace

class TestAppDefs : public QObject
{
    Q_OBJECT
private slots:
    void framesOnTheWire()
    {
        QCOMPARE(appDefsHeaderLength(), 16);
        char* frame = appDefsAssembleMessage(GuiAppsZedagui, GuiAppsT(GuiAppsTavoapp | GuiAppsDbs),
                                             "abc", 3, GuiAppsMsgMemshow);
        // Device byte order; checksum 3 + 1 + 264 + 4 = 0x110, low byte kept.
        const char expected[] = "\x03\0\0\0" "\x01\0\0\0" "\x08\x01\0\0" "\x04\x10\0\0" "abc";
        QCOMPARE(QByteArray(frame, 19), QByteArray(expected, 19));
        GuiAppsT src = GuiAppsNone, dst = GuiAppsNone;
        int length = -1;
        GuiAppsMsgTypeT type = GuiAppsMsgTxml;
        QVERIFY(appDefsParseHeader(frame, src, dst, length, type));
        QCOMPARE((QList<int>{src, dst, length, type}), (QList<int>{1, 264, 3, 4}));
        delete[] frame;

        char* empty = appDefsAssembleMessage(GuiAppsDbs, GuiAppsZedagui, "", 0, GuiAppsMsgDb);
        QVERIFY(appDefsParseHeader(empty, src, dst, length, type));
        QCOMPARE(length, 0);
        delete[] empty;

        // Whole values are added, not bytes: 0x1FF + 256 + 1 + 4.
        GuiAppsMsgHdrT h;
        appDefsAssembleHdr(h, GuiAppsTavoapp, GuiAppsZedagui, 0x1FF, GuiAppsMsgMemshow);
        QCOMPARE(int(h.checksum), 0x04);
        QVERIFY(appDefsIsValidHdr(&h));
        h.checksum ^= 1;
        QVERIFY(!appDefsIsValidHdr(&h));
    }

    void validityLimits_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("destination");
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("reserved");
        QTest::addColumn<bool>("valid");
        QTest::newRow("largest length") << 0xFFFFFD << 1 << 0 << 0 << true;
        QTest::newRow("length too large") << 0xFFFFFE << 1 << 0 << 0 << false;
        QTest::newRow("negative length passes") << -5 << 1 << 0 << 0 << true;
        QTest::newRow("type 5") << 0 << 1 << 5 << 0 << false;
        QTest::newRow("destination 0xFFFF") << 0 << 0xFFFF << 0 << 0 << true;
        QTest::newRow("destination 0x10000") << 0 << 0x10000 << 0 << 0 << false;
        QTest::newRow("reserved in checksum") << 4 << 1 << 0 << 1 << true;
    }
    void validityLimits()
    {
        QFETCH(int, length);
        QFETCH(int, destination);
        QFETCH(int, type);
        QFETCH(int, reserved);
        const GuiAppsMsgHdrT h = header(length, destination, uint8_t(type), uint16_t(reserved));
        QTEST(appDefsIsValidHdr(&h) != 0, "valid");
    }

    void rejectedHeadersLeaveOutputsAlone()
    {
        QCOMPARE(appDefsIsValidHdr(nullptr), 0);
        GuiAppsT src = GuiAppsEm, dst = GuiAppsEm;
        int length = 77;
        GuiAppsMsgTypeT type = GuiAppsMsgMemshow;
        QCOMPARE(appDefsParseHeader(nullptr, src, dst, length, type), 0);
        GuiAppsMsgHdrT bad = header(0, 1, 0, 0);
        bad.source = GuiAppsTavoapp + 0x10000;  // out of range, same checksum
        QCOMPARE(appDefsParseHeader(&bad, src, dst, length, type), 0);
        QCOMPARE((QList<int>{src, dst, length, type}), (QList<int>{GuiAppsEm, GuiAppsEm, 77, GuiAppsMsgMemshow}));
    }

    // A peer's buffer: whole frames are cut, partial ones wait, a broken header stops it.
    void frameLengthInABuffer_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("size");
        const QByteArray one = frameBytes("abc");
        QTest::newRow("nothing") << QByteArray() << 0;
        QTest::newRow("15 bytes") << one.left(15) << 0;
        QTest::newRow("header without all its payload") << one.left(18) << 0;
        QTest::newRow("whole frame") << one << 19;
        QTest::newRow("first of two") << one + frameBytes("") << 19;
        QTest::newRow("empty payload") << frameBytes("") << 16;
        QByteArray corrupt = one;
        corrupt[13] = char(corrupt[13] ^ 1);
        QTest::newRow("bad checksum") << corrupt << -1;
        const GuiAppsMsgHdrT negative = header(-1, GuiAppsZedagui, 0, 0);
        QTest::newRow("negative length")
            << QByteArray(reinterpret_cast<const char*>(&negative), 16) << -1;
    }
    void frameLengthInABuffer()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, size);
        GuiAppsMsgHdrT h{};
        // Unaligned on purpose: buffers hand out any offset.
        const QByteArray shifted = "x" + bytes;
        QCOMPARE(appDefsFrameLength(shifted.constData() + 1, bytes.size(), &h), size);
        if (size > 0)
            QCOMPARE(int(h.length), size - 16);
        QCOMPARE(appDefsFrameLength(nullptr, 100), 0);
    }

    void nameTable()
    {
        // A mask names its highest known bit; no known bit, no name.
        QVERIFY(!appDefsName(GuiAppsNone) && !appDefsName(GuiAppsT(0x1000)));
        QCOMPARE(appDefsName(GuiAppsT(3)), "browser");
        QCOMPARE(appDefsName(GuiAppsT(0x1008)), "dbs");
        QVERIFY(!appDefsType("Zedagui") && !appDefsType("") && !appDefsType(nullptr));
        // First, last and one between of the table, both ways.
        QCOMPARE(appDefsName(GuiAppsZedagui), "zedagui");
        QCOMPARE(int(appDefsType("em")), 1 << 11);
        QCOMPARE(int(appDefsType("txmlProxy")), 1 << 5);
    }

    void registrationTexts_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("app");
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("extra");
        // The first row of the table wins, wherever it stands in the text, and the
        // extra text starts at strlen(text) - strlen(name) + 1 all the same.
        QTest::newRow("table order") << QByteArray("browser zedagui") << 1 << QByteArray("zedagui")
                                     << QByteArray("edagui");
        QTest::newRow("suffix") << QByteArray("dbs-x") << 8 << QByteArray("dbs") << QByteArray("-x");
        QTest::newRow("name alone") << QByteArray("osd") << 4 << QByteArray("osd") << QByteArray("keep");
        QTest::newRow("nobody") << QByteArray("nobody") << int(GuiAppsQml) << QByteArray("keep")
                                << QByteArray("keep");
    }
    void registrationTexts()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, app);
        GuiAppsT result = GuiAppsQml;
        char nameBuf[32] = "keep";
        char extraBuf[32] = "keep";
        QCOMPARE(int(appDefsParseRegsitration(text.constData(), result, nameBuf, extraBuf, 31, 31)), app);
        QCOMPARE(int(result), app);
        QTEST(QByteArray(nameBuf), "name");
        QTEST(QByteArray(extraBuf), "extra");
    }
};

QTEST_GUILESS_MAIN(TestAppDefs)
#include "tst_appdefs.moc"
