#include "CTXMLSoftkeys.h"

#include <cstring>

CTXMLSoftkey& CTXMLSoftkeys::operator[](int i)
{
    if (i >= 0 && i < TXML_MAX_SOFTKEYS)
        return keys[i];
    static thread_local CTXMLSoftkey spare;
    spare.reset();
    return spare;
}

const CTXMLSoftkey& CTXMLSoftkeys::operator[](int i) const
{
    static const CTXMLSoftkey blank;
    return i >= 0 && i < TXML_MAX_SOFTKEYS ? keys[i] : blank;
}

bool CTXMLSoftkeys::operator==(const CTXMLSoftkeys& o) const
{
    if (count != o.count || elementType != o.elementType || setId != o.setId)
        return false;
    for (int i = 0; i < count && i < TXML_MAX_SOFTKEYS; ++i)
        if (keys[i] != o.keys[i])
            return false;
    return true;
}

int CTXMLSoftkeys::add(const char* label, const char* url, int position,
                       CTXMLSoftkey::SoftkeyTypeT type, const char* url2, const char* url3,
                       const char* valueList, ItemPriorityT priority, const char* groupLabel,
                       int defaultIndex, CTXMLIcon::tavoIcon icon, SoftkeyLayoutTypeT layoutType)
{
    if (count < 0 || count >= TXML_MAX_SOFTKEYS)
        return -1;
    keys[count].set(label, url, position, type, url2, url3, valueList, priority, groupLabel,
                    defaultIndex, icon, layoutType);
    keys[count].id = count;
    return count++;
}

int CTXMLSoftkeys::add(const CTXMLSoftkey& key)
{
    if (count < 0 || count >= TXML_MAX_SOFTKEYS)
        return -1;
    keys[count] = key;
    return count++;
}

int CTXMLSoftkeys::findItemByUrl(const char* prefix) const
{
    if (!prefix || !*prefix)
        return -1;
    const std::size_t n = std::strlen(prefix);
    for (int i = 0; i < count && i < TXML_MAX_SOFTKEYS; ++i)
        if (std::strncmp(keys[i].url, prefix, n) == 0)
            return i;
    return -1;
}

void CTXMLSoftkeys::reset(tavoElementTypeT type)
{
    setId = 0;
    for (CTXMLSoftkey& key : keys)
        key.reset();
    count = 0;
    elementType = type;
}

CTXMLSoftkey* CTXMLSoftkeys::append()
{
    if (count < 0 || count >= TXML_MAX_SOFTKEYS)
        return nullptr;
    CTXMLSoftkey* key = &keys[count++];
    key->reset();
    return key;
}
