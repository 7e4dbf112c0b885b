#pragma once
#include "txml_export.h"
// An event that a GUI sends to the core: a URI, a type and a flag number, and
// a data text in the pair syntax. serialize() gives the TXML document.
#include <cstring>
#include <string>

#include "CTXMLUriLib.h"
#include "TxmlTypes.h"

class TXML_EXPORT CTXMLEvent
{
public:
    char uri[TXML_URI_SIZE];
    int type;
    int flags;
    char data[TXML_EVENT_DATA_SIZE];  // pair text, values already encoded by the sender

    CTXMLEvent() { reset(); }
    void reset();
    // Starts a new event: URI, numbers, empty data. A URI that does not fit
    // is cut at a character edge; returns false then.
    bool set(const char* uri, int type = 0, int flags = 0);
    bool set(TxmlUriType_T uriNumber, int type = 0, int flags = 0)
    {
        return set(CTXMLUriLib::uri(uriNumber), type, flags);
    }
    // Replaces or extends the data text; false when it had to be cut.
    bool setData(const char* text);
    bool appendData(const char* text);
    // Appends "name=value", with ";" before it if the data is not empty.
    bool addPair(const char* name, const char* value);
    // Value of a pair of the data text, "" when absent.
    std::string value(const char* name) const;
    bool hasPair(const char* name) const;

    // The document: <TXML><Event uri=".." type="n" flags="n">data</Event></TXML>
    std::string serialize() const;
    // Reads an event back from a document; false when it holds none.
    bool parse(const char* document, std::size_t length);
};
