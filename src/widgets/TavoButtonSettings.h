#pragma once
#include "tgui_export.h"
// What defines a button: its identity, URLs, labels, icon and priority, as a
// document delivers them. Compared as a whole so that an unchanged key is
// not rebuilt.
#include <QString>

#include "TxmlTypes.h"
#include "style/CTavoIconDefinition.h"

class TGUI_EXPORT TavoButtonSettings
{
public:
    TavoButtonSettings();

    void set(const QString& name, const QString& label, const QString& clickUrl, const QString& holdUrl,
             const QString& pressUrl, const CTavoIconDefinition& icon, const QString& auxText, int id,
             ItemPriorityT priority = ItemPriorityNormal);
    // Back to an empty record of the given kind.
    void reset(int buttonType = 0);

    bool operator==(const TavoButtonSettings& other) const;
    bool operator!=(const TavoButtonSettings& other) const { return !(*this == other); }

    int m_buttonType;        // 4 selects the alternative background
    int m_id;
    QString m_name;
    // Softkey context, filled from the document: its type (0 normal, 1 permanent,
    // 2 context sensitive, 3 local), whether it takes input, and whether a press
    // outside that leaves the key still counts as a click.
    int m_softkeyType;
    bool m_enabled;
    bool m_longPress;
    QString m_label;
    QString m_clickUrl;
    QString m_holdUrl;
    QString m_pressUrl;
    CTavoIconDefinition m_icon;
    QString m_auxText;
    ItemPriorityT m_priority;
};
