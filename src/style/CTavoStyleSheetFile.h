#pragma once
#include "tgui_export.h"
// A skin file: XML of named items, read with expat into a map of CTavoStyleItem.
#include <QMap>
#include <QString>

#include "style/CTavoStyleItem.h"

struct XML_ParserStruct;

class TGUI_EXPORT CTavoStyleSheetFile
{
public:
    CTavoStyleSheetFile();
    ~CTavoStyleSheetFile();
    CTavoStyleSheetFile(const CTavoStyleSheetFile&) = delete;
    CTavoStyleSheetFile& operator=(const CTavoStyleSheetFile&) = delete;

    // 0 on success, -1 on failure; items completed before an error stay.
    int parse(const QString& path);

    CTavoStyleItem* get(const QString& name);
    QString getAttributes(const QString& name) const;
    QString getStyle(const QString& name) const;
    QString getAuxStyle(const QString& name) const;
    const QMap<QString, CTavoStyleItem>& items() const { return m_items; }

    static void StartElementHandler(void* userData, const char* name, const char** attributes);
    static void EndElementHandler(void* userData, const char* name);
    static void TextElementHandler(void* userData, const char* text, int length);
    static int getElementType(const char* name);

private:
    QMap<QString, CTavoStyleItem> m_items;
    XML_ParserStruct* m_parser;
    int m_elementType;
    int m_depth;
    QString m_name;
    QString m_attributes;
    QString m_style;
    QString m_auxStyle;
};
