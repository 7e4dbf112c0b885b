// The object tree's base: geometry against the design size, style look-up and
// layout, pseudo states, the press cross-fade, show animations and painting.
#include <QtTest>
#include <QPainter>
#include <QPropertyAnimation>
#include <QWidget>

#include "style/CTavoStyleSheet.h"
#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoWidget.h"

// Records what the base hands to the overridable hooks.
class CTestWidget : public CTavoWidget
{
    Q_OBJECT
public:
    explicit CTestWidget(QWidget* parent = nullptr, int x = 0, int y = 0, int w = 0, int h = 0)
        : CTavoWidget(parent, 2, x, y, w, h)
    {
    }
    void layout() override
    {
        ++layouts;
        CTavoWidget::layout();
    }
    void repositionAllElements(int dx, int dy) override { repositions.append(QPoint(dx, dy)); }
    void reSizeAllElementsBy(float fx, float fy) override { resizes.append(qMakePair(fx, fy)); }

    int layouts = 0;
    QList<QPoint> repositions;
    QList<QPair<float, float>> resizes;
};

// A surface that remembers the rectangles it was asked to repaint.
class CRecordingSurface : public QWidget
{
public:
    QRegion requested;
protected:
    void paintEvent(QPaintEvent* event) override { requested += event->region(); }
};

class TestWidgetBase : public QObject
{
    Q_OBJECT
    CTavoStyleSheet m_sheet;

    // A widget of 10x10 styled by `style`.
    CTestWidget* styled(const char* style)
    {
        m_sheet.set(style, "");
        CTestWidget* widget = new CTestWidget(nullptr, 0, 0, 10, 10);
        widget->setParent(this);
        widget->setStyleSheet(&m_sheet, true);
        return widget;
    }
    // The colour at (5, 5) after `paint` on a canvas filled with `fill`.
    template <typename Paint>
    static QColor paintedAt(QColor fill, Paint paint, QPoint at = QPoint(5, 5))
    {
        QImage image(12, 12, QImage::Format_ARGB32_Premultiplied);
        image.fill(fill);
        QPainter painter(&image);
        paint(painter);
        painter.end();
        return image.pixelColor(at);
    }

private slots:
    void init() { CTavoWidgetStyle::resetScaling(); }
    void cleanup() { qDeleteAll(findChildren<CTestWidget*>()); }

    void geometryFollowsTheDesignSize()
    {
        CTestWidget widget(nullptr, 10, 10, 15, 25);
        // An unchanged size still becomes the design size, and moves nothing.
        widget.setSize(QSize(15, 25), true);
        QCOMPARE(widget.designSize(), QSize(15, 25));
        QVERIFY(widget.repositions.isEmpty());
        // 7.5 and 12.5 round half away from zero; repeated calls do not drift.
        widget.sizeBy(0.5f, 0.5f);
        widget.sizeBy(0.5f, 0.5f);
        QCOMPARE(widget.geo(), QRect(10, 10, 8, 13));
        QCOMPARE(widget.contentRect(), QRect(10, 10, 8, 13));
        QCOMPARE(widget.resizes.last(), qMakePair(0.5f, 0.5f));
        QCOMPARE(widget.repositions.last(), QPoint(0, 0));

        widget.setgeo(QRect(5, 7, 30, 50));
        QCOMPARE(widget.resizes.last(), qMakePair(2.0f, 2.0f));
        QCOMPARE(widget.repositions.last(), QPoint(-5, -3));
        CTestWidget undesigned(nullptr, 0, 0, 10, 10);
        QVERIFY(undesigned.setProperty("geometry", QRect(1, 2, 20, 20)));
        QCOMPARE(undesigned.resizes.last(), qMakePair(0.0f, 0.0f));
        QCOMPARE(undesigned.property("geometry").toRect(), QRect(1, 2, 20, 20));

        widget.setContentRect(QRect(7, 9, 6, 6));
        widget.move(10, 20);
        QCOMPARE(widget.contentRect(), QRect(12, 22, 6, 6));
        QCOMPARE(widget.repositions.last(), QPoint(5, 13));
        const int moves = widget.repositions.size();
        widget.move(10, 20);
        QCOMPARE(widget.repositions.size(), moves);
        widget.moveBy(-5, 1);
        QVERIFY(widget.setProperty("pos", widget.pos() + QPoint(0, 1)));
        QCOMPARE(widget.geo(), QRect(5, 22, 30, 50));
        // A null content area is computed afresh from the geometry.
        widget.setContentRect(QRect());
        widget.move(0, 0);
        QCOMPARE(widget.contentRect(), QRect(0, 0, 30, 50));

        QWidget top;
        QWidget surface(&top);
        surface.move(30, 40);
        CTestWidget child(&surface, 5, 6, 10, 11);
        QCOMPARE(child.geoParent(), QRect(35, 46, 10, 11));
    }

    void layoutReadsItsKeysFromTheSheet()
    {
        CTestWidget* widget = styled("CTestWidget { size: 100x40; location: 10:20; padding: 2; margin: 1; "
                                     "border: 3px solid #ff0000; render-quality: highq; layout-type: vertical; "
                                     "size-minimum: 50x10; up-duration: 200; }");
        QCOMPARE((QVariantList{widget->layouts, widget->geo(), widget->designSize(), widget->renderQuality(),
                               widget->minimumSize(), widget->maximumSize(), widget->borderPen().color(),
                               widget->lastLayoutRect()}),
                 (QVariantList{1, QRect(10, 20, 100, 40), QSize(100, 40), 1, QSize(50, 10), QSize(50, 10),
                               QColor(255, 0, 0), QRect(10, 20, 100, 40)}));
        QCOMPARE(widget->property("contentRect").toRect(), m_sheet.get("CTestWidget")->contentRect(widget->geo()));
        QVERIFY(widget->contentRect().width() < 100);

        // A silent block: defaults, the minimum is the present size.
        widget = styled("CTestWidget { color: red; }");
        QCOMPARE((QVariantList{widget->layoutType(), widget->renderQuality(), widget->maximumSize()}),
                 (QVariantList{1, 2, QSize(10, 10)}));
        QVERIFY(!widget->backgroundBrush() && widget->backgroundImage().isNull() && !widget->pressAnimation());

        // No size anywhere: the minimum fills a zero box.
        CTestWidget empty(nullptr, 5, 5, 0, 0);
        empty.setStyleSheet(&m_sheet, false);
        m_sheet.set("CTestWidget { size-minimum: 24x12; }", "");
        empty.layout();
        QCOMPARE(empty.lastLayoutRect(), QRect(5, 5, 24, 12));

        // No sheet: only the geometry is copied.
        CTestWidget bare(nullptr, 3, 4, 50, 60);
        bare.layout();
        QVERIFY(!bare.styleSheet() && !bare.style());
        QCOMPARE(bare.lastLayoutRect(), QRect(3, 4, 50, 60));
        QCOMPARE(bare.minimumSize(), QSize(-1, -1));
    }

    void sheetsAndPseudoStatesLayOutOnlyOnChange()
    {
        m_sheet.set("CTavoWidget { size: 11x11; } CTestWidget#title { size: 22x22; location: 1:1; } "
                    "CTestWidget:pressed { size: 33x33; location: 50:60; }", "");
        CTestWidget widget;
        widget.setStyleSheet(nullptr, true);
        widget.setStyleSheet(&m_sheet, false);
        QCOMPARE(widget.layouts, 0);
        QCOMPARE(widget.styleSheet(), &m_sheet);
        widget.setObjectName("title");
        widget.setPseudoState("pressed", true);
        QCOMPARE(widget.geo(), QRect(0, 0, 33, 33));
        widget.setPseudoState("pressed");
        QCOMPARE(widget.layouts, 1);
        widget.setPseudoState(QString());
        QCOMPARE(widget.geo(), QRect(1, 1, 22, 22));
        widget.setPseudoState("pressed");
        QCOMPARE(widget.geo(), QRect(50, 60, 33, 33));

        CTestWidget plain;
        CTestWidget* kept = new CTestWidget;
        CTestWidget* gone = new CTestWidget;
        plain.addSubWidget(kept);
        plain.addSubWidget(gone);
        delete gone;
        plain.setStyleSheet(&m_sheet, true);
        QCOMPARE(plain.size(), QSize(11, 11));
        QCOMPARE(kept->size(), QSize(11, 11));
        QCOMPARE(plain.layouts + kept->layouts, 2);
        delete kept;
    }

    void pressFadesUpTwiceAsFastAsItFallsBack()
    {
        CTestWidget plain(nullptr, 0, 0, 10, 10);
        plain.setDown(true);
        QCOMPARE(plain.pressedBackgroundOpacity(), 1.0f);
        plain.setFocused(true);
        plain.setFocused(false);
        QVERIFY(!plain.isDown());
        QCOMPARE(plain.pressedBackgroundOpacity(), 0.0f);

        CTestWidget* widget = styled("CTestWidget { up-duration: 200; }");
        QPropertyAnimation* fade = widget->pressAnimation();
        QVERIFY(fade);
        widget->setDown(true);
        QCOMPARE(fade->duration(), 100);
        QCOMPARE(fade->state(), QAbstractAnimation::Running);
        QTRY_COMPARE_WITH_TIMEOUT(widget->pressedBackgroundOpacity(), 1.0f, 2000);
        widget->setDown(false);
        QCOMPARE(fade->duration(), 200);
        QTest::qWait(60);
        const float midway = widget->pressedBackgroundOpacity();
        QVERIFY2(midway < 1.0f && midway > 0.0f, qPrintable(QString::number(midway)));
        QTRY_COMPARE_WITH_TIMEOUT(widget->pressedBackgroundOpacity(), 0.0f, 2000);
    }

    void pressedLayerCrossFadesOverTheResting()
    {
        CTestWidget* widget = styled("CTestWidget { background: #000000; background-focused: #ffffff; }");
        widget->setOpacity(0.8f);
        widget->setPressedBackgroundOpacity(0.5f);
        // White at 0.5 * 0.8 over black; the painter is left at the widget's opacity.
        const QColor seen = paintedAt(Qt::black, [&](QPainter& p) {
            widget->paint(&p);
            QCOMPARE(p.opacity(), qreal(0.8f));
        });
        QVERIFY2(qAbs(seen.red() - 102) <= 2, qPrintable(seen.name()));

        // Fully pressed, no focus brush, no pressed image: the resting layer is skipped.
        widget = styled("CTestWidget { background: #ff0000; }");
        widget->setDown(true);
        QCOMPARE(paintedAt(Qt::blue, [&](QPainter& p) { widget->paintBackgroundImage(&p); }), QColor(Qt::blue));
        // Dimming keeps it and lays a quarter-black veil over it.
        widget->setDimWhenPressed(true);
        const QColor dim = paintedAt(Qt::white, [&](QPainter& p) { widget->paintBackgroundImage(&p); });
        QVERIFY2(qAbs(dim.red() - 191) <= 2 && dim.green() == 0, qPrintable(dim.name()));

        widget->setVisible(false);
        widget->paint(nullptr);
        widget->paintBackgroundImage(nullptr);
        QCOMPARE(paintedAt(Qt::white, [&](QPainter& p) { widget->paint(&p); }), QColor(Qt::white));
    }

    void flatBackgroundFollowsFocusBorderAndPress()
    {
        CTestWidget* widget = styled(
            "CTestWidget { background: #ff0000; background-focused: #00ff00; border: 1px solid #0000ff; }");
        QRect inner(2, 2, 6, 6);
        auto paint = [&](QPoint at) {
            return paintedAt(Qt::white, [&](QPainter& p) { widget->paintBackground(&p, &inner); }, at);
        };
        QCOMPARE(paint(QPoint(4, 4)), QColor(255, 0, 0));
        QCOMPARE(paint(QPoint(0, 5)), QColor(0, 0, 255));
        QCOMPARE(paint(QPoint(1, 1)), QColor(Qt::white));
        widget->setFocused(true);
        QCOMPARE(paint(QPoint(4, 4)), QColor(0, 255, 0));
        // Down with a focus brush and no pressed images: the whole box takes it.
        widget->setFocusBackground(false);
        widget->setDown(true);
        QCOMPARE(paint(QPoint(1, 1)), QColor(0, 255, 0));
        widget->paintBackground(nullptr);
    }

    void renderQualityMapsToHints_data()
    {
        QTest::addColumn<QByteArray>("keyword");
        QTest::addColumn<int>("hints");
        QTest::newRow("maxq") << QByteArray("maxq") << 7;
        QTest::newRow("highq") << QByteArray("highq") << 3;
        QTest::newRow("normalq") << QByteArray("normalq") << 0;
        QTest::newRow("lowq") << QByteArray("lowq") << 0;
    }
    void renderQualityMapsToHints()
    {
        QFETCH(QByteArray, keyword);
        QFETCH(int, hints);
        CTestWidget* widget = styled(("CTestWidget { render-quality: " + keyword + "; }").constData());
        QImage image(4, 4, QImage::Format_ARGB32_Premultiplied);
        QPainter painter(&image);
        const QPainter::RenderHint order[] = {QPainter::SmoothPixmapTransform, QPainter::Antialiasing,
                                              QPainter::TextAntialiasing};
        painter.setRenderHints(order[0] | order[1] | order[2], hints == 0);
        widget->applyRenderQuality(&painter);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(painter.testRenderHint(order[i]), bool(hints & (1 << i)));
    }

    void showAnimatesOnlyWhenForcedAndNotAlreadyThere()
    {
        CTestWidget* widget = styled("CTestWidget { show-animation: property=opacity,start=0,end=1,duration=50; }");
        QPropertyAnimation* show = widget->showAnimation();
        QVERIFY(show);
        QCOMPARE(show->targetObject(), widget);
        widget->Hide();
        widget->Show();
        QVERIFY(widget->isVisible());
        QCOMPARE(show->state(), QAbstractAnimation::Stopped);
        // Opacity already stands at the end value: nothing would move.
        widget->Show(true);
        QCOMPARE(show->state(), QAbstractAnimation::Stopped);
        widget->setOpacity(0.2f);
        widget->Show(true);
        QCOMPARE(show->state(), QAbstractAnimation::Running);
        widget->Hide(true);
        QCOMPARE(show->state(), QAbstractAnimation::Stopped);
        QVERIFY(!widget->isVisible());
    }

    void repaintsAreNarrowedToTheOwnRectangle()
    {
        CRecordingSurface surface;
        surface.resize(200, 200);
        CTestWidget widget(&surface, 20, 30, 40, 50);
        widget.update();  // hidden surface: nothing to do
        surface.show();
        QVERIFY(QTest::qWaitForWindowExposed(&surface));
        QTest::qWait(20);
        surface.requested = QRegion();
        widget.setOpacity(0.5f);
        QTRY_VERIFY(!surface.requested.isEmpty());
        QCOMPARE(surface.requested.boundingRect(), QRect(20, 30, 40, 50));
    }
};

QTEST_MAIN(TestWidgetBase)
#include "tst_widgetbase.moc"
