#include "widgets/CTavoIconLabel.h"

#include <QPainter>

#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoIcon.h"

CTavoIconLabel::CTavoIconLabel(QWidget* parent)
    : CTavoLabelWidget(parent)
    , m_mode(0)
{
}

void CTavoIconLabel::set(int mode, const QString& text)
{
    m_mode = mode;
    if (text.isEmpty()) {
        setText(QString());
        setVisible(false);
        return;
    }
    setVisible(true);
    if (text.length() > 2)
        m_mode = 1;
    setText(text);
    const CTavoImage& image = modeImage();
    setSize(image.isNull() ? m_actualSize : image.size(), false);
    update();
}

void CTavoIconLabel::set(int mode, int number)
{
    if (number < 1) {
        setVisible(false);
        return;
    }
    set(mode, QString::asprintf("%d", number));
    setVisible(true);
}

void CTavoIconLabel::layout()
{
    CTavoLabelWidget::layout();
    if (!m_style)
        return;
    m_bigBackground = m_style->Image(QStringLiteral("big-label-background-image"), CTavoImage());
    m_textOffset = m_style->Location(QStringLiteral("text-location-offset"), QPoint(0, 0));
}

void CTavoIconLabel::paint(QPainter* painter)
{
    // Under an icon the icon paints us, so the surface's pass would paint twice.
    if (qobject_cast<CTavoIcon*>(parent()))
        return;
    paintLabel(painter);
}

void CTavoIconLabel::paintOwned(QPainter* painter, bool inverted)
{
    if (!inverted) {
        paintLabel(painter);
        return;
    }
    // Swapped in place: a repaint request from here would loop.
    const QColor normal = m_pen.color();
    m_pen.setColor(m_invertedColor);
    paintLabel(painter);
    m_pen.setColor(normal);
}

void CTavoIconLabel::paintLabel(QPainter* painter)
{
    if (!painter || !m_visible)
        return;
    applyRenderQuality(painter);
    paintImage(painter, rect(), modeImage());
    CTavoLabelWidget::paint(painter, QRect(topLeft() - m_textOffset, QRect::size()));
}
