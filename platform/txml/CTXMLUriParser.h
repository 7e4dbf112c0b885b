#pragma once
#include "txml_export.h"
// Parser of the pair syntax "name=value;name=value". Parts are split at ";",
// empty parts are skipped, name and value are trimmed of blanks and the
// %XX escapes of both are decoded. A part without "=" is a name with an
// empty value. At most N pairs are kept; the bytes after the last kept pair
// are counted in remaining().
#include <cstddef>
#include <cstring>

#include "TxmlTypes.h"

namespace txml {
struct PairT {
    char name[TXML_NAME_SIZE];
    char value[TXML_VALUE_SIZE];
};
// Parses text[0..length) into pairs[0..capacity); returns the count and
// sets remaining to the unparsed bytes. Never reads beyond length.
TXML_EXPORT int parsePairs(const char* text, std::size_t length, PairT* pairs, int capacity,
               int* remaining);
}  // namespace txml

template <int N>
class TXML_EXPORT CTXMLUriParser
{
public:
    CTXMLUriParser() { reset(); }

    // Nul-terminated text; null is an empty text. Returns the pair count.
    int parseData(const char* text) { return parseData(text, text ? std::strlen(text) : 0); }
    int parseData(const char* text, std::size_t length)
    {
        m_count = txml::parsePairs(text, length, m_pairs, N, &m_remaining);
        return m_count;
    }
    // Index of the first pair with this exact name; -1 when absent.
    int indexOf(const char* name) const
    {
        if (!name)
            return -1;
        for (int i = 0; i < m_count; ++i)
            if (std::strcmp(m_pairs[i].name, name) == 0)
                return i;
        return -1;
    }
    int count() const { return m_count; }
    int remaining() const { return m_remaining; }
    // Out of range gives "".
    const char* name(int i) const { return i >= 0 && i < m_count ? m_pairs[i].name : ""; }
    const char* value(int i) const { return i >= 0 && i < m_count ? m_pairs[i].value : ""; }
    // Value of the named pair, "" when absent.
    const char* value(const char* name) const { return value(indexOf(name)); }
    bool contains(const char* name) const { return indexOf(name) >= 0; }
    void reset()
    {
        m_count = 0;
        m_remaining = 0;
        m_pairs[0].name[0] = 0;
        m_pairs[0].value[0] = 0;
    }

private:
    static_assert(N > 0, "a parser holds at least one pair");
    txml::PairT m_pairs[N];
    int m_count;
    int m_remaining;
};
