#pragma once
#include "txml_export.h"
// One row of a flyout: a label with an icon that sends its URL when chosen.
// A divider is an item whose texts are all "GROUPDIV".
#include "CTXMLIcon.h"
#include "TxmlTypes.h"

class TXML_EXPORT CTXMLFlyoutItem
{
public:
    char label[TXML_LABEL_SIZE];          // first text (UTF-8)
    char url[TXML_URI_SIZE];              // event sent when chosen
    char badge[TXML_LABEL_SIZE];          // third text, drawn as a badge
    char abbreviation[TXML_SHORT_SIZE];   // shown instead of the label when short of room
    char value[TXML_URI_SIZE];            // the item's own value, if any
    char data[TXML_URI_SIZE];             // event data; filled by whoever builds a cluster
    CTXMLIcon icon;
    bool enabled;
    bool selected;                        // check mark
    bool hasQuickAccess;                  // takes a quick access digit

    CTXMLFlyoutItem() { reset(); }
    void reset();
    void set(const char* label, const char* url, const char* badge, const CTXMLIcon* icon,
             bool enabled = true, const char* value = nullptr, bool selected = false,
             bool hasQuickAccess = true, const char* abbreviation = nullptr);
    bool isGroupDiv() const;
    bool operator==(const CTXMLFlyoutItem& o) const;
    bool operator!=(const CTXMLFlyoutItem& o) const { return !(*this == o); }
};
