#include "input/CTavoKateChar.h"

#include <QBrush>
#include <QPainter>

namespace {
// Cells without a background of their own.
const QColor kDefaultBackground(0, 0, 128, 200);
}  // namespace

CTavoKateChar::CTavoKateChar(QWidget* parent)
    : CTavoLabelWidget(parent), m_markedPen(Qt::white)
{
    // Readable on the default background until a style says otherwise.
    m_pen = QPen(Qt::white);
    m_markedFont = m_font;
}

void CTavoKateChar::layout()
{
    CTavoLabelWidget::layout();
    // A highlight without a colour of its own keeps the text's.
    if (m_highlightFormat.hasProperty(QTextFormat::ForegroundBrush))
        m_markedPen = QPen(m_highlightFormat.foreground(), 1);
    else
        m_markedPen = m_pen;
    m_markedFont = m_highlightFormat.hasProperty(QTextFormat::FontPixelSize) ||
                           m_highlightFormat.hasProperty(QTextFormat::FontPointSize)
                       ? m_highlightFormat.font()
                       : m_font;
}

void CTavoKateChar::setChar(QChar c)
{
    if (c == m_char && !m_charText.isEmpty())
        return;
    m_char = c;
    m_charText = QString(c);
}

void CTavoKateChar::paint(QPainter* painter)
{
    if (!isVisible())
        return;
    if (m_backgroundBrush && m_backgroundBrush->style() != Qt::NoBrush)
        painter->fillRect(rect(), *m_backgroundBrush);
    else
        painter->fillRect(rect(), kDefaultBackground);
    if (isFocused()) {
        painter->fillRect(m_textRect, m_highlightFormat.background());
        painter->setFont(m_markedFont);
        painter->setPen(m_markedPen);
    } else {
        painter->setFont(m_font);
        painter->setPen(m_pen);
    }
    painter->drawText(m_textRect, Qt::AlignCenter, m_charText);
}
