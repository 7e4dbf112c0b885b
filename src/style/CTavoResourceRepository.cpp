#include "style/CTavoResourceRepository.h"
#include <QSvgRenderer>
CTavoResourceRepository StyleResourceContainer;
CTavoResourceRepository::CTavoResourceRepository() {}
CTavoResourceRepository::~CTavoResourceRepository() {}
QBrush* CTavoResourceRepository::registerBrush(const QString& text, const QBrush& brush)
{
    auto it = m_brushes.find(text.toLower());
    if (it == m_brushes.end())
        it = m_brushes.insert(text.toLower(), brush);
    return &it.value();
}
void* CTavoResourceRepository::registerPixmap(const QString&, const QSize&, QMetaType::Type&) { return nullptr; }
void* CTavoResourceRepository::registerSvgGraphics(const QString&, const QSize&, QMetaType::Type&) { return nullptr; }
void* CTavoResourceRepository::registerScaledImage(void*, QMetaType::Type, const QSize&) { return nullptr; }
void CTavoResourceRepository::reset() { m_images.clear(); m_brushes.clear(); m_pixmaps.clear(); }
QImage* CTavoResourceRepository::adoptImage(QImage* image) { m_looseImages.append(image); return image; }
QPixmap* CTavoResourceRepository::adoptPixmap(QPixmap* pixmap) { m_loosePixmaps.append(pixmap); return pixmap; }
qint64 CTavoResourceRepository::pixelBytes() const { return 0; }
