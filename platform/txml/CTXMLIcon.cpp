#include "CTXMLIcon.h"

#include <cstring>

void CTXMLIcon::reset()
{
    id = TAVO_ICON_NONE;
    flags = 0;
    name[0] = 0;
    label[0] = 0;
    iconList[0] = 0;
}

void CTXMLIcon::set(int number, int iconFlags, const char* file, const char* text,
                    const char* list)
{
    // Numbers outside the enumeration name no icon.
    id = number >= 0 && number <= TAVO_ICON_MAX ? static_cast<tavoIcon>(number) : TAVO_ICON_NONE;
    flags = iconFlags;
    txml::copyText(name, sizeof name, file);
    txml::copyText(label, sizeof label, text);
    txml::copyText(iconList, sizeof iconList, list);
}

bool CTXMLIcon::operator==(const CTXMLIcon& o) const
{
    return id == o.id && flags == o.flags && std::strcmp(name, o.name) == 0 &&
           std::strcmp(label, o.label) == 0 && std::strcmp(iconList, o.iconList) == 0;
}
