// The finger-scrolling state machine, driven by scripted presses, moves and
// releases on a clock that the test advances by hand, and by calling the
// frame step directly; a few cases run the real frame timer as well.
#include <QtTest>
#include <QWidget>
#include <climits>
#include <cmath>

#include "widgets/KineticScroll.h"
#include "widgets/KineticScrollPrivate.h"

// Qt's offscreen platform plugin never frees its screen and cursor; full
// stacks let the suppression name the place instead of any QObject.
extern "C" const char* __asan_default_options()
{
    return "fast_unwind_on_malloc=0";
}
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:QGuiApplicationPrivate::createPlatformIntegration\n";
}

namespace {

// A scrolled object as a view would be: it holds the real offset, records
// every move and may clear the axis it doesn't scroll.
class Scroller : public KineticScroll
{
public:
    QPoint m_offset;
    QVector<QPoint> moves;
    int stoppedCount = 0;
    int cancelCount = 0;
    int clockMs = 10000;
    Qt::Orientation axis = Qt::Vertical;
    bool oneAxis = false;

    QPoint scrollOffset() const override { return m_offset; }
    void setScrollOffset(const QPoint& p) override
    {
        m_offset = p;
        moves << p;
    }
    void stopped() override { ++stoppedCount; }
    void cancelPress() override { ++cancelCount; }
    void zeroUnusedComponent(QPoint& p) override
    {
        if (!oneAxis)
            return;
        if (axis == Qt::Vertical)
            p.setX(0);
        else
            p.setY(0);
    }
    QTime currentTime() const override { return QTime::fromMSecsSinceStartOfDay(clockMs); }

    int state() const { return d->state; }
    QPoint speed() const { return d->speed; }
    void advance(int ms) { clockMs += ms; }

    // Finger helpers, global positions.
    bool press(QPoint pos, Qt::MouseButton b = Qt::LeftButton)
    {
        QMouseEvent e(QEvent::MouseButtonPress, pos, pos, b, b, Qt::NoModifier);
        handleMousePress(&e);
        return e.isAccepted();
    }
    bool move(QPoint pos)
    {
        QMouseEvent e(QEvent::MouseMove, pos, pos, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        handleMouseMove(&e);
        return e.isAccepted();
    }
    bool release(QPoint pos, Qt::MouseButton b = Qt::LeftButton)
    {
        QMouseEvent e(QEvent::MouseButtonRelease, pos, pos, b, Qt::NoButton, Qt::NoModifier);
        handleMouseRelease(&e);
        return e.isAccepted();
    }
    // Frames until the machine rests (or a limit); returns the offsets.
    QVector<QPoint> runFrames(int limit = 1000)
    {
        QVector<QPoint> out;
        for (int i = 0; i < limit && state() == AutoScroll; ++i) {
            advance(30);
            tick();
            out << m_offset;
        }
        return out;
    }
    // A vertical drag from `from`, in steps of `dy` every `ms` ms.
    void drag(QPoint from, int dy, int steps, int ms)
    {
        press(from);
        QPoint p = from;
        for (int i = 0; i < steps; ++i) {
            advance(ms);
            p.ry() += dy;
            move(p);
        }
    }
};

// A widget that hands its mouse events to a scroller first, as views do.
class ClickTarget : public QWidget
{
public:
    Scroller* scroller = nullptr;
    QList<QEvent::Type> seen;

protected:
    void mousePressEvent(QMouseEvent* e) override
    {
        scroller->handleMousePress(e);
        if (!e->isAccepted())
            seen << e->type();
    }
    void mouseReleaseEvent(QMouseEvent* e) override
    {
        scroller->handleMouseRelease(e);
        if (!e->isAccepted())
            seen << e->type();
    }
};

QVector<int> ys(const QVector<QPoint>& v)
{
    QVector<int> out;
    for (const QPoint& p : v)
        out << p.y();
    return out;
}

QString show(const QVector<QPoint>& v)
{
    QStringList parts;
    for (const QPoint& p : v)
        parts << QString("(%1,%2)").arg(p.x()).arg(p.y());
    return parts.join(' ');
}

}  // namespace

class TestKineticScroll : public QObject
{
    Q_OBJECT
private slots:
    void defaults()
    {
        Scroller s;
        QVERIFY(s.m_animated);
        QCOMPARE(s.threshold(), 10);
        QCOMPARE(s.orientations(), Qt::Horizontal | Qt::Vertical);
        QCOMPARE(s.maxOffset(), QPoint(INT_MAX, INT_MAX));
        QCOMPARE(s.maxSpeed(), 32);
        QCOMPARE(s.scrollSpringLength(), 100);
        QCOMPARE(s.easeOutLength(), 100);
        QCOMPARE(s.easeOutRate(), 0.2);
        QCOMPARE(s.offsetScale(), 1.0);
        QCOMPARE(s.momentumFactor(), 1.0);
        QCOMPARE(s.targetOffset(), NoTargetOffset);
        QCOMPARE(NoTargetOffset, QPoint(-1, -1));
        QCOMPARE(s.swipeDirection(), 0);
        QCOMPARE(s.getLastFrameRate(), 0.0);
        QVERIFY(s.isSteadyScroll());
        QVERIFY(!s.isBeingScrolled());
        QVERIFY(!KineticScroll::s_bShowFrameRate);

        s.setThreshold(25);
        s.setThreshold(-3);  // ignored
        QCOMPARE(s.threshold(), 25);
    }

    void threshold_data()
    {
        QTest::addColumn<QPoint>("to");
        QTest::addColumn<int>("orientations");
        QTest::addColumn<bool>("drags");
        QTest::addColumn<int>("swipe");
        QTest::newRow("10 down stays") << QPoint(100, 110) << 3 << false << 0;
        QTest::newRow("11 down drags") << QPoint(100, 111) << 3 << true << 2;
        QTest::newRow("11 up drags") << QPoint(100, 89) << 3 << true << 1;
        QTest::newRow("10 left stays") << QPoint(90, 100) << 3 << false << 0;
        QTest::newRow("11 left drags") << QPoint(89, 100) << 3 << true << 3;
        QTest::newRow("11 right drags") << QPoint(111, 100) << 3 << true << 4;
        QTest::newRow("horizontal axis off") << QPoint(100, 150) << int(Qt::Horizontal) << false << 0;
        QTest::newRow("vertical only, sideways") << QPoint(150, 100) << int(Qt::Vertical) << false << 0;
        QTest::newRow("vertical only, diagonal") << QPoint(150, 112) << int(Qt::Vertical) << true << 4;
    }
    void threshold()
    {
        QFETCH(QPoint, to);
        QFETCH(int, orientations);
        QFETCH(bool, drags);
        QFETCH(int, swipe);
        Scroller s;
        s.setOrientations(Qt::Orientations(orientations));
        QVERIFY(s.press(QPoint(100, 100)));
        QCOMPARE(s.state(), int(KineticScroll::Pressed));
        QVERIFY(!s.isSteadyScroll());
        QVERIFY(!s.isBeingScrolled());
        QCOMPARE(s.move(to), drags);
        QCOMPARE(s.state(), int(drags ? KineticScroll::ManualScroll : KineticScroll::Pressed));
        QCOMPARE(s.cancelCount, drags ? 1 : 0);
        QCOMPARE(s.swipeDirection(), swipe);
        // Passing the threshold re-bases the press: the content doesn't jump.
        QVERIFY(s.moves.isEmpty());
        if (drags) {
            s.move(to);  // a second move doesn't cancel again
            QCOMPARE(s.cancelCount, 1);
            QCOMPARE(s.m_offset, QPoint(0, 0));
        }
    }

    void otherButtonsAndPlainMovesLeaveTheMachine()
    {
        Scroller s;
        QVERIFY(!s.press(QPoint(5, 5), Qt::RightButton));
        QVERIFY(s.isSteadyScroll());
        QVERIFY(!s.move(QPoint(5, 50)));  // no button held
        QMouseEvent hover(QEvent::MouseMove, QPoint(5, 60), QPoint(5, 60), Qt::NoButton,
                          Qt::NoButton, Qt::NoModifier);
        s.handleMouseMove(&hover);
        QVERIFY(!hover.isAccepted());
        QVERIFY(s.isSteadyScroll());
        s.press(QPoint(5, 5));
        QVERIFY(!s.release(QPoint(5, 5), Qt::MiddleButton));
        QCOMPARE(s.state(), int(KineticScroll::Pressed));
        QVERIFY(s.release(QPoint(5, 5)));
        QVERIFY(s.isSteadyScroll());
        QCOMPARE(s.stoppedCount, 0);
    }

    void dragFollowsTheFinger()
    {
        Scroller s;
        s.setMaxOffset(QPoint(0, 1000));
        s.resetOffset(QPoint(0, 200));
        s.m_offset = QPoint(0, 200);
        s.press(QPoint(50, 300));
        s.move(QPoint(50, 280));  // starts the drag here
        s.advance(5);
        s.move(QPoint(50, 250));
        QCOMPARE(s.m_offset, QPoint(0, 230));
        s.advance(5);
        s.move(QPoint(55, 300));
        QCOMPARE(s.m_offset, QPoint(-5, 180));

        // Offsets scale with the finger.
        Scroller t;
        t.setMaxOffset(QPoint(1000, 1000));
        t.setOffsetScale(1.5);
        t.press(QPoint(0, 100));
        t.move(QPoint(0, 50));
        t.move(QPoint(0, 41));
        QCOMPARE(t.m_offset, QPoint(0, 13));  // -qRound(1.5 * -9): halves round up
    }

    void flickCoastsAndComesToRest()
    {
        Scroller s;
        s.setMaxOffset(QPoint(0, 5000));
        s.drag(QPoint(100, 900), -20, 10, 16);
        QCOMPARE(s.state(), int(KineticScroll::ManualScroll));
        QCOMPARE(s.m_offset.y(), 180);  // the first step only passed the threshold
        s.advance(16);
        QVERIFY(s.release(QPoint(100, 680)));
        QCOMPARE(s.state(), int(KineticScroll::AutoScroll));
        QVERIFY(s.isBeingAutoScrolled());
        // 20 px each 16 ms of 15 ms frames: a bit under 19 px per frame,
        // finger upwards, so the speed is negative and the offset grows.
        QCOMPARE(s.speed(), QPoint(0, -19));

        const int start = s.m_offset.y();
        const QVector<int> offsets = ys(s.runFrames());
        QVERIFY(s.isSteadyScroll());
        QCOMPARE(s.stoppedCount, 1);
        // Friction takes one pixel per frame off the speed until it is 0,
        // then the machine rests on the next frame.
        QCOMPARE(offsets.size(), 20);
        int prev = start;
        for (int i = 0; i < 19; ++i) {
            QCOMPARE(offsets[i] - prev, 18 - i);
            prev = offsets[i];
        }
        QCOMPARE(offsets.last(), offsets[18]);
        QCOMPARE(offsets.last(), start + 18 * 19 / 2);
        QVERIFY(s.getLastFrameRate() >= 1.0);
    }

    void flickKeepsWithinMaxSpeed()
    {
        Scroller s;
        s.setMaxOffset(QPoint(0, 100000));
        s.setMaxSpeed(12);
        s.drag(QPoint(0, 1000), -60, 6, 16);
        s.advance(16);
        s.release(QPoint(0, 580));
        int prev = s.m_offset.y();
        QVector<QPoint> offsets = s.runFrames();
        QVERIFY(!offsets.isEmpty());
        for (const QPoint& p : offsets) {
            QVERIFY2(qAbs(p.y() - prev) <= 12, qPrintable(show(offsets)));
            prev = p.y();
        }
    }

    void speedSamplingIgnoresBursts()
    {
        Scroller s;
        s.setMaxOffset(QPoint(0, 5000));
        s.press(QPoint(0, 500));
        s.move(QPoint(0, 480));
        // A burst of touch events within 15 ms moves the content but is not
        // sampled.
        for (int i = 1; i <= 5; ++i) {
            s.advance(3);
            s.move(QPoint(0, 480 - 10 * i));
            QCOMPARE(s.m_offset.y(), 10 * i);
            QCOMPARE(s.speed(), QPoint(0, 0));
        }
        // 15 ms exactly is still inside the window.
        QCOMPARE(s.estimateSpeed(QPoint(0, 430), false), QPoint(0, -50));
        s.advance(1);
        s.move(QPoint(0, 420));
        // 16 ms: sampled over the whole time since the last sample.
        // -60 px * 15 / 16 = -56.25
        QCOMPARE(s.speed(), QPoint(0, -56));
        QCOMPARE(s.estimateSpeed(QPoint(0, 420), false), QPoint(0, 0));
        QCOMPARE(s.estimateSpeed(QPoint(0, 400), false), QPoint(0, -20));
        // Next sample is averaged with the last one.
        s.advance(30);
        s.move(QPoint(0, 400));
        QCOMPARE(s.speed(), QPoint(0, qRound((-10.0 - 56.0) * 0.5)));
        // Outside a drag there is no estimate unless forced.
        Scroller idle;
        QCOMPARE(idle.estimateSpeed(QPoint(5, 5), false), QPoint(0, 0));
        QCOMPARE(idle.estimateSpeed(QPoint(5, 5), true), QPoint(5, 5));
    }

    void releaseOnTopOfTheLastMoveDropsItsJump()
    {
        Scroller s;
        s.setMaxOffset(QPoint(0, 5000));
        s.press(QPoint(0, 500));
        s.move(QPoint(0, 480));
        s.advance(20);
        s.move(QPoint(0, 460));  // sampled: lastTime now
        QCOMPARE(s.m_offset.y(), 20);
        s.advance(3);
        s.move(QPoint(0, 400));  // a late jump
        QCOMPARE(s.m_offset.y(), 80);
        s.advance(1);
        s.release(QPoint(0, 400));
        QCOMPARE(s.moves.last().y(), 20);  // back to before the jump
    }

    void overshootSpringsBackToTheEnd_data()
    {
        QTest::addColumn<int>("startOffset");
        QTest::addColumn<int>("fingerDy");
        QTest::addColumn<int>("end");
        QTest::newRow("top") << 0 << 30 << 0;
        QTest::newRow("bottom") << 300 << -30 << 300;
    }
    void overshootSpringsBackToTheEnd()
    {
        QFETCH(int, startOffset);
        QFETCH(int, fingerDy);
        QFETCH(int, end);
        Scroller s;
        s.setMaxOffset(QPoint(0, 300));
        s.resetOffset(QPoint(0, startOffset));
        s.m_offset = QPoint(0, startOffset);
        s.drag(QPoint(0, 500), fingerDy, 10, 16);
        // The drag stops at the spring length past the end.
        const int limit = end == 0 ? -100 : 400;
        QCOMPARE(s.m_offset.y(), limit);
        QVERIFY(s.isScrollingClipped());
        s.advance(40);
        s.release(QPoint(0, 500 + 10 * fingerDy));

        const QVector<QPoint> frames = s.runFrames();
        const QString trace = show(frames);
        QVERIFY2(s.isSteadyScroll(), qPrintable(trace));
        QCOMPARE(s.m_offset, QPoint(0, end));
        QCOMPARE(s.stoppedCount, 1);
        QCOMPARE(s.targetOffset(), NoTargetOffset);
        // Moves towards the end only, never past it, accelerating by at most
        // 5 pixels per frame, and slowing down near it.
        int prev = limit;
        int prevStep = 0;
        int maxStep = 0;
        for (const QPoint& p : frames) {
            const int step = qAbs(p.y() - prev);
            QVERIFY2(end == 0 ? p.y() <= 0 && p.y() >= prev : p.y() >= 300 && p.y() <= prev,
                     qPrintable(trace));
            QVERIFY2(step - prevStep <= 5, qPrintable(trace));
            maxStep = qMax(maxStep, step);
            prev = p.y();
            prevStep = step;
        }
        QVERIFY2(maxStep > 5, qPrintable(trace));
        QVERIFY2(frames.size() < 40, qPrintable(trace));
    }

    void flickPastTheEndSpringsBack()
    {
        Scroller s;
        s.setMaxOffset(QPoint(0, 150));
        s.drag(QPoint(0, 900), -25, 6, 16);
        s.advance(16);
        s.release(QPoint(0, 725));
        const QVector<QPoint> frames = s.runFrames();
        const QString trace = show(frames);
        int furthest = 0;
        for (const QPoint& p : frames)
            furthest = qMax(furthest, p.y());
        QVERIFY2(furthest > 150 && furthest <= 250, qPrintable(trace));
        QCOMPARE(s.m_offset, QPoint(0, 150));
        QVERIFY(s.isSteadyScroll());
    }

    void flickSnapsToTheGrid_data()
    {
        QTest::addColumn<int>("fingerDy");
        QTest::newRow("up") << -20;
        QTest::newRow("down") << 20;
        QTest::newRow("slow up") << -7;
    }
    void flickSnapsToTheGrid()
    {
        QFETCH(int, fingerDy);
        // Where the same flick would come to rest without a grid.
        auto flick = [fingerDy](Scroller& s) {
            s.oneAxis = true;
            s.setMaxOffset(QPoint(0, 100000));
            s.resetOffset(QPoint(0, 5000));
            s.m_offset = QPoint(0, 5000);
            s.drag(QPoint(0, 500), fingerDy, 6, 16);
            s.advance(16);
            s.release(QPoint(0, 500 + 7 * fingerDy));
            s.runFrames();
        };
        Scroller free;
        flick(free);
        Scroller snapped;
        snapped.setSnapGridSize(QSize(1, 50));
        flick(snapped);
        QVERIFY(snapped.isSteadyScroll());
        QCOMPARE(snapped.m_offset.x(), 0);
        QCOMPARE(snapped.m_offset.y() % 50, 0);
        QVERIFY2(qAbs(snapped.m_offset.y() - free.m_offset.y()) < 50,
                 qPrintable(QString("%1 vs %2").arg(snapped.m_offset.y()).arg(free.m_offset.y())));
        QCOMPARE(snapped.stoppedCount, 1);
    }

    void nearestSnapOffset()
    {
        Scroller s;
        s.setSnapGridSize(QSize(100, 40));
        // At rest: nearest cell.
        QCOMPARE(s.nearestSnapOffset(QPoint(130, 61), QPoint(0, 0)), QPoint(100, 80));
        QCOMPARE(s.nearestSnapOffset(QPoint(150, 59), QPoint(0, 0)), QPoint(200, 40));
        // Moving: biased in the direction of travel (a positive speed
        // lowers the offset).
        QCOMPARE(s.nearestSnapOffset(QPoint(180, 0), QPoint(3, 0)), QPoint(100, 0));
        QCOMPARE(s.nearestSnapOffset(QPoint(190, 0), QPoint(3, 0)), QPoint(200, 0));
        QCOMPARE(s.nearestSnapOffset(QPoint(180, 0), QPoint(0, 0)), QPoint(200, 0));
        QCOMPARE(s.nearestSnapOffset(QPoint(110, 0), QPoint(-3, 0)), QPoint(200, 0));
        // Grid sides below one count as one.
        s.setSnapGridSize(QSize(-1, 0));
        QCOMPARE(s.nearestSnapOffset(QPoint(17, 23), QPoint(0, 0)), QPoint(17, 23));
        // Paged: one cell on from where the drag began.
        s.setSnapGridSize(QSize(320, 1));
        s.setMomentumFactor(0.0);
        s.oneAxis = true;
        s.axis = Qt::Horizontal;
        QCOMPARE(s.nearestSnapOffset(QPoint(330, 7), QPoint(-1, 0)), QPoint(640, 0));
        QCOMPARE(s.nearestSnapOffset(QPoint(330, 7), QPoint(1, 0)), QPoint(0, 0));
    }

    void pagedReleaseAlwaysGoesOneCell_data()
    {
        QTest::addColumn<int>("fingerDx");
        QTest::addColumn<int>("page");
        QTest::newRow("left to next page") << -15 << 2;
        QTest::newRow("right to previous page") << 15 << 0;
    }
    void pagedReleaseAlwaysGoesOneCell()
    {
        QFETCH(int, fingerDx);
        QFETCH(int, page);
        Scroller s;
        s.oneAxis = true;
        s.axis = Qt::Horizontal;
        s.setMomentumFactor(0.0);
        s.setSnapGridSize(QSize(320, 1));
        s.setMaxOffset(QPoint(960, 0));
        s.resetOffset(QPoint(320, 0));
        s.m_offset = QPoint(320, 0);
        s.press(QPoint(200, 50));
        QPoint p(200, 50);
        for (int i = 0; i < 4; ++i) {
            s.advance(20);
            p.rx() += fingerDx;
            s.move(p);
        }
        s.advance(20);
        s.release(p);
        const QVector<QPoint> frames = s.runFrames();
        QCOMPARE(s.m_offset, QPoint(320 * page, 0));
        QVERIFY(s.isSteadyScroll());
        // Straight to the page, never beyond it.
        for (const QPoint& f : frames)
            QVERIFY2(page == 2 ? f.x() <= 640 : f.x() >= 0, qPrintable(show(frames)));
    }

    void pressStopsARunningScroll()
    {
        ClickTarget target;
        Scroller s;
        target.scroller = &s;
        s.setAcceptMouseClick(&target);
        s.setMaxOffset(QPoint(0, 5000));
        s.drag(QPoint(0, 900), -20, 8, 16);
        s.advance(16);
        s.release(QPoint(0, 740));
        s.runFrames(3);
        QVERIFY(s.isBeingAutoScrolled());
        const QPoint at = s.m_offset;

        QVERIFY(s.press(QPoint(10, 300)));
        QCOMPARE(s.state(), int(KineticScroll::Stop));
        QVERIFY(!s.isSteadyScroll());
        QVERIFY(!s.isBeingScrolled());
        QCOMPARE(s.speed(), QPoint(0, 0));
        QCOMPARE(s.stoppedCount, 1);
        s.tick();  // a frame already queued does nothing now
        QCOMPARE(s.m_offset, at);

        // The release doesn't reach the items as a click.
        QVERIFY(s.release(QPoint(10, 300)));
        QVERIFY(s.isSteadyScroll());
        QCoreApplication::processEvents();
        QVERIFY(target.seen.isEmpty());
        QCOMPARE(s.m_offset, at);
    }

    void stopStateDragsWithoutThreshold()
    {
        Scroller s;
        s.setMaxOffset(QPoint(0, 5000));
        s.setTargetOffset(QPoint(0, 1000), true, 0.0f, true);
        s.runFrames(2);
        s.press(QPoint(0, 300));
        QCOMPARE(s.state(), int(KineticScroll::Stop));
        QVERIFY(s.move(QPoint(0, 299)));
        QCOMPARE(s.state(), int(KineticScroll::ManualScroll));
        QCOMPARE(s.swipeDirection(), 1);
        QCOMPARE(s.cancelCount, 1);
    }

    void stoppedGridSettles()
    {
        // Released in Stop on a grid: the machine runs frames again.
        Scroller s;
        s.setSnapGridSize(QSize(1, 40));
        s.setMaxOffset(QPoint(0, 5000));
        s.setTargetOffset(QPoint(0, 1000), true, 0.0f, true);
        s.runFrames(3);
        s.press(QPoint(0, 300));
        s.release(QPoint(0, 300));
        QVERIFY(s.isBeingAutoScrolled());
        s.runFrames();
        QVERIFY(s.isSteadyScroll());

        // Without a grid it just rests.
        Scroller t;
        t.setMaxOffset(QPoint(0, 5000));
        t.setTargetOffset(QPoint(0, 1000), true, 0.0f, true);
        t.runFrames(3);
        t.press(QPoint(0, 300));
        t.release(QPoint(0, 300));
        QVERIFY(t.isSteadyScroll());
    }

    void clickIsReplayedAndPassesThrough()
    {
        ClickTarget target;
        target.move(40, 60);
        Scroller s;
        target.scroller = &s;
        s.setAcceptMouseClick(&target);
        QVERIFY(s.press(QPoint(45, 70)));
        QVERIFY(s.release(QPoint(46, 71)));
        QVERIFY(s.isSteadyScroll());
        QVERIFY(target.seen.isEmpty());
        QCoreApplication::processEvents();
        // Both replayed events went through the machine untouched.
        QCOMPARE(target.seen, (QList<QEvent::Type>() << QEvent::MouseButtonPress
                                                      << QEvent::MouseButtonRelease));
        QVERIFY(s.isSteadyScroll());
        // The next real press is handled again.
        QVERIFY(s.press(QPoint(45, 70)));

        // A receiver that went away gets nothing.
        Scroller u;
        {
            QWidget gone;
            u.setAcceptMouseClick(&gone);
        }
        u.press(QPoint(1, 1));
        QVERIFY(u.release(QPoint(1, 1)));
        QCoreApplication::processEvents();
    }

    void targetOffsets()
    {
        // Not animated: jumps, clipped, and reports the end.
        Scroller s;
        s.setMaxOffset(QPoint(200, 300));
        s.setTargetOffset(QPoint(500, -20), false, 0.0f, true);
        QCOMPARE(s.m_offset, QPoint(200, 0));
        QCOMPARE(s.stoppedCount, 0);  // nothing was moving
        QVERIFY(s.isSteadyScroll());

        // m_animated off: an animated request jumps as well.
        Scroller j;
        j.m_animated = false;
        j.setMaxOffset(QPoint(0, 300));
        j.setTargetOffset(QPoint(0, 120), true, 0.0f, true);
        QCOMPARE(j.m_offset, QPoint(0, 120));
        QCOMPARE(j.stoppedCount, 1);
        QVERIFY(j.isSteadyScroll());

        // Animated: ramps up by 5 per frame, never past maxSpeed, and lands
        // exactly.
        Scroller a;
        a.setMaxOffset(QPoint(0, 2000));
        a.setMaxSpeed(20);
        a.setTargetOffset(QPoint(0, 1000), true, 0.0f, false);
        QCOMPARE(a.targetOffset(), QPoint(0, 1000));
        QVERIFY(a.isBeingAutoScrolled());
        const QVector<int> offsets = ys(a.runFrames());
        QCOMPARE(offsets.mid(0, 4), (QVector<int>() << 5 << 15 << 30 << 50));
        int prev = 0;
        for (int y : offsets) {
            QVERIFY(y - prev <= 20);
            QVERIFY(y >= prev);
            prev = y;
        }
        QCOMPARE(a.m_offset, QPoint(0, 1000));
        QCOMPARE(a.stoppedCount, 1);

        // An initial speed points at the target.
        Scroller v;
        v.setMaxOffset(QPoint(0, 2000));
        v.resetOffset(QPoint(0, 500));
        v.m_offset = QPoint(0, 500);
        v.setTargetOffset(QPoint(0, 100), true, 12.0f, true);
        QCOMPARE(v.speed(), QPoint(0, 12));
        v.setTargetOffset(QPoint(300, 900), true, 7.0f, false);
        QCOMPARE(v.speed(), QPoint(-7, -7));
        // A speed of 0 keeps the stored one.
        v.setTargetOffset(QPoint(0, 100), true, 0.0f, true);
        QCOMPARE(v.speed(), QPoint(-7, -7));
        // Step adds, the limit applies.
        v.setMaxSpeed(32);
        v.setTargetOffset(QPoint(0, 1900), true, 500.0f, true);
        QCOMPARE(v.speed(), QPoint(0, -500));
        v.tick();
        QCOMPARE(v.speed(), QPoint(0, -32));
        QCOMPARE(v.m_offset, QPoint(0, 532));
    }

    void targetAtTheOffsetEndsOnTheNextFrame()
    {
        Scroller s;
        s.setMaxOffset(QPoint(0, 2000));
        s.setTargetOffset(QPoint(0, 600), true, 9.0f, true);
        s.tick();
        QVERIFY(s.speed() != QPoint(0, 0));
        const QPoint here = s.m_offset;
        const QPoint speed = s.speed();
        s.setTargetOffset(here, true, 4.0f, true);
        QCOMPARE(s.speed(), speed);  // left alone
        s.tick();
        QCOMPARE(s.m_offset, here);
        QCOMPARE(s.speed(), QPoint(0, 0));
        QVERIFY(s.isSteadyScroll());
        QCOMPARE(s.stoppedCount, 1);
    }

    void stopScrollingAndFrameRate()
    {
        Scroller s;
        s.stopScrolling();
        QCOMPARE(s.stoppedCount, 0);
        QCOMPARE(s.getLastFrameRate(), 0.0);
        s.m_animated = false;
        s.stopScrolling();
        QCOMPARE(s.stoppedCount, 1);
        QVERIFY(s.getLastFrameRate() >= 1.0);

        Scroller f;
        f.setMaxOffset(QPoint(0, 100));
        f.setTargetOffset(QPoint(0, 100), true, 0.0f, true);
        f.runFrames();
        QVERIFY(f.isSteadyScroll());
        QVERIFY(f.getLastFrameRate() >= 1.0);
        f.reset();
        QCOMPARE(f.getLastFrameRate(), 0.0);
        QVERIFY(f.isSteadyScroll());

        // With the switch on and no widgets the machine still stops cleanly.
        KineticScroll::s_bShowFrameRate = true;
        Scroller g;
        g.setMaxOffset(QPoint(0, 100));
        g.setTargetOffset(QPoint(0, 50), true, 0.0f, true);
        g.runFrames();
        KineticScroll::s_bShowFrameRate = false;
        QCOMPARE(g.stoppedCount, 1);
    }

    void resetAndResetOffset()
    {
        Scroller s;
        s.setMaxOffset(QPoint(0, 1000));
        s.resetOffset(QPoint(0, 400));
        QVERIFY(s.moves.isEmpty());  // moves nothing
        s.setTargetOffset(QPoint(0, 800), true, 0.0f, true);
        s.runFrames(2);
        s.reset();
        QVERIFY(s.isSteadyScroll());
        QCOMPARE(s.speed(), QPoint(0, 0));
        const int moves = s.moves.size();
        s.tick();
        QCOMPARE(s.moves.size(), moves);
        // The machine continues from the reset offset.
        s.m_offset = QPoint(0, 0);
        s.setTargetOffset(QPoint(0, 10), true, 0.0f, true);
        s.runFrames();
        QCOMPARE(s.m_offset, QPoint(0, 10));
    }

    void clippedOffset()
    {
        Scroller s;
        s.setMaxOffset(QPoint(50, 80));
        s.setScrollSpringLength(20);
        QCOMPARE(s.clippedOffset(QPoint(10, 10)), QPoint(10, 10));
        QVERIFY(!s.isScrollingClipped());
        QCOMPARE(s.clippedOffset(QPoint(-30, 101)), QPoint(-20, 100));
        QVERIFY(s.isScrollingClipped());
        // The default range reaches the integer limits without wrapping.
        Scroller big;
        QCOMPARE(big.clippedOffset(QPoint(INT_MAX, INT_MIN)), QPoint(INT_MAX, -100));
    }

    void hostileSettingsStayBounded()
    {
        Scroller s;
        s.setOffsetScale(1e300);
        s.setMaxSpeed(-5);
        s.setEaseOutLength(0);
        s.setEaseOutRate(std::nan(""));
        s.press(QPoint(INT_MAX, INT_MIN));
        s.move(QPoint(INT_MIN, INT_MAX));
        s.advance(20);
        s.move(QPoint(INT_MAX, INT_MIN));
        s.advance(20);
        s.release(QPoint(0, 0));
        s.runFrames(50);
        s.setTargetOffset(QPoint(INT_MAX, INT_MIN), true, 1e30f, false);
        s.runFrames(50);
        s.setOffsetScale(std::nan(""));
        s.setMomentumFactor(std::nan(""));
        s.press(QPoint(0, 0));
        s.move(QPoint(0, 50));
        s.release(QPoint(0, 60));
        s.runFrames(50);
        s.nearestSnapOffset(QPoint(INT_MAX, INT_MIN), QPoint(INT_MIN, INT_MAX));
        QCOMPARE(s.maxSpeed(), 32);  // the negative limit was refused
        s.reset();
        QVERIFY(s.isSteadyScroll());
    }

    // ---- the real frame timer --------------------------------------------

    void framesArePacedByPainting()
    {
        struct Painted : Scroller {
            bool paints = true;
            int ticks = 0;
            void setScrollOffset(const QPoint& p) override
            {
                Scroller::setScrollOffset(p);
                ++ticks;
                if (paints)  // the paint that follows the update
                    QTimer::singleShot(0, [this] { restartAutoScroll(5); });
            }
            QTime currentTime() const override { return KineticScroll::currentTime(); }
        } s;
        s.setMaxOffset(QPoint(0, 400));
        s.setTargetOffset(QPoint(0, 400), true, 0.0f, true);
        QTRY_VERIFY_WITH_TIMEOUT(s.isSteadyScroll(), 5000);
        QCOMPARE(s.m_offset, QPoint(0, 400));
        QVERIFY(s.getLastFrameRate() >= 1.0);

        // Nothing paints: the movement pauses after one frame...
        s.paints = false;
        s.ticks = 0;
        s.setTargetOffset(QPoint(0, 0), true, 0.0f, true);
        QTest::qWait(100);
        QCOMPARE(s.ticks, 1);
        QVERIFY(s.isBeingAutoScrolled());
        // ...and goes on when something does.
        s.restartAutoScroll(5);
        QTRY_COMPARE_WITH_TIMEOUT(s.ticks, 2, 2000);
        s.paints = true;
        s.restartAutoScroll(5);
        QTRY_VERIFY_WITH_TIMEOUT(s.isSteadyScroll(), 5000);
        QCOMPARE(s.m_offset, QPoint(0, 0));
    }

    void restartDuringAPendingFrameChangesNothing()
    {
        struct Manual : Scroller {
            int ticks = 0;
            QElapsedTimer since;
            qint64 tickedAt = -1;
            void setScrollOffset(const QPoint& p) override
            {
                Scroller::setScrollOffset(p);
                if (++ticks == 2)
                    tickedAt = since.elapsed();
            }
            QTime currentTime() const override { return KineticScroll::currentTime(); }
        } s;
        s.setMaxOffset(QPoint(0, 4000));
        s.setTargetOffset(QPoint(0, 4000), true, 0.0f, true);
        QTRY_COMPARE(s.ticks, 1);
        s.since.start();
        s.restartAutoScroll(150);
        s.restartAutoScroll(1);     // doesn't shorten it
        QTest::qWait(60);
        QCOMPARE(s.ticks, 1);
        s.restartAutoScroll(2000);  // nor prolong it
        QTRY_COMPARE_WITH_TIMEOUT(s.ticks, 2, 1500);
        QVERIFY2(s.tickedAt >= 140 && s.tickedAt < 1000, qPrintable(QString::number(s.tickedAt)));
        s.stopScrolling();
        s.restartAutoScroll(1);  // at rest: nothing
        QTest::qWait(30);
        QCOMPARE(s.ticks, 2);
    }
};

QTEST_MAIN(TestKineticScroll)
#include "tst_kineticscroll.moc"
