#pragma once
#include "tgui_export.h"
// The thin bar a view paints beside its content: the ratio of view to content
// and the position. It hides itself a while after the last change, can be held
// and, where the skin allows, dragged; it owns no scrolling logic and only
// tells its view a position ratio or a control to apply.
#include <QBrush>
#include <QElapsedTimer>
#include <QEvent>
#include <QPen>
#include <QPoint>
#include <QRect>

#include "widgets/CTavoWidget.h"

class QTimer;

class TGUI_EXPORT CTavoScrollBar : public CTavoWidget
{
    Q_OBJECT

public:
    // What a view does on a control: a tenth of the view forward or back, half a view forward or back.
    enum ScrollControlT {
        ScrollTenthForward = 0,
        ScrollTenthBack = 1,
        ScrollHalfForward = 2,
        ScrollHalfBack = 3
    };
    Q_ENUM(ScrollControlT)

    explicit CTavoScrollBar(QWidget* parent = nullptr, int x = 0, int y = 0, int w = 0, int h = 0);
    ~CTavoScrollBar() override;

    void set(int viewPos, int viewSize, int contentSize);
    void setSize(int viewSize, int contentSize);
    using CTavoWidget::setSize;
    void setViewPos(int viewPos);
    void setArrowsEnabled(bool enabled);
    // Shows the bar whatever the ratio.
    void forceVisible();
    bool handleItemToggleEvent(QEvent::Type type, QPoint point);

    void setVisible(bool visible) override;
    bool handleEvent(QEvent::Type type, QPoint point) override;
    using CTavoObject::handleEvent;
    void paint(QPainter* painter) override;
    void layout() override;
    void refreshDom() override;

    // View size over content size; 1 (nothing to scroll) for an empty or negative content.
    double ratio() const;
    int orientation() const { return m_orientation; }
    QRect barRect() const { return m_barRect; }
    int contentSize() const { return m_contentSize; }
    int viewSize() const { return m_viewSize; }
    int viewPos() const { return m_viewPos; }
    int trackLength() const { return m_trackLength; }
    QPoint pressPos() const { return m_pressPos; }
    QRect dragLimits() const { return m_dragLimits; }
    // Thumb dragging needs limits and a control of 2 or more, which only a subclass or host sets.
    void setDragLimits(const QRect& limits) { m_dragLimits = limits; }
    void setControl(ScrollControlT control) { m_control = control; }
    ScrollControlT control() const { return m_control; }
    bool arrowsEnabled() const { return m_arrowsEnabled; }
    bool isPressed() const { return m_pressed; }
    bool allowDragging() const { return m_allowDragging; }
    bool allowArrowScrolling() const { return m_allowArrowScrolling; }
    int repeatInterval() const { return m_repeatInterval; }
    // Milliseconds after the last change at which the bar hides; 0 never.
    int autoHideInterval() const { return m_autoHideMs; }
    unsigned int barWidth() const { return m_barWidth; }
    unsigned int barHeight() const { return m_barHeight; }
    unsigned int barRadius() const { return m_barRadius; }
    const QBrush& barBrush() const { return m_barBrush; }
    const QBrush& pressedBrush() const { return m_pressedBrush; }
    const QPen& barPen() const { return m_barPen; }
    QPoint togglePos() const { return m_togglePos; }

signals:
    void scrollContent(qreal ratio);
    void scrollControl(QEvent::Type eventType, CTavoScrollBar::ScrollControlT control);

public slots:
    void onAutoHideTimeout();
    void onAutoRepeatTimeout();

public:
    // Installed on the host surface; public as QObject's is.
    bool eventFilter(QObject* object, QEvent* event) override;

protected:
    bool handleMouseMoveEvent(const QPoint& point);
    void relayout();
    // Moves the hide time to one interval from now. The timer stays registered
    // while it runs (re-registering a Qt timer allocates, and a scrolling frame
    // moves the bar); when it fires early it waits for the rest.
    void restartAutoHide();

    int m_orientation;
    QRect m_barRect;
    int m_contentSize;
    int m_viewSize;
    int m_viewPos;
    int m_trackLength;
    QPoint m_pressPos;
    QRect m_dragLimits;
    bool m_arrowsEnabled;
    QBrush m_barBrush;
    unsigned int m_barRadius;
    QPen m_barPen;
    QBrush m_pressedBrush;
    bool m_pressed;
    bool m_allowDragging;
    bool m_allowArrowScrolling;
    int m_repeatInterval;
    unsigned int m_barWidth;
    unsigned int m_barHeight;
    QTimer* m_autoHideTimer;
    QTimer* m_repeatTimer;
    ScrollControlT m_control;
    QPoint m_togglePos;

private:
    int m_autoHideMs;
    QElapsedTimer m_clock;
    qint64 m_hideAt;
};
