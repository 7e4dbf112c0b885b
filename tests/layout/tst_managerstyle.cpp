// The manager's own block of a skin: what it reads, in which order it leaves
// things, the fonts it loads, and what its paint leaves on screen (pixels).
#include <QApplication>
#include <QFile>
#include <QFontDatabase>
#include <QPainter>
#include <QPropertyAnimation>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include "layout/CTavoLayoutMgr.h"
#include "style/CTavoIconRepository.h"
#include "style/CTavoImage.h"
#include "widgets/KineticScroll.h"

namespace {

class Host : public CTavoLayoutMgr
{
public:
    Host() : CTavoLayoutMgr(nullptr, Qt::WindowFlags(), true) {}
    int paints = 0;
    // The skin is applied from a file written by the test.
    void apply(const QString& file, bool announce = false)
    {
        QString path = file;
        setManagerStyle(path, announce);
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        ++paints;
        CTavoLayoutMgr::paintEvent(event);
    }
};

const QRgb kRed = qRgb(255, 0, 0);
const QRgb kGreen = qRgb(0, 255, 0);
const QRgb kBlue = qRgb(0, 0, 255);
const QRgb kYellow = qRgb(255, 255, 0);
const QRgb kBlack = qRgb(0, 0, 0);
const QRgb kUntouched = qRgba(1, 2, 3, 255);

QImage render(QWidget& widget, QRgb fill = kUntouched)
{
    QImage image(widget.size(), QImage::Format_ARGB32);
    image.fill(fill);
    widget.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return image;
}

}  // namespace

class TestManagerStyle : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    int m_skins = 0;

    QString path(const QString& name) const { return m_dir.filePath(name); }

    // A skin file of its own for each call; pictures are named by "@name".
    QString skin(QByteArray managerStyle, bool withManager = true)
    {
        managerStyle.replace("@", "url(" + m_dir.path().toLatin1() + "/");
        managerStyle.replace(".png", ".png)");
        QByteArray xml = "<Skin>\n";
        if (withManager) {
            xml += "<Item><Name>manager</Name><Attributes>design-x=800;design-y=480;max-x=800;max-y=480"
                   "</Attributes><Style>CTavoLayoutMgr { " + managerStyle + " }</Style></Item>\n";
        }
        xml += "<Item><Name>home</Name><Style>CTavoLayoutWidget { size: 10x10; }</Style></Item>\n</Skin>\n";
        QFile file(path(QStringLiteral("skin%1.xml").arg(++m_skins)));
        if (!file.open(QIODevice::WriteOnly))
            return QString();
        file.write(xml);
        return file.fileName();
    }

    static void picture(const QString& file, QSize size, QRgb fill, QRgb leftHalf = 0)
    {
        QImage image(size, QImage::Format_ARGB32);
        image.fill(fill);
        if (leftHalf) {
            QPainter p(&image);
            p.fillRect(0, 0, size.width() / 2, size.height(), QColor(leftHalf));
        }
        QVERIFY(image.save(file));
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        // A red status band, a background green on its left half and clear on
        // its right, a fade layer that darkens everything, boot image and spinner.
        picture(path("status.png"), {100, 50}, kRed);
        picture(path("background.png"), {100, 50}, qRgba(0, 0, 0, 0), kGreen);
        picture(path("layer.png"), {100, 50}, qRgba(0, 0, 0, 128));
        picture(path("boot.png"), {40, 20}, kBlue);
        picture(path("spinner.png"), {16, 16}, kYellow);

        // A font directory as the phone has it, with twins under the phone's names.
        QVERIFY(QDir(m_dir.path()).mkpath("fonts/droid"));
        QVERIFY(QFile::copy("/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", path("fonts/droid/DroidSansJapanese.ttf")));
        QVERIFY(QFile::copy("/usr/share/fonts/truetype/open-sans/OpenSans-Regular.ttf",
                            path("fonts/droid/DroidSansFallback.ttf")));
        QFile junk(path("fonts/droid/broken.ttf"));
        QVERIFY(junk.open(QIODevice::WriteOnly));
        junk.write("not a font");
        junk.close();
        qputenv("QT_QWS_FONTDIR", path("fonts").toLocal8Bit());
    }

    void skinsWithoutAUsableBlock()
    {
        Host mgr;
        mgr.apply(skin("size: 120x60; background: #00ff00;"));
        QSignalSpy events(&mgr, &CTavoLayoutMgr::evLayoutMgr);
        // No manager item, or no file at all: nothing changes, nothing is announced.
        mgr.apply(skin("", false), true);
        mgr.apply(path("missing.xml"), true);
        QCOMPARE(events.count(), 0);
        QCOMPARE(mgr.size(), QSize(120, 60));
        QCOMPARE(render(mgr).pixel(5, 5), kGreen);
        QVERIFY(mgr.styleSheetFile() && mgr.styleSheetFile()->get("manager"));

        // An empty block is applied (the brush goes) and announced when asked.
        const QString empty = skin("");
        mgr.apply(empty, true);
        QCOMPARE(events.count(), 1);
        QCOMPARE(events.at(0).at(0).toInt(), 1021);
        mgr.apply(empty, false);
        QCOMPARE(events.count(), 1);
        QVERIFY(!mgr.backgroundBrush());
    }

    void propertiesAreReadIntoTheManager()
    {
        Host mgr;
        QSignalSpy language(&mgr, &CTavoLayoutMgr::languageChange);
        mgr.apply(skin("location: 7:9; size: 200x100; default-font-family: Open Sans; default-font-px: 15;"
                       "status-background-image: @status.png; background-image: @background.png;"
                       "background-fadeout-layer-image: @layer.png; forced-refresh-period: 250;"
                       "icon-path: \"Skins/icons\"; softkey-1-location: 10:400; softkey-5-location: 700:400;"
                       "show-frame-rate: true; custom-directories-required: 3; remove-video-key: true;"));
        QCOMPARE((QVariantList{mgr.pos(), mgr.maximumSize(), mgr.styledRect(), QApplication::font().family(),
                               QApplication::font().pixelSize(), mgr.iconPath(), CTavoLayoutMgr::getSoftkeyPos(0),
                               CTavoLayoutMgr::getSoftkeyPos(1), CTavoLayoutMgr::getSoftkeyPos(4)}),
                 (QVariantList{QPoint(7, 9), QSize(200, 100), QRect(7, 9, 200, 100), "Open Sans", 15, "Skins/icons",
                               QPoint(10, 400), QPoint(0, 0), QPoint(700, 400)}));
        QVERIFY(mgr.refreshTimer() && mgr.refreshTimer()->isActive() && !mgr.refreshTimer()->isSingleShot());
        QCOMPARE(mgr.refreshTimer()->interval(), 250);
        QVERIFY(KineticScroll::s_bShowFrameRate && CTavoImage::s_removeVideoKey);
        QVERIFY(mgr.windowFlags() & Qt::FramelessWindowHint);
        // One key, two readings: not a flag ("3" is no truth word), but a number.
        QVERIFY(!mgr.customDirectoriesRequired());
        QCOMPARE(mgr.customDirectories(), 3u);
        QVERIFY(!mgr.spinnerAnimation());  // no boot image, no spinner

        // Fonts: the directory's files, the replaceable Japanese pair by file name.
        QVERIFY(QFontDatabase::applicationFontFamilies(mgr.japaneseNewFontId()).contains("DejaVu Sans"));
        QVERIFY(QFontDatabase::applicationFontFamilies(mgr.japaneseOldFontId()).contains("Open Sans"));
        QCOMPARE(language, (QList<QVariantList>{{QString()}}));

        // The background went over the status band twice, the fade layer over a copy.
        const QImage status = mgr.statusBackgroundImage().data();
        QCOMPARE(status.pixel(10, 10), kGreen);
        QCOMPARE(status.pixel(90, 10), kRed);
        const int faded = qRed(mgr.fadedBackgroundImage().data().pixel(90, 10));
        QVERIFY(faded < 200 && faded > 50);

        // A block that says little sets the switches back and leaves the geometry.
        mgr.apply(skin("default-font-px: 0;"));
        QCOMPARE(mgr.geometry(), QRect(7, 9, 200, 100));
        QVERIFY(!KineticScroll::s_bShowFrameRate && mgr.customDirectoriesRequired());
        QCOMPARE(CTavoLayoutMgr::getSoftkeyPos(0), QPoint(0, 0));
        QCOMPARE(QApplication::font().pixelSize(), 15);
    }

    void locationCentresOnlyForBothMinusOne()
    {
        Host mgr;
        mgr.apply(skin("size: 100x60; location: -1:0;"));
        QCOMPARE(mgr.pos(), QPoint(-1, 0));
        mgr.apply(skin("size: 100x60; location: -1:-1;"));
        const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
        QCOMPARE(mgr.pos(), QPoint(available.x() + (available.width() - 100) / 2,
                                   available.y() + (available.height() - 60) / 2));
        QCOMPARE(mgr.styledRect().topLeft(), mgr.pos());
    }

    void navigationBarStickiness_data()
    {
        QTest::addColumn<QByteArray>("style");
        QTest::addColumn<bool>("sticky");
        QTest::newRow("hidden, sticky") << QByteArray("show-navigation-bar: false; make-nav-bar-sticky: true;") << true;
        QTest::newRow("hidden") << QByteArray("show-navigation-bar: false;") << false;
        QTest::newRow("shown, sticky") << QByteArray("make-nav-bar-sticky: true;") << false;
    }

    void navigationBarStickiness()
    {
        QFETCH(QByteArray, style);
        Host mgr;
        mgr.apply(skin(style));
        QTEST(mgr.navBarSticky(), "sticky");
    }

    void paintsBrushStatusAndFadedBackgrounds()
    {
        Host mgr;
        mgr.apply(skin("size: 200x100; status-background-image: @status.png; background-image: @background.png;"
                       "background-fadeout-layer-image: @layer.png;"));
        QImage shot = render(mgr);
        // Smaller than the widget: centred at (50, 25).
        QCOMPARE(shot.pixel(49, 24), kUntouched);
        QCOMPARE(shot.pixel(55, 30), kGreen);
        QCOMPARE(shot.pixel(145, 70), kRed);
        QCOMPARE(shot.pixel(150, 75), kUntouched);

        mgr.fadeOutBackground();
        QVERIFY(mgr.isBackgroundFaded());
        const int faded = qRed(render(mgr).pixel(145, 70));
        QVERIFY(faded < 255 && faded > 50);
        mgr.focusInBackground();
        QCOMPARE(render(mgr).pixel(145, 70), kRed);

        // A brush wins over the pictures.
        mgr.apply(skin("size: 200x100; background: #0000ff; status-background-image: @status.png;"));
        QCOMPARE(render(mgr).pixel(145, 70), kBlue);
        // Transparent clears everything, whatever was below.
        mgr.setTransparent(true);
        QCOMPARE(render(mgr, kRed).pixel(100, 50), qRgba(0, 0, 0, 0));
        mgr.setTransparent(false);
        QCOMPARE(render(mgr, kRed).pixel(100, 50), kBlue);

        // Without a layer there is nothing to fade to.
        Host plain;
        plain.apply(skin("size: 200x100; status-background-image: @status.png;"));
        plain.fadeOutBackground();
        QVERIFY(!plain.isBackgroundFaded());
    }

    void bootScreenAndSpinner()
    {
        Host mgr;
        mgr.apply(skin("size: 200x400; background: #00ff00; booting-image: @boot.png;"
                       "booting-spinner-image: @spinner.png; booting-img-location: 20:30; booting-img-size: 40x20;"));
        QPropertyAnimation* spin = mgr.spinnerAnimation();
        QVERIFY(spin);
        QCOMPARE(spin->state(), QAbstractAnimation::Stopped);
        // Not on the boot screen yet: the brush, and angles are ignored.
        QCOMPARE(render(mgr).pixel(30, 35), kGreen);
        mgr.setSpinnerRotationAngle(30);
        QCOMPARE(mgr.spinnerRotationAngle(), 0.0);

        mgr.setUseBootingBackground(true);
        QCOMPARE(spin->state(), QAbstractAnimation::Running);
        spin->stop();
        mgr.setSpinnerRotationAngle(0);
        QImage shot = render(mgr);
        QCOMPARE(shot.pixel(30, 35), kBlue);      // boot image at its place
        QCOMPARE(shot.pixel(150, 10), kBlack);    // black around it
        QCOMPARE(shot.pixel(100, 300), kYellow);  // spinner at (w/2, h/2*1.5)
        QCOMPARE(shot.pixel(100, 320), kBlack);

        // Rotated by 45 degrees the square's corners move out of its box.
        mgr.setSpinnerRotationAngle(45);
        shot = render(mgr);
        QCOMPARE(shot.pixel(100, 289), kYellow);
        QCOMPARE(shot.pixel(93, 293), kBlack);

        // The boot text sits in a band well above the spinner.
        mgr.setBootingText(QStringLiteral("Booting"));
        shot = render(mgr);
        bool white = false;
        for (int y = 92; y < 141 && !white; ++y)
            for (int x = 0; x < 200 && !white; ++x)
                white = qRed(shot.pixel(x, y)) > 200 && qBlue(shot.pixel(x, y)) > 200;
        QVERIFY(white);

        mgr.setUseBootingBackground(false);
        QCOMPARE(spin->state(), QAbstractAnimation::Stopped);
        QCOMPARE(render(mgr).pixel(30, 35), kGreen);
    }

    void spinnerRepaintsOncePerEightSteps()
    {
        Host mgr;
        mgr.show();
        QVERIFY(QTest::qWaitForWindowExposed(&mgr));
        // A new skin leaves a shown manager shown.
        mgr.apply(skin("size: 120x120; background: #00ff00; booting-image: @boot.png;"
                       "booting-spinner-image: @spinner.png;"));
        QVERIFY(mgr.isVisible());
        QVERIFY(QTest::qWaitForWindowExposed(&mgr));
        mgr.setUseBootingBackground(true);
        mgr.spinnerAnimation()->stop();
        QTest::qWait(50);

        mgr.paints = 0;
        for (int i = 1; i <= 24; ++i) {
            mgr.setSpinnerRotationAngle(i);
            QCoreApplication::processEvents();
        }
        QCOMPARE(mgr.paints, 3);
    }

    void iconFamilySwitches()
    {
        iconRepository.useGreyscaleIcons();
        const QString grey = iconRepository.iconPath();
        iconRepository.useOneBitIcons();
        const QString oneBit = iconRepository.iconPath();
        QVERIFY(grey != oneBit);

        Host mgr;
        iconRepository.setIconPath(QStringLiteral("elsewhere"));
        mgr.apply(skin("use-greyscale-icons: true;"));
        QCOMPARE(iconRepository.iconPath(), grey);
        mgr.apply(skin("use-onebit-icons: true;"));
        QCOMPARE(iconRepository.iconPath(), oneBit);
        // Switches that are off leave the family alone.
        mgr.apply(skin("size: 10x10;"));
        QCOMPARE(iconRepository.iconPath(), oneBit);
    }

    // Start-up as zedagui in the run folder: profile, skin configuration, the
    // sample skin's block and the run folder's fonts.
    void sampleSkinAtStartUp()
    {
        QString run = QString::fromLocal8Bit(qgetenv("TGUI_RUN_DIR"));
        if (run.isEmpty())
            run = QStringLiteral(TGUI_SOURCE_DIR "/run");
        const QString home = QDir::currentPath();
        const QString name = QCoreApplication::applicationName();
        const QByteArray fontDir = qgetenv("QT_QWS_FONTDIR");
        QVERIFY(QDir::setCurrent(run));
        QCoreApplication::setApplicationName(QStringLiteral("zedagui"));
        qputenv("QT_QWS_FONTDIR", "fonts");
        {
            Host mgr;
            // What it paints is proven on the demo's screenshots.
            QCOMPARE(mgr.managerStyleFile(), QString("Skins/default/default.xml"));
            QCOMPARE(mgr.styledRect(), QRect(0, 0, 800, 480));
            QCOMPARE(QApplication::font().family(), QString("Open Sans"));
            QVERIFY(QFontDatabase::applicationFontFamilies(mgr.japaneseOldFontId()).contains("Droid Sans Fallback"));
            QVERIFY(mgr.styleSheetFile()->get("home"));
            QVERIFY(mgr.spinnerAnimation());
        }
        QCoreApplication::setApplicationName(name);
        qputenv("QT_QWS_FONTDIR", fontDir);
        QVERIFY(QDir::setCurrent(home));
    }
};

QTEST_MAIN(TestManagerStyle)
#include "tst_managerstyle.moc"
