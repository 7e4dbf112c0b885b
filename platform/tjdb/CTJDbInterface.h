#pragma once
// What requests and responses of the database link have in common: numbered
// elements (ReqElementT) holding text, a text form to write and to read back,
// and the reason the last read failed.
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "TJDbTypes.h"
#include "tjdb_export.h"

namespace TJDB {

class TJDB_EXPORT CTJDbInterface
{
public:
    CTJDbInterface() = default;
    CTJDbInterface(const CTJDbInterface&) = default;
    CTJDbInterface& operator=(const CTJDbInterface&) = default;
    virtual ~CTJDbInterface();

    // Element numbers run from 0 to ReqElementMax; others are ignored.
    void set(int element, const char* value);
    void set(int element, const std::string& value);
    void set(int element, int value);
    void set(int element, long long value);
    void remove(int element);
    bool has(int element) const;
    // The element's text, "" when absent; valid until the element changes.
    const char* getStr(int element) const;
    // The element as a whole decimal number; fallback when absent or not a number.
    int getInt(int element, int fallback = 0) const;
    long long getLongLong(int element, long long fallback = 0) const;

    // Forgets everything, the elements and what a subclass holds.
    virtual void clear();
    // The message as text (docs/tjdb.md); always readable by parse.
    virtual std::string serialize() const = 0;
    // Reads a message: on success the object holds exactly what the text says;
    // on failure it is cleared and error() tells why. Any bytes are safe.
    bool parse(const char* text, std::size_t length);
    bool parse(const std::string& text) { return parse(text.data(), text.size()); }
    bool parse(const char* text);
    // Why the last parse failed; "" after a successful one.
    const char* error() const { return m_error.c_str(); }

protected:
    // The first line names the kind: "TJDB/1 request" or "TJDB/1 response".
    virtual const char* kind() const = 0;
    // An item other than a numbered element; false rejects the message.
    virtual bool parseItem(const char* key, std::size_t keyLength, const char* value,
                           std::size_t valueLength, std::string* error) = 0;
    // Checks after the last item; false rejects the message.
    virtual bool finishParse(std::string* error);
    // Header line and the elements, in ascending order, each ending in '\n'.
    void serializeElements(std::string* out) const;

private:
    std::vector<std::pair<int, std::string>> m_elements;  // ascending by number
    std::string m_error;
};

}  // namespace TJDB
