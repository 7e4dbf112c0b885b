#include "input/TavoIpAddressValidation.h"

#include <QAbstractSocket>
#include <QHostAddress>
#include <QRegExp>
#include <QStringList>

#include "input/CTavoIPv6AddressValidator.h"

namespace {
QAbstractSocket::NetworkLayerProtocol protocolOf(const QString& text)
{
    return QHostAddress(text).protocol();
}

// The address part of "address/prefix" as sixteen bytes; false unless it is IPv6.
bool ipv6Bytes(const QString& text, Q_IPV6ADDR* bytes)
{
    const QHostAddress address(text.section(QLatin1Char('/'), 0, 0));
    if (address.protocol() != QAbstractSocket::IPv6Protocol)
        return false;
    *bytes = address.toIPv6Address();
    return true;
}
}  // namespace

bool isValidIPv4Address(const QString& text)
{
    return protocolOf(text) == QAbstractSocket::IPv4Protocol;
}

bool isValidIPv6Prefix(const QString& text)
{
    if (text.isEmpty() || text.size() > 3)
        return false;
    for (const QChar c : text) {
        if (!c.isDigit())
            return false;
    }
    return text.toInt() < 128;
}

bool isValidIPv6ToConfigure(const QString& text)
{
    const QHostAddress address(text);
    return address.protocol() == QAbstractSocket::IPv6Protocol && address != QHostAddress(QHostAddress::AnyIPv6) &&
           address != QHostAddress(QHostAddress::LocalHostIPv6);
}

bool isValidIPv6Address(const QString& text, bool withPrefix)
{
    QRegExp shape(QString::fromLatin1(CTavoIPv6AddressValidator::kShape));
    if (!shape.exactMatch(text))
        return false;
    const QStringList parts = text.split(QLatin1Char('/'));
    if (withPrefix)
        return parts.size() == 2 && isValidIPv6ToConfigure(parts.at(0)) && isValidIPv6Prefix(parts.at(1));
    return parts.size() == 1 && isValidIPv6ToConfigure(parts.at(0));
}

bool isValidLinkLocalAddress(const QString& text)
{
    Q_IPV6ADDR b;
    // Only fe80::/16 exactly, narrower than the whole link-local range.
    return isValidIPv6Address(text, true) && ipv6Bytes(text, &b) && b[0] == 0xFE && b[1] == 0x80;
}

bool isValidULAAddress(const QString& text)
{
    Q_IPV6ADDR b;
    return isValidIPv6Address(text, true) && ipv6Bytes(text, &b) && (b[0] == 0xFC || b[0] == 0xFD);
}

bool isValidMulticastAddress(const QString& text)
{
    Q_IPV6ADDR b;
    return isValidIPv6Address(text, false) && ipv6Bytes(text, &b) && b[0] == 0xFF;
}

bool isValidGatewayAddress(const QString& text)
{
    return isValidIPv6Address(text, false);
}

bool isValidGlobalAddress(const QString& text)
{
    // The multicast test wants a text without prefix, so here it never refuses.
    return isValidIPv6Address(text, true) && !isValidLinkLocalAddress(text) && !isValidULAAddress(text) &&
           !isValidMulticastAddress(text);
}

bool isValidIPv6AddressType(const QString& text, const QString& kind)
{
    if (kind.isEmpty())
        return isValidIPv6Address(text, false);
    if (kind == QLatin1String("LLA"))
        return isValidLinkLocalAddress(text);
    if (kind == QLatin1String("ULA"))
        return isValidULAAddress(text);
    if (kind == QLatin1String("GLA"))
        return isValidGlobalAddress(text);
    if (kind == QLatin1String("GTW"))
        return isValidGatewayAddress(text);
    if (kind == QLatin1String("MCA"))
        return isValidMulticastAddress(text);
    if (kind == QLatin1String("ANY"))
        return protocolOf(text) == QAbstractSocket::IPv6Protocol;
    return false;
}

bool isValidIPAddress(const QString& text, int type, const QString& kind)
{
    switch (type) {
    case 1:
        return isValidIPv4Address(text);
    case 2:
        return isValidIPv6AddressType(text, kind);
    case 3:
        return isValidIPv4Address(text) || isValidIPv6AddressType(text, kind);
    default:
        return false;
    }
}
