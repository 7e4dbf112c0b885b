#pragma once
#include "tgui_export.h"
// Several lines of text. Plain text becomes one child label per line, stacked
// downwards; HTML is rendered once, off-screen, through one web page shared by
// all paragraphs, and painted from the cached image. The line labels are kept
// off the surface's object list: the paragraph owns and paints them itself.
#include <QString>
#include <QVector>

#include "widgets/CTavoLabelWidget.h"

class QImage;
class QTextDocument;
class QWebPage;

class TGUI_EXPORT CTavoParagraph : public CTavoLabelWidget
{
    Q_OBJECT

public:
    explicit CTavoParagraph(QWidget* parent = nullptr, int x = 0, int y = 0, int w = 0, int h = 0);
    ~CTavoParagraph() override;

    using CTavoLabelWidget::paint;
    using CTavoLabelWidget::setText;
    void setText(const QString& text) override;
    void setText(const QString& text, bool repaint) override;
    void paint(QPainter* painter) override;
    void layout() override;
    void setSize(const QSize& size, bool storeDesignSize = false) override;
    void setVisible(bool visible) override;
    void setEnabled(bool enabled) override;
    void repositionAllElements(int dx, int dy) override;
    void resize(const QSize& size);

    // Deletes the line labels and the images.
    void clear();
    void formatHtml(const QString& html, bool force = false);
    void updateCachedImage();
    void autoCropImage();
    // Renders a rich text document instead of the web page.
    void updateCachedImageWithPage(QTextDocument* document);

    // Closes up runs of blank rows: a row is blank when every pixel equals
    // `blankPixelValue`; of each run the first 6 rows stay.
    static QImage autoCropped(const QImage& image, uint blankPixelValue);
    // The page that renders every HTML paragraph; created on first use.
    static QWebPage* sharedWebPage();
    // The base64 CSS used when the style gives none.
    static QString defaultCss(bool grayScale);

    int lineCount() const { return m_lines.size(); }
    CTavoLabelWidget* line(int index) const { return m_lines.value(index); }
    const QImage* image() const { return m_image; }
    const QVector<QImage*>& pageImages() const { return m_pageImages; }
    bool showsHtml() const { return m_html; }
    bool supportHtml() const { return m_supportHtml; }
    void setSupportHtml(bool on) { m_supportHtml = on; }
    const QString& css() const { return m_css; }
    void setCss(const QString& base64) { m_css = base64; }
    bool adjustHtmlHeight() const { return m_adjustHtmlHeight; }
    bool grayScale() const { return m_grayScale; }
    bool autoCrop() const { return m_autoCrop; }
    void setAutoCrop(bool on) { m_autoCrop = on; }
    int squishIfTallerThan() const { return m_squishIfTallerThan; }
    uint blankPixelValue() const { return m_blankPixelValue; }

public slots:
    // The page's content changed: render it again.
    void contentsChanged();

signals:
    void contentsSizeChanged();

protected:
    void reformat() override;

    QVector<CTavoLabelWidget*> m_lines;
    QImage* m_image;
    QImage* m_disabledImage;
    QVector<QImage*> m_pageImages;
    QString m_css;
    bool m_supportHtml;
    bool m_adjustHtmlHeight;
    bool m_grayScale;
    bool m_autoCrop;
    int m_squishIfTallerThan;
    uint m_blankPixelValue;

private:
    void restack();
    void deleteImages();
    void makeDisabledImage();
    void finishImage(QImage* image);

    // Width the lines wrap at; the box itself shrinks to the text.
    int m_wrapWidth;
    bool m_html;
    bool m_layingOut;
};
