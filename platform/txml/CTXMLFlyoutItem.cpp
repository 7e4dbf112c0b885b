#include "CTXMLFlyoutItem.h"

#include <cstring>

namespace {
const char kGroupDiv[] = "GROUPDIV";
}

void CTXMLFlyoutItem::reset()
{
    label[0] = 0;
    url[0] = 0;
    badge[0] = 0;
    abbreviation[0] = 0;
    value[0] = 0;
    data[0] = 0;
    icon.reset();
    enabled = true;
    selected = false;
    hasQuickAccess = true;
}

void CTXMLFlyoutItem::set(const char* text, const char* event, const char* third,
                          const CTXMLIcon* image, bool isEnabled, const char* itemValue,
                          bool isSelected, bool quickAccess, const char* shortText)
{
    txml::copyText(label, sizeof label, text);
    txml::copyText(url, sizeof url, event);
    txml::copyText(badge, sizeof badge, third);
    txml::copyText(value, sizeof value, itemValue);
    txml::copyText(abbreviation, sizeof abbreviation, shortText);
    data[0] = 0;
    if (image)
        icon = *image;
    else
        icon.reset();
    enabled = isEnabled;
    selected = isSelected;
    hasQuickAccess = quickAccess;
}

bool CTXMLFlyoutItem::isGroupDiv() const
{
    // A divider carries the marker in every text it has.
    return std::strcmp(label, kGroupDiv) == 0 && std::strcmp(url, kGroupDiv) == 0 &&
           (badge[0] == 0 || std::strcmp(badge, kGroupDiv) == 0);
}

bool CTXMLFlyoutItem::operator==(const CTXMLFlyoutItem& o) const
{
    return std::strcmp(label, o.label) == 0 && std::strcmp(url, o.url) == 0 &&
           std::strcmp(badge, o.badge) == 0 && std::strcmp(abbreviation, o.abbreviation) == 0 &&
           std::strcmp(value, o.value) == 0 && std::strcmp(data, o.data) == 0 &&
           icon == o.icon && enabled == o.enabled && selected == o.selected &&
           hasQuickAccess == o.hasQuickAccess;
}
