#include "style/CTavoResourceRepository.h"

#include <QPainter>
#include <QSvgRenderer>

#include "style/CTavoImage.h"

CTavoResourceRepository StyleResourceContainer;

namespace {
QPixmap rasterise(QSvgRenderer* renderer, const QSize& size)
{
    QImage image(size, QImage::Format_ARGB4444_Premultiplied);
    if (image.isNull())
        return QPixmap();
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::SmoothPixmapTransform | QPainter::Antialiasing);
    renderer->render(&painter);
    painter.end();
    // An image keeps the paint engine it was drawn with (a few kB) for as long as
    // it lives; the kept copy is made without one. NoFormatConversion: otherwise
    // the raster backend widens the pixmap to 32 bits and the 16-bit form saves nothing.
    return QPixmap::fromImage(image.copy(), Qt::NoFormatConversion);
}

// Vectors are rasterised at sizes a screen can show; anything larger is a skin error.
bool plausibleSize(const QSize& size)
{
    return size.width() > 0 && size.height() > 0 && size.width() <= 8192 && size.height() <= 8192;
}
} // namespace

CTavoResourceRepository::CTavoResourceRepository() {}

CTavoResourceRepository::~CTavoResourceRepository()
{
    qDeleteAll(m_renderers);
    qDeleteAll(m_looseRenderers);
    qDeleteAll(m_looseImages);
    qDeleteAll(m_loosePixmaps);
}

QBrush* CTavoResourceRepository::registerBrush(const QString& text, const QBrush& brush)
{
    const QString key = text.toLower();
    auto it = m_brushes.find(key);
    if (it == m_brushes.end())
        it = m_brushes.insert(key, brush);
    return &it.value();
}

void* CTavoResourceRepository::registerPixmap(const QString& path, const QSize& size, QMetaType::Type& type)
{
    const QString key = path.toLower();
    auto image = m_images.find(key);
    if (image != m_images.end()) {
        type = QMetaType::QImage;
        return &image.value();
    }
    auto pixmap = m_pixmaps.find(key);
    if (pixmap != m_pixmaps.end()) {
        type = QMetaType::QPixmap;
        return &pixmap.value();
    }
    // A cached renderer answers whatever the size: sized rasters are only made for paths
    // not yet held as vectors.
    auto renderer = m_renderers.find(key);
    if (renderer != m_renderers.end()) {
        type = QMetaType::Type(TavoVectorImageType);
        return renderer.value();
    }
    if (path.contains(QLatin1String(".svg")))
        return registerSvgGraphics(path, size, type);

    const QImage loaded(path);
    if (loaded.hasAlphaChannel()) {
        type = QMetaType::QPixmap;
        return &m_pixmaps.insert(key, QPixmap::fromImage(loaded)).value();
    }
    type = QMetaType::QImage;
    return &m_images.insert(key, loaded.convertToFormat(QImage::Format_RGB16)).value();
}

void* CTavoResourceRepository::registerSvgGraphics(const QString& path, const QSize& size, QMetaType::Type& type)
{
    if ((size.width() == 0 && size.height() == 0) || size.width() < 0 || size.height() < 0) {
        auto* renderer = new QSvgRenderer(path);
        type = QMetaType::Type(TavoVectorImageType);
        auto it = m_renderers.find(path);
        if (it != m_renderers.end()) {
            // Handles to the old renderer may still be about; it stays alive with the repository.
            m_looseRenderers.append(it.value());
            it.value() = renderer;
        } else {
            m_renderers.insert(path, renderer);
        }
        return renderer;
    }
    const QString key = path.toLower() + QString::asprintf(":%dx%d", size.width(), size.height());
    QSvgRenderer renderer(path);
    type = QMetaType::QPixmap;
    const QPixmap pixmap = plausibleSize(size) && renderer.isValid() ? rasterise(&renderer, size) : QPixmap();
    auto it = m_pixmaps.find(key);
    if (it != m_pixmaps.end()) {
        it.value() = pixmap;
        return &it.value();
    }
    return &m_pixmaps.insert(key, pixmap).value();
}

void* CTavoResourceRepository::registerScaledImage(void* renderer, QMetaType::Type type, const QSize& size)
{
    if (!renderer)
        return nullptr;
    if (int(type) != TavoVectorImageType)
        return renderer;
    const QString key = QString::asprintf("0x%p Size %d:%d", renderer, size.width(), size.height());
    auto it = m_pixmaps.find(key);
    if (it != m_pixmaps.end())
        return &it.value();
    auto* svg = static_cast<QSvgRenderer*>(renderer);
    const QPixmap pixmap = plausibleSize(size) && svg->isValid() ? rasterise(svg, size) : QPixmap();
    return &m_pixmaps.insert(key, pixmap).value();
}

namespace {
quint64 s_resets = 0;
}

quint64 CTavoResourceRepository::resetCount()
{
    return s_resets;
}

void CTavoResourceRepository::reset()
{
    ++s_resets;
    m_images.clear();
    m_brushes.clear();
    m_pixmaps.clear();
}

QImage* CTavoResourceRepository::adoptImage(QImage* image)
{
    if (image)
        m_looseImages.append(image);
    return image;
}

QPixmap* CTavoResourceRepository::adoptPixmap(QPixmap* pixmap)
{
    if (pixmap)
        m_loosePixmaps.append(pixmap);
    return pixmap;
}

qint64 CTavoResourceRepository::pixelBytes() const
{
    qint64 bytes = 0;
    for (const QImage& image : m_images)
        bytes += image.sizeInBytes();
    for (const QPixmap& pixmap : m_pixmaps) {
        if (!pixmap.isNull())
            bytes += qint64(pixmap.width()) * pixmap.height() * pixmap.depth() / 8;
    }
    return bytes;
}
