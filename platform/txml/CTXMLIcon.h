#pragma once
#include "txml_export.h"
// An icon as a document names it: a number of the phone's icon enumeration,
// optionally a file and a list of further icon numbers.
#include "TxmlTypes.h"

class TXML_EXPORT CTXMLIcon
{
public:
    // Numbers of the phone's icon enumeration (0 .. 521); the rows between
    // the markers are the icon repository's table.
    enum tavoIcon : int {
        TAVO_ICON_NONE = 0,
        TAVO_ICON_MARKER_4 = 4,
        TAVO_ICON_MAX = 521
    };

    tavoIcon id;                          // icon number, 0 for none
    int flags;                            // second number: badge and state bits
    char name[TXML_ICON_NAME_SIZE];       // image file, used when id is 0
    char label[TXML_LABEL_SIZE];          // text under or beside the icon (UTF-8)
    char iconList[TXML_ICON_LIST_SIZE];   // "12,40,7": icons shown in turn

    CTXMLIcon() { reset(); }
    void reset();
    void set(int id, int flags = 0, const char* name = nullptr, const char* label = nullptr,
             const char* iconList = nullptr);
    bool isEmpty() const { return id == TAVO_ICON_NONE && name[0] == 0 && iconList[0] == 0; }
    bool operator==(const CTXMLIcon& o) const;
    bool operator!=(const CTXMLIcon& o) const { return !(*this == o); }
};
