// The frame header is wire format: its bytes must sit where peers expect them.
#include <QtTest>
#include <cstring>

#include "core/AppDefs.h"

class TestFrameHeader : public QObject
{
    Q_OBJECT
private slots:
    void fieldsSitAtTheirWireOffsets()
    {
        GuiAppsMsgHdrT hdr;
        std::memset(&hdr, 0, sizeof hdr);
        hdr.length = 0x01020304;
        hdr.source = GuiAppsZedagui;
        hdr.destination = GuiAppsTavoapp | GuiAppsDbs;
        hdr.msgType = GuiAppsMsgMemshow;
        hdr.checksum = 0xAB;
        hdr.reserved = 0xBEEF;
        unsigned char raw[16];
        std::memcpy(raw, &hdr, sizeof raw);
        const unsigned char expected[16] = {0x04, 0x03, 0x02, 0x01, 1, 0, 0, 0,
                                            0x08, 0x01, 0, 0, 4, 0xAB, 0xEF, 0xBE};
        QCOMPARE(QByteArray(reinterpret_cast<char*>(raw), 16),
                 QByteArray(reinterpret_cast<const char*>(expected), 16));
    }

    void peerBitsFollowTheNameTable()
    {
        QCOMPARE(int(GuiAppsDbs), 8);
        QCOMPARE(int(GuiAppsTavosim), 64);
        QCOMPARE(int(GuiAppsTavoapp), 256);
        QCOMPARE(int(GuiAppsEm), 2048);
    }
};

QTEST_GUILESS_MAIN(TestFrameHeader)
#include "tst_frameheader.moc"
