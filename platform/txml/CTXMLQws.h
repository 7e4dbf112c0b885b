#pragma once
#include "txml_export.h"
// The parsed form of a simulator document: an event whose URI is one of the
// qws types (CTXMLUriLib::qwsType) with its pairs. Same grammar as CTXMLRoot;
// other elements are skipped.
#include <cstring>

#include "CTXML.h"

class TXML_EXPORT CTXMLQws : public CTXML
{
public:
    CTXMLQws() = default;
    bool parse(const char* data, std::size_t length);
    bool parse(const char* text) { return parse(text, text ? std::strlen(text) : 0); }
    template <typename Bytes>
    auto parse(const Bytes& bytes)
        -> decltype(static_cast<const char*>(bytes.data()), bytes.size(), bool())
    {
        return parse(static_cast<const char*>(bytes.data()),
                     bytes.size() > 0 ? static_cast<std::size_t>(bytes.size()) : 0u);
    }
};
