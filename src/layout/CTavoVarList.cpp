#include "layout/CTavoVarList.h"

#include <QStringList>

#include "layout/CTXMLDataConverter.h"

CTavoVarList::CTavoVarList(const QString& text, const QString& separator)
    : m_separator(separator)
{
    if (!text.isEmpty())
        set(text);
}

void CTavoVarList::set(const QString& text)
{
    m_pairs.clear();
    const QStringList parts = text.split(m_separator, Qt::KeepEmptyParts);
    for (const QString& part : parts) {
        const int eq = part.indexOf(QLatin1Char('='));
        if (eq < 0)
            continue;
        m_pairs.insert(part.left(eq).trimmed(),
                       CTXMLDataConverter::decodeEntities(part.mid(eq + 1).trimmed()));
    }
}

QString CTavoVarList::operator[](const QString& name) const
{
    return m_pairs.value(name);
}

void CTavoVarList::addPair(const QString& name, const QString& value)
{
    m_pairs.insert(name, value);
}

void CTavoVarList::addPair(const QString& name, int value)
{
    m_pairs.insert(name, QString::number(value));
}

QString CTavoVarList::serialize() const
{
    QString out;
    for (auto it = m_pairs.constBegin(); it != m_pairs.constEnd(); ++it) {
        // Documents always join pairs with ";", whatever separator was read.
        if (it != m_pairs.constBegin())
            out += QLatin1Char(';');
        out += it.key() + QLatin1Char('=') + CTXMLDataConverter::encodeEntities(it.value());
    }
    return out;
}
