// The view on a real surface: its item list, stacking and scroll range, lazy
// rows built on request and painted scrolled, finger flings with real mouse
// events and the real frame timer, key focus and paging, presses, holds and
// pane drags, mapping with a viewport smaller than its host, and bad input.
#include <QDomElement>
#include <QPainter>
#include <QPointer>
#include <QSignalSpy>
#include <QtTest>

#include "TextTestSupport.h"
#include "ViewTestSupport.h"
#include "widgets/CTavoButton.h"
#include "tools/TavoToolFlags.h"

using namespace ViewTest;

namespace {

// Twenty rows of 40 pixels in the view: content 800 in a viewport of 300.
struct List : Surface
{
    QVector<CTavoWidget*> rows;
    explicit List(const QByteArray& viewStyle = QByteArray(), int count = 20, bool show = true)
    {
        style(sheet(viewStyle));
        for (int i = 0; i < count; ++i) {
            rows << row(i);
            view->append(rows.last());
        }
        view->format(Qt::Vertical, QSize(-1, -1), -1, true);
        if (show)
            widget.show();
    }
};

// Buttons as rows: a click sends "row:N", a hold "hold:N".
struct ButtonList : Surface
{
    QVector<CTavoButton*> buttons;
    QStringList clicks;
    explicit ButtonList(const QByteArray& viewStyle = QByteArray(), bool longPress = false)
    {
        style(sheet(viewStyle, "CTavoButton { size: 200x40; background: #0000ff; background-focused: #00ff00; "
                               "label-color: #ffffff; font: 14px DejaVu Sans; }"));
        for (int i = 0; i < 20; ++i) {
            TavoButtonSettings s;
            s.set("row", QString("Row %1").arg(i), QString("row:%1").arg(i), QString("hold:%1").arg(i), QString(),
                  CTavoIconDefinition(), QString(), i);
            s.m_longPress = longPress;
            auto* b = new CTavoButton(&s, &widget);
            QObject::connect(b, &CTavoButton::buttonClicked, [this](QString url, QString) {
                if (!url.isEmpty())
                    clicks << url;
            });
            view->append(b);
            buttons << b;
        }
        view->format(Qt::Vertical, QSize(-1, -1), 0, true);
        widget.show();
    }
};

} // namespace

class TestView : public QObject
{
    Q_OBJECT

private slots:
    void itemListOperations()
    {
        List l(QByteArray(), 4, false);
        CTavoView& v = *l.view;
        CTavoWidget* extra = l.row(9);
        v.insert(1, extra);
        QCOMPARE(v.indexOf(extra), 1);
        QCOMPARE(v.itemAt(2), l.rows[1]);
        QVERIFY(!v.itemAt(5) && !v.itemAt(-1) && v.indexOf(nullptr) == -1);
        // Out of range: an insert appends, a replace and a take do nothing.
        v.insert(99, nullptr);
        QCOMPARE(v.count(), 6);
        v.replace(6, extra);
        QVERIFY(!v.takeAt(6) && !v.takeAt(-1));
        QVERIFY(!v.takeAt(5));  // the null entry
        v.replace(1, l.rows[3]);
        QCOMPARE(v.itemAt(1), l.rows[3]);
        QCOMPARE(CTavoView::holderOf(extra), nullptr);
        QCOMPARE(CTavoView::holderOf(l.rows[3]), &v);
        v.replace(1, extra);
        // Taking the focused item moves the focus to the one before.
        v.setFocusedItem(2, true);
        QCOMPARE(v.takeAt(2), l.rows[1]);
        QCOMPARE(v.focusedIndex(), 1);
        QVERIFY(!v.focussedItem()->isFocused() || v.focussedItem() == extra);
        // Visible counts skip hidden entries.
        v.hideFrom(2);
        QCOMPARE(v.getNumOfVisibleItems(), 2);
        QVERIFY(v.areAnyItemsVisible());
        v.hideFrom(-3);
        QVERIFY(!v.areAnyItemsVisible() && v.getNumOfVisibleItems() == 0);
        // takeAll keeps the items, clear deletes them later; a deleted item leaves a null entry.
        QPointer<CTavoWidget> kept(extra);
        v.takeAll();
        QVERIFY(v.count() == 0 && v.focusedIndex() == -1 && kept && !CTavoView::holderOf(extra));
        v.append(extra);
        v.append(l.rows[0]);
        delete l.rows[0];
        QCOMPARE(v.itemAt(1), nullptr);
        v.clear();
        QVERIFY(kept && v.count() == 0);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!kept);
    }

    void formatStacksItemsAndSetsTheScrollRange()
    {
        List l("item-gap: 4; bottom-space: 20;");
        CTavoView& v = *l.view;
        QCOMPARE(l.rows[0]->topLeft(), QPoint(0, 0));
        QCOMPARE(l.rows[2]->topLeft(), QPoint(0, 88));
        // The gap after the last row counts; the bottom space adds to the range only.
        QCOMPARE(v.contentSize(), QSize(200, 880));
        QCOMPARE(v.scrollBar()->contentSize(), 900);
        QCOMPARE(v.maxOffset().y(), 600);
        QVERIFY(v.isScrollable() && v.scrollBar()->isVisible());
        QCOMPARE(v.scrollSpringLength(), 150);
        // Hidden rows take no place.
        l.rows[1]->setVisible(false);
        v.format(Qt::Vertical);
        QCOMPARE(l.rows[2]->top(), 44);
        // A given size leaves the rows where they are.
        l.rows[2]->move(0, 500);
        v.format(Qt::Vertical, QSize(200, 1000));
        QVERIFY(l.rows[2]->top() == 500 && v.contentSize() == QSize(200, 1000));
        // Side by side.
        v.format(Qt::Horizontal);
        QCOMPARE(l.rows[3]->topLeft(), QPoint(2 * 204, 0));
        QCOMPARE(v.contentSize(), QSize(19 * 204, 40));
        QCOMPARE(v.maxOffset().x(), 19 * 204 - 200);
        // Short content: not scrollable, the y range saturates instead of wrapping.
        List shortList(QByteArray(), 3);
        QVERIFY(!shortList.view->isScrollable() && !shortList.view->scrollBar()->isVisible());
        QCOMPARE(shortList.view->maxOffset().y(), INT_MAX);
        shortList.view->setScrollOffset(QPoint(0, 50));
        QCOMPARE(shortList.view->scrollOffset(), QPoint(0, 0));
        // An empty view, and a content size of zero, scroll nowhere.
        List empty(QByteArray(), 0);
        empty.view->setContentSize(QSize(0, 0));
        QVERIFY(!empty.view->isScrollable());
        empty.view->keyPressEvent(nullptr);
    }

    void rowsAreBuiltWhenTheyComeIntoViewAndPaintedScrolled()
    {
        Surface s;
        s.style(sheet(QByteArray()));
        QVector<CTavoObject*> placeholders;
        for (int i = 0; i < 100; ++i) {
            auto* p = new CTavoObject(&s.widget, QRect(0, 0, 200, 40));
            p->setVisible(true);
            s.view->append(p);
            placeholders << p;
        }
        s.view->format(Qt::Vertical, QSize(-1, -1), -1, true);
        QSet<int> built;
        connect(s.view, &CTavoView::requestInitialization, this, [&](CTavoObject* item) {
            const int index = s.view->indexOf(item);
            CTavoWidget* row = s.row(index);
            row->move(item->left(), item->top());
            s.view->replace(index, row);
            item->deleteLater();
            built << index;
            // The surface's list of children grows while it is being painted.
            for (int k = 0; k < 16; ++k)
                new QObject(&s.widget);
        });
        s.widget.show();
        // The first paint asks for what is in view and paints it the next time.
        QCOMPARE(s.shot().pixel(100, 20), kWhite);
        QCOMPARE(built.size(), 8);
        QImage shot = s.shot();
        QCOMPARE(shot.pixel(100, 20), kBlue);
        QCOMPARE(shot.pixel(100, 60), kCyan);
        QCOMPARE(shot.pixel(196, 20), kRed);  // the bar, over the rows
        QCOMPARE(built.size(), 8);
        // Scrolled by 220: row 5 at the top, 20 pixels of it above the view.
        s.view->setScrollOffsetAndState(QPoint(0, 220));
        s.shot();
        shot = s.shot();
        QCOMPARE(shot.pixel(100, 10), kCyan);
        QCOMPARE(shot.pixel(100, 30), kBlue);
        QCOMPARE(built, QSet<int>({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
        // A jump far down builds only what is shown there.
        s.view->setScrollOffsetAndState(QPoint(0, 3700));
        s.shot();
        QCOMPARE(built.size(), 13 + 8);
        QCOMPARE(s.shot().pixel(100, 20), kCyan);  // row 93
        // An item update reaches the surface where the view shows it.
        CTavoWidget* shown = qobject_cast<CTavoWidget*>(s.view->itemAt(92));
        QVERIFY(shown);
        QCOMPARE(s.widget.rectOfChildOnScreen(shown), QRect(0, 0, 200, 20));
        // Focusing a row not yet built asks for it.
        s.view->setFocusedItem(50, true);
        QVERIFY(built.contains(50));
    }

    void flingCoastsStopsAndTheBarHides()
    {
        List l;
        CTavoView& v = *l.view;
        QSignalSpy stopped(&v, &CTavoView::scrollingStopped);
        QSignalSpy moved(&v, &CTavoView::scrollOffsetChanged);
        l.flick(QPoint(100, 250), QPoint(0, -25), 6);
        QCOMPARE(l.view->state(), int(KineticScroll::AutoScroll));
        const int released = v.scrollOffset().y();
        QVERIFY2(released >= 100, qPrintable(QString::number(released)));
        QVERIFY(stopped.wait(5000));
        // Momentum carried it on, within the range, and the bar shows where.
        const int rest = v.scrollOffset().y();
        QVERIFY2(rest > released && rest <= 500, qPrintable(QString("%1 %2").arg(released).arg(rest)));
        QVERIFY(moved.size() > 6 && v.getLastFrameRate() >= 1.0);
        QVERIFY(v.scrollBar()->isVisible());
        QCOMPARE(v.scrollBar()->barRect().top(), rest * 300 / 800);
        QCOMPARE(l.shot().pixel(196, v.scrollBar()->barRect().center().y()), kRed);
        QTRY_VERIFY_WITH_TIMEOUT(!v.scrollBar()->isVisible(), 2500);
        const int y = v.scrollBar()->barRect().center().y();
        QCOMPARE(l.shot().pixel(196, y), ((rest + y) / 40) % 2 ? kCyan : kBlue);
        // Past the end the spring returns it; with no spring it never overshoots.
        l.flick(QPoint(100, 250), QPoint(0, -40), 6);
        QVERIFY(stopped.wait(5000));
        QCOMPARE(v.scrollOffset().y(), 500);
        List stiff("scroll-spring-length: 0;");
        stiff.flick(QPoint(100, 50), QPoint(0, 30), 5, false);
        QCOMPARE(stiff.view->scrollOffset().y(), 0);
        stiff.mouse(QEvent::MouseButtonRelease, QPoint(100, 200));
    }

    void tapsClickHoldsHoldAndAMovingListOnlyStops()
    {
        ButtonList l;
        CTavoView& v = *l.view;
        // A tap clicks the row under the finger, in content coordinates.
        v.setScrollOffsetAndState(QPoint(0, 120));
        l.mouse(QEvent::MouseButtonPress, QPoint(100, 10));
        QCOMPARE(v.pressedItem(), l.buttons[3]);
        QVERIFY(l.buttons[3]->isDown());
        l.mouse(QEvent::MouseButtonRelease, QPoint(100, 10));
        QCOMPARE(l.clicks, QStringList({"row:3"}));
        QVERIFY(!v.pressedItem() && !l.buttons[3]->isDown());
        // Held for a second: the hold, and no click after it.
        l.mouse(QEvent::MouseButtonPress, QPoint(100, 50));
        QTRY_COMPARE_WITH_TIMEOUT(l.clicks.size(), 2, 2000);
        l.mouse(QEvent::MouseButtonRelease, QPoint(100, 50));
        QCOMPARE(l.clicks, QStringList({"row:3", "hold:4"}));
        // A drag lets the pressed row go: no click.
        l.flick(QPoint(100, 200), QPoint(0, -30), 5, false);
        QVERIFY(!v.pressedItem() && !l.buttons[8]->isDown());
        l.mouse(QEvent::MouseButtonRelease, QPoint(100, 50));
        QCOMPARE(l.clicks.size(), 2);
        // A finger on the moving list stops it and presses nothing.
        QCOMPARE(l.view->state(), int(KineticScroll::AutoScroll));
        l.mouse(QEvent::MouseButtonPress, QPoint(100, 100));
        QCOMPARE(l.view->state(), int(KineticScroll::Stop));
        QVERIFY(!v.pressedItem());
        l.mouse(QEvent::MouseButtonRelease, QPoint(100, 100));
        QCOMPARE(l.clicks.size(), 2);
        // Moving off a pressed row releases it; a held long-press key clicks as it is left.
        v.setScrollOffsetAndState(QPoint(0, 0));
        l.mouse(QEvent::MouseButtonPress, QPoint(100, 20));
        l.mouse(QEvent::MouseMove, QPoint(100, 45));
        QVERIFY(!v.pressedItem() && !l.buttons[0]->isDown());
        l.mouse(QEvent::MouseButtonRelease, QPoint(100, 45));
        ButtonList longPress(QByteArray(), true);
        longPress.mouse(QEvent::MouseButtonPress, QPoint(100, 20));
        QTRY_COMPARE_WITH_TIMEOUT(longPress.clicks.size(), 1, 2000);
        longPress.mouse(QEvent::MouseMove, QPoint(100, 45));
        QCOMPARE(longPress.clicks, QStringList({"hold:0"}));
        longPress.mouse(QEvent::MouseButtonRelease, QPoint(100, 45));
    }

    void keysMoveTheFocus_data()
    {
        QTest::addColumn<QByteArray>("style");
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("key");
        QTest::addColumn<bool>("handled");
        QTest::addColumn<int>("focus");
        QTest::addColumn<int>("offset");
        const QByteArray nav = "navigation-cluster-focuses-item: true; smooth-scroll-enabled: false; ";
        QTest::newRow("down") << nav << 0 << int(Qt::Key_Down) << true << 1 << 0;
        QTest::newRow("down out of view scrolls it in") << nav << 6 << int(Qt::Key_Down) << true << 7 << 20;
        QTest::newRow("past the last: to the end, focus kept") << nav << 19 << int(Qt::Key_Down) << true << 19 << 500;
        QTest::newRow("up past the first: to the top") << nav << 0 << int(Qt::Key_Up) << true << 0 << 0;
        QTest::newRow("# without paging") << nav << 0 << int(Qt::Key_NumberSign) << false << 0 << 0;
        QTest::newRow("# pages") << nav + "page-navigation-enabled: true;" << 0 << int(Qt::Key_NumberSign) << true
                                 << 7 << 20;
        QTest::newRow("* pages back") << nav + "page-navigation-enabled: true;" << 9 << int(Qt::Key_Asterisk)
                                      << true << 2 << 80;
        QTest::newRow("left in a vertical list") << nav << 3 << int(Qt::Key_Left) << false << 3 << 0;
        QTest::newRow("plain list scrolls a tenth") << QByteArray() << 0 << int(Qt::Key_Down) << true << 0 << 30;
    }
    void keysMoveTheFocus()
    {
        QFETCH(QByteArray, style);
        QFETCH(int, from);
        QFETCH(int, key);
        QFETCH(int, focus);
        QFETCH(int, offset);
        List l(style);
        CTavoView& v = *l.view;
        v.setFocusedItem(from, true);
        if (from > 7)
            v.setScrollOffsetAndState(QPoint(0, 500));
        QSignalSpy focusSpy(&v, &CTavoView::focusChanged);
        QSignalSpy walked(&v, &CTavoView::updateFocusItem);
        QTEST(l.key(key), "handled");
        QCOMPARE(v.focusedIndex(), focus);
        QCOMPARE(v.scrollOffset().y(), from > 7 && offset == 0 ? 500 : offset);
        QCOMPARE(focusSpy.size(), focus != from ? 1 : 0);
        if (from == 0 && key == Qt::Key_Up)
            QCOMPARE(walked.takeFirst(), QList<QVariant>({0, -1}));
        if (focus != from) {
            QVERIFY(l.rows[focus]->isFocused() && !l.rows[from]->isFocused());
            QCOMPARE(l.shot().pixel(100, l.rows[focus]->top() - offset + 20), kGreen);
        }
    }

    void selectKeyAndFocusRules()
    {
        ButtonList l("navigation-cluster-focuses-item: true;");
        CTavoView& v = *l.view;
        v.setFocusedItem(2, true);
        QVERIFY(l.key(Qt::Key_Return));
        QCOMPARE(l.clicks, QStringList({"row:2"}));
        ButtonList ignoring("navigation-cluster-focuses-item: true; ignore-select-key: true;");
        QVERIFY(!ignoring.key(Qt::Key_Return) && !ignoring.key(Qt::Key_Enter));
        QVERIFY(ignoring.clicks.isEmpty());
        // Out of range focus is clamped; the same index again only re-applies the flag.
        QSignalSpy focusSpy(&v, &CTavoView::focusChanged);
        v.setFocusedItem(50, true);
        QCOMPARE(v.focusedIndex(), 19);
        l.buttons[19]->setFocused(false);
        v.setFocusedItem(19, true);
        QVERIFY(l.buttons[19]->isFocused());
        QCOMPARE(focusSpy.size(), 1);
        v.setFocusedItem(-4, true);
        QVERIFY(v.focusedIndex() == -1 && !l.buttons[19]->isFocused() && focusSpy.size() == 1);
        // By object: brought into view, then focused.
        v.setFocusedItem(l.buttons[12], true);
        QVERIFY(v.focusedIndex() == 12 && v.visibleRect().contains(l.buttons[12]->rect()));
        v.focusFirstObject("CTavoButton");
        QCOMPARE(v.focusedIndex(), 0);
        v.focusFirstObject(nullptr);
        // An empty list tells of no focus.
        List empty(QByteArray(), 0);
        QSignalSpy none(empty.view, &CTavoView::focusChanged);
        empty.view->setFocusedItem(3, true);
        QCOMPARE(none.size(), 1);
        QCOMPARE(none.first().at(0).toInt(), -1);
        // Return and Enter on a view whose focus is past the list stay unhandled.
        QVERIFY(!empty.key(Qt::Key_Return));
    }

    void ensureVisibleAndScrollToTop()
    {
        List l("smooth-scroll-enabled: false;");
        CTavoView& v = *l.view;
        // Below the view: its top goes to the view's top; partly in view: its bottom to the bottom.
        v.ensureVisible(l.rows[9], false);
        QCOMPARE(v.scrollOffset().y(), 360);
        v.ensureVisible(l.rows[1], false, QRect(0, 10, 0, 0));
        QCOMPARE(v.scrollOffset().y(), 30);
        v.ensureVisible(l.rows[2], false);  // already in view
        QCOMPARE(v.scrollOffset().y(), 30);
        v.scrollItemToTop(l.rows[5]);
        QCOMPARE(v.scrollOffset().y(), 200);
        v.ensureVisible(l.rows[12], false);
        QCOMPARE(v.scrollOffset().y(), 220);
        v.scrollItemAboveTop(l.rows[5]);
        QCOMPARE(v.scrollOffset().y(), 239);
        v.ensureVisible(nullptr);
        v.scrollItemToTop(l.row(0));  // not in the list
        QCOMPARE(v.scrollOffset().y(), 239);
        // Animated: a target reached frame by frame.
        QSignalSpy stopped(&v, &CTavoView::scrollingStopped);
        v.ensureVisible(l.rows[0], true);
        QCOMPARE(l.view->state(), int(KineticScroll::AutoScroll));
        QVERIFY(stopped.wait(3000));
        QCOMPARE(v.scrollOffset().y(), 0);
        v.resetScrollOffset();
        QVERIFY(v.scrollOffset().isNull() && l.view->state() == int(KineticScroll::Steady));
    }

    void scrollBarControlsTheView()
    {
        List l;
        CTavoView& v = *l.view;
        CTavoScrollBar* bar = v.scrollBar();
        QSignalSpy controls(bar, &CTavoScrollBar::scrollControl);
        bar->handleItemToggleEvent(QEvent::MouseButtonPress, QPoint(196, 200));
        bar->handleItemToggleEvent(QEvent::MouseButtonRelease, QPoint(196, 200));
        QCOMPARE(controls.size(), 2);
        QCOMPARE(v.scrollOffset().y(), 0);  // a tenth back from the top stays at the top
        v.onScrollControlled(QEvent::KeyPress, CTavoScrollBar::ScrollHalfForward);
        QCOMPARE(v.scrollOffset().y(), 150);
        v.onScrollControlled(QEvent::KeyPress, CTavoScrollBar::ScrollTenthForward);
        QCOMPARE(v.scrollOffset().y(), 180);
        v.onScrollControlled(QEvent::KeyRelease, CTavoScrollBar::ScrollHalfForward);
        QCOMPARE(v.scrollOffset().y(), 180);
        v.onScrollControlled(QEvent::KeyPress, CTavoScrollBar::ScrollHalfBack);
        QCOMPARE(v.scrollOffset().y(), 30);
        v.onScrollControlled(QEvent::KeyPress, CTavoScrollBar::ScrollTenthBack);
        QCOMPARE(v.scrollOffset().y(), 0);
        for (int i = 0; i < 5; ++i)
            v.onScrollControlled(QEvent::KeyPress, CTavoScrollBar::ScrollHalfForward);
        QCOMPARE(v.scrollOffset().y(), 500);
        v.onScrollContent(0.5);
        QCOMPARE(v.scrollOffset().y(), 250);
        QCOMPARE(bar->viewPos(), 250);
    }

    void paneDragsAcrossTheList()
    {
        List l("pane-drag-threshold: 30;");
        CTavoView& v = *l.view;
        QSignalSpy started(&v, &CTavoView::paneDragStarted);
        QSignalSpy dragged(&v, &CTavoView::paneDragged);
        QSignalSpy ended(&v, &CTavoView::paneDragStopped);
        l.flick(QPoint(50, 100), QPoint(20, 0), 4);
        QCOMPARE(started.size(), 1);
        QCOMPARE(dragged.size(), 1);
        QCOMPARE(ended.size(), 1);
        // The speed is taken against the press re-based at the release: horizontal, not zero.
        QVERIFY(ended.first().at(0).toDouble() != 0.0);
        QCOMPARE(v.scrollOffset(), QPoint(0, 0));
        // Cancelled: no pane drag until the next press.
        l.mouse(QEvent::MouseButtonPress, QPoint(50, 100));
        v.paneDragCancelled();
        for (int x = 60; x <= 150; x += 30)
            l.mouse(QEvent::MouseMove, QPoint(x, 100));
        l.mouse(QEvent::MouseButtonRelease, QPoint(150, 100));
        QCOMPARE(started.size(), 1);
        QCOMPARE(ended.last().at(0).toDouble(), 0.0);
        QSignalSpy done(&v, &CTavoView::paneAnimationDone);
        v.endPaneAnimation();
        QVERIFY(done.size() == 1 && v.paneStart() == QPoint(-1, -1));
    }

    void viewportSmallerThanItsHost()
    {
        Surface s;
        s.style(sheet("location: 0:100; size: 200x150;"));
        for (int i = 0; i < 20; ++i)
            s.view->append(s.row(i));
        s.view->format(Qt::Vertical, QSize(-1, -1), -1, true);
        s.widget.show();
        QCOMPARE(s.view->scaleY(), 0.5f);
        QCOMPARE(s.view->itemAt(0)->topLeft(), QPoint(0, 100));
        QCOMPARE(s.view->maxOffset().y(), 325);
        s.view->setScrollOffsetAndState(QPoint(0, 100));
        QCOMPARE(s.view->mapPointInView(QPoint(10, 110)), QPoint(10, 310));
        QCOMPARE(s.view->mapToPointInParent(QPoint(10, 310)), QPoint(10, 110));
        QCOMPARE(s.view->visibleRect(), QRect(0, 300, 200, 150));
        const QImage shot = s.shot();
        QCOMPARE(shot.pixel(100, 90), kWhite);  // above the viewport: clipped
        QCOMPARE(shot.pixel(100, 110), kCyan);  // row 5
        QCOMPARE(shot.pixel(100, 150), kBlue);  // row 6
        QCOMPARE(shot.pixel(100, 260), kWhite);
        // The scale ratio multiplies; nonsense is refused.
        s.view->setScale(2.0);
        QVERIFY(s.view->scaleRatio() == 2.0 && s.view->scaleY() == 1.0f);
        s.view->setScale(0.0);
        s.view->setScale(qQNaN());
        QCOMPARE(s.view->scaleRatio(), 2.0);
    }

    void inputEdges()
    {
        // A press in the drag area beside the view is the view's; elsewhere not.
        List l("size: 200x250; drag-rect-location: 0:250; drag-rect-size: 200x50;");
        l.mouse(QEvent::MouseButtonPress, QPoint(100, 280));
        QCOMPARE(l.view->state(), int(KineticScroll::Pressed));
        l.mouse(QEvent::MouseButtonRelease, QPoint(100, 280));
        l.view->dragRect();
        // A disabled or hidden view lets everything pass.
        l.view->setEnabled(false);
        l.mouse(QEvent::MouseButtonPress, QPoint(100, 100));
        QCOMPARE(l.view->state(), int(KineticScroll::Steady));
        l.mouse(QEvent::MouseButtonRelease, QPoint(100, 100));
        l.view->setEnabled(true);
        l.view->Hide(false);
        QVERIFY(!l.key(Qt::Key_Down));
        l.view->Show(false);
        // Ignored keys, and a "#" whose first row has no height: no division.
        l.view->setIgnoreKeys(true);
        QVERIFY(!l.key(Qt::Key_Down));
        l.view->setIgnoreKeys(false);
        List flat("navigation-cluster-focuses-item: true; page-navigation-enabled: true;", 3);
        flat.rows[0]->setSize(QSize(200, 0));
        QVERIFY(!flat.key(Qt::Key_NumberSign));
        // Null entries are skipped by stacking, painting and the key walk.
        flat.view->insert(1, nullptr);
        flat.view->format(Qt::Vertical, QSize(-1, -1), 0);
        QVERIFY(flat.key(Qt::Key_Down));
        QCOMPARE(flat.view->focusedIndex(), 2);
        flat.shot();
        // An empty view paints nothing but keeps a running movement's frames coming.
        List empty(QByteArray(), 0);
        empty.view->setTargetOffset(QPoint(0, 40), true, 0.0f, false);
        QTRY_VERIFY(!empty.view->frameArmed());
        QImage canvas(200, 300, QImage::Format_RGB32);
        QPainter painter(&canvas);
        empty.view->paint(&painter, canvas.rect());
        QVERIFY(empty.view->frameArmed());
        empty.view->stopScrolling();
    }

    void reportTellsOffsetSizeFocusAndCount()
    {
        tavoToolSetTestAutomationFlag(true);
        List l;
        l.view->setFocusedItem(3, true);
        l.view->setScrollOffsetAndState(QPoint(0, 120));
        l.view->refreshDom();
        const QDomElement e = l.view->dom().firstChildElement();
        QCOMPARE(e.attribute("view-offset"), QString("0:120"));
        QCOMPARE(e.attribute("view-content-size"), QString("200x800"));
        QCOMPARE(e.attribute("highlighted"), QString("3"));
        QCOMPARE(e.attribute("total"), QString("20"));
        QDomDocument doc;
        QDomNode root = doc.appendChild(doc.createElement("window"));
        QList<QObject*> done;
        l.view->report(done, root);
        // The view, its bar and the rows in view.
        QCOMPARE(root.firstChild().childNodes().size(), 1 + 8);
        tavoToolSetTestAutomationFlag(false);
    }
};

TAVO_TEXT_TEST_MAIN(TestView)
#include "tst_view.moc"
