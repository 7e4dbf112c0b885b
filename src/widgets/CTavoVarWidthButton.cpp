#include "widgets/CTavoVarWidthButton.h"

#include <QFontMetrics>

#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoLabelWidget.h"

CTavoVarWidthButton::CTavoVarWidthButton(QWidget* parent)
    : CTavoButton(parent)
{
}

void CTavoVarWidthButton::setText(const QString& text)
{
    setLabel(text);
    fitToText();
    update();
}

void CTavoVarWidthButton::layout()
{
    CTavoButton::layout();
    fitToText();
}

void CTavoVarWidthButton::fitToText()
{
    // Box lengths: y is the right, height the left side.
    const QRect padding = m_style ? m_style->BoxLength(QStringLiteral("padding")) : QRect();
    const QFontMetrics metrics(m_labelWidget->font());
    const int textWidth = m_labelWidget->text().isEmpty() ? 0 : metrics.horizontalAdvance(m_labelWidget->text());
    const int newWidth = textWidth + padding.y() + padding.height();
    const QSize size(newWidth, height());
    const QRect before = rect();
    setSize(size, true);
    m_backgroundRect = rect();
    m_contentRect = m_style ? m_style->contentRect(m_backgroundRect) : rect();
    if (m_style) {
        placeLabels(m_style);
        alignIcon();
    } else {
        m_labelWidget->setSize(QSize(textWidth, height()), false);
        m_labelWidget->move(x() + padding.height(), y());
        m_labelWidget->setVisible(!m_disableLabel && !m_labelWidget->text().isEmpty());
    }
    if (before != rect()) {
        update(before);
        update();
    }
}

void CTavoVarWidthButton::paint(QPainter* painter)
{
    if (!painter || !m_visible)
        return;
    if (m_focused || m_down)
        paintBackground(painter);
    else
        CTavoButton::paint(painter);
}
