#include "style/CTavoStyleSheetFile.h"

#include <QDebug>
#include <QFile>

#include <cstring>
#include <expat.h>

namespace {
enum ElementTypeT
{
    ElementIgnored = 0,
    ElementItem = 1,
    ElementName = 2,
    ElementAttributes = 3,
    ElementStyle = 4,
    ElementAuxStyle = 5,
    ElementNone = 6
};

void releaseSpare(QString& text)
{
    text.squeeze();
}

void clearAndRelease(QString& text)
{
    text = QString();
}
} // namespace

CTavoStyleSheetFile::CTavoStyleSheetFile() : m_parser(nullptr), m_elementType(ElementNone), m_depth(0) {}

CTavoStyleSheetFile::~CTavoStyleSheetFile()
{
    if (m_parser)
        XML_ParserFree(m_parser);
}

int CTavoStyleSheetFile::parse(const QString& path)
{
    QFile file(path);
    if (!file.exists()) {
        qDebug() << path << "Cannot be opened";
        return -1;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        qDebug() << path << "Cannot be opened";
        return -1;
    }
    const QByteArray content = file.readAll();

    if (m_parser)
        XML_ParserFree(m_parser);
    m_parser = XML_ParserCreate("UTF-8");
    if (!m_parser) {
        file.close();
        return -1;
    }
    m_depth = 0;
    m_elementType = ElementNone;
    XML_SetElementHandler(m_parser, &CTavoStyleSheetFile::StartElementHandler,
                          &CTavoStyleSheetFile::EndElementHandler);
    XML_SetCharacterDataHandler(m_parser, &CTavoStyleSheetFile::TextElementHandler);
    XML_SetUserData(m_parser, this);

    const int result =
        XML_Parse(m_parser, content.constData(), content.size(), 1) == XML_STATUS_OK ? 0 : -1;

    XML_ParserFree(m_parser);
    m_parser = nullptr;
    file.close();
    clearAndRelease(m_name);
    clearAndRelease(m_attributes);
    clearAndRelease(m_style);
    clearAndRelease(m_auxStyle);
    return result;
}

CTavoStyleItem* CTavoStyleSheetFile::get(const QString& name)
{
    auto it = m_items.find(name);
    return it == m_items.end() ? nullptr : &it.value();
}

QString CTavoStyleSheetFile::getAttributes(const QString& name) const
{
    return m_items.value(name).m_attributes;
}

QString CTavoStyleSheetFile::getStyle(const QString& name) const
{
    return m_items.value(name).m_style;
}

QString CTavoStyleSheetFile::getAuxStyle(const QString& name) const
{
    return m_items.value(name).m_auxStyle;
}

int CTavoStyleSheetFile::getElementType(const char* name)
{
    if (!name)
        return ElementIgnored;
    switch (name[0]) {
    case 'I':
        return ElementItem;
    case 'N':
        return ElementName;
    case 'A':
        return name[1] == 't' ? ElementAttributes : ElementAuxStyle;
    case 'S':
        return ElementStyle;
    default:
        return ElementIgnored;
    }
}

void CTavoStyleSheetFile::StartElementHandler(void* userData, const char* name, const char**)
{
    auto* self = static_cast<CTavoStyleSheetFile*>(userData);
    const int type = getElementType(name);
    if (type == ElementItem) {
        self->m_name.clear();
        self->m_attributes.clear();
        self->m_style.clear();
        self->m_auxStyle.clear();
    }
    self->m_elementType = type;
    ++self->m_depth;
}

void CTavoStyleSheetFile::TextElementHandler(void* userData, const char* text, int length)
{
    auto* self = static_cast<CTavoStyleSheetFile*>(userData);
    if (!text || length <= 0)
        return;
    // Leading blanks and control bytes of a run carry nothing.
    while (length > 0 && static_cast<unsigned char>(*text) < 33) {
        ++text;
        --length;
    }
    if (length <= 0)
        return;
    const void* nul = memchr(text, 0, static_cast<size_t>(length));
    if (nul)
        length = static_cast<int>(static_cast<const char*>(nul) - text);
    const QString piece = QString::fromUtf8(text, length);
    switch (self->m_elementType) {
    case ElementName:
        self->m_name += piece;
        break;
    case ElementAttributes:
        self->m_attributes += piece;
        break;
    case ElementStyle:
        self->m_style += piece.simplified();
        break;
    case ElementAuxStyle:
        self->m_auxStyle += piece.simplified();
        break;
    default:
        break;
    }
}

void CTavoStyleSheetFile::EndElementHandler(void* userData, const char* name)
{
    auto* self = static_cast<CTavoStyleSheetFile*>(userData);
    if (getElementType(name) == ElementItem) {
        auto it = self->m_items.find(self->m_name);
        if (it == self->m_items.end()) {
            CTavoStyleItem item;
            item.m_name = self->m_name;
            item.m_attributes = self->m_attributes;
            item.m_style = self->m_style;
            item.m_auxStyle = self->m_auxStyle;
            it = self->m_items.insert(self->m_name, item);
        } else {
            // An item spread over several elements: styles add up, the first attributes count.
            it->m_style += QLatin1Char('\n');
            it->m_style += self->m_style;
        }
        releaseSpare(it->m_name);
        releaseSpare(it->m_attributes);
        releaseSpare(it->m_style);
        releaseSpare(it->m_auxStyle);
    }
    self->m_elementType = ElementNone;
    --self->m_depth;
}
