#pragma once
#include "tgui_export.h"
// Conversion between TXML documents and the toolkit's objects. The entity
// helpers guard the reserved characters of the pair syntax ("name=value;...").
#include <QString>

#include "style/CTavoIconDefinition.h"
#include "widgets/TavoButtonSettings.h"

class CTXMLIcon;
class CTXMLLineKey;
class CTXMLListMenu;
class CTXMLSoftkey;

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
};
