#include "CTXMLEvent.h"

#include <cstdio>

#include "CTXMLQws.h"

namespace {

// Length of the valid UTF-8 sequence at p (p < end), 0 when it is not one.
std::size_t validSequence(const unsigned char* p, const unsigned char* end)
{
    const unsigned char c = *p;
    std::size_t n;
    unsigned int cp;
    if (c < 0x80)
        return 1;
    if ((c & 0xE0) == 0xC0) {
        n = 2;
        cp = c & 0x1F;
    } else if ((c & 0xF0) == 0xE0) {
        n = 3;
        cp = c & 0x0F;
    } else if ((c & 0xF8) == 0xF0) {
        n = 4;
        cp = c & 0x07;
    } else {
        return 0;
    }
    if (static_cast<std::size_t>(end - p) < n)
        return 0;
    for (std::size_t i = 1; i < n; ++i) {
        if ((p[i] & 0xC0) != 0x80)
            return 0;
        cp = (cp << 6) | (p[i] & 0x3F);
    }
    const unsigned int minimum[] = {0, 0, 0x80, 0x800, 0x10000};
    if (cp < minimum[n] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF) || cp == 0xFFFE ||
        cp == 0xFFFF)
        return 0;
    return n;
}

// Writes text so that an XML reader gives it back: markup characters become
// references; bytes XML cannot carry (controls, broken UTF-8) become %XX,
// which the pair syntax decodes.
void escape(std::string& out, const char* text, bool attribute)
{
    static const char hex[] = "0123456789ABCDEF";
    const unsigned char* p = reinterpret_cast<const unsigned char*>(text);
    const unsigned char* end = p + std::strlen(text);
    while (p < end) {
        const unsigned char c = *p;
        switch (c) {
        case '&': out += "&amp;"; ++p; continue;
        case '<': out += "&lt;"; ++p; continue;
        case '>': out += "&gt;"; ++p; continue;
        case '"':
            out += attribute ? "&quot;" : "\"";
            ++p;
            continue;
        case '\t': case '\n': case '\r':
            // Attribute values normalise white space and text normalises
            // line ends: keep what would change as references.
            if (attribute || c == '\r') {
                char ref[8];
                std::snprintf(ref, sizeof ref, "&#%u;", c);
                out += ref;
            } else {
                out += static_cast<char>(c);
            }
            ++p;
            continue;
        default:
            break;
        }
        const std::size_t n = c < 0x20 ? 0 : validSequence(p, end);
        if (n == 0) {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
            ++p;
        } else {
            out.append(reinterpret_cast<const char*>(p), n);
            p += n;
        }
    }
}

}  // namespace

void CTXMLEvent::reset()
{
    uri[0] = 0;
    type = 0;
    flags = 0;
    data[0] = 0;
}

bool CTXMLEvent::set(const char* eventUri, int eventType, int eventFlags)
{
    reset();
    type = eventType;
    flags = eventFlags;
    return txml::copyText(uri, sizeof uri, eventUri);
}

bool CTXMLEvent::setData(const char* text)
{
    return txml::copyText(data, sizeof data, text);
}

bool CTXMLEvent::appendData(const char* text)
{
    return txml::appendText(data, sizeof data, text);
}

bool CTXMLEvent::addPair(const char* name, const char* value)
{
    std::string pair;
    if (data[0])
        pair += ';';
    pair += name ? name : "";
    pair += '=';
    pair += value ? value : "";
    // A pair that does not fit whole is left out rather than cut.
    const std::size_t used = std::strlen(data);
    if (used + pair.size() >= sizeof data)
        return false;
    std::memcpy(data + used, pair.c_str(), pair.size() + 1);
    return true;
}

std::string CTXMLEvent::value(const char* name) const
{
    CTXMLUriParser<TXML_MAX_PAIRS> parser;
    parser.parseData(data);
    return parser.value(name);
}

bool CTXMLEvent::hasPair(const char* name) const
{
    CTXMLUriParser<TXML_MAX_PAIRS> parser;
    parser.parseData(data);
    return parser.indexOf(name) >= 0;
}

std::string CTXMLEvent::serialize() const
{
    std::string out;
    out.reserve(64 + std::strlen(uri) + std::strlen(data));
    out += "<TXML><Event uri=\"";
    escape(out, uri, true);
    out += "\"";
    if (type != 0)
        out += " type=\"" + std::to_string(type) + "\"";
    if (flags != 0)
        out += " flags=\"" + std::to_string(flags) + "\"";
    out += ">";
    escape(out, data, false);
    out += "</Event></TXML>";
    return out;
}

bool CTXMLEvent::parse(const char* document, std::size_t length)
{
    // The simulator form reads just the event, which is all an event holds.
    CTXMLQws doc;
    reset();
    if (!doc.parse(document, length) || !doc.hasEvent())
        return false;
    set(doc.uri, doc.eventType, doc.eventFlags);
    setData(doc.data);
    return true;
}
