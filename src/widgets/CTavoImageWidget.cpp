#include "widgets/CTavoImageWidget.h"

#include <QPainter>

#include "style/CTavoWidgetStyle.h"

CTavoImageWidget::CTavoImageWidget(QWidget* parent, int x, int y, int w, int h)
    : CTavoWidget(parent, 2, x, y, w, h)
{
}

void CTavoImageWidget::setImage(const QImage& image)
{
    m_image = image;
    update();
}

void CTavoImageWidget::setImage(const QByteArray& base64)
{
    if (base64.isEmpty())
        return;
    m_image = QImage::fromData(QByteArray::fromBase64(base64), "JPG");
    update();
}

void CTavoImageWidget::layout()
{
    CTavoWidget::layout();
    if (m_style)
        m_defaultImage = m_style->Image(QStringLiteral("default-image"), CTavoImage());
}

void CTavoImageWidget::paint(QPainter* painter)
{
    if (!painter || !m_visible)
        return;
    CTavoWidget::paint(painter);
    if (!m_image.isNull())
        painter->drawImage(rect(), m_image);
    else
        paintImage(painter, rect(), m_defaultImage);
}
