#pragma once
#include "tgui_export.h"
// The base of every painted element: geometry against a design size, pseudo
// states, style attachment, press cross-fade, show animation and backgrounds.
// Style is read in layout() only; paint() uses what layout prepared.
#include <QDomDocument>
#include <QList>
#include <QPen>
#include <QPointer>
#include <QRect>
#include <QSize>
#include <QString>

#include "style/CTavoImage.h"
#include "widgets/CTavoObject.h"

class QBrush;
class QDomNode;
class QPainter;
class QPropertyAnimation;
class QWidget;
class CTavoStyleSheet;
class CTavoWidgetStyle;

class TGUI_EXPORT CTavoWidget : public CTavoObject
{
    Q_OBJECT
    Q_PROPERTY(QRect contentRect READ contentRect WRITE setContentRect)
    Q_PROPERTY(QRect geometry READ geo WRITE setgeo)
    Q_PROPERTY(QPoint pos READ pos WRITE setPos)
    Q_PROPERTY(qreal opacity READ opacity WRITE setOpacity)
    Q_PROPERTY(qreal pressedBackgroundOpacity READ pressedBackgroundOpacity WRITE setPressedBackgroundOpacity)

public:
    CTavoWidget(QWidget* parent, unsigned int kind, int x = 0, int y = 0, int w = 0, int h = 0);
    ~CTavoWidget() override;

    // Surfaces live in the layout subsystem. The surface class registers how a widget
    // reaches the sheet it embeds and how it maps a child on screen; a widget whose
    // parent's class chain holds "CTavoLayoutWidget" then uses them.
    typedef CTavoStyleSheet* (*SurfaceStyleSheetFn)(QWidget* surface);
    typedef QRect (*SurfaceChildRectFn)(const QWidget* surface, const CTavoWidget* child);
    static void setSurfaceAccess(SurfaceStyleSheetFn styleSheetOf, SurfaceChildRectFn rectOfChildOnScreen);
    static bool isLayoutWidget(const QObject* object);

    bool isDown() const { return m_down; }
    float opacity() const { return m_opacity; }
    void setOpacity(float opacity);
    float pressedBackgroundOpacity() const { return m_pressedBackgroundOpacity; }
    void setPressedBackgroundOpacity(float opacity);

    void update();
    void update(int x, int y, int w, int h);
    void update(const QRect& rect);

    void moveBy(int dx, int dy);
    void sizeBy(float fx, float fy);
    QRect geo() const;
    void setgeo(const QRect& rect);
    QRect geoParent() const;
    QPoint pos() const { return topLeft(); }
    void setPos(const QPoint& pos);
    QRect contentRect() const { return m_contentRect; }
    void setContentRect(const QRect& rect) { m_contentRect = rect; }

    const QString& pseudoState() const { return m_pseudoState; }
    void setPseudoState(const QString& state, bool keepPosition = false);
    CTavoStyleSheet* styleSheet() const { return m_styleSheet; }
    void setStyleSheet(CTavoStyleSheet* sheet, bool recursive = true);
    CTavoWidgetStyle* style() const { return m_style; }
    QWidget* parentWidget() const { return m_parent; }

    unsigned int kind() const { return m_kind; }
    int layoutType() const { return m_layoutType; }
    int renderQuality() const { return m_renderQuality; }
    int upDuration() const { return m_upDuration; }
    QSize designSize() const { return m_designSize; }
    QSize minimumSize() const { return m_minimumSize; }
    QSize maximumSize() const { return m_maximumSize; }
    QSize styleSize() const { return m_styleSize; }
    QPoint styleLocation() const { return m_styleLocation; }
    QRect lastLayoutRect() const { return m_lastLayoutRect; }
    const QPen& borderPen() const { return m_borderPen; }
    QBrush* backgroundBrush() const { return m_backgroundBrush; }
    QBrush* focusedBrush() const { return m_focusedBrush; }
    const CTavoImage& backgroundImage() const { return m_backgroundImage; }
    const CTavoImage& focusedImage() const { return m_focusedImage; }
    const CTavoImage& pressedImage() const { return m_pressedImage; }
    const CTavoImage& focusedPressedImage() const { return m_focusedPressedImage; }
    QPropertyAnimation* showAnimation() const { return m_showAnimation; }
    QPropertyAnimation* pressAnimation() const { return m_pressAnimation; }
    bool focusBackground() const { return m_focusBackground; }
    void setFocusBackground(bool on) { m_focusBackground = on; }
    bool dimWhenPressed() const { return m_dimWhenPressed; }
    void setDimWhenPressed(bool on) { m_dimWhenPressed = on; }
    const QDomDocument& dom() const { return m_dom; }
    void addSubWidget(QObject* object);

    void applyRenderQuality(QPainter* painter);
    void paintImage(QPainter* painter, const QRect& rect, const CTavoImage& image);
    void paintBackground(QPainter* painter, QRect* rect = nullptr);
    void paintBackgroundImage(QPainter* painter, QRect* rect = nullptr);
    void debug();

    void setVisible(bool visible) override;
    void setFocused(bool focused) override;
    void setEnabled(bool enabled) override;
    void move(int x, int y) override;

    virtual void setDown(bool down);
    virtual void paint(QPainter* painter);
    virtual void layout();
    virtual void repositionAllElements(int dx, int dy);
    virtual void reSizeAllElementsBy(float fx, float fy);
    virtual void report(QList<QObject*>& done, QDomNode& parent);
    virtual void setSize(const QSize& size, bool storeDesignSize = false);
    virtual QWidget* wrappedQWidget();

public slots:
    virtual void Hide(bool bForceAnimation);
    virtual void Show(bool bForceAnimation);
    void Hide() { Hide(false); }
    void Show() { Show(false); }

public:
    virtual void refreshDom();

protected:
    // Content rectangle of the present geometry from the sheet's block, or the geometry.
    void recomputeContentRect();

    uint m_down : 1;
    uint m_focusBackground : 1;
    uint m_dimWhenPressed : 1;
    unsigned int m_kind;
    QRect m_lastLayoutRect;
    QSize m_minimumSize;
    QSize m_maximumSize;
    QRect m_contentRect;
    QSize m_designSize;
    QString m_pseudoState;
    int m_layoutType;
    QPen m_borderPen;
    QSize m_styleSize;
    QPoint m_styleLocation;
    float m_opacity;
    float m_pressedBackgroundOpacity;
    CTavoImage m_focusedImage;
    CTavoImage m_pressedImage;
    CTavoImage m_focusedPressedImage;
    CTavoImage m_backgroundImage;
    QBrush* m_backgroundBrush;
    QBrush* m_focusedBrush;
    QPropertyAnimation* m_showAnimation;
    QPropertyAnimation* m_pressAnimation;
    int m_upDuration;
    int m_renderQuality;
    QWidget* m_parent;
    CTavoStyleSheet* m_styleSheet;
    CTavoWidgetStyle* m_style;
    QDomDocument m_dom;
    QList<QPointer<QObject>> m_subWidgets;
};
