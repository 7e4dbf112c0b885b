#include "CTXMLLineKeys.h"

CTXMLLineKey& CTXMLLineKeys::operator[](int i)
{
    if (i >= 0 && i < count())
        return m_keys[static_cast<std::size_t>(i)];
    static thread_local CTXMLLineKey spare;
    spare.reset();
    return spare;
}

const CTXMLLineKey& CTXMLLineKeys::operator[](int i) const
{
    static const CTXMLLineKey blank;
    return i >= 0 && i < count() ? m_keys[static_cast<std::size_t>(i)] : blank;
}

int CTXMLLineKeys::add(const CTXMLLineKey& key)
{
    if (count() >= TXML_MAX_LINE_KEYS)
        return -1;
    m_keys.push_back(key);
    return count() - 1;
}
