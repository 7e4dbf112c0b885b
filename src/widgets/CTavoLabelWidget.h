#pragma once
#include "tgui_export.h"
// One styled text box. The text is prepared once into a QTextLayout when the
// text, font or box changes; painting only draws that layout. The font may
// shrink to fit, a range may be highlighted, and a one-pixel shadow drawn.
#include <QColor>
#include <QFont>
#include <QPen>
#include <QSize>
#include <QString>
#include <QTextCharFormat>
#include <QTextLayout>

#include "widgets/CTavoWidget.h"

class QFontMetrics;
class QPainter;
class CTavoParagraph;

class TGUI_EXPORT CTavoLabelWidget : public CTavoWidget
{
    Q_OBJECT

public:
    explicit CTavoLabelWidget(QWidget* parent = nullptr, int x = 0, int y = 0, int w = 0, int h = 0);
    CTavoLabelWidget(QWidget* parent, const QString& text, int x = 0, int y = 0, int w = 0, int h = 0);
    ~CTavoLabelWidget() override;

    // A user text-size factor applied to the design font size.
    static double m_scaleFactor;
    // Draws all label text at weight 75.
    static bool m_bHighContrast;

    virtual void setText(const QString& text);
    virtual void setText(const char* text);
    virtual void setText(const QString& text, bool repaint);
    virtual void enableScrolling(bool on, bool force = false);
    // Paints the prepared text into `rect` instead of the own box.
    virtual void paint(QPainter* painter, const QRect& rect);
    virtual void setStyle(const QFont& font, const QPen& pen, int flags, bool elideFromLeft = false,
                          bool keepPixelSize = false);
    virtual void setAlignment(int alignment);
    virtual int firstLineWidth() const;
    virtual void setColor(const QColor& color);

    void paint(QPainter* painter) override;
    void layout() override;
    // Reads the label's style; keepPixelSize makes the style's font size the design size.
    void layout(bool keepPixelSize);
    void setSize(const QSize& size, bool storeDesignSize = false) override;
    void refreshDom() override;

    const QString& text() const { return m_text; }
    QSize actualSize() const { return m_actualSize; }
    bool isElided() const { return m_elided; }
    void resize(const QSize& size);
    void setInvTextColor(bool inverted);
    void setMinFontSize(int pixels);
    // Sets the design font size and lays the text out again.
    void resizeText(int pixels);
    void setElideFromLeft(bool on);
    void setTextWrapAnywhere(bool on);
    static void invertColor(const QColor& in, QColor& out);
    void setHighlighted(int start, int length);
    void setHighlighted(const QString& part);
    void setUseHighlightPen(bool on);
    void setShadow(bool on);
    void setLineHeight(int pixels);

    const QFont& font() const { return m_font; }
    const QPen& pen() const { return m_pen; }
    const QPen& disabledPen() const { return m_disabledPen; }
    const QPen& highlightPen() const { return m_highlightPen; }
    const QColor& color() const { return m_color; }
    const QColor& invertedColor() const { return m_invertedColor; }
    unsigned int flags() const { return m_flags; }
    int minPixelSize() const { return m_minPixelSize; }
    int basePixelSize() const { return m_basePixelSize; }
    int currentPixelSize() const { return m_currentPixelSize; }
    int customCropPixels() const { return m_customCropPixels; }
    bool elideFromLeft() const { return m_elideFromLeft; }
    bool hasShadow() const { return m_shadow; }
    const QTextCharFormat& highlightFormat() const { return m_highlightFormat; }
    const QTextLayout& textLayout() const { return m_textLayout; }

protected:
    // Lays the present text out again into the present box.
    virtual void reformat();
    int textBoxWidth() const;
    void rebuildMetrics();
    void paintText(QPainter* painter, int x, int y, int w, int h);

    QTextLayout m_textLayout;
    QString m_text;
    QPen m_pen;
    QFont m_font;
    QColor m_color;
    QColor m_invertedColor;
    unsigned int m_flags;
    QFontMetrics* m_fontMetrics;
    QSize m_actualSize;
    bool m_elided;
    QPen m_disabledPen;
    QPen m_highlightPen;
    int m_customCropPixels;
    int m_minPixelSize;
    int m_basePixelSize;
    int m_currentPixelSize;
    bool m_elideFromLeft;
    int m_lineHeight;
    bool m_useHighlightPen;
    QTextCharFormat m_highlightFormat;
    bool m_shadow;

private:
    void applyText(const QString& text, bool simpleShrink, bool repaint);
    void shrinkToFit(const QString& text, bool estimate);
    void applyLayoutFont();

    friend class CTavoParagraph;
};
