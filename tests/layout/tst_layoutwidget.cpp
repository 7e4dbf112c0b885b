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

Q_DECLARE_METATYPE(QList<QPoint>)

namespace {

// Fills its box; optionally spills over the whole surface, to show whether it
// was asked to paint at all.
class Box : public CTavoWidget
{
public:
    Box(QWidget* parent, const QRect& area, QColor colour, bool spill = false)
        : CTavoWidget(parent, 0, area.x(), area.y(), area.width(), area.height())
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

QRgb render(QWidget& widget, const QPoint& at, const QRegion& region = QRegion())
{
    QImage image(widget.size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    widget.render(&image, region.isEmpty() ? QPoint() : region.boundingRect().topLeft(), region,
                  QWidget::RenderFlags());
    return image.pixel(at);
}

void send(QWidget* widget, QEvent::Type type, const QPoint& pos)
{
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, pos, widget->mapToGlobal(pos), button, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}
void press(QWidget* w, const QPoint& pos) { QTest::mousePress(w, Qt::LeftButton, Qt::NoModifier, pos); }
void release(QWidget* w, const QPoint& pos) { QTest::mouseRelease(w, Qt::LeftButton, Qt::NoModifier, pos); }
void move(QWidget* w, const QPoint& pos) { send(w, QEvent::MouseMove, pos); }
void tap(QWidget* w, const QPoint& pos)
{
    press(w, pos);
    release(w, pos);
}

const QRgb kNavy = qRgb(0, 0, 0x80);
const QPoint kOnA(20, 20);

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

    std::unique_ptr<CTavoLayoutWidget> surface(const char* name, bool shown = false)
    {
        std::unique_ptr<CTavoLayoutWidget> s(new CTavoLayoutWidget(nullptr));
        s->setObjectName(QString::fromLatin1(name));
        QString sheet = QString::fromLatin1(kSheet);
        QString attributes;
        s->updateStyle(sheet, attributes, true);
        if (shown) {
            s->Show(false);
            [&] { QVERIFY(QTest::qWaitForWindowExposed(s.get())); }();
        }
        return s;
    }

    // Button "a" at (10, 10, 60, 40) unless told otherwise.
    CTavoButton* button(CTavoLayoutWidget* parent, const QString& name = "a", const QRect& area = QRect(10, 10, 60, 40))
    {
        TavoButtonSettings settings;
        settings.set(name, name, "click:" + name, "hold:" + name, "press:" + name, CTavoIconDefinition(),
                     QString(), 1);
        auto* b = new CTavoButton(parent);
        b->init(&settings, QStringLiteral("data"), -1, false);
        b->setgeo(area);
        return b;
    }

private slots:
    void createdHiddenWithItsStyleApplied()
    {
        const int before = CTavoLayoutWidget::count();
        auto s = surface("surface");
        QCOMPARE(CTavoLayoutWidget::count(), before + 1);
        QVERIFY(!s->isVisible() && !s->isReadyToShow());
        QCOMPARE(s->geometry(), QRect(0, 0, 200, 100));
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
        new Box(s.get(), QRect(70, 20, 50, 50), Qt::green);
        auto* hidden = new Box(s.get(), QRect(0, 0, 200, 100), Qt::black);
        hidden->setVisible(false);
        nested->setParent(first);  // painted after its parent, before the parent's later sibling
        QCOMPARE(render(*s, {5, 5}), kNavy);
        QCOMPARE(render(*s, {15, 15}), QColor(Qt::red).rgb());
        QCOMPARE(render(*s, {45, 45}), QColor(Qt::yellow).rgb());
        QCOMPARE(render(*s, {75, 45}), QColor(Qt::green).rgb());
        QCOMPARE(hidden->paints, 0);
    }

    void onlyWidgetsMeetingTheUpdateAreaPaint()
    {
        auto s = surface("surface");
        auto* left = new Box(s.get(), QRect(0, 0, 20, 20), Qt::red);
        auto* spill = new Box(s.get(), QRect(150, 0, 20, 20), Qt::magenta, true);

        // Left half only: the spilling box lies outside and is not asked.
        QCOMPARE(render(*s, {10, 10}, QRegion(0, 0, 100, 100)), QColor(Qt::red).rgb());
        QCOMPARE(spill->paints, 0);
        QCOMPARE(left->paints, 1);
        // Its own area: it paints, but nothing lands outside the area.
        QCOMPARE(render(*s, {145, 10}, QRegion(140, 0, 60, 50)), QColor(Qt::magenta).rgb());
        QCOMPARE(render(*s, {145, 60}, QRegion(140, 0, 60, 50)), QColor(Qt::white).rgb());
        QCOMPARE(spill->paints, 2);
    }

    void borderAndPseudoStates()
    {
        auto framed = surface("framed");
        QCOMPARE(render(*framed, {0, 30}), QColor(Qt::red).rgb());
        QCOMPARE(render(*framed, {50, 30}), QColor(Qt::white).rgb());

        auto s = surface("surface");
        s->setPseudoState(QStringLiteral("alt"));
        QCOMPARE(render(*s, {100, 50}), qRgb(0, 0x80, 0));
        s->setPseudoState(QString());
        QCOMPARE(render(*s, {100, 50}), kNavy);
    }

    void withoutStyleTheSurfaceCollapses()
    {
        CTavoLayoutWidget s(nullptr);
        s.setObjectName("nobody");
        s.resize(50, 50);
        s.layout();
        QCOMPARE(s.pos(), QPoint(0, 0));
        QVERIFY(s.width() <= 1 && s.height() <= 1);
        s.updateStyle(nullptr, nullptr, true);  // null texts change nothing
        // Input widgets take a Qt style sheet as well.
        QString sheet = "CTavoInput { color: #ff0000; }";
        QString attributes;
        s.updateStyle(sheet, attributes, true);
        QVERIFY(s.styleSheet()->get("CTavoInput"));
        QVERIFY(s.QWidget::styleSheet().contains("CTavoInput"));
    }

    // Clicks, holds, cancelling by moving out and routing to direct children
    // only are proven with the buttons' own tests; here: the surface's record.
    void pressedButtonIsTracked()
    {
        auto s = surface("surface", true);
        CTavoButton* a = button(s.get());
        CTavoButton* b = button(s.get(), "b", QRect(100, 10, 40, 40));
        QSignalSpy clicks(a, &CTavoButton::buttonClicked);
        QSignalSpy pressed(s.get(), &CTavoLayoutWidget::pressedButtonChanged);

        press(s.get(), kOnA);
        QCOMPARE(pressed.count(), 1);
        QCOMPARE(pressed.at(0).at(0).value<CTavoButton*>(), a);
        // Pressing another button lets go of the first.
        press(s.get(), QPoint(110, 20));
        QVERIFY(!a->isDown() && b->isDown());
        QCOMPARE(s->pressedButton(), b);
        release(s.get(), QPoint(110, 20));
        QVERIFY(!s->pressedButton());
        QCOMPARE(pressed.last().at(0).value<CTavoButton*>(), static_cast<CTavoButton*>(nullptr));

        // A release stops the hold timer.
        tap(s.get(), kOnA);
        QTest::qWait(1200);
        QCOMPARE(clicks.count(), 3);
        QCOMPARE(clicks.last().at(1).toString(), QString("data"));

        // The pointer leaving the surface cancels the press.
        press(s.get(), kOnA);
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(s.get(), &leave);
        QVERIFY(!a->isDown() && !s->pressedButton());
        QCOMPARE(pressed.last().at(0).value<CTavoButton*>(), static_cast<CTavoButton*>(nullptr));
        release(s.get(), kOnA);
        QCOMPARE(clicks.count(), 4);

        // A double click reaches the button but is no press of the surface's own.
        send(s.get(), QEvent::MouseButtonDblClick, kOnA);
        QVERIFY(a->isDown() && !s->pressedButton());
        release(s.get(), kOnA);

        // While rebooting the surface swallows everything.
        bRebootInitiated = true;
        press(s.get(), kOnA);
        bRebootInitiated = false;
        QVERIFY(!a->isDown() && !s->pressedButton());
    }

    void animationsBlockInput()
    {
        auto s = surface("animated");
        CTavoButton* a = button(s.get());
        QSignalSpy clicks(a, &CTavoButton::buttonClicked);
        QSignalSpy shown(s.get(), &CTavoLayoutWidget::shown);
        QSignalSpy hidden(s.get(), &CTavoLayoutWidget::hidden);
        QVERIFY(s->getAnimation("show-animation") && s->getAnimation("hide-animation"));
        QVERIFY(!s->getAnimation("other"));

        s->Show(true);
        QCOMPARE(shown.count(), 1);
        QVERIFY(s->isReadyToShow());
        tap(s.get(), kOnA);
        QCOMPARE(clicks.count(), 0);
        QTRY_VERIFY(s->isInputEnabled());
        QCOMPARE(s->pos(), QPoint(0, 0));
        tap(s.get(), kOnA);
        QCOMPARE(clicks.count(), 2);

        // Hiding animated: hidden at once and again at the end, input off meanwhile.
        s->Hide(true);
        QCOMPARE(hidden.count(), 1);
        QVERIFY(s->isVisible() && !s->isInputEnabled());
        QTRY_VERIFY(!s->isVisible());
        QCOMPARE(hidden.count(), 2);
        QVERIFY(s->isInputEnabled());
        s->Hide(false);  // a hidden surface hides nothing more
        QCOMPARE(hidden.count(), 2);

        // Showing a visible surface puts it where the show would have ended.
        s->Show(false);
        s->move(0, 40);
        s->Show(false);
        QCOMPARE(s->pos(), QPoint(0, 0));
        QCOMPARE(shown.count(), 3);

        // Without a hide animation hiding is immediate.
        auto plain = surface("surface", true);
        QSignalSpy plainHidden(plain.get(), &CTavoLayoutWidget::hidden);
        plain->Hide(true);
        QVERIFY(!plain->isVisible() && plain->isInputEnabled());
        QCOMPARE(plainHidden.count(), 1);
    }

    void paneDrag_data()
    {
        QTest::addColumn<QByteArray>("skin");
        QTest::addColumn<QList<QPoint>>("finger");  // press, moves, release at the last
        QTest::addColumn<int>("cancelAfter");        // moves before paneDragCancelled
        QTest::addColumn<int>("startsAt");           // index of the move that starts, or -1
        QTest::addColumn<int>("drags");
        QTest::addColumn<double>("velocity");
        // The first move sets the start; 40 is not beyond the threshold; y plays no part.
        QTest::newRow("rightwards") << QByteArray("surface")
                                    << QList<QPoint>{{10, 50}, {12, 50}, {52, 90}, {53, 10}, {60, 10}} << -1
                                    << 3 << 1 << 7.0;
        QTest::newRow("leftwards") << QByteArray("surface") << QList<QPoint>{{150, 50}, {150, 50}, {100, 50}}
                                   << -1 << 2 << 0 << -50.0;
        QTest::newRow("cancelled") << QByteArray("surface") << QList<QPoint>{{10, 50}, {10, 50}, {190, 50}} << 1
                                   << -1 << 0 << 0.0;
        QTest::newRow("silent skin") << QByteArray("plain")
                                     << QList<QPoint>{{0, 50}, {0, 50}, {199, 50}, {-30000, 50}} << -1 << -1
                                     << 0 << 0.0;
    }

    void paneDrag()
    {
        QFETCH(QByteArray, skin);
        QFETCH(QList<QPoint>, finger);
        QFETCH(int, cancelAfter);
        QFETCH(int, startsAt);
        auto s = surface(skin.constData(), true);
        QSignalSpy started(s.get(), &CTavoLayoutWidget::paneDragStarted);
        QSignalSpy dragged(s.get(), &CTavoLayoutWidget::paneDragged);
        QSignalSpy stopped(s.get(), &CTavoLayoutWidget::paneDragStopped);
        int starts = 0;
        for (int round = 0; round < 2; ++round) {
            press(s.get(), finger.first());
            for (int i = 1; i < finger.size(); ++i) {
                move(s.get(), finger.at(i));
                if (i == cancelAfter && round == 0)
                    s->paneDragCancelled();
            }
            release(s.get(), finger.last());
            starts += startsAt >= 0 ? 1 : 0;
            QCOMPARE(started.count(), starts);
            QCOMPARE(stopped.count(), starts);
            if (startsAt >= 0)
                QCOMPARE(started.last().first().toPoint(), s->mapToGlobal(finger.at(startsAt)));
            QTEST(dragged.count(), "drags");
            if (startsAt >= 0 && round == 0)
                QTEST(stopped.last().first().toDouble(), "velocity");
            QVERIFY(!s->isPaneDragging());
            if (cancelAfter < 0)
                break;
            // The next finger drags again.
            startsAt = finger.size() - 1;
        }
    }

    void paneShowAndMovingAlong()
    {
        auto s = surface("framed");
        QSignalSpy panes(s.get(), &CTavoLayoutWidget::paneShow);
        for (int direction : {3, 4, 1})
            s->startDragging(direction);
        QCOMPARE(panes.count(), 2);
        QCOMPARE(panes.at(0).at(1).value<Qt::ArrowType>(), Qt::RightArrow);
        QCOMPARE(panes.at(1).at(1).value<Qt::ArrowType>(), Qt::LeftArrow);

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
        QVERIFY(!below->isOnTop() && above->isOnTop());
        // Covering only a corner of the test area is not covering.
        above->setGeometry(0, 0, 90, 90);
        QVERIFY(below->isOnTop());
        CTavoLayoutWidget alone(nullptr);
        QVERIFY(alone.isOnTop());
    }
};

QTEST_MAIN(TestLayoutWidget)
#include "tst_layoutwidget.moc"
