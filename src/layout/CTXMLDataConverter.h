#pragma once
#include "tgui_export.h"
// Conversion between TXML documents and the toolkit's objects. The entity
// helpers guard the reserved characters of the pair syntax ("name=value;...").
#include <QString>

#include "input/TavoInputTypes.h"
#include "style/CTavoIconDefinition.h"
#include "widgets/TavoButtonSettings.h"

class CTXMLIcon;
class CTXMLLineKey;
class CTXMLLineKeys;
class CTXMLListMenu;
class CTXMLSoftkey;

// The currency whose sign getCurrencyMapping gives.
enum EAppCurrencyType : int {
    EAppCurrencyNone = 0,
    EAppCurrencyRupee = 1,
    EAppCurrencyDollar = 2,
    EAppCurrencyEuro = 3,
    EAppCurrencyYen = 4,
    EAppCurrencyPound = 5
};

class TGUI_EXPORT CTXMLDataConverter
{
public:
    static QString encodeEntities(const QString& text);
    static QString decodeEntities(const QString& text);

    // A button from a key of a document; a null pointer leaves the settings alone.
    static void getButtonDefFromXml(TavoButtonSettings& settings, const CTXMLSoftkey* softkey);
    static void getButtonDefFromXml(TavoButtonSettings& settings, const CTXMLLineKey* lineKey);
    static void getButtonDefFromXml(TavoButtonSettings& settings, const CTXMLListMenu* item);
    static void getButtonDefFromXml(TavoButtonSettings& settings, const CTXMLIcon* icon);
    static TavoButtonSettings getButtonDefFromXml(const CTXMLSoftkey* softkey);
    static TavoButtonSettings getButtonDefFromXml(const CTXMLLineKey* lineKey);
    static TavoButtonSettings getButtonDefFromXml(const CTXMLListMenu* item);
    static TavoButtonSettings getButtonDefFromXml(const CTXMLIcon* icon);
    // Label, the two numbers, the file name and the further numbers (1 to 521 kept).
    static CTavoIconDefinition getIconDefFromXml(const CTXMLIcon* icon);

    // Mode names as documents write them; an unknown or missing name is "abc".
    static InputModeT getInputModeFromXml(const char* name);
    // "" for a value outside the table.
    static QString getStringFromInputMode(InputModeT mode);
    static QString getStringFromInputMode(int mode) { return getStringFromInputMode(InputModeT(mode)); }

    // The five XML character references, "&amp;" before the two quotes.
    static QString decodeEscapeSequenceCharaters(const QString& text);

    // Line keys: ids of each kind of key start at a multiple of 1000 (3000 to 9000).
    static int getLineTypeOffset(int id);
    // Label of the line key that id names, and its icon; offset receives the
    // id's range. Empty when there is no such key.
    static QString getLineLabel(CTXMLLineKeys* lineKeys, int id, int& offset, CTXMLIcon& icon);
    // Sets the presence icon of a status and returns icon; null for an unknown status.
    static CTXMLIcon* getIconFromPresenceStatus(CTXMLIcon* icon, int status);

    // The sign of an EAppCurrencyType; "" for any other value.
    static QString getCurrencyMapping(int currency);
    // A dial string begins with "+" or a digit and holds no "@".
    static bool isConvertibleToT9E164(const QString& text);
    // Letters to the dial pad digit that carries them; spaces, 0, 1 and the
    // digits 2 to 9 stay, anything else is dropped.
    static QString setT9Data(const QString& text);
    // 1 to 256 digits.
    static bool isNumber(const QString& text);
};
