#pragma once
#include "txml_export.h"
// One key of a softkey document. The URL is the key's identity: pressing the
// key sends it; a value list makes the key a choice key with a flyout.
#include "CTXMLFlyoutCluster.h"
#include "CTXMLIcon.h"
#include "TxmlTypes.h"

class TXML_EXPORT CTXMLSoftkey
{
public:
    enum SoftkeyTypeT : int { SoftkeyNormal = 0, SoftkeyPermanent = 1, SoftkeyContextSensitive = 2,
                        SoftkeyLocal = 3 };

    char url[TXML_URI_SIZE];          // event sent on press
    char url2[TXML_URI_SIZE];         // alternative identities (hold, press)
    char url3[TXML_URI_SIZE];
    int position;                     // wanted button index, -1 for none
    char label[TXML_LABEL_SIZE];      // with a value list: labels separated by ";"
    char groupLabel[TXML_LABEL_SIZE]; // label of the flyout that gathers overlapping keys
    int defaultIndex;                 // selected entry of the value list
    SoftkeyTypeT type;
    char valueList[TXML_URI_SIZE];    // values separated by ";"
    ItemPriorityT priority;
    CTXMLFlyoutCluster flyout;        // the key's own flyout items
    CTXMLIcon::tavoIcon icon;
    char iconName[TXML_ICON_NAME_SIZE];
    SoftkeyLayoutTypeT layoutType;
    int id;                           // the key's number in its document
    int extent;                       // width of the key's data; 1280 and more is a wide key

    CTXMLSoftkey() { reset(); }
    void reset();
    void set(const char* label, const char* url, int position, SoftkeyTypeT type = SoftkeyNormal,
             const char* url2 = nullptr, const char* url3 = nullptr,
             const char* valueList = nullptr, ItemPriorityT priority = ItemPriorityNormal,
             const char* groupLabel = nullptr, int defaultIndex = 0,
             CTXMLIcon::tavoIcon icon = CTXMLIcon::TAVO_ICON_NONE,
             SoftkeyLayoutTypeT layoutType = SoftkeyLayoutDefault);
    bool isEmpty() const { return url[0] == 0 && label[0] == 0; }
    bool hasFlyout() const { return !flyout.isEmpty(); }
    bool operator==(const CTXMLSoftkey& o) const;
    bool operator!=(const CTXMLSoftkey& o) const { return !(*this == o); }
};
