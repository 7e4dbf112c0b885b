// Icons, icon labels and the image widget: what they load from real icon
// files, how they size and arrange themselves, and what they paint.
#include <QBuffer>
#include <QPainter>
#include <QSignalSpy>
#include <QWidget>
#include <QtTest>

#include "IconTestSupport.h"
#include "TextTestSupport.h"
#include "style/CTavoIconRepository.h"
#include "style/CTavoStyleSheet.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoIconLabel.h"
#include "widgets/CTavoImageWidget.h"

using IconTest::countColour;
using IconTest::writePng;
using TextTest::CountingSurface;
using TextTest::kWhite;
using TextTest::render;
typedef QList<QVariant> Event;

namespace {

const QRgb kRed = qRgb(255, 0, 0);
const QRgb kGreen = qRgb(0, 255, 0);
const QRgb kBlue = qRgb(0, 0, 255);
const QRgb kYellow = qRgb(255, 255, 0);

// Table rows of the repository used below.
const int kMessages = 5;   // "Messages"
const int kAlerts = 6;     // "Alerts"
const int kFeatures = 7;   // "Features"
const int kSipPng = 12;    // "SIP.png": never written, so it falls back to the placeholder

int s_sounds = 0;

CTavoIconDefinition icons(int primary, const QList<int>& further = {}, const QString& label = QString(),
                          int pressed = -1)
{
    return CTavoIconDefinition(QString(), label, primary, pressed, further);
}

} // namespace

class TestIcon : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    CTavoStyleSheet m_sheet;

    void useStyle(const QString& style) { m_sheet.set(style.toUtf8().constData(), ""); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        writePng(m_dir, "Messages", QSize(20, 10), Qt::red);
        writePng(m_dir, "Alerts", QSize(20, 10), Qt::green);
        writePng(m_dir, "Features", QSize(20, 10), Qt::blue);
        writePng(m_dir, "Messages_Inv", QSize(20, 10), Qt::yellow);
        IconTest::useIconDir(m_dir);
        CTavoButton::setClickSound([] { ++s_sounds; });
    }
    void cleanupTestCase()
    {
        CTavoButton::setClickSound(nullptr);
        iconRepository.clear();
    }

    void anIconScalesToItsLimits_data()
    {
        QTest::addColumn<QSize>("limit");
        QTest::addColumn<int>("restriction");
        QTest::addColumn<QSize>("shown");
        QTest::newRow("no limit: the picture's size") << QSize(-1, -1) << 3 << QSize(20, 10);
        QTest::newRow("width") << QSize(40, 40) << 3 << QSize(40, 20);
        QTest::newRow("height") << QSize(100, 8) << 3 << QSize(16, 8);
        QTest::newRow("height only") << QSize(5, 8) << int(CTavoIcon::RestrictHeight) << QSize(16, 8);
    }
    void anIconScalesToItsLimits()
    {
        QFETCH(QSize, limit);
        QFETCH(int, restriction);
        QFETCH(QSize, shown);
        CTavoIcon icon(nullptr, 10, 20);
        icon.init(icons(kMessages), limit, 0, restriction);
        QVERIFY(icon.isInitialized() && icon.isShowingIcon(kMessages));
        QCOMPARE(icon.displayMode(), int(CTavoIcon::IconOnly));
        QCOMPARE(icon.rect(), QRect(QPoint(10, 20), shown));
        QCOMPARE(icon.actualIconWidth(), shown.width());
        const QImage image = render(icon);
        QCOMPARE(countColour(image, QRect(QPoint(10, 20), shown), kRed), shown.width() * shown.height());
        QCOMPARE(countColour(image, image.rect(), kRed), shown.width() * shown.height());
    }

    void aRowPaintsInItsDirection_data()
    {
        QTest::addColumn<QString>("style");
        QTest::addColumn<int>("primary");
        QTest::addColumn<QList<int>>("further");
        QTest::addColumn<QSize>("area");
        // Where red, green and blue show, each alone in the picture.
        QTest::addColumn<QList<QRect>>("shown");
        const QList<int> three{kMessages, kAlerts, kFeatures};
        QTest::newRow("left to right") << "layout-direction: left-to-right;" << -1 << three << QSize(60, 10)
                                       << QList<QRect>{{0, 0, 20, 10}, {20, 0, 20, 10}, {40, 0, 20, 10}};
        QTest::newRow("right to left") << "layout-direction: right-to-left;" << -1 << three << QSize(60, 10)
                                       << QList<QRect>{{40, 0, 20, 10}, {20, 0, 20, 10}, {0, 0, 20, 10}};
        // Each icon starts 5 pixels before the end of the one before and covers it.
        QTest::newRow("overlapped") << "layout-direction: left-to-right; overlapped-pixels: 5;" << -1 << three
                                    << QSize(60, 10)
                                    << QList<QRect>{{0, 0, 15, 10}, {15, 0, 15, 10}, {30, 0, 20, 10}};
        // Three icons share 30 pixels: 10 wide each, the shape kept, centred in the area's height.
        QTest::newRow("maximum area") << "layout-direction: left-to-right; maximum-icon-area-size: 30x30;" << -1
                                      << three << QSize(30, 30)
                                      << QList<QRect>{{0, 12, 10, 5}, {10, 12, 10, 5}, {20, 12, 10, 5}};
        QTest::newRow("top to bottom") << "layout-direction: top-to-bottom; layout-type: vertical;" << kMessages
                                       << QList<int>{kAlerts} << QSize(20, 20)
                                       << QList<QRect>{{0, 0, 20, 10}, {0, 10, 20, 10}, QRect()};
    }
    void aRowPaintsInItsDirection()
    {
        QFETCH(QString, style);
        QFETCH(int, primary);
        QFETCH(QList<int>, further);
        QFETCH(QSize, area);
        QFETCH(QList<QRect>, shown);
        useStyle("CTavoIcon { " + style + " }");
        CTavoIcon row;
        row.setStyleSheet(&m_sheet, true);
        row.init(icons(primary, further), QSize(-1, -1), 0);
        QCOMPARE(row.iconRect().size(), area);
        const QImage image = render(row);
        const QRgb colours[] = {kRed, kGreen, kBlue};
        for (int i = 0; i < 3; ++i) {
            const int pixels = shown[i].width() * shown[i].height();
            QCOMPARE(countColour(image, shown[i], colours[i]), pixels);
            QCOMPARE(countColour(image, image.rect(), colours[i]), pixels);
        }
    }

    void theLabelDecidesTheMode()
    {
        CTavoIcon icon;
        icon.init(icons(kMessages, {}, "12 new"), QSize(-1, -1), 0);
        QCOMPARE(icon.displayMode(), int(CTavoIcon::IconAndLabel));
        QVERIFY(icon.label()->isVisible() && icon.label()->text() == "12");
        // Beside the icon: the icon moves right by a quarter of the label.
        QCOMPARE(icon.iconRect().left(), icon.left() + icon.label()->width() / 4);
        QCOMPARE(icon.width(), icon.label()->width() + 20 + 2);
        icon.init(icons(kMessages, {}, "2 Anna"), QSize(-1, -1), 1);
        QCOMPARE(icon.displayMode(), int(CTavoIcon::IconAndTextLabel));
        QCOMPARE(icon.label()->text(), QString("2 Anna"));
        icon.init(icons(-1, {}, "Anna"), QSize(-1, -1), 0);
        QCOMPARE(icon.displayMode(), int(CTavoIcon::LabelOnly));

        // A missing file shows the number asked for.
        icon.init(icons(kSipPng), QSize(-1, -1), 0);
        QVERIFY(icon.isInitialized() && icon.displayMode() == CTavoIcon::IconAndLabel);
        QCOMPARE(icon.label()->text(), QString::number(kSipPng));

        // Numbers outside the table show nothing.
        CTavoIcon none(nullptr, 5, 5, 30, 30);
        none.init(icons(TAVO_ICON_COUNT), QSize(-1, -1), 0);
        QCOMPARE(none.displayMode(), int(CTavoIcon::ShowNothing));
        QVERIFY(!none.isInitialized() && !none.isVisible());
        QCOMPARE(none.rect().size(), QSize(0, 0));
        none.init(icons(-7, {}, QString(), 100000), QSize(-1, -1), 0);
        QCOMPARE(countColour(render(none), QRect(0, 0, 200, 100), kWhite), 200 * 100);

        // The skin may switch the label off.
        useStyle("CTavoIcon { enable-label: false; }");
        CTavoIcon bare;
        bare.setStyleSheet(&m_sheet, true);
        bare.init(icons(kMessages, {}, "3"), QSize(-1, -1), 0);
        QVERIFY(bare.displayMode() == CTavoIcon::IconOnly && !bare.label()->isVisible());
        QCOMPARE(bare.rect().size(), QSize(20, 10));
    }

    void theLabelIsPlacedByTheSkin()
    {
        useStyle("CTavoIcon { label-offset: 3; } CTavoIcon#placed { label-location: 15:2; label-size: 12x8; }");
        CTavoIcon badge;
        badge.setStyleSheet(&m_sheet, true);
        badge.init(icons(kMessages, {}, "7"), QSize(-1, -1), 0);
        badge.move(40, 30);
        QCOMPARE(badge.label()->pos(), QPoint(37, 27));
        QCOMPARE(badge.iconRect().topLeft(), QPoint(40 + badge.label()->width() / 4, 30));

        CTavoIcon placed;
        placed.setObjectName("placed");
        placed.setStyleSheet(&m_sheet, true);
        placed.init(icons(kMessages, {}, "7"), QSize(-1, -1), 0);
        placed.move(40, 30);
        QCOMPARE(placed.label()->rect(), QRect(55, 32, 12, 8));
        QCOMPARE(placed.iconRect().topLeft(), QPoint(40, 30));
        QCOMPARE(placed.width(), 20 + 2);
    }

    void anUnchangedInitDoesNoWork()
    {
        useStyle("CTavoIcon { size: 40x20; }");
        CTavoIcon icon;
        icon.setStyleSheet(&m_sheet, true);
        const CTavoIconDefinition definition = icons(kMessages, {}, "5");
        icon.init(definition, true);
        QCOMPARE(icon.rect().size(), QSize(40 + icon.label()->width() + 2, 22));
        // The size asked for must be the size the icon has for the shortcut to apply.
        const QSize size = icon.rect().size();
        icon.init(definition, size, 0);
        icon.label()->setVisible(false);
        icon.init(definition, size, 0);
        QVERIFY2(!icon.label()->isVisible(), "the second init did the work again");
        icon.init(icons(kMessages, {}, "6"), size, 0);
        QVERIFY(icon.label()->isVisible());
        QCOMPARE(icon.label()->text(), QString("6"));
    }

    void invertedAndPressedFormsArePainted()
    {
        CTavoIcon icon;
        icon.init(icons(kMessages, {}, QString(), kAlerts), QSize(-1, -1), 0);
        QCOMPARE(icon.loadedPressedIcon(), kAlerts);
        const auto paints = [&](QRgb colour) { return countColour(render(icon), QRect(0, 0, 20, 10), colour); };
        QCOMPARE(paints(kRed), 200);
        icon.setDown(true);
        QCOMPARE(paints(kGreen), 200);
        icon.setDown(false);
        icon.setInverted(true);
        QCOMPARE(paints(kYellow), 200);
        icon.setInverted(false);
        QCOMPARE(paints(kRed), 200);
    }

    void aSpinnerRepaintsInStepsOverFifteenDegrees()
    {
        CountingSurface surface;
        surface.resize(100, 100);
        surface.show();
        QVERIFY(QTest::qWaitForWindowExposed(&surface));
        CTavoIcon spinner(&surface, 10, 10);
        spinner.init(icons(kMessages), QSize(-1, -1), 0);
        spinner.setRotationState(true);
        spinner.setRotationAngle(1000.0f); // far from wherever the shared angle stands
        const int start = surface.paints;
        for (float angle = 1010.0f; angle <= 1080.0f; angle += 10.0f)
            spinner.setRotationAngle(angle);
        QCOMPARE(surface.paints - start, 4);
        QCOMPARE(spinner.rotationAngle(), 1080.0f);
        QVERIFY(spinner.setProperty("rotationAngle", 1100.0));
        QCOMPARE(surface.paints - start, 5);
    }

    void pressAndReleaseReportTheUrl()
    {
        s_sounds = 0;
        CTavoIcon icon;
        QSignalSpy spy(&icon, &CTavoIcon::clicked);
        icon.init(CTavoIconDefinition("icon:5", QString(), kMessages), QSize(-1, -1), 0);
        // A release without a press tells nothing and makes no sound, but is still taken.
        QVERIFY(icon.handleEvent(QEvent::MouseButtonRelease, QPoint()));
        QVERIFY(spy.isEmpty());
        QCOMPARE(s_sounds, 0);
        QVERIFY(icon.handleEvent(QEvent::MouseButtonPress, QPoint()) && icon.isDown());
        QVERIFY(icon.handleEvent(QEvent::KeyRelease, QPoint()) && !icon.isDown());
        QCOMPARE(spy, (QList<Event>{{"icon:5", "pressed"}, {"icon:5", "released"}}));
        QCOMPARE(s_sounds, 1);
        QVERIFY(!icon.handleEvent(QEvent::MouseMove, QPoint()));

        // Without a URL the press is still told, but the event goes on.
        CTavoIcon plain;
        QSignalSpy plainSpy(&plain, &CTavoIcon::clicked);
        plain.init(icons(kMessages), QSize(-1, -1), 0);
        QVERIFY(!plain.handleEvent(QEvent::KeyPress, QPoint()));
        QCOMPARE(plainSpy.size(), 1);
    }

    void iconLabelTakesTheBackgroundOfItsMode()
    {
        const QString small = writePng(m_dir, "label-small", QSize(16, 16), Qt::blue);
        const QString big = writePng(m_dir, "label-big", QSize(40, 16), Qt::green);
        useStyle(QString("CTavoIconLabel { background-image: url(%1); big-label-background-image: url(%2);"
                         " text-location-offset: 2:3; }")
                     .arg(small, big));
        CTavoIconLabel label;
        label.setStyleSheet(&m_sheet, true);
        label.set(0, 7);
        QVERIFY(label.text() == "7" && label.rect().size() == QSize(16, 16));
        QVERIFY(countColour(render(label), QRect(0, 0, 16, 16), kBlue) > 100);
        // Three characters take the big background whatever the mode.
        label.set(0, QString("123"));
        QVERIFY(label.mode() == 1 && label.rect().size() == QSize(40, 16));
        QVERIFY(countColour(render(label), QRect(0, 0, 40, 16), kGreen) > 300);
        label.set(0, 0);
        QVERIFY(!label.isVisible());
        label.set(0, QString());
        QVERIFY(!label.isVisible() && label.text().isEmpty());
    }

    void imageWidgetDecodesJpegAndFallsBack()
    {
        const QString fallback = writePng(m_dir, "fallback", QSize(10, 10), Qt::blue);
        useStyle(QString("CTavoImageWidget { default-image: url(%1); }").arg(fallback));
        CTavoImageWidget widget(nullptr, 0, 0, 40, 40);
        widget.setStyleSheet(&m_sheet, true);
        QVERIFY(countColour(render(widget), QRect(0, 0, 40, 40), kBlue) > 1000);

        QImage red(8, 8, QImage::Format_RGB32);
        red.fill(Qt::red);
        QByteArray jpeg;
        QBuffer buffer(&jpeg);
        buffer.open(QIODevice::WriteOnly);
        QVERIFY(red.save(&buffer, "JPG", 100));
        widget.setImage(jpeg.toBase64());
        const QImage image = render(widget);
        int reddish = 0;
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 40; ++x)
                reddish += qRed(image.pixel(x, y)) > 200 && qGreen(image.pixel(x, y)) < 60;
        QCOMPARE(reddish, 1600);

        // Empty data is ignored; data that is no JPEG clears the picture.
        widget.setImage(QByteArray());
        QVERIFY(!widget.image().isNull());
        widget.setImage(QByteArray("bm90IGEgcGljdHVyZQ=="));
        QVERIFY(widget.image().isNull());
        QVERIFY(countColour(render(widget), QRect(0, 0, 40, 40), kBlue) > 1000);
    }
};

TAVO_TEXT_TEST_MAIN(TestIcon)
#include "tst_icon.moc"
