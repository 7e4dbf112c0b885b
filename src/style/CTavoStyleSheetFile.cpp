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
    QString* target = nullptr;
    bool simplify = false;
    switch (self->m_elementType) {
    case ElementName:
        target = &self->m_name;
        break;
    case ElementAttributes:
        target = &self->m_attributes;
        break;
    case ElementStyle:
        target = &self->m_style;
        simplify = true;
        break;
    case ElementAuxStyle:
        target = &self->m_auxStyle;
        simplify = true;
        break;
    default:
        return;
    }
    // Style text comes a line at a time: plain ASCII, the usual case, is appended
    // as it goes, each run simplified on its own as QString::simplified() would.
    bool ascii = true;
    for (int i = 0; i < length && ascii; ++i)
        ascii = static_cast<unsigned char>(text[i]) < 128;
    if (!ascii) {
        const QString piece = QString::fromUtf8(text, length);
        *target += simplify ? piece.simplified() : piece;
        return;
    }
    if (!simplify) {
        target->append(QLatin1String(text, length));
        return;
    }
    char run[256];
    int used = 0;
    bool gap = false;
    bool any = false;
    for (int i = 0; i < length; ++i) {
        const char c = text[i];
        if (c == ' ' || (c >= '\t' && c <= '\r')) {
            gap = true;
            continue;
        }
        if (used + 2 > int(sizeof run)) {
            target->append(QLatin1String(run, used));
            used = 0;
        }
        if (gap && any)
            run[used++] = ' ';
        gap = false;
        any = true;
        run[used++] = c;
    }
    target->append(QLatin1String(run, used));
}

void CTavoStyleSheetFile::EndElementHandler(void* userData, const char* name)
{
    auto* self = static_cast<CTavoStyleSheetFile*>(userData);
    if (getElementType(name) == ElementItem) {
        auto it = self->m_items.find(self->m_name);
        if (it == self->m_items.end()) {
            // Taken over, not shared: trimming a shared text would copy it.
            CTavoStyleItem item;
            item.m_name = self->m_name;
            item.m_attributes.swap(self->m_attributes);
            item.m_style.swap(self->m_style);
            item.m_auxStyle.swap(self->m_auxStyle);
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
