#include "CTXMLSoftkey.h"

#include <cstring>

void CTXMLSoftkey::reset()
{
    url[0] = 0;
    url2[0] = 0;
    url3[0] = 0;
    position = -1;
    label[0] = 0;
    groupLabel[0] = 0;
    defaultIndex = 0;
    type = SoftkeyNormal;
    valueList[0] = 0;
    priority = ItemPriorityNormal;
    flyout.reset();
    icon = CTXMLIcon::TAVO_ICON_NONE;
    iconName[0] = 0;
    layoutType = SoftkeyLayoutDefault;
    id = 0;
    extent = 0;
}

void CTXMLSoftkey::set(const char* text, const char* event, int pos, SoftkeyTypeT kind,
                       const char* event2, const char* event3, const char* values,
                       ItemPriorityT prio, const char* group, int index,
                       CTXMLIcon::tavoIcon image, SoftkeyLayoutTypeT layout)
{
    reset();
    txml::copyText(label, sizeof label, text);
    txml::copyText(url, sizeof url, event);
    position = pos;
    type = kind;
    txml::copyText(url2, sizeof url2, event2);
    txml::copyText(url3, sizeof url3, event3);
    txml::copyText(valueList, sizeof valueList, values);
    priority = prio;
    txml::copyText(groupLabel, sizeof groupLabel, group);
    defaultIndex = index;
    icon = image;
    layoutType = layout;
}

bool CTXMLSoftkey::operator==(const CTXMLSoftkey& o) const
{
    return std::strcmp(url, o.url) == 0 && std::strcmp(url2, o.url2) == 0 &&
           std::strcmp(url3, o.url3) == 0 && position == o.position &&
           std::strcmp(label, o.label) == 0 && std::strcmp(groupLabel, o.groupLabel) == 0 &&
           defaultIndex == o.defaultIndex && type == o.type &&
           std::strcmp(valueList, o.valueList) == 0 && priority == o.priority &&
           flyout == o.flyout && icon == o.icon && std::strcmp(iconName, o.iconName) == 0 &&
           layoutType == o.layoutType && id == o.id && extent == o.extent;
}
