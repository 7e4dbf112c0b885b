#pragma once
#include "txml_export.h"
// A softkey document: always exactly TXML_MAX_SOFTKEYS (20) entries, of which
// the first `count` are used.
#include "CTXMLSoftkey.h"

class TXML_EXPORT CTXMLSoftkeys
{
public:
    int setId;                        // header: number of the key set, 0 when not given
    CTXMLSoftkey keys[TXML_MAX_SOFTKEYS];
    int count;                        // used entries
    tavoElementTypeT elementType;

    CTXMLSoftkeys() { reset(tavoElementSoftkeys); }

    // Index out of range gives a blank spare entry, never a fault.
    CTXMLSoftkey& operator[](int i);
    const CTXMLSoftkey& operator[](int i) const;
    bool operator==(const CTXMLSoftkeys& o) const;
    bool operator!=(const CTXMLSoftkeys& o) const { return !(*this == o); }
    // Appends a key; returns its index, or -1 when all 20 are used.
    int add(const char* label, const char* url, int position,
            CTXMLSoftkey::SoftkeyTypeT type = CTXMLSoftkey::SoftkeyNormal,
            const char* url2 = nullptr, const char* url3 = nullptr,
            const char* valueList = nullptr, ItemPriorityT priority = ItemPriorityNormal,
            const char* groupLabel = nullptr, int defaultIndex = 0,
            CTXMLIcon::tavoIcon icon = CTXMLIcon::TAVO_ICON_NONE,
            SoftkeyLayoutTypeT layoutType = SoftkeyLayoutDefault);
    int add(const CTXMLSoftkey& key);
    // First used key whose url begins with prefix ("softkey:539-"); -1 when none.
    int findItemByUrl(const char* prefix) const;
    void reset(tavoElementTypeT type = tavoElementSoftkeys);
    // The next free entry, reset, counted as used; null when all 20 are used.
    CTXMLSoftkey* append();
    int size() const { return count; }
};
