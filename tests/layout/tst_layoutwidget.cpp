// A layout widget as a real window on the offscreen platform: what its paint
// leaves in pixels, how real mouse events reach the buttons on it, its show
// and hide animations, pane drags and its place among its siblings.
#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QPropertyAnimation>
#include <QSignalSpy>
#include <QtTest>

#include "core/TavoGlobals.h"
#include "layout/CTavoLayoutWidget.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoWidget.h"
#include "widgets/TavoButtonSettings.h"

namespace {

// Fills its box; optionally spills over the whole surface, to show whether it
// was asked to paint at all.
class Box : public CTavoWidget
{
public:
    Box(QWidget* surface, const QRect& area, QColor colour, bool spill = false)
        : CTavoWidget(surface, 0, area.x(), area.y(), area.width(), area.height())
        , m_colour(colour)
        , m_spill(spill)
    {
    }
    void paint(QPainter* painter) override
    {
        ++paints;
        painter->fillRect(m_spill ? QRect(0, 0, 10000, 10000) : rect(), m_colour);
    }
    int paints = 0;

private:
    QColor m_colour;
    bool m_spill;
};

QImage render(QWidget& widget, const QRegion& region = QRegion())
{
    QImage image(widget.size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    widget.render(&image, region.isEmpty() ? QPoint() : region.boundingRect().topLeft(), region,
                  QWidget::RenderFlags());
    return image;
}

void move(QWidget* widget, const QPoint& pos, Qt::MouseButtons buttons = Qt::LeftButton)
{
    QMouseEvent event(QEvent::MouseMove, pos, widget->mapToGlobal(pos), Qt::NoButton, buttons, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

const char* kSheet =
    "CTavoLayoutWidget#surface { size: 200x100; location: 0:0; background: #000080; pane-drag-threshold: 40; }"
    "CTavoLayoutWidget#surface:alt { size: 200x100; location: 0:0; background: #008000; }"
    "CTavoLayoutWidget#plain { size: 200x100; location: 0:0; }"
    "CTavoLayoutWidget#framed { size: 100x60; location: 0:0; background: #ffffff;"
    " border: 4px solid #ff0000; border-radius: 0; }"
    "CTavoLayoutWidget#animated { size: 200x100; location: 0:0;"
    " show-animation: property=pos,start=0:100,end=0:0,duration=300;"
    " hide-animation: property=pos,start=0:0,end=0:100,duration=300; }";

}  // namespace

class TestLayoutWidget : public QObject
{
    Q_OBJECT

    std::unique_ptr<CTavoLayoutWidget> surface(const char* name)
    {
        std::unique_ptr<CTavoLayoutWidget> s(new CTavoLayoutWidget(nullptr));
        s->setObjectName(QString::fromLatin1(name));
        QString sheet = QString::fromLatin1(kSheet);
        QString attributes;
        s->updateStyle(sheet, attributes, true);
        return s;
    }

    CTavoButton* button(CTavoLayoutWidget* parent, const QRect& area, const QString& name)
    {
        TavoButtonSettings settings;
        settings.set(name, name, "click:" + name, "hold:" + name, "press:" + name, CTavoIconDefinition(),
                     QString(), 1);
        auto* b = new CTavoButton(parent);
        b->init(&settings, QStringLiteral("data"), -1, false);
        b->setgeo(area);
        return b;
    }

    void showAndWait(CTavoLayoutWidget* s)
    {
        s->Show(false);
        QVERIFY(QTest::qWaitForWindowExposed(s));
    }

private slots:
    void createdHiddenWithItsStyleApplied()
    {
        const int before = CTavoLayoutWidget::count();
        auto s = surface("surface");
        QCOMPARE(CTavoLayoutWidget::count(), before + 1);
        QVERIFY(!s->isVisible());
        QVERIFY(!s->isReadyToShow());
        QCOMPARE(s->geometry(), QRect(0, 0, 200, 100));
        QCOMPARE(s->paneDragThreshold(), 40u);
        QVERIFY(s->testAttribute(Qt::WA_NoSystemBackground));
        QVERIFY(!s->testAttribute(Qt::WA_OpaquePaintEvent));
        // Widgets built on the surface are styled from its sheet.
        auto* box = new Box(s.get(), QRect(0, 0, 5, 5), Qt::red);
        QCOMPARE(box->styleSheet(), s->styleSheet());
        s.reset();
        QCOMPARE(CTavoLayoutWidget::count(), before);
    }

    void paintsBackgroundThenDescendantsInChildOrder()
    {
        auto s = surface("surface");
        auto* first = new Box(s.get(), QRect(10, 10, 50, 50), Qt::red);
        auto* nested = new Box(s.get(), QRect(40, 40, 50, 50), Qt::yellow);
        new Box(s.get(), QRect(70, 20, 50, 50), Qt::green);  // the last one
        auto* hidden = new Box(s.get(), QRect(0, 0, 200, 100), Qt::black);
        hidden->setVisible(false);
        // Reparented below the first box: painted after it, before the last one.
        nested->setParent(first);

        const QImage shot = render(*s);
        QCOMPARE(shot.pixel(5, 5), QColor(0, 0, 0x80).rgb());     // background
        QCOMPARE(shot.pixel(15, 15), QColor(Qt::red).rgb());      // first
        QCOMPARE(shot.pixel(45, 45), QColor(Qt::yellow).rgb());   // child over its parent
        QCOMPARE(shot.pixel(75, 45), QColor(Qt::green).rgb());    // later sibling over the child
        QCOMPARE(shot.pixel(150, 90), QColor(0, 0, 0x80).rgb());
        QCOMPARE(hidden->paints, 0);
    }

    void onlyWidgetsMeetingTheUpdateAreaPaint()
    {
        auto s = surface("surface");
        auto* left = new Box(s.get(), QRect(0, 0, 20, 20), Qt::red);
        auto* spill = new Box(s.get(), QRect(150, 0, 20, 20), Qt::magenta, true);

        // Left half only: the spilling box lies outside and is not asked.
        QImage shot = render(*s, QRegion(0, 0, 100, 100));
        QCOMPARE(spill->paints, 0);
        QCOMPARE(left->paints, 1);
        QCOMPARE(shot.pixel(10, 10), QColor(Qt::red).rgb());
        QCOMPARE(shot.pixel(50, 50), QColor(0, 0, 0x80).rgb());

        // Its own area: it paints, but nothing lands outside the area.
        shot = render(*s, QRegion(140, 0, 60, 50));
        QCOMPARE(spill->paints, 1);
        QCOMPARE(shot.pixel(145, 10), QColor(Qt::magenta).rgb());
        QCOMPARE(shot.pixel(145, 60), QColor(Qt::white).rgb());
        QCOMPARE(shot.pixel(10, 10), QColor(Qt::white).rgb());
    }

    void borderAndPseudoStates()
    {
        auto framed = surface("framed");
        QImage shot = render(*framed);
        QCOMPARE(shot.pixel(0, 30), QColor(Qt::red).rgb());
        QCOMPARE(shot.pixel(50, 30), QColor(Qt::white).rgb());

        auto s = surface("surface");
        QCOMPARE(render(*s).pixel(100, 50), QColor(0, 0, 0x80).rgb());
        s->setPseudoState(QStringLiteral("alt"));
        QCOMPARE(render(*s).pixel(100, 50), QColor(0, 0x80, 0).rgb());
        s->setPseudoState(QString());
        QCOMPARE(render(*s).pixel(100, 50), QColor(0, 0, 0x80).rgb());
    }

    void withoutStyleTheSurfaceCollapses()
    {
        CTavoLayoutWidget s(nullptr);
        s.setObjectName("nobody");
        s.resize(50, 50);
        s.layout();
        QCOMPARE(s.pos(), QPoint(0, 0));
        QVERIFY(s.width() <= 1 && s.height() <= 1);
        // Null texts change nothing.
        s.updateStyle(nullptr, nullptr, true);
        QVERIFY(s.width() <= 1);
        // Input widgets take a Qt style sheet as well.
        QString sheet = "CTavoInput { color: #ff0000; }";
        QString attributes;
        s.updateStyle(sheet, attributes, true);
        QVERIFY(s.styleSheet()->get("CTavoInput"));
        QVERIFY(s.QWidget::styleSheet().contains("CTavoInput"));
    }

    void pressAndReleaseReachDirectChildButtons()
    {
        auto s = surface("surface");
        CTavoButton* a = button(s.get(), QRect(10, 10, 60, 40), "a");
        CTavoButton* nested = button(s.get(), QRect(100, 10, 60, 40), "nested");
        nested->setParent(a);
        showAndWait(s.get());
        QSignalSpy clicksA(a, &CTavoButton::buttonClicked);
        QSignalSpy clicksNested(nested, &CTavoButton::buttonClicked);
        QSignalSpy pressed(s.get(), &CTavoLayoutWidget::pressedButtonChanged);

        // A button whose parent is not the surface is not routed.
        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(120, 20));
        QTest::mouseRelease(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(120, 20));
        QCOMPARE(clicksNested.count(), 0);
        QCOMPARE(pressed.count(), 0);

        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QVERIFY(a->isDown());
        QCOMPARE(s->pressedButton(), a);
        QCOMPARE(pressed.count(), 1);
        QCOMPARE(pressed.at(0).at(0).value<CTavoButton*>(), a);
        QCOMPARE(clicksA.count(), 1);
        QCOMPARE(clicksA.at(0).at(0).toString(), QString("press:a"));

        QTest::mouseRelease(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QVERIFY(!a->isDown());
        QVERIFY(!s->pressedButton());
        QCOMPARE(pressed.count(), 2);
        QCOMPARE(clicksA.count(), 2);
        QCOMPARE(clicksA.at(1).at(0).toString(), QString("click:a"));
        QCOMPARE(clicksA.at(1).at(1).toString(), QString("data"));

        // A release with nothing pressed sends no click.
        QTest::mouseRelease(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(200 - 1, 99));
        QCOMPARE(clicksA.count(), 2);
    }

    void holdingFiresOnceAndSwallowsTheClick()
    {
        auto s = surface("surface");
        CTavoButton* a = button(s.get(), QRect(10, 10, 60, 40), "a");
        showAndWait(s.get());
        QSignalSpy clicks(a, &CTavoButton::buttonClicked);

        // A quick tap: the timer is stopped by the release.
        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QTest::mouseRelease(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20), 50);
        QTest::qWait(1200);
        QCOMPARE(clicks.count(), 2);

        clicks.clear();
        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QTest::qWait(700);
        QCOMPARE(clicks.count(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(clicks.count(), 2, 1500);
        QCOMPARE(clicks.at(1).at(0).toString(), QString("hold:a"));
        QCOMPARE(clicks.at(1).at(1).toString(), QString("held"));
        QTest::mouseRelease(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QCOMPARE(clicks.count(), 2);
        QVERIFY(!a->isDown());
    }

    void leavingTheButtonCancelsThePress()
    {
        auto s = surface("surface");
        CTavoButton* a = button(s.get(), QRect(10, 10, 60, 40), "a");
        showAndWait(s.get());
        QSignalSpy clicks(a, &CTavoButton::buttonClicked);
        QSignalSpy events(s.get(), &CTavoLayoutWidget::layoutWidgetSignal);
        QSignalSpy pressed(s.get(), &CTavoLayoutWidget::pressedButtonChanged);

        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        move(s.get(), QPoint(30, 25));  // still inside
        QCOMPARE(events.count(), 0);
        move(s.get(), QPoint(150, 80));
        move(s.get(), QPoint(160, 85));
        QCOMPARE(events.count(), 1);
        QCOMPARE(events.at(0).at(0).toString(), QString("button-cancelled"));
        QCOMPARE(events.at(0).at(1).toString(), QString());
        QVERIFY(!a->isDown());
        QVERIFY(!s->pressedButton());
        QCOMPARE(pressed.last().at(0).value<CTavoButton*>(), static_cast<CTavoButton*>(nullptr));
        QTest::mouseRelease(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(160, 85));
        QCOMPARE(clicks.count(), 1);  // the press only
        // The hold timer went with it.
        QTest::qWait(1200);
        QCOMPARE(clicks.count(), 1);

        // The pointer leaving the surface cancels as well.
        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QVERIFY(a->isDown());
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(s.get(), &leave);
        QVERIFY(!a->isDown());
        QVERIFY(!s->pressedButton());
        QTest::mouseRelease(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QCOMPARE(clicks.count(), 2);
    }

    void pressingAnotherButtonReleasesTheFirst()
    {
        auto s = surface("surface");
        CTavoButton* a = button(s.get(), QRect(10, 10, 60, 40), "a");
        CTavoButton* b = button(s.get(), QRect(100, 10, 60, 40), "b");
        showAndWait(s.get());
        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QVERIFY(a->isDown());
        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(110, 20));
        QVERIFY(!a->isDown());
        QVERIFY(b->isDown());
        QCOMPARE(s->pressedButton(), b);
    }

    void animationsBlockInput()
    {
        auto s = surface("animated");
        CTavoButton* a = button(s.get(), QRect(10, 10, 60, 40), "a");
        QSignalSpy clicks(a, &CTavoButton::buttonClicked);
        QSignalSpy shown(s.get(), &CTavoLayoutWidget::shown);
        QSignalSpy hidden(s.get(), &CTavoLayoutWidget::hidden);
        QVERIFY(s->getAnimation("show-animation"));
        QVERIFY(s->getAnimation("hide-animation"));
        QVERIFY(!s->getAnimation("other"));

        s->Show(true);
        QCOMPARE(shown.count(), 1);
        QVERIFY(s->isReadyToShow());
        QVERIFY(!s->isInputEnabled());
        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QTest::mouseRelease(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QCOMPARE(clicks.count(), 0);
        QTRY_VERIFY(s->isInputEnabled());
        QCOMPARE(s->pos(), QPoint(0, 0));
        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QTest::mouseRelease(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        QCOMPARE(clicks.count(), 2);

        // Hiding animated: hidden at once and again at the end, input off meanwhile.
        s->Hide(true);
        QCOMPARE(hidden.count(), 1);
        QVERIFY(s->isVisible());
        QVERIFY(!s->isInputEnabled());
        QTRY_VERIFY(!s->isVisible());
        QCOMPARE(hidden.count(), 2);
        QVERIFY(s->isInputEnabled());

        // A hidden surface hides nothing more.
        s->Hide(false);
        QCOMPARE(hidden.count(), 2);

        // Showing a visible surface puts it where the show would have ended.
        s->Show(false);
        s->move(0, 40);
        s->Show(false);
        QCOMPARE(s->pos(), QPoint(0, 0));
        QCOMPARE(shown.count(), 3);
    }

    void hideWithoutAnimationIsImmediate()
    {
        auto s = surface("surface");
        QSignalSpy hidden(s.get(), &CTavoLayoutWidget::hidden);
        showAndWait(s.get());
        s->Hide(true);
        QVERIFY(!s->isVisible());
        QCOMPARE(hidden.count(), 1);
        QVERIFY(s->isInputEnabled());
    }

    void paneDragNeedsTheThreshold()
    {
        auto s = surface("surface");
        showAndWait(s.get());
        QSignalSpy started(s.get(), &CTavoLayoutWidget::paneDragStarted);
        QSignalSpy dragged(s.get(), &CTavoLayoutWidget::paneDragged);
        QSignalSpy stopped(s.get(), &CTavoLayoutWidget::paneDragStopped);

        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(10, 50));
        move(s.get(), QPoint(12, 50));   // the first move sets the start
        move(s.get(), QPoint(52, 90));   // 40: not beyond; y plays no part
        QCOMPARE(started.count(), 0);
        move(s.get(), QPoint(53, 10));
        QCOMPARE(started.count(), 1);
        QCOMPARE(started.at(0).at(0).toPoint(), s->mapToGlobal(QPoint(53, 10)));
        QVERIFY(s->isPaneDragging());
        move(s.get(), QPoint(60, 10));
        QCOMPARE(dragged.count(), 1);
        QCOMPARE(dragged.at(0).at(0).toPoint(), s->mapToGlobal(QPoint(60, 10)));
        QTest::mouseRelease(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(60, 10));
        QCOMPARE(stopped.count(), 1);
        QCOMPARE(stopped.at(0).at(0).toDouble(), 7.0);
        QVERIFY(!s->isPaneDragging());

        // Leftwards counts as well.
        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(150, 50));
        move(s.get(), QPoint(150, 50));
        move(s.get(), QPoint(100, 50));
        QCOMPARE(started.count(), 2);
        QTest::mouseRelease(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(100, 50));
        QCOMPARE(stopped.count(), 2);
    }

    void cancelledDragIgnoresTheRestOfTheFinger()
    {
        auto s = surface("surface");
        showAndWait(s.get());
        QSignalSpy started(s.get(), &CTavoLayoutWidget::paneDragStarted);
        QSignalSpy stopped(s.get(), &CTavoLayoutWidget::paneDragStopped);
        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(10, 50));
        move(s.get(), QPoint(10, 50));
        s->paneDragCancelled();
        move(s.get(), QPoint(150, 50));
        move(s.get(), QPoint(190, 50));
        QCOMPARE(started.count(), 0);
        QTest::mouseRelease(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(190, 50));
        QCOMPARE(stopped.count(), 0);
        // The next finger drags again.
        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(10, 50));
        move(s.get(), QPoint(10, 50));
        move(s.get(), QPoint(100, 50));
        QCOMPARE(started.count(), 1);
        QTest::mouseRelease(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(100, 50));
    }

    void silentSkinNeverDrags()
    {
        auto s = surface("plain");
        showAndWait(s.get());
        QCOMPARE(s->paneDragThreshold(), 65535u);
        QSignalSpy started(s.get(), &CTavoLayoutWidget::paneDragStarted);
        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(0, 50));
        for (int x = 0; x < 200; x += 20)
            move(s.get(), QPoint(x, 50));
        move(s.get(), QPoint(-30000, 50));
        QTest::mouseRelease(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(199, 50));
        QCOMPARE(started.count(), 0);
    }

    void rebootSwallowsEverything()
    {
        auto s = surface("surface");
        CTavoButton* a = button(s.get(), QRect(10, 10, 60, 40), "a");
        showAndWait(s.get());
        QSignalSpy clicks(a, &CTavoButton::buttonClicked);
        bRebootInitiated = true;
        QTest::mousePress(s.get(), Qt::LeftButton, Qt::NoModifier, QPoint(20, 20));
        bRebootInitiated = false;
        QCOMPARE(clicks.count(), 0);
    }

    void paneShowDirections()
    {
        auto s = surface("surface");
        QSignalSpy panes(s.get(), &CTavoLayoutWidget::paneShow);
        s->startDragging(3);
        s->startDragging(4);
        s->startDragging(1);
        QCOMPARE(panes.count(), 2);
        QCOMPARE(panes.at(0).at(1).value<Qt::ArrowType>(), Qt::RightArrow);
        QCOMPARE(panes.at(1).at(1).value<Qt::ArrowType>(), Qt::LeftArrow);
    }

    void movingAlong()
    {
        auto s = surface("framed");
        QPoint to(100, 50);
        s->moveAlong(to, "anything", QPoint(5, 5));
        QCOMPARE(s->pos(), QPoint(100, 50));
        QCOMPARE(s->anchor(), QPoint(100, 50));
        s->moveAlong(to, "moving", QPoint(-10, 3));
        QCOMPARE(s->pos(), QPoint(90, 53));
        // "connected" adds the style's own location.
        QString sheet = "CTavoLayoutWidget#framed { size: 10x10; location: 7:8; }";
        QString attributes;
        s->updateStyle(sheet, attributes, false);
        s->moveAlong(to, "connected", QPoint());
        QCOMPARE(s->pos(), QPoint(107, 58));
    }

    void onTopAmongSiblings()
    {
        QWidget owner;
        owner.resize(300, 300);
        auto* below = new CTavoLayoutWidget(&owner);
        auto* above = new CTavoLayoutWidget(&owner);
        below->setGeometry(0, 0, 200, 200);
        above->setGeometry(20, 20, 160, 160);
        owner.show();
        below->Show();
        QVERIFY(below->isOnTop());  // the later sibling is hidden
        above->Show();
        QVERIFY(!below->isOnTop());
        QVERIFY(above->isOnTop());
        // Covering only a corner of the test area is not covering.
        above->setGeometry(0, 0, 90, 90);
        QVERIFY(below->isOnTop());
        CTavoLayoutWidget alone(nullptr);
        QVERIFY(alone.isOnTop());
    }
};

QTEST_MAIN(TestLayoutWidget)
#include "tst_layoutwidget.moc"
