// The appDefs functions: header validity limits, checksum, name table and
// registration texts, as a peer process relies on them.
#include <QtTest>
#include <cstring>

#include "core/AppDefs.h"

namespace {
GuiAppsMsgHdrT header(int32_t length, int32_t source, int32_t destination, uint8_t type,
                      uint16_t reserved = 0)
{
    GuiAppsMsgHdrT h;
    h.length = length;
    h.source = source;
    h.destination = destination;
    h.msgType = type;
    h.reserved = reserved;
    h.checksum = uint8_t((uint32_t(length) + uint32_t(source) + uint32_t(destination) + type + reserved) & 0xFF);
    return h;
}
}  // namespace

class TestAppDefs : public QObject
{
    Q_OBJECT
private slots:
    void assembledFramesCarryHeaderAndPayload()
    {
        QCOMPARE(appDefsHeaderLength(), 16);
        char* empty = appDefsAssembleMessage(GuiAppsZedagui, GuiAppsTavoapp, "", 0, GuiAppsMsgTxml);
        GuiAppsT src, dst;
        int length = -1;
        GuiAppsMsgTypeT type;
        QVERIFY(appDefsParseHeader(empty, src, dst, length, type));
        QCOMPARE(length, 0);
        delete[] empty;

        char* frame = appDefsAssembleMessage(GuiAppsDbs, GuiAppsT(GuiAppsZedagui | GuiAppsBrowser),
                                             "abc", 3, GuiAppsMsgDb);
        QVERIFY(appDefsParseHeader(frame, src, dst, length, type));
        QCOMPARE(int(src), int(GuiAppsDbs));
        QCOMPARE(int(dst), 3);
        QCOMPARE(length, 3);
        QCOMPARE(int(type), int(GuiAppsMsgDb));
        QCOMPARE(QByteArray(frame + 16, 3), QByteArray("abc"));
        GuiAppsMsgHdrT h;
        std::memcpy(&h, frame, 16);
        QCOMPARE(int(h.checksum), (3 + 8 + 3 + 1) & 0xFF);
        QCOMPARE(int(h.reserved), 0);
        delete[] frame;
    }

    void checksumAddsWholeValuesWithWrapAround()
    {
        GuiAppsMsgHdrT h;
        appDefsAssembleHdr(h, GuiAppsTavoapp, GuiAppsZedagui, 0x1FF, GuiAppsMsgMemshow);
        QCOMPARE(int(h.checksum), (0x1FF + 256 + 1 + 4) & 0xFF);
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
        QTest::newRow("type 2 reserved") << 0 << 1 << 2 << 0 << true;
        QTest::newRow("type 5") << 0 << 1 << 5 << 0 << false;
        QTest::newRow("destination 0xFFFF") << 0 << 0xFFFF << 0 << 0 << true;
        QTest::newRow("destination 0x10000") << 0 << 0x10000 << 0 << 0 << false;
        QTest::newRow("negative destination") << 0 << -1 << 0 << 0 << true;
        QTest::newRow("reserved in checksum") << 4 << 1 << 0 << 1 << true;
    }
    void validityLimits()
    {
        QFETCH(int, length);
        QFETCH(int, destination);
        QFETCH(int, type);
        QFETCH(int, reserved);
        QFETCH(bool, valid);
        const GuiAppsMsgHdrT h = header(length, 256, destination, uint8_t(type), uint16_t(reserved));
        QCOMPARE(appDefsIsValidHdr(&h) != 0, valid);
    }

    void nullAndRejectedHeadersLeaveOutputsAlone()
    {
        QCOMPARE(appDefsIsValidHdr(nullptr), 0);
        GuiAppsT src = GuiAppsEm, dst = GuiAppsEm;
        int length = 77;
        GuiAppsMsgTypeT type = GuiAppsMsgMemshow;
        QCOMPARE(appDefsParseHeader(nullptr, src, dst, length, type), 0);
        const GuiAppsMsgHdrT bad = header(0, 0x10000, 1, 0);
        QCOMPARE(appDefsParseHeader(&bad, src, dst, length, type), 0);
        QCOMPARE(int(src), int(GuiAppsEm));
        QCOMPARE(length, 77);
    }

    void nameTable()
    {
        QCOMPARE(appDefsName(GuiAppsNone), static_cast<const char*>(nullptr));
        QCOMPARE(appDefsName(GuiAppsT(3)), "browser");
        QCOMPARE(appDefsName(GuiAppsT(0x1000)), static_cast<const char*>(nullptr));
        QCOMPARE(appDefsName(GuiAppsT(0x1008)), "dbs");
        QCOMPARE(appDefsName(GuiAppsTavoapp), "tavoapp");
        QCOMPARE(int(appDefsType("txmlProxy")), 32);
        QCOMPARE(int(appDefsType("Zedagui")), 0);
        QCOMPARE(int(appDefsType("")), 0);
        QCOMPARE(int(appDefsType(nullptr)), 0);
        for (int bit = 0; bit < 12; ++bit)
            QCOMPARE(int(appDefsType(appDefsName(GuiAppsT(1 << bit)))), 1 << bit);
    }

    void registrationTakesTheFirstRowOfTheTable()
    {
        GuiAppsT app = GuiAppsNone;
        char name[32] = {0};
        char extra[32] = {0};
        QCOMPARE(int(appDefsParseRegsitration("browser zedagui", app, name, extra, 31, 31)), 1);
        QCOMPARE(int(app), 1);
        QCOMPARE(name, "zedagui");
        // d = 15 - 7 = 8: the extra text begins at offset 9, whatever the name's place.
        QCOMPARE(extra, "edagui");
    }

    void registrationExtraStartsAtAFixedOffset()
    {
        GuiAppsT app = GuiAppsNone;
        char name[32] = {0};
        char extra[32] = {0};
        appDefsParseRegsitration("dbs-x", app, name, extra, 31, 31);
        QCOMPARE(int(app), 8);
        QCOMPARE(name, "dbs");
        QCOMPARE(extra, "-x");  // offset 5 - 3 + 1 = 3

        char untouched[8] = "keep";
        GuiAppsT kept = GuiAppsEm;
        QCOMPARE(int(appDefsParseRegsitration("osd", kept, name, untouched, 31, 7)), 4);
        QCOMPARE(untouched, "keep");  // d == 0

        GuiAppsT none = GuiAppsQml;
        QCOMPARE(int(appDefsParseRegsitration("nobody", none, name, untouched, 31, 7)), int(GuiAppsQml));
        QCOMPARE(int(appDefsParseRegsitration(nullptr, none, name, untouched, 31, 7)), int(GuiAppsQml));
    }
};

QTEST_GUILESS_MAIN(TestAppDefs)
#include "tst_appdefs.moc"
