// Typed style values: type inference, each value grammar with its odd cases,
// scaling from the design resolution, and the shared resource repository.
#include <QGraphicsBlurEffect>
#include <QPainter>
#include <QPropertyAnimation>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QtTest>

#include "style/CTavoResourceRepository.h"
#include "style/CTavoWidgetStyle.h"
#include "StyleTestFiles.h"

// Heap in use, where the sanitizer runtime tells it; 0 elsewhere.
extern "C" size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

static CTavoWidgetStyle block(const QString& text)
{
    CTavoWidgetStyle style;
    style.set(text);
    return style;
}

class TestStyleValues : public QObject
{
    Q_OBJECT
    // Lower-case paths: vector renderers are keyed by the path exactly as given.
    QDir m_dir{QDir::tempPath() + "/tgui-style-values-" + QString::number(QCoreApplication::applicationPid())};
    QString m_opaque, m_alpha, m_svg, m_sizedSvg, m_upperSvg;

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.mkpath("."));
        QCOMPARE(m_dir.path(), m_dir.path().toLower());
        m_opaque = m_dir.filePath("opaque.png");
        m_alpha = m_dir.filePath("alpha.png");
        m_svg = m_dir.filePath("vector.svg");
        m_sizedSvg = m_dir.filePath("sized.svg");
        m_upperSvg = m_dir.filePath("Upper.svg");
        QVERIFY(writePicture(m_opaque, Qt::blue, QSize(8, 4), QImage::Format_RGB32));
        QVERIFY(writePicture(m_alpha, QColor(0, 255, 0, 100), QSize(6, 6)));
        for (const QString& svg : {m_svg, m_sizedSvg, m_upperSvg})
            QVERIFY(writeFile(svg, svgOf(16, 16, "#ff0000")));
    }
    void cleanupTestCase() { m_dir.removeRecursively(); }
    void init()
    {
        CTavoWidgetStyle::resetScaling();
        StyleResourceContainer.reset();
    }
    void cleanup() { CTavoWidgetStyle::resetScaling(); }

    void typesByExactThenSuffixMatch()
    {
        // Exact first, then the first row that ends the name; no match leaves text.
        const QList<QPair<const char*, int>> rows = {{"color", QMetaType::QColor},
            {"title-color", QMetaType::QColor}, {"icon-size", QMetaType::QSize}, {"caption-font", QMetaType::QFont},
            {"fade-duration", QMetaType::UInt}, {"press-animation", TavoAnimationType},
            {"x-background-position", TavoKeywordType}, {"size-minimum", QMetaType::QSize},
            {"remove-video-key", 0}, {"Color", 0}};
        for (int pass = 0; pass < 2; ++pass) { // the memoised answer agrees
            for (const auto& row : rows)
                QVERIFY2(CTavoWidgetStyle::getType(row.first) == row.second, row.first);
        }
        QCOMPARE(CTavoWidgetStyle::name(TavoWidgetStyleAttributeNames(41)), QString());
    }

    void colours()
    {
        QCOMPARE((QList<QColor>{CTavoWidgetStyle::getColor("rgb(10, 20, 30)"), CTavoWidgetStyle::getColor("rgba(1, 2, 3, 4)"),
                                CTavoWidgetStyle::getColor("#ff0000"), CTavoWidgetStyle::getColor("navy")}),
                 (QList<QColor>{QColor(10, 20, 30), QColor(1, 2, 3, 4), Qt::red, QColor("navy")}));
        QCOMPARE(CTavoWidgetStyle::getColor("rgba(1, 2, 3)").alpha(), 0); // transparent
        for (const char* bad : {"none", "#zzzzzz", "rgb(300, 0, 0)"})
            QVERIFY2(!CTavoWidgetStyle::getColor(bad).isValid(), bad);
        CTavoWidgetStyle s = block("color: bogus; title-color: #00ff00");
        QVERIFY(!s.Color("color", Qt::white).isValid()); // present but bad: zero value
        QCOMPARE(s.Color("title-color"), QColor(Qt::green));
        QCOMPARE(s.Color("missing", Qt::white), QColor(Qt::white));
    }

    void fonts()
    {
        // Weight word first, then the size before "px", then the family; any keyword counts as weight.
        const QString app = QApplication::font().family();
        const struct { const char* text; int weight, px; QString family; bool italic; } rows[] = {
            {"14px", 50, 14, app, false}, {"bold 16px Droid Sans", 75, 16, "Droid Sans", false},
            {"light 9px italic, Serif", 25, 9, "Serif", true}, {"12px Bright", 2, 12, "B", false}};
        for (const auto& row : rows) {
            const QFont f = CTavoWidgetStyle::getFont(row.text);
            QVERIFY2(f.weight() == row.weight && f.pixelSize() == row.px && f.family() == row.family
                         && (f.style() == QFont::StyleItalic) == row.italic, row.text);
        }
        QCOMPARE(CTavoWidgetStyle::getFont("").pixelSize(), QApplication::font().pixelSize());
    }

    void numbersSizesLocations()
    {
        QCOMPARE(CTavoWidgetStyle::getUnsignedInteger("12px", true), 12u);
        QCOMPARE(CTavoWidgetStyle::getUnsignedInteger("a1b2", false), 12u);
        QCOMPARE(CTavoWidgetStyle::getUnsignedInteger("0123456789012345678", false), 0u); // overflow
        QCOMPARE(CTavoWidgetStyle::getSize("30 x 40", true), QSize(30, 40));
        QCOMPARE(CTavoWidgetStyle::getSize("30", true), QSize(0, 0));
        QCOMPARE(CTavoWidgetStyle::getLocation("10:20"), QPoint(10, 20));
        QCOMPARE(CTavoWidgetStyle::getLocation("10"), QPoint(0, 0));
        QCOMPARE(CTavoWidgetStyle::getLocation("-1:-5"), QPoint(-1, -5));
        QCOMPARE(CTavoWidgetStyle::getPolygon("0:0 10:0  10:10"), QPolygon({QPoint(0, 0), QPoint(10, 0), QPoint(10, 10)}));
        CTavoWidgetStyle s = block("offset: -7px; gap: 9; flag: yes; off: true1; source: url(a/b.png)");
        QCOMPARE(s.Int("offset"), -7);
        QCOMPARE(s.UInt("gap"), 9u);
        QVERIFY(s.Bool("flag"));
        QVERIFY(!s.Bool("off", true));
        QCOMPARE(s.Url("source"), QUrl::fromLocalFile("a/b.png"));
        QCOMPARE(CTavoWidgetStyle::getUrl("a/b.png"), QUrl());
        // "null" leaves no entry at all.
        bool found = true;
        QVERIFY(block("x: null; y: 1").Bool("x", true, &found));
        QVERIFY(!found);
        QVERIFY(!block("x: null").isValid());
    }

    void boxesAndShorthand()
    {
        QCOMPARE(CTavoWidgetStyle::getRect("4", true), QRect(4, 4, 4, 4));
        QCOMPARE(CTavoWidgetStyle::getRect("4 8", true), QRect(4, 8, 4, 8));
        QCOMPARE(CTavoWidgetStyle::getRect("4 0 0 0", true), QRect(4, 4, 4, 4)); // zero = not given
        QCOMPARE(CTavoWidgetStyle::getRect("1 2 3", true), QRect(1, 2, 3, 2));
        QCOMPARE(CTavoWidgetStyle::getRect("1 2 3 4", false), QRect(1, 2, 3, 4));
        QVERIFY(CTavoWidgetStyle::getRect("   ", true).isNull());
        // top 1, right 2, bottom 3, left 4 from padding; 10 on every side from the margin.
        CTavoWidgetStyle s = block("padding: 1 2 3 4; margin: 10; border-width: 0");
        QCOMPARE(s.contentRect(QRect(100, 100, 200, 100)), QRect(114, 111, 200 - 14 - 12, 100 - 11 - 13));
        QCOMPARE(s.borderRect(QRect(100, 100, 200, 100)), QRect(110, 110, 180, 80));
        QCOMPARE(block("").contentRect(QRect(1, 2, 3, 4)), QRect(1, 2, 3, 4));
    }

    void keywordsAndLabelStyle()
    {
        int row = -1;
        QCOMPARE(CTavoWidgetStyle::getEnum("top hcenter", &row), 36u);
        QCOMPARE(row, 1);
        QCOMPARE(CTavoWidgetStyle::getEnum("bogus"), 0u);
        QCOMPARE(CTavoWidgetStyle::getEnum("out-"), 1u); // the last row counts
        // Both ends of a range count.
        QCOMPARE(CTavoWidgetStyle::getEnumWithinRange("left bottom", 4, 7), 65u);
        QCOMPARE(CTavoWidgetStyle::getEnumWithinRange("left bottom", 5, 6), 0u);
        CTavoWidgetStyle s = block("text-align: right vcenter; color: red");
        QFont font;
        QColor colour;
        unsigned flags = 0;
        QCOMPARE(s.getLabelStyle(font, colour, flags), 2u | 4u);
        QCOMPARE(flags, unsigned(Qt::AlignRight | Qt::AlignVCenter) | 4096u);
        QCOMPARE(colour, QColor(Qt::red));
        QCOMPARE(block("").getLabelStyle(font, colour, flags), 0u);
        QCOMPARE(flags, 1u | 4096u);

        QRect inner(0, 0, 10, 10);
        s = block("icon-align: hcenter bottom");
        s.alignRect("icon-align", QRect(0, 0, 100, 50), inner, QPoint(5, 5));
        QCOMPARE(inner.topLeft(), QPoint(5 + 45, 5 + 40));
        inner.moveTo(1, 1);
        s.alignRect("missing-align", QRect(0, 0, 100, 50), inner, QPoint(5, 5));
        QCOMPARE(inner.topLeft(), QPoint(1, 1));
    }

    void pens()
    {
        QPen pen = CTavoWidgetStyle::getPen("2px dash roundcap roundjoin rgb(10,20,30)");
        QCOMPARE((QList<int>{pen.width(), pen.style(), pen.capStyle(), pen.joinStyle()}),
                 (QList<int>{2, Qt::DashLine, Qt::RoundCap, Qt::RoundJoin}));
        QCOMPARE(pen.color(), QColor(10, 20, 30));
        pen = CTavoWidgetStyle::getPen("solid flatcap");
        // Zero-valued keywords change nothing.
        QVERIFY(pen.style() == Qt::SolidLine && pen.capStyle() == Qt::SquareCap && pen.brush().style() == Qt::NoBrush);
        CTavoWidgetStyle s = block("border: 1px solid #0000ff; border-color: red");
        QCOMPARE(s.Pen("border").color(), QColor(Qt::blue));
        QCOMPARE(s.Pen("border-color"), QPen(QColor(Qt::red))); // a colour makes a default pen
    }

    void brushesShareOneEntryPerText()
    {
        CTavoWidgetStyle s = block("background: #FF0000; background-focused: #ff0000;"
                                   "background-pressed: url(x.png)");
        QBrush* a = s.BrushPtr("background");
        QVERIFY(a);
        QCOMPARE(a, s.BrushPtr("background-focused"));
        QCOMPARE(s.Brush("background").color(), QColor(Qt::red));
        // A url is no brush: it paints nothing, with the invalid colour the text reads as.
        QCOMPARE(s.BrushPtr("background-pressed")->style(), Qt::NoBrush);
        QVERIFY(!s.BrushPtr("background-pressed")->color().isValid());
        QVERIFY(!s.properties().contains("background"));
        QVERIFY(!s.BrushPtr("missing"));
        // The first brush registered for a text stays.
        QBrush* again = StyleResourceContainer.registerBrush("#FF0000", QBrush(Qt::green));
        QCOMPARE(again, a);
        QCOMPARE(again->color(), QColor(Qt::red));
    }

    void gradients()
    {
        QBrush linear = CTavoWidgetStyle::getLinearGradient(
            "lineargradient(x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #000000, stop: 1 rgb(9,9,9))");
        const auto* lg = static_cast<const QLinearGradient*>(linear.gradient());
        QVERIFY(lg->coordinateMode() == QGradient::ObjectBoundingMode && lg->finalStop() == QPointF(0, 1));
        QCOMPARE(lg->stops(), (QGradientStops{{0, QColor(0, 0, 0)}, {1, QColor(9, 9, 9)}}));
        // The first argument keeps the "(" and reads 0; coordinates are whole numbers.
        linear = CTavoWidgetStyle::getLinearGradient("lineargradient(x2: 1, x1: 1, y1: 0.7, y2: 1.9)");
        lg = static_cast<const QLinearGradient*>(linear.gradient());
        QCOMPARE(lg->finalStop(), QPointF(0, 1));
        QCOMPARE(lg->start(), QPointF(1, 0));

        QBrush radial = CTavoWidgetStyle::getRadialGradient(
            "radialgradient(cx: 0.5, cy: 0.25, radius: 0.5, fx: 0.4, fy: 0.3, stop: 0 red, stop: 1 blue)");
        const auto* rg = static_cast<const QRadialGradient*>(radial.gradient());
        QVERIFY(rg->center() == QPointF(0.5, 0.25) && rg->radius() == 0.5 && rg->stops().size() == 2);
        QVERIFY(qAbs(rg->focalPoint().x() - 0.4) < 1e-6 && qAbs(rg->focalPoint().y() - 0.3) < 1e-6);

        CTavoWidgetStyle s = block("background: lineargradient(x1: 0, y1: 0, x2: 1, y2: 0, stop: 0 red, stop: 1 blue)");
        QVERIFY(s.BrushPtr("background")->gradient());
    }

    void animations()
    {
        CTavoWidgetStyle s = block("show-animation: property=opacity,start=0,end=1,curve=inout-quad,duration=200;"
                                   "a-animation: property=geometry,start=1 2 3 4,end=5 6 7 8,curve=out-elastic,loopCount=3;"
                                   "b-animation: property=opacity,curve=bogus;"
                                   "c-animation: property=opacity,curve=out-cosine");
        QPropertyAnimation* show = s.AnimationPtr("show-animation");
        QVERIFY(show);
        QCOMPARE((QVariantList{show->duration(), int(show->easingCurve().type()), show->startValue().toDouble(),
                               show->endValue().toDouble(), show->propertyName(), show->loopCount()}),
                 (QVariantList{200, int(QEasingCurve::InOutQuad), 0.0, 1.0, QByteArray("opacity"), 1}));
        // The keyword with its prefix: "out-elastic" is curve 30, not OutElastic.
        QPropertyAnimation* a = s.AnimationPtr("a-animation");
        QCOMPARE((QVariantList{int(a->easingCurve().type()), a->startValue().toRect(), a->loopCount()}),
                 (QVariantList{30, QRect(1, 2, 3, 4), 3}));
        QCOMPARE(s.AnimationPtr("b-animation")->easingCurve().type(), QEasingCurve::Linear);
        bool found = false;
        QVERIFY(!s.AnimationPtr("c-animation", nullptr, &found)); // impossible curve: null entry
        QVERIFY(found);

        QObject target;
        QCOMPARE(s.AnimationPtr("show-animation", &target)->targetObject(), &target);
        // Merged copies share the animation; it outlives the block it was parsed in.
        CTavoWidgetStyle merged;
        merged.update(s);
        s.resetContent();
        QCOMPARE(merged.AnimationPtr("show-animation"), show);
        QCOMPARE(show->duration(), 200);
    }

    void effects()
    {
        CTavoWidgetStyle s = block("glow: blur,blurRadius=4; odd: sparkle; shade: opacity,opacity=0.5");
        QObject parent;
        QGraphicsEffect* blur = s.GraphicsEffect("glow", &parent);
        QVERIFY(qobject_cast<QGraphicsBlurEffect*>(blur));
        QCOMPARE(blur->property("blurRadius").toDouble(), 4.0);
        QCOMPARE(blur->parent(), &parent);
        QVERIFY(!s.GraphicsEffect("odd", &parent));
        QVERIFY(!s.GraphicsEffect("missing", &parent));
        QCOMPARE(s.GraphicsEffect("shade", &parent)->property("opacity").toDouble(), 0.5);
    }

    void scalingFromDesignResolution()
    {
        // Offscreen screen 800x600; design 400x160 capped at 800x480: 2 across, 3 down.
        CTavoWidgetStyle::setDesignScreenResolution(400, 160, 800, 480);
        QVERIFY(CTavoWidgetStyle::isScaled());
        CTavoWidgetStyle s = block("size: 10x10; size-layout-x: 100x50; location: 3:3; padding: 1 2 3 4;"
                                   "radius-duration: 5px; plain-duration: 5; font: 10px; border: 3px solid red");
        QCOMPARE(s.Size("size"), QSize(20, 30));
        QCOMPARE(s.Size("size-layout-x"), QSize(100, 50)); // "layout" names stay unscaled
        QCOMPARE(s.Location("location"), QPoint(6, 9));
        QCOMPARE(s.BoxLength("padding"), QRect(2, 6, 6, 12));
        QCOMPARE(s.UInt("radius-duration"), 12u); // mean factor 2.5, truncated
        QCOMPARE(s.UInt("plain-duration"), 5u);   // a bare number never scales
        QCOMPARE(s.Font("font").pixelSize(), 25);
        QCOMPARE(s.Pen("border").width(), 7);
        QCOMPARE(CTavoWidgetStyle::scaleStylesheet("QLineEdit { font: 10px; padding: 3px 1px }"),
                 QString("QLineEdit { font: 25px; padding: 7px 2px }"));
        // Rounding: 7 * 1.5 = 10.5 rounds away from zero.
        CTavoWidgetStyle::setDesignScreenResolution(400, 320, 600, 480);
        QCOMPARE(CTavoWidgetStyle::getSize("7x7", true), QSize(11, 11));
        CTavoWidgetStyle::setDesignScreenResolution(800, 480, 800, 480);
        QVERIFY(!CTavoWidgetStyle::isScaled());
        QCOMPARE(CTavoWidgetStyle::scaleStylesheet("10px"), QString("10px"));
        CTavoWidgetStyle::setDesignScreenResolution(0, 480, 800, 480); // refused, not divided by
        QVERIFY(!CTavoWidgetStyle::isScaled());
    }

    void imagesByKindAndSharedPerPath()
    {
        int type = 0;
        void* opaque = CTavoWidgetStyle::getPixmap("url(" + m_opaque + ")", type);
        QCOMPARE(type, int(QMetaType::QImage));
        QCOMPARE(static_cast<QImage*>(opaque)->format(), QImage::Format_RGB16);
        QCOMPARE(CTavoWidgetStyle::getPixmap("url( " + m_opaque + " )", type), opaque);
        QMetaType::Type stored = QMetaType::UnknownType;
        QCOMPARE(StyleResourceContainer.registerPixmap(m_opaque.toUpper(), QSize(), stored), opaque); // keys ignore case
        QCOMPARE(StyleResourceContainer.images().size(), 1);
        void* alpha = CTavoWidgetStyle::getPixmap("url(" + m_alpha + ");", type);
        QCOMPARE(type, int(QMetaType::QPixmap));
        QVERIFY(alpha != opaque);
        // A sized vector is rasterised; an unsized one is a renderer, which later answers any size.
        CTavoWidgetStyle::getPixmap("url(" + m_sizedSvg + "), size(32x32)", type);
        QCOMPARE(type, int(QMetaType::QPixmap));
        QCOMPARE(StyleResourceContainer.pixmaps().value(m_sizedSvg.toLower() + ":32x32").size(), QSize(32, 32));
        void* vector = CTavoWidgetStyle::getPixmap("url(" + m_svg + ")", type);
        QCOMPARE(type, int(TavoVectorImageType));
        QCOMPARE(CTavoWidgetStyle::getPixmap("url(" + m_svg + "), size(32x32)", type), vector);
        QCOMPARE(type, int(TavoVectorImageType));
        QVERIFY(!CTavoWidgetStyle::getPixmap("url(/no/such/file.png)", type));
        QVERIFY(!CTavoWidgetStyle::getPixmap(m_opaque, type));

        CTavoWidgetStyle s = block("background-image: url(" + m_opaque + "); icon-image: url(/missing.png);"
                                   "default-photo: url(" + m_svg + ")");
        QCOMPARE(s.Image("background-image").type(), QMetaType::QImage);
        QCOMPARE(s.Image("background-image").size(), QSize(8, 4));
        bool found = false;
        QVERIFY(s.Image("icon-image", CTavoImage(), &found).isNull()); // present but null
        QVERIFY(found);
        QCOMPARE(s.Image("default-photo").size(), QSize(16, 16));
        QCOMPARE(s.Image("default-photo").type(), QMetaType::Type(TavoVectorImageType));
    }

    void resetEmptiesTheRepositoryButKeepsRenderers()
    {
        int type = 0;
        CTavoWidgetStyle::getPixmap("url(" + m_opaque + ")", type);
        CTavoWidgetStyle::getPixmap("url(" + m_svg + ")", type);
        CTavoWidgetStyle::parseBrush("red");
        QVERIFY(!StyleResourceContainer.images().isEmpty());
        StyleResourceContainer.reset();
        QVERIFY(StyleResourceContainer.images().isEmpty() && StyleResourceContainer.brushes().isEmpty()
                && StyleResourceContainer.pixmaps().isEmpty());
        QVERIFY(StyleResourceContainer.renderers().contains(m_svg));
        // A path with capitals misses the lower-case look-up and renders anew.
        QMetaType::Type stored = QMetaType::UnknownType;
        void* first = StyleResourceContainer.registerPixmap(m_upperSvg, QSize(), stored);
        void* second = StyleResourceContainer.registerPixmap(m_upperSvg, QSize(), stored);
        QVERIFY(first != second);
        QVERIFY(CTavoImage(QMetaType::Type(TavoVectorImageType), first).width() == 16); // old handle still alive
    }

    // A hostile skin may name any number of properties: the lookup of their
    // types must not keep them all. Types stay right after the memo starts afresh.
    void typeLookupStaysBounded()
    {
        if (!__sanitizer_get_current_allocated_bytes)
            QSKIP("needs the sanitizer runtime to count the heap");
        for (int i = 0; i < 4000; ++i)
            CTavoWidgetStyle::getType(QStringLiteral("warm-up-%1").arg(i));
        const size_t before = __sanitizer_get_current_allocated_bytes();
        for (int i = 0; i < 60000; ++i)
            CTavoWidgetStyle::getType(QStringLiteral("hostile-property-name-%1").arg(i));
        const qint64 grown = qint64(__sanitizer_get_current_allocated_bytes()) - qint64(before);
        QVERIFY2(grown < 512 * 1024, qPrintable(QStringLiteral("grew by %1 bytes").arg(grown)));
        QCOMPARE(CTavoWidgetStyle::getType(QStringLiteral("pressed-color")),
                 CTavoWidgetStyle::getType(QStringLiteral("color")));
    }

    void imageHandlesAndPainting()
    {
        QMetaType::Type type = QMetaType::UnknownType;
        auto* image = static_cast<QImage*>(StyleResourceContainer.registerPixmap(m_opaque, QSize(), type));
        CTavoImage a(QMetaType::QImage, image);
        CTavoImage null;
        QVERIFY(null.isNull() && null.size() == QSize(-1, -1));
        QVERIFY(null == a && !(a == null) && a != null); // a null handle on the left equals everything
        QVERIFY(CTavoImage(QMetaType::QString, image).isNull()); // other types keep no pointer
        QVERIFY(a.pixmap().size() == QSize(8, 4) && a.data().size() == QSize(8, 4));

        // A pixmap handle refuses an image update; an empty one loads.
        QPixmap* alpha = static_cast<QPixmap*>(StyleResourceContainer.registerPixmap(m_alpha, QSize(), type));
        CTavoImage p(alpha);
        QVERIFY(!p.update(QMetaType::QImage, m_opaque));
        CTavoImage fresh;
        QVERIFY(fresh.update(QMetaType::QImage, m_opaque));
        QCOMPARE(fresh.size(), QSize(8, 4));
        CTavoImage freshPixmap(QMetaType::QPixmap, nullptr);
        QVERIFY(!freshPixmap.update(QMetaType::QPixmap, "/no/such.png"));
        QVERIFY(!CTavoImage().update(QMetaType::QString, m_opaque));

        CTavoImage copy;
        copy << a;
        QCOMPARE(copy.size(), QSize(8, 4));
        copy.dim();
        const int blue = QColor(copy.data().pixel(0, 0)).blue(); // half black over blue, in 16 bits
        QVERIFY2(blue > 110 && blue < 140, qPrintable(QString::number(blue)));

        QImage canvas(40, 40, QImage::Format_ARGB32);
        canvas.fill(Qt::transparent);
        QPainter painter(&canvas);
        QVERIFY(a.paint(&painter, QRect(0, 0, 10, 10)));
        QVERIFY(!a.paint(&painter, QRect(5, 5, -3, 4)));
        QVERIFY(!null.paint(&painter, QRect(0, 0, 4, 4)));
        // A vector is rasterised once for each size it is shown at.
        void* renderer = StyleResourceContainer.registerPixmap(m_svg, QSize(), type);
        CTavoImage v(type, renderer);
        const int before = StyleResourceContainer.pixmaps().size();
        for (const QRect& r : {QRect(20, 0, 10, 10), QRect(20, 0, 10, 10), QRect(10, 10, 20, 20)})
            QVERIFY(v.paint(&painter, r));
        painter.end();
        QCOMPARE(StyleResourceContainer.pixmaps().size(), before + 2);
        QCOMPARE(QColor(canvas.pixel(9, 9)), QColor(Qt::blue));
        QCOMPARE(QColor(canvas.pixel(25, 25)), QColor(Qt::red));
        QVERIFY(!StyleResourceContainer.registerScaledImage(nullptr, type, QSize(4, 4)));
        QCOMPARE(StyleResourceContainer.registerScaledImage(renderer, QMetaType::QImage, QSize(4, 4)), renderer);
    }
};

QTEST_MAIN(TestStyleValues)
#include "tst_stylevalues.moc"
