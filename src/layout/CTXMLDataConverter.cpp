#include "layout/CTXMLDataConverter.h"

#include <QByteArray>
#include <QRegExp>
#include <QRegExpValidator>
#include <QStringList>
#include <cstring>

#include "CTXMLIcon.h"
#include "CTXMLLineKey.h"
#include "CTXMLLineKeys.h"
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

namespace {

const char* const kInputModeNames[InputModeCount] = {
    "Abc", "abc", "ABC", "123", "IP", "URL", "123T", "Tel", "TelNoNav", "Hex", "XT9 PinYin", "IPv6", "123*",
};

// Whether a line key of this kind belongs to the range that starts at offset.
bool lineKindInRange(int kind, int offset)
{
    switch (kind) {
    case 1:
    case 5:
        return true;
    case 4:
    case 7:
    case 10:
        return offset != 4000;
    case 2:
        return offset == 7000;
    default:
        return false;
    }
}

} // namespace

InputModeT CTXMLDataConverter::getInputModeFromXml(const char* name)
{
    if (name) {
        for (int i = 0; i < InputModeCount; ++i) {
            if (std::strcmp(name, kInputModeNames[i]) == 0)
                return InputModeT(i);
        }
    }
    return InputModeLower;
}

QString CTXMLDataConverter::getStringFromInputMode(InputModeT mode)
{
    if (int(mode) < 0 || int(mode) >= InputModeCount)
        return QString();
    return QString::fromLatin1(kInputModeNames[mode]);
}

QString CTXMLDataConverter::decodeEscapeSequenceCharaters(const QString& text)
{
    QString out = text;
    out.replace(QLatin1String("&lt;"), QLatin1String("<"));
    out.replace(QLatin1String("&gt;"), QLatin1String(">"));
    out.replace(QLatin1String("&amp;"), QLatin1String("&"));
    out.replace(QLatin1String("&quot;"), QLatin1String("\""));
    out.replace(QLatin1String("&apos;"), QLatin1String("'"));
    return out;
}

int CTXMLDataConverter::getLineTypeOffset(int id)
{
    for (int offset = 9000; offset >= 3000; offset -= 1000) {
        if (id >= offset)
            return offset;
    }
    return 0;
}

QString CTXMLDataConverter::getLineLabel(CTXMLLineKeys* lineKeys, int id, int& offset, CTXMLIcon& icon)
{
    offset = getLineTypeOffset(id);
    if (!lineKeys)
        return QString();
    const int position = id - offset;
    if (position < 0)
        return QString();
    int counted = 0;
    for (int i = 0; i < lineKeys->count(); ++i) {
        const CTXMLLineKey& key = (*lineKeys)[i];
        if (!lineKindInRange(key.kind, offset))
            continue;
        if (counted == position) {
            icon = key.icon;
            return QString::fromUtf8(QByteArray::fromBase64(QByteArray(key.label)));
        }
        ++counted;
    }
    return QString();
}

CTXMLIcon* CTXMLDataConverter::getIconFromPresenceStatus(CTXMLIcon* icon, int status)
{
    if (!icon)
        return nullptr;
    int number;
    switch (status) {
    case -1: number = 214; break;
    case 0: number = 210; break;
    case 1:
    case 4: number = 212; break;
    case 2:
    case 3:
    case 5:
    case 8: number = 211; break;
    case 6: number = 215; break;
    case 7: number = 213; break;
    default: return nullptr;
    }
    icon->id = CTXMLIcon::tavoIcon(number);
    return icon;
}

QString CTXMLDataConverter::getCurrencyMapping(int currency)
{
    switch (currency) {
    case EAppCurrencyRupee: return QString(QChar(0x20B9));
    case EAppCurrencyDollar: return QString(QChar(0x0024));
    case EAppCurrencyEuro: return QString(QChar(0x20AC));
    case EAppCurrencyYen: return QString(QChar(0x00A5));
    case EAppCurrencyPound: return QString(QChar(0x00A3));
    default: return QString();
    }
}

bool CTXMLDataConverter::isConvertibleToT9E164(const QString& text)
{
    if (text.contains(QLatin1Char('@')))
        return false;
    QRegExp dialString(QStringLiteral("^(\\+|\\d).*$"));
    return dialString.exactMatch(text);
}

QString CTXMLDataConverter::setT9Data(const QString& text)
{
    // Keys 2 to 9 in turn, for the letters A to Z.
    static const char kLetterKeys[] = "22233344455566677778889999";
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        const ushort u = c.unicode();
        if (u == ' ' || (u >= '0' && u <= '9'))
            out.append(c);
        else if (u >= 'A' && u <= 'Z')
            out.append(QLatin1Char(kLetterKeys[u - 'A']));
        else if (u >= 'a' && u <= 'z')
            out.append(QLatin1Char(kLetterKeys[u - 'a']));
    }
    return out;
}

bool CTXMLDataConverter::isNumber(const QString& text)
{
    QRegExpValidator validator(QRegExp(QStringLiteral("[0-9]\\d{0,255}")));
    QString copy = text;
    int position = 0;
    return validator.validate(copy, position) == QValidator::Acceptable;
}
