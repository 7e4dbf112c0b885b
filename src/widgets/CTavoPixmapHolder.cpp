#include "widgets/CTavoPixmapHolder.h"

#include <QPainter>

CTavoPixmapHolder::CTavoPixmapHolder(QWidget* parent, int x, int y, int w, int h)
    : CTavoWidget(parent, 0, x, y, w, h), m_pixmap(nullptr)
{
}

void CTavoPixmapHolder::paint(QPainter* painter)
{
    if (!isVisible())
        return;
    if (m_pixmap && !m_pixmap->isNull())
        painter->drawPixmap(topLeft(), *m_pixmap);
    else if (m_backgroundBrush)
        painter->fillRect(geo(), *m_backgroundBrush);
}

bool CTavoPixmapHolder::handleEvent(QEvent::Type type, QPoint position)
{
    if (m_pixmap && !m_pixmap->isNull() &&
        (type == QEvent::MouseButtonPress || type == QEvent::MouseButtonRelease))
        emit forwardEvent(type, 1, position.x(), position.y());
    // The event goes on to the surface as well.
    return false;
}
