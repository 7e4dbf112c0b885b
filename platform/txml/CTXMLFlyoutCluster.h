#pragma once
#include "txml_export.h"
// The content of a flyout: up to TXML_MAX_FLYOUT_ITEMS items in order.
#include <vector>

#include "CTXMLFlyoutItem.h"

class TXML_EXPORT CTXMLFlyoutCluster
{
public:
    CTXMLFlyoutCluster() = default;

    // Appends an item; -1 when the cluster is full, else its index.
    int add(const char* label, const char* url, const char* badge, const CTXMLIcon* icon,
            bool enabled = true, const char* value = nullptr, bool selected = false,
            bool hasQuickAccess = true, const char* abbreviation = nullptr);
    // Appends a copy; -1 when full.
    int add(const CTXMLFlyoutItem& item);
    // A new blank item at the end; null when the cluster is full.
    CTXMLFlyoutItem* append();
    int count() const { return static_cast<int>(m_items.size()); }
    bool isEmpty() const { return m_items.empty(); }
    // Out of range gives a blank item (a spare of the cluster), never a fault.
    CTXMLFlyoutItem& operator[](int i);
    const CTXMLFlyoutItem& operator[](int i) const;
    const std::vector<CTXMLFlyoutItem>& items() const { return m_items; }
    int findItemByUrl(const char* prefix) const;
    void reset() { m_items.clear(); }
    bool operator==(const CTXMLFlyoutCluster& o) const { return m_items == o.m_items; }
    bool operator!=(const CTXMLFlyoutCluster& o) const { return !(*this == o); }

private:
    std::vector<CTXMLFlyoutItem> m_items;
};
