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
    using CTavoLayoutMgr::setManagerStyle;
    int paints = 0;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        ++paints;
        CTavoLayoutMgr::paintEvent(event);
    }
};

const QRgb kRed = qRgb(255, 0, 0);
const QRgb kGreen = qRgb(0, 255, 0);

QImage render(QWidget& widget, QRgb fill = qRgba(1, 2, 3, 255))
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

    QString path(const QString& name) const { return m_dir.filePath(name); }

    QString writeSkin(const QString& name, const QByteArray& managerStyle, bool withManager = true)
    {
        QByteArray xml = "<Skin>\n";
        if (withManager) {
            xml += "<Item><Name>manager</Name><Attributes>design-x=800;design-y=480;max-x=800;max-y=480"
                   "</Attributes><Style>CTavoLayoutMgr { " + managerStyle + " }</Style></Item>\n";
        }
        xml += "<Item><Name>home</Name><Style>CTavoLayoutWidget { size: 10x10; }</Style></Item>\n</Skin>\n";
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return QString();
        file.write(xml);
        return file.fileName();
    }

    QString url(const QString& file) const { return QStringLiteral("url(%1)").arg(path(file)); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        // Pictures: a red status band, a background green on its left half and
        // clear on its right, a fade layer that darkens everything.
        QImage status(100, 50, QImage::Format_ARGB32);
        status.fill(kRed);
        QVERIFY(status.save(path("status.png")));
        QImage background(100, 50, QImage::Format_ARGB32);
        background.fill(Qt::transparent);
        {
            QPainter p(&background);
            p.fillRect(0, 0, 50, 50, QColor(kGreen));
        }
        QVERIFY(background.save(path("background.png")));
        QImage layer(100, 50, QImage::Format_ARGB32);
        layer.fill(qRgba(0, 0, 0, 128));
        QVERIFY(layer.save(path("layer.png")));
        QImage boot(40, 20, QImage::Format_ARGB32);
        boot.fill(qRgb(0, 0, 255));
        QVERIFY(boot.save(path("boot.png")));
        QImage spinner(16, 16, QImage::Format_ARGB32);
        spinner.fill(qRgb(255, 255, 0));
        QVERIFY(spinner.save(path("spinner.png")));

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

    void skinWithoutManagerItemChangesNothing()
    {
        Host mgr;
        QString good = writeSkin("good.xml", "size: 120x60; background: #00ff00;");
        mgr.setManagerStyle(good, false);
        QCOMPARE(mgr.size(), QSize(120, 60));

        QSignalSpy events(&mgr, &CTavoLayoutMgr::evLayoutMgr);
        QString none = writeSkin("none.xml", "", false);
        mgr.setManagerStyle(none, true);
        QCOMPARE(events.count(), 0);
        QString missing = path("missing.xml");
        mgr.setManagerStyle(missing, true);
        QCOMPARE(events.count(), 0);
        // The look stays, brush included.
        QCOMPARE(mgr.size(), QSize(120, 60));
        QVERIFY(mgr.backgroundBrush());
        QCOMPARE(render(mgr).pixel(5, 5), kGreen);
        QVERIFY(mgr.styleSheetFile() && mgr.styleSheetFile()->get("manager"));
    }

    void invalidManagerStyleStillAnnounces()
    {
        Host mgr;
        QSignalSpy events(&mgr, &CTavoLayoutMgr::evLayoutMgr);
        QString empty = writeSkin("empty.xml", "");
        mgr.setManagerStyle(empty, true);
        QCOMPARE(events.count(), 1);
        QCOMPARE(events.at(0).at(0).toInt(), 1021);
        mgr.setManagerStyle(empty, false);
        QCOMPARE(events.count(), 1);
        QVERIFY(!mgr.backgroundBrush());
    }

    void propertiesAreReadIntoTheManager()
    {
        Host mgr;
        QSignalSpy language(&mgr, &CTavoLayoutMgr::languageChange);
        QString skin = writeSkin(
            "full.xml",
            "location: 7:9; size: 200x100; font-path: droid; default-font-family: Open Sans; default-font-px: 15;"
            "status-background-image: " + url("status.png").toLatin1() + ";"
            "background-image: " + url("background.png").toLatin1() + ";"
            "background-fadeout-layer-image: " + url("layer.png").toLatin1() + ";"
            "delay-first-menu-show: 2500; main-app-apk-name: com.example.phone; forced-refresh-period: 250;"
            "icon-path: \"Skins/icons\"; softkey-1-location: 10:400; softkey-5-location: 700:400;"
            "show-frame-rate: true; use-pane-switching: true; use-zenith-icons: true; cjk-font-support: false;"
            "nextgenUI-enabled: true; use-onebit-icons: true; custom-directories-required: 3;"
            "remove-video-key: true;");
        mgr.setManagerStyle(skin, true);

        QCOMPARE(mgr.pos(), QPoint(7, 9));
        QCOMPARE(mgr.size(), QSize(200, 100));
        QCOMPARE(mgr.minimumSize(), QSize(200, 100));
        QCOMPARE(mgr.maximumSize(), QSize(200, 100));
        QCOMPARE(mgr.styledRect(), QRect(7, 9, 200, 100));
        QCOMPARE(mgr.fontPath(), QString("droid"));
        QCOMPARE(QApplication::font().family(), QString("Open Sans"));
        QCOMPARE(QApplication::font().pixelSize(), 15);
        QCOMPARE(mgr.firstMenuDelay(), 2500u);
        QCOMPARE(mgr.mainAppName(), QString("com.example.phone"));
        QVERIFY(mgr.refreshTimer());
        QCOMPARE(mgr.refreshTimer()->interval(), 250);
        QVERIFY(mgr.refreshTimer()->isActive());
        QVERIFY(!mgr.refreshTimer()->isSingleShot());
        QCOMPARE(mgr.iconPath(), QString("Skins/icons"));
        QCOMPARE(CTavoLayoutMgr::getSoftkeyPos(0), QPoint(10, 400));
        QCOMPARE(CTavoLayoutMgr::getSoftkeyPos(1), QPoint(0, 0));
        QCOMPARE(CTavoLayoutMgr::getSoftkeyPos(4), QPoint(700, 400));
        QVERIFY(KineticScroll::s_bShowFrameRate);
        QVERIFY(CTavoImage::s_removeVideoKey);
        QVERIFY(mgr.windowFlags() & Qt::FramelessWindowHint);
        QVERIFY(mgr.usePaneSwitching());
        QVERIFY(mgr.useZenithIcons());
        QVERIFY(mgr.useOneBitIcons());
        QVERIFY(!mgr.cjkFontSupport());
        QVERIFY(mgr.nextGenUI());
        // One key, two readings: not a flag ("3" is no truth word), but a number.
        QVERIFY(!mgr.customDirectoriesRequired());
        QCOMPARE(mgr.customDirectories(), 3u);
        QVERIFY(!mgr.navBarSticky());
        // No boot image, no spinner.
        QVERIFY(!mgr.spinnerAnimation());

        // Fonts: the directory's files, the replaceable Japanese pair by file name.
        QVERIFY(mgr.japaneseNewFontId() >= 0);
        QVERIFY(mgr.japaneseOldFontId() >= 0);
        QVERIFY(QFontDatabase::applicationFontFamilies(mgr.japaneseNewFontId()).contains("DejaVu Sans"));
        QVERIFY(QFontDatabase::applicationFontFamilies(mgr.japaneseOldFontId()).contains("Open Sans"));
        QCOMPARE(language.count(), 1);
        QCOMPARE(language.at(0).at(0).toString(), QString());

        // The background went over the status band twice, the fade layer over a copy.
        const QImage status = mgr.statusBackgroundImage().data();
        QCOMPARE(status.pixel(10, 10), kGreen);
        QCOMPARE(status.pixel(90, 10), kRed);
        const QImage faded = mgr.fadedBackgroundImage().data();
        QVERIFY(faded.pixel(90, 10) != kRed);
        QVERIFY(qRed(faded.pixel(90, 10)) < 200 && qRed(faded.pixel(90, 10)) > 50);
    }

    void defaultsWhenTheBlockSaysLittle()
    {
        Host mgr;
        mgr.resize(50, 40);
        QString skin = writeSkin("defaults.xml", "default-font-px: 0;");
        KineticScroll::s_bShowFrameRate = true;
        mgr.setManagerStyle(skin, false);
        QCOMPARE(mgr.size(), QSize(50, 40));
        QCOMPARE(mgr.fontPath(), QString("droid"));
        QVERIFY(mgr.customDirectoriesRequired());
        QCOMPARE(mgr.customDirectories(), 0u);
        QVERIFY(mgr.cjkFontSupport());
        QVERIFY(!KineticScroll::s_bShowFrameRate);
        QVERIFY(mgr.iconPath().isEmpty());
        QVERIFY(!mgr.refreshTimer());
        QCOMPARE(mgr.bootingImageSize(), QSize(-1, -1));
        QCOMPARE(mgr.bootingImageLocation(), QPoint(0, 0));
        QCOMPARE(CTavoLayoutMgr::getSoftkeyPos(0), QPoint(0, 0));
        QCOMPARE(CTavoLayoutMgr::getSoftkeyPos(5), QPoint(-1, -1));
    }

    void locationCentresOnlyForBothMinusOne()
    {
        Host mgr;
        QString plain = writeSkin("plain.xml", "size: 100x60; location: -1:0;");
        mgr.setManagerStyle(plain, false);
        QCOMPARE(mgr.pos(), QPoint(-1, 0));

        QString centred = writeSkin("centred.xml", "size: 100x60; location: -1:-1;");
        mgr.setManagerStyle(centred, false);
        const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
        QCOMPARE(mgr.pos(), QPoint(available.x() + (available.width() - 100) / 2,
                                   available.y() + (available.height() - 60) / 2));
        QCOMPARE(mgr.styledRect().topLeft(), mgr.pos());
    }

    void navigationBarStickiness()
    {
        Host mgr;
        QString sticky = writeSkin("sticky.xml", "show-navigation-bar: false; make-nav-bar-sticky: true;");
        mgr.setManagerStyle(sticky, false);
        QVERIFY(mgr.navBarSticky());
        Host other;
        QString hidden = writeSkin("hidden.xml", "show-navigation-bar: false;");
        other.setManagerStyle(hidden, false);
        QVERIFY(!other.navBarSticky());
        QString shown = writeSkin("shown.xml", "make-nav-bar-sticky: true;");
        other.setManagerStyle(shown, false);
        QVERIFY(!other.navBarSticky());
    }

    void paintsBrushStatusAndFadedBackgrounds()
    {
        Host mgr;
        QString skin = writeSkin("paint.xml", "size: 200x100;"
                                              "status-background-image: " + url("status.png").toLatin1() + ";"
                                              "background-image: " + url("background.png").toLatin1() + ";"
                                              "background-fadeout-layer-image: " + url("layer.png").toLatin1() + ";");
        mgr.setManagerStyle(skin, false);
        const QRgb untouched = qRgba(1, 2, 3, 255);
        QImage shot = render(mgr);
        // Smaller than the widget: centred at (50, 25).
        QCOMPARE(shot.pixel(49, 24), untouched);
        QCOMPARE(shot.pixel(55, 30), kGreen);
        QCOMPARE(shot.pixel(145, 70), kRed);
        QCOMPARE(shot.pixel(150, 75), untouched);

        mgr.fadeOutBackground();
        QVERIFY(mgr.isBackgroundFaded());
        shot = render(mgr);
        QVERIFY(shot.pixel(145, 70) != kRed);
        QVERIFY(qRed(shot.pixel(145, 70)) > 50);
        mgr.focusInBackground();
        QCOMPARE(render(mgr).pixel(145, 70), kRed);

        // A brush wins over the pictures.
        QString brush = writeSkin("brush.xml", "size: 200x100; background: #0000ff;"
                                               "status-background-image: " + url("status.png").toLatin1() + ";");
        mgr.setManagerStyle(brush, false);
        QCOMPARE(render(mgr).pixel(145, 70), qRgb(0, 0, 255));

        // Transparent clears everything, whatever was below.
        mgr.setTransparent(true);
        QCOMPARE(render(mgr, kRed).pixel(100, 50), qRgba(0, 0, 0, 0));
        mgr.setTransparent(false);
        QCOMPARE(render(mgr, kRed).pixel(100, 50), qRgb(0, 0, 255));
    }

    void fadingNeedsALayer()
    {
        Host mgr;
        QString skin = writeSkin("nolayer.xml", "size: 200x100;"
                                                "status-background-image: " + url("status.png").toLatin1() + ";");
        mgr.setManagerStyle(skin, false);
        mgr.fadeOutBackground();
        QVERIFY(!mgr.isBackgroundFaded());
    }

    void bootScreenAndSpinner()
    {
        Host mgr;
        QString skin = writeSkin("boot.xml", "size: 200x400; background: #00ff00;"
                                             "booting-image: " + url("boot.png").toLatin1() + ";"
                                             "booting-spinner-image: " + url("spinner.png").toLatin1() + ";"
                                             "booting-img-location: 20:30; booting-img-size: 40x20;");
        mgr.setManagerStyle(skin, false);
        QPropertyAnimation* spin = mgr.spinnerAnimation();
        QVERIFY(spin);
        QCOMPARE(spin->propertyName(), QByteArray("spinnerRotationAngle"));
        QCOMPARE(spin->duration(), 1000);
        QCOMPARE(spin->startValue().toDouble(), 0.0);
        QCOMPARE(spin->endValue().toDouble(), 45.0);
        QCOMPARE(spin->loopCount(), -1);
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
        QCOMPARE(shot.pixel(30, 35), qRgb(0, 0, 255));  // boot image at its place
        QCOMPARE(shot.pixel(150, 10), qRgb(0, 0, 0));   // black around it
        QCOMPARE(shot.pixel(100, 300), qRgb(255, 255, 0));  // spinner at (w/2, h/2*1.5)
        QCOMPARE(shot.pixel(100, 320), qRgb(0, 0, 0));

        // Rotated by 45 degrees the square's corners move out of its box.
        mgr.setSpinnerRotationAngle(45);
        shot = render(mgr);
        QCOMPARE(shot.pixel(100, 289), qRgb(255, 255, 0));
        QCOMPARE(shot.pixel(93, 293), qRgb(0, 0, 0));

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
        QString skin = writeSkin("spin.xml", "size: 120x120; background: #00ff00;"
                                             "booting-image: " + url("boot.png").toLatin1() + ";"
                                             "booting-spinner-image: " + url("spinner.png").toLatin1() + ";");
        mgr.show();
        QVERIFY(QTest::qWaitForWindowExposed(&mgr));
        // A new skin leaves a shown manager shown.
        mgr.setManagerStyle(skin, false);
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

        // Driven by its own animation the same holds.
        int steps = 0;
        connect(mgr.spinnerAnimation(), &QVariantAnimation::valueChanged, this, [&] { ++steps; });
        mgr.paints = 0;
        mgr.spinnerAnimation()->start();
        QTest::qWait(600);
        mgr.spinnerAnimation()->stop();
        QVERIFY(steps >= 16);
        QVERIFY2(mgr.paints <= steps / 8 + 1, qPrintable(QString("%1 paints for %2 steps").arg(mgr.paints).arg(steps)));
        QVERIFY(mgr.paints >= 1);
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
        QString greySkin = writeSkin("grey.xml", "use-greyscale-icons: true;");
        mgr.setManagerStyle(greySkin, false);
        QCOMPARE(iconRepository.iconPath(), grey);
        QString oneBitSkin = writeSkin("onebit.xml", "use-onebit-icons: true;");
        mgr.setManagerStyle(oneBitSkin, false);
        QCOMPARE(iconRepository.iconPath(), oneBit);
        QVERIFY(mgr.useOneBitIcons());
        // Switches that are off leave the family alone.
        QString plain = writeSkin("plainicons.xml", "size: 10x10;");
        mgr.setManagerStyle(plain, false);
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
            QCOMPARE(mgr.managerStyleFile(), QString("Skins/default/default.xml"));
            QCOMPARE(mgr.size(), QSize(800, 480));
            QCOMPARE(mgr.styledRect(), QRect(0, 0, 800, 480));
            // A gradient brush, not a full-screen picture; the boot screen has its own.
            QVERIFY(mgr.backgroundBrush() && mgr.backgroundBrush()->gradient());
            QVERIFY(mgr.backgroundImage().isNull());
            QCOMPARE(CTavoLayoutMgr::getSoftkeyPos(4), QPoint(640, 416));
            QCOMPARE(QApplication::font().family(), QString("Open Sans"));
            QCOMPARE(QApplication::font().pixelSize(), 16);
            QVERIFY(mgr.japaneseOldFontId() >= 0);
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
