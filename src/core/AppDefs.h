#pragma once
// The frame of every message between the phone's processes and the
// appDefs... functions that build and test it. Shared with the peer
// processes, so the layout is wire format: raw memory, device byte order.
#include <cstddef>
#include <cstdint>

// One bit per peer process; a destination may be a mask of several.
enum GuiAppsT {
    GuiAppsNone = 0,
    GuiAppsZedagui = 1 << 0,
    GuiAppsBrowser = 1 << 1,
    GuiAppsOsd = 1 << 2,
    GuiAppsDbs = 1 << 3,
    GuiAppsPdc = 1 << 4,
    GuiAppsTxmlProxy = 1 << 5,
    GuiAppsTavosim = 1 << 6,
    GuiAppsEc = 1 << 7,
    GuiAppsTavoapp = 1 << 8,
    GuiAppsSandbox = 1 << 9,
    GuiAppsQml = 1 << 10,
    GuiAppsEm = 1 << 11
};

enum GuiAppsMsgTypeT {
    GuiAppsMsgTxml = 0,
    GuiAppsMsgDb = 1,
    GuiAppsMsgReserved = 2,
    GuiAppsMsgUiReport = 3,
    GuiAppsMsgMemshow = 4
};

struct GuiAppsMsgHdrT {
    int32_t length;       // payload bytes after the header
    int32_t source;       // GuiAppsT bit of the sender
    int32_t destination;  // GuiAppsT bit(s) of the receiver(s)
    uint8_t msgType;      // GuiAppsMsgTypeT
    uint8_t checksum;
    uint16_t reserved;
};

static_assert(sizeof(GuiAppsMsgHdrT) == 16, "frame header is 16 bytes on the wire");
static_assert(offsetof(GuiAppsMsgHdrT, length) == 0, "header layout");
static_assert(offsetof(GuiAppsMsgHdrT, source) == 4, "header layout");
static_assert(offsetof(GuiAppsMsgHdrT, destination) == 8, "header layout");
static_assert(offsetof(GuiAppsMsgHdrT, msgType) == 12, "header layout");
static_assert(offsetof(GuiAppsMsgHdrT, checksum) == 13, "header layout");
static_assert(offsetof(GuiAppsMsgHdrT, reserved) == 14, "header layout");
