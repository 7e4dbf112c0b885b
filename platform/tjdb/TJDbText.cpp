#include "TJDbText.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace TJDB {
namespace text {

namespace {
int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

bool needsEscape(unsigned char c)
{
    return c < 0x20 || c == 0x7f || c == '%' || c == ';' || c == '|';
}
}  // namespace

void splitItems(const char* text, std::size_t length, std::vector<Item>* items)
{
    items->clear();
    std::size_t at = 0;
    while (at <= length) {
        std::size_t end = at;
        while (end < length && text[end] != '\n' && text[end] != ';')
            ++end;
        std::size_t stop = end;
        if (stop > at && text[stop - 1] == '\r')
            --stop;
        if (stop > at) {
            Item item{text + at, stop - at, nullptr, 0, false};
            const void* eq = std::memchr(text + at, '=', stop - at);
            if (eq) {
                const char* e = static_cast<const char*>(eq);
                item.keyLength = std::size_t(e - (text + at));
                item.value = e + 1;
                item.valueLength = stop - at - item.keyLength - 1;
                item.hasValue = true;
            }
            items->push_back(item);
        }
        at = end + 1;
    }
}

void appendEscaped(std::string* out, const char* value, std::size_t length)
{
    static const char digits[] = "0123456789ABCDEF";
    std::size_t plain = 0;
    for (std::size_t i = 0; i < length; ++i) {
        const unsigned char c = static_cast<unsigned char>(value[i]);
        if (!needsEscape(c))
            continue;
        out->append(value + plain, i - plain);
        const char escaped[3] = {'%', digits[c >> 4], digits[c & 15]};
        out->append(escaped, 3);
        plain = i + 1;
    }
    out->append(value + plain, length - plain);
}

bool unescape(const char* value, std::size_t length, std::string* out)
{
    out->clear();
    const void* first = std::memchr(value, '%', length);
    if (!first) {
        out->assign(value, length);
        return true;
    }
    out->reserve(length);
    for (std::size_t i = 0; i < length; ++i) {
        if (value[i] != '%') {
            out->push_back(value[i]);
            continue;
        }
        if (length - i < 3)
            return false;
        const int high = hexValue(value[i + 1]);
        const int low = hexValue(value[i + 2]);
        if (high < 0 || low < 0)
            return false;
        out->push_back(static_cast<char>((high << 4) | low));
        i += 2;
    }
    return true;
}

void splitList(const char* value, std::size_t length, std::vector<std::pair<const char*, std::size_t>>* parts)
{
    parts->clear();
    std::size_t at = 0;
    for (;;) {
        const void* bar = std::memchr(value + at, '|', length - at);
        if (!bar) {
            parts->emplace_back(value + at, length - at);
            return;
        }
        const std::size_t end = std::size_t(static_cast<const char*>(bar) - value);
        parts->emplace_back(value + at, end - at);
        at = end + 1;
    }
}

bool toLongLong(const char* text, std::size_t length, long long* out)
{
    // Sign and at most 19 digits: nothing longer fits.
    if (length == 0 || length > 20)
        return false;
    std::size_t i = 0;
    bool negative = false;
    if (text[0] == '-' || text[0] == '+') {
        negative = text[0] == '-';
        i = 1;
    }
    if (i == length)
        return false;
    unsigned long long value = 0;
    for (; i < length; ++i) {
        if (text[i] < '0' || text[i] > '9')
            return false;
        const unsigned digit = unsigned(text[i] - '0');
        if (value > (static_cast<unsigned long long>(LLONG_MAX) + 1 - digit) / 10)
            return false;
        value = value * 10 + digit;
    }
    if (!negative && value > static_cast<unsigned long long>(LLONG_MAX))
        return false;
    *out = negative ? (value == 0 ? 0 : -static_cast<long long>(value - 1) - 1) : static_cast<long long>(value);
    return true;
}

bool toInt(const char* text, std::size_t length, int* out)
{
    long long value = 0;
    if (!toLongLong(text, length, &value) || value < INT_MIN || value > INT_MAX)
        return false;
    *out = static_cast<int>(value);
    return true;
}

bool keyIs(const Item& item, const char* key)
{
    const std::size_t n = std::strlen(key);
    return item.keyLength == n && std::memcmp(item.key, key, n) == 0;
}

}  // namespace text
}  // namespace TJDB
