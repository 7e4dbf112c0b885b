#include "widgets/KineticScroll.h"

#include <QApplication>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QToolTip>
#include <QWidget>
#include <climits>
#include <cmath>

#include "log/GuiLog.h"
#include "widgets/KineticScrollPrivate.h"
#include "widgets/KineticScrollTicker.h"

const QPoint NoTargetOffset(-1, -1);

bool KineticScroll::s_bShowFrameRate = false;

namespace {

const int kMsecsPerDay = 86400000;

// Integers stay exact up to the limits; beyond them saturate instead of
// overflowing (a hostile scale or a huge maxOffset must not wrap around).
int saturate(qint64 v)
{
    return int(qBound<qint64>(INT_MIN, v, INT_MAX));
}

int roundSat(double v)
{
    if (!(v == v))
        return 0;
    if (v >= double(INT_MAX) - 1.0)
        return INT_MAX;
    if (v <= double(INT_MIN) + 2.0)
        return INT_MIN;
    return qRound(v);
}

QPoint subtract(const QPoint& a, const QPoint& b)
{
    return QPoint(saturate(qint64(a.x()) - b.x()), saturate(qint64(a.y()) - b.y()));
}

int bounded(qint64 lo, qint64 v, qint64 hi)
{
    return saturate(qMax(lo, qMin(hi, v)));
}

int limit(int v, int lim)
{
    lim = qMax(0, lim);
    return qMax(-lim, qMin(lim, v));
}

int sign(int v)
{
    return v > 0 ? 1 : (v < 0 ? -1 : 0);
}

int manhattan(const QPoint& p)
{
    return saturate(qAbs(qint64(p.x())) + qAbs(qint64(p.y())));
}

// The legal range 0..maxOffset, per axis (normalized, as a QRect would be).
struct Bounds {
    int x1, y1, x2, y2;
    explicit Bounds(const QPoint& max)
        : x1(qMin(0, max.x())), y1(qMin(0, max.y())), x2(qMax(0, max.x())), y2(qMax(0, max.y()))
    {
    }
    bool contains(const QPoint& p) const
    {
        return p.x() >= x1 && p.x() <= x2 && p.y() >= y1 && p.y() <= y2;
    }
    // Does the rectangle spanned by a and b, grown by one pixel, touch the range?
    bool touches(const QPoint& a, const QPoint& b) const
    {
        const qint64 l = qint64(qMin(a.x(), b.x())) - 1, r = qint64(qMax(a.x(), b.x())) + 1;
        const qint64 t = qint64(qMin(a.y(), b.y())) - 1, btm = qint64(qMax(a.y(), b.y())) + 1;
        return l <= x2 && x1 <= r && t <= y2 && y1 <= btm;
    }
};

// The event's global position; QPointF::toPoint() would overflow on a
// position outside the integer range.
QPoint globalPosOf(const QMouseEvent* e)
{
    const QPointF p = e->screenPos();
    return QPoint(roundSat(p.x()), roundSat(p.y()));
}

// Common entry of the mouse handlers: the event is left unaccepted for the
// owner, and only left-button events that are not our own replayed click go on.
bool takesMouseEvent(QMouseEvent* event, bool leftButton, QList<QEvent*>& ignoreList)
{
    if (!event)
        return false;
    event->setAccepted(false);
    if (!leftButton)
        return false;
    return ignoreList.removeAll(event) == 0;
}

QPoint clampToRange(const QPoint& p, const QPoint& max)
{
    return QPoint(qMax(0, qMin(max.x(), p.x())), qMax(0, qMin(max.y(), p.y())));
}

}  // namespace

KineticScrollPrivate::KineticScrollPrivate()
    : state(KineticScroll::Steady),
      threshold(10),
      orientations(Qt::Horizontal | Qt::Vertical),
      pressPos(0, 0),
      lastDelta(0, 0),
      offset(0, 0),
      maxOffset(INT_MAX, INT_MAX),
      maxSpeed(32),
      scrollingClipped(false),
      targetOffset(NoTargetOffset),
      scrollSpringLength(100),
      swipeDirection(0),
      speed(0, 0),
      easeOutLength(100),
      easeOutRate(0.2),
      ticker(nullptr),
      lastFrameRate(0.0),
      snapGridSize(-1, -1),
      offsetScale(1.0),
      momentumFactor(1.0),
      lastOffset(0, 0),
      lastMousePos(-1, -1)
{
}

KineticScroll::KineticScroll() : m_animated(true), d(new KineticScrollPrivate)
{
    d->ticker = new KineticScrollTicker(this);
    // A virtual call is not possible yet; the default clock is what
    // currentTime() gives unless a subclass drives it.
    d->lastTime = KineticScroll::currentTime();
}

KineticScroll::~KineticScroll()
{
    delete d->ticker;
    delete d;
}

QTime KineticScroll::currentTime() const
{
    // QTime::currentTime() follows the wall clock, which jumps when the
    // phone sets its time; intervals must not.
    QElapsedTimer t;
    t.start();
    return QTime::fromMSecsSinceStartOfDay(int(t.msecsSinceReference() % kMsecsPerDay));
}

int KineticScroll::msecsSince(const QTime& t) const
{
    if (!t.isValid())
        return 0;
    int ms = t.msecsTo(currentTime());
    if (ms < 0)
        ms += kMsecsPerDay;
    return ms;
}

// ---- virtual operations ------------------------------------------------

void KineticScroll::stopScrolling()
{
    const bool wasScrolling = isBeingScrolled();

    d->speed = QPoint(0, 0);
    d->state = Steady;
    d->offset = scrollOffset();
    d->targetOffset = NoTargetOffset;
    d->ticker->stop();
    d->lastOffset = d->offset;
    d->lastMousePos = QPoint(-1, -1);

    if (!wasScrolling && m_animated)
        return;

    KineticScrollTicker* t = d->ticker;
    const double elapsed = t->time.isValid() ? qMax(1.0, double(msecsSince(t->time))) : 1.0;
    d->lastFrameRate = qMax(1.0, t->frames * 1000.0 / elapsed);
    t->frames = 0;
    t->time = currentTime();

    if (s_bShowFrameRate && qAbs(int(d->lastFrameRate)) > 0.1) {
        // A tool tip is a widget: only where widgets can exist.
        if (qobject_cast<QApplication*>(QCoreApplication::instance()))
            QToolTip::showText(QPoint(0, 0),
                               QString("%1 fps").arg(d->lastFrameRate, 0, 'f', 1));
    }

    stopped();
}

void KineticScroll::cancelPress()
{
}

void KineticScroll::stopped()
{
}

QPoint KineticScroll::nearestSnapOffset(const QPoint& pos, const QPoint& direction)
{
    const int gw = qMax(1, d->snapGridSize.width());
    const int gh = qMax(1, d->snapGridSize.height());
    QPoint result;

    if (qAbs(d->momentumFactor) <= 1e-12) {
        // Paged: one cell on from where the drag began.
        auto paged = [](int pos, int last, int dir, int grid) {
            const float v = float(qint64(pos) + last) / float(grid);
            qint64 index = roundSat(double(v));
            index += dir < 0 ? 1 : -1;
            return saturate(index * grid);
        };
        result = QPoint(paged(pos.x(), d->lastDelta.x(), direction.x(), gw),
                        paged(pos.y(), d->lastDelta.y(), direction.y(), gh));
    } else {
        // Momentum: the nearest cell, biased in the direction of travel.
        const double mf = d->momentumFactor;
        auto nearest = [mf](int pos, int dir, int grid) {
            const double bias = 0.5 - mf * qBound(-0.4, double(dir), 0.4);
            const double v = double(pos) + double(grid) * bias;
            qint64 n = 0;
            if (v == v)
                n = qint64(qBound(double(INT_MIN), v, double(INT_MAX)));
            return saturate((n / grid) * grid);
        };
        result = QPoint(nearest(pos.x(), direction.x(), gw), nearest(pos.y(), direction.y(), gh));
    }
    zeroUnusedComponent(result);
    return result;
}

void KineticScroll::zeroUnusedComponent(QPoint&)
{
}

// ---- accessors -----------------------------------------------------------

void KineticScroll::setThreshold(int threshold)
{
    if (threshold < 0)
        return;
    d->threshold = threshold;
}

int KineticScroll::threshold() const { return d->threshold; }
void KineticScroll::setOrientations(Qt::Orientations o) { d->orientations = o; }
Qt::Orientations KineticScroll::orientations() const { return d->orientations; }
void KineticScroll::setMaxOffset(const QPoint& maxOffset) { d->maxOffset = maxOffset; }
QPoint KineticScroll::maxOffset() const { return d->maxOffset; }
void KineticScroll::setMaxSpeed(int maxSpeed)
{
    // A negative limit would pin every speed at zero and a target would
    // then never be reached.
    if (maxSpeed < 0) {
        guiLog(2, "KineticScroll::setMaxSpeed ignoring negative speed %d", maxSpeed);
        return;
    }
    d->maxSpeed = maxSpeed;
}
int KineticScroll::maxSpeed() const { return d->maxSpeed; }
void KineticScroll::setEaseOutLength(int length) { d->easeOutLength = length; }
int KineticScroll::easeOutLength() const { return d->easeOutLength; }
void KineticScroll::setEaseOutRate(double rate) { d->easeOutRate = rate; }
double KineticScroll::easeOutRate() const { return d->easeOutRate; }
void KineticScroll::setScrollSpringLength(int length) { d->scrollSpringLength = length; }
int KineticScroll::scrollSpringLength() const { return d->scrollSpringLength; }
void KineticScroll::setOffsetScale(double scale) { d->offsetScale = scale; }
double KineticScroll::offsetScale() const { return d->offsetScale; }
void KineticScroll::setMomentumFactor(double factor) { d->momentumFactor = factor; }
double KineticScroll::momentumFactor() const { return d->momentumFactor; }
void KineticScroll::setSnapGridSize(const QSize& size) { d->snapGridSize = size; }
void KineticScroll::setAcceptMouseClick(QWidget* receiver) { d->acceptMouseClick = receiver; }
QPoint KineticScroll::targetOffset() const { return d->targetOffset; }
bool KineticScroll::isScrollingClipped() const { return d->scrollingClipped; }
int KineticScroll::swipeDirection() const { return d->swipeDirection; }
double KineticScroll::getLastFrameRate() const { return d->lastFrameRate; }

bool KineticScroll::isSteadyScroll() const { return d->state == Steady; }
bool KineticScroll::isBeingAutoScrolled() const { return d->state == AutoScroll; }

bool KineticScroll::isBeingScrolled() const
{
    return d->state == ManualScroll || d->state == AutoScroll;
}

// ---- operations ----------------------------------------------------------

void KineticScroll::startFirstFrame()
{
    d->ticker->frames = 0;
    d->ticker->time = currentTime();
    d->ticker->start(0);
}

void KineticScroll::setTargetOffset(const QPoint& offset, bool animated, float speed, bool clip)
{
    if (!m_animated)
        animated = false;

    QPoint point = offset;
    if (clip)
        point = clampToRange(point, d->maxOffset);

    if (!animated) {
        setScrollOffset(point);
        stopScrolling();
        return;
    }

    d->targetOffset = point;
    d->state = AutoScroll;

    const double s = double(speed);
    const bool speedIsZero = !(s == s) || qAbs(s) <= 1e-12;
    if (!speedIsZero && d->targetOffset != NoTargetOffset && d->targetOffset != d->offset) {
        // Only the direction counts, one of the eight: the ramp and the
        // speed limit of the frames do the rest.
        const QPoint v = subtract(d->offset, d->targetOffset);
        const float fx = float(v.x()), fy = float(v.y());
        const float len = float(std::sqrt(double(fx) * fx + double(fy) * fy));
        const int ux = roundSat(double(fx / len));
        const int uy = roundSat(double(fy / len));
        d->speed = QPoint(roundSat(double(float(ux) * speed)), roundSat(double(float(uy) * speed)));
    }

    startFirstFrame();
}

void KineticScroll::resetOffset(const QPoint& offset)
{
    d->offset = offset;
    d->lastOffset = offset;
}

void KineticScroll::reset()
{
    d->state = Steady;
    d->speed = QPoint(0, 0);
    d->pressPos = QPoint(0, 0);
    resetOffset(QPoint(0, 0));
    d->ticker->stop();
    d->lastFrameRate = 0.0;
    d->ticker->frames = 0;
    d->ticker->time = currentTime();
}

void KineticScroll::restartAutoScroll(int msec)
{
    if (d->state != AutoScroll || d->ticker->isActive())
        return;
    d->ticker->start(msec);
}

QPoint KineticScroll::clippedOffset(const QPoint& p)
{
    const qint64 spring = d->scrollSpringLength;
    const QPoint c(bounded(-spring, p.x(), qint64(d->maxOffset.x()) + spring),
                   bounded(-spring, p.y(), qint64(d->maxOffset.y()) + spring));
    d->scrollingClipped = (c != p);
    return c;
}

void KineticScroll::tick()
{
    KineticScrollPrivate* p = d;
    if (p->state != AutoScroll) {
        p->ticker->stop();
        return;
    }

    zeroUnusedComponent(p->offset);
    Bounds bounds(p->maxOffset);
    QPoint clamped = clampToRange(p->offset, p->maxOffset);

    QPoint step(0, 0);
    QPoint delta(0, 0);
    auto towardsTarget = [&]() {
        delta = subtract(p->offset, p->targetOffset);
        step = QPoint(limit(delta.x(), 5), limit(delta.y(), 5));
    };

    if (p->targetOffset != NoTargetOffset) {
        towardsTarget();
    } else if (qAbs(p->momentumFactor) <= 1e-12) {
        // Paged: a release always goes one cell in the swipe's direction.
        const QPoint direction(p->swipeDirection == 3 ? -1 : 1, 0);
        setTargetOffset(nearestSnapOffset(p->offset, direction), true, 0.0f, true);
        if (p->state != AutoScroll)
            return;  // not animated: it jumped and the movement is over
        towardsTarget();
    } else if (!bounds.contains(p->offset)) {
        // Spring back into range.
        setTargetOffset(clamped, true, 0.0f, true);
        if (p->state != AutoScroll)
            return;
        towardsTarget();
    } else {
        // Coasting: friction of one pixel per frame per axis.
        step = QPoint(-sign(p->speed.x()), -sign(p->speed.y()));
        if (step != QPoint(0, 0)) {
            const int frames = manhattan(p->speed) / manhattan(step);
            const QPoint projected(roundSat(double(frames) * p->speed.x()),
                                   roundSat(double(frames) * p->speed.y()));
            const QPoint snap = nearestSnapOffset(p->offset, p->speed);
            const QPoint grid(p->snapGridSize.width(), p->snapGridSize.height());
            if (manhattan(projected) < manhattan(grid) / 2) {
                setTargetOffset(snap, true, 0.0f, true);
                if (p->state != AutoScroll)
                    return;
            }
        }
    }

    // Ease out near the target.
    const int deltaLength = manhattan(delta);
    if (delta != QPoint(0, 0) && deltaLength < p->easeOutLength &&
        qAbs(manhattan(p->speed)) > 1) {
        const float f = float((1.0 - p->easeOutRate) +
                              p->easeOutRate * double(deltaLength) / double(p->easeOutLength));
        p->speed = QPoint(roundSat(double(f * float(p->speed.x()))),
                          roundSat(double(f * float(p->speed.y()))));
    }

    p->speed = QPoint(limit(saturate(qint64(p->speed.x()) + step.x()), p->maxSpeed),
                      limit(saturate(qint64(p->speed.y()) + step.y()), p->maxSpeed));

    const QPoint wanted = subtract(p->offset, p->speed);
    QPoint next = clippedOffset(wanted);
    if (next != wanted)
        p->speed = QPoint(0, 0);  // the end of the spring range kills the motion

    // Land exactly on the target. Without a target its components are -1:
    // coasting across -1 on an axis stops there, a pixel short of the
    // start, and the frame after springs back to 0.
    const QPoint& t = p->targetOffset;
    if (p->speed.x() != 0 && t.x() >= qMin(p->offset.x(), next.x()) &&
        t.x() <= qMax(p->offset.x(), next.x())) {
        next.setX(t.x());
        p->speed.setX(0);
    }
    if (p->speed.y() != 0 && t.y() >= qMin(p->offset.y(), next.y()) &&
        t.y() <= qMax(p->offset.y(), next.y())) {
        next.setY(t.y());
        p->speed.setY(0);
    }

    // An overshoot ends the moment it comes back into range.
    if (!bounds.contains(p->offset) && bounds.touches(p->offset, next)) {
        stopScrolling();
        next = clamped;
    }

    setScrollOffset(next);
    p->offset = scrollOffset();

    if (p->speed == QPoint(0, 0) && step == QPoint(0, 0))
        stopScrolling();
}

QPoint KineticScroll::estimateSpeed(const QPoint& pos, bool force) const
{
    if (d->state == ManualScroll || force)
        return subtract(subtract(pos, d->pressPos), d->lastDelta);
    return QPoint(0, 0);
}

void KineticScroll::updateSpeedEstimate(const QPoint& delta)
{
    const double frameMs = d->lastFrameRate > 1.0 ? 1000.0 / d->lastFrameRate : 15.0;
    const double elapsed = qMax(1, msecsSince(d->lastTime));
    const QPoint moved = subtract(delta, d->lastDelta);
    const float sx = float((frameMs / elapsed) * (d->offsetScale * moved.x()));
    const float sy = float((frameMs / elapsed) * (d->offsetScale * moved.y()));

    if (d->speed == QPoint(0, 0) && (sx != 0.0f || sy != 0.0f)) {
        d->speed = QPoint(roundSat(double(sx)), roundSat(double(sy)));
    } else {
        // Running mean with the previous estimate.
        d->speed = QPoint(roundSat(double((sx + float(d->speed.x())) * 0.5f)),
                          roundSat(double((sy + float(d->speed.y())) * 0.5f)));
    }
}

void KineticScroll::handleMousePress(QMouseEvent* event)
{
    if (!takesMouseEvent(event, event && event->button() == Qt::LeftButton, d->ignoreList))
        return;
    d->pressPos = globalPosOf(event);

    if (d->state == Steady) {
        event->accept();
        d->state = Pressed;
        d->lastDelta = QPoint(0, 0);
        d->swipeDirection = 0;
        d->targetOffset = NoTargetOffset;
    } else if (d->state == AutoScroll) {
        // A press on a moving list stops it and does not reach the items.
        event->accept();
        stopScrolling();
        d->state = Stop;
        d->targetOffset = NoTargetOffset;
        d->swipeDirection = 0;
    }
    d->lastMousePos = QPoint(-1, -1);
}

void KineticScroll::handleMouseMove(QMouseEvent* event)
{
    if (!takesMouseEvent(event, event && (event->buttons() & Qt::LeftButton), d->ignoreList))
        return;

    const QPoint globalPos = globalPosOf(event);
    const QPoint drag = subtract(globalPos, d->pressPos);

    if (d->state == ManualScroll) {
        event->accept();
        d->lastOffset = scrollOffset();
        const QPoint wanted = subtract(d->offset, QPoint(roundSat(d->offsetScale * drag.x()),
                                                         roundSat(d->offsetScale * drag.y())));
        // Once in the spring zone (set from outside), follow the finger freely.
        if (clippedOffset(d->lastOffset) == d->lastOffset)
            setScrollOffset(clippedOffset(wanted));
        else
            setScrollOffset(wanted);
        if (msecsSince(d->lastTime) > 15) {
            updateSpeedEstimate(drag);
            d->lastDelta = drag;
            d->lastTime = currentTime();
        }
    } else if (d->state == Pressed || d->state == Stop) {
        bool start = d->state == Stop;
        if (!start) {
            if ((d->orientations & Qt::Horizontal) && qAbs(qint64(drag.x())) > d->threshold)
                start = true;
            else if ((d->orientations & Qt::Vertical) && qAbs(qint64(drag.y())) > d->threshold)
                start = true;
        }
        if (start) {
            if (d->swipeDirection == 0) {
                if (qAbs(qint64(drag.x())) > qAbs(qint64(drag.y())))
                    d->swipeDirection = drag.x() < 0 ? 3 : 4;
                else
                    d->swipeDirection = drag.y() < 0 ? 1 : 2;
            }
            d->lastTime = currentTime();
            d->lastDelta = QPoint(0, 0);
            d->state = ManualScroll;
            d->pressPos = globalPos;
            event->accept();
            cancelPress();
        }
    }
    d->lastMousePos = globalPos;
}

void KineticScroll::handleMouseRelease(QMouseEvent* event)
{
    if (!takesMouseEvent(event, event && event->button() == Qt::LeftButton, d->ignoreList))
        return;

    const QPoint globalPos = globalPosOf(event);

    if (d->state == ManualScroll) {
        QPoint drag = subtract(globalPos, d->pressPos);
        event->accept();
        // A release right on top of the last move: that move's final jump
        // is touch noise, not intent.
        if (globalPos == d->lastMousePos && msecsSince(d->lastTime) <= 4)
            setScrollOffset(d->lastOffset);
        if (drag == QPoint(0, 0)) {
            d->lastOffset = scrollOffset();
            drag = subtract(globalPos, d->lastMousePos);
            setScrollOffset(clippedOffset(subtract(
                d->offset, QPoint(roundSat(d->offsetScale * drag.x()),
                                  roundSat(d->offsetScale * drag.y())))));
        }
        if (msecsSince(d->lastTime) > 15) {
            updateSpeedEstimate(drag);
            d->lastDelta = drag;
            d->lastTime = currentTime();
        }
        d->targetOffset = NoTargetOffset;
        d->offset = scrollOffset();
        d->pressPos = globalPos;
        d->state = AutoScroll;
        startFirstFrame();
    } else if (d->state == Stop) {
        event->accept();
        d->lastTime = currentTime();
        d->lastDelta = QPoint(0, 0);
        d->swipeDirection = 0;
        d->targetOffset = NoTargetOffset;
        stopScrolling();
        // A stopped grid settles on a cell.
        if (d->snapGridSize.width() > 0 && d->snapGridSize.height() > 0) {
            d->state = AutoScroll;
            startFirstFrame();
        }
    } else if (d->state == Pressed) {
        event->accept();
        d->state = Steady;
        if (QWidget* receiver = d->acceptMouseClick.data()) {
            // Replay the click for the receiver; the machine lets both pass.
            QMouseEvent* press = new QMouseEvent(
                QEvent::MouseButtonPress, QPointF(receiver->mapFromGlobal(d->pressPos)),
                QPointF(d->pressPos), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
            QMouseEvent* release = new QMouseEvent(*event);
            d->ignoreList.append(press);
            d->ignoreList.append(release);
            QCoreApplication::postEvent(receiver, press);
            QCoreApplication::postEvent(receiver, release);
        }
    }
    d->lastMousePos = QPoint(-1, -1);
}
