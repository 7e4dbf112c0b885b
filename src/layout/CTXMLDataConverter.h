#pragma once
// Conversion between TXML documents and the toolkit's objects. The entity
// helpers guard the reserved characters of the pair syntax ("name=value;...").
#include <QString>

class CTXMLDataConverter
{
public:
    static QString encodeEntities(const QString& text);
    static QString decodeEntities(const QString& text);
};
