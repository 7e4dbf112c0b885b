#include "style/CIconResource.h"

#include <QFile>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

#include "log/GuiLog.h"
#include "style/CTavoIconRepository.h"

QMap<QString, QPixmap*> gSvgPixmapCache;

namespace {

// Shared stand-ins. Plain pointers so that a resource can tell them apart from its own
// pictures at any time, also while the process ends.
QPixmap* s_placeholderPixmap = nullptr;
QSvgRenderer* s_placeholderSvg = nullptr;

const char kBuiltinPlaceholderSvg[] =
    "<svg xmlns='http://www.w3.org/2000/svg' width='40' height='40' viewBox='0 0 40 40'>"
    "<rect x='4' y='4' width='32' height='32' rx='4' fill='none' stroke='#808080' stroke-width='3'/>"
    "<path d='M12 12 L28 28 M28 12 L12 28' stroke='#808080' stroke-width='3'/></svg>";

// Frees the process-wide pictures when the process ends.
struct IconCacheCleanup
{
    ~IconCacheCleanup()
    {
        qDeleteAll(gSvgPixmapCache);
        gSvgPixmapCache.clear();
        delete s_placeholderPixmap;
        delete s_placeholderSvg;
    }
} s_iconCacheCleanup;

} // namespace

QPixmap* CIconResource::placeholderPixmap()
{
    if (s_placeholderPixmap)
        return s_placeholderPixmap;
    const CIconResource& source = iconRepository[QString("_PlaceHolderIcon")];
    if (source.getType() != 0 && QFile::exists(source.fileName()))
        s_placeholderPixmap = new QPixmap(source.fileName());
    if (!s_placeholderPixmap || s_placeholderPixmap->isNull()) {
        delete s_placeholderPixmap;
        // The skin has no placeholder of its own: draw a neutral one.
        s_placeholderPixmap = new QPixmap(40, 40);
        s_placeholderPixmap->fill(Qt::transparent);
        QSvgRenderer renderer{QByteArray(kBuiltinPlaceholderSvg)};
        QPainter painter(s_placeholderPixmap);
        renderer.render(&painter);
        guiLog(1, "Icon placeholder: built-in picture, no %s in the skin", "_PlaceHolderIcon");
    }
    return s_placeholderPixmap;
}

QSvgRenderer* CIconResource::placeholderSvg()
{
    if (s_placeholderSvg)
        return s_placeholderSvg;
    const CIconResource& source = iconRepository[QString("_PlaceHolderIconSvg")];
    if (source.getType() != 0 && QFile::exists(source.fileName()))
        s_placeholderSvg = new QSvgRenderer(source.fileName());
    if (!s_placeholderSvg || !s_placeholderSvg->isValid()) {
        delete s_placeholderSvg;
        s_placeholderSvg = new QSvgRenderer(QByteArray(kBuiltinPlaceholderSvg));
        guiLog(1, "Icon placeholder: built-in picture, no %s in the skin", "_PlaceHolderIconSvg");
    }
    return s_placeholderSvg;
}

CIconResource::CIconResource()
    : m_image(nullptr)
    , m_invertedImage(nullptr)
    , m_svg(nullptr)
    , m_type(0)
{
}

CIconResource::CIconResource(const QString& path)
    : CIconResource()
{
    m_fileName = path;
    // An explicit extension is trusted without looking at the disk.
    if (path.contains(".png")) {
        m_type = 1;
        return;
    }
    if (path.contains(".svg")) {
        m_type = 3;
        return;
    }
    // A bare name prefers the vector form.
    if (QFile::exists(path + ".svg")) {
        m_fileName = path + ".svg";
        m_type = 3;
    } else if (QFile::exists(path + ".png")) {
        m_fileName = path + ".png";
        m_type = 1;
    }
}

void CIconResource::release()
{
    if (m_image != s_placeholderPixmap && m_image != m_invertedImage)
        delete m_image;
    if (m_invertedImage != s_placeholderPixmap)
        delete m_invertedImage;
    if (m_svg != s_placeholderSvg)
        delete m_svg;
    m_image = nullptr;
    m_invertedImage = nullptr;
    m_svg = nullptr;
}

bool CIconResource::getInvertedFilename(QString& out) const
{
    out = m_fileName;
    int at = out.indexOf(".svg");
    if (at < 0)
        at = out.indexOf(".png");
    if (at < 0)
        return false;
    out.insert(at, "_Inv");
    if (QFile::exists(out))
        return true;
    out = m_fileName;
    return false;
}

QPixmap* CIconResource::getImage(bool* placeholderUsed, bool inverted)
{
    QPixmap*& slot = inverted ? m_invertedImage : m_image;
    if (slot)
        return slot;
    QString candidate = m_fileName;
    if (inverted)
        getInvertedFilename(candidate);
    if (!candidate.isEmpty() && QFile::exists(candidate)) {
        slot = new QPixmap(candidate);
        return slot;
    }
    slot = placeholderPixmap();
    if (placeholderUsed)
        *placeholderUsed = true;
    return slot;
}

QSvgRenderer* CIconResource::getSvg(bool* placeholderUsed, bool inverted)
{
    QString probe = m_fileName;
    if (inverted)
        getInvertedFilename(probe);
    const bool present = !m_fileName.isEmpty() && QFile::exists(probe);
    if (m_svg) {
        if (present) {
            // Never reload into the shared placeholder: the file came late, give it its own.
            if (m_svg == s_placeholderSvg)
                m_svg = new QSvgRenderer(m_fileName);
            else
                m_svg->load(m_fileName);
            return m_svg;
        }
        if (placeholderUsed)
            *placeholderUsed = true;
        return m_svg;
    }
    if (present) {
        m_svg = new QSvgRenderer(m_fileName);
        return m_svg;
    }
    m_svg = placeholderSvg();
    if (placeholderUsed)
        *placeholderUsed = true;
    return m_svg;
}

QPixmap* CIconResource::getCachedSvgPixmap(const QSize& size, bool inverted)
{
    if (size.width() < 1 || size.height() < 1)
        return nullptr;
    const QString key = m_fileName
        + QString("-(%1:%2)%3").arg(size.width()).arg(size.height()).arg(inverted ? "-inv" : "");
    auto hit = gSvgPixmapCache.constFind(key);
    if (hit != gSvgPixmapCache.constEnd())
        return hit.value();
    QString file = m_fileName;
    if (inverted)
        getInvertedFilename(file);
    QPixmap* pixmap = new QPixmap(size);
    pixmap->fill(Qt::transparent);
    if (QFile::exists(file)) {
        QSvgRenderer renderer(file);
        QPainter painter(pixmap);
        renderer.render(&painter);
        painter.end();
        // The cached copy does without the paint engine the drawing left behind.
        *pixmap = pixmap->copy();
    }
    gSvgPixmapCache.insert(key, pixmap);
    return pixmap;
}
