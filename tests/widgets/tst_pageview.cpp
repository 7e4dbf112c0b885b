// The page view on a real surface: pages of columns by rows, swipes that snap
// page by page with real mouse events and the real frame timer, programmatic
// paging, the scroll bar's controls, keys across a grid, and skins that say
// little or nonsense.
#include <QSignalSpy>
#include <QtTest>

#include "TextTestSupport.h"
#include "ViewTestSupport.h"
#include "widgets/CTavoPageView.h"

using namespace ViewTest;

namespace {

class ProbePage : public CTavoPageView
{
public:
    using CTavoPageView::CTavoPageView;
    int state() const { return d->state; }
};

// A viewport of 400x100 at (0,50) on a surface of 400x200; tiles of 80x60.
struct Pages
{
    CTavoLayoutWidget widget;
    ProbePage* view;
    QVector<CTavoWidget*> tiles;
    QList<QPair<int, int>> changes;

    explicit Pages(const QByteArray& style, int count = 8, int focus = -1,
                   Qt::Orientation orientation = Qt::Horizontal)
    {
        view = new ProbePage(&widget);
        QByteArray text = "CTavoLayoutWidget { size: 400x200; location: 0:0; background: #ffffff; }"
                          " CTavoPageView { size: 400x100; location: 0:50; item-gap: 10; inter-page-gap: 20; " +
                          style +
                          " }"
                          " CTavoScrollBar { size: 400x6; location: 0:170; bar-background: #ff0000; }"
                          " CTavoWidget#tile { size: 80x60; background: #0000ff; background-focused: #00ff00; }";
        QByteArray attributes;
        widget.updateStyle(text.data(), attributes.data(), true);
        QObject::connect(view, &CTavoPageView::pageChanged, [this](int page, int pages) { changes << qMakePair(page, pages); });
        for (int i = 0; i < count; ++i) {
            auto* tile = new CTavoWidget(&widget, 2);
            tile->setObjectName("tile");
            tile->layout();
            view->append(tile);
            tiles << tile;
        }
        view->format(orientation, focus);
        widget.show();
    }
    void mouse(QEvent::Type type, const QPoint& at)
    {
        QMouseEvent event(type, at, widget.mapToGlobal(at), type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &event);
    }
    void swipe(QPoint from, const QPoint& step, int steps, int ms = 16)
    {
        mouse(QEvent::MouseButtonPress, from);
        for (int i = 0; i < steps; ++i) {
            QTest::qWait(ms);
            mouse(QEvent::MouseMove, from += step);
        }
        mouse(QEvent::MouseButtonRelease, from);
    }
    bool settle() { return QTest::qWaitFor([this] { return !view->isBeingScrolled(); }, 4000); }
};

} // namespace

class TestPageView : public QObject
{
    Q_OBJECT

private slots:
    void formatLaysOutPages_data()
    {
        QTest::addColumn<QByteArray>("style");
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("focus");
        QTest::addColumn<int>("pages");
        QTest::addColumn<int>("page");
        QTest::addColumn<QPoint>("second");  // tile 1
        QTest::addColumn<QPoint>("fifth");   // tile 4
        QTest::addColumn<int>("offset");
        QTest::newRow("4x1") << QByteArray("page-layout: 4x1;") << 8 << -1 << 2 << 0 << QPoint(110, 50)
                             << QPoint(420, 50) << 0;
        QTest::newRow("2x2 with a gap between rows") << QByteArray("page-layout: 2x2; vertical-gap: 5;") << 6 << -1
                                                     << 2 << 0 << QPoint(110, 50) << QPoint(420, 50) << 0;
        QTest::newRow("no page-layout: one a page") << QByteArray() << 5 << -1 << 5 << 0 << QPoint(420, 50)
                                                    << QPoint(1620, 50) << 0;
        QTest::newRow("0x0 reads as 1x1") << QByteArray("page-layout: 0x0;") << 5 << -1 << 5 << 0
                                          << QPoint(420, 50) << QPoint(1620, 50) << 0;
        QTest::newRow("max-pages 2 of 3") << QByteArray("page-layout: 4x1; max-pages: 2;") << 12 << -1 << 2 << 0
                                          << QPoint(110, 50) << QPoint(420, 50) << 0;
        QTest::newRow("focus on the second page starts there") << QByteArray("page-layout: 4x1;") << 8 << 5 << 2 << 1
                                                               << QPoint(110, 50) << QPoint(420, 50) << 400;
        QTest::newRow("focus past max-pages: the last allowed") << QByteArray("page-layout: 4x1; max-pages: 2;") << 12
                                                                << 9 << 2 << 1 << QPoint(110, 50) << QPoint(420, 50)
                                                                << 400;
        QTest::newRow("between-page-gap widens a page") << QByteArray("page-layout: 4x1; between-page-gap: 40;") << 8
                                                        << 5 << 2 << 1 << QPoint(110, 50) << QPoint(460, 50) << 440;
        QTest::newRow("exactly one page") << QByteArray("page-layout: 4x1;") << 4 << -1 << 1 << 0 << QPoint(110, 50)
                                          << QPoint(290, 50) << 0;
        QTest::newRow("centred") << QByteArray("page-layout: 4x1; align-hcenter: true;") << 5 << -1 << 2 << 0
                                 << QPoint(115, 50) << QPoint(425, 50) << 0;
        QTest::newRow("auto-scaled to the width") << QByteArray("page-layout: 2x1; auto-scale-formatted-widgets: true;")
                                                  << 4 << -1 << 1 << 0 << QPoint(130, 50) << QPoint(-1, -1) << 0;
    }
    void formatLaysOutPages()
    {
        QFETCH(QByteArray, style);
        QFETCH(int, count);
        QFETCH(int, focus);
        QFETCH(int, pages);
        QFETCH(int, page);
        Pages p(style, count, focus);
        QCOMPARE(p.view->pageCount(), pages);
        QCOMPARE(p.view->currentPage(), page);
        QVERIFY(!p.changes.isEmpty());
        QCOMPARE(p.changes.first(), qMakePair(page, pages));
        QCOMPARE(p.changes.last(), qMakePair(page, pages));
        QTEST(p.tiles[1]->topLeft(), "second");
        if (count > 4)
            QTEST(p.tiles[4]->topLeft(), "fifth");
        QTEST(p.view->scrollOffset().x(), "offset");
        if (focus >= 0)
            QCOMPARE(p.view->focusedIndex(), focus);
        // A bar only where there is more than one page.
        QCOMPARE(p.view->scrollBar()->isVisible(), pages > 1);
        if (QTest::currentDataTag() == QByteArray("2x2 with a gap between rows"))
            QCOMPARE(p.tiles[3]->topLeft(), QPoint(110, 115));
        if (QTest::currentDataTag() == QByteArray("auto-scaled to the width"))
            QCOMPARE(p.tiles[0]->width(), 100);
        if (QTest::currentDataTag() == QByteArray("max-pages 2 of 3")) {
            // The third page can't be reached.
            p.view->scrollToPage(2, false);
            QCOMPARE(p.view->currentPage(), 0);
            p.view->scrollToNextPage(5, false);
            QCOMPARE(p.view->scrollOffset().x(), 0);
        }
    }

    void swipesSnapPageByPage()
    {
        Pages p("page-layout: 4x1; dragging-momentum: 0;");
        QSignalSpy stopped(p.view, &CTavoView::scrollingStopped);
        p.swipe(QPoint(300, 80), QPoint(-30, 0), 4);
        QVERIFY(p.settle());
        QCOMPARE(p.view->scrollOffset().x(), 400);
        QCOMPARE(p.view->currentPage(), 1);
        QCOMPARE(p.changes.last(), qMakePair(1, 2));
        QVERIFY(p.view->scrollBar()->isVisible());
        QVERIFY(QTest::qWaitFor([&] { return p.view->scrollBar()->barRect().left() == 200; }, 1000));
        // Painted where the page shows it: the fifth tile at the left.
        QCOMPARE(p.widget.grab().toImage().pixel(60, 80), kBlue);
        // A short swipe still turns a page when paging; the last page stays.
        p.swipe(QPoint(300, 80), QPoint(-6, 0), 3);
        QVERIFY(p.settle());
        QCOMPARE(p.view->scrollOffset().x(), 400);
        p.swipe(QPoint(100, 80), QPoint(30, 0), 4);
        QVERIFY(p.settle());
        QCOMPARE(p.view->scrollOffset().x(), 0);
        QCOMPARE(p.view->currentPage(), 0);
    }

    void restsOnTheNearestPage()
    {
        // Wherever a movement ends, the view settles on the nearest page, by qRound.
        Pages p("page-layout: 4x1;");
        p.view->setScrollOffsetAndState(QPoint(150, 0));
        p.view->onScrollingStopped();
        QVERIFY(p.settle());
        QCOMPARE(p.view->scrollOffset().x(), 0);
        QCOMPARE(p.changes.last(), qMakePair(0, 2));
        p.view->setScrollOffsetAndState(QPoint(250, 0));
        p.view->onScrollingStopped();
        QVERIFY(p.settle());
        QCOMPARE(p.view->scrollOffset().x(), 400);
        QCOMPARE(p.changes.last(), qMakePair(1, 2));
        // A held tile is let go when the movement ends.
        p.mouse(QEvent::MouseButtonPress, QPoint(100, 80));
        p.view->onScrollingStopped();
        QVERIFY(!p.view->pressedItem());
        p.mouse(QEvent::MouseButtonRelease, QPoint(100, 80));
    }

    void scrollToPageAndNext()
    {
        Pages p("page-layout: 2x1;", 6);
        QCOMPARE(p.view->pageCount(), 3);
        p.changes.clear();
        p.view->scrollToPage(2, true);
        QCOMPARE(p.changes.first(), qMakePair(2, 3));
        QVERIFY(p.view->isBeingScrolled());
        QVERIFY(p.settle());
        QCOMPARE(p.view->scrollOffset().x(), 800);
        QCOMPARE(p.view->currentPage(), 2);
        p.view->scrollToNextPage(-1, false);
        QCOMPARE(p.view->scrollOffset().x(), 400);
        QVERIFY(!p.view->isProgrammaticScroll());
        QVERIFY(p.view->scrollBar()->isVisible());  // hidden for the move, back after the jump
        // Out of range: only the bar is refreshed.
        p.view->scrollBar()->Hide(false);
        p.changes.clear();
        p.view->scrollToPage(3, true);
        p.view->scrollToPage(-1, true);
        QVERIFY(p.changes.isEmpty() && !p.view->isBeingScrolled());
        QCOMPARE(p.view->scrollOffset().x(), 400);
        QVERIFY(p.view->scrollBar()->isVisible());
        // Without auto scroll every move is a jump.
        Pages jumpy("page-layout: 2x1; enable-auto-scroll: false;", 6);
        jumpy.view->scrollToPage(1, true);
        QVERIFY(!jumpy.view->isBeingScrolled());
        QCOMPARE(jumpy.view->scrollOffset().x(), 400);
        QVERIFY(!jumpy.view->enableAutoScroll());
    }

    void scrollControlTurnsBackTwiceForOneTap()
    {
        Pages p("page-layout: 2x1; enable-auto-scroll: false;", 6, 4);
        QCOMPARE(p.view->currentPage(), 2);
        // Control 0 turns forward on its release only.
        p.view->onScrollControlled(QEvent::KeyPress, CTavoScrollBar::ScrollTenthForward);
        QCOMPARE(p.view->currentPage(), 2);
        // Control 1, as the bar's toggle sends it: back on the press and back again on the release.
        p.view->scrollBar()->handleItemToggleEvent(QEvent::MouseButtonPress, QPoint(10, 172));
        QCOMPARE(p.view->currentPage(), 1);
        p.view->scrollBar()->handleItemToggleEvent(QEvent::MouseButtonRelease, QPoint(10, 172));
        QCOMPARE(p.view->currentPage(), 0);
        QCOMPARE(p.view->scrollOffset().x(), 0);
        p.view->onScrollControlled(QEvent::KeyRelease, CTavoScrollBar::ScrollTenthForward);
        QCOMPARE(p.view->currentPage(), 1);
        p.view->onScrollControlled(QEvent::KeyPress, CTavoScrollBar::ScrollHalfForward);
        QCOMPARE(p.view->currentPage(), 1);
    }

    void keysWalkTheGrid_data()
    {
        QTest::addColumn<int>("orientation");
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("delta");
        // 2x2 pages of 7 items: the last is 6.
        QTest::newRow("right") << int(Qt::Horizontal) << 2 << int(Qt::Key_Right) << 1;
        QTest::newRow("up a row") << int(Qt::Horizontal) << 3 << int(Qt::Key_Up) << -2;
        QTest::newRow("up only to the first") << int(Qt::Horizontal) << 1 << int(Qt::Key_Up) << -1;
        QTest::newRow("up from the first") << int(Qt::Horizontal) << 0 << int(Qt::Key_Up) << -2;
        QTest::newRow("down only to the last") << int(Qt::Horizontal) << 5 << int(Qt::Key_Down) << 1;
        QTest::newRow("down from the last") << int(Qt::Horizontal) << 6 << int(Qt::Key_Down) << 2;
        QTest::newRow("vertical: left a column") << int(Qt::Vertical) << 3 << int(Qt::Key_Left) << -2;
        QTest::newRow("vertical: down") << int(Qt::Vertical) << 3 << int(Qt::Key_Down) << 1;
        QTest::newRow("other keys") << int(Qt::Horizontal) << 3 << int(Qt::Key_5) << 0;
    }
    void keysWalkTheGrid()
    {
        QFETCH(int, orientation);
        QFETCH(int, from);
        QFETCH(int, key);
        Pages p("page-layout: 2x2;", 7, from, Qt::Orientation(orientation));
        QTEST(p.view->determineNextItemDelta(key), "delta");
    }

    void ensureVisibleGoesToTheItemsPage()
    {
        Pages p("page-layout: 4x1;", 8);
        p.view->ensureVisible(p.tiles[6]);
        QVERIFY(p.settle());
        QCOMPARE(p.view->scrollOffset().x(), 400);
        QCOMPARE(p.view->currentPage(), 1);
        p.view->ensureVisible(p.tiles[5]);  // already in view
        p.view->ensureVisible(p.tiles[1]);
        QVERIFY(p.settle());
        QCOMPARE(p.view->scrollOffset().x(), 0);
        p.view->ensureVisible(nullptr);
        QCOMPARE(p.view->scrollOffset().x(), 0);
    }
};

TAVO_TEXT_TEST_MAIN(TestPageView)
#include "tst_pageview.moc"
