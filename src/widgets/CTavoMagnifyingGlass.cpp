#include "widgets/CTavoMagnifyingGlass.h"

#include <QPainter>
#include <QPalette>
#include <QRegion>

CTavoMagnifyingGlass::CTavoMagnifyingGlass(QWidget* parent, QWidget* source)
    : QWidget(parent), m_source(source), m_mask(new QImage), m_cachedImage(nullptr), m_magFactor(-1.0f), m_magGap(10)
{
    QWidget::hide();
}

CTavoMagnifyingGlass::~CTavoMagnifyingGlass()
{
    delete m_mask;
    delete m_cachedImage;
}

void CTavoMagnifyingGlass::setMagGlassMask(const QImage& mask)
{
    *m_mask = mask;
}

void CTavoMagnifyingGlass::setMagFactor(float factor)
{
    if (factor == m_magFactor)
        return;
    m_magFactor = factor;
    // The cache is the source at the old factor.
    updateMagnifiedView();
}

void CTavoMagnifyingGlass::show(QPoint point)
{
    if (!m_source || m_mask->isNull())
        return;
    const int h = int(float(m_source->height()) * m_magFactor);
    const int w = 3 * h;
    // A factor left unset gives no glass at all; QImage and the painter would
    // only complain about the negative size.
    if (h <= 0)
        return;
    if (m_mask->size() != QSize(w, h))
        *m_mask = m_mask->scaled(w, h, Qt::IgnoreAspectRatio);
    if (size() != QSize(w, h))
        resize(w, h);

    const QPoint at = m_source->mapToParent(point);
    const QPoint target(at.x() - w / 2, qMax(m_source->y() - h - m_magGap, 0));
    if (pos() == target && m_cachedImage && isVisible())
        return;
    move(target);

    if (!m_cachedImage) {
        m_cachedImage = new QImage(m_source->size() * qreal(m_magFactor), QImage::Format_ARGB32_Premultiplied);
        m_cachedImage->fill(0x808080);
        QPainter painter(m_cachedImage);
        painter.scale(m_magFactor, m_magFactor);
        if (!m_clip.isNull())
            painter.setClipRect(m_clip);
        m_source->render(&painter, QPoint(0, 0), QRegion(),
                         QWidget::DrawWindowBackground | QWidget::DrawChildren);
    }

    QImage glass(w, h, QImage::Format_ARGB32);
    glass.fill(0x80808080);
    {
        QPainter painter(&glass);
        painter.drawImage(QPointF(qreal(w / 2) - qreal(m_magFactor) * point.x(), 0), *m_cachedImage);
        painter.setBackgroundMode(Qt::TransparentMode);
        painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        painter.drawImage(0, 0, *m_mask);
    }
    ++m_renderCount;

    QPalette palette = this->palette();
    palette.setBrush(QPalette::All, backgroundRole(), QBrush(glass));
    setPalette(palette);
    setAutoFillBackground(true);
    setVisible(true);
}

void CTavoMagnifyingGlass::updateMagnifiedView()
{
    delete m_cachedImage;
    m_cachedImage = nullptr;
}
