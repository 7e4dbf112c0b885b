#include "CTXMLListMenu.h"

#include <cstring>

void CTXMLListMenu::reset()
{
    label[0] = 0;
    url[0] = 0;
    url2[0] = 0;
    url3[0] = 0;
    type = 0;
    id = 0;
    extent = 0;
    priority = ItemPriorityNormal;
    icon.reset();
}

bool CTXMLListMenu::operator==(const CTXMLListMenu& o) const
{
    return std::strcmp(label, o.label) == 0 && std::strcmp(url, o.url) == 0 &&
           std::strcmp(url2, o.url2) == 0 && std::strcmp(url3, o.url3) == 0 && type == o.type &&
           id == o.id && extent == o.extent && priority == o.priority && icon == o.icon;
}
