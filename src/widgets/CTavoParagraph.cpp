#include "widgets/CTavoParagraph.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QRegExp>
#include <QStringList>
#include <QTextDocument>
#include <QWebFrame>
#include <QWebPage>
#include <QWebSettings>

#include <cstring>

#include "log/GuiLog.h"
#include "style/CTavoWidgetStyle.h"
#include "widgets/TavoTextFormat.h"

namespace {

// Lines are laid out in a box this tall, then cut to what they used.
const int kTallBox = 1 << 14;
// Images taller than this are kept as a stack of pages.
const int kPageHeight = 8192;
const int kKeptBlankRows = 6;

QWebPage* s_sharedPage = nullptr;

void destroySharedPage()
{
    delete s_sharedPage;
    s_sharedPage = nullptr;
}

// Grey, half transparent: the look of disabled HTML.
QImage* disabledCopy(const QImage& source)
{
    QImage* copy = new QImage(source.convertToFormat(QImage::Format_ARGB32_Premultiplied));
    for (int y = 0; y < copy->height(); ++y) {
        QRgb* row = reinterpret_cast<QRgb*>(copy->scanLine(y));
        for (int x = 0; x < copy->width(); ++x) {
            const int gray = qGray(row[x]) / 2;
            row[x] = qRgba(gray, gray, gray, qAlpha(row[x]) / 2);
        }
    }
    return copy;
}

} // namespace

CTavoParagraph::CTavoParagraph(QWidget* parent, int x, int y, int w, int h)
    : CTavoLabelWidget(parent, x, y, w, h)
    , m_image(nullptr)
    , m_disabledImage(nullptr)
    , m_css(defaultCss(false))
    , m_supportHtml(false)
    , m_adjustHtmlHeight(true)
    , m_grayScale(false)
    , m_autoCrop(false)
    , m_squishIfTallerThan(0)
    , m_blankPixelValue(0xFFFFFFFFu)
    , m_wrapWidth(w)
    , m_html(false)
    , m_layingOut(false)
{
}

CTavoParagraph::~CTavoParagraph()
{
    qDeleteAll(m_lines);
    deleteImages();
}

QString CTavoParagraph::defaultCss(bool grayScale)
{
    const QByteArray css = grayScale
        ? QByteArrayLiteral("tbody{color:black; font-size:8px;}")
        : QByteArrayLiteral("body{color:white;} a{color:white; text-decoration:none;} "
                            "u{color:white; text-decoration:none;}");
    return QString::fromLatin1(css.toBase64());
}

QWebPage* CTavoParagraph::sharedWebPage()
{
    if (s_sharedPage)
        return s_sharedPage;
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        guiLog(4, "CTavoParagraph: no QApplication, HTML cannot be rendered");
        return nullptr;
    }
    s_sharedPage = new QWebPage;
    QPalette palette = s_sharedPage->palette();
    palette.setBrush(QPalette::Base, Qt::transparent);
    s_sharedPage->setPalette(palette);
    QWebFrame* frame = s_sharedPage->mainFrame();
    frame->setScrollBarPolicy(Qt::Horizontal, Qt::ScrollBarAlwaysOff);
    frame->setScrollBarPolicy(Qt::Vertical, Qt::ScrollBarAlwaysOff);
    // Paragraphs only show documents: no scripts, no plug-ins.
    QWebSettings* settings = s_sharedPage->settings();
    settings->setAttribute(QWebSettings::JavascriptEnabled, false);
    settings->setAttribute(QWebSettings::PluginsEnabled, false);
    settings->setAttribute(QWebSettings::JavaEnabled, false);
    // The page must go while the application still stands.
    qAddPostRoutine(destroySharedPage);
    return s_sharedPage;
}

void CTavoParagraph::deleteImages()
{
    delete m_image;
    m_image = nullptr;
    delete m_disabledImage;
    m_disabledImage = nullptr;
    qDeleteAll(m_pageImages);
    m_pageImages.clear();
}

void CTavoParagraph::clear()
{
    const bool hadContent = !m_lines.isEmpty() || m_image || !m_pageImages.isEmpty();
    qDeleteAll(m_lines);
    m_lines.clear();
    deleteImages();
    m_text.clear();
    m_html = false;
    m_actualSize = QSize(0, 0);
    if (hadContent)
        update();
}

void CTavoParagraph::setText(const QString& input)
{
    QString text = input;
    if (text.isEmpty() && m_text.isEmpty())
        return;
    if (text.startsWith(QLatin1String("<span>")) && text.endsWith(QLatin1String("</span>"))) {
        QTextDocument document;
        document.setHtml(text);
        text = document.toPlainText();
    } else if (m_supportHtml && Qt::mightBeRichText(text)) {
        formatHtml(text, false);
        return;
    }
    if (text == m_text && !m_html) {
        restack();
        return;
    }
    clear();
    m_text = text;
    if (text.isEmpty())
        return;

    QFont font = m_font;
    if (m_bHighContrast)
        font.setWeight(75);
    const int design = m_basePixelSize > 0 ? m_basePixelSize : pixelSizeOf(m_font);
    font.setPixelSize(qMax(1, int(design * m_scaleFactor)));

    const QStringList pieces = text.split(QRegExp(QStringLiteral("\\n|\\r|\\r\\n|\\n\\r")));
    int y = top();
    int widest = 0;
    m_lines.reserve(pieces.size());
    for (QString piece : pieces) {
        if (piece.isEmpty())
            piece = QStringLiteral(" ");
        CTavoLabelWidget* line = new CTavoLabelWidget(nullptr, left(), y, m_wrapWidth, kTallBox);
        line->m_parent = m_parent;
        line->setStyle(font, m_pen, int(m_flags), m_elideFromLeft, true);
        line->m_minPixelSize = m_minPixelSize;
        line->m_disabledPen = m_disabledPen;
        line->m_shadow = m_shadow;
        line->m_lineHeight = m_lineHeight;
        line->m_enabled = m_enabled;
        if (m_wrapWidth > 0 && line->m_fontMetrics->horizontalAdvance(piece) > m_wrapWidth
            && !piece.contains(QLatin1Char(' ')) && !(m_flags & TavoTextNoWrap))
            line->setTextWrapAnywhere(true);
        line->setText(piece);
        const int lineHeight = qMax(line->m_actualSize.height(), 1);
        // Only the box shrinks: laid out again in a box this tight, wrapped text
        // would be elided as soon as it passes half of the box.
        line->CTavoWidget::setSize(QSize(line->width(), lineHeight), false);
        y += lineHeight;
        widest = qMax(widest, line->m_actualSize.width());
        m_lines.append(line);
    }
    m_actualSize = QSize(widest, y - top());
    setSize(m_actualSize, false);
    update();
}

void CTavoParagraph::setText(const QString& text, bool repaint)
{
    Q_UNUSED(repaint);
    setText(text);
}

void CTavoParagraph::restack()
{
    int y = top();
    for (CTavoLabelWidget* line : qAsConst(m_lines)) {
        line->move(left(), y);
        y += line->height();
    }
}

void CTavoParagraph::repositionAllElements(int dx, int dy)
{
    if (dx == 0 && dy == 0)
        return;
    for (CTavoLabelWidget* line : qAsConst(m_lines))
        line->move(line->left() + dx, line->top() + dy);
}

void CTavoParagraph::setSize(const QSize& size, bool storeDesignSize)
{
    // The lines are not laid out again: the box follows the text, not the reverse.
    CTavoWidget::setSize(size, storeDesignSize);
    if (storeDesignSize)
        m_wrapWidth = size.width();
}

void CTavoParagraph::resize(const QSize& size)
{
    CTavoWidget::setSize(size, false);
    m_wrapWidth = size.width();
    reformat();
    update();
}

void CTavoParagraph::setVisible(bool visible)
{
    CTavoLabelWidget::setVisible(visible);
}

void CTavoParagraph::setEnabled(bool enabled)
{
    CTavoLabelWidget::setEnabled(enabled);
    for (CTavoLabelWidget* line : qAsConst(m_lines))
        line->setEnabled(enabled);
    if (!enabled)
        makeDisabledImage();
}

void CTavoParagraph::makeDisabledImage()
{
    if (m_image && !m_disabledImage)
        m_disabledImage = disabledCopy(*m_image);
}

void CTavoParagraph::reformat()
{
    if (m_layingOut)
        return;
    if (m_html) {
        formatHtml(m_text, true);
    } else if (!m_text.isEmpty()) {
        const QString text = m_text;
        m_text.clear();
        setText(text);
    }
}

void CTavoParagraph::layout()
{
    m_layingOut = true;
    CTavoLabelWidget::layout();
    m_layingOut = false;
    if (m_styleSheet && m_style) {
        const CTavoWidgetStyle* style = m_style;
        m_supportHtml = style->Bool(QStringLiteral("support-html"), false);
        m_adjustHtmlHeight = style->Bool(QStringLiteral("adjust-html-height"), true);
        m_grayScale = style->Bool(QStringLiteral("gray-scale"), false);
        m_autoCrop = style->Bool(QStringLiteral("auto-crop"), false);
        m_squishIfTallerThan = int(style->UInt(QStringLiteral("squish-if-taller-than"), 0));
        m_blankPixelValue = style->UInt(QStringLiteral("blank-pixel-val"), 0xFFFFFFFFu);
        m_css = style->String(QStringLiteral("css"), defaultCss(m_grayScale));
    }
    if (m_wrapWidth <= 0)
        m_wrapWidth = width();
    reformat();
}

void CTavoParagraph::paint(QPainter* painter)
{
    if (!painter || !m_visible)
        return;
    CTavoWidget::paint(painter);
    if (m_html) {
        const QImage* image = (!m_enabled && m_disabledImage) ? m_disabledImage : m_image;
        if (image) {
            painter->drawImage(QPoint(left(), top()), *image);
            return;
        }
        int y = top();
        for (const QImage* page : qAsConst(m_pageImages)) {
            painter->drawImage(QPoint(left(), y), *page);
            y += page->height();
        }
        return;
    }
    for (CTavoLabelWidget* line : qAsConst(m_lines))
        line->paint(painter);
}

void CTavoParagraph::formatHtml(const QString& html, bool force)
{
    if (!force && m_html && html == m_text)
        return;
    if (!force)
        clear();
    m_text = html;
    m_html = true;
    QWebPage* page = sharedWebPage();
    if (!page) {
        updateCachedImage();
        return;
    }
    QWebSettings* settings = page->settings();
    settings->setUserStyleSheetUrl(
        QUrl(QStringLiteral("data:text/css;charset=utf-8;base64,") + m_css));
    settings->setFontFamily(QWebSettings::StandardFont, m_font.family());
    settings->setFontSize(QWebSettings::DefaultFontSize, pixelSizeOf(m_font));
    // With a height that follows the text, a one-pixel viewport lets the
    // contents report their own height instead of the old box's.
    const int viewportHeight = m_adjustHtmlHeight ? 1 : qMax(1, height());
    page->setViewportSize(QSize(qMax(1, m_wrapWidth), viewportHeight));
    page->mainFrame()->setHtml(html);
    updateCachedImage();
}

void CTavoParagraph::updateCachedImage()
{
    deleteImages();
    QWebFrame* frame = s_sharedPage ? s_sharedPage->mainFrame() : nullptr;
    if (!frame) {
        m_actualSize = QSize(0, 0);
        emit contentsSizeChanged();
        return;
    }
    QSize contents = frame->contentsSize();
    if (!m_adjustHtmlHeight)
        contents.setHeight(qMin(contents.height(), height()));
    if (contents.isEmpty()) {
        m_actualSize = QSize(0, 0);
        emit contentsSizeChanged();
        return;
    }
    s_sharedPage->setViewportSize(contents);
    QImage* image = new QImage(contents, QImage::Format_ARGB32_Premultiplied);
    // Grey-scale documents are drawn on white, so that blank rows can be found.
    image->fill(m_grayScale ? 0xFFFFFFFFu : 0u);
    {
        QPainter painter(image);
        frame->render(&painter, QRegion(QRect(QPoint(0, 0), contents)));
    }
    finishImage(image);
}

void CTavoParagraph::updateCachedImageWithPage(QTextDocument* document)
{
    deleteImages();
    if (!document) {
        m_actualSize = QSize(0, 0);
        emit contentsSizeChanged();
        return;
    }
    m_html = true;
    document->setDefaultFont(m_font);
    document->setTextWidth(qMax(1, m_wrapWidth));
    QSize size = document->size().toSize();
    if (!m_adjustHtmlHeight)
        size.setHeight(qMin(size.height(), height()));
    if (size.isEmpty()) {
        m_actualSize = QSize(0, 0);
        emit contentsSizeChanged();
        return;
    }
    QImage* image = new QImage(size, QImage::Format_ARGB32_Premultiplied);
    image->fill(m_grayScale ? 0xFFFFFFFFu : 0u);
    {
        QPainter painter(image);
        QAbstractTextDocumentLayout::PaintContext context;
        context.palette.setColor(QPalette::Text, m_pen.color());
        context.clip = QRectF(QPointF(0, 0), QSizeF(size));
        document->documentLayout()->draw(&painter, context);
    }
    finishImage(image);
}

void CTavoParagraph::finishImage(QImage* image)
{
    if (m_grayScale)
        *image = image->convertToFormat(QImage::Format_Grayscale8)
                     .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (m_squishIfTallerThan > 0 && image->height() > m_squishIfTallerThan)
        *image = image->scaled(image->width(), m_squishIfTallerThan, Qt::IgnoreAspectRatio,
                               Qt::SmoothTransformation);
    m_image = image;
    if (m_autoCrop)
        autoCropImage();
    m_actualSize = m_image->size();
    if (m_image->height() > kPageHeight) {
        for (int y = 0; y < m_image->height(); y += kPageHeight)
            m_pageImages.append(new QImage(m_image->copy(0, y, m_image->width(),
                                                         qMin(kPageHeight, m_image->height() - y))));
        delete m_image;
        m_image = nullptr;
    }
    if (!m_enabled)
        makeDisabledImage();
    if (m_adjustHtmlHeight)
        CTavoWidget::setSize(QSize(width(), m_actualSize.height()), false);
    update();
    emit contentsSizeChanged();
}

void CTavoParagraph::autoCropImage()
{
    if (m_image)
        *m_image = autoCropped(*m_image, m_blankPixelValue);
}

QImage CTavoParagraph::autoCropped(const QImage& image, uint blankPixelValue)
{
    if (image.isNull())
        return image;
    const QImage source = image.depth() == 32
        ? image : image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QImage result(source.size(), source.format());
    const int bytes = source.width() * 4;
    int kept = 0;
    int blankRun = 0;
    for (int y = 0; y < source.height(); ++y) {
        const quint32* row = reinterpret_cast<const quint32*>(source.constScanLine(y));
        bool blank = true;
        for (int x = 0; x < source.width() && blank; ++x)
            blank = row[x] == blankPixelValue;
        if (blank) {
            if (++blankRun > kKeptBlankRows)
                continue;
        } else {
            blankRun = 0;
        }
        std::memcpy(result.scanLine(kept++), row, size_t(bytes));
    }
    return result.copy(0, 0, source.width(), kept);
}

void CTavoParagraph::contentsChanged()
{
    // The page is shared: it may hold another paragraph's document by now.
    if (m_html)
        formatHtml(m_text, true);
}
