#include <cstring>

#include "CTXMLUriParser.h"
#include "TxmlTypes.h"

namespace txml {

namespace {

// Length of s[0..n) without a multi-byte sequence that the end cuts short.
std::size_t dropPartialTail(const char* s, std::size_t n)
{
    std::size_t i = n;
    int continuation = 0;
    while (i > 0 && continuation < 4 && (static_cast<unsigned char>(s[i - 1]) & 0xC0) == 0x80) {
        --i;
        ++continuation;
    }
    if (i == 0)
        return n;
    const unsigned char lead = static_cast<unsigned char>(s[i - 1]);
    if ((lead & 0xC0) != 0xC0)
        return n;  // ASCII or stray continuation bytes: nothing to drop
    const int need = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    return continuation < need ? i - 1 : n;
}

}  // namespace

std::size_t utf8Fit(const char* text, std::size_t length, std::size_t limit)
{
    if (!text)
        return 0;
    if (length <= limit)
        return length;
    return dropPartialTail(text, limit);
}

bool copyText(char* dst, std::size_t size, const char* src, std::size_t length)
{
    if (!dst || size == 0)
        return false;
    if (!src) {
        dst[0] = 0;
        return true;
    }
    // An embedded NUL ends the text as it would for a C string.
    const void* nul = std::memchr(src, 0, length);
    if (nul)
        length = static_cast<std::size_t>(static_cast<const char*>(nul) - src);
    const std::size_t n = utf8Fit(src, length, size - 1);
    std::memmove(dst, src, n);
    dst[n] = 0;
    return n == length;
}

bool copyText(char* dst, std::size_t size, const char* src)
{
    return copyText(dst, size, src, src ? std::strlen(src) : 0);
}

bool appendText(char* dst, std::size_t size, const char* src)
{
    if (!dst || size == 0)
        return false;
    const std::size_t used = strnlen(dst, size - 1);
    return copyText(dst + used, size - used, src);
}

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Trims [b, e), decodes %XX and stores into dst[size], cut at a character edge.
void storeDecoded(const char* b, const char* e, char* dst, std::size_t size)
{
    while (b < e && isBlank(*b))
        ++b;
    while (e > b && isBlank(e[-1]))
        --e;
    std::size_t n = 0;
    const std::size_t limit = size - 1;
    bool cut = false;
    while (b < e) {
        char c = *b;
        std::size_t step = 1;
        if (c == '%' && e - b >= 3) {
            const int hi = hexValue(b[1]);
            const int lo = hexValue(b[2]);
            if (hi >= 0 && lo >= 0) {
                c = static_cast<char>(hi * 16 + lo);
                step = 3;
            }
        }
        if (c == 0)
            break;  // an encoded NUL ends the text
        if (n >= limit) {
            cut = true;
            break;
        }
        dst[n++] = c;
        b += step;
    }
    if (cut)
        n = dropPartialTail(dst, n);
    dst[n] = 0;
}

}  // namespace

int parsePairs(const char* text, std::size_t length, PairT* pairs, int capacity,
               int* remaining)
{
    int count = 0;
    if (remaining)
        *remaining = 0;
    if (!text || !pairs || capacity <= 0)
        return 0;
    const char* p = text;
    const char* end = text + length;
    while (p < end) {
        const char* partEnd = static_cast<const char*>(std::memchr(p, ';', end - p));
        if (!partEnd)
            partEnd = end;
        const char* q = p;
        while (q < partEnd && isBlank(*q))
            ++q;
        if (q == partEnd) {  // empty part
            p = partEnd < end ? partEnd + 1 : end;
            continue;
        }
        if (count == capacity) {
            if (remaining)
                *remaining = static_cast<int>(end - p);
            return count;
        }
        const char* eq = static_cast<const char*>(std::memchr(p, '=', partEnd - p));
        PairT& pair = pairs[count++];
        if (eq) {
            storeDecoded(p, eq, pair.name, sizeof pair.name);
            storeDecoded(eq + 1, partEnd, pair.value, sizeof pair.value);
        } else {
            storeDecoded(p, partEnd, pair.name, sizeof pair.name);
            pair.value[0] = 0;
        }
        p = partEnd < end ? partEnd + 1 : end;
    }
    return count;
}

}  // namespace txml
