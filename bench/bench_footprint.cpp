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
// screen has stood for a second; footprint_bare (footprint_bare.cpp, linked with
// Qt alone) is the bare program, with and without ("--no-web") its web page. Timing and resident memory come
// from runs without attribution; the heap by user from one more run of each in
// which every block is charged, when it is handed out, to the innermost frame
// of its call stack that belongs to a part of the toolkit (or to WebKit, the
// font libraries or the network), and to Qt itself when the stack reaches the
// event loop or main first.
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QSet>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <signal.h>
#include <unistd.h>

#include "BenchSupport.h"
#include "FootprintSupport.h"
#include "CZedaGui.h"
#include "core/CTavoCoreCommunicator.h"
#include "core/TavoGlobals.h"
#include "layout/CTavoLayoutWidget.h"

namespace {

// The heap's users, as FootprintSupport.cpp names them in its report.
[[maybe_unused]] const char* const kUserNames[] = {"Qt itself", "skin", "images and icons", "fonts", "widgets", "web page", "core link"};
[[maybe_unused]] const char* const kUserKeys[] = {"qt", "skin", "images", "fonts", "widgets", "web", "core"};
[[maybe_unused]] const int kUsers = 7;

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
        footprintStartAttribution();
    auto* gui = new CZedaGui;
    if (gui->size() != QSize(800, 480) && gui->styledRect().isEmpty())
        gui->resize(800, 480);
    qint64 firstFrame = -1;
    QObject::connect(gui, &CZedaGui::firstFramePainted, gui, [&] {
        firstFrame = footprintMsSinceProcessStart();
        // The core's configuration ends the boot; the home screen then stands a second.
        QTimer::singleShot(100, gui, [gui] {
            QByteArray config(kConfig);
            gui->onNewDocument(config, GuiAppsTavoapp, GuiAppsMsgTxml);
        });
        QTimer::singleShot(1100, gui, [&] {
            if (!gui->isBooted() || !gui->currentScreen() || !gui->currentScreen()->isVisible())
                std::fprintf(stderr, "bench_footprint: the home screen did not show\n");
            footprintReport(firstFrame);
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
    // The bare program is a program of its own, linked with Qt alone.
    QStringList args;
    QString program = QCoreApplication::applicationDirPath() + QStringLiteral("/footprint_bare");
    if (mode == QLatin1String("tavo")) {
        program = QCoreApplication::applicationFilePath();
        args << QStringLiteral("--child") << mode;
    } else if (mode == QLatin1String("bare-noweb")) {
        args << QStringLiteral("--no-web");
    }
    if (attributed)
        args << QStringLiteral("--attribute");
    child.start(program, args);
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
    for (const auto& row : {std::make_pair("peak resident (MB)", "peak_kb"), std::make_pair("steady resident (MB)", "steady_kb"),
                            std::make_pair("  of it private, written (MB)", "private_dirty_kb")}) {
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
    for (int u = 0; u < kUsers; ++u) {
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
