#pragma once
#include "txml_export.h"
// Sizes and small enumerations shared by the TXML document classes. Every
// text field is a fixed buffer; the sizes count UTF-8 bytes including the
// terminating NUL, and a text that does not fit is cut at a character edge.
#include <cstddef>

enum : std::size_t {
    TXML_URI_SIZE = 513,        // URIs and value lists: 512 bytes
    TXML_LABEL_SIZE = 65,       // labels, group labels: 64 bytes
    TXML_SHORT_SIZE = 17,       // abbreviations: 16 bytes
    TXML_NAME_SIZE = 65,        // pair names: 64 bytes
    TXML_VALUE_SIZE = 1025,     // pair values: 1024 bytes
    TXML_ICON_NAME_SIZE = 129,  // icon file names: 128 bytes
    TXML_ICON_LIST_SIZE = 129,  // comma separated icon numbers: 128 bytes
    TXML_TRANSLATION_SIZE = 256,  // key and value of a translation: 255 bytes
    TXML_EVENT_DATA_SIZE = 16384  // data text of an outgoing event
};

enum : int {
    TXML_MAX_PAIRS = 64,
    TXML_MAX_SOFTKEYS = 20,
    TXML_MAX_FLYOUT_ITEMS = 64,
    TXML_MAX_LINE_KEYS = 64,
    TXML_MAX_LIST_MENU = 64,
    TXML_MAX_TRANSLATIONS = 8192
};

// Bits of the flags word of a parsed document (CTXML::flags).
enum TxmlFlagsT : unsigned int {
    TXML_FLAG_SOFTKEYS = 0x0001,
    TXML_FLAG_FLYOUT = 0x0002,
    TXML_FLAG_LINEKEYS = 0x0004,
    TXML_FLAG_LISTMENU = 0x0008,
    TXML_FLAG_APPSTATUS = 0x0010,
    TXML_FLAG_EVENT = 0x0080,
    TXML_FLAG_TRANSLATIONS = 0x2000
};

// Importance of a key or item: 0 none, 1 normal, 2 high, 3 urgent.
enum ItemPriorityT : int { ItemPriorityNone = 0, ItemPriorityNormal = 1, ItemPriorityHigh = 2,
                     ItemPriorityUrgent = 3 };

// How a set of softkeys wants to be laid out.
enum SoftkeyLayoutTypeT : int { SoftkeyLayoutDefault = 0, SoftkeyLayoutCompact = 1,
                          SoftkeyLayoutWide = 2, SoftkeyLayoutHidden = 3 };

// What a set of softkeys belongs to.
enum tavoElementTypeT : int { tavoElementNone = 0, tavoElementSoftkeys = 1, tavoElementMenu = 2,
                        tavoElementPopup = 3, tavoElementLocal = 4 };

namespace txml {
// Copies src into dst[size] and always terminates; a cut never splits a UTF-8
// sequence. Returns false when the text had to be cut. Null src gives "".
TXML_EXPORT bool copyText(char* dst, std::size_t size, const char* src);
TXML_EXPORT bool copyText(char* dst, std::size_t size, const char* src, std::size_t length);
// Appends like copyText; returns false when cut.
TXML_EXPORT bool appendText(char* dst, std::size_t size, const char* src);
// Length of the longest prefix of text[0..length) that fits in limit bytes
// without splitting a UTF-8 sequence.
TXML_EXPORT std::size_t utf8Fit(const char* text, std::size_t length, std::size_t limit);
}  // namespace txml
