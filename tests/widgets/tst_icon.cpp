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
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoIconLabel.h"
#include "widgets/CTavoImageWidget.h"

using IconTest::countColour;
using IconTest::writePng;

namespace {

const QRgb kWhite = qRgb(255, 255, 255);
const QRgb kRed = qRgb(255, 0, 0);
const QRgb kGreen = qRgb(0, 255, 0);
const QRgb kBlue = qRgb(0, 0, 255);
const QRgb kYellow = qRgb(255, 255, 0);

// Table rows of the repository used below.
const int kMessages = 5;   // "Messages"
const int kAlerts = 6;     // "Alerts"
const int kFeatures = 7;   // "Features"
const int kSipPng = 12;    // "SIP.png": never written, so it falls back to the placeholder

QImage render(CTavoWidget& widget, const QSize& size = QSize(200, 100))
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(kWhite);
    QPainter painter(&image);
    widget.paint(&painter);
    return image;
}

class CountingSurface : public QWidget
{
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent*) override { ++paints; }
};

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
        writePng(m_dir, "Settings", QSize(20, 10), Qt::green);
        IconTest::useIconDir(m_dir);
    }
    void cleanupTestCase() { iconRepository.clear(); }

    void singleIconTakesThePictureSizeAndPaintsIt()
    {
        CTavoIcon icon(nullptr, 10, 20);
        icon.init(CTavoIconDefinition(QString(), QString(), kMessages), QSize(-1, -1), 0);
        QVERIFY(icon.isInitialized());
        QCOMPARE(icon.displayMode(), int(CTavoIcon::IconOnly));
        QCOMPARE(icon.iconType(), 1);
        QVERIFY(icon.isShowingIcon(kMessages));
        QCOMPARE(icon.rect(), QRect(10, 20, 20, 10));
        const QImage image = render(icon);
        QCOMPARE(countColour(image, QRect(10, 20, 20, 10), kRed), 200);
        QCOMPARE(countColour(image, image.rect(), kRed), 200);
    }

    void limitsScaleTheIconKeepingItsShape()
    {
        CTavoIcon icon;
        icon.init(CTavoIconDefinition(QString(), QString(), kMessages), QSize(40, 40), 0);
        QCOMPARE(icon.iconSizes().value(0), QSize(40, 20));
        QCOMPARE(icon.rect().size(), QSize(40, 20));
        icon.init(CTavoIconDefinition(QString(), QString(), kMessages), QSize(100, 8), 0);
        QCOMPARE(icon.iconSizes().value(0), QSize(16, 8));
        // Only the height restricted: the width stays as drawn.
        icon.init(CTavoIconDefinition(QString(), QString(), kMessages), QSize(5, 8), 0, CTavoIcon::RestrictHeight);
        QCOMPARE(icon.iconSizes().value(0), QSize(16, 8));
        QCOMPARE(icon.actualIconWidth(), 16);
    }

    void aRowPaintsInItsDirectionWithOverlap()
    {
        useStyle("CTavoIcon { layout-direction: left-to-right; }"
                 "CTavoIcon#rtl { layout-direction: right-to-left; }"
                 "CTavoIcon#overlapped { layout-direction: left-to-right; overlapped-pixels: 5; }");
        const CTavoIconDefinition row(QString(), QString(), -1, -1, {kMessages, kAlerts, kFeatures});

        CTavoIcon ltr;
        ltr.setStyleSheet(&m_sheet, true);
        ltr.init(row, QSize(-1, -1), 0);
        QCOMPARE(ltr.iconSizes().size(), 3);
        QCOMPARE(ltr.iconRect().size(), QSize(60, 10));
        QImage image = render(ltr);
        QCOMPARE(countColour(image, QRect(0, 0, 20, 10), kRed), 200);
        QCOMPARE(countColour(image, QRect(20, 0, 20, 10), kGreen), 200);
        QCOMPARE(countColour(image, QRect(40, 0, 20, 10), kBlue), 200);

        CTavoIcon rtl;
        rtl.setObjectName("rtl");
        rtl.setStyleSheet(&m_sheet, true);
        rtl.init(row, QSize(-1, -1), 0);
        image = render(rtl);
        QCOMPARE(countColour(image, QRect(40, 0, 20, 10), kRed), 200);
        QCOMPARE(countColour(image, QRect(0, 0, 20, 10), kBlue), 200);

        CTavoIcon overlapped;
        overlapped.setObjectName("overlapped");
        overlapped.setStyleSheet(&m_sheet, true);
        overlapped.init(row, QSize(-1, -1), 0);
        image = render(overlapped);
        // Each icon starts 5 pixels before the end of the one before and covers it.
        QCOMPARE(countColour(image, QRect(0, 0, 15, 10), kRed), 150);
        QCOMPARE(countColour(image, QRect(15, 0, 15, 10), kGreen), 150);
        QCOMPARE(countColour(image, QRect(30, 0, 20, 10), kBlue), 200);
        QCOMPARE(countColour(image, image.rect(), kRed), 150);
    }

    void aVerticalRowStacksTheIcons()
    {
        useStyle("CTavoIcon { layout-direction: top-to-bottom; layout-type: vertical; }");
        CTavoIcon column;
        column.setStyleSheet(&m_sheet, true);
        column.init(CTavoIconDefinition(QString(), QString(), kMessages, -1, {kAlerts}), QSize(-1, -1), 0);
        QCOMPARE(column.iconRect().size(), QSize(20, 20));
        const QImage image = render(column);
        QCOMPARE(countColour(image, QRect(0, 0, 20, 10), kRed), 200);
        QCOMPARE(countColour(image, QRect(0, 10, 20, 10), kGreen), 200);
    }

    void aRowFitsTheMaximumArea()
    {
        useStyle("CTavoIcon { layout-direction: left-to-right; maximum-icon-area-size: 30x30; }");
        CTavoIcon row;
        row.setStyleSheet(&m_sheet, true);
        row.init(CTavoIconDefinition(QString(), QString(), -1, -1, {kMessages, kAlerts, kFeatures}), QSize(-1, -1), 0);
        // Three icons share 30 pixels: 10 wide each, the shape kept.
        QCOMPARE(row.iconSizes(), (QVector<QSize>{QSize(10, 5), QSize(10, 5), QSize(10, 5)}));
        QCOMPARE(row.iconRect().size(), QSize(30, 30));
    }

    void aNumberedLabelKeepsOnlyTheNumber()
    {
        CTavoIcon icon;
        icon.init(CTavoIconDefinition(QString(), "12 new", kMessages), QSize(-1, -1), 0);
        QCOMPARE(icon.displayMode(), int(CTavoIcon::IconAndLabel));
        QCOMPARE(icon.label()->text(), QString("12"));
        QVERIFY(icon.label()->isVisible());
        // Beside the icon: the icon moves right by a quarter of the label.
        QCOMPARE(icon.iconRect().left(), icon.left() + icon.label()->width() / 4);
        QCOMPARE(icon.width(), icon.label()->width() + 20 + 2);

        icon.init(CTavoIconDefinition(QString(), "Anna", kMessages), QSize(-1, -1), 1);
        QCOMPARE(icon.displayMode(), int(CTavoIcon::IconAndTextLabel));
        QCOMPARE(icon.label()->text(), QString("Anna"));
    }

    void aLabelCanBeSwitchedOffByTheSkin()
    {
        useStyle("CTavoIcon { enable-label: false; }");
        CTavoIcon icon;
        icon.setStyleSheet(&m_sheet, true);
        icon.init(CTavoIconDefinition(QString(), "3", kMessages), QSize(-1, -1), 0);
        QCOMPARE(icon.displayMode(), int(CTavoIcon::IconOnly));
        QVERIFY(!icon.label()->isVisible());
        QCOMPARE(icon.rect().size(), QSize(20, 10));
    }

    void aMissingFileShowsTheNumberAskedFor()
    {
        CTavoIcon icon;
        icon.init(CTavoIconDefinition(QString(), QString(), kSipPng), QSize(-1, -1), 0);
        QVERIFY(icon.isInitialized());
        QCOMPARE(icon.label()->text(), QString::number(kSipPng));
        QCOMPARE(icon.displayMode(), int(CTavoIcon::IconAndLabel));
    }

    void numbersOutsideTheTableShowNothing()
    {
        CTavoIcon icon(nullptr, 5, 5, 30, 30);
        icon.init(CTavoIconDefinition(QString(), QString(), TAVO_ICON_COUNT), QSize(-1, -1), 0);
        QCOMPARE(icon.displayMode(), int(CTavoIcon::ShowNothing));
        QVERIFY(!icon.isInitialized());
        QVERIFY(!icon.isVisible());
        QCOMPARE(icon.rect().size(), QSize(0, 0));
        icon.init(CTavoIconDefinition(QString(), QString(), -7, 100000), QSize(-1, -1), 0);
        QVERIFY(!icon.isInitialized());
        QCOMPARE(countColour(render(icon), QRect(0, 0, 200, 100), kWhite), 200 * 100);
    }

    void anUnchangedInitDoesNoWork()
    {
        useStyle("CTavoIcon { size: 40x20; }");
        CTavoIcon icon;
        icon.setStyleSheet(&m_sheet, true);
        const CTavoIconDefinition definition(QString(), "5", kMessages);
        icon.init(definition, true);
        QCOMPARE(icon.rect().size(), QSize(40 + icon.label()->width() + 2, 22));
        // The size asked for must be the size the icon has for the shortcut to apply.
        const QSize size = icon.rect().size();
        icon.init(definition, size, 0);
        QCOMPARE(icon.label()->text(), QString("5"));
        icon.label()->setVisible(false);
        icon.init(definition, size, 0);
        QVERIFY2(!icon.label()->isVisible(), "the second init did the work again");
        // A different definition does the work.
        icon.init(CTavoIconDefinition(QString(), "6", kMessages), size, 0);
        QVERIFY(icon.label()->isVisible());
        QCOMPARE(icon.label()->text(), QString("6"));
    }

    void invertedAndPressedFormsArePainted()
    {
        CTavoIcon icon;
        icon.init(CTavoIconDefinition(QString(), QString(), kMessages, kAlerts), QSize(-1, -1), 0);
        QCOMPARE(icon.loadedPressedIcon(), kAlerts);
        QCOMPARE(countColour(render(icon), QRect(0, 0, 20, 10), kRed), 200);
        icon.setDown(true);
        QCOMPARE(countColour(render(icon), QRect(0, 0, 20, 10), kGreen), 200);
        icon.setDown(false);
        icon.setInverted(true);
        QVERIFY(!icon.invertedPixmaps().isEmpty());
        QCOMPARE(countColour(render(icon), QRect(0, 0, 20, 10), kYellow), 200);
        icon.setInverted(false);
        QCOMPARE(countColour(render(icon), QRect(0, 0, 20, 10), kRed), 200);
    }

    void aSpinnerRepaintsInStepsOverFifteenDegrees()
    {
        CountingSurface surface;
        surface.resize(100, 100);
        surface.show();
        QVERIFY(QTest::qWaitForWindowExposed(&surface));
        CTavoIcon spinner(&surface, 10, 10);
        spinner.init(CTavoIconDefinition(QString(), QString(), kMessages), QSize(-1, -1), 0);
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
        CTavoIcon icon;
        QSignalSpy spy(&icon, &CTavoIcon::clicked);
        icon.init(CTavoIconDefinition("icon:5", QString(), kMessages), QSize(-1, -1), 0);
        // A release without a press tells nothing, but is still taken.
        QVERIFY(icon.handleEvent(QEvent::MouseButtonRelease, QPoint()));
        QVERIFY(spy.isEmpty());
        QVERIFY(icon.handleEvent(QEvent::MouseButtonPress, QPoint()));
        QVERIFY(icon.isDown());
        QVERIFY(icon.handleEvent(QEvent::MouseButtonRelease, QPoint()));
        QVERIFY(!icon.isDown());
        QCOMPARE(spy.size(), 2);
        QCOMPARE(spy.at(0), (QList<QVariant>{"icon:5", "pressed"}));
        QCOMPARE(spy.at(1), (QList<QVariant>{"icon:5", "released"}));
        QVERIFY(!icon.handleEvent(QEvent::MouseMove, QPoint()));

        // Without a URL the press is still told, but the event goes on.
        CTavoIcon plain;
        QSignalSpy plainSpy(&plain, &CTavoIcon::clicked);
        plain.init(CTavoIconDefinition(QString(), QString(), kMessages), QSize(-1, -1), 0);
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
        QCOMPARE(label.textOffset(), QPoint(2, 3));
        label.set(0, 7);
        QCOMPARE(label.text(), QString("7"));
        QCOMPARE(label.mode(), 0);
        QCOMPARE(label.rect().size(), QSize(16, 16));
        QVERIFY(countColour(render(label), QRect(0, 0, 16, 16), kBlue) > 100);
        // Three characters take the big background whatever the mode.
        label.set(0, QString("123"));
        QCOMPARE(label.mode(), 1);
        QCOMPARE(label.rect().size(), QSize(40, 16));
        QVERIFY(countColour(render(label), QRect(0, 0, 40, 16), kGreen) > 300);
        label.set(0, 0);
        QVERIFY(!label.isVisible());
        label.set(0, QString());
        QVERIFY(!label.isVisible());
        QVERIFY(label.text().isEmpty());
    }

    void imageWidgetDecodesJpegAndFallsBack()
    {
        const QString fallback = writePng(m_dir, "fallback", QSize(10, 10), Qt::blue);
        useStyle(QString("CTavoImageWidget { default-image: url(%1); }").arg(fallback));
        CTavoImageWidget widget(nullptr, 0, 0, 40, 40);
        widget.setStyleSheet(&m_sheet, true);
        QVERIFY(!widget.defaultImage().isNull());
        QImage image = render(widget);
        QVERIFY(countColour(image, QRect(0, 0, 40, 40), kBlue) > 1000);

        QImage red(8, 8, QImage::Format_RGB32);
        red.fill(Qt::red);
        QByteArray jpeg;
        QBuffer buffer(&jpeg);
        buffer.open(QIODevice::WriteOnly);
        QVERIFY(red.save(&buffer, "JPG", 100));
        widget.setImage(jpeg.toBase64());
        QVERIFY(!widget.image().isNull());
        image = render(widget);
        int reddish = 0;
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 40; ++x)
                if (qRed(image.pixel(x, y)) > 200 && qGreen(image.pixel(x, y)) < 60)
                    ++reddish;
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
