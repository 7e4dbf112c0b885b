#include "style/CTavoIconDefinition.h"

CTavoIconDefinition::CTavoIconDefinition()
    : m_iconIndex(-1)
    , m_pressedIconIndex(-1)
{
}

CTavoIconDefinition::CTavoIconDefinition(const QString& url, const QString& label, int icon, int pressedIcon,
                                         const QList<int>& icons)
    : m_url(url)
    , m_label(label)
    , m_iconIndex(icon)
    , m_pressedIconIndex(pressedIcon)
    , m_iconIndexes(icons)
{
}

bool CTavoIconDefinition::operator==(const CTavoIconDefinition& other) const
{
    return m_url == other.m_url && m_label == other.m_label && m_iconIndex == other.m_iconIndex
        && m_pressedIconIndex == other.m_pressedIconIndex && m_iconIndexes == other.m_iconIndexes;
}

void CTavoIconDefinition::removeIndex(int index)
{
    if (m_iconIndex == index)
        m_iconIndex = -1;
    if (m_pressedIconIndex == index)
        m_pressedIconIndex = -1;
    m_iconIndexes.removeAll(index);
}

bool CTavoIconDefinition::containsIndex(int index) const
{
    return m_iconIndex == index || m_pressedIconIndex == index || m_iconIndexes.contains(index);
}

void CTavoIconDefinition::removeAllExcept(const QStringList& keep)
{
    if (m_iconIndex != -1 && !keep.contains(QString::number(m_iconIndex)))
        m_iconIndex = -1;
    if (m_pressedIconIndex != -1 && !keep.contains(QString::number(m_pressedIconIndex)))
        m_pressedIconIndex = -1;
    QList<int> kept;
    for (int index : qAsConst(m_iconIndexes)) {
        if (keep.contains(QString::number(index)))
            kept.append(index);
    }
    m_iconIndexes = kept;
}
