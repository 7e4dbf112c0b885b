#pragma once
#include "tgui_export.h"
// Owner of every decoded picture and every brush that the skins name, keyed by
// the text that named them; style blocks and widgets keep pointers only.
#include <QBrush>
#include <QImage>
#include <QList>
#include <QMap>
#include <QMetaType>
#include <QPixmap>
#include <QString>

class QSvgRenderer;

class TGUI_EXPORT CTavoResourceRepository
{
public:
    CTavoResourceRepository();
    ~CTavoResourceRepository();

    // The first brush registered for a text (case-insensitive) stays; the pointer is stable.
    QBrush* registerBrush(const QString& text, const QBrush& brush);
    // QImage* (type 70), QPixmap* (65) or QSvgRenderer* (261); type says which.
    void* registerPixmap(const QString& path, const QSize& size, QMetaType::Type& type);
    void* registerSvgGraphics(const QString& path, const QSize& size, QMetaType::Type& type);
    // A QPixmap* of the renderer rasterised at size, cached per renderer and size.
    void* registerScaledImage(void* renderer, QMetaType::Type type, const QSize& size);
    // Drops images, brushes and pixmaps; renderers stay until the end of the process.
    void reset();
    // How many resets any repository has had: a pointer into one is only good for the
    // count it was taken at.
    static quint64 resetCount();

    // Pictures that image handles allocate for themselves live here until the process ends.
    QImage* adoptImage(QImage* image);
    QPixmap* adoptPixmap(QPixmap* pixmap);

    const QMap<QString, QPixmap>& pixmaps() const { return m_pixmaps; }
    const QMap<QString, QBrush>& brushes() const { return m_brushes; }
    const QMap<QString, QImage>& images() const { return m_images; }
    const QMap<QString, QSvgRenderer*>& renderers() const { return m_renderers; }
    // Bytes of pixel data held by the images and pixmaps.
    qint64 pixelBytes() const;

private:
    QMap<QString, QPixmap> m_pixmaps;
    QMap<QString, QBrush> m_brushes;
    QMap<QString, QImage> m_images;
    QMap<QString, QSvgRenderer*> m_renderers;
    QList<QImage*> m_looseImages;
    QList<QPixmap*> m_loosePixmaps;
    QList<QSvgRenderer*> m_looseRenderers;
};

extern TGUI_EXPORT CTavoResourceRepository StyleResourceContainer;
