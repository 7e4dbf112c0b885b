#pragma once
#include "txml_export.h"
// What every parsed TXML document has: the flags word, the event URI with its
// type and flag numbers, and the pairs of the event's data text.
#include <cstddef>
#include <string>
#include <type_traits>

#include "CTXMLUriParser.h"
#include "TxmlTypes.h"

class TXML_EXPORT CTXML
{
public:
    unsigned int flags;               // TxmlFlagsT bits of what the document holds
    char uri[TXML_URI_SIZE];          // the event URI (flag TXML_FLAG_EVENT)
    int eventType;                    // the event's type number, 0 when not given
    int eventFlags;                   // the event's flag number, 0 when not given
    char data[TXML_EVENT_DATA_SIZE];  // the event's data text as written (pair syntax)
    CTXMLUriParser<TXML_MAX_PAIRS> pairs;  // its pairs, decoded
    unsigned char marker;             // set by every parse; a reader may clear it
    char error[TXML_LABEL_SIZE * 2];  // why the last parse failed, "" after success

    CTXML();
    virtual ~CTXML() = default;
    CTXML(const CTXML&) = default;
    CTXML& operator=(const CTXML&) = default;

    // Clears everything a parse fills.
    virtual void reset();

    int pairCount() const { return pairs.count(); }
    // Bytes of the data text left unread because the pair records were full.
    int remaining() const { return pairs.remaining(); }
    const char* pairName(int i) const { return pairs.name(i); }
    const char* pairValue(int i) const { return pairs.value(i); }
    // Value of the pair with this name, "" when absent.
    const char* value(const char* name) const { return pairs.value(name); }
    const char* value(int varNumber) const;
    bool hasEvent() const { return (flags & TXML_FLAG_EVENT) != 0; }
};
