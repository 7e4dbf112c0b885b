// A page view snapping between two pages of four tiles (a button with an icon
// and a label each), as the home screen does after a swipe: our CTavoPageView,
// its KineticScroll frames towards the page, against the nearest Qt form, a
// QScrollArea with a row of QPushButtons whose QScroller snaps to page
// positions. Both paint the 800x124 strip of tiles into an image each frame.
// Prints frames per second and heap allocations per frame while snapping.
#include <QAnimationDriver>
#include <QApplication>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QIcon>
#include <QImage>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QScroller>
#include <QScrollerProperties>
#include <QTemporaryDir>

#include <cstdio>

#include "BenchSupport.h"

#include "layout/CTavoLayoutWidget.h"
#include "style/CTavoIconRepository.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoPageView.h"

namespace {

const int kW = 800;
const int kH = 124;
const int kTiles = 8;
const int kSnaps = 40;  // page 1, page 0, ... counted after a warm-up pair
const int kIcon = 5;    // "Messages" of the icon table

const char* const kStyle =
    "CTavoLayoutWidget { size: 800x124; location: 0:0; }"
    "CTavoPageView { size: 800x124; location: 0:0; page-layout: 4x1; item-gap: 28; inter-page-gap: 66;"
    " dragging-momentum: 0; max-speed: 48; }"
    "CTavoButton { size: 148x124; background: rgb(44, 62, 88); border: 1px solid rgb(58, 78, 106);"
    " font: 16px DejaVu Sans; color: #ffffff; label-align: hcenter bottom; label-location: 0:84;"
    " label-size: 148x32; icon-location: 46:14; enable-icon-alignment: false; }"
    "CTavoIcon { size: 56x56; }";

QString tileText(int i)
{
    static const char* const names[] = {"Messages", "Contacts", "Call history", "Settings",
                                        "Dial", "Calendar", "Apps", "Features"};
    return QString::fromLatin1(names[i % kTiles]);
}

class FrameDriver : public QAnimationDriver
{
public:
    FrameDriver() { m_clock.start(); }
    qint64 elapsed() const override { return m_clock.elapsed(); }

private:
    QElapsedTimer m_clock;
};

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const QFont font = benchFont(16);

    QTemporaryDir dir;
    QImage picture(56, 56, QImage::Format_ARGB32);
    picture.fill(QColor(120, 200, 255));
    const QString iconFile = dir.path() + QStringLiteral("/Messages.png");
    picture.save(iconFile, "PNG");
    iconRepository.setIconPath(dir.path() + QStringLiteral("/"));
    iconRepository.clear();
    const QIcon qicon(iconFile);

    // Ours: the tiles in a page view on a surface that is not shown.
    CTavoLayoutWidget surface;
    QByteArray style(kStyle);
    QByteArray attributes;
    surface.updateStyle(style.data(), attributes.data(), true);
    CTavoPageView* pages = new CTavoPageView(&surface);
    pages->layout();
    for (int i = 0; i < kTiles; ++i) {
        CTavoButton* tile = new CTavoButton(&surface);
        TavoButtonSettings settings;
        settings.set(QString(), tileText(i), QStringLiteral("bench:%1").arg(i), QString(), QString(),
                     CTavoIconDefinition(QString(), QString(), kIcon), QString(), i);
        tile->init(&settings);
        pages->append(tile);
    }
    pages->format(Qt::Horizontal, -1);

    QImage ours(kW, kH, QImage::Format_RGB32);
    QPainter painter(&ours);
    painter.setClipRect(ours.rect());  // as a surface repaints the view
    // Allocations are counted in the frames, not in starting a snap (which
    // registers the frame timer once).
    long long ourFrameAllocations = 0;
    auto ourSnap = [&](int page) {
        pages->scrollToPage(page, true);
        int frames = 0;
        const long long start = g_allocations.load();
        while (pages->isBeingScrolled()) {
            pages->tick();
            painter.fillRect(ours.rect(), QColor(20, 30, 40));
            pages->paint(&painter, ours.rect());
            ++frames;
        }
        ourFrameAllocations += g_allocations.load() - start;
        return frames;
    };
    ourSnap(1);
    ourSnap(0);
    int ourFrames = 0;
    ourFrameAllocations = 0;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < kSnaps; ++i)
        ourFrames += ourSnap(i % 2 == 0 ? 1 : 0);
    const double ourFps = ourFrames * 1e9 / double(timer.nsecsElapsed());
    const double ourAllocations = double(ourFrameAllocations) / qMax(1, ourFrames);
    painter.end();

    // Theirs: a scroll area with the same row of buttons, snapping by QScroller.
    FrameDriver driver;
    driver.install();
    QScrollArea area;
    area.resize(kW, kH);
    area.setFrameShape(QFrame::NoFrame);
    area.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QWidget* strip = new QWidget;
    strip->setStyleSheet(QStringLiteral("background: rgb(20, 30, 40);"));
    strip->setFixedSize(2 * kW, kH);
    for (int i = 0; i < kTiles; ++i) {
        QPushButton* button = new QPushButton(qicon, tileText(i), strip);
        button->setIconSize(QSize(56, 56));
        button->setFont(font);
        button->setGeometry((i / 4) * kW + 66 + (i % 4) * 176, 0, 148, 124);
    }
    area.setWidget(strip);
    area.ensurePolished();
    QScroller* scroller = QScroller::scroller(area.viewport());
    scroller->setSnapPositionsX({0.0, double(kW)});
    QImage theirs(kW, kH, QImage::Format_RGB32);
    long long theirFrameAllocations = 0;
    auto theirSnap = [&](int page) {
        scroller->scrollTo(QPointF(page * kW, 0), 400);
        int frames = 0;
        const long long start = g_allocations.load();
        while (scroller->state() != QScroller::Inactive && frames < 100000) {
            driver.advance();
            QCoreApplication::processEvents();
            area.viewport()->render(&theirs);
            ++frames;
        }
        theirFrameAllocations += g_allocations.load() - start;
        return frames;
    };
    theirSnap(1);
    theirSnap(0);
    int theirFrames = 0;
    theirFrameAllocations = 0;
    timer.restart();
    for (int i = 0; i < kSnaps; ++i)
        theirFrames += theirSnap(i % 2 == 0 ? 1 : 0);
    const double theirFps = theirFrames * 1e9 / double(timer.nsecsElapsed());
    const double theirAllocations = double(theirFrameAllocations) / qMax(1, theirFrames);
    driver.uninstall();

#ifdef BENCH_NO_MALLOC_HOOKS
    const bool counted = false;
#else
    const bool counted = true;
#endif
    std::printf("bench_pageview: %d tiles in pages of 4 on %dx%d, %d snaps between two pages\n", kTiles, kW, kH,
                kSnaps);
    std::printf("%-34s %14s %14s\n", "", "CTavoPageView", "QScrollArea");
    std::printf("%-34s %14.0f %14.0f   (x%.2f)\n", "frames per second while snapping", ourFps, theirFps,
                ourFps / theirFps);
    std::printf("%-34s %14d %14d\n", "frames of all snaps", ourFrames, theirFrames);
    if (counted)
        std::printf("%-34s %14.2f %14.2f\n", "heap allocations per frame", ourAllocations, theirAllocations);
    else
        std::printf("%-34s %14s %14s\n", "heap allocations per frame", "n/a", "n/a");
    std::printf("target: 0 allocations per frame while snapping\n");
    return 0;
}
