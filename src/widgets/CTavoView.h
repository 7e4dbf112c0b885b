#pragma once
#include "tgui_export.h"
// The scrollable container: an ordered list of objects in a viewport, painted
// through the painter's window so that items keep their content coordinates
// while the view scrolls. Not a QWidget: it filters the mouse and key events of
// the surface that hosts it, feeds finger movement to KineticScroll, moves a key
// focus over the items and asks for rows to be built only when they come into
// view (requestInitialization). It owns one scroll bar and a hold timer.
//
// Items stay QObject children of whoever made them (normally the surface). The
// view paints them and their painted descendants itself, so surfaces leave
// every object a view holds (and what hangs below it) out of their own pass
// and out of their button routing; holderOf() tells which view that is.
#include <QEvent>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QSize>
#include <QVector>

#include "widgets/CTavoScrollBar.h"
#include "widgets/CTavoWidget.h"
#include "widgets/KineticScroll.h"

class QKeyEvent;
class QMouseEvent;
class QPainter;
class QTimer;

class TGUI_EXPORT CTavoView : public CTavoWidget, public KineticScroll
{
    Q_OBJECT
    Q_PROPERTY(double scaleRatio READ scaleRatio WRITE setScale)

public:
    explicit CTavoView(QWidget* parent = nullptr, int x = 0, int y = 0, int w = 0, int h = 0);
    ~CTavoView() override;

    // The view that holds the object as an item; with ancestors, also the view
    // holding an item that the object hangs below. Null if none.
    static CTavoView* holderOf(const QObject* object, bool ancestors = false);

    // --- items
    void append(CTavoObject* item);
    void insert(int index, CTavoObject* item);
    void replace(int index, CTavoObject* item);
    CTavoObject* takeAt(int index);
    void takeAll();
    void clear();
    void hideFrom(int index);
    CTavoObject* itemAt(int index) const;
    int indexOf(const CTavoObject* item) const;
    CTavoObject* focussedItem() const;
    int getNumOfVisibleItems() const;
    bool areAnyItemsVisible() const;
    int count() const { return m_items.size(); }
    const QVector<CTavoObject*>& items() const { return m_items; }

    // --- geometry
    // Places the items (unless both sides of size are positive, which give the
    // content size as it is), focuses focusIndex and sets the scroll range.
    void format(Qt::Orientation orientation, const QSize& size = QSize(-1, -1), int focusIndex = -1,
                bool resetOffset = false);
    void setContentSize(const QSize& size);
    void setScroller();
    void setScale(double scale);
    QPoint mapPointInView(const QPoint& p) const;
    QPoint mapToPointInParent(const QPoint& p) const;
    QPoint mapToPointInParentScaled(const QPoint& p) const;
    void setupPainter(QPainter* painter);
    virtual void paint(QPainter* painter, const QRect& dirty);
    void paint(QPainter* painter) override;
    void SetScrolling(QPainter* painter);

    // --- scrolling
    void scrollItemToTop(const CTavoObject* item);
    void scrollItemAboveTop(const CTavoObject* item);
    void resetScrollOffset();
    void setScrollOffsetAndState(const QPoint& p);
    void showScrollBar();

    // --- focus
    void setFocusedItem(int index, bool instant, Qt::FocusReason reason = Qt::OtherFocusReason);
    void setFocusedItem(CTavoObject* item, bool instant);
    void focusFirstObject(const char* className);
    int determineNextItemToFocus(int key, bool& handled);

    // --- input
    bool eventFilter(QObject* object, QEvent* event) override;
    bool keyPressEvent(QKeyEvent* event);
    bool handleKeyPressAndHold(CTavoWidget* widget, QEvent::Type type);

    // --- state
    QSize contentSize() const { return m_contentSize; }
    QRect viewRect() const { return m_viewRect; }
    // The part of the content in view, in content coordinates.
    QRect visibleRect() const;
    QRect dragRect() const { return m_dragRect; }
    Qt::Orientation orientation() const { return m_orientation; }
    float scaleX() const { return m_scaleX; }
    float scaleY() const { return m_scaleY; }
    double scaleRatio() const { return m_scaleRatio; }
    CTavoWidget* pressedItem() const { return m_pressedItem.data(); }
    QTimer* holdTimer() const { return m_holdTimer; }
    int focusedIndex() const { return m_focusedItem; }
    int itemGap() const { return m_itemGap; }
    int bottomSpace() const { return m_bottomSpace; }
    int contentExtra() const { return m_contentExtra; }
    void setContentExtra(int extra) { m_contentExtra = extra; }
    bool ignoreKeys() const { return m_ignoreKeys; }
    void setIgnoreKeys(bool ignore) { m_ignoreKeys = ignore; }
    bool navigationFocusesItem() const { return m_navFocusesItem; }
    bool navigationSelectsItem() const { return m_navSelectsItem; }
    int autoscrollTimeout() const { return m_autoscrollTimeout; }
    int paneDragThreshold() const { return m_paneDragThreshold; }
    bool isPaneDragging() const { return m_paneDragging; }
    QPoint paneStart() const { return m_paneStart; }
    bool walkPastEnds() const { return m_walkPastEnds; }
    void setWalkPastEnds(bool on) { m_walkPastEnds = on; }
    CTavoScrollBar* scrollBar() const { return m_scrollBar; }
    bool smoothScroll() const { return m_smoothScroll; }
    bool pageNavigation() const { return m_pageNavigation; }
    bool ignoreSelectKey() const { return m_ignoreSelectKey; }
    bool clip() const { return m_clip; }
    bool dimWhenDisabled() const { return m_dimWhenDisabled; }
    // The scroll bar's view size over its content size is below 1.
    bool isScrollable() const;

    void setVisible(bool visible) override;
    void layout() override;
    void report(QList<QObject*>& done, QDomNode& parent) override;
    void refreshDom() override;

    virtual void ensureVisible(const CTavoObject* item, bool animate = true, const QRect& margins = QRect(),
                               bool clip = true);
    QPoint scrollOffset() const override;
    void setScrollOffset(const QPoint& p) override;
    void cancelPress() override;
    virtual bool mouseEventInView(QMouseEvent* event);
    void stopped() override;
    void zeroUnusedComponent(QPoint& p) override;
    virtual int determineNextItemDelta(int key) const;

signals:
    void scrollOffsetChanged(QPoint offset);
    void scrollingStopped();
    void focusChanged(int index, CTavoObject* item, Qt::FocusReason reason = Qt::OtherFocusReason);
    void requestInitialization(CTavoObject* item);
    void paneDragStarted(QPoint position);
    void paneDragged(QPoint position);
    void paneDragStopped(double velocity);
    void paneAnimationDone();
    void updateFocusItem(int from, int to);

public slots:
    void beginPaneAnimation();
    void endPaneAnimation();
    void paneDragCancelled();
    virtual void onScrollContent(qreal ratio);
    virtual void onScrollControlled(QEvent::Type type, CTavoScrollBar::ScrollControlT control);
    void onHoldTimeout();

protected:
    QSize m_contentSize;
    QRect m_viewRect;
    QRect m_dragRect;
    Qt::Orientation m_orientation;
    QVector<CTavoObject*> m_items;
    float m_scaleX;
    float m_scaleY;
    QPointer<CTavoWidget> m_pressedItem;
    QTimer* m_holdTimer;
    int m_itemGap;
    int m_bottomSpace;
    int m_contentExtra;
    bool m_ignoreKeys;
    bool m_navFocusesItem;
    bool m_navSelectsItem;
    int m_focusedItem;
    int m_autoscrollTimeout;
    double m_scaleRatio;
    QPoint m_paneStart;
    bool m_paneDragging;
    bool m_paneArmed;
    int m_paneDragThreshold;
    bool m_walkPastEnds;
    CTavoScrollBar* m_scrollBar;
    bool m_smoothScroll;
    bool m_pageNavigation;
    bool m_ignoreSelectKey;
    bool m_clip;
    bool m_dimWhenDisabled;

private slots:
    void onItemDestroyed(QObject* object);

private:
    void hold(CTavoObject* item);
    void release(CTavoObject* item);
    void releaseAll();
    void resetPaneState();
    bool onTopAt(const QPoint& point);
    void setupPainter(QPainter* painter, bool clip);
    void paintItems(QPainter* painter, const QRect& visible);
    void paintWidget(QPainter* painter, CTavoWidget* widget);
    int firstPaintIndex(const QRect& visible);
    bool selectFocused(QKeyEvent* event, bool handled);

    int m_paintHint;
    int m_wrappedItems;

protected:
    // Rows placed by format's stacking lie in list order along the axis: a
    // paint walks only those around the visible part, from where the last
    // paint began. Whoever places items another way clears it.
    bool m_stacked;
};
