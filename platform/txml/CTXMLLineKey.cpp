#include "CTXMLLineKey.h"

#include <cstring>

void CTXMLLineKey::reset()
{
    kind = 0;
    id = 0;
    label[0] = 0;
    url[0] = 0;
    url2[0] = 0;
    url3[0] = 0;
    icon.reset();
    priority = ItemPriorityNormal;
}

bool CTXMLLineKey::operator==(const CTXMLLineKey& o) const
{
    return kind == o.kind && id == o.id && std::strcmp(label, o.label) == 0 &&
           std::strcmp(url, o.url) == 0 && std::strcmp(url2, o.url2) == 0 &&
           std::strcmp(url3, o.url3) == 0 && icon == o.icon && priority == o.priority;
}
