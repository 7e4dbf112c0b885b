#include "layout/CTavoSettings.h"

int CTavoSettings::getInt(int id) const
{
    auto it = m_vars.constFind(id);
    if (it == m_vars.constEnd())
        return -1;
    bool ok = false;
    const int value = it->toInt(&ok);
    return ok ? value : -1;
}

QString CTavoSettings::getString(int id) const
{
    return m_vars.value(id);
}

void CTavoSettings::setVar(int id, const char* value)
{
    if (!value)
        return;
    m_vars.insert(id, QString::fromUtf8(value));
    emit varChanged(id);
}
