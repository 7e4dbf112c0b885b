// Cost of one frame of finger scrolling and the heap allocations it makes.
//
// Allocations are counted by interposing malloc and friends for the whole
// process (Qt's included), so a figure covers everything the step touches.
// Figures, side by side:
//   - tick(): the frame step alone, coasting, approaching a target and
//     springing back;
//   - a frame through the event loop: our paint-paced ticker against the
//     plain alternative, a single-shot QTimer restarted by every paint.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QMouseEvent>
#include <QTimer>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "widgets/KineticScroll.h"

#include "BenchSupport.h"

namespace {

long allocs()
{
    return g_allocations.load(std::memory_order_relaxed);
}

class Owner : public KineticScroll
{
public:
    QPoint m_offset;
    int paints = 0;
    int repaintMsec = -1;  // >= 0: "paint" at once and re-arm the next frame
    int clockMs = -1;      // >= 0: a clock advanced by hand

    QPoint scrollOffset() const override { return m_offset; }
    void setScrollOffset(const QPoint& p) override
    {
        m_offset = p;
        if (repaintMsec >= 0) {
            ++paints;
            restartAutoScroll(repaintMsec);
        }
    }
    void zeroUnusedComponent(QPoint& p) override { p.setX(0); }
    QTime currentTime() const override
    {
        return clockMs >= 0 ? QTime::fromMSecsSinceStartOfDay(clockMs)
                            : KineticScroll::currentTime();
    }
    void finger(QEvent::Type type, int y)
    {
        const Qt::MouseButton b = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        const Qt::MouseButtons bs =
            type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent e(type, QPoint(0, y), QPoint(0, y), b, bs, Qt::NoModifier);
        if (type == QEvent::MouseButtonPress)
            handleMousePress(&e);
        else if (type == QEvent::MouseMove)
            handleMouseMove(&e);
        else
            handleMouseRelease(&e);
    }
};

struct Figure {
    long frames = 0;
    long allocations = 0;
    double nsPerFrame = 0.0;
};

// Repeated movements driven by calling tick() directly; the movement start
// (which arms the timer) is outside the measured span.
template <typename Start>
Figure tickLoop(Owner& o, long movements, Start start)
{
    Figure f;
    QElapsedTimer t;
    qint64 ns = 0;
    for (long m = 0; m < movements; ++m) {
        start(o);
        const long a0 = allocs();
        t.start();
        while (o.isBeingAutoScrolled()) {
            o.tick();
            ++f.frames;
        }
        ns += t.nsecsElapsed();
        f.allocations += allocs() - a0;
    }
    f.nsPerFrame = double(ns) / qMax(1L, f.frames);
    return f;
}

void print(const char* what, const Figure& f, const char* note = "")
{
    std::printf("  %-52s %9ld frames  %8.4f allocs/frame  %8.1f ns/frame %s\n", what, f.frames,
                double(f.allocations) / qMax(1L, f.frames), f.nsPerFrame, note);
}

// The plain alternative: a single-shot QTimer restarted by each paint.
class SingleShotPacer : public QObject
{
public:
    QTimer timer;
    long frames = 0;
    long limit = 0;
    QEventLoop* loop = nullptr;
    SingleShotPacer()
    {
        timer.setSingleShot(true);
        QObject::connect(&timer, &QTimer::timeout, [this] {
            if (++frames >= limit)
                loop->quit();
            else
                timer.start(1);  // what the paint would do
        });
    }
};

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    std::printf("bench_kinetic: finger scrolling frames\n\n");

    std::printf("tick(), the frame step alone:\n");
    {
        Owner o;
        // Warm up once so lazily built Qt state is not counted.
        tickLoop(o, 10, [](Owner& x) {
            x.resetOffset(QPoint(0, 0));
            x.m_offset = QPoint(0, 0);
            x.setMaxOffset(QPoint(0, 1 << 30));
            x.setTargetOffset(QPoint(0, 50000), true, 0.0f, false);
        });
        Figure target = tickLoop(o, 200, [](Owner& x) {
            x.reset();
            x.m_offset = QPoint(0, 0);
            x.setMaxOffset(QPoint(0, 1 << 30));
            x.setTargetOffset(QPoint(0, 200000), true, 0.0f, false);
        });
        print("approach to a target 200000 px away", target);

        Figure coast = tickLoop(o, 20000, [](Owner& x) {
            x.reset();
            x.setMaxOffset(QPoint(0, 1 << 30));
            x.m_offset = QPoint(0, 100000);
            x.resetOffset(x.m_offset);
            // A fast flick upwards: released at full speed, no target.
            x.clockMs = 1000;
            x.finger(QEvent::MouseButtonPress, 900);
            x.finger(QEvent::MouseMove, 880);
            x.clockMs += 16;
            x.finger(QEvent::MouseMove, 580);
            x.clockMs += 16;
            x.finger(QEvent::MouseButtonRelease, 280);
        });
        print("flick coasting to rest (incl. the stop)", coast);

        Figure spring = tickLoop(o, 20000, [](Owner& x) {
            x.reset();
            x.setMaxOffset(QPoint(0, 1000));
            x.m_offset = QPoint(0, -100);
            x.resetOffset(x.m_offset);
            x.setTargetOffset(QPoint(0, 0), true, 0.0f, true);
        });
        print("spring back from 100 px past the end", spring);
    }

    std::printf("\none frame through the event loop (timer, tick, immediate re-arm):\n");
    const long kFrames = 5000;
    {
        Owner o;
        o.repaintMsec = 1;
        o.setMaxOffset(QPoint(0, 1 << 30));
        o.setMaxSpeed(1);
        // Warm-up movement.
        o.setTargetOffset(QPoint(0, 100), true, 0.0f, false);
        while (!o.isSteadyScroll())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        o.resetOffset(o.m_offset);
        o.setTargetOffset(QPoint(0, 100 + kFrames + 100), true, 0.0f, false);
        // Let the first frames (interval 0, then the paint interval) pass.
        while (o.paints < 120)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        const int p0 = o.paints;
        const long a0 = allocs();
        QElapsedTimer t;
        t.start();
        while (o.paints - p0 < kFrames)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        Figure f;
        f.frames = o.paints - p0;
        f.allocations = allocs() - a0;
        f.nsPerFrame = double(t.nsecsElapsed()) / f.frames;
        print("KineticScrollTicker (registered between frames)", f, "(1 ms frames)");
        o.stopScrolling();
    }
    {
        SingleShotPacer pacer;
        QEventLoop loop;
        pacer.loop = &loop;
        pacer.limit = 120;
        pacer.timer.start(0);
        loop.exec();
        pacer.frames = 0;
        pacer.limit = kFrames;
        const long a0 = allocs();
        QElapsedTimer t;
        t.start();
        pacer.timer.start(1);
        loop.exec();
        Figure f;
        f.frames = pacer.frames;
        f.allocations = allocs() - a0;
        f.nsPerFrame = double(t.nsecsElapsed()) / f.frames;
        print("alternative: single-shot QTimer restarted per frame", f, "(1 ms frames)");
    }
    std::printf("\n(ns/frame through the event loop is dominated by the 1 ms timer interval)\n");
    return 0;
}
