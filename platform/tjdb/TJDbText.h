#pragma once
// The text form shared by requests and responses (docs/tjdb.md): items
// separated by newlines or semicolons, values percent-encoded where they would
// break an item or a list. Internal to the library.
#include <cstddef>
#include <string>
#include <vector>

namespace TJDB {
namespace text {

// One item of a message: the text before the first '=' and the raw rest.
struct Item {
    const char* key;
    std::size_t keyLength;
    const char* value;
    std::size_t valueLength;
    bool hasValue;
};

// Splits a message into its non-empty items, in order. A "\r" before a
// separator belongs to the separator.
void splitItems(const char* text, std::size_t length, std::vector<Item>* items);

// Appends value with every '%', ';', '|', control character and DEL as %XX.
void appendEscaped(std::string* out, const char* value, std::size_t length);
inline void appendEscaped(std::string* out, const std::string& value)
{
    appendEscaped(out, value.data(), value.size());
}

// Decodes %XX escapes; false for a '%' without two hex digits after it.
bool unescape(const char* value, std::size_t length, std::string* out);

// Splits a list value at raw '|'; at least one part.
void splitList(const char* value, std::size_t length, std::vector<std::pair<const char*, std::size_t>>* parts);

// A whole decimal number that fits the type; false otherwise.
bool toInt(const char* text, std::size_t length, int* out);
bool toLongLong(const char* text, std::size_t length, long long* out);

bool keyIs(const Item& item, const char* key);

}  // namespace text
}  // namespace TJDB
