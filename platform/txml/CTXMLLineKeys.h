#pragma once
#include "txml_export.h"
// The line keys of a document, in order, up to TXML_MAX_LINE_KEYS.
#include <vector>

#include "CTXMLLineKey.h"

class TXML_EXPORT CTXMLLineKeys
{
public:
    int count() const { return static_cast<int>(m_keys.size()); }
    CTXMLLineKey& operator[](int i);
    const CTXMLLineKey& operator[](int i) const;
    int add(const CTXMLLineKey& key);   // -1 when full
    void reset() { m_keys.clear(); }
    bool operator==(const CTXMLLineKeys& o) const { return m_keys == o.m_keys; }
    bool operator!=(const CTXMLLineKeys& o) const { return !(*this == o); }

private:
    std::vector<CTXMLLineKey> m_keys;
};
