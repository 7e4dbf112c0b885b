// The magnifiers on pixels: the glass renders its source offscreen, enlarges
// it and shapes it with its mask; the label wraps, places itself and hides on
// its own; the pixmap holder paints and passes presses on; the smoother of the
// glass's pointer.
#include <QtTest>
#include <cmath>
#include <limits>

#include <QPainter>
#include <QSignalSpy>

#include "layout/CTavoLayoutWidget.h"
#include "widgets/CKalmanFilter.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoMagnifyingGlass.h"
#include "widgets/CTavoMagnifyingLabel.h"
#include "widgets/CTavoPixmapHolder.h"

Q_DECLARE_METATYPE(QEvent::Type)

namespace {
// A source in two halves, red and blue, with a black bar at x 20 to 29.
class Source : public QWidget
{
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter p(this);
        p.fillRect(0, 0, width() / 2, height(), Qt::red);
        p.fillRect(width() / 2, 0, width() - width() / 2, height(), Qt::blue);
        p.fillRect(20, 0, 10, height(), Qt::black);
    }
};

// A mask opaque in its left half, transparent in its right half.
QImage halfMask(int w, int h)
{
    QImage mask(w, h, QImage::Format_ARGB32);
    mask.fill(Qt::transparent);
    QPainter p(&mask);
    p.fillRect(0, 0, w / 2, h, Qt::white);
    return mask;
}

// The picture the glass shows: the brush of its background.
QImage glassPicture(const CTavoMagnifyingGlass& glass)
{
    return glass.palette().brush(QPalette::Active, glass.backgroundRole()).textureImage();
}
}  // namespace

class TestMagnifier : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qRegisterMetaType<QEvent::Type>("QEvent::Type"); }

    void glassRendersItsSourceOffscreen()
    {
        QWidget screen;
        screen.resize(400, 300);
        Source source(&screen);
        source.setGeometry(50, 100, 200, 40);
        CTavoMagnifyingGlass glass(&screen, &source);
        QCOMPARE(glass.magFactor(), -1.0f);
        QCOMPARE(glass.magGap(), 10);
        screen.show();
        QVERIFY(QTest::qWaitForWindowExposed(&screen));

        // Without a mask, and with the factor left unset, there is no glass.
        glass.show(QPoint(25, 20));
        QVERIFY(!glass.isVisible());
        glass.setMagGlassMask(halfMask(30, 10));
        glass.show(QPoint(25, 20));
        QVERIFY(!glass.isVisible() && !glass.cachedImage());

        glass.setMagFactor(2.0f);
        glass.show(QPoint(25, 20));
        QVERIFY(glass.isVisible());
        // 80 high (40 times 2), three times as wide; the mask scaled to it.
        QCOMPARE(glass.size(), QSize(240, 80));
        QCOMPARE(glass.magGlassMask().size(), QSize(240, 80));
        // Centred on the point, above the source by the gap.
        QCOMPARE(glass.pos(), QPoint(50 + 25 - 120, 100 - 80 - 10));
        // The cache is the whole source, enlarged: QWidget::render works offscreen.
        const QImage* cache = glass.cachedImage();
        QVERIFY(cache);
        QCOMPARE(cache->size(), QSize(400, 80));
        QCOMPARE(QColor(cache->pixel(10, 40)), QColor(Qt::red));
        QCOMPARE(QColor(cache->pixel(50, 40)), QColor(Qt::black));
        QCOMPARE(QColor(cache->pixel(390, 40)), QColor(Qt::blue));
        // The point (the black bar's middle) is in the glass's middle; the mask
        // leaves the right half transparent.
        const QImage picture = glassPicture(glass);
        QCOMPARE(picture.size(), QSize(240, 80));
        QCOMPARE(QColor(picture.pixel(119, 40)), QColor(Qt::black));
        QCOMPARE(QColor(picture.pixel(100, 40)), QColor(Qt::red));
        QCOMPARE(qAlpha(picture.pixel(200, 40)), 0);
        // Left of the source's start the grey of the glass shows through.
        QCOMPARE(qAlpha(picture.pixel(5, 40)), 0x80);
        QVERIFY(glass.autoFillBackground());

        // The same place twice paints once; another place only cuts the cache anew.
        const int renders = glass.renderCount();
        glass.show(QPoint(25, 20));
        QCOMPARE(glass.renderCount(), renders);
        glass.show(QPoint(150, 20));
        QCOMPARE(glass.renderCount(), renders + 1);
        QCOMPARE(glass.cachedImage(), cache);
        QCOMPARE(QColor(glassPicture(glass).pixel(119, 40)), QColor(Qt::blue));
        // Until the owner says the text changed.
        glass.updateMagnifiedView();
        QVERIFY(!glass.cachedImage());
        glass.show(QPoint(150, 20));
        QVERIFY(glass.cachedImage() && glass.renderCount() == renders + 2);
    }

    void glassClipAndPlaceBelowTheTop()
    {
        QWidget screen;
        screen.resize(400, 300);
        Source source(&screen);
        source.setGeometry(50, 200, 200, 40);
        CTavoMagnifyingGlass glass(&screen, &source);
        glass.setMagFactor(1.5f);
        glass.setMagGap(4);
        glass.setMagGlassMask(halfMask(8, 8));
        // Only the part left of x 100 is rendered.
        glass.setClip(QRect(0, 0, 100, 40));
        screen.show();
        QVERIFY(QTest::qWaitForWindowExposed(&screen));
        glass.show(QPoint(0, 0));
        QCOMPARE(glass.size(), QSize(180, 60));
        QCOMPARE(glass.pos(), QPoint(50 - 90, 200 - 60 - 4));
        const QImage* cache = glass.cachedImage();
        QCOMPARE(QColor(cache->pixel(10, 30)), QColor(Qt::red));
        QVERIFY(qBlue(cache->pixel(250, 30)) < 200);
        // A source at the top of the screen: the glass stays at 0 and overlaps it.
        glass.hide();
        source.move(50, 20);
        glass.show(QPoint(0, 0));
        QCOMPARE(glass.pos(), QPoint(-40, 0));
        // A factor below zero makes no picture at all.
        glass.setMagFactor(-1.0f);
        glass.hide();
        glass.show(QPoint(10, 10));
        QVERIFY(!glass.isVisible());
        CTavoMagnifyingGlass orphan(&screen, nullptr);
        orphan.setMagFactor(2.0f);
        orphan.setMagGlassMask(halfMask(8, 8));
        orphan.show(QPoint(1, 1));
        QVERIFY(!orphan.isVisible());
    }

    void labelWrapsPlacesAndHides()
    {
        QWidget screen;
        screen.resize(800, 480);
        CTavoMagnifyingLabel label(&screen);
        QCOMPARE(label.label()->objectName(), QString("magnifying-label"));
        QCOMPARE(label.offset(), QPoint(10, 20));
        QCOMPARE(label.timeout(), 1500);
        QVERIFY(label.hideTimer()->isSingleShot());
        QString style("CTavoMagnifyingLabel { offset: 4:6; timeout: 150; }\n"
                      "CTavoLabelWidget#magnifying-label { font: 20px DejaVu Sans; color: #ffffff; }");
        QString attributes;
        label.updateStyle(style, attributes, true);
        QCOMPARE(label.offset(), QPoint(4, 6));
        QCOMPARE(label.timeout(), 150);
        screen.show();
        QVERIFY(QTest::qWaitForWindowExposed(&screen));

        label.onDisplayRequest("W", QPoint(100, 200), true);
        QVERIFY(label.isVisible());
        const QSize one = label.label()->actualSize();
        QVERIFY(one.width() > 5 && one.width() < 40);
        QCOMPARE(label.size(), one + QSize(1, 5));
        QCOMPARE(label.pos(), QPoint(104, 194));
        // The text in the middle.
        QCOMPARE(label.label()->rect(), QRect(QPoint((label.width() - one.width()) / 2, (label.height() - one.height()) / 2), one));
        // Hidden by itself after the style's time-out.
        QTRY_VERIFY_WITH_TIMEOUT(!label.isVisible(), 1000);

        // A long text wraps at 350 pixels.
        label.onDisplayRequest(QString("wide words ").repeated(12), QPoint(0, 300), true);
        QVERIFY(label.label()->actualSize().width() <= 350);
        QVERIFY(label.label()->actualSize().height() > 2 * one.height());
        QCOMPARE(label.width(), label.label()->actualSize().width() + 1);
        // A request to hide hides at once.
        label.onDisplayRequest(QString(), QPoint(), false);
        QVERIFY(!label.isVisible());

        // Time-out 0: it stays until asked to hide.
        style.replace("timeout: 150", "timeout: 0");
        label.updateStyle(style, attributes, true);
        QCOMPARE(label.offset(), QPoint(4, 6));
        label.onDisplayRequest("K", QPoint(10, 300), true);
        QTest::qWait(300);
        QVERIFY(label.isVisible() && !label.hideTimer()->isActive());
        label.onDisplayRequest("K", QPoint(10, 300), false);
        QVERIFY(!label.isVisible());
    }

    void pixmapHolderPaintsAndPassesPresesOn()
    {
        QWidget surface;
        CTavoPixmapHolder holder(&surface, 10, 20, 30, 30);
        holder.setVisible(true);
        QSignalSpy forwarded(&holder, &CTavoPixmapHolder::forwardEvent);
        // Without a pixmap nothing is passed on and nothing painted.
        QVERIFY(!holder.handleEvent(QEvent::MouseButtonPress, QPoint(15, 25)));
        QCOMPARE(forwarded.count(), 0);
        QImage canvas(60, 60, QImage::Format_RGB32);
        canvas.fill(Qt::white);
        {
            QPainter p(&canvas);
            holder.paint(&p);
        }
        QCOMPARE(QColor(canvas.pixel(15, 25)), QColor(Qt::white));

        QPixmap pixmap(8, 8);
        pixmap.fill(Qt::green);
        holder.setPixmap(&pixmap);
        {
            QPainter p(&canvas);
            holder.paint(&p);
        }
        QCOMPARE(QColor(canvas.pixel(10, 20)), QColor(Qt::green));
        QCOMPARE(QColor(canvas.pixel(17, 27)), QColor(Qt::green));
        QCOMPARE(QColor(canvas.pixel(19, 29)), QColor(Qt::white));

        // Presses and releases go on; the event is never taken.
        QVERIFY(!holder.handleEvent(QEvent::MouseButtonPress, QPoint(15, 25)));
        QVERIFY(!holder.handleEvent(QEvent::MouseMove, QPoint(16, 25)));
        QVERIFY(!holder.handleEvent(QEvent::MouseButtonRelease, QPoint(17, 26)));
        QCOMPARE(forwarded.count(), 2);
        QCOMPARE(forwarded.at(0).at(0).value<QEvent::Type>(), QEvent::MouseButtonPress);
        QCOMPARE(forwarded.at(1).at(1).toInt(), 1);
        QCOMPARE(forwarded.at(1).at(2).toInt(), 17);
        QCOMPARE(forwarded.at(1).at(3).toInt(), 26);

        // A hidden holder paints nothing.
        holder.setVisible(false);
        canvas.fill(Qt::white);
        {
            QPainter p(&canvas);
            holder.paint(&p);
        }
        QCOMPARE(QColor(canvas.pixel(10, 20)), QColor(Qt::white));
    }

    // The one-dimensional smoother behind the glass's pointer: its first steps,
    // convergence on a steady signal, and survival of hostile samples.
    void followsASteadySignal()
    {
        CKalmanFilter f(0.5f, 1.5f);
        f.addMeasurment(100.0f);
        // p = 0.5, k = 0.5 / 2.0
        QCOMPARE(f.estimate, 25.0f);
        QCOMPARE(f.lastEstimate, 25.0f);
        QCOMPARE(f.errorCovariance, 0.375f);
        f.addMeasurment(100.0f);
        const float k = (1.0f / 2.375f) * 0.875f;
        QCOMPARE(f.estimate, 25.0f + 75.0f * k);
        QCOMPARE(f.errorCovariance, (1.0f - k) * 0.875f);

        CKalmanFilter g(0.5f, 1.5f);
        float previous = 0.0f;
        int steps = 0;
        for (; std::fabs(g.estimate - 240.0f) > 0.01f && steps < 100; ++steps) {
            g.addMeasurment(240.0f);
            QVERIFY(g.estimate > previous && g.estimate <= 240.0f);
            previous = g.estimate;
        }
        QVERIFY2(steps < 30, qPrintable(QString("took %1 steps").arg(steps)));
        // The gain settles where P = (1 - K)(P + q), K = (P + q) / (P + q + r).
        const double pInf = (-0.5 + std::sqrt(0.25 + 4.0 * 0.5 * 1.5)) / 2.0;
        QVERIFY(std::fabs(g.errorCovariance - pInf) < 1e-4);
        QCOMPARE(int(g.estimate), 239);  // truncated, as the pointer uses it
    }

    void hostileSamplesLeaveTheEstimate()
    {
        CKalmanFilter f(0.5f, 1.5f);
        f.addMeasurment(10.0f);
        const float before = f.estimate;
        const float cov = f.errorCovariance;
        for (float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                          -std::numeric_limits<float>::infinity()})
            f.addMeasurment(bad);
        QCOMPARE(f.estimate, before);
        QCOMPARE(f.errorCovariance, cov);
        // Without any noise the measurement is taken as it is.
        CKalmanFilter exact(0.0f, 0.0f);
        exact.addMeasurment(7.0f);
        QCOMPARE(exact.estimate, 7.0f);
        QVERIFY(std::isfinite(exact.errorCovariance));
    }
};

QTEST_MAIN(TestMagnifier)
#include "tst_magnifier.moc"
