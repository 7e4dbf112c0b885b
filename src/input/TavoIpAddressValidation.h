#pragma once
#include "tgui_export.h"
// Which texts are addresses a phone may be given: IPv4, IPv6 with or without a
// prefix length, and the kinds of IPv6 address a network screen asks for. Each
// answers false for anything it does not accept and logs nothing.
#include <QString>

// QHostAddress reads the text as IPv4.
TGUI_EXPORT bool isValidIPv4Address(const QString& text);
// One to three digits below 128 (so 128 itself is refused).
TGUI_EXPORT bool isValidIPv6Prefix(const QString& text);
// An IPv6 address that is neither the any-address nor the loopback.
TGUI_EXPORT bool isValidIPv6ToConfigure(const QString& text);
// The IPv6 shape as a whole; withPrefix asks for "address/prefix", without it a
// prefix is refused.
TGUI_EXPORT bool isValidIPv6Address(const QString& text, bool withPrefix);
// Kinds: a gateway and a multicast group come without a prefix, the others with one.
TGUI_EXPORT bool isValidGatewayAddress(const QString& text);
TGUI_EXPORT bool isValidLinkLocalAddress(const QString& text);
TGUI_EXPORT bool isValidULAAddress(const QString& text);
TGUI_EXPORT bool isValidMulticastAddress(const QString& text);
TGUI_EXPORT bool isValidGlobalAddress(const QString& text);
// kind: "" any configurable address, "LLA", "ULA", "GLA", "GTW", "MCA", "ANY".
TGUI_EXPORT bool isValidIPv6AddressType(const QString& text, const QString& kind);
// type 1 IPv4, 2 IPv6 of the kind, 3 either; other types are false.
TGUI_EXPORT bool isValidIPAddress(const QString& text, int type, const QString& kind);
