#include "style/CTavoStyleSheet.h"

#include <QMetaObject>
#include <QObject>

#include <utility>

namespace {
// set() parses every block into this one before merging it; it keeps set() non-reentrant.
CTavoWidgetStyle& scratchBlock()
{
    static CTavoWidgetStyle scratch;
    return scratch;
}
} // namespace

CTavoStyleSheet::CTavoStyleSheet() {}

void CTavoStyleSheet::set(const char* style, const char* attributes)
{
    if (!style || !attributes)
        return;
    m_styleText = QString::fromUtf8(style);
    m_attributes.clear();
    m_styles.clear();

    const QString attributeText = QString::fromUtf8(attributes);
    if (!attributeText.isEmpty()) {
        for (const QString& part : attributeText.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
            if (!part.contains(QLatin1Char('=')))
                continue;
            const QStringList pair = part.split(QLatin1Char('='), Qt::SkipEmptyParts);
            if (pair.isEmpty())
                continue;
            m_attributes[pair.at(0).trimmed()] = pair.size() > 1 ? pair.at(1).trimmed() : QString();
        }
    }

    const QString dx = m_attributes.value(QStringLiteral("design-x"));
    const QString dy = m_attributes.value(QStringLiteral("design-y"));
    const QString mx = m_attributes.value(QStringLiteral("max-x"));
    const QString my = m_attributes.value(QStringLiteral("max-y"));
    if (!dx.isEmpty() && !dy.isEmpty() && !mx.isEmpty() && !my.isEmpty())
        CTavoWidgetStyle::setDesignScreenResolution(dx.toInt(), dy.toInt(), mx.toInt(), my.toInt());

    if (*style) {
        CTavoWidgetStyle& scratch = scratchBlock();
        // Pieces between "}" (empty ones skipped); in each, the first two non-empty
        // parts between "{" are selector and body.
        const QString& text = m_styleText;
        const int length = text.size();
        for (int from = 0; from < length;) {
            int end = text.indexOf(QLatin1Char('}'), from);
            if (end < 0)
                end = length;
            const QStringRef piece = text.midRef(from, end - from);
            from = end + 1;
            if (!piece.contains(QLatin1Char('{')))
                continue;
            QStringRef parts[2];
            int found = 0;
            for (int at = 0; found < 2 && at < piece.size();) {
                int brace = piece.indexOf(QLatin1Char('{'), at);
                if (brace < 0)
                    brace = piece.size();
                if (brace > at)
                    parts[found++] = piece.mid(at, brace - at);
                at = brace + 1;
            }
            if (found == 0)
                continue;
            const QString selector = parts[0].trimmed().toString();
            scratch.set(found > 1 ? parts[1].trimmed() : QStringRef());
            auto it = m_styles.lowerBound(selector);
            if (it == m_styles.end() || it.key() != selector)
                it = m_styles.insert(it, selector, CTavoWidgetStyle());
            it.value().update(std::move(scratch));
        }
        // The blocks now share what the scratch parsed; it needs none of it any more.
        scratch.resetContent();
    }
    m_styleText = QString();
}

CTavoWidgetStyle* CTavoStyleSheet::get(QObject* object, const QString& pseudoState)
{
    if (!object)
        return nullptr;
    const QMetaObject* meta = object->metaObject();
    const QString className = QString::fromLatin1(meta->className());
    const QString name = object->objectName();

    QString key = className;
    QString named;
    if (!name.isEmpty()) {
        key = className + QLatin1Char('#') + name;
        named = key;
    }
    if (!pseudoState.isEmpty())
        key += QLatin1Char(':') + pseudoState;

    if (CTavoWidgetStyle* style = get(key))
        return style;
    if (key.contains(QLatin1Char('#'))) {
        QString unnamed = key;
        unnamed.remove(QLatin1Char('#'));
        if (!name.isEmpty())
            unnamed.remove(name);
        if (CTavoWidgetStyle* style = get(unnamed))
            return style;
    }
    if (!named.isEmpty()) {
        if (CTavoWidgetStyle* style = get(named))
            return style;
    }
    return get(meta);
}

CTavoWidgetStyle* CTavoStyleSheet::get(const QString& selector)
{
    if (m_styles.isEmpty())
        return nullptr;
    auto it = m_styles.find(selector);
    return it == m_styles.end() ? nullptr : &it.value();
}

CTavoWidgetStyle* CTavoStyleSheet::get(const char* selector)
{
    if (!selector)
        return nullptr;
    return get(QString::fromUtf8(selector));
}

CTavoWidgetStyle* CTavoStyleSheet::get(const QMetaObject* metaObject)
{
    for (const QMetaObject* meta = metaObject; meta; meta = meta->superClass()) {
        if (CTavoWidgetStyle* style = get(QString::fromLatin1(meta->className())))
            return style;
    }
    return nullptr;
}

bool CTavoStyleSheet::hasPseudoState(QObject* object, const QString& state) const
{
    if (!object || m_styles.isEmpty() || !object->metaObject())
        return false;
    const QString className = QString::fromLatin1(object->metaObject()->className());
    return m_styles.contains(className + QLatin1Char('#') + object->objectName() + QLatin1Char(':') + state)
        || m_styles.contains(className + QLatin1Char(':') + state);
}

QString CTavoStyleSheet::getAttribute(const QString& name)
{
    return m_attributes[name];
}

QList<QPair<int, QString>> CTavoStyleSheet::getDefinedClasses(const QStringList& names) const
{
    QList<QPair<int, QString>> result;
    QStringList candidates;
    for (auto it = m_styles.constBegin(); it != m_styles.constEnd(); ++it) {
        if (it.key().contains(QLatin1Char('#')))
            candidates.append(it.key());
    }
    for (int i = 0; i < names.size(); ++i) {
        for (auto it = candidates.begin(); it != candidates.end();) {
            QString selector = *it;
            const int hash = selector.indexOf(QLatin1Char('#'));
            const int colon = selector.indexOf(QLatin1Char(':'), hash);
            if (colon >= 0)
                selector.truncate(colon);
            const QString objectName = selector.mid(hash + 1);
            if (!names.contains(objectName)) {
                it = candidates.erase(it);
                continue;
            }
            if (objectName == names.at(i))
                result.append(qMakePair(i, selector.left(hash)));
            ++it;
        }
    }
    return result;
}
