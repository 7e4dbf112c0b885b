#pragma once
#include "tgui_export.h"
// The frame of every message between the phone's processes and the
// appDefs... functions that build and test it. Shared with the peer
// processes, so the layout is wire format: raw memory, device byte order.
#include <cstddef>
#include <cstdint>
#include <type_traits>

// One bit per peer process; a destination may be a mask of several.
// Fixed underlying type: a frame may carry any 32-bit mask, and holding it
// in the enum must stay defined behaviour.
enum GuiAppsT : int {
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

enum GuiAppsMsgTypeT : int {
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
// Same on x86-64 and 32-bit ARM: four-byte alignment, nothing but fixed-width
// fields, copied as raw memory.
static_assert(alignof(GuiAppsMsgHdrT) == 4, "header alignment");
static_assert(std::is_trivially_copyable<GuiAppsMsgHdrT>::value
                  && std::is_standard_layout<GuiAppsMsgHdrT>::value,
              "header is plain memory");

// Number of peers in the name table; bit i of a GuiAppsT is row i.
enum { GuiAppsCount = 12 };

// Name of the peer, or null when none of the low 12 bits is set. With several
// bits set, the highest of them names the peer.
TGUI_EXPORT const char* appDefsName(GuiAppsT app);
// The bit of the peer whose name equals the text exactly, or 0.
TGUI_EXPORT GuiAppsT appDefsType(const char* name);
// Finds the first peer of the table whose name occurs in the registration
// text, stores its bit in app, its name in name (strncpy, nameLen) and the text
// from offset strlen(text) - strlen(name) + 1 in extra (strncpy, extraLen).
// Returns app; with no peer found nothing is touched.
TGUI_EXPORT GuiAppsT appDefsParseRegsitration(const char* text, GuiAppsT& app, char* name, char* extra,
                                  int nameLen, int extraLen);
TGUI_EXPORT void appDefsAssembleHdr(GuiAppsMsgHdrT& hdr, GuiAppsT source, GuiAppsT destination, int length,
                        GuiAppsMsgTypeT type);
// Non-zero for a valid header; 0 for an invalid one or a null pointer.
TGUI_EXPORT int appDefsIsValidHdr(const GuiAppsMsgHdrT* hdr);
// Non-zero and the fields filled for a valid header; 0 and outputs untouched otherwise.
TGUI_EXPORT int appDefsParseHeader(const void* raw, GuiAppsT& source, GuiAppsT& destination, int& length,
                       GuiAppsMsgTypeT& type);
TGUI_EXPORT int appDefsHeaderLength();
// For a peer that buffers what it receives: the size of the whole frame at the
// front of data (header plus payload) once all of it has arrived, 0 while more
// bytes are needed, -1 when the first 16 bytes are not a valid header or
// announce a negative length. The header is copied to *header when not null
// and available holds one.
TGUI_EXPORT int appDefsFrameLength(const void* data, int available, GuiAppsMsgHdrT* header = nullptr);
// Header plus payload in one new array, released by the caller with delete[].
TGUI_EXPORT char* appDefsAssembleMessage(GuiAppsT source, GuiAppsT destination, const void* payload, int length,
                             GuiAppsMsgTypeT type);
