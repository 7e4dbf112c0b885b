#pragma once
#include "txml_export.h"
// One entry of a list menu document: a labelled row that sends its URL.
#include "CTXMLIcon.h"
#include "TxmlTypes.h"

class TXML_EXPORT CTXMLListMenu
{
public:
    char label[TXML_LABEL_SIZE];       // UTF-8
    char url[TXML_URI_SIZE];
    char url2[TXML_URI_SIZE];
    char url3[TXML_URI_SIZE];
    int type;
    int id;
    int extent;
    ItemPriorityT priority;
    CTXMLIcon icon;

    CTXMLListMenu() { reset(); }
    void reset();
    bool operator==(const CTXMLListMenu& o) const;
    bool operator!=(const CTXMLListMenu& o) const { return !(*this == o); }
};
