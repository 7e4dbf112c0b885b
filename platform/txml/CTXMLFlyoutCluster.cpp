#include "CTXMLFlyoutCluster.h"

#include <cstring>

int CTXMLFlyoutCluster::add(const char* label, const char* url, const char* badge,
                            const CTXMLIcon* icon, bool enabled, const char* value,
                            bool selected, bool hasQuickAccess, const char* abbreviation)
{
    CTXMLFlyoutItem item;
    item.set(label, url, badge, icon, enabled, value, selected, hasQuickAccess, abbreviation);
    return add(item);
}

int CTXMLFlyoutCluster::add(const CTXMLFlyoutItem& item)
{
    if (count() >= TXML_MAX_FLYOUT_ITEMS)
        return -1;
    m_items.push_back(item);
    return count() - 1;
}

CTXMLFlyoutItem* CTXMLFlyoutCluster::append()
{
    if (count() >= TXML_MAX_FLYOUT_ITEMS)
        return nullptr;
    m_items.emplace_back();
    return &m_items.back();
}

CTXMLFlyoutItem& CTXMLFlyoutCluster::operator[](int i)
{
    if (i >= 0 && i < count())
        return m_items[static_cast<std::size_t>(i)];
    static thread_local CTXMLFlyoutItem spare;
    spare.reset();
    return spare;
}

const CTXMLFlyoutItem& CTXMLFlyoutCluster::operator[](int i) const
{
    static const CTXMLFlyoutItem blank;
    return i >= 0 && i < count() ? m_items[static_cast<std::size_t>(i)] : blank;
}

int CTXMLFlyoutCluster::findItemByUrl(const char* prefix) const
{
    if (!prefix || !*prefix)
        return -1;
    const std::size_t n = std::strlen(prefix);
    for (int i = 0; i < count(); ++i)
        if (std::strncmp(m_items[static_cast<std::size_t>(i)].url, prefix, n) == 0)
            return i;
    return -1;
}
