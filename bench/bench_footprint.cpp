// What a GUI process costs beyond Qt itself: zedagui's home screen, run in
// this program, against a bare Qt Widgets program that shows the same texts in
// QLabels and the same HTML through one QWebPage, both offscreen. Prints time to
// the first frame, peak and steady resident memory and the heap in use, and the
// heap of the home screen by the part of the toolkit that holds it.
//
// Each figure comes from a child process of this program (peak resident memory
// is per process): "--child tavo" builds CZedaGui in a run folder of its own
// whose core is a listening socket of this program, shows the boot screen, gives
// it the core's configuration after the first frame and measures once the home
// screen has stood for a second; "--child bare" and "--child bare-noweb" are the
// bare program with and without its web page. Timing and resident memory come
// from runs without attribution; the heap by user from one more run of each in
// which every block is charged, when it is handed out, to the innermost frame
// of its call stack that belongs to a part of the toolkit (or to WebKit, the
// font libraries or the network), and to Qt itself when the stack reaches the
// event loop or main first.
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QHash>
#include <QImage>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QProcess>
#include <QSet>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTime>
#include <QTimer>
#include <QWebFrame>
#include <QWebPage>
#include <QWidget>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cctype>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <functional>
#include <execinfo.h>
#include <mutex>
#include <signal.h>
#include <unistd.h>
#include <unordered_map>

#include "BenchSupport.h"
#include "CZedaGui.h"
#include "core/CTavoCoreCommunicator.h"
#include "core/TavoGlobals.h"
#include "layout/CTavoLayoutWidget.h"

namespace {

// ---------------------------------------------------------------- the figures

// Milliseconds since this process started, from /proc (10 ms steps).
qint64 msSinceProcessStart()
{
    QFile stat(QStringLiteral("/proc/self/stat"));
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = stat.readAll();
    const int close = text.lastIndexOf(')');
    const QList<QByteArray> fields = text.mid(close + 2).split(' ');
    if (close < 0 || fields.size() < 20)
        return -1;
    const qint64 ticks = fields.at(19).toLongLong();
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return qint64(now.tv_sec) * 1000 + now.tv_nsec / 1000000 - ticks * 1000 / sysconf(_SC_CLK_TCK);
}

// A field of /proc/self/status in kB ("VmHWM", "VmRSS").
long long statusKb(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray key = QByteArray(field) + ':';
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(key))
            return line.mid(key.size()).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}

// ------------------------------------------------------- the heap by its user

enum UserT { UserQt, UserSkin, UserImages, UserFonts, UserWidgets, UserWeb, UserCore, UserCount };
const char* const kUserNames[UserCount] = {"Qt itself",  "skin",     "images and icons", "fonts",
                                           "widgets",    "web page", "core link"};
const char* const kUserKeys[UserCount] = {"qt", "skin", "images", "fonts", "widgets", "web", "core"};

struct Attribution
{
    std::mutex mutex;
    std::unordered_map<void*, unsigned char> live;  // block to its user
    std::unordered_map<void*, signed char> frames;  // return address to a user, -1 none, -2 stop
    long long bytes[UserCount] = {};
    const void* exeBase = nullptr;
};
Attribution* s_attribution = nullptr;

bool has(const char* text, const char* part)
{
    return text && std::strstr(text, part);
}

// The user a frame stands for: a part of the toolkit, a library that serves one,
// -2 where the event loop or the program's start is reached, -1 for anything else.
signed char frameUser(void* address, const void* exeBase)
{
    Dl_info info{};
    if (!dladdr(address, &info))
        return -1;
    // Functions the library hides are named after the exported one before them,
    // which in practice is one of the same source file.
    const char* file = info.dli_fname;
    const char* name = info.dli_sname;
    if (has(name, "notify") || has(name, "QEventLoop") || has(name, "4exec") || has(name, "QApplicationC")
        || (info.dli_fbase == exeBase && has(name, "main")))
        return -2;
    if (has(file, "WebKit"))
        return UserWeb;
    if (has(name, "CTavoParagraph")
        && (has(name, "Html") || has(name, "CachedImage") || has(name, "sharedWebPage") || has(name, "finishImage")))
        return UserWeb;
    if (has(name, "CTavoResourceRepository") || has(name, "CIconResource") || has(name, "CTavoIconRepository")
        || has(name, "CTavoImage") || has(file, "Qt5Svg"))
        return UserImages;
    if (has(name, "CTavoStyleSheet") || has(name, "CTavoWidgetStyle") || has(name, "TavoSkinConfig")
        || has(name, "TavoProfile") || has(name, "setManagerStyle") || has(file, "libexpat"))
        return UserSkin;
    if (has(file, "libfontconfig") || has(file, "libfreetype") || has(name, "QFontDatabase")
        || has(name, "QFontEngine") || has(name, "QFontCache") || has(name, "loadFonts") || has(name, "GlyphCache"))
        return UserFonts;
    if (has(name, "CTavoCoreCommunicator") || has(file, "Qt5Network") || has(file, "libtxml") || has(name, "CTXML")
        || has(name, "appDefs") || has(name, "tavoToolSendAppMsg") || has(name, "CTavoDb"))
        return UserCore;
    if (has(name, "CTavo") || has(name, "KineticScroll") || has(name, "formatText") || info.dli_fbase == exeBase)
        return UserWidgets;
    return -1;
}

void attribute(void* block, long long bytes, bool allocated)
{
    Attribution& a = *s_attribution;
    if (!allocated) {
        std::lock_guard<std::mutex> lock(a.mutex);
        const auto it = a.live.find(block);
        if (it != a.live.end()) {
            a.bytes[it->second] -= bytes;
            a.live.erase(it);
        }
        return;
    }
    // The stack is read and named outside the lock: the loader takes a lock of its
    // own, and a thread that holds it may be allocating.
    void* stack[64];
    const int depth = backtrace(stack, 64);
    int i = 0;
    // The interposer's own frames.
    for (; i < depth; ++i) {
        Dl_info info{};
        if (!dladdr(stack[i], &info) || info.dli_fbase != a.exeBase)
            break;
    }
    unsigned char user = UserQt;
    for (; i < depth; ++i) {
        signed char found = -1;
        bool known = false;
        {
            std::lock_guard<std::mutex> lock(a.mutex);
            const auto it = a.frames.find(stack[i]);
            if ((known = it != a.frames.end()))
                found = it->second;
        }
        if (!known) {
            found = frameUser(stack[i], a.exeBase);
            std::lock_guard<std::mutex> lock(a.mutex);
            a.frames.emplace(stack[i], found);
        }
        if (found == -2)
            break;
        if (found >= 0) {
            user = static_cast<unsigned char>(found);
            break;
        }
    }
    std::lock_guard<std::mutex> lock(a.mutex);
    a.live[block] = user;
    a.bytes[user] += bytes;
}

void startAttribution()
{
#ifndef BENCH_NO_MALLOC_HOOKS
    s_attribution = new Attribution;
    Dl_info self{};
    dladdr(reinterpret_cast<void*>(&statusKb), &self);
    s_attribution->exeBase = self.dli_fbase;
    void* warm[4];
    backtrace(warm, 4);  // loads the unwinder before the hook needs it
    g_allocHook.store(&attribute);
#endif
}

// --------------------------------------------------------------- the children

void report(const char* key, long long value)
{
    std::printf("%s %lld\n", key, value);
}

void reportSteady(qint64 firstFrameMs)
{
    report("first_frame_ms", firstFrameMs);
    report("peak_kb", statusKb("VmHWM"));
    report("steady_kb", statusKb("VmRSS"));
    report("heap_bytes", g_liveBytes.load());
    // Resident memory by what is mapped: each library and font file, the heap,
    // and anonymous maps (large blocks, thread stacks, Qt's and WebKit's own pools).
    QFile smaps(QStringLiteral("/proc/self/smaps"));
    if (smaps.open(QIODevice::ReadOnly)) {
        QHash<QByteArray, long long> byMap;
        QByteArray current;
        for (const QByteArray& line : smaps.readAll().split('\n')) {
            if (line.startsWith("Rss:")) {
                byMap[current] += line.mid(4).trimmed().split(' ').value(0).toLongLong();
            } else if (!line.isEmpty() && !std::isupper(static_cast<unsigned char>(line.at(0)))) {
                const QList<QByteArray> parts = line.simplified().split(' ');
                current = parts.size() >= 6 ? parts.at(5).mid(parts.at(5).lastIndexOf('/') + 1) : QByteArray("anonymous");
            }
        }
        for (auto it = byMap.begin(); it != byMap.end(); ++it)
            report(QByteArray("map:" + it.key()).constData(), it.value());
    }
    if (s_attribution) {
        g_allocHook.store(nullptr);
        std::lock_guard<std::mutex> lock(s_attribution->mutex);
        // Qt itself: also all that was made before the attribution started.
        long long others = 0;
        for (int u = UserQt + 1; u < UserCount; ++u) {
            others += s_attribution->bytes[u];
            report(QByteArray("heap_").append(kUserKeys[u]).constData(), s_attribution->bytes[u]);
        }
        report("heap_qt", g_liveBytes.load() - others);
    }
    std::fflush(stdout);
}

// The texts of the home screen, as zedagui shows them after its configuration.
const char* const kTexts[] = {"Home", "Messages", "Contacts", "Call history", "Settings"};
const char* const kIntro = "<div align=\"center\"><b>Connected to the core</b> &middot; Directory offline</div>";
const char* const kConfig =
    "<TXML><Event uri=\"Core:Config\">language=en-us;hours24=0;systemName=Front desk;systemNumber=2041;step=home</Event></TXML>";

int runTavo(bool attributed)
{
    static int argc = 1;
    static char name[] = "zedagui";
    static char* argv[] = {name, nullptr};
    QApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("zedagui"));
    if (attributed)
        startAttribution();
    auto* gui = new CZedaGui;
    if (gui->size() != QSize(800, 480) && gui->styledRect().isEmpty())
        gui->resize(800, 480);
    qint64 firstFrame = -1;
    QObject::connect(gui, &CZedaGui::firstFramePainted, gui, [&] {
        firstFrame = msSinceProcessStart();
        // The core's configuration ends the boot; the home screen then stands a second.
        QTimer::singleShot(100, gui, [gui] {
            QByteArray config(kConfig);
            gui->onNewDocument(config, GuiAppsTavoapp, GuiAppsMsgTxml);
        });
        QTimer::singleShot(1100, gui, [&] {
            if (!gui->isBooted() || !gui->currentScreen() || !gui->currentScreen()->isVisible())
                std::fprintf(stderr, "bench_footprint: the home screen did not show\n");
            reportSteady(firstFrame);
            app.quit();
        });
    });
    gui->showLayoutMgr(false);
    const int code = app.exec();
    CTavoCoreCommunicator* com = gui->coreCom();
    gui->Quit();
    delete gui;
    if (com) {
        com->shutDown();
        delete com;
    }
    bRebootInitiated = false;
    return code;
}

// The bare program's window: notes its first frame.
class BareWindow : public QWidget
{
public:
    qint64 firstFrame = -1;
    std::function<void()> onFirstFrame;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QWidget::paintEvent(event);
        if (firstFrame < 0) {
            firstFrame = msSinceProcessStart();
            QTimer::singleShot(0, this, onFirstFrame);
        }
    }
};

int runBare(bool web, bool attributed)
{
    static int argc = 1;
    static char name[] = "bare";
    static char* argv[] = {name, nullptr};
    QApplication app(argc, argv);
    if (attributed)
        startAttribution();
    BareWindow window;
    window.resize(800, 480);
    QPalette palette = window.palette();
    palette.setColor(QPalette::Window, QColor(12, 28, 60));
    palette.setColor(QPalette::WindowText, Qt::white);
    window.setPalette(palette);
    window.setAutoFillBackground(true);
    int y = 10;
    for (const char* text : kTexts) {
        auto* label = new QLabel(QString::fromLatin1(text), &window);
        label->setGeometry(20, y, 300, 24);
        y += 40;
    }
    auto* clock = new QLabel(QTime::currentTime().toString(QStringLiteral("h:mm AP")), &window);
    clock->setGeometry(700, 10, 90, 24);
    auto* intro = new QLabel(&window);
    intro->setGeometry(20, y, 760, 40);
    QWebPage* page = nullptr;
    if (web) {
        page = new QWebPage;
        page->setViewportSize(QSize(760, 1));
        page->mainFrame()->setHtml(QString::fromLatin1(kIntro));
        const QSize size = page->mainFrame()->contentsSize();
        page->setViewportSize(size);
        QImage image(size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        page->mainFrame()->render(&painter);
        painter.end();
        intro->setPixmap(QPixmap::fromImage(image));
    } else {
        intro->setText(QStringLiteral("Connected to the core \u00b7 Directory offline"));
    }
    window.onFirstFrame = [&] {
        QTimer::singleShot(1100, &window, [&] {
            reportSteady(window.firstFrame);
            app.quit();
        });
    };
    window.show();
    const int code = app.exec();
    delete page;
    return code;
}

// ----------------------------------------------------------------- the driver

std::atomic<qint64> s_childPid{0};

void onStopSignal(int)
{
    const qint64 pid = s_childPid.load();
    if (pid > 0)
        kill(pid_t(pid), SIGKILL);
    _exit(0);
}

// A run folder of its own with the sample skin, whose core is a socket here that
// takes every frame and answers none: no other core on the machine is disturbed.
struct RunFolder
{
    QTemporaryDir dir;
    QTcpServer core;
    QList<QTcpSocket*> peers;

    bool make(const QString& runDir)
    {
        if (!dir.isValid() || !core.listen(QHostAddress::LocalHost, 0))
            return false;
        QObject::connect(&core, &QTcpServer::newConnection, &core, [this] {
            while (QTcpSocket* peer = core.nextPendingConnection()) {
                QObject::connect(peer, &QTcpSocket::readyRead, peer, [peer] { peer->readAll(); });
                peers.append(peer);
            }
        });
        QDir run(dir.path());
        bool ok = run.mkpath(QStringLiteral("Skins"));
        for (const char* skin : {"default", "common", "leaf"})
            ok = ok && QFile::link(runDir + "/Skins/" + skin, dir.filePath(QStringLiteral("Skins/") + skin));
        ok = ok && QFile::copy(runDir + "/qt.conf", dir.filePath(QStringLiteral("qt.conf")));
        QFile conf(dir.filePath(QStringLiteral("Skins/default.conf")));
        ok = ok && conf.open(QIODevice::WriteOnly);
        conf.write("[zedagui]\nSkinFile=Skins/default/default.xml\nComServerIP=127.0.0.1\nComServerPort="
                   + QByteArray::number(core.serverPort()) + "\n");
        return ok;
    }
};

typedef QHash<QByteArray, long long> FiguresT;

FiguresT runChild(const QString& mode, const QString& folder, bool attributed)
{
    QProcess child;
    child.setWorkingDirectory(folder);
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    child.setProcessEnvironment(env);
    QStringList args{QStringLiteral("--child"), mode};
    if (attributed)
        args << QStringLiteral("--attribute");
    child.start(QCoreApplication::applicationFilePath(), args);
    FiguresT figures;
    if (!child.waitForStarted())
        return figures;
    s_childPid = child.processId();
    QEventLoop loop;  // the core socket of the run folder is served meanwhile
    QObject::connect(&child, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), &loop, &QEventLoop::quit);
    QTimer::singleShot(60000, &loop, [&] {
        child.kill();
        loop.quit();
    });
    if (child.state() != QProcess::NotRunning)
        loop.exec();
    s_childPid = 0;
    for (const QByteArray& line : child.readAllStandardOutput().split('\n')) {
        const QList<QByteArray> parts = line.split(' ');
        if (parts.size() == 2)
            figures.insert(parts[0], parts[1].toLongLong());
    }
    if (figures.isEmpty())
        std::fprintf(stderr, "bench_footprint: child %s gave no figures:\n%s\n", qPrintable(mode),
                     child.readAllStandardError().right(2000).constData());
    return figures;
}

long long median(QVector<long long> values)
{
    if (values.isEmpty())
        return -1;
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

QString mb(long long kb)
{
    return kb < 0 ? QStringLiteral("n/a") : QString::number(kb / 1024.0, 'f', 1);
}

} // namespace

int main(int argc, char** argv)
{
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], "--child") != 0)
            continue;
        const bool attributed = i + 2 < argc && std::strcmp(argv[i + 2], "--attribute") == 0;
        if (std::strcmp(argv[i + 1], "tavo") == 0)
            return runTavo(attributed);
        if (std::strcmp(argv[i + 1], "bare") == 0)
            return runBare(true, attributed);
        if (std::strcmp(argv[i + 1], "bare-noweb") == 0)
            return runBare(false, attributed);
        std::fprintf(stderr, "bench_footprint: unknown child %s\n", argv[i + 1]);
        return 2;
    }

    QCoreApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("bench_footprint"));
    app.setApplicationVersion(QStringLiteral("1.0"));
    QCommandLineParser cli;
    cli.setApplicationDescription(QStringLiteral(
        "Footprint and start-up of zedagui's home screen beside a bare Qt program. Run it from the run folder."));
    cli.addHelpOption();
    cli.addVersionOption();
    QCommandLineOption runsOption(QStringLiteral("runs"), QStringLiteral("Timed runs of each program (default 5)."),
                                  QStringLiteral("n"), QStringLiteral("5"));
    cli.addOption(runsOption);
    cli.process(app);
    bool ok = false;
    const int runs = cli.value(runsOption).toInt(&ok);
    if (!ok || runs < 1 || runs > 100) {
        std::fprintf(stderr, "bench_footprint: --runs needs a number from 1 to 100, not \"%s\"\n",
                     qPrintable(cli.value(runsOption)));
        return 2;
    }
    signal(SIGINT, onStopSignal);
    signal(SIGTERM, onStopSignal);

    const QString runDir = QDir::currentPath();
    if (!QFile::exists(runDir + QStringLiteral("/Skins/default/default.xml"))) {
        std::fprintf(stderr, "bench_footprint: start it in the run folder (run/ of the repository)\n");
        return 1;
    }
    RunFolder folder;
    if (!folder.make(runDir)) {
        std::fprintf(stderr, "bench_footprint: cannot make a run folder\n");
        return 1;
    }

    const QStringList modes{QStringLiteral("tavo"), QStringLiteral("bare"), QStringLiteral("bare-noweb")};
    QHash<QString, QHash<QByteArray, QVector<long long>>> timed;
    for (int r = 0; r < runs; ++r) {
        // Interleaved, so that a busy moment of the machine hits all three alike.
        for (const QString& mode : modes) {
            const FiguresT figures = runChild(mode, folder.dir.path(), false);
            for (auto it = figures.begin(); it != figures.end(); ++it)
                timed[mode][it.key()].append(it.value());
        }
    }
    QHash<QString, FiguresT> heap;
    for (const QString& mode : modes)
        heap[mode] = runChild(mode, folder.dir.path(), true);

    auto fig = [&](const QString& mode, const char* key) { return median(timed[mode].value(key)); };
    std::printf("bench_footprint: zedagui's home screen in-process against a bare Qt program with the same texts\n"
                "in QLabels and the same HTML through one QWebPage; offscreen, median of %d runs each\n", runs);
    std::printf("%-34s %12s %12s %12s %14s\n", "", "zedagui", "bare Qt", "bare, no web", "toolkit adds");
    const long long ttfT = fig(QStringLiteral("tavo"), "first_frame_ms");
    const long long ttfB = fig(QStringLiteral("bare"), "first_frame_ms");
    std::printf("%-34s %12lld %12lld %12lld %+14lld\n", "time to first frame (ms)", ttfT, ttfB,
                fig(QStringLiteral("bare-noweb"), "first_frame_ms"), ttfT - ttfB);
    for (const auto& row : {std::make_pair("peak resident (MB)", "peak_kb"), std::make_pair("steady resident (MB)", "steady_kb")}) {
        const long long t = fig(QStringLiteral("tavo"), row.second);
        const long long b = fig(QStringLiteral("bare"), row.second);
        std::printf("%-34s %12s %12s %12s %14s\n", row.first, qPrintable(mb(t)), qPrintable(mb(b)),
                    qPrintable(mb(fig(QStringLiteral("bare-noweb"), row.second))), qPrintable(mb(t - b)));
    }
#ifndef BENCH_NO_MALLOC_HOOKS
    const long long heapT = fig(QStringLiteral("tavo"), "heap_bytes") / 1024;
    const long long heapB = fig(QStringLiteral("bare"), "heap_bytes") / 1024;
    std::printf("%-34s %12s %12s %12s %14s\n", "heap in use (MB)", qPrintable(mb(heapT)), qPrintable(mb(heapB)),
                qPrintable(mb(fig(QStringLiteral("bare-noweb"), "heap_bytes") / 1024)), qPrintable(mb(heapT - heapB)));
    std::printf("heap in use by its user (kB, one attributed run each)\n");
    for (int u = 0; u < UserCount; ++u) {
        const QByteArray key = QByteArray("heap_") + kUserKeys[u];
        std::printf("  %-32s %12lld %12lld %12lld\n", kUserNames[u], heap[QStringLiteral("tavo")].value(key, -1024) / 1024,
                    heap[QStringLiteral("bare")].value(key, -1024) / 1024,
                    heap[QStringLiteral("bare-noweb")].value(key, -1024) / 1024);
    }
#else
    std::printf("%-34s %12s %12s %12s\n", "heap in use", "n/a", "n/a", "n/a");
#endif
    // Where the resident difference lies: the maps that differ by 256 kB or more.
    QVector<QPair<long long, QByteArray>> maps;
    QSet<QByteArray> keys;
    for (const QString& mode : {QStringLiteral("tavo"), QStringLiteral("bare")})
        for (const QByteArray& key : timed[mode].keys())
            if (key.startsWith("map:"))
                keys.insert(key);
    for (const QByteArray& key : keys) {
        const long long diff = std::max(0LL, fig(QStringLiteral("tavo"), key.constData()))
            - std::max(0LL, fig(QStringLiteral("bare"), key.constData()));
        if (std::abs(diff) >= 256)
            maps.append(qMakePair(diff, key));
    }
    std::sort(maps.begin(), maps.end(), [](const QPair<long long, QByteArray>& a, const QPair<long long, QByteArray>& b) {
        return a.first > b.first;
    });
    std::printf("resident by map, where the two differ by 256 kB or more (kB)\n");
    for (const auto& row : maps)
        std::printf("  %-32s %12lld %12lld %12s %+14lld\n", row.second.mid(4).left(32).constData(),
                    std::max(0LL, fig(QStringLiteral("tavo"), row.second.constData())),
                    std::max(0LL, fig(QStringLiteral("bare"), row.second.constData())), "", row.first);
    std::printf("targets: peak at most 4 MB above the bare program's; first frame within 30 ms of it\n");
    return 0;
}
