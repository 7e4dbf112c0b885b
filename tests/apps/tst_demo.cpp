// The main job end to end: the real tgui-core plays the repository's demo
// scenario to the real zedagui on the sample skin, headless. The core must
// receive the events of the scripted presses and the translation request,
// and every screenshot must show a real screen that changed where the
// scenario changed it, and only there.
#include <QtTest>

#include <QImage>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>
#include <climits>

namespace {
const QString kRunDir = qEnvironmentVariable("TGUI_RUN_DIR", TGUI_SOURCE_DIR "/run");
const QString kBinDir = qEnvironmentVariable("TGUI_BIN_DIR", TGUI_BIN_DIR);

// Bounding box of the pixels that differ, outside the masked rectangle.
QRect diffBox(const QImage& a, const QImage& b, const QRect& mask = QRect())
{
    QRect box;
    for (int y = 0; y < qMin(a.height(), b.height()); ++y) {
        for (int x = 0; x < qMin(a.width(), b.width()); ++x) {
            if (mask.contains(x, y))
                continue;
            if (a.pixel(x, y) != b.pixel(x, y))
                box |= QRect(x, y, 1, 1);
        }
    }
    return box;
}

// The longest run of equal pixels down a column, from top to bottom: a smooth
// gradient changes every few rows, a banded one stays flat for dozens.
int longestRun(const QImage& image, int x, int top, int bottom)
{
    int longest = 0;
    int run = 0;
    for (int y = top; y < bottom; ++y) {
        run = (y > top && image.pixel(x, y) == image.pixel(x, y - 1)) ? run + 1 : 1;
        longest = qMax(longest, run);
    }
    return longest;
}

// Horizontal centre of the light pixels (icon and text) in a rectangle; -1 if none.
double lightCentre(const QImage& image, const QRect& area)
{
    int left = INT_MAX;
    int right = -1;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (qGray(image.pixel(x, y)) > 200) {
                left = qMin(left, x);
                right = qMax(right, x);
            }
        }
    }
    return right < 0 ? -1.0 : (left + right) / 2.0;
}

int distinctColours(const QImage& image)
{
    QSet<QRgb> colours;
    for (int y = 0; y < image.height(); y += 2) {
        for (int x = 0; x < image.width(); x += 2)
            colours.insert(image.pixel(x, y));
    }
    return colours.size();
}
}  // namespace

class TestDemo : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;
    QString m_coreOut;
    QString m_guiOut;
    int m_guiExit = -1;

    QImage shot(const QString& name) const
    {
        QImage image(m_dir.filePath("shots/" + name + ".png"));
        return image.convertToFormat(QImage::Format_RGB32);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        // A run folder of its own: the sample skin and the profile, the core's port.
        QDir run(m_dir.path());
        QVERIFY(run.mkpath("Skins"));
        QVERIFY(QFile::link(kRunDir + "/Skins/default", m_dir.filePath("Skins/default")));
        QVERIFY(QFile::link(kRunDir + "/Skins/common", m_dir.filePath("Skins/common")));
        QVERIFY(QFile::copy(kRunDir + "/qt.conf", m_dir.filePath("qt.conf")));

        QProcess core;
        core.setProcessChannelMode(QProcess::MergedChannels);
        core.start(kBinDir + "/tgui-core", {"--port", "0", "--listen", "127.0.0.1", "--scenario",
                                            kRunDir + "/scenarios/demo.txt"});
        QVERIFY(core.waitForStarted());
        QVERIFY(core.waitForReadyRead(20000));
        const QByteArray first = core.readLine().trimmed();
        QVERIFY2(first.startsWith("LISTENING "), first.constData());
        const QByteArray port = first.mid(10);

        QFile conf(m_dir.filePath("Skins/default.conf"));
        QVERIFY(conf.open(QIODevice::WriteOnly));
        conf.write("[zedagui]\nSkinFile=Skins/default/default.xml\nComServerIP=127.0.0.1\nComServerPort=" + port + "\n");
        conf.close();

        QProcess gui;
        gui.setWorkingDirectory(m_dir.path());
        gui.start(kBinDir + "/zedagui",
                  {"--screenshots", m_dir.filePath("shots"), "--quit-on-end", "--deadline", "100000"});
        QVERIFY(gui.waitForStarted());
        QVERIFY(gui.waitForFinished(120000));
        m_guiExit = gui.exitCode();
        m_guiOut = QString::fromUtf8(gui.readAllStandardOutput());
        if (m_guiExit != 0)
            qWarning("%s", gui.readAllStandardError().right(4000).constData());
        QVERIFY(core.waitForFinished(20000));
        m_coreOut = QString::fromUtf8(core.readAll());
        QCOMPARE(core.exitCode(), 0);
    }

    void guiEndsCleanlyAndReportsItsFirstFrame()
    {
        QVERIFY2(m_guiExit == 0, qPrintable(m_guiOut));
        const QRegularExpression frame("first frame painted (\\d+) ms after process start");
        const QRegularExpressionMatch m = frame.match(m_guiOut);
        QVERIFY2(m.hasMatch(), qPrintable(m_guiOut));
        QVERIFY(m.captured(1).toInt() > 0);
        QVERIFY(m_guiOut.contains("zedagui: scenario ended, 28 screenshots"));
        QVERIFY(m_coreOut.contains("SCENARIO done"));
        QVERIFY(!m_coreOut.contains("SCENARIO timeout"));
    }

    void coreReceivesThePressesAndTheTranslationRequestInOrder()
    {
        const QStringList expected = {
            "EVENT zedagui type=0 <TXML><Event uri=\"Home:Messages\" type=\"1000\" flags=\"1\">",
            "EVENT zedagui type=0 <TXML><Event uri=\"SoftKey:Back\" type=\"1000\" flags=\"1\">",
            "EVENT zedagui type=0 <TXML><Event uri=\"Gui:Translate\">data=1%2C2%2C3%2C4%2C5%2C6%2C7%2C8%2C9<",
            "EVENT zedagui type=0 <TXML><Event uri=\"Home:Contacts\" type=\"1000\" flags=\"1\">",
            "EVENT zedagui type=0 <TXML><Event uri=\"Home:CallHistory\" type=\"1000\" flags=\"1\">",
            "EVENT zedagui type=0 <TXML><Event uri=\"SoftKey:Back\" type=\"1000\" flags=\"1\">",
        };
        // A first translation request comes with the first language, before any press.
        int from = m_coreOut.indexOf(expected.at(0));
        QVERIFY2(from > 0, qPrintable(m_coreOut));
        for (const QString& line : expected) {
            const int at = m_coreOut.indexOf(line, from);
            QVERIFY2(at >= from, qPrintable(line + "\n---\n" + m_coreOut));
            from = at + 1;
        }
        // Sliding off or pressing without a press URL sends nothing else.
        QCOMPARE(m_coreOut.count("EVENT zedagui"), 7);
    }

    void everyScreenshotIsARealScreen()
    {
        const QStringList names = QDir(m_dir.filePath("shots")).entryList({"*.png"}, QDir::Files, QDir::Name);
        QCOMPARE(names.size(), 28);
        for (const QString& file : names) {
            const QImage image = shot(file.chopped(4));
            QCOMPARE(image.size(), QSize(800, 480));
            // The boot screen (until the configuration, 02) is the skin's background;
            // the others add text and icons.
            const int least = file < QString("02-") ? 12 : 40;
            QVERIFY2(distinctColours(image) > least, qPrintable(file));
        }
    }

    void bootScreenShowsPictureSpinnerAndText()
    {
        for (const char* name : {"00-boot", "01-status"}) {
            const QImage boot = shot(name);
            // Black around, the picture in the middle, the text above it and
            // the spinner below it; each band has light pixels of its own.
            QCOMPARE(boot.pixel(20, 20), qRgb(0, 0, 0));
            QCOMPARE(boot.pixel(780, 460), qRgb(0, 0, 0));
            const QRect text(200, 132, 400, 50);
            const QRect picture(348, 204, 104, 104);
            const QRect spinner(372, 332, 56, 56);
            for (const QRect& band : {text, picture, spinner})
                QVERIFY2(lightCentre(boot, band) > 380 && lightCentre(boot, band) < 420, name);
            QVERIFY2(qBlue(boot.pixel(picture.center())) > qRed(boot.pixel(picture.center())) + 40, name);
        }
    }

    void homeBackgroundIsASmoothGradient()
    {
        const QImage home = shot("05-directory-online");
        // Between the status strip and the softkeys, beside the tiles.
        QVERIFY(longestRun(home, 20, 44, 412) < 24);
        QVERIFY(longestRun(home, 780, 44, 412) < 24);
        // Dark blue, lighter at the top.
        const QRgb top = home.pixel(20, 44);
        const QRgb bottom = home.pixel(20, 410);
        QVERIFY(qBlue(top) > qRed(top) + 30 && qBlue(top) > qBlue(bottom) + 20);
    }

    void tileIconsAndLabelsAreCentred()
    {
        const QImage home = shot("05-directory-online");
        for (int left : {66, 242, 418, 594}) {
            const double centre = left + 74.0;
            const QRect icon(left + 4, 180, 140, 76);
            const QRect label(left + 4, 262, 140, 30);
            QVERIFY2(qAbs(lightCentre(home, icon) - centre) <= 2.0, qPrintable(QString::number(left)));
            QVERIFY2(qAbs(lightCentre(home, label) - centre) <= 3.0, qPrintable(QString::number(left)));
        }
    }

    void aReplacedSoftkeyDoesNotKeepThePressOfTheOldOne()
    {
        // "Back" was released just before the home keys came: "Menu" in its
        // place looks like the other keys, not pressed.
        const QImage back = shot("09-reply-back");
        QCOMPARE(back.pixel(610, 428), back.pixel(16, 428));
        QCOMPARE(back.pixel(610, 468), back.pixel(16, 468));
    }

    void callHistoryFlingsMovesItsFocusAndHidesItsBar()
    {
        // What zedagui printed beside each screenshot of the call history.
        QHash<QString, QHash<QString, QString>> facts;
        QString last;
        for (const QString& line : m_guiOut.split('\n')) {
            const QRegularExpressionMatch name = QRegularExpression("screenshot .*/(\\d\\d-[^/]*)\\.png$").match(line);
            if (name.hasMatch())
                last = name.captured(1);
            if (line.startsWith("zedagui: screen call-history: ")) {
                for (const QString& pair : line.mid(30).split(' ')) {
                    const int eq = pair.indexOf('=');
                    facts[last][pair.left(eq)] = pair.mid(eq + 1);
                }
            }
        }
        auto at = [&](const char* shot, const char* key) { return facts.value(shot).value(key); };
        auto offset = [&](const char* shot) { return at(shot, "offset").toInt(); };
        QVERIFY2(facts.contains("15-calls-top"), qPrintable(m_guiOut));
        // At the top, focus on the first call; the keys move it down one row at a time, "#" a page of six.
        QCOMPARE(offset("15-calls-top"), 0);
        QCOMPARE(at("15-calls-top", "focus"), QString("0"));
        QCOMPARE(at("16-calls-key-down", "focus"), QString("1"));
        QCOMPARE(at("17-calls-key-down-2", "focus"), QString("2"));
        QCOMPARE(at("18-calls-key-page", "focus"), QString("8"));
        // The fling: let go, still coasting, at rest further on with the bar shown, then the bar gone.
        QVERIFY(offset("19-calls-fling") > 0);
        QCOMPARE(at("20-calls-mid-fling", "moving"), QString("yes"));
        QVERIFY(offset("20-calls-mid-fling") >= offset("19-calls-fling"));
        QCOMPARE(at("21-calls-at-rest", "moving"), QString("no"));
        QCOMPARE(at("21-calls-at-rest", "bar"), QString("visible"));
        QVERIFY2(offset("21-calls-at-rest") > offset("20-calls-mid-fling") + 300, qPrintable(m_guiOut));
        QCOMPARE(at("22-calls-bar-hidden", "bar"), QString("hidden"));
        QCOMPARE(offset("22-calls-bar-hidden"), offset("21-calls-at-rest"));
        // Only rows that came into view were built.
        QVERIFY(at("22-calls-bar-hidden", "built").toInt() < 60);

        // In pixels: the list moved under the title strip, and only the bar went away.
        const QRect list(0, 56, 800, 360);
        const QRect bar(780, 56, 20, 360);
        const QRect moved = diffBox(shot("15-calls-top"), shot("21-calls-at-rest"), QRect(0, 0, 800, 56));
        QVERIFY(list.contains(moved) && moved.height() > 300 && moved.width() > 600);
        const QRect hid = diffBox(shot("21-calls-at-rest"), shot("22-calls-bar-hidden"));
        QVERIFY2(!hid.isEmpty() && bar.contains(hid), qPrintable(QString("%1,%2 %3x%4").arg(hid.x()).arg(hid.y()).arg(hid.width()).arg(hid.height())));
        // Back on the home screen as it was.
        QVERIFY(diffBox(shot("12-directory-offline"), shot("24-calls-back-home"), QRect(0, 0, 800, 40)).isEmpty());
    }

    void homeTilesSwipeToTheirSecondPage()
    {
        // The last facts of the home screen: at rest on the second of two pages.
        const QRegularExpression rest("screenshot .*/26-home-page-2\\.png\nzedagui: screen home: page=2/2 offset=800 moving=no");
        QVERIFY2(rest.match(m_guiOut).hasMatch(), qPrintable(m_guiOut));
        QVERIFY(m_guiOut.contains("screen home: page=1/2 offset=0 moving=no"));
        // Only the tiles and the page dots changed, and the new tiles stand where the first four stood.
        const QImage page2 = shot("26-home-page-2");
        const QRect changed = diffBox(shot("24-calls-back-home"), page2, QRect(0, 0, 800, 40));
        QVERIFY2(QRect(0, 170, 800, 180).contains(changed) && changed.width() > 600,
                 qPrintable(QString("%1,%2 %3x%4").arg(changed.x()).arg(changed.y()).arg(changed.width()).arg(changed.height())));
        for (int left : {66, 242, 418, 594}) {
            const double centre = left + 74.0;
            QVERIFY2(qAbs(lightCentre(page2, QRect(left + 4, 180, 140, 76)) - centre) <= 2.0, qPrintable(QString::number(left)));
            QVERIFY2(qAbs(lightCentre(page2, QRect(left + 4, 262, 140, 30)) - centre) <= 3.0, qPrintable(QString::number(left)));
        }
        // Mid-swipe the tiles stood between the pages.
        QVERIFY(diffBox(shot("24-calls-back-home"), shot("25-home-swipe"), QRect(0, 0, 800, 40)).width() > 600);
    }

    void screenshotsChangeWhereTheScenarioChangedTheScreen()
    {
        const QRect statusStrip(0, 0, 800, 40);  // the clock may turn a minute
        const QRect clock(600, 0, 200, 40);
        const QRect intro(40, 100, 720, 64);
        const QRect softkeys(0, 416, 800, 64);
        const QRect homeArea(0, 0, 800, 416);
        const QRect messagesTile(60, 170, 160, 136);

        // Boot screen to home: the whole screen.
        const QRect boot = diffBox(shot("00-boot"), shot("02-home"));
        QVERIFY(boot.width() > 600 && boot.height() > 250);
        // The softkeys arrive: only the bottom row.
        QVERIFY(softkeys.contains(diffBox(shot("02-home"), shot("03-softkeys-home"), statusStrip)));
        QVERIFY(!diffBox(shot("02-home"), shot("03-softkeys-home"), statusStrip).isEmpty());
        // 24-hour clock: only the clock.
        const QRect hours = diffBox(shot("03-softkeys-home"), shot("04-clock-24h"));
        QVERIFY2(!hours.isEmpty() && clock.contains(hours), qPrintable(QString("%1 %2").arg(hours.x()).arg(hours.width())));
        // The directory comes up: only the paragraph.
        const QRect status = diffBox(shot("04-clock-24h"), shot("05-directory-online"), statusStrip);
        QVERIFY(!status.isEmpty() && intro.contains(status));
        // A finger on Messages: only its tile.
        const QRect pressed = diffBox(shot("05-directory-online"), shot("06-press-Messages"), statusStrip);
        QVERIFY(!pressed.isEmpty() && messagesTile.contains(pressed));
        // The core's answer: the softkeys of messages.
        const QRect reply = diffBox(shot("06-press-Messages"), shot("07-reply-messages"), statusStrip.united(messagesTile));
        QVERIFY(!reply.isEmpty() && softkeys.contains(reply));
        // Back: the home keys again, on an unchanged home screen. The released key
        // may still be fading back, so the row is compared by its labels' change only.
        QVERIFY(diffBox(shot("05-directory-online"), shot("09-reply-back"), statusStrip.united(softkeys)).isEmpty());
        const QRect back = diffBox(shot("07-reply-messages"), shot("09-reply-back"), statusStrip.united(messagesTile));
        QVERIFY(!back.isEmpty() && softkeys.contains(back));
        // French: the language alone changes nothing visible; the translations do,
        // on the home screen and in the softkeys.
        QVERIFY(diffBox(shot("09-reply-back"), shot("10-language-fr"), statusStrip.united(softkeys)).isEmpty());
        const QRect french = diffBox(shot("10-language-fr"), shot("11-translations-fr"), statusStrip);
        QVERIFY(french.intersects(homeArea) && french.intersects(softkeys));
        // The directory goes away: the paragraph again.
        const QRect offline = diffBox(shot("11-translations-fr"), shot("12-directory-offline"), statusStrip);
        QVERIFY(!offline.isEmpty() && intro.contains(offline));
    }
};

QTEST_GUILESS_MAIN(TestDemo)
#include "tst_demo.moc"
