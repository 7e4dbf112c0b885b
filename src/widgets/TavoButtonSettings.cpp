#include "widgets/TavoButtonSettings.h"

TavoButtonSettings::TavoButtonSettings()
    : m_buttonType(0)
    , m_id(0)
    , m_softkeyType(0)
    , m_enabled(true)
    , m_longPress(false)
    , m_priority(ItemPriorityNormal)
{
}

void TavoButtonSettings::set(const QString& name, const QString& label, const QString& clickUrl,
                             const QString& holdUrl, const QString& pressUrl, const CTavoIconDefinition& icon,
                             const QString& auxText, int id, ItemPriorityT priority)
{
    m_name = name;
    m_label = label;
    m_clickUrl = clickUrl;
    m_holdUrl = holdUrl;
    m_pressUrl = pressUrl;
    m_icon = icon;
    m_auxText = auxText;
    m_id = id;
    m_priority = priority;
}

void TavoButtonSettings::reset(int buttonType)
{
    *this = TavoButtonSettings();
    m_buttonType = buttonType;
}

bool TavoButtonSettings::operator==(const TavoButtonSettings& other) const
{
    return m_buttonType == other.m_buttonType && m_id == other.m_id && m_name == other.m_name
        && m_softkeyType == other.m_softkeyType && m_enabled == other.m_enabled
        && m_longPress == other.m_longPress && m_label == other.m_label && m_clickUrl == other.m_clickUrl
        && m_holdUrl == other.m_holdUrl && m_pressUrl == other.m_pressUrl && m_icon == other.m_icon
        && m_auxText == other.m_auxText && m_priority == other.m_priority;
}
