#include "layout/CTXMLDataConverter.h"

#include <QByteArray>
#include <QStringList>

#include "CTXMLIcon.h"
#include "CTXMLLineKey.h"
#include "CTXMLListMenu.h"
#include "CTXMLSoftkey.h"

namespace {
// "%" goes first when encoding so that the escapes made later survive;
// decoding walks the table backwards and ends with "%25".
const char* const kEntities[][2] = {
    {"%", "%25"}, {"=", "%3D"}, {";", "%3B"}, {"&", "%26"},
    {"'", "%27"}, {"\"", "%22"}, {">", "%3E"}, {"<", "%3C"},
};
const int kEntityCount = int(sizeof kEntities / sizeof kEntities[0]);
}  // namespace

QString CTXMLDataConverter::encodeEntities(const QString& text)
{
    QString out = text;
    for (int i = 0; i < kEntityCount; ++i)
        out.replace(QLatin1String(kEntities[i][0]), QLatin1String(kEntities[i][1]));
    return out;
}

QString CTXMLDataConverter::decodeEntities(const QString& text)
{
    QString out = text;
    for (int i = kEntityCount - 1; i >= 0; --i)
        out.replace(QLatin1String(kEntities[i][1]), QLatin1String(kEntities[i][0]));
    return out;
}

namespace {

// Keys narrower than this share a row; wider ones take the alternative background.
const int kWideKeyExtent = 1280;

QString latin(const char* text)
{
    return QString::fromLatin1(text);
}

} // namespace

CTavoIconDefinition CTXMLDataConverter::getIconDefFromXml(const CTXMLIcon* icon)
{
    if (!icon)
        return CTavoIconDefinition();
    QList<int> numbers;
    const QStringList parts = QString::fromLatin1(icon->iconList).split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString& part : parts) {
        bool ok = false;
        const int number = part.trimmed().toInt(&ok);
        if (ok && number >= 1 && number <= CTXMLIcon::TAVO_ICON_MAX)
            numbers.append(number);
    }
    return CTavoIconDefinition(QString::fromUtf8(icon->name), QString::fromUtf8(icon->label), int(icon->id),
                               icon->flags, numbers);
}

void CTXMLDataConverter::getButtonDefFromXml(TavoButtonSettings& settings, const CTXMLSoftkey* softkey)
{
    if (!softkey)
        return;
    const int number = int(softkey->icon);
    const CTavoIconDefinition icon(QString(), QString(), number > 0 ? number : -1);
    settings.set(QString::fromUtf8(softkey->iconName), QString::fromUtf8(softkey->label), latin(softkey->url),
                 latin(softkey->url2), latin(softkey->url3), icon, QString(), softkey->id, softkey->priority);
    settings.m_softkeyType = int(softkey->type);
    settings.m_buttonType = softkey->extent < kWideKeyExtent ? 3 : 4;
}

void CTXMLDataConverter::getButtonDefFromXml(TavoButtonSettings& settings, const CTXMLLineKey* lineKey)
{
    if (!lineKey)
        return;
    // Line key labels travel in Base64.
    const QString label = QString::fromUtf8(QByteArray::fromBase64(QByteArray(lineKey->label)));
    settings.set(QString::fromUtf8(lineKey->icon.name), label, latin(lineKey->url), latin(lineKey->url2),
                 latin(lineKey->url3), getIconDefFromXml(&lineKey->icon), QString(), lineKey->id,
                 lineKey->priority);
    settings.m_softkeyType = lineKey->kind;
    settings.m_buttonType = 3;
}

void CTXMLDataConverter::getButtonDefFromXml(TavoButtonSettings& settings, const CTXMLListMenu* item)
{
    if (!item)
        return;
    settings.set(QString::fromUtf8(item->icon.name), QString::fromUtf8(item->label), latin(item->url),
                 latin(item->url2), latin(item->url3), getIconDefFromXml(&item->icon), QString(), item->id,
                 item->priority);
    settings.m_softkeyType = item->type;
    settings.m_buttonType = item->extent < kWideKeyExtent ? 3 : 4;
}

void CTXMLDataConverter::getButtonDefFromXml(TavoButtonSettings& settings, const CTXMLIcon* icon)
{
    if (!icon)
        return;
    settings.set(QString::fromUtf8(icon->name), QString::fromUtf8(icon->label), QString(), QString(), QString(),
                 getIconDefFromXml(icon), QString(), int(icon->id), settings.m_priority);
    settings.m_buttonType = 3;
}

TavoButtonSettings CTXMLDataConverter::getButtonDefFromXml(const CTXMLSoftkey* softkey)
{
    TavoButtonSettings settings;
    getButtonDefFromXml(settings, softkey);
    return settings;
}

TavoButtonSettings CTXMLDataConverter::getButtonDefFromXml(const CTXMLLineKey* lineKey)
{
    TavoButtonSettings settings;
    getButtonDefFromXml(settings, lineKey);
    return settings;
}

TavoButtonSettings CTXMLDataConverter::getButtonDefFromXml(const CTXMLListMenu* item)
{
    TavoButtonSettings settings;
    getButtonDefFromXml(settings, item);
    return settings;
}

TavoButtonSettings CTXMLDataConverter::getButtonDefFromXml(const CTXMLIcon* icon)
{
    TavoButtonSettings settings;
    getButtonDefFromXml(settings, icon);
    return settings;
}
