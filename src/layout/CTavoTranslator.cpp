#include "layout/CTavoTranslator.h"

QString CTavoTranslator::translate(const char*, const char*, const char* disambiguation, int) const
{
    // Without a key the call is not ours: a null result lets Qt keep the source text.
    if (!disambiguation || !*disambiguation)
        return QString();
    const QString key = QString::fromUtf8(disambiguation);
    const auto it = m_translations.constFind(key);
    return it == m_translations.constEnd() ? key : it.value();
}

bool CTavoTranslator::isEmpty() const
{
    return m_translations.isEmpty();
}

void CTavoTranslator::insert(const QString& key, const QString& value)
{
    m_translations.insert(key, value);
}

void CTavoTranslator::load(const QHash<QString, QString>& translations)
{
    m_translations = translations;
}

void CTavoTranslator::acceptTranslations(const QHash<QString, QString>& translations)
{
    load(translations);
}
