#pragma once
#include "txml_export.h"
// A line key: a key of the phone's line row (lines, speed dials, BLF...).
// The label travels in Base64 so that any text survives the pair syntax.
#include "CTXMLIcon.h"
#include "TxmlTypes.h"

class TXML_EXPORT CTXMLLineKey
{
public:
    int kind;                          // 1 line, 2 call park, 4 speed dial, 5 shared line,
                                       // 7 BLF, 10 presence; others are ignored by the GUI
    int id;
    char label[TXML_URI_SIZE];         // Base64 of the UTF-8 label
    char url[TXML_URI_SIZE];
    char url2[TXML_URI_SIZE];
    char url3[TXML_URI_SIZE];
    CTXMLIcon icon;
    ItemPriorityT priority;

    CTXMLLineKey() { reset(); }
    void reset();
    bool operator==(const CTXMLLineKey& o) const;
    bool operator!=(const CTXMLLineKey& o) const { return !(*this == o); }
};
