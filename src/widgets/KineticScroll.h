#pragma once
#include "tgui_export.h"
// KineticScroll: finger scrolling for a scrollable object. A mix-in without a
// Qt base: the owner feeds it its raw mouse events, implements scrollOffset()
// and setScrollOffset(), and calls restartAutoScroll() at the end of every
// paint. Positions are integer pixels in the owner's offset space; an offset
// grows as the content moves left or up. Speeds are integer pixels per frame
// with the sign of the finger movement, so a frame subtracts the speed from
// the offset.
#include <QPoint>
#include <QSize>
#include <QTime>
#include <Qt>

class KineticScrollPrivate;
class KineticScrollTicker;
class QMouseEvent;
class QWidget;

// "No target": only when both components match.
extern TGUI_EXPORT const QPoint NoTargetOffset;

class TGUI_EXPORT KineticScroll
{
public:
    enum State {
        Steady = 0,        // at rest
        Pressed = 1,       // finger down, no drag yet
        ManualScroll = 2,  // the finger drives the offset
        AutoScroll = 3,    // frames drive the offset
        Stop = 4           // finger down on content that was moving
    };

    KineticScroll();
    virtual ~KineticScroll();

    virtual void stopScrolling();
    // Called once when a press turns into a drag: release what looks pressed.
    virtual void cancelPress();
    virtual QPoint scrollOffset() const = 0;
    virtual void setScrollOffset(const QPoint& offset) = 0;
    // The end of a movement.
    virtual void stopped();
    virtual QPoint nearestSnapOffset(const QPoint& pos, const QPoint& direction);
    // The owner clears the component of the axis it does not scroll.
    virtual void zeroUnusedComponent(QPoint& p);

    void setThreshold(int threshold);
    int threshold() const;
    void setOrientations(Qt::Orientations orientations);
    Qt::Orientations orientations() const;
    void setMaxOffset(const QPoint& maxOffset);
    QPoint maxOffset() const;
    void setMaxSpeed(int maxSpeed);
    int maxSpeed() const;
    void setEaseOutLength(int length);
    int easeOutLength() const;
    void setEaseOutRate(double rate);
    double easeOutRate() const;
    void setScrollSpringLength(int length);
    int scrollSpringLength() const;
    void setOffsetScale(double scale);
    double offsetScale() const;
    void setMomentumFactor(double factor);
    double momentumFactor() const;
    void setSnapGridSize(const QSize& size);
    void setAcceptMouseClick(QWidget* receiver);
    QPoint targetOffset() const;
    bool isScrollingClipped() const;
    int swipeDirection() const;
    double getLastFrameRate() const;

    bool isSteadyScroll() const;
    bool isBeingAutoScrolled() const;
    bool isBeingScrolled() const;

    void setTargetOffset(const QPoint& offset, bool animated, float speed, bool clip);
    void resetOffset(const QPoint& offset);
    void reset();
    void restartAutoScroll(int msec);
    QPoint clippedOffset(const QPoint& p);
    void tick();
    QPoint estimateSpeed(const QPoint& pos, bool force) const;
    void updateSpeedEstimate(const QPoint& delta);
    void handleMousePress(QMouseEvent* event);
    void handleMouseMove(QMouseEvent* event);
    void handleMouseRelease(QMouseEvent* event);

    // Set by the layout manager from the skin's "show-frame-rate".
    static bool s_bShowFrameRate;

    // Whether offset changes may be animated; a page view takes it from its style.
    bool m_animated;

protected:
    // The clock of the machine (speed samples, frame rate). Monotonic, folded
    // into a day; a subclass may drive it by hand.
    virtual QTime currentTime() const;

    KineticScrollPrivate* d;

private:
    friend class KineticScrollTicker;
    void startFirstFrame();
    int msecsSince(const QTime& t) const;

    KineticScroll(const KineticScroll&) = delete;
    KineticScroll& operator=(const KineticScroll&) = delete;
};
