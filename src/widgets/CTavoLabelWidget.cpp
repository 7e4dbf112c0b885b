#include "widgets/CTavoLabelWidget.h"

#include <QDomElement>
#include <QFontInfo>
#include <QFontMetrics>
#include <QPainter>
#include <QTextFormat>
#include <QVector>

#include "automation/CTavoUITA.h"
#include "style/CTavoStyleSheet.h"
#include "style/CTavoWidgetStyle.h"
#include "tools/TavoToolFlags.h"
#include "widgets/TavoTextFormat.h"

double CTavoLabelWidget::m_scaleFactor = 1.0;
bool CTavoLabelWidget::m_bHighContrast = false;

namespace {

const unsigned kWrapBits = TavoTextNoWrap | TavoTextWordWrap | TavoTextAnywhere;
const unsigned kTopFlag = 32;

// One empty format shared by all labels until a style gives them their own.
const QTextCharFormat& emptyCharFormat()
{
    static const QTextCharFormat format;
    return format;
}

// QFont::setPixelSize detaches even for the size the font has: labels would
// each keep a private copy of a font they share with their style.
void setFontPixelSize(QFont& font, int pixels)
{
    if (font.pixelSize() != pixels)
        font.setPixelSize(pixels);
}

// Labels of one style build equal highlight formats; they share one copy.
const QTextCharFormat& sharedCharFormat(const QTextCharFormat& format)
{
    static QVector<QTextCharFormat> formats;
    for (const QTextCharFormat& known : qAsConst(formats)) {
        if (known == format)
            return known;
    }
    if (formats.size() >= 64)  // a host that makes ever new formats must not grow it for ever
        formats.clear();
    formats.append(format);
    return formats.constLast();
}

} // namespace

CTavoLabelWidget::CTavoLabelWidget(QWidget* parent, int x, int y, int w, int h)
    : CTavoWidget(parent, 2, x, y, w, h)
    , m_pen(CTavoWidgetStyle::colorPen(QColor(Qt::black)))
    , m_color(Qt::black)
    , m_flags(1 | TavoTextWordWrap)
    , m_fontMetrics(nullptr)
    , m_actualSize(0, 0)
    , m_elided(false)
    , m_customCropPixels(0)
    , m_minPixelSize(0)
    , m_basePixelSize(0)
    , m_currentPixelSize(0)
    , m_elideFromLeft(false)
    , m_lineHeight(0)
    , m_useHighlightPen(false)
    , m_highlightFormat(emptyCharFormat())
    , m_shadow(false)
{
    invertColor(m_color, m_invertedColor);
    // Keep the shaped glyphs after layout, so drawing does not shape again.
    m_textLayout.setCacheEnabled(true);
    rebuildMetrics();
    applyLayoutFont();
}

CTavoLabelWidget::CTavoLabelWidget(QWidget* parent, const QString& text, int x, int y, int w, int h)
    : CTavoLabelWidget(parent, x, y, w, h)
{
    setText(text);
}

CTavoLabelWidget::~CTavoLabelWidget()
{
    delete m_fontMetrics;
}

void CTavoLabelWidget::rebuildMetrics()
{
    delete m_fontMetrics;
    m_fontMetrics = new QFontMetrics(m_font);
}

void CTavoLabelWidget::applyLayoutFont()
{
    if (m_bHighContrast) {
        QFont bold = m_font;
        bold.setWeight(75);
        m_textLayout.setFont(bold);
    } else {
        m_textLayout.setFont(m_font);
    }
}

int CTavoLabelWidget::textBoxWidth() const
{
    return m_contentRect.isNull() ? width() : m_contentRect.width();
}

void CTavoLabelWidget::reformat()
{
    if (m_text.isEmpty()) {
        m_textLayout.clearLayout();
        m_actualSize = QSize(0, 0);
        return;
    }
    m_actualSize = formatText(m_fontMetrics, &m_textLayout, m_text, textBoxWidth(), height(),
                              int(m_flags), &m_elided, m_elideFromLeft, m_lineHeight);
}

void CTavoLabelWidget::setText(const QString& text)
{
    applyText(text, false, true);
}

void CTavoLabelWidget::setText(const char* text)
{
    setText(QString::fromUtf8(text));
}

void CTavoLabelWidget::setText(const QString& text, bool repaint)
{
    applyText(text, true, repaint);
}

void CTavoLabelWidget::shrinkToFit(const QString& text, bool estimate)
{
    rebuildMetrics();
    const int box = textBoxWidth();
    const int textWidth = m_fontMetrics->horizontalAdvance(text);
    if (box <= 0 || textWidth <= box)
        return;
    const int present = m_currentPixelSize > 0 ? m_currentPixelSize : pixelSizeOf(m_font);
    int size = present;
    if (estimate)
        size = qMax(m_minPixelSize, int(qint64(present) * box / textWidth));
    QFont trial = m_font;
    for (;;) {
        trial.setPixelSize(qMax(size, 1));
        if (QFontMetrics(trial).horizontalAdvance(text) <= box || size <= m_minPixelSize)
            break;
        --size;
    }
    // Never below the floor: past it the text is elided instead.
    size = qMax(size, m_minPixelSize);
    m_currentPixelSize = size;
    setFontPixelSize(m_font, size);
    rebuildMetrics();
}

void CTavoLabelWidget::applyText(const QString& text, bool simpleShrink, bool repaint)
{
    if (text.isEmpty() && m_text.isEmpty()) {
        setVisible(false);
        return;
    }
    m_textLayout.clearLayout();
    m_actualSize = QSize(0, 0);
    const bool same = (text == m_text);
    const bool lengthChanged = text.length() != m_text.length();
    m_text = text;
    if (text.isEmpty()) {
        setVisible(false);
        if (!same && repaint)
            update();
        return;
    }
    if (lengthChanged && m_basePixelSize > 0) {
        const int size = qMax(1, int(m_basePixelSize * m_scaleFactor));
        m_currentPixelSize = size;
        setFontPixelSize(m_font, size);
        rebuildMetrics();
    }
    if (width() == 0) {
        setWidth(m_minimumSize.width() > 0 ? m_minimumSize.width()
                                            : m_fontMetrics->horizontalAdvance(text));
        recomputeContentRect();
    } else if (m_minPixelSize > 0) {
        shrinkToFit(text, !simpleShrink);
    }
    applyLayoutFont();
    if (height() == 0) {
        setHeight(m_minimumSize.height() > 0 ? m_minimumSize.height()
                                              : m_fontMetrics->boundingRect(text).height());
        recomputeContentRect();
    }
    m_actualSize = formatText(m_fontMetrics, &m_textLayout, text, textBoxWidth(), height(),
                              int(m_flags), &m_elided, m_elideFromLeft, m_lineHeight);
    setVisible(true);
    if (!same && repaint)
        update();
}

void CTavoLabelWidget::enableScrolling(bool on, bool force)
{
    // Plain labels never scroll; the scrolling kinds take this over.
    Q_UNUSED(on);
    Q_UNUSED(force);
}

void CTavoLabelWidget::paintText(QPainter* painter, int x, int y, int w, int h)
{
    if (m_basePixelSize > 0 && m_currentPixelSize > 0 && !(m_flags & kTopFlag))
        // Keeps the baseline of a shrunken text where the full size would have it.
        y += m_basePixelSize - m_currentPixelSize;
    const QPen old = painter->pen();
    if (m_shadow) {
        static const QPen shadowPen{QColor(Qt::black)};
        painter->setPen(shadowPen);
        if (m_flags & kTopFlag)
            paintTextLayoutTop(&m_textLayout, painter, x + 1, y + 1, w, h);
        else
            paintTextLayout(&m_textLayout, painter, x + 1, y + 1, w, h);
    }
    const QPen& pen = m_useHighlightPen ? m_highlightPen : (m_enabled ? m_pen : m_disabledPen);
    painter->setPen(pen);
    if (m_flags & kTopFlag)
        paintTextLayoutTop(&m_textLayout, painter, x, y, w, h);
    else
        paintTextLayout(&m_textLayout, painter, x, y, w, h);
    painter->setPen(old);
}

void CTavoLabelWidget::paint(QPainter* painter)
{
    if (!painter || !m_visible)
        return;
    CTavoWidget::paint(painter);
    const int x = m_contentRect.isNull() ? left() : m_contentRect.left();
    paintText(painter, x, top(), textBoxWidth(), height());
}

void CTavoLabelWidget::paint(QPainter* painter, const QRect& rect)
{
    if (!painter || !m_visible)
        return;
    paintText(painter, rect.x(), rect.y(), rect.width(), rect.height());
}

void CTavoLabelWidget::setStyle(const QFont& font, const QPen& pen, int flags, bool elideFromLeft,
                                bool keepPixelSize)
{
    m_font = font;
    m_pen = pen;
    m_color = pen.color();
    invertColor(m_color, m_invertedColor);
    m_flags = unsigned(flags);
    m_elideFromLeft = elideFromLeft;
    if (keepPixelSize) {
        m_basePixelSize = pixelSizeOf(font);
        m_currentPixelSize = m_basePixelSize;
    } else if (m_currentPixelSize > 0) {
        setFontPixelSize(m_font, m_currentPixelSize);
    }
    rebuildMetrics();
    applyLayoutFont();
    if (width() < 0)
        setWidth(m_fontMetrics->horizontalAdvance(m_text));
    if (height() < 0)
        setHeight(m_fontMetrics->height());
    if (!m_text.isEmpty())
        reformat();
}

void CTavoLabelWidget::layout()
{
    layout(false);
}

void CTavoLabelWidget::layout(bool keepPixelSize)
{
    CTavoWidget::layout();
    if (!m_styleSheet || !m_style)
        return;
    CTavoWidgetStyle* style = m_style;
    QFont font = m_font;
    QColor color = m_pen.color();
    unsigned flags = m_flags;
    style->getLabelStyle(font, color, flags);
    setStyle(font, CTavoWidgetStyle::colorPen(color), int(flags), m_elideFromLeft, keepPixelSize);
    invertColor(m_color, m_invertedColor);
    if (m_basePixelSize <= 0)
        m_basePixelSize = pixelSizeOf(m_font);
    if (m_currentPixelSize <= 0)
        m_currentPixelSize = m_basePixelSize;

    m_disabledPen = style->Pen(QStringLiteral("disabled-color"), QPen());
    const unsigned minimum = style->UInt(QStringLiteral("minimum-char-pixels"), 0);
    m_minPixelSize = minimum > 0 ? int(minimum) : int(m_basePixelSize * 0.9);
    m_customCropPixels = int(style->UInt(QStringLiteral("custom-crop-char-pixels"), 0));
    m_elideFromLeft = style->Bool(QStringLiteral("elide-from-left"), false);

    QTextCharFormat highlight = emptyCharFormat();
    m_highlightPen = style->Pen(QStringLiteral("highlighted-color"), QPen());
    bool found = false;
    const QColor highlighted = style->Color(QStringLiteral("highlighted-color"), QColor(), &found);
    if (found && highlighted.isValid())
        highlight.setProperty(QTextFormat::ForegroundBrush, QBrush(highlighted));
    const QBrush background = style->Brush(QStringLiteral("highlighted-background"), QBrush(), &found);
    if (found)
        highlight.setProperty(QTextFormat::BackgroundBrush, background);
    highlight.setFont(style->Font(QStringLiteral("highlighted-font"), m_font));
    m_highlightFormat = sharedCharFormat(highlight);
    m_shadow = style->Bool(QStringLiteral("shadow"), false);

    if (m_minimumSize.width() > 0 && m_minimumSize.height() > 0)
        setSize(m_minimumSize, true);
    // The keys read after the style setter change how the text breaks.
    if (!m_text.isEmpty())
        reformat();
}

void CTavoLabelWidget::setSize(const QSize& size, bool storeDesignSize)
{
    const QSize before = QRect::size();
    CTavoWidget::setSize(size, storeDesignSize);
    if (before != QRect::size() && !m_text.isEmpty())
        reformat();
}

void CTavoLabelWidget::resize(const QSize& size)
{
    setSize(size, false);
    reformat();
    update();
}

void CTavoLabelWidget::setAlignment(int alignment)
{
    m_flags = (m_flags & kWrapBits) | (unsigned(alignment) & ~kWrapBits);
    reformat();
    update();
}

int CTavoLabelWidget::firstLineWidth() const
{
    if (m_textLayout.lineCount() == 0)
        return 0;
    return int(m_textLayout.lineAt(0).naturalTextWidth());
}

void CTavoLabelWidget::setColor(const QColor& color)
{
    m_color = color;
    m_pen.setColor(color);
    invertColor(color, m_invertedColor);
    update();
}

void CTavoLabelWidget::setInvTextColor(bool inverted)
{
    m_pen.setColor(inverted ? m_invertedColor : m_color);
    update();
}

void CTavoLabelWidget::setMinFontSize(int pixels)
{
    m_minPixelSize = qMax(0, pixels);
}

void CTavoLabelWidget::resizeText(int pixels)
{
    if (pixels <= 0)
        return;
    m_basePixelSize = pixels;
    m_currentPixelSize = pixels;
    setFontPixelSize(m_font, pixels);
    rebuildMetrics();
    applyLayoutFont();
    reformat();
    update();
}

void CTavoLabelWidget::setElideFromLeft(bool on)
{
    if (m_elideFromLeft == on)
        return;
    m_elideFromLeft = on;
    reformat();
    update();
}

void CTavoLabelWidget::setTextWrapAnywhere(bool on)
{
    const unsigned wrap = on ? unsigned(TavoTextAnywhere) : unsigned(TavoTextWordWrap);
    const unsigned flags = (m_flags & ~kWrapBits) | wrap;
    if (flags == m_flags)
        return;
    m_flags = flags;
    reformat();
    update();
}

void CTavoLabelWidget::invertColor(const QColor& in, QColor& out)
{
    out = QColor(255 - in.red(), 255 - in.green(), 255 - in.blue(), in.alpha());
}

void CTavoLabelWidget::setHighlighted(int start, int length)
{
    QVector<QTextLayout::FormatRange> formats;
    if (length > 0 && start >= 0) {
        QTextLayout::FormatRange range;
        range.start = start;
        range.length = length;
        range.format = m_highlightFormat;
        formats.append(range);
    }
    m_textLayout.setFormats(formats);
    reformat();
    update();
}

void CTavoLabelWidget::setHighlighted(const QString& part)
{
    const int start = part.isEmpty() ? -1 : m_text.indexOf(part, 0, Qt::CaseInsensitive);
    setHighlighted(start, start >= 0 ? part.length() : 0);
}

void CTavoLabelWidget::setUseHighlightPen(bool on)
{
    if (m_useHighlightPen == on)
        return;
    m_useHighlightPen = on;
    update();
}

void CTavoLabelWidget::setShadow(bool on)
{
    if (m_shadow == on)
        return;
    m_shadow = on;
    update();
}

void CTavoLabelWidget::setLineHeight(int pixels)
{
    m_lineHeight = qMax(0, pixels);
    reformat();
}

void CTavoLabelWidget::refreshDom()
{
    CTavoWidget::refreshDom();
    if (!tavoToolGetTestAutomationFlag())
        return;
    QDomElement element = m_dom.documentElement();
    if (element.isNull())
        return;
    // Paragraphs and scrolling labels come here too; "type" already names their class.
    element.setAttribute(UITA::CTavoUITA::name(UITA::Label), m_text);
}
