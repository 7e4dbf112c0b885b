// The object tree's base: geometry against the design size, style look-up and
// layout, pseudo states, the press cross-fade, show animations and painting.
#include <QtTest>
#include <QPainter>
#include <QPropertyAnimation>
#include <QWidget>

#include "style/CTavoStyleSheet.h"
#include "style/CTavoWidgetStyle.h"
#include "widgets/CTavoObject.h"
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

static void setSheet(CTavoStyleSheet& sheet, const char* style, const char* attributes = "")
{
    sheet.set(style, attributes);
}

static QRgb pixelAt(const QImage& image, int x, int y)
{
    return image.pixel(x, y);
}

class TestWidgetBase : public QObject
{
    Q_OBJECT

private slots:
    void init() { CTavoWidgetStyle::resetScaling(); }

    // --- the bare object -------------------------------------------------------
    void bareObjectIsAnInvisiblePlaceholderThatTakesNoEvents()
    {
        CTavoObject object(nullptr, QRect(5, 6, 10, 20));
        QVERIFY(!object.isVisible());
        QVERIFY(!object.isInitialized());
        QCOMPARE(object.rowId(), quint64(0));
        const QEvent::Type types[] = {QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                                      QEvent::MouseButtonDblClick, QEvent::MouseMove,
                                      QEvent::KeyPress, QEvent::KeyRelease};
        for (QEvent::Type type : types) {
            QVERIFY(!object.handleEvent(type, QPoint(7, 7)));
            QVERIFY(!object.handleEvent(type, 3));
        }
        object.move(100, 200);
        QCOMPARE(object.rect(), QRect(100, 200, 10, 20));
        object.setVisible(true);
        object.setFocused(true);
        object.setEnabled(true);
        QVERIFY(object.isVisible() && object.isFocused() && object.isEnabled());
    }

    void widgetStartsVisibleEnabledFocusableAndReleased()
    {
        CTestWidget widget(nullptr, 1, 2, 30, 40);
        QVERIFY(widget.isVisible());
        QVERIFY(widget.isEnabled());
        QVERIFY(widget.isFocusable());
        QVERIFY(!widget.isDown());
        QCOMPARE(widget.kind(), 2u);
        QCOMPARE(widget.minimumSize(), QSize(-1, -1));
        QCOMPARE(widget.styleSize(), QSize(-1, -1));
        QCOMPARE(widget.designSize(), QSize(0, 0));
        QCOMPARE(widget.renderQuality(), 2);
        QCOMPARE(widget.layoutType(), 0);
        QCOMPARE(widget.borderPen().style(), Qt::NoPen);
        QCOMPARE(widget.borderPen().width(), 0);
        QCOMPARE(widget.opacity(), 1.0f);
        QCOMPARE(widget.pressedBackgroundOpacity(), 0.0f);
        QVERIFY(!widget.wrappedQWidget());
        QVERIFY(!widget.handleEvent(QEvent::MouseButtonPress, QPoint(2, 3)));
        QVERIFY(!widget.handleEvent(QEvent::KeyPress, 0));
    }

    // --- geometry --------------------------------------------------------------
    void nullParentLayoutOnlyCopiesTheGeometry()
    {
        CTestWidget widget(nullptr, 3, 4, 50, 60);
        QVERIFY(!widget.styleSheet());
        widget.layout();
        QCOMPARE(widget.lastLayoutRect(), QRect(3, 4, 50, 60));
        QVERIFY(!widget.style());
        QCOMPARE(widget.minimumSize(), QSize(-1, -1));
    }

    void setSizeStoresTheDesignSizeEvenWhenUnchanged()
    {
        CTestWidget widget(nullptr, 0, 0, 40, 20);
        widget.setSize(QSize(40, 20), true);
        QCOMPARE(widget.designSize(), QSize(40, 20));
        QVERIFY(widget.repositions.isEmpty());
        widget.setSize(QSize(80, 30), false);
        QCOMPARE(widget.geo(), QRect(0, 0, 80, 30));
        QCOMPARE(widget.designSize(), QSize(40, 20));
        QCOMPARE(widget.repositions, QList<QPoint>() << QPoint(0, 0));
        // Without a style the content area follows the geometry.
        QCOMPARE(widget.contentRect(), QRect(0, 0, 80, 30));
    }

    void sizeByScalesFromTheDesignSizeWithoutDrift()
    {
        CTestWidget widget(nullptr, 10, 10, 15, 25);
        widget.setSize(QSize(15, 25), true);
        widget.sizeBy(0.5f, 0.5f);
        // 7.5 and 12.5 round half away from zero.
        QCOMPARE(widget.size(), QSize(8, 13));
        widget.sizeBy(0.5f, 0.5f);
        QCOMPARE(widget.size(), QSize(8, 13));
        widget.sizeBy(2.0f, 1.0f);
        QCOMPARE(widget.size(), QSize(30, 25));
        QCOMPARE(widget.topLeft(), QPoint(10, 10));
        QCOMPARE(widget.resizes.last(), qMakePair(2.0f, 1.0f));
        QCOMPARE(widget.repositions.last(), QPoint(0, 0));
    }

    void setgeoPassesFactorsAgainstTheDesignSize()
    {
        CTestWidget widget(nullptr, 0, 0, 10, 10);
        widget.setgeo(QRect(5, 7, 20, 20));
        QCOMPARE(widget.resizes.last(), qMakePair(0.0f, 0.0f));
        QCOMPARE(widget.repositions.last(), QPoint(5, 7));
        widget.setSize(QSize(20, 20), true);
        widget.setgeo(QRect(5, 7, 40, 10));
        QCOMPARE(widget.resizes.last(), qMakePair(2.0f, 0.5f));
        QCOMPARE(widget.property("geometry").toRect(), QRect(5, 7, 40, 10));
        // The geometry property is what a rectangle animation drives.
        QVERIFY(widget.setProperty("geometry", QRect(1, 2, 20, 20)));
        QCOMPARE(widget.geo(), QRect(1, 2, 20, 20));
        QVERIFY(widget.setProperty("pos", QPoint(9, 9)));
        QCOMPARE(widget.topLeft(), QPoint(9, 9));
        QCOMPARE(widget.size(), QSize(20, 20));
    }

    void moveTranslatesTheContentAreaAndCarriesSubElements()
    {
        CTestWidget widget(nullptr, 0, 0, 10, 10);
        widget.setContentRect(QRect(2, 2, 6, 6));
        widget.move(10, 20);
        QCOMPARE(widget.contentRect(), QRect(12, 22, 6, 6));
        QCOMPARE(widget.repositions, QList<QPoint>() << QPoint(10, 20));
        widget.move(10, 20);
        QCOMPARE(widget.repositions.size(), 1);
        widget.moveBy(-5, 1);
        QCOMPARE(widget.topLeft(), QPoint(5, 21));
        // A null content area is computed afresh from the geometry.
        widget.setContentRect(QRect());
        widget.move(0, 0);
        QCOMPARE(widget.contentRect(), QRect(0, 0, 10, 10));
    }

    void geoParentMapsIntoTheSurfacesParent()
    {
        QWidget top;
        QWidget surface(&top);
        surface.move(30, 40);
        CTestWidget widget(&surface, 5, 6, 10, 11);
        QCOMPARE(widget.geoParent(), QRect(35, 46, 10, 11));
    }

    // --- style attachment and layout --------------------------------------------
    void layoutReadsItsKeysFromTheSheet()
    {
        CTavoStyleSheet sheet;
        setSheet(sheet,
                 "CTestWidget { size: 100x40; location: 10:20; padding: 2; margin: 1; "
                 "border: 3px solid #ff0000; render-quality: highq; layout-type: vertical; "
                 "size-minimum: 50x10; up-duration: 200; }");
        CTestWidget widget;
        widget.setStyleSheet(&sheet, true);
        QCOMPARE(widget.layouts, 1);
        QVERIFY(widget.style());
        QCOMPARE(widget.geo(), QRect(10, 20, 100, 40));
        QCOMPARE(widget.designSize(), QSize(100, 40));
        QCOMPARE(widget.styleSize(), QSize(100, 40));
        QCOMPARE(widget.styleLocation(), QPoint(10, 20));
        QCOMPARE(widget.renderQuality(), 1);
        QCOMPARE(widget.layoutType(), 0);
        QCOMPARE(widget.minimumSize(), QSize(50, 10));
        QCOMPARE(widget.maximumSize(), QSize(50, 10));
        QCOMPARE(widget.borderPen().color(), QColor(255, 0, 0));
        QCOMPARE(widget.contentRect(), sheet.get("CTestWidget")->contentRect(widget.geo()));
        QVERIFY(widget.contentRect().width() < 100);
        QCOMPARE(widget.lastLayoutRect(), QRect(10, 20, 100, 40));
        QVERIFY(widget.pressAnimation());
        QCOMPARE(widget.upDuration(), 200);
        QCOMPARE(widget.property("contentRect").toRect(), widget.contentRect());
    }

    void layoutDefaultsWhenTheBlockIsSilent()
    {
        CTavoStyleSheet sheet;
        setSheet(sheet, "CTestWidget { color: red; }");
        CTestWidget widget(nullptr, 0, 0, 30, 20);
        widget.setStyleSheet(&sheet, true);
        QCOMPARE(widget.layoutType(), 1);
        QCOMPARE(widget.renderQuality(), 2);
        QCOMPARE(widget.minimumSize(), QSize(30, 20));
        QCOMPARE(widget.maximumSize(), QSize(30, 20));
        QVERIFY(!widget.backgroundBrush());
        QVERIFY(widget.backgroundImage().isNull());
        QVERIFY(!widget.showAnimation());
        QVERIFY(!widget.pressAnimation());
    }

    void aZeroSizedWidgetTakesTheMinimumSize()
    {
        CTavoStyleSheet sheet;
        setSheet(sheet, "CTestWidget { size-minimum: 24x12; }");
        CTestWidget widget(nullptr, 5, 5, 0, 0);
        widget.setStyleSheet(&sheet, true);
        QCOMPARE(widget.geo(), QRect(5, 5, 24, 12));
        QCOMPARE(widget.lastLayoutRect(), QRect(5, 5, 24, 12));
    }

    void namedObjectsAndSubclassesFindTheirBlocks()
    {
        CTavoStyleSheet sheet;
        setSheet(sheet,
                 "CTavoWidget { size: 11x11; } CTestWidget#title { size: 22x22; } "
                 "CTestWidget:pressed { size: 33x33; }");
        CTestWidget named;
        named.setObjectName("title");
        named.setStyleSheet(&sheet, true);
        QCOMPARE(named.size(), QSize(22, 22));
        // The pressed block of the class serves a named object too.
        named.setPseudoState("pressed");
        QCOMPARE(named.size(), QSize(33, 33));

        CTestWidget plain;
        plain.setStyleSheet(&sheet, true);
        QCOMPARE(plain.size(), QSize(11, 11));
    }

    void nullOrUnchangedInputsCauseNoLayout()
    {
        CTavoStyleSheet sheet;
        setSheet(sheet, "CTestWidget { size: 10x10; } CTestWidget:focused { size: 20x20; }");
        CTestWidget widget;
        widget.setStyleSheet(nullptr, true);
        QCOMPARE(widget.layouts, 0);
        QVERIFY(!widget.styleSheet());
        widget.setStyleSheet(&sheet, false);
        QCOMPARE(widget.layouts, 0);
        QCOMPARE(widget.styleSheet(), &sheet);
        widget.setPseudoState("focused");
        QCOMPARE(widget.layouts, 1);
        widget.setPseudoState("focused");
        QCOMPARE(widget.layouts, 1);
        QCOMPARE(widget.size(), QSize(20, 20));
        widget.setPseudoState(QString());
        QCOMPARE(widget.layouts, 2);
        QCOMPARE(widget.size(), QSize(10, 10));
    }

    void pseudoStateCanKeepThePosition()
    {
        CTavoStyleSheet sheet;
        setSheet(sheet, "CTestWidget { location: 1:1; } CTestWidget:moved { location: 50:60; }");
        CTestWidget widget(nullptr, 0, 0, 10, 10);
        widget.setStyleSheet(&sheet, true);
        QCOMPARE(widget.topLeft(), QPoint(1, 1));
        widget.setPseudoState("moved", true);
        QCOMPARE(widget.topLeft(), QPoint(1, 1));
        widget.setPseudoState(QString(), false);
        widget.setPseudoState("moved", false);
        QCOMPARE(widget.topLeft(), QPoint(50, 60));
    }

    void subWidgetsFollowTheSheetWhileTheyLive()
    {
        CTavoStyleSheet sheet;
        setSheet(sheet, "CTestWidget { size: 7x7; }");
        CTestWidget owner;
        CTestWidget* kept = new CTestWidget(nullptr);
        CTestWidget* gone = new CTestWidget(nullptr);
        owner.addSubWidget(kept);
        owner.addSubWidget(gone);
        delete gone;
        owner.setStyleSheet(&sheet, true);
        QCOMPARE(kept->styleSheet(), &sheet);
        QCOMPARE(kept->size(), QSize(7, 7));
        QCOMPARE(owner.layouts, 1);
        delete kept;
    }

    // --- press cross-fade ------------------------------------------------------
    void pressWithoutAnimationJumps()
    {
        CTestWidget widget(nullptr, 0, 0, 10, 10);
        widget.setDown(true);
        QVERIFY(widget.isDown());
        QCOMPARE(widget.pressedBackgroundOpacity(), 1.0f);
        widget.setDown(false);
        QCOMPARE(widget.pressedBackgroundOpacity(), 0.0f);
    }

    void pressRisesTwiceAsFastAsItFalls()
    {
        CTavoStyleSheet sheet;
        setSheet(sheet, "CTestWidget { up-duration: 200; }");
        CTestWidget widget(nullptr, 0, 0, 10, 10);
        widget.setStyleSheet(&sheet, true);
        QPropertyAnimation* fade = widget.pressAnimation();
        QVERIFY(fade);
        QCOMPARE(fade->propertyName(), QByteArray("pressedBackgroundOpacity"));

        widget.setDown(true);
        QCOMPARE(fade->duration(), 100);
        QCOMPARE(fade->direction(), QAbstractAnimation::Backward);
        QCOMPARE(fade->state(), QAbstractAnimation::Running);
        QTRY_COMPARE_WITH_TIMEOUT(fade->state(), QAbstractAnimation::Stopped, 2000);
        QCOMPARE(widget.pressedBackgroundOpacity(), 1.0f);

        widget.setDown(false);
        QCOMPARE(fade->duration(), 200);
        QCOMPARE(fade->direction(), QAbstractAnimation::Forward);
        QTest::qWait(60);
        const float midway = widget.pressedBackgroundOpacity();
        QVERIFY2(midway < 1.0f && midway > 0.0f, qPrintable(QString::number(midway)));
        QTRY_COMPARE_WITH_TIMEOUT(widget.pressedBackgroundOpacity(), 0.0f, 2000);
    }

    void losingFocusReleasesThePress()
    {
        CTestWidget widget(nullptr, 0, 0, 10, 10);
        widget.setFocused(true);
        widget.setDown(true);
        widget.setFocused(false);
        QVERIFY(!widget.isDown());
        QCOMPARE(widget.pressedBackgroundOpacity(), 0.0f);
    }

    // --- painting ----------------------------------------------------------------
    void pressedLayerIsLaidOverTheRestingOneWithTheCombinedOpacity()
    {
        CTavoStyleSheet sheet;
        setSheet(sheet, "CTestWidget { background: #000000; background-focused: #ffffff; }");
        CTestWidget widget(nullptr, 0, 0, 10, 10);
        widget.setStyleSheet(&sheet, true);
        QVERIFY(widget.backgroundBrush());
        QVERIFY(widget.focusedBrush());
        widget.setOpacity(0.8f);
        widget.setPressedBackgroundOpacity(0.5f);

        QImage image(10, 10, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::black);
        {
            QPainter painter(&image);
            widget.paint(&painter);
            // The painter is left at the widget's own opacity.
            QCOMPARE(painter.opacity(), qreal(0.8f));
        }
        // White at 0.5 * 0.8 over black.
        QVERIFY2(qAbs(qRed(pixelAt(image, 5, 5)) - 102) <= 2, qPrintable(QString::number(qRed(pixelAt(image, 5, 5)))));
    }

    void fullPressSkipsTheRestingLayerUnlessDimming()
    {
        CTavoStyleSheet sheet;
        setSheet(sheet, "CTestWidget { background: #ff0000; }");
        CTestWidget widget(nullptr, 0, 0, 10, 10);
        widget.setStyleSheet(&sheet, true);
        widget.setDown(true);
        QImage image(10, 10, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::blue);
        {
            QPainter painter(&image);
            widget.paintBackgroundImage(&painter);
        }
        // No focused brush and no pressed image: nothing at all is painted.
        QCOMPARE(pixelAt(image, 5, 5), QColor(Qt::blue).rgb());

        widget.setDimWhenPressed(true);
        image.fill(Qt::white);
        {
            QPainter painter(&image);
            widget.paintBackgroundImage(&painter);
        }
        // Resting red, then a quarter-black veil.
        const QColor seen(pixelAt(image, 5, 5));
        QVERIFY2(qAbs(seen.red() - 191) <= 2 && seen.green() == 0, qPrintable(seen.name()));
    }

    void paintBackgroundFollowsFocusAndBorder()
    {
        CTavoStyleSheet sheet;
        setSheet(sheet, "CTestWidget { background: #ff0000; background-focused: #00ff00; border: 1px solid #0000ff; }");
        CTestWidget widget(nullptr, 0, 0, 10, 10);
        widget.setStyleSheet(&sheet, true);
        QImage image(12, 12, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        QRect inner(2, 2, 6, 6);
        {
            QPainter painter(&image);
            widget.paintBackground(&painter, &inner);
        }
        QCOMPARE(QColor(pixelAt(image, 4, 4)), QColor(255, 0, 0));
        QCOMPARE(QColor(pixelAt(image, 0, 5)), QColor(0, 0, 255));
        QCOMPARE(QColor(pixelAt(image, 1, 1)), QColor(Qt::white));

        widget.setFocused(true);
        {
            QPainter painter(&image);
            widget.paintBackground(&painter, &inner);
        }
        QCOMPARE(QColor(pixelAt(image, 4, 4)), QColor(0, 255, 0));

        // Down with a focus brush and no pressed images: the whole box takes it.
        widget.setFocusBackground(false);
        widget.setDown(true);
        image.fill(Qt::white);
        {
            QPainter painter(&image);
            widget.paintBackground(&painter, &inner);
        }
        QCOMPARE(QColor(pixelAt(image, 1, 1)), QColor(0, 255, 0));
    }

    void invisibleWidgetsAndNullPaintersPaintNothing()
    {
        CTavoStyleSheet sheet;
        setSheet(sheet, "CTestWidget { background: #ff0000; }");
        CTestWidget widget(nullptr, 0, 0, 4, 4);
        widget.setStyleSheet(&sheet, true);
        widget.paint(nullptr);
        widget.paintBackground(nullptr);
        widget.paintBackgroundImage(nullptr);
        widget.setVisible(false);
        QImage image(4, 4, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        {
            QPainter painter(&image);
            widget.paint(&painter);
        }
        QCOMPARE(QColor(pixelAt(image, 1, 1)), QColor(Qt::white));
    }

    void renderQualityMapsToHints_data()
    {
        QTest::addColumn<QString>("keyword");
        QTest::addColumn<bool>("smooth");
        QTest::addColumn<bool>("antialias");
        QTest::addColumn<bool>("text");
        QTest::newRow("maxq") << "maxq" << true << true << true;
        QTest::newRow("highq") << "highq" << true << true << false;
        QTest::newRow("normalq") << "normalq" << false << false << false;
        QTest::newRow("lowq") << "lowq" << false << false << false;
    }
    void renderQualityMapsToHints()
    {
        QFETCH(QString, keyword);
        QFETCH(bool, smooth);
        QFETCH(bool, antialias);
        QFETCH(bool, text);
        CTavoStyleSheet sheet;
        const QByteArray style = "CTestWidget { render-quality: " + keyword.toLatin1() + "; }";
        setSheet(sheet, style.constData());
        CTestWidget widget(nullptr, 0, 0, 4, 4);
        widget.setStyleSheet(&sheet, true);
        QImage image(4, 4, QImage::Format_ARGB32_Premultiplied);
        QPainter painter(&image);
        painter.setRenderHints(QPainter::SmoothPixmapTransform | QPainter::Antialiasing | QPainter::TextAntialiasing,
                               !smooth);
        widget.applyRenderQuality(&painter);
        QCOMPARE(painter.testRenderHint(QPainter::SmoothPixmapTransform), smooth);
        QCOMPARE(painter.testRenderHint(QPainter::Antialiasing), antialias);
        QCOMPARE(painter.testRenderHint(QPainter::TextAntialiasing), text);
    }

    // --- show and hide -----------------------------------------------------------
    void showAnimatesOnlyWhenForcedAndNotAlreadyThere()
    {
        CTavoStyleSheet sheet;
        setSheet(sheet, "CTestWidget { show-animation: property=opacity,start=0,end=1,duration=50; }");
        CTestWidget widget(nullptr, 0, 0, 4, 4);
        widget.setStyleSheet(&sheet, true);
        QPropertyAnimation* show = widget.showAnimation();
        QVERIFY(show);
        QCOMPARE(show->targetObject(), &widget);

        widget.Hide();
        QVERIFY(!widget.isVisible());
        widget.Show();
        QVERIFY(widget.isVisible());
        QCOMPARE(show->state(), QAbstractAnimation::Stopped);

        // Opacity already stands at the end value: nothing would move.
        widget.Show(true);
        QCOMPARE(show->state(), QAbstractAnimation::Stopped);

        widget.setOpacity(0.2f);
        widget.Show(true);
        QCOMPARE(show->state(), QAbstractAnimation::Running);
        widget.Hide(true);
        QCOMPARE(show->state(), QAbstractAnimation::Stopped);
        QVERIFY(!widget.isVisible());
    }

    // --- repaint requests ----------------------------------------------------------
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
