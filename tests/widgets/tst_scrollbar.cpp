// The scroll bar on a real surface: its geometry from sizes and positions, the
// auto-hide and auto-repeat timers on the real clock, presses through the
// surface's events, painting, the report, and sizes that must not divide by zero.
#include <QDomDocument>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QtTest>

#include "TextTestSupport.h"
#include "layout/CTavoLayoutWidget.h"
#include "widgets/CTavoScrollBar.h"
#include "tools/TavoToolFlags.h"

namespace {

const QRgb kRed = qRgb(255, 0, 0);
const QRgb kBlue = qRgb(0, 0, 255);

// A shown surface with one bar styled by `style` (inside the bar's block).
struct BarSurface
{
    CTavoLayoutWidget widget;
    CTavoScrollBar* bar;

    explicit BarSurface(const QByteArray& style = QByteArray(), const QByteArray& geometry = "size: 10x200; location: 90:0;")
    {
        bar = new CTavoScrollBar(&widget);
        QByteArray text = "CTavoLayoutWidget { size: 100x200; location: 0:0; background: #ffffff; }"
                          " CTavoScrollBar { " + geometry + " bar-background: #ff0000; " + style + " }";
        QByteArray attributes;
        widget.updateStyle(text.data(), attributes.data(), true);
        // A view installs its bar's filter on the surface; here the test does.
        widget.installEventFilter(bar);
        widget.show();
    }
    void mouse(QEvent::Type type, const QPoint& at)
    {
        QMouseEvent event(type, at, widget.mapToGlobal(at), type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &event);
    }
};

} // namespace

class TestScrollBar : public QObject
{
    Q_OBJECT

private slots:
    void geometryFollowsRatioAndPosition_data()
    {
        QTest::addColumn<QByteArray>("geometry");
        QTest::addColumn<int>("pos");
        QTest::addColumn<int>("view");
        QTest::addColumn<int>("content");
        QTest::addColumn<bool>("visible");
        QTest::addColumn<QRect>("bar");
        // Vertical: centred across the track, top at position times track, no offset of the track's top.
        QTest::newRow("a quarter, a quarter down") << QByteArray("size: 10x200; location: 90:50; bar-width: 4;")
                                                   << 100 << 100 << 400 << true << QRect(93, 50, 4, 50);
        QTest::newRow("content ten times the track: 10, not 5") << QByteArray("size: 10x50; location: 0:0;") << 0 << 20
                                                                << 200 << true << QRect(0, 0, 10, 10);
        QTest::newRow("horizontal by its shape") << QByteArray("size: 200x10; location: 0:190; bar-height: 6;") << 50
                                                 << 50 << 200 << true << QRect(50, 192, 50, 6);
        QTest::newRow("nothing to scroll") << QByteArray("size: 10x200; location: 0:0;") << 0 << 300 << 100 << false
                                           << QRect();
        QTest::newRow("view as long as content") << QByteArray("size: 10x200; location: 0:0;") << 0 << 100 << 100
                                                 << false << QRect();
    }
    void geometryFollowsRatioAndPosition()
    {
        QFETCH(QByteArray, geometry);
        QFETCH(int, pos);
        QFETCH(int, view);
        QFETCH(int, content);
        QFETCH(bool, visible);
        QFETCH(QRect, bar);
        BarSurface s(QByteArray(), geometry);
        s.bar->set(pos, view, content);
        QCOMPARE(s.bar->isVisible(), visible);
        if (visible)
            QCOMPARE(s.bar->barRect(), bar);
        // A bar with nothing to scroll can't be shown by setVisible, only forced.
        s.bar->setVisible(true);
        QCOMPARE(s.bar->isVisible(), visible);
        s.bar->forceVisible();
        QVERIFY(s.bar->isVisible());
        // The same values again change nothing; a new position moves the bar.
        const QRect before = s.bar->barRect();
        s.bar->set(pos, view, content);
        QCOMPARE(s.bar->barRect(), before);
    }

    void badSizesNeitherCrashNorDivide()
    {
        BarSurface s;
        s.bar->set(10, 50, 0);   // stored, no relayout
        s.bar->setViewPos(20);   // relayout with an empty content: hidden
        QVERIFY(!s.bar->isVisible());
        QCOMPARE(s.bar->ratio(), 1.0);
        s.bar->set(0, -5, 100);
        QVERIFY(!s.bar->isVisible());
        s.bar->setSize(0, 0);
        s.bar->set(INT_MAX, 1, 2);  // a position far past the content: the bar saturates, no overflow
        QVERIFY(s.bar->isVisible());
        QCOMPARE(s.bar->barRect().top(), INT_MAX);
        s.bar->layout();
        QCOMPARE(s.bar->ratio(), 0.5);
    }

    void autoHidesAfterTheLastMoveUnlessHeldOrArrowed()
    {
        BarSurface s("auto-hide-timeout: 1;");
        QCOMPARE(s.bar->autoHideInterval(), 1000);
        s.bar->set(0, 50, 200);
        QVERIFY(s.bar->isVisible());
        // Moves keep it: it hides about a second after the last one.
        QElapsedTimer clock;
        clock.start();
        for (int i = 1; i <= 5; ++i) {
            QTest::qWait(150);
            s.bar->setViewPos(i * 10);
        }
        const qint64 lastMove = clock.elapsed();
        QTRY_VERIFY_WITH_TIMEOUT(!s.bar->isVisible(), 3000);
        QVERIFY2(clock.elapsed() - lastMove >= 950, qPrintable(QString::number(clock.elapsed() - lastMove)));

        // Held: it stays until released.
        s.bar->setViewPos(0);
        QVERIFY(s.bar->isVisible());
        s.mouse(QEvent::MouseButtonPress, s.bar->barRect().center());
        QVERIFY(s.bar->isPressed());
        QTest::qWait(1300);
        QVERIFY(s.bar->isVisible());
        s.mouse(QEvent::MouseButtonRelease, s.bar->barRect().center());
        QTRY_VERIFY_WITH_TIMEOUT(!s.bar->isVisible(), 3000);

        // A vertical bar with arrows never hides by itself.
        s.bar->setArrowsEnabled(true);
        s.bar->setViewPos(10);
        QTest::qWait(1300);
        QVERIFY(s.bar->isVisible());
    }

    void togglePressRepeatsFasterDownToFiftyMs()
    {
        BarSurface s("auto-repeat-timeout: 400;");
        s.bar->set(0, 50, 200);
        QSignalSpy controls(s.bar, &CTavoScrollBar::scrollControl);
        QVector<qint64> at;
        QElapsedTimer clock;
        connect(s.bar, &CTavoScrollBar::scrollControl, this, [&] { at << clock.elapsed(); });
        clock.start();
        QVERIFY(s.bar->handleItemToggleEvent(QEvent::MouseButtonPress, QPoint(95, 190)));
        QTRY_VERIFY_WITH_TIMEOUT(at.size() >= 6, 3000);
        QVERIFY(s.bar->handleItemToggleEvent(QEvent::MouseButtonRelease, QPoint(95, 190)));
        const QVector<int> expected = {400, 200, 100, 50, 50};
        for (int i = 0; i < expected.size(); ++i) {
            const qint64 gap = at[i + 1] - at[i];
            QVERIFY2(gap >= expected[i] * 94 / 100 && gap < expected[i] + 90, qPrintable(QString("%1: %2").arg(i).arg(gap)));
        }
        QCOMPARE(controls.first().at(0).value<QEvent::Type>(), QEvent::KeyPress);
        QCOMPARE(controls.first().at(1).value<CTavoScrollBar::ScrollControlT>(), CTavoScrollBar::ScrollTenthBack);
        QCOMPARE(controls.last().at(0).value<QEvent::Type>(), QEvent::KeyRelease);
        QVERIFY(!s.bar->isPressed());
        const int count = controls.size();
        QTest::qWait(120);
        QCOMPARE(controls.size(), count);
        // A second press starts at the skin's pace again.
        at.clear();
        clock.restart();
        s.bar->handleItemToggleEvent(QEvent::MouseButtonPress, QPoint(95, 190));
        QTRY_VERIFY_WITH_TIMEOUT(at.size() >= 2, 1000);
        QVERIFY(at[1] - at[0] >= 395);
        // The bar arriving under the finger stops the repeats.
        s.bar->setViewPos(150);
        QVERIFY(s.bar->barRect().contains(QPoint(95, 190)));
        const int now = at.size();
        QTest::qWait(500);
        QCOMPARE(at.size(), now);
        s.bar->handleItemToggleEvent(QEvent::MouseButtonRelease, QPoint(95, 190));
        QVERIFY(!s.bar->handleItemToggleEvent(QEvent::KeyPress, QPoint()));
    }

    void pressesAndThumbDrag()
    {
        BarSurface s("allow-dragging: 1;");
        s.bar->set(0, 50, 200);
        QSignalSpy content(s.bar, &CTavoScrollBar::scrollContent);
        const QRect bar = s.bar->barRect();
        QCOMPARE(bar, QRect(90, 0, 10, 50));
        // Inside the geometry but beside the bar: not consumed, not held.
        QVERIFY(!s.bar->handleEvent(QEvent::MouseButtonPress, QPoint(95, 120)));
        QVERIFY(!s.bar->isPressed());
        QVERIFY(s.bar->handleEvent(QEvent::MouseButtonPress, QPoint(95, 10)));
        QVERIFY(s.bar->isPressed() && s.bar->pressPos() == QPoint(95, 10));
        // A plain bar has no drag limits and control 1 at most: a drag does nothing.
        QVERIFY(!s.bar->handleEvent(QEvent::MouseMove, QPoint(95, 30)));
        QCOMPARE(s.bar->barRect(), bar);
        QVERIFY(content.isEmpty());
        // With limits and a half-page control, the thumb follows and tells the ratio.
        s.bar->setDragLimits(QRect(95, 25, 1, 151));
        s.bar->setControl(CTavoScrollBar::ScrollHalfForward);
        QVERIFY(s.bar->handleEvent(QEvent::MouseMove, QPoint(95, 40)));
        QCOMPARE(s.bar->barRect().center().y(), 40);
        QCOMPARE(content.last().at(0).toDouble(), 15.0 / 151.0);
        s.bar->setDragLimits(QRect(95, 25, 1, 1));
        s.bar->handleEvent(QEvent::MouseMove, QPoint(95, 60));
        QCOMPARE(content.last().at(0).toDouble(), 0.0);
        // Out of the geometry: released, not consumed.
        QVERIFY(!s.bar->handleEvent(QEvent::MouseMove, QPoint(10, 10)));
        QVERIFY(!s.bar->isPressed());
        // A hidden bar shows itself under a finger on its track, through the surface's events.
        s.bar->Hide(false);
        s.mouse(QEvent::MouseButtonPress, QPoint(95, 150));
        QVERIFY(s.bar->isVisible());
        // The filter itself never consumes, not even on the bar.
        QMouseEvent press(QEvent::MouseButtonPress, QPointF(95, 10), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QVERIFY(!s.bar->eventFilter(&s.widget, &press));
        s.mouse(QEvent::MouseButtonRelease, QPoint(95, 150));
    }

    void paintsBarBorderAndPressedLook()
    {
        BarSurface s("bar-border: 2px solid #0000ff; bar-pressed-background: #00ff00;", "size: 20x200; location: 80:0;");
        s.bar->set(0, 100, 200);
        const QImage image = TextTest::render(*s.bar, TextTest::kWhite, QSize(100, 200));
        QCOMPARE(image.pixel(90, 50), kRed);
        QCOMPARE(image.pixel(80, 50), kBlue);
        QCOMPARE(image.pixel(90, 150), TextTest::kWhite);
        s.bar->handleEvent(QEvent::MouseButtonPress, QPoint(90, 50));
        QCOMPARE(TextTest::render(*s.bar, TextTest::kWhite, QSize(100, 200)).pixel(90, 50), qRgb(0, 255, 0));
        // The painter is left as it was.
        QImage canvas(10, 10, QImage::Format_RGB32);
        QPainter painter(&canvas);
        painter.setOpacity(0.3);
        s.bar->paint(&painter);
        QCOMPARE(painter.opacity(), 0.3);
        QCOMPARE(painter.brush(), QBrush());
    }

    void reportNamesPositionAndDirection()
    {
        tavoToolSetTestAutomationFlag(true);
        BarSurface vertical;
        vertical.bar->set(50, 50, 200);
        vertical.bar->refreshDom();
        QDomElement element = vertical.bar->dom().firstChildElement();
        QCOMPARE(element.attribute("SCROLL_BAR_POSITION"), QString("90:50"));
        QVERIFY(!element.hasAttribute("SCROLL_DIRECTION"));
        BarSurface horizontal(QByteArray(), "size: 200x10; location: 0:0;");
        horizontal.bar->set(0, 50, 200);
        horizontal.bar->refreshDom();
        QCOMPARE(horizontal.bar->dom().firstChildElement().attribute("SCROLL_DIRECTION"), QString("HORIZONTAL"));
        horizontal.bar->Hide(false);
        horizontal.bar->refreshDom();
        QVERIFY(horizontal.bar->dom().firstChildElement().isNull());
        tavoToolSetTestAutomationFlag(false);
    }
};

TAVO_TEXT_TEST_MAIN(TestScrollBar)
#include "tst_scrollbar.moc"
