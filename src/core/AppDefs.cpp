#include "core/AppDefs.h"

#include <cstring>

namespace {
const char* const kNames[GuiAppsCount] = {"zedagui", "browser", "osd",     "dbs",
                                          "pdc",     "txmlProxy", "tavosim", "ec",
                                          "tavoapp", "sandbox", "qml",     "em"};

// Whole 32-bit values added with wrap-around; unsigned keeps that defined.
uint8_t checksumOf(int32_t length, int32_t source, int32_t destination, uint8_t type, uint16_t reserved)
{
    const uint32_t sum = uint32_t(destination) + uint32_t(length) + uint32_t(type) + uint32_t(reserved)
                         + uint32_t(source);
    return uint8_t(sum & 0xFF);
}
}  // namespace

const char* appDefsName(GuiAppsT app)
{
    const unsigned bits = unsigned(app) & ((1u << GuiAppsCount) - 1);
    for (int row = GuiAppsCount - 1; row >= 0; --row) {
        if (bits & (1u << row))
            return kNames[row];
    }
    return nullptr;
}

GuiAppsT appDefsType(const char* name)
{
    if (!name)
        return GuiAppsNone;
    for (int row = 0; row < GuiAppsCount; ++row) {
        if (std::strcmp(name, kNames[row]) == 0)
            return GuiAppsT(1 << row);
    }
    return GuiAppsNone;
}

GuiAppsT appDefsParseRegsitration(const char* text, GuiAppsT& app, char* name, char* extra,
                                  int nameLen, int extraLen)
{
    if (!text)
        return app;
    for (int row = 0; row < GuiAppsCount; ++row) {
        if (!std::strstr(text, kNames[row]))
            continue;
        app = GuiAppsT(1 << row);
        if (name && nameLen > 0)
            std::strncpy(name, kNames[row], size_t(nameLen));
        // The extra text starts at a fixed offset, wherever the name stood:
        // peers depend on exactly this cut.
        const long d = long(std::strlen(text)) - long(std::strlen(kNames[row]));
        if (d > 0 && extra && extraLen > 0)
            std::strncpy(extra, text + d + 1, size_t(extraLen));
        return app;
    }
    return app;
}

void appDefsAssembleHdr(GuiAppsMsgHdrT& hdr, GuiAppsT source, GuiAppsT destination, int length,
                        GuiAppsMsgTypeT type)
{
    hdr.length = length;
    hdr.source = source;
    hdr.destination = destination;
    hdr.msgType = uint8_t(type);
    hdr.reserved = 0;
    hdr.checksum = checksumOf(length, source, destination, hdr.msgType, 0);
}

int appDefsIsValidHdr(const GuiAppsMsgHdrT* hdr)
{
    if (!hdr)
        return 0;
    // A negative length passes on purpose; the reader copes with it.
    if (hdr->length > 0xFFFFFD)
        return 0;
    if (hdr->msgType > GuiAppsMsgMemshow)
        return 0;
    if (hdr->destination >= 0x10000)
        return 0;
    if (hdr->source >= 0x10000)
        return 0;
    if (hdr->checksum
        != checksumOf(hdr->length, hdr->source, hdr->destination, hdr->msgType, hdr->reserved))
        return 0;
    return 1;
}

int appDefsParseHeader(const void* raw, GuiAppsT& source, GuiAppsT& destination, int& length,
                       GuiAppsMsgTypeT& type)
{
    if (!raw)
        return 0;
    GuiAppsMsgHdrT hdr;
    std::memcpy(&hdr, raw, sizeof hdr);  // raw may be unaligned
    if (!appDefsIsValidHdr(&hdr))
        return 0;
    source = GuiAppsT(hdr.source);
    destination = GuiAppsT(hdr.destination);
    length = hdr.length;
    type = GuiAppsMsgTypeT(hdr.msgType);
    return 1;
}

int appDefsHeaderLength()
{
    return int(sizeof(GuiAppsMsgHdrT));
}

int appDefsFrameLength(const void* data, int available, GuiAppsMsgHdrT* header)
{
    if (!data || available < int(sizeof(GuiAppsMsgHdrT)))
        return 0;
    GuiAppsMsgHdrT hdr;
    std::memcpy(&hdr, data, sizeof hdr);  // data may be unaligned
    if (header)
        *header = hdr;
    if (!appDefsIsValidHdr(&hdr) || hdr.length < 0)
        return -1;
    const int size = int(sizeof hdr) + hdr.length;  // length <= 0xFFFFFD: no overflow
    return available >= size ? size : 0;
}

char* appDefsAssembleMessage(GuiAppsT source, GuiAppsT destination, const void* payload, int length,
                             GuiAppsMsgTypeT type)
{
    if (length < 0)
        length = 0;
    GuiAppsMsgHdrT hdr;
    appDefsAssembleHdr(hdr, source, destination, length, type);
    char* frame = new char[sizeof hdr + size_t(length)];
    std::memcpy(frame, &hdr, sizeof hdr);
    if (payload && length > 0)
        std::memcpy(frame + sizeof hdr, payload, size_t(length));
    else if (length > 0)
        std::memset(frame + sizeof hdr, 0, size_t(length));
    return frame;
}
