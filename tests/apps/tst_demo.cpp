// The main job end to end: the real tgui-core plays the repository's demo
// scenario to the real zedagui on the sample skin, headless, with the real
// database peer on the demo's directory. The core must
// receive the events of the scripted presses and the translation request,
// and every screenshot must show a real screen that changed where the
// scenario changed it, and only there.
#include <QtTest>

#include <QDomDocument>
#include <QImage>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>
#include <climits>
#include <functional>

#include "WebPeers.h"

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

// Pixels brighter than the dark backgrounds of the skin: text and icons.
int brightPixels(const QImage& image, const QRect& area)
{
    int n = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            n += qGray(image.pixel(x, y)) > 150 ? 1 : 0;
    return n;
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
    // The directory's world: the SOAP endpoint and two proxies in front of it.
    SoapPeer m_endpoint;
    TinyProxy m_proxy1;
    TinyProxy m_proxy2;
    QString m_coreOut;
    QString m_guiOut;
    QString m_guiLog;  // its standard error: the log before the log client is up
    int m_guiExit = -1;
    int m_dbsExit = -1;

    QImage shot(const QString& name) const
    {
        QImage image(m_dir.filePath("shots/" + name + ".png"));
        return image.convertToFormat(QImage::Format_RGB32);
    }
    // A screenshot by its step name, whatever its number.
    QImage step(const QString& name) const
    {
        const QStringList found = QDir(m_dir.filePath("shots")).entryList(
            {"[0-9][0-9]-" + name + ".png", "98-[0-9][0-9][0-9]-" + name + ".png"}, QDir::Files);
        return found.size() == 1 ? shot(found.first().chopped(4)) : QImage();
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
        QVERIFY(QFile::link(kRunDir + "/Skins/leaf", m_dir.filePath("Skins/leaf")));
        QVERIFY(QFile::copy(kRunDir + "/qt.conf", m_dir.filePath("qt.conf")));
        // The child that zedagui supervises.
        QVERIFY(QFile::link(kBinDir + "/tgui-child", m_dir.filePath("tgui-child")));

        QVERIFY(m_endpoint.start({"--tls"}));
        QVERIFY(m_proxy1.start(m_endpoint.port()));
        QVERIFY(m_proxy2.start(m_endpoint.port()));
        QFile pac(m_dir.filePath("directory.pac"));
        QVERIFY(pac.open(QIODevice::WriteOnly));
        pac.write(QStringLiteral("function FindProxyForURL(url, host) {\n"
                                 "  if (dnsDomainIs(host, 'directory.test'))\n"
                                 "    return 'PROXY 127.0.0.1:%1; PROXY localhost:%2';\n"
                                 "  return 'DIRECT';\n}\n")
                      .arg(m_proxy1.port())
                      .arg(m_proxy2.port())
                      .toUtf8());
        pac.close();

        QProcess core;
        core.setProcessChannelMode(QProcess::MergedChannels);
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("TGUI_DEMO_PROXY_PID", QString::number(m_proxy1.pid()));
        core.setProcessEnvironment(env);
        core.start(kBinDir + "/tgui-core", {"--port", "0", "--listen", "127.0.0.1", "--scenario",
                                            kRunDir + "/scenarios/demo.txt", "--report-dir", m_dir.path()});
        QVERIFY(core.waitForStarted());
        QVERIFY(core.waitForReadyRead(20000));
        const QByteArray first = core.readLine().trimmed();
        QVERIFY2(first.startsWith("LISTENING "), first.constData());
        const QByteArray port = first.mid(10);

        // The database peer registers before zedagui starts, as in run-demo.sh.
        QProcess dbs;
        dbs.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        dbs.start(kBinDir + "/tgui-dbs", {"--port", QString::fromLatin1(port), "--init",
                                          kRunDir + "/db/demo.sql", m_dir.filePath("demo.db")});
        QVERIFY(dbs.waitForStarted());
        QByteArray early;
        QElapsedTimer clock;
        clock.start();
        while (!early.contains("REGISTER dbs") && clock.elapsed() < 20000) {
            core.waitForReadyRead(100);
            early += core.readAll();
        }
        QVERIFY2(early.contains("REGISTER dbs"), early.constData());

        QFile conf(m_dir.filePath("Skins/default.conf"));
        QVERIFY(conf.open(QIODevice::WriteOnly));
        conf.write("[zedagui]\nSkinFile=Skins/default/default.xml\nComServerIP=127.0.0.1\nComServerPort=" + port
                   + "\nAutoStart=tgui-child\nAlwaysRestart=true\n[tgui-child]\nAutoStartParameters=--sleep -1\n");
        conf.close();

        QProcess gui;
        gui.setWorkingDirectory(m_dir.path());
        gui.start(kBinDir + "/zedagui",
                  {"--screenshots", m_dir.filePath("shots"), "--quit-on-end", "--deadline", "200000",
                   "--directory-url", "https://directory.test/auth/soap", "--directory-pac", pac.fileName(),
                   "--directory-user", "alice", "--directory-password", "secret"});
        QVERIFY(gui.waitForStarted());
        QVERIFY(gui.waitForFinished(220000));
        m_guiExit = gui.exitCode();
        m_guiOut = QString::fromUtf8(gui.readAllStandardOutput());
        m_guiLog = QString::fromUtf8(gui.readAllStandardError());
        if (m_guiExit != 0)
            qWarning("%s", qPrintable(m_guiLog.right(4000)));
        QVERIFY(core.waitForFinished(20000));
        m_coreOut = QString::fromUtf8(early + core.readAll());
        if (core.exitCode() != 0)
            qWarning("%s", qPrintable(m_coreOut.right(3000)));
        QCOMPARE(core.exitCode(), 0);
        dbs.terminate();
        QVERIFY(dbs.waitForFinished(10000));
        m_dbsExit = dbs.exitStatus() == QProcess::NormalExit ? dbs.exitCode() : -1;
    }

    void guiEndsCleanlyAndReportsItsFirstFrame()
    {
        QVERIFY2(m_guiExit == 0, qPrintable(m_guiOut));
        const QRegularExpression frame("first frame painted (\\d+) ms after process start");
        const QRegularExpressionMatch m = frame.match(m_guiOut);
        QVERIFY2(m.hasMatch(), qPrintable(m_guiOut));
        QVERIFY(m.captured(1).toInt() > 0);
        QVERIFY(m_guiOut.contains("zedagui: scenario ended, 130 screenshots"));
        QVERIFY(m_coreOut.contains("SCENARIO done"));
        QVERIFY(!m_coreOut.contains("SCENARIO timeout"));
        // A clean start finds every font the manager loads.
        QVERIFY2(!m_guiLog.contains("Failed to add font"), qPrintable(m_guiLog.left(4000)));
        QVERIFY2(m_guiLog.contains("Added font: ./Skins/leaf/fonts/DroidNaskh-Bold.ttf"), qPrintable(m_guiLog.left(4000)));
    }

    void coreReceivesThePressesAndTheTranslationRequestInOrder()
    {
        const QStringList expected = {
            "EVENT zedagui type=0 <TXML><Event uri=\"Home:Messages\" type=\"1000\" flags=\"1\">",
            "EVENT zedagui type=0 <TXML><Event uri=\"SoftKey:Back\" type=\"1000\" flags=\"1\">",
            "EVENT zedagui type=0 <TXML><Event uri=\"Gui:Translate\">data=1%2C2%2C3%2C4%2C5%2C6%2C7%2C8%2C9<",
            "EVENT zedagui type=0 <TXML><Event uri=\"Home:Contacts\" type=\"1000\" flags=\"1\">",
            "EVENT zedagui type=0 <TXML><Event uri=\"Home:Settings\" type=\"1000\" flags=\"1\">",
            "EVENT zedagui type=0 <TXML><Event uri=\"SoftKey:ToggleEditMode\" type=\"1000\" flags=\"1\">",
            "EVENT zedagui type=0 <TXML><Event uri=\"SoftKey:Back\" type=\"1000\" flags=\"1\">",
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
        // The supervised child, killed by the scenario, stopped and then ran again.
        for (const QString& line : {QString("EVENT zedagui type=0 <TXML><Event uri=\"Demo:Child\" type=\"1000\" flags=\"1\">"
                                            "name=tgui-child;state=stopped;run=1<"),
                                    QString("EVENT zedagui type=0 <TXML><Event uri=\"Demo:Child\" type=\"1000\" flags=\"1\">"
                                            "name=tgui-child;state=running;run=2<")}) {
            const int at = m_coreOut.indexOf(line, from);
            QVERIFY2(at >= from, qPrintable(line + "\n---\n" + m_coreOut));
            from = at + 1;
        }
        // Sliding off or pressing without a press URL sends nothing else; the
        // flyout adds its report, two Menu presses, a choice and two closings,
        // the Network screen its tile, the mode key and Back, the directory its
        // three results, the supervised child its two changes of state, the call
        // history its tile and Back, the Account screen its three Script presses
        // and Back, the softkey bar its page turned by More and its own flyout's
        // report and closing, the Menu key's flyout its two reports and closings,
        // and the right-hand shared key its report and closing.
        QCOMPARE(m_coreOut.count("EVENT zedagui"), 35);
    }

    void theHomeScreenCountsTheDirectorysContacts()
    {
        // Twelve from the seed script, one more from the scenario's insertion,
        // which the peer answered after it had told zedagui.
        const int twelve = m_guiLog.indexOf("zedagui: 12 contacts");
        QVERIFY2(twelve >= 0, qPrintable(m_guiLog.right(3000)));
        QVERIFY(m_guiLog.indexOf("zedagui: 13 contacts") > twelve);
        QVERIFY(m_coreOut.contains("EVENT dbs type=1 TJDB/1 response\\n2=demo-add-contact\\n3=user\\n"));
        QVERIFY(m_coreOut.contains("ROUTE dbs -> zedagui type=1"));
        QCOMPARE(m_dbsExit, 0);
    }

    void everyScreenshotIsARealScreen()
    {
        const QStringList names = QDir(m_dir.filePath("shots")).entryList({"*.png"}, QDir::Files, QDir::Name);
        QCOMPARE(names.size(), 130);
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
        const QImage home = shot("05-contact-added");
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
        const QImage home = shot("05-contact-added");
        for (int left : {66, 242, 418, 594}) {
            const double centre = left + 74.0;
            const QRect icon(left + 4, 180, 140, 76);
            const QRect label(left + 4, 262, 140, 30);
            QVERIFY2(qAbs(lightCentre(home, icon) - centre) <= 2.0, qPrintable(QString::number(left)));
            QVERIFY2(qAbs(lightCentre(home, label) - centre) <= 3.0, qPrintable(QString::number(left)));
        }
    }

    void meetingLinksAreHighlightedAndTheChildRestarts()
    {
        const QImage meeting = step("meeting");
        const QImage stopped = step("child-stopped");
        const QImage restarted = step("child-restarted");
        for (const QImage& image : {meeting, stopped, restarted})
            QVERIFY(!image.isNull());
        // Each kind of link shows in its colour in the details (web, e-mail,
        // phone, SIP, pass code), and the normalised list repeats them.
        const QRect details(20, 56, 760, 196);
        const QRect list(20, 262, 760, 80);
        for (const QRgb colour : {qRgb(0x4d, 0xa3, 0xff), qRgb(0x5e, 0xd6, 0x7a), qRgb(0xff, 0xa5, 0x3a),
                                  qRgb(0xc5, 0x8c, 0xff), qRgb(0xff, 0xe1, 0x4d)}) {
            for (const QRect& area : {details, list}) {
                int near = 0;
                for (int y = area.top(); y <= area.bottom(); ++y) {
                    for (int x = area.left(); x <= area.right(); ++x) {
                        const QRgb p = meeting.pixel(x, y);
                        near += qAbs(qRed(p) - qRed(colour)) + qAbs(qGreen(p) - qGreen(colour)) + qAbs(qBlue(p) - qBlue(colour)) < 40;
                    }
                }
                // Small text: how many pixels reach the full colour depends on the
                // build's glyph rendering (the ARM build's, about half as many).
                QVERIFY2(near > 10, qPrintable(QString("colour %1 in %2,%3").arg(colour, 0, 16).arg(area.x()).arg(area.y())));
            }
        }
        // The child's line alone changes: stopped, then running again.
        const QRect child(20, 356, 760, 44);
        const QRect statusStrip(0, 0, 800, 40);
        const QRect toStopped = diffBox(meeting, stopped, statusStrip);
        QVERIFY(!toStopped.isEmpty() && child.contains(toStopped));
        const QRect toRunning = diffBox(stopped, restarted, statusStrip);
        QVERIFY(!toRunning.isEmpty() && child.contains(toRunning));
        QVERIFY(!diffBox(meeting, restarted, statusStrip).isEmpty());
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
            const QRegularExpressionMatch name = QRegularExpression("screenshot .*/\\d\\d-(?:\\d\\d\\d-)?([^/]*)\\.png$").match(line);
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
        QVERIFY2(facts.contains("calls-top"), qPrintable(m_guiOut));
        // At the top, focus on the first call; the keys move it down one row at a time, "#" a page of six.
        QCOMPARE(offset("calls-top"), 0);
        QCOMPARE(at("calls-top", "focus"), QString("0"));
        QCOMPARE(at("calls-key-down", "focus"), QString("1"));
        QCOMPARE(at("calls-key-down-2", "focus"), QString("2"));
        QCOMPARE(at("calls-key-page", "focus"), QString("8"));
        // The fling: let go, still coasting, at rest further on with the bar shown, then the bar gone.
        QVERIFY(offset("calls-fling") > 0);
        QCOMPARE(at("calls-mid-fling", "moving"), QString("yes"));
        QVERIFY(offset("calls-mid-fling") >= offset("calls-fling"));
        QCOMPARE(at("calls-at-rest", "moving"), QString("no"));
        QCOMPARE(at("calls-at-rest", "bar"), QString("visible"));
        QVERIFY2(offset("calls-at-rest") > offset("calls-mid-fling") + 300, qPrintable(m_guiOut));
        QCOMPARE(at("calls-bar-hidden", "bar"), QString("hidden"));
        QCOMPARE(offset("calls-bar-hidden"), offset("calls-at-rest"));
        // Only rows that came into view were built.
        QVERIFY(at("calls-bar-hidden", "built").toInt() < 60);

        // In pixels: the list moved under the title strip, and only the bar went away.
        const QRect list(0, 56, 800, 360);
        const QRect bar(780, 56, 20, 360);
        const QRect moved = diffBox(step("calls-top"), step("calls-at-rest"), QRect(0, 0, 800, 56));
        QVERIFY(list.contains(moved) && moved.height() > 300 && moved.width() > 600);
        const QRect hid = diffBox(step("calls-at-rest"), step("calls-bar-hidden"));
        QVERIFY2(!hid.isEmpty() && bar.contains(hid), qPrintable(QString("%1,%2 %3x%4").arg(hid.x()).arg(hid.y()).arg(hid.width()).arg(hid.height())));
        // Back on the home screen as it was.
        QVERIFY(diffBox(step("network-back"), step("calls-back-home"), QRect(0, 0, 800, 40)).isEmpty());
    }

    void contactsListFollowsTheLiveTable()
    {
        // What zedagui printed beside each screenshot of the contacts.
        QHash<QString, QHash<QString, QString>> facts;
        QString last;
        for (const QString& line : m_guiOut.split('\n')) {
            const QRegularExpressionMatch name = QRegularExpression("screenshot .*/\\d\\d-(?:\\d\\d\\d-)?([^/]*)\\.png$").match(line);
            if (name.hasMatch())
                last = name.captured(1);
            if (line.startsWith("zedagui: screen contacts: ")) {
                for (const QString& pair : line.mid(26).split(' ')) {
                    const int eq = pair.indexOf('=');
                    facts[last][pair.left(eq)] = pair.mid(eq + 1);
                }
            }
        }
        auto at = [&](const char* shot, const char* key) { return facts.value(shot).value(key); };
        QVERIFY2(facts.contains("contacts-list"), qPrintable(m_guiOut));
        // The tile opened the list.
        QCOMPARE(at("contacts-opened", "rows"), QString("13"));
        // Thirteen contacts, of which only those in view were built, the first focused.
        QCOMPARE(at("contacts-list", "rows"), QString("13"));
        QVERIFY(at("contacts-list", "built").toInt() >= 6 && at("contacts-list", "built").toInt() < 13);
        QCOMPARE(at("contacts-list", "focus"), QString("1"));
        // The peer's insertion: a fourteenth row, focused; deleted, gone; then none.
        QVERIFY2(at("contacts-inserted", "rows") == "14", qPrintable(m_guiOut.right(6000)));
        QCOMPARE(at("contacts-inserted", "focus"), QString("14"));
        QCOMPARE(at("contacts-deleted", "rows"), QString("13"));
        QCOMPARE(at("contacts-empty", "rows"), QString("0"));
        QCOMPARE(at("contacts-restored", "rows"), QString("13"));

        const QRect list(0, 56, 800, 360);
        const QImage shown = step("contacts-list");
        const QImage inserted = step("contacts-inserted");
        const QImage empty = step("contacts-empty");
        QVERIFY(!shown.isNull() && !inserted.isNull() && !empty.isNull());
        QVERIFY(brightPixels(shown, list) > 2000);
        // The new row scrolled into view at the bottom of the list.
        // (Beside the list's own softkeys, which came just before.)
        const QRect moved = diffBox(step("contacts-softkeys"), inserted, QRect(0, 0, 800, 56));
        QVERIFY2(list.contains(moved) && moved.height() > 200, qPrintable(QString("%1,%2 %3x%4").arg(moved.x()).arg(moved.y()).arg(moved.width()).arg(moved.height())));
        QVERIFY(!diffBox(inserted, step("contacts-deleted"), QRect(0, 0, 800, 56)).isEmpty());
        // Emptied: a short note where the rows were.
        const int note = brightPixels(empty, list);
        QVERIFY2(note > 30 && note < brightPixels(shown, list) / 4, qPrintable(QString::number(note)));
        QVERIFY(diffBox(shown, empty, QRect(0, 0, 800, 56)).intersects(QRect(0, 56, 800, 120)));
        QVERIFY(m_guiLog.contains("zedagui: the contacts table is empty"));
        // Home again, with every contact back.
        QVERIFY(diffBox(step("contacts-home"), step("contacts-back-home"), QRect(0, 0, 800, 40)).isEmpty());
    }

    void homeTilesSwipeToTheirSecondPage()
    {
        // The last facts of the home screen: at rest on the second of two pages.
        const QRegularExpression rest("screenshot .*/\\d\\d-(?:\\d\\d\\d-)?home-page-2\\.png\nzedagui: screen home: page=2/2 offset=800 moving=no");
        QVERIFY2(rest.match(m_guiOut).hasMatch(), qPrintable(m_guiOut));
        QVERIFY(m_guiOut.contains("screen home: page=1/2 offset=0 moving=no"));
        // Only the tiles and the page dots changed, and the new tiles stand where the first four stood.
        const QImage page2 = step("home-page-2");
        const QRect changed = diffBox(step("calls-back-home"), page2, QRect(0, 0, 800, 40));
        QVERIFY2(QRect(0, 170, 800, 180).contains(changed) && changed.width() > 600,
                 qPrintable(QString("%1,%2 %3x%4").arg(changed.x()).arg(changed.y()).arg(changed.width()).arg(changed.height())));
        for (int left : {66, 242, 418, 594}) {
            const double centre = left + 74.0;
            QVERIFY2(qAbs(lightCentre(page2, QRect(left + 4, 180, 140, 76)) - centre) <= 2.0, qPrintable(QString::number(left)));
            QVERIFY2(qAbs(lightCentre(page2, QRect(left + 4, 262, 140, 30)) - centre) <= 3.0, qPrintable(QString::number(left)));
        }
        // Mid-swipe the tiles stood between the pages.
        QVERIFY(diffBox(step("calls-back-home"), step("home-swipe"), QRect(0, 0, 800, 40)).width() > 600);
    }

    // Test automation's view: the core waited until the report showed the French
    // title, and saved the final screen's report, which agrees with its pixels.
    void screensByTheirReport()
    {
        QVERIFY2(m_coreOut.contains("REPORT zedagui shows title label=Accueil"), qPrintable(m_coreOut.right(3000)));
        QVERIFY(m_coreOut.contains(QRegularExpression("UIREPORT zedagui bytes=\\d+")));
        QFile file(m_dir.filePath("ui-report.xml"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QDomDocument report;
        QVERIFY(report.setContent(&file));
        const QDomElement root = report.documentElement();
        QCOMPARE(root.tagName() + " " + root.attribute("name") + " " + root.attribute("type"),
                 QStringLiteral("window zedagui CZedaGui"));
        // Everything reported by its name.
        QHash<QString, QDomElement> named;
        QStringList windows;
        const std::function<void(const QDomElement&)> collect = [&](const QDomElement& parent) {
            for (QDomElement e = parent.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
                if (!e.attribute("name").isEmpty() && !named.contains(e.attribute("name")))
                    named.insert(e.attribute("name"), e);
                collect(e);
            }
        };
        collect(root);
        for (QDomElement e = root.firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
            windows << e.attribute("name");
        // The meeting screen is up; the home screen it covers is left out.
        QVERIFY2(windows.contains("meeting") && !windows.contains("home"), qPrintable(windows.join(",")));
        QCOMPARE(named.value("meeting-title").attribute("label"), QStringLiteral("Meeting details"));
        const QDomElement child = named.value("child-state");
        QVERIFY2(child.attribute("label").contains("running, run 2"), qPrintable(child.attribute("label")));
        // Where the child's line changed on the screen is where the report puts it.
        const QStringList pos = child.attribute("pos").split(':');
        const QStringList size = child.attribute("size").split('x');
        QCOMPARE(pos.size() + size.size(), 4);
        const QRect line(pos[0].toInt(), pos[1].toInt(), size[0].toInt(), size[1].toInt());
        const QRect changed = diffBox(step("child-stopped"), step("child-restarted"));
        QVERIFY(!changed.isEmpty());
        QVERIFY2(line.adjusted(-2, -2, 2, 2).contains(changed),
                 qPrintable(QString("%1,%2 %3x%4 in %5").arg(changed.x()).arg(changed.y()).arg(changed.width())
                                .arg(changed.height()).arg(child.attribute("pos") + " " + child.attribute("size"))));
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
        // A contact is added: only the paragraph, with the new count.
        const QRect status = diffBox(shot("04-clock-24h"), shot("05-contact-added"), statusStrip);
        QVERIFY(!status.isEmpty() && intro.contains(status));
        // A finger on Messages: only its tile.
        const QRect pressed = diffBox(shot("05-contact-added"), shot("06-press-Messages"), statusStrip);
        QVERIFY(!pressed.isEmpty() && messagesTile.contains(pressed));
        // The core's answer: the softkeys of messages.
        const QRect reply = diffBox(shot("06-press-Messages"), shot("07-reply-messages"), statusStrip.united(messagesTile));
        QVERIFY(!reply.isEmpty() && softkeys.contains(reply));
        // Back: the home keys again, on an unchanged home screen. The released key
        // may still be fading back, so the row is compared by its labels' change only.
        QVERIFY(diffBox(shot("05-contact-added"), shot("09-reply-back"), statusStrip.united(softkeys)).isEmpty());
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

    void menuFlyoutOpensTakesADigitAndClosesByItself()
    {
        // The flyout's report, the Menu key, digit 2's choice and the closing, in order;
        // then the Menu key again and, with no key in between, the closing by time-out.
        const QStringList expected = {
            "<Event uri=\"Gui:Event\" type=\"1000\" flags=\"1\">data=labels%3DMessages%3BCall%3BContacts"
            "%3BCall history%3BFeatures%3BSettings%3BkeyIndex%3D3<",
            "<Event uri=\"softkey:542-Menu\" type=\"1000\" flags=\"1\">",
            "<Event uri=\"softkey:702-Call\" type=\"1000\" flags=\"1\">data=state%3Dpressed%3B"
            "key%3DKey:FlyoutSelect%3Bvalue%3Dcall%3B<",
            "<Event uri=\"Gui:Event\" type=\"1000\" flags=\"1\">data=flyIn%3D1%3BkeyIndex%3D3<",
            "<Event uri=\"softkey:542-Menu\" type=\"1000\" flags=\"1\">",
            "<Event uri=\"Gui:Event\" type=\"1000\" flags=\"1\">data=flyIn%3D1%3BkeyIndex%3D3<",
        };
        QStringList events;
        for (const QString& line : m_coreOut.split('\n')) {
            // The softkey bar's own flyouts (keys 1, 0 and 3) report too, later in the scenario.
            if (line.startsWith("EVENT zedagui") && (line.contains("Gui:Event") || line.contains("softkey:7")
                                                     || line.contains("softkey:542-Menu"))
                && !line.contains("keyIndex%3D1"))
                events << line;
        }
        QCOMPARE(events.size(), expected.size() + 6);
        for (int i = 0; i < expected.size(); ++i)
            QVERIFY2(events.at(i).contains(expected.at(i)), qPrintable(events.at(i)));

        const QImage before = step("menu-flyout");
        const QImage open = step("menu-open");
        const QImage chosen = step("menu-digit-2");
        const QImage reopened = step("menu-reopened");
        const QImage timedOut = step("menu-timeout");
        for (const QImage& image : {before, open, chosen, reopened, timedOut})
            QVERIFY(!image.isNull());
        const QRect statusStrip(0, 0, 800, 40);  // the clock may turn a minute
        // Open: above the Menu key, its right edge on the key's, and the key lit.
        const QRect flyoutAndKey(474, 84, 320, 392);
        for (const QImage& image : {open, reopened}) {
            const QRect changed = diffBox(before, image, statusStrip);
            QVERIFY2(flyoutAndKey.contains(changed) && changed.width() > 300 && changed.height() > 300,
                     qPrintable(QString("%1,%2 %3x%4").arg(changed.x()).arg(changed.y()).arg(changed.width()).arg(changed.height())));
            // The banner's three lines and a digit on each of the six rows.
            for (int line : {92, 112, 130})
                QVERIFY2(brightPixels(image, QRect(480, line, 120, 14)) > 20, qPrintable(QString::number(line)));
            for (int row : {160, 202, 248, 290, 336, 378})
                QVERIFY2(brightPixels(image, QRect(752, row + 8, 30, 24)) > 10, qPrintable(QString::number(row)));
        }
        // The focused first row and its owner, the Menu key, look chosen.
        QVERIFY(qBlue(open.pixel(740, 170)) > qRed(open.pixel(740, 170)) + 80);
        QVERIFY(qBlue(open.pixel(610, 470)) > qRed(open.pixel(610, 470)) + 80);
        // Closed by the choice and by the time-out: the screen as before it opened.
        QVERIFY(diffBox(before, chosen, statusStrip).isEmpty());
        QVERIFY(diffBox(before, timedOut, statusStrip).isEmpty());
    }

    // Settings opens the Network screen; the dial pad types the address group by
    // group, Tab goes on to the name field, whose mode identifier appears beside
    // it, and the bar shows just the context keys the focused field asks for.
    void networkScreenTypesIntoItsFields()
    {
        const QRect ipField(250, 150, 320, 44);
        const QRect firstGroup(255, 155, 48, 34);
        const QRect otherGroups(306, 155, 260, 34);
        const QRect nameField(250, 230, 320, 44);
        const QRect modeId(580, 230, 180, 44);
        const QRect modeKey(4, 420, 196, 56);
        const QRect deleteKey(202, 420, 196, 56);
        const QColor selection("#306ebe");
        auto selected = [&](const QImage& image, const QRect& area) {
            int n = 0;
            for (int y = area.top(); y <= area.bottom(); ++y)
                for (int x = area.left(); x <= area.right(); ++x)
                    n += image.pixel(x, y) == selection.rgb();
            return n;
        };
        // A key is drawn where its area is lighter than the bar's own background.
        auto keyShown = [](const QImage& image, const QRect& key) { return qBlue(image.pixel(key.center())) > 50; };
        // The bar stands the keys it shows side by side from the left: a context
        // key nobody asked for leaves no gap.
        auto keyCount = [&](const QImage& image) {
            int n = 0;
            for (int i = 0; i < 4; ++i)
                n += keyShown(image, modeKey.translated(198 * i, 0)) ? 1 : 0;
            return n;
        };

        const QImage opened = step("network-softkeys");
        QVERIFY(!opened.isNull());
        QVERIFY(selected(opened, firstGroup) > 200);
        QCOMPARE(selected(opened, otherGroups), 0);
        // Delete, Save and Back: the address field does not ask for the mode key.
        QCOMPARE(keyCount(opened), 3);

        // Each key of the address changes the address field and nothing else.
        const QStringList typing = {"network-softkeys", "ip-1", "ip-19", "ip-192", "ip-192-1", "ip-192-16",
                                    "ip-192-168", "ip-192-168-1", "ip-next-group", "ip-192-168-1-2",
                                    "ip-192-168-1-20", "ip-done"};
        for (int i = 1; i < typing.size(); ++i) {
            const QRect changed = diffBox(step(typing.at(i - 1)), step(typing.at(i)));
            QVERIFY2(!changed.isEmpty() && ipField.contains(changed), qPrintable(typing.at(i)));
        }
        // Down after the last group wraps round to the first, selected again.
        QVERIFY(selected(step("ip-done"), firstGroup) > 200);

        // The name field: the identifier appears and the bar offers the mode key,
        // but no delete key while the field is empty.
        const QImage name = step("name-focus");
        QVERIFY(diffBox(step("ip-done"), name).intersects(modeId));
        // Mode, Save and Back: no Delete while the field is empty.
        QCOMPARE(keyCount(name), 3);
        QCOMPARE(selected(name, firstGroup), 0);
        const QRect typed = diffBox(name, step("name-D"));
        QVERIFY(typed.intersects(nameField) && typed.intersects(deleteKey) && !typed.intersects(ipField));
        QCOMPARE(keyCount(step("name-D")), 4);
        // The mode key changes the identifier ("Abc" to "abc"); in the field only
        // the blinking cursor may differ.
        const QRect mode = diffBox(step("name-Desk"), step("name-mode-abc"), QRect(0, 416, 800, 64));
        QVERIFY(mode.intersects(modeId) && nameField.united(modeId).contains(mode));
        // Back on the home screen.
        QVERIFY(diffBox(shot("12-directory-offline"), step("network-back"), QRect(0, 0, 800, 40)).isEmpty());
    }
    // The Account screen: a port clamped to its maximum, a masked password, the
    // multi-tap strip below the name with its marked letter, gone after its
    // time-out, Cyrillic and Katakana glyphs, the inline backspace button and
    // the magnifying glass above the field under a held finger.
    void accountScreenEditsByKeyAndTouch()
    {
        const QRect portField(250, 110, 320, 44);
        const QRect passwordText(254, 184, 250, 36);
        const QRect nameField(250, 250, 320, 44);
        const QRect belowName(0, 290, 800, 70);
        const QRgb marked = qRgb(48, 110, 190);
        const QRgb cell = qRgb(28, 44, 70);
        auto count = [](const QImage& image, const QRect& area, QRgb colour) {
            int n = 0;
            for (int y = area.top(); y <= area.bottom(); ++y)
                for (int x = area.left(); x <= area.right(); ++x)
                    n += (image.pixel(x, y) & 0xffffff) == (colour & 0xffffff);
            return n;
        };
        // The columns of a colour in an area.
        auto columns = [](const QImage& image, const QRect& area, QRgb colour) {
            int left = INT_MAX, right = -1;
            for (int y = area.top(); y <= area.bottom(); ++y)
                for (int x = area.left(); x <= area.right(); ++x)
                    if ((image.pixel(x, y) & 0xffffff) == (colour & 0xffffff)) {
                        left = qMin(left, x);
                        right = qMax(right, x);
                    }
            return right < 0 ? QPair<int, int>(-1, -1) : QPair<int, int>(left, right);
        };
        auto strip = [&](const QImage& image) {
            const QPair<int, int> a = columns(image, belowName, cell);
            const QPair<int, int> b = columns(image, belowName, marked);
            return QPair<int, int>(qMin(a.first < 0 ? INT_MAX : a.first, b.first < 0 ? INT_MAX : b.first),
                                   qMax(a.second, b.second));
        };
        for (const char* name : {"account-open", "port-9999", "port-clamped", "password-3", "password-masked",
                                 "name-field", "kate-a-marked", "kate-b-marked", "kate-b-settled", "inline-backspace",
                                 "kate-cyrillic", "kate-katakana", "kate-katakana-settled", "magnifier-drag",
                                 "magnifier-released", "account-back"})
            QVERIFY2(!step(name).isNull(), name);

        // The fifth 9 turns the port into its maximum, all selected.
        QCOMPARE(count(step("port-9999"), portField, marked), 0);
        QVERIFY(count(step("port-clamped"), portField, marked) > 300);
        QVERIFY(portField.contains(diffBox(step("port-9999"), step("port-clamped"))));

        // Four digits (4, 7, 1, 1), four equal mask characters: each adds the
        // same light pixels, whatever the digit.
        // Columns as tall as the text cursor are the cursor, which may blink.
        auto maskPixels = [&](const QImage& image) {
            int total = 0;
            for (int x = passwordText.left(); x <= passwordText.right(); ++x) {
                const int n = brightPixels(image, QRect(x, passwordText.top(), 1, passwordText.height()));
                total += n <= 18 ? n : 0;
            }
            return total;
        };
        const int one = maskPixels(step("password-1"));
        QVERIFY(one > 20);
        const QStringList digits = {"password-1", "password-2", "password-3", "password-masked"};
        for (int i = 1; i < digits.size(); ++i) {
            const int n = maskPixels(step(digits.at(i)));
            QVERIFY2(qAbs(n - (i + 1) * one) <= one / 5, qPrintable(QString("%1: %2 for %3").arg(digits.at(i)).arg(n).arg(one)));
        }

        // Key 2: the strip below the name, "a" and then "b" marked in its 32-pixel
        // cells; nothing else on the screen changes.
        const QPair<int, int> a = strip(step("kate-a-marked"));
        QCOMPARE(a.second - a.first + 1, 4 * 32);
        // The marked cell's text area is the cell less a pixel on each side.
        QCOMPARE(columns(step("kate-a-marked"), belowName, marked).first, a.first + 1);
        const QPair<int, int> b = columns(step("kate-b-marked"), belowName, marked);
        QCOMPARE(b.first, strip(step("kate-b-marked")).first + 32 + 1);
        QCOMPARE(b.second - b.first + 1, 30);
        QVERIFY(nameField.united(belowName).contains(diffBox(step("name-field"), step("kate-b-marked"))));
        // After the time-out the strip is gone and the letter stays.
        const QImage settled = step("kate-b-settled");
        QCOMPARE(count(settled, belowName, cell) + count(settled, belowName, marked), 0);
        const QRect typed = diffBox(step("name-field"), settled);
        QVERIFY(!typed.isEmpty() && nameField.contains(typed));
        // The inline button deletes it again: only the field changes.
        const QRect deleted = diffBox(settled, step("inline-backspace"));
        QVERIFY(!deleted.isEmpty() && nameField.contains(deleted));

        // Cyrillic and Katakana strips: five and ten cells, each a glyph of its own.
        for (const auto& [name, cells] : {qMakePair(QString("kate-cyrillic"), 5), qMakePair(QString("kate-katakana"), 10)}) {
            const QImage image = step(name);
            const QPair<int, int> span = strip(image);
            QCOMPARE(span.second - span.first + 1, cells * 32);
            QSet<QByteArray> glyphs;
            for (int i = 0; i < cells; ++i) {
                const QRect box(span.first + i * 32 + 1, belowName.top(), 30, belowName.height());
                QVERIFY2(brightPixels(image, box) > 8, qPrintable(QString("%1 %2").arg(name).arg(i)));
                const QImage glyph = image.copy(box);
                glyphs.insert(QByteArray(reinterpret_cast<const char*>(glyph.constBits()), int(glyph.sizeInBytes())));
            }
            QCOMPARE(glyphs.size(), cells);
        }

        // The glass: above the field, 1.6 times its height, three times as wide.
        const QRect glass = diffBox(step("kate-katakana-settled"), step("magnifier-drag"), nameField);
        QVERIFY2(glass.top() >= 165 && glass.bottom() <= 250 && glass.height() >= 60 && glass.width() >= 190,
                 qPrintable(QString("%1,%2 %3x%4").arg(glass.x()).arg(glass.y()).arg(glass.width()).arg(glass.height())));
        QVERIFY(brightPixels(step("magnifier-drag"), glass) > 300);
        // Lifted: gone; only the field (its cursor) may differ.
        const QRect after = diffBox(step("kate-katakana-settled"), step("magnifier-released"));
        QVERIFY(after.isEmpty() || nameField.contains(after));

        // Back on the home screen, still on the page the swipe left it at.
        QVERIFY(diffBox(step("home-page-2"), step("account-back"), QRect(0, 0, 800, 40)).isEmpty());
    }

    // The softkey bar: six keys on pages of four with More, More turning the
    // page, a shared place opening the bar's flyout above its key, a context key
    // coming and going, and the voicemail badge.
    void softkeyBarPagesFoldsAndBadges()
    {
        const QRect statusStrip(0, 0, 800, 40);
        const QRect row(0, 416, 800, 64);
        // A key is drawn where its area is lighter than the bar's own background.
        auto keys = [](const QImage& image) {
            int n = 0;
            for (int i = 0; i < 4; ++i)
                n += qBlue(image.pixel(102 + 198 * i, 448)) > 50 ? 1 : 0;
            return n;
        };
        for (const char* name : {"softkeys-bar-home", "softkeys-six", "softkeys-page-2", "softkeys-shared",
                                 "softkeys-shared-flyout", "softkeys-shared-closed", "softkeys-ctx-doc",
                                 "softkeys-ctx-shown", "softkeys-ctx-hidden", "softkeys-home-again",
                                 "softkeys-voicemail-badge"})
            QVERIFY2(!step(name).isNull(), name);

        // Six keys: a full first page (three keys and More), only the row changed.
        const QRect six = diffBox(step("softkeys-bar-home"), step("softkeys-six"), statusStrip);
        QVERIFY(!six.isEmpty() && row.contains(six));
        QCOMPARE(keys(step("softkeys-six")), 4);
        // More: the second page, a full one again, and the core hears the page.
        const QRect page = diffBox(step("softkeys-six"), step("softkeys-page-2"), statusStrip);
        QVERIFY(!page.isEmpty() && row.contains(page));
        QCOMPARE(keys(step("softkeys-page-2")), 4);
        QVERIFY2(m_coreOut.contains("<Event uri=\"Gui:SoftkeyPage\" type=\"1000\" flags=\"1\">data=1<"),
                 qPrintable(m_coreOut.right(2000)));

        // Two keys on place 2 become one key; its press opens the flyout above
        // it, its left edge on the key's, and lights the key.
        QCOMPARE(keys(step("softkeys-shared")), 4);
        const QRect flyout = diffBox(step("softkeys-shared"), step("softkeys-shared-flyout"), statusStrip);
        QVERIFY2(flyout.left() >= 200 && flyout.left() <= 204 && flyout.top() < 300 && flyout.bottom() <= 476
                     && flyout.width() >= 300,
                 qPrintable(QString("%1,%2 %3x%4").arg(flyout.x()).arg(flyout.y()).arg(flyout.width()).arg(flyout.height())));
        QVERIFY(qBlue(step("softkeys-shared-flyout").pixel(300, 470)) > qRed(step("softkeys-shared-flyout").pixel(300, 470)) + 80);
        QVERIFY(m_coreOut.contains("data=labels%3DRenvoyer%3BTransf"));
        // A second press closes it: above the row the screen is as before (the
        // key's own press may still be fading).
        const QRect closed = diffBox(step("softkeys-shared"), step("softkeys-shared-closed"), statusStrip);
        QVERIFY(closed.isEmpty() || row.contains(closed));

        // The context key takes no place until asked for, and leaves again.
        QCOMPARE(keys(step("softkeys-ctx-doc")), 3);
        QCOMPARE(keys(step("softkeys-ctx-shown")), 4);
        QVERIFY(row.contains(diffBox(step("softkeys-ctx-doc"), step("softkeys-ctx-shown"), statusStrip)));
        QVERIFY(diffBox(step("softkeys-ctx-doc"), step("softkeys-ctx-hidden"), statusStrip).isEmpty());

        // Three voicemail messages: the red badge on the row, and nothing else.
        const QRect badge = diffBox(step("softkeys-home-again"), step("softkeys-voicemail-badge"), statusStrip);
        QVERIFY2(!badge.isEmpty() && QRect(570, 420, 30, 30).contains(badge),
                 qPrintable(QString("%1,%2 %3x%4").arg(badge.x()).arg(badge.y()).arg(badge.width()).arg(badge.height())));
        const QRgb red = step("softkeys-voicemail-badge").pixel(badge.center());
        QVERIFY(qRed(red) > 200 && qBlue(red) < 100);
        // The home keys again, four of them; the rest of the screen as it was.
        QCOMPARE(keys(step("softkeys-home-again")), 4);
        const QRect again = diffBox(step("softkeys-bar-home"), step("softkeys-home-again"), statusStrip);
        QVERIFY2(again.isEmpty() || row.contains(again),
                 qPrintable(QString("%1,%2 %3x%4").arg(again.x()).arg(again.y()).arg(again.width()).arg(again.height())));
    }

    // The skin's permanent keys as the Menu key's flyout, fewer on a locked
    // phone; a shared right-hand key's flyout opening to the key's left.
    void menuFollowsTheLockAndRightHandFlyoutsOpenLeft()
    {
        const QRect statusStrip(0, 0, 800, 40);
        auto box = [](const QRect& r) {
            return QString("%1,%2 %3x%4").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height());
        };
        // Place 1 folds the permanent keys and "Menu complet" into one key "Menu";
        // the core hears the entries of each opening: the calendar is off, and a
        // locked phone keeps only the call and the emergency key.
        QVERIFY(m_guiLog.contains("zedagui: 4 softkeys: Menu | Annuaire | Messagerie | Renvoi"));
        const int open = m_coreOut.indexOf("data=labels%3DPlace a call%3BDirectory%3BRecent calls%3BVoicemail%3BSettings"
                                           "%3BBluetooth%3BEmergency%3BMenu complet%3BkeyIndex%3D0<");
        QVERIFY2(open > 0, qPrintable(m_coreOut.right(3000)));
        QVERIFY(m_coreOut.indexOf("data=labels%3DPlace a call%3BEmergency%3BMenu complet%3BkeyIndex%3D0<", open) > open);
        const QRect unlocked = diffBox(step("menu-permanent"), step("menu-unlocked-flyout"), statusStrip);
        const QRect locked = diffBox(step("menu-locked"), step("menu-locked-flyout"), statusStrip);
        // Both stand above the first key, their left edge on its own; the locked
        // phone's list is shorter (three entries), the unlocked one fills the flyout.
        QVERIFY2(unlocked.left() <= 8 && unlocked.right() < 400 && unlocked.top() < 220, qPrintable(box(unlocked)));
        QVERIFY2(locked.left() <= 8 && locked.right() < 400 && locked.top() > unlocked.top() + 10, qPrintable(box(locked)));
        // The focused first entry, "Place a call", shows its drawn icon (white art)
        // left of the label, not the repository's placeholder (grey dashes and the
        // icon's number), on either phone.
        const QRgb focusedRow = qRgb(48, 110, 190);
        for (const char* name : {"menu-unlocked-flyout", "menu-locked-flyout"}) {
            const QImage image = step(name);
            int top = -1;
            for (int y = 200; y < 416 && top < 0; ++y)
                top = image.pixel(150, y) == focusedRow ? y : -1;
            QVERIFY2(top > 0, name);
            int white = 0;
            int placeholderGrey = 0;
            for (int y = top; y < top + 40; ++y) {
                for (int x = 4; x < 54; ++x) {
                    const QRgb c = image.pixel(x, y);
                    white += qRed(c) > 220 && qGreen(c) > 220 && qBlue(c) > 220;
                    placeholderGrey += qAbs(qRed(c) - 0x8a) <= 12 && qAbs(qGreen(c) - 0x94) <= 12
                        && qAbs(qBlue(c) - 0xa6) <= 12;
                }
            }
            QVERIFY2(white > 100 && placeholderGrey == 0,
                     qPrintable(QString("%1: %2 white, %3 grey").arg(name).arg(white).arg(placeholderGrey)));
        }
        // The lock changed nothing on the screen until the key was pressed.
        const QRect lockedRow = diffBox(step("menu-unlocked"), step("menu-locked"), statusStrip);
        QVERIFY2(lockedRow.isEmpty() || QRect(0, 416, 800, 64).contains(lockedRow), qPrintable(box(lockedRow)));

        // The shared key on the right: its flyout ends on the key's right edge
        // and reaches far left of the key (which starts at x 594).
        const QRect right = diffBox(step("softkeys-shared-right"), step("softkeys-shared-right-flyout"), statusStrip);
        QVERIFY2(right.left() < 560 && right.right() >= 780 && right.right() <= 799 && right.top() < 300, qPrintable(box(right)));
        QVERIFY(m_guiLog.contains("zedagui: 4 softkeys: Appeler | Annuaire | Messagerie | Transfert"));
    }
};

QTEST_GUILESS_MAIN(TestDemo)
#include "tst_demo.moc"
