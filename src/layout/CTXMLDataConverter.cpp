#include "layout/CTXMLDataConverter.h"

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
