#include "CTJDbInterface.h"

#include <algorithm>
#include <cstring>

#include "TJDbText.h"

namespace TJDB {

namespace {
const char kMagic[] = "TJDB/1 ";

bool inRange(int element)
{
    return element >= 0 && element <= ReqElementMax;
}
}  // namespace

CTJDbInterface::~CTJDbInterface() = default;

void CTJDbInterface::set(int element, const std::string& value)
{
    if (!inRange(element))
        return;
    auto it = std::lower_bound(m_elements.begin(), m_elements.end(), element,
                               [](const std::pair<int, std::string>& e, int n) { return e.first < n; });
    if (it != m_elements.end() && it->first == element)
        it->second = value;
    else
        m_elements.insert(it, {element, value});
}

void CTJDbInterface::set(int element, const char* value)
{
    set(element, std::string(value ? value : ""));
}

void CTJDbInterface::set(int element, int value)
{
    set(element, std::to_string(value));
}

void CTJDbInterface::set(int element, long long value)
{
    set(element, std::to_string(value));
}

void CTJDbInterface::remove(int element)
{
    m_elements.erase(std::remove_if(m_elements.begin(), m_elements.end(),
                                    [element](const std::pair<int, std::string>& e) { return e.first == element; }),
                     m_elements.end());
}

bool CTJDbInterface::has(int element) const
{
    for (const auto& e : m_elements) {
        if (e.first == element)
            return true;
    }
    return false;
}

const char* CTJDbInterface::getStr(int element) const
{
    for (const auto& e : m_elements) {
        if (e.first == element)
            return e.second.c_str();
    }
    return "";
}

int CTJDbInterface::getInt(int element, int fallback) const
{
    for (const auto& e : m_elements) {
        if (e.first != element)
            continue;
        int value = 0;
        return text::toInt(e.second.data(), e.second.size(), &value) ? value : fallback;
    }
    return fallback;
}

long long CTJDbInterface::getLongLong(int element, long long fallback) const
{
    for (const auto& e : m_elements) {
        if (e.first != element)
            continue;
        long long value = 0;
        return text::toLongLong(e.second.data(), e.second.size(), &value) ? value : fallback;
    }
    return fallback;
}

void CTJDbInterface::clear()
{
    m_elements.clear();
    m_error.clear();
}

bool CTJDbInterface::finishParse(std::string*)
{
    return true;
}

void CTJDbInterface::serializeElements(std::string* out) const
{
    out->append(kMagic);
    out->append(kind());
    out->push_back('\n');
    for (const auto& e : m_elements) {
        out->append(std::to_string(e.first));
        out->push_back('=');
        text::appendEscaped(out, e.second);
        out->push_back('\n');
    }
}

bool CTJDbInterface::parse(const char* data)
{
    return parse(data, data ? std::strlen(data) : 0);
}

bool CTJDbInterface::parse(const char* data, std::size_t length)
{
    clear();
    std::string error;
    std::vector<text::Item> items;
    if (data)
        text::splitItems(data, length, &items);

    const std::string header = std::string(kMagic) + kind();
    bool ok = !items.empty() && !items[0].hasValue && items[0].keyLength == header.size()
              && std::memcmp(items[0].key, header.data(), header.size()) == 0;
    if (!ok)
        error = "not a " + header + " message";

    std::string value;
    for (std::size_t i = 1; ok && i < items.size(); ++i) {
        const text::Item& item = items[i];
        if (!item.hasValue) {
            error = "item " + std::to_string(i) + " has no '='";
            ok = false;
            break;
        }
        int number = -1;
        if (item.keyLength > 0 && item.key[0] >= '0' && item.key[0] <= '9') {
            if (!text::toInt(item.key, item.keyLength, &number) || !inRange(number)) {
                error = "element number out of range in item " + std::to_string(i);
                ok = false;
                break;
            }
            if (!text::unescape(item.value, item.valueLength, &value)) {
                error = "bad escape in element " + std::to_string(number);
                ok = false;
                break;
            }
            set(number, value);
            continue;
        }
        bool named = item.keyLength > 0;
        for (std::size_t k = 0; k < item.keyLength && named; ++k) {
            const char c = item.key[k];
            named = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
        }
        if (!named) {
            error = "bad item name in item " + std::to_string(i);
            ok = false;
            break;
        }
        ok = parseItem(item.key, item.keyLength, item.value, item.valueLength, &error);
    }
    if (ok)
        ok = finishParse(&error);
    if (!ok) {
        clear();
        m_error = error.empty() ? std::string("unreadable message") : error;
    }
    return ok;
}

}  // namespace TJDB
