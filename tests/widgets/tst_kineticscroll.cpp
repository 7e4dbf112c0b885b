// The finger-scrolling state machine, driven by scripted presses, moves and
// releases on a clock that the test advances by hand, and by calling the
// frame step directly; one case runs the real frame timer as well.
#include <QtTest>
#include <QWidget>
#include <algorithm>
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
// every move, may clear the axis it doesn't scroll and may replay clicks.
class Scroller : public QWidget, public KineticScroll
{
public:
    QPoint m_offset;
    QVector<QPoint> moves;
    QList<QEvent::Type> clicks;
    int stoppedCount = 0;
    int cancelCount = 0;
    int clockMs = 10000;
    bool horizontalOnly = false;

    QPoint scrollOffset() const override { return m_offset; }
    void setScrollOffset(const QPoint& p) override { moves << (m_offset = p); }
    void stopped() override { ++stoppedCount; }
    void cancelPress() override { ++cancelCount; }
    void zeroUnusedComponent(QPoint& p) override
    {
        if (horizontalOnly)
            p.setY(0);
    }
    QTime currentTime() const override { return QTime::fromMSecsSinceStartOfDay(clockMs); }

    int state() const { return d->state; }
    QPoint speed() const { return d->speed; }
    void advance(int ms) { clockMs += ms; }
    void startAt(const QPoint& offset, const QPoint& max)
    {
        setMaxOffset(max);
        resetOffset(m_offset = offset);
    }
    // Finger helpers, global positions; each returns whether the event was taken.
    bool mouse(QEvent::Type type, QPoint pos, Qt::MouseButton b = Qt::LeftButton)
    {
        QMouseEvent e(type, pos, pos, type == QEvent::MouseMove ? Qt::NoButton : b,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::MouseButtons(b), Qt::NoModifier);
        type == QEvent::MouseButtonPress ? handleMousePress(&e)
            : type == QEvent::MouseMove  ? handleMouseMove(&e)
                                         : handleMouseRelease(&e);
        return e.isAccepted();
    }
    bool press(QPoint pos) { return mouse(QEvent::MouseButtonPress, pos); }
    bool move(QPoint pos) { return mouse(QEvent::MouseMove, pos); }
    bool release(QPoint pos) { return mouse(QEvent::MouseButtonRelease, pos); }
    // A drag from `from` in `steps` steps every `ms` ms; returns where it ends.
    QPoint drag(QPoint from, QPoint step, int steps, int ms = 16)
    {
        press(from);
        for (int i = 0; i < steps; ++i, advance(ms))
            move(from += step);
        return from;
    }
    // A drag let go one more step on.
    void flick(QPoint from, QPoint step, int steps, int ms = 16) { release(drag(from, step, steps, ms) + step); }
    // Frames until the machine rests (or a limit); returns the offsets on the scrolled axis.
    QVector<int> runFrames(int limit = 1000)
    {
        QVector<int> out;
        for (int i = 0; i < limit && state() == AutoScroll; ++i) {
            advance(30);
            tick();
            out << (horizontalOnly ? m_offset.x() : m_offset.y());
        }
        return out;
    }

protected:
    // As a view does: its mouse events go through the machine first.
    void mousePressEvent(QMouseEvent* e) override
    {
        handleMousePress(e);
        if (!e->isAccepted())
            clicks << e->type();
    }
    void mouseReleaseEvent(QMouseEvent* e) override
    {
        handleMouseRelease(e);
        if (!e->isAccepted())
            clicks << e->type();
    }
};

}  // namespace

class TestKineticScroll : public QObject
{
    Q_OBJECT
private slots:
    void threshold_data()
    {
        QTest::addColumn<QPoint>("to");
        QTest::addColumn<int>("orientations");
        QTest::addColumn<int>("swipe");  // 0: no drag
        QTest::newRow("10 down stays") << QPoint(100, 110) << 3 << 0;
        QTest::newRow("11 down drags") << QPoint(100, 111) << 3 << 2;
        QTest::newRow("11 up drags") << QPoint(100, 89) << 3 << 1;
        QTest::newRow("11 left drags") << QPoint(89, 100) << 3 << 3;
        QTest::newRow("11 right drags") << QPoint(111, 100) << 3 << 4;
        QTest::newRow("vertical only, sideways") << QPoint(150, 100) << int(Qt::Vertical) << 0;
        QTest::newRow("vertical only, diagonal") << QPoint(150, 112) << int(Qt::Vertical) << 4;
    }
    void threshold()
    {
        QFETCH(QPoint, to);
        QFETCH(int, orientations);
        QFETCH(int, swipe);
        Scroller s;
        s.setThreshold(-3);  // ignored
        s.setOrientations(Qt::Orientations(orientations));
        QVERIFY(s.press(QPoint(100, 100)));
        QVERIFY(!s.isSteadyScroll() && !s.isBeingScrolled());
        QCOMPARE(s.move(to), swipe != 0);
        QCOMPARE(s.state(), int(swipe ? KineticScroll::ManualScroll : KineticScroll::Pressed));
        QCOMPARE(s.swipeDirection(), swipe);
        // Passing the threshold re-bases the press: the content doesn't jump,
        // and a second move doesn't cancel again.
        s.move(to);
        QCOMPARE(s.cancelCount, swipe ? 1 : 0);
        QCOMPARE(s.m_offset, QPoint(0, 0));
    }

    void otherButtonsAndPlainMovesLeaveTheMachine()
    {
        Scroller s;
        QVERIFY(!s.mouse(QEvent::MouseButtonPress, QPoint(5, 5), Qt::RightButton));
        QVERIFY(!s.mouse(QEvent::MouseMove, QPoint(5, 60), Qt::NoButton) && s.isSteadyScroll());
        s.press(QPoint(5, 5));
        QVERIFY(!s.mouse(QEvent::MouseButtonRelease, QPoint(5, 5), Qt::MiddleButton));
        QVERIFY(s.release(QPoint(5, 5)) && s.isSteadyScroll() && s.stoppedCount == 0);
    }

    void dragFollowsTheFingerAndSamplesItsSpeed()
    {
        Scroller s;
        s.startAt(QPoint(0, 200), QPoint(0, 1000));
        s.setOffsetScale(1.5);
        s.press(QPoint(50, 300));
        s.move(QPoint(50, 280));  // starts the drag here
        s.advance(3);
        s.move(QPoint(55, 271));  // scaled, halves rounding up
        QCOMPARE(s.m_offset, QPoint(-8, 213));
        // A burst of touch events within 15 ms is not sampled.
        s.advance(12);
        s.move(QPoint(50, 260));
        QCOMPARE(s.speed(), QPoint(0, 0));
        QCOMPARE(s.estimateSpeed(QPoint(50, 250), false), QPoint(0, -30));
        // 16 ms: sampled over the whole time since the last sample: 1.5 * -30 * 15 / 16.
        s.advance(1);
        s.move(QPoint(50, 250));
        QCOMPARE(s.speed(), QPoint(0, -42));
        // The next sample is averaged with the last one.
        s.advance(30);
        s.move(QPoint(50, 230));
        QCOMPARE(s.speed(), QPoint(0, qRound((1.5 * -20 * 0.5 - 42) * 0.5)));
        // A release right on top of a late jump drops that jump.
        s.advance(3);
        s.move(QPoint(50, 100));
        s.advance(1);
        s.release(QPoint(50, 100));
        QCOMPARE(s.moves.last(), QPoint(0, 275));
        // Outside a drag there is no estimate unless forced.
        s.stopScrolling();
        QCOMPARE(s.estimateSpeed(QPoint(5, 5), false), QPoint(0, 0));
        QVERIFY(s.estimateSpeed(QPoint(5, 5), true) != QPoint(0, 0));
    }

    void flickCoastsAndComesToRest()
    {
        Scroller s;
        s.setMaxOffset(QPoint(0, 5000));
        // 20 px each 16 ms of 15 ms frames; finger upwards, so the speed is
        // negative and the offset grows.
        s.flick(QPoint(100, 900), QPoint(0, -20), 10);
        QVERIFY(s.isBeingAutoScrolled());
        QCOMPARE(s.speed(), QPoint(0, -19));
        const int start = s.m_offset.y();
        const QVector<int> offsets = s.runFrames();
        QVERIFY(s.isSteadyScroll());
        QCOMPARE(s.stoppedCount, 1);
        // Friction takes one pixel per frame off the speed until it is 0, then
        // the machine rests on the next frame.
        QCOMPARE(offsets.size(), 20);
        for (int i = 0; i < 19; ++i)
            QCOMPARE(offsets[i] - (i ? offsets[i - 1] : start), 18 - i);
        QCOMPARE(offsets.last(), offsets[18]);
        QVERIFY(s.getLastFrameRate() >= 1.0);

        // Towards the start, coasting stops on the -1 of "no target" and then settles on 0.
        Scroller t;
        t.startAt(QPoint(0, 200), QPoint(0, 5000));
        t.flick(QPoint(0, 300), QPoint(0, 20), 6);
        const QVector<int> back = t.runFrames();
        QCOMPARE(back.mid(back.size() - 2), (QVector<int>{-1, 0}));
        QCOMPARE(*std::min_element(back.begin(), back.end()), -1);
        QVERIFY(t.isSteadyScroll());
    }

    void overshootSpringsBackToTheEnd_data()
    {
        QTest::addColumn<int>("end");
        QTest::addColumn<int>("fingerDy");
        QTest::newRow("top") << 0 << 30;
        QTest::newRow("bottom") << 300 << -30;
    }
    void overshootSpringsBackToTheEnd()
    {
        QFETCH(int, end);
        QFETCH(int, fingerDy);
        Scroller s;
        s.startAt(QPoint(0, end), QPoint(0, 300));
        const QPoint at = s.drag(QPoint(0, 500), QPoint(0, fingerDy), 10);
        // The drag stops at the spring length past the end.
        int prev = end == 0 ? -100 : 400;
        QCOMPARE(s.m_offset.y(), prev);
        QVERIFY(s.isScrollingClipped());
        s.advance(40);
        s.release(at);
        const QVector<int> frames = s.runFrames();
        QCOMPARE(s.m_offset, QPoint(0, end));
        QVERIFY(s.stoppedCount == 1 && s.targetOffset() == NoTargetOffset);
        // Towards the end only, accelerating by at most 5 per frame, and slowing down near it.
        int prevStep = 0, maxStep = 0;
        for (int y : frames) {
            const int step = (y - prev) * (end == 0 ? 1 : -1);
            QVERIFY(step >= 0 && step - prevStep <= 5);
            maxStep = qMax(maxStep, step);
            prev = y;
            prevStep = step;
        }
        QVERIFY(maxStep > 5 && prevStep < maxStep && frames.size() < 40);

        // A flick past the end rides into the spring zone and comes back.
        Scroller f;
        f.setMaxOffset(QPoint(0, 150));
        f.flick(QPoint(0, 900), QPoint(0, -25), 6);
        const QVector<int> flicked = f.runFrames();
        const int furthest = *std::max_element(flicked.begin(), flicked.end());
        QVERIFY(furthest > 150 && furthest <= 250);
        QCOMPARE(f.m_offset, QPoint(0, 150));
    }

    void snapping_data()
    {
        QTest::addColumn<double>("momentum");
        QTest::addColumn<int>("fingerDx");
        QTest::addColumn<int>("page");  // paged: where it goes, straight there
        QTest::newRow("flick left") << 1.0 << -20 << 0;
        QTest::newRow("slow flick left") << 1.0 << -7 << 0;
        QTest::newRow("page left") << 0.0 << -15 << 450;
        QTest::newRow("page right") << 0.0 << 15 << 350;
    }
    void snapping()
    {
        QFETCH(double, momentum);
        QFETCH(int, fingerDx);
        QFETCH(int, page);
        Scroller s, free;
        for (Scroller* x : {&s, &free}) {
            x->horizontalOnly = true;
            x->setMomentumFactor(momentum);
            x->startAt(QPoint(400, 0), QPoint(100000, 0));
            x->setSnapGridSize(QSize(x == &s ? 50 : -1, 1));
            x->flick(QPoint(500, 0), QPoint(fingerDx, 0), 4, 20);
        }
        const QVector<int> frames = s.runFrames();
        QVERIFY(s.isSteadyScroll() && s.stoppedCount == 1 && s.m_offset.y() == 0);
        if (page) {
            QCOMPARE(s.m_offset.x(), page);
            for (int x : frames)
                QVERIFY(page > 400 ? x <= page : x >= page);
        } else {
            // The cell nearest to where the same flick coasts without a grid.
            free.runFrames();
            QCOMPARE(s.m_offset.x() % 50, 0);
            QVERIFY(qAbs(s.m_offset.x() - free.m_offset.x()) < 50);
        }
    }

    void nearestSnapOffset_data()
    {
        QTest::addColumn<QSize>("grid");
        QTest::addColumn<double>("momentum");
        QTest::addColumn<QPoint>("pos");
        QTest::addColumn<QPoint>("direction");
        QTest::addColumn<QPoint>("snap");
        const QSize g(100, 40);
        QTest::newRow("at rest: nearest cell") << g << 1.0 << QPoint(130, 61) << QPoint() << QPoint(100, 80);
        QTest::newRow("at rest: halves go up") << g << 1.0 << QPoint(150, 59) << QPoint() << QPoint(200, 40);
        // A positive speed lowers the offset, so the bias goes down.
        QTest::newRow("moving: biased down") << g << 1.0 << QPoint(180, 0) << QPoint(3, 0) << QPoint(100, 0);
        QTest::newRow("moving: biased up") << g << 1.0 << QPoint(110, 0) << QPoint(-3, 0) << QPoint(200, 0);
        QTest::newRow("sides below one count as one") << QSize(-1, 0) << 1.0 << QPoint(17, 23) << QPoint()
                                                      << QPoint(17, 23);
        // Paged: one cell on; the unused axis cleared.
        QTest::newRow("paged forward") << QSize(320, 1) << 0.0 << QPoint(330, 7) << QPoint(-1, 0) << QPoint(640, 0);
        QTest::newRow("paged back") << QSize(320, 1) << 0.0 << QPoint(330, 7) << QPoint(1, 0) << QPoint(0, 0);
    }
    void nearestSnapOffset()
    {
        QFETCH(QSize, grid);
        QFETCH(double, momentum);
        QFETCH(QPoint, pos);
        QFETCH(QPoint, direction);
        Scroller s;
        s.horizontalOnly = momentum == 0.0;
        s.setSnapGridSize(grid);
        s.setMomentumFactor(momentum);
        QTEST(s.nearestSnapOffset(pos, direction), "snap");
    }

    void pressesOnAMovingList_data()
    {
        QTest::addColumn<QSize>("grid");
        QTest::newRow("no grid") << QSize(-1, -1);
        QTest::newRow("grid") << QSize(1, 40);
    }
    void pressesOnAMovingList()
    {
        QFETCH(QSize, grid);
        Scroller s;
        s.setAcceptMouseClick(&s);
        s.setSnapGridSize(grid);
        s.setMaxOffset(QPoint(0, 5000));
        s.flick(QPoint(0, 900), QPoint(0, -20), 8);
        s.runFrames(3);
        const QPoint at = s.m_offset;
        // A press stops it at once...
        QVERIFY(s.press(QPoint(10, 300)));
        QCOMPARE(s.state(), int(KineticScroll::Stop));
        QVERIFY(!s.isSteadyScroll() && !s.isBeingScrolled());
        QCOMPARE(s.stoppedCount, 1);
        s.tick();  // a frame already queued does nothing now
        QCOMPARE(s.m_offset, at);
        // ...the release doesn't reach the items, and on a grid frames run once more.
        QVERIFY(s.release(QPoint(10, 300)));
        QCOMPARE(s.isBeingAutoScrolled(), grid.width() > 0);
        s.runFrames();
        QVERIFY(s.isSteadyScroll());
        QCoreApplication::processEvents();
        QVERIFY(s.clicks.isEmpty());
        // In Stop a move of one pixel starts the drag, without the threshold.
        s.setTargetOffset(QPoint(0, 2000), true, 0.0f, true);
        s.runFrames(3);
        s.press(QPoint(0, 300));
        QVERIFY(s.move(QPoint(0, 299)));
        QCOMPARE(s.state(), int(KineticScroll::ManualScroll));
        QCOMPARE(s.swipeDirection(), 1);
        QCOMPARE(s.cancelCount, 2);
    }

    void aTapIsReplayedAndPassesThrough()
    {
        Scroller s;
        s.QWidget::move(40, 60);
        s.setAcceptMouseClick(&s);
        QVERIFY(s.press(QPoint(45, 70)));
        QVERIFY(s.release(QPoint(46, 71)));
        QVERIFY(s.isSteadyScroll() && s.clicks.isEmpty());
        QCoreApplication::processEvents();
        // Both replayed events went through the machine untouched.
        QCOMPARE(s.clicks, (QList<QEvent::Type>{QEvent::MouseButtonPress, QEvent::MouseButtonRelease}));
        QVERIFY(s.press(QPoint(45, 70)));  // the next real press is handled again

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
        // Not animated: jumps, clipped; nothing was moving, so no stop is told.
        Scroller s;
        s.setMaxOffset(QPoint(200, 300));
        s.setTargetOffset(QPoint(500, -20), false, 0.0f, true);
        QVERIFY(s.m_offset == QPoint(200, 0) && s.stoppedCount == 0);

        // Animated: ramps up by 5 per frame, never past maxSpeed, and lands exactly.
        Scroller a;
        a.setMaxOffset(QPoint(0, 2000));
        a.setMaxSpeed(20);
        a.setTargetOffset(QPoint(0, 1000), true, 0.0f, false);
        QCOMPARE(a.targetOffset(), QPoint(0, 1000));
        const QVector<int> offsets = a.runFrames();
        QCOMPARE(offsets.mid(0, 4), (QVector<int>{5, 15, 30, 50}));
        for (int i = 1; i < offsets.size(); ++i)
            QVERIFY(offsets[i] >= offsets[i - 1] && offsets[i] - offsets[i - 1] <= 20);
        QCOMPARE(a.m_offset, QPoint(0, 1000));
        QCOMPARE(a.stoppedCount, 1);

        // An initial speed points at the target; a speed of 0 keeps the stored one.
        Scroller v;
        v.startAt(QPoint(0, 500), QPoint(0, 2000));
        v.setTargetOffset(QPoint(0, 100), true, 12.0f, true);
        QCOMPARE(v.speed(), QPoint(0, 12));
        v.setTargetOffset(QPoint(300, 900), true, 7.0f, false);
        QCOMPARE(v.speed(), QPoint(-7, -7));
        v.setTargetOffset(QPoint(0, 100), true, 0.0f, true);
        QCOMPARE(v.speed(), QPoint(-7, -7));
        // Step adds, the limit applies.
        v.setTargetOffset(QPoint(0, 1900), true, 500.0f, true);
        v.tick();
        QCOMPARE(v.speed(), QPoint(0, -32));
        QCOMPARE(v.m_offset, QPoint(0, 532));
        // A target at the offset leaves the speed alone and ends on the next frame.
        const QPoint here = v.m_offset;
        v.setTargetOffset(here, true, 4.0f, true);
        QCOMPARE(v.speed(), QPoint(0, -32));
        v.tick();
        QCOMPARE(v.m_offset, here);
        QCOMPARE(v.speed(), QPoint(0, 0));
        QVERIFY(v.isSteadyScroll());
    }

    void stoppingAndResetting()
    {
        Scroller s;
        s.stopScrolling();
        QVERIFY(s.stoppedCount == 0 && s.getLastFrameRate() == 0.0);
        // Without animation an animated request jumps and stopping reports the end.
        s.m_animated = false;
        s.setTargetOffset(QPoint(0, 120), true, 0.0f, true);
        QVERIFY(s.m_offset == QPoint(0, 120) && s.stoppedCount == 1 && s.isSteadyScroll());
        s.stopScrolling();
        QVERIFY(s.stoppedCount == 2 && s.getLastFrameRate() >= 1.0);

        Scroller f;
        f.setMaxOffset(QPoint(0, 1000));
        f.resetOffset(QPoint(0, 400));
        QVERIFY(f.moves.isEmpty());  // resetOffset moves nothing
        f.setTargetOffset(QPoint(0, 800), true, 0.0f, true);
        f.runFrames(2);
        f.reset();
        QVERIFY(f.isSteadyScroll() && f.getLastFrameRate() == 0.0);
        const int moves = f.moves.size();
        f.tick();
        QCOMPARE(f.moves.size(), moves);
        // The machine continues from the reset offset.
        f.setTargetOffset(QPoint(0, 10), true, 0.0f, true);
        QCOMPARE(f.runFrames().first(), 5);
        QCOMPARE(f.m_offset, QPoint(0, 10));
    }

    void clippingAndHostileSettingsStayBounded()
    {
        Scroller s;
        s.setMaxOffset(QPoint(50, 80));
        s.setScrollSpringLength(20);
        QVERIFY(s.clippedOffset(QPoint(10, 10)) == QPoint(10, 10) && !s.isScrollingClipped());
        QVERIFY(s.clippedOffset(QPoint(-30, 101)) == QPoint(-20, 100) && s.isScrollingClipped());
        // The default range reaches the integer limits without wrapping.
        Scroller h;
        QCOMPARE(h.clippedOffset(QPoint(INT_MAX, INT_MIN)), QPoint(INT_MAX, -100));

        h.setOffsetScale(1e300);
        h.setMaxSpeed(-5);
        h.setEaseOutLength(0);
        h.setEaseOutRate(std::nan(""));
        h.press(QPoint(INT_MAX, INT_MIN));
        h.move(QPoint(INT_MIN, INT_MAX));
        h.advance(20);
        h.move(QPoint(INT_MAX, INT_MIN));
        h.advance(20);
        h.release(QPoint(0, 0));
        h.runFrames(50);
        h.setTargetOffset(QPoint(INT_MAX, INT_MIN), true, 1e30f, false);
        h.runFrames(50);
        h.setOffsetScale(std::nan(""));
        h.setMomentumFactor(std::nan(""));
        h.flick(QPoint(0, 0), QPoint(0, 50), 1);
        h.runFrames(50);
        h.nearestSnapOffset(QPoint(INT_MAX, INT_MIN), QPoint(INT_MIN, INT_MAX));
        QCOMPARE(h.maxSpeed(), 32);  // the negative limit was refused
    }

    void framesArePacedByPainting()
    {
        struct Painted : Scroller {
            bool paints = true;
            int ticks = 0;
            QElapsedTimer since;
            qint64 secondAt = -1;
            void setScrollOffset(const QPoint& p) override
            {
                Scroller::setScrollOffset(p);
                if (++ticks == 2)
                    secondAt = since.elapsed();
                if (paints)  // the paint that follows the update
                    QTimer::singleShot(0, this, [this] { restartAutoScroll(5); });
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
        // ...until something does; a restart during a pending frame neither
        // shortens nor prolongs it.
        s.since.start();
        s.restartAutoScroll(150);
        s.restartAutoScroll(1);
        QTest::qWait(60);
        QCOMPARE(s.ticks, 1);
        s.restartAutoScroll(2000);
        QTRY_COMPARE_WITH_TIMEOUT(s.ticks, 2, 1500);
        QVERIFY2(s.secondAt >= 140 && s.secondAt < 1000, qPrintable(QString::number(s.secondAt)));
        s.paints = true;
        s.restartAutoScroll(5);
        QTRY_VERIFY_WITH_TIMEOUT(s.isSteadyScroll(), 5000);
        QCOMPARE(s.m_offset, QPoint(0, 0));
        const int ticks = s.ticks;
        s.restartAutoScroll(1);  // at rest: nothing
        QTest::qWait(30);
        QCOMPARE(s.ticks, ticks);
    }
};

QTEST_MAIN(TestKineticScroll)
#include "tst_kineticscroll.moc"
