// A table view of a live 100,000-row table: tgui-core and tgui-dbs started from
// the folder of this program on a SQLite file made here, a GUI-side CTavoDb on a
// socket of its own. Ours is CTavoDbTableView (rows are placeholders until they
// come into view); beside it QTableView on the same CTavoDbTable model (it is a
// QAbstractTableModel), subscribed through a second link, and QTableView on a
// QSqlTableModel of the same file, in-process. Three shown columns, rows of
// 60 px, an 800x480 screen; everything draws into an image of the screen's size.
//
// Figures: subscription (or select) to the first painted frame, and to the
// last row with its frame; frames per second flinging to the end (QScroller for
// the QTableViews, over the same wall time as ours took); heap allocations per
// frame scrolling over rows already built; row widgets built against rows
// painted; heap bytes per row as placeholders against built rows; refreshes
// caused by a burst of 100 inserts sent through tgui-dbs.
//
//   bench_tableview [rows]   (default 100000)
#include <QAnimationDriver>
#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QScrollBar>
#include <QScroller>
#include <QSqlDatabase>
#include <QSqlTableModel>
#include <QTableView>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <sqlite3.h>
#include <vector>

#include "BenchLibrary.h"
#include "BenchSupport.h"
#include "data/CTavoDbTable.h"
#include "data/CTavoDbTableView.h"
#include "widgets/CTavoView.h"

namespace {
const int kScreenW = 800;
const int kScreenH = 480;
const int kRowH = 60;
const int kFlingSpeed = 2400;
const int kSteadySpeed = 32;
const int kSteadyDistance = 4800;

const char* const kStyle =
    "CTavoLayoutWidget { size: 800x480; location: 0:0; }"
    " CTavoDbTableView { size: 800x480; location: 0:0; }"
    " CTavoView { size: 800x480; location: 0:0; max-speed: 32; }"
    " CTavoScrollBar { size: 6x480; location: 792:0; bar-background: rgb(140, 160, 190); auto-hide-timeout: 2; }"
    " CTavoDbTableRowWidget { size: 800x60; background: rgba(255, 255, 255, 12);"
    " background-focused: rgba(80, 160, 255, 110); }"
    " CTavoLabelWidget#name { size: 460x28; location: 72:6; font: bold 18px DejaVu Sans; color: #ffd180;"
    " text-align: left vcenter; textwrap: nowrap; }"
    " CTavoLabelWidget#name:read { size: 460x28; location: 72:6; font: bold 18px DejaVu Sans; color: #ffffff;"
    " text-align: left vcenter; textwrap: nowrap; }"
    " CTavoLabelWidget#number { size: 200x24; location: 72:32; font: 15px DejaVu Sans; color: #a8b8cc;"
    " text-align: left vcenter; textwrap: nowrap; }"
    " CTavoLabelWidget#number:read { size: 200x24; location: 72:32; font: 15px DejaVu Sans; color: #a8b8cc;"
    " text-align: left vcenter; textwrap: nowrap; }"
    " CTavoLabelWidget#presence { size: 120x24; location: 600:18; font: 15px DejaVu Sans; color: #a8b8cc;"
    " text-align: left vcenter; textwrap: nowrap; }"
    " CTavoLabelWidget#presence:read { size: 120x24; location: 600:18; font: 15px DejaVu Sans; color: #a8b8cc;"
    " text-align: left vcenter; textwrap: nowrap; }";

bool makeDatabase(const QString& path, int rows)
{
    sqlite3* db = nullptr;
    if (sqlite3_open(QFile::encodeName(path).constData(), &db) != SQLITE_OK)
        return false;
    QByteArray sql = "CREATE TABLE contacts(id INTEGER PRIMARY KEY, name TEXT, number TEXT, presence TEXT,"
                     " company TEXT, email TEXT, note TEXT, extra TEXT, read INTEGER DEFAULT 1);BEGIN;";
    for (int i = 1; i <= rows; ++i)
        sql += "INSERT INTO contacts(name, number, presence, company) VALUES('Contact " + QByteArray::number(i)
               + "', '+41 44 555 " + QByteArray::number(10000 + i) + "', '" + (i % 3 ? "available" : "busy")
               + "', 'Company " + QByteArray::number(i % 97) + "');";
    sql += "COMMIT;";
    const bool ok = sqlite3_exec(db, sql.constData(), nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(db);
    return ok;
}

class FrameDriver : public QAnimationDriver
{
public:
    FrameDriver() { m_clock.start(); }
    qint64 elapsed() const override { return m_clock.elapsed(); }

private:
    QElapsedTimer m_clock;
};

struct Figures {
    double firstFrameMs = 0;
    double lastRowMs = 0;
    double flingFps = 0;
    int flingFrames = 0;
    double steadyFps = 0;
    double allocationsPerFrame = -1;
    long built = 0;
    long painted = 0;
    double placeholderBytes = 0;
    double builtBytes = 0;
    int burstRefreshes = -1;
};

// Ours: subscription to the first frame and to the last row, then the scrolls.
Figures runOurs(quint16 port, int rows)
{
    Figures f;
    BenchGui gui(port, "zedagui");
    QImage image(kScreenW, kScreenH, QImage::Format_RGB32);
    CTavoDbTableView view;
    // Rows kept built: more than the steady scroll below passes over.
    view.setRowPoolSize(128);
    view.setColumns({{2, "CTavoLabelWidget"}, {3, "CTavoLabelWidget"}, {4, "CTavoLabelWidget"}});
    view.setRowStyles(QString::fromLatin1(kStyle), QString());
    CTavoView* list = view.view();
    bool requested = false;
    QObject::connect(list, &CTavoView::requestInitialization, [&] { requested = true; });
    QPainter painter(&image);
    painter.setClipRect(image.rect());
    auto paint = [&] {
        painter.fillRect(image.rect(), QColor(20, 30, 40));
        list->paint(&painter, image.rect());
    };
    // A frame: the kinetic step, the paint, and the paint of the rows it asked for.
    std::vector<char> painted(size_t(rows) + 200, 0);
    auto frame = [&] {
        list->tick();
        requested = false;
        paint();
        if (requested)
            paint();
        const QRect seen = list->visibleRect();
        for (int i = qMax(0, seen.top() / kRowH); i <= seen.bottom() / kRowH && i < rows; ++i)
            painted[size_t(i)] = 1;
    };

    QElapsedTimer timer;
    timer.start();
    CTavoDbTable* table = gui.db.subscribeToTable("contacts");
    view.setModel(table);
    if (!benchWaitUntil([&] { return table->rowCount() >= kScreenH / kRowH + 1; }))
        return f;
    paint();
    paint();
    f.firstFrameMs = timer.nsecsElapsed() / 1e6;
    if (!benchWaitUntil([&] { return table->rowCount() == rows && !view.isRefreshPending(); }))
        return f;
    paint();
    paint();
    f.lastRowMs = timer.nsecsElapsed() / 1e6;

    // What the placeholders of the whole table hold: a reset builds them anew.
    {
        const long long before = g_liveBytes.load();
        view.setModel(nullptr);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        const long long freed = before - g_liveBytes.load();
        const long long base = g_liveBytes.load();
        view.setModel(table);
        f.placeholderBytes = double(g_liveBytes.load() - base) / rows;
        Q_UNUSED(freed);
    }
    const int initBefore = view.initCount();
    const long long bytesBeforeRows = g_liveBytes.load();
    paint();
    paint();

    // Steady: scroll over rows once to build them, then back over the same rows.
    list->setMaxSpeed(kSteadySpeed);
    list->setTargetOffset(QPoint(0, kSteadyDistance), true, 0.0f, true);
    while (list->isBeingScrolled())
        frame();
    list->setTargetOffset(QPoint(0, 0), true, 0.0f, true);
    frame();
    int frames = 0;
    long long allocations = g_allocations.load();
    timer.restart();
    while (list->isBeingScrolled()) {
        frame();
        ++frames;
    }
    f.steadyFps = frames * 1e9 / double(timer.nsecsElapsed());
    f.allocationsPerFrame = double(g_allocations.load() - allocations) / qMax(1, frames);
    // What the row widgets that now exist hold, the placeholders they replaced
    // still waiting for their deletion.
    f.builtBytes = double(g_liveBytes.load() - bytesBeforeRows) / qMax(1, view.builtRows());

    // The fling to the end.
    list->setMaxSpeed(kFlingSpeed);
    list->setTargetOffset(list->maxOffset(), true, 0.0f, true);
    frames = 0;
    timer.restart();
    while (list->isBeingScrolled()) {
        frame();
        ++frames;
    }
    f.flingFps = frames * 1e9 / double(timer.nsecsElapsed());
    f.flingFrames = frames;
    f.built = view.initCount() - initBefore;
    f.painted = long(std::count(painted.begin(), painted.end(), 1));

    // A burst of 100 inserts through the peer: refreshes that place the list anew.
    int refreshes = 0;
    QObject::connect(&view, &CTavoDbTableView::viewUpdated, [&](CTavoDbTableView::ReasonCode reason) {
        refreshes += (reason == CTavoDbTableView::ReasonGeneral || reason == CTavoDbTableView::ReasonRowsInserted)
                         ? 1
                         : 0;
    });
    for (int i = 0; i < 100; ++i)
        gui.db.query("burst", QStringLiteral("INSERT INTO contacts(name, number) VALUES('Burst %1', '%1')").arg(i));
    benchWaitUntil([&] { return table->rowCount() == rows + 100 && !view.isRefreshPending(); }, 30000);
    f.burstRefreshes = refreshes;
    gui.db.query("tidy", "DELETE FROM contacts WHERE name LIKE 'Burst %'");
    benchWaitUntil([&] { return table->rowCount() == rows; }, 30000);
    painter.end();
    return f;
}

void setUpTable(QTableView& table, const QList<int>& shown, int columns)
{
    table.resize(kScreenW, kScreenH);
    table.setFont(benchFont(15));
    table.horizontalHeader()->hide();
    table.verticalHeader()->hide();
    table.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table.verticalHeader()->setDefaultSectionSize(kRowH);
    table.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    table.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table.setShowGrid(false);
    for (int c = 0; c < columns; ++c)
        table.setColumnHidden(c, !shown.contains(c));
    table.setColumnWidth(shown.value(0), 460);
    table.setColumnWidth(shown.value(1), 200);
    table.setColumnWidth(shown.value(2), 120);
}

// QScroller's animation advanced frame by frame, each frame rendered.
void scrollTo(QTableView& table, FrameDriver& driver, QImage& image, int y, int ms, int* frameCount)
{
    QWidget* viewport = table.viewport();
    QScroller* scroller = QScroller::scroller(viewport);
    scroller->scrollTo(QPointF(0, y), ms);
    int frames = 0;
    while (scroller->state() != QScroller::Inactive && frames < 1000000) {
        driver.advance();
        QCoreApplication::processEvents();
        viewport->render(&image);
        ++frames;
    }
    *frameCount = frames;
}

void scrolls(QTableView& table, FrameDriver& driver, int flingMs, Figures& f)
{
    QImage image(kScreenW, kScreenH, QImage::Format_RGB32);
    int frames = 0;
    scrollTo(table, driver, image, kSteadyDistance, 600, &frames);
    const long long allocations = g_allocations.load();
    QElapsedTimer timer;
    timer.start();
    scrollTo(table, driver, image, 0, 600, &frames);
    f.steadyFps = frames * 1e9 / double(timer.nsecsElapsed());
    f.allocationsPerFrame = double(g_allocations.load() - allocations) / qMax(1, frames);
    timer.restart();
    scrollTo(table, driver, image, table.verticalScrollBar()->maximum(), flingMs, &frames);
    f.flingFps = frames * 1e9 / double(timer.nsecsElapsed());
    f.flingFrames = frames;
}

Figures runTableOnCached(quint16 port, int rows, FrameDriver& driver, int flingMs)
{
    Figures f;
    BenchGui gui(port, "browser");
    QImage image(kScreenW, kScreenH, QImage::Format_RGB32);
    QTableView table;
    QElapsedTimer timer;
    timer.start();
    CTavoDbTable* model = gui.db.subscribeToTable("contacts");
    table.setModel(model);
    if (!benchWaitUntil([&] { return model->rowCount() >= kScreenH / kRowH + 1; }))
        return f;
    setUpTable(table, {2, 3, 4}, model->columnCount());
    table.viewport()->render(&image);
    f.firstFrameMs = timer.nsecsElapsed() / 1e6;
    if (!benchWaitUntil([&] { return model->rowCount() == rows; }))
        return f;
    table.viewport()->render(&image);
    f.lastRowMs = timer.nsecsElapsed() / 1e6;
    scrolls(table, driver, flingMs, f);
    return f;
}

Figures runTableOnSql(const QString& path, int rows, FrameDriver& driver, int flingMs)
{
    Figures f;
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("bench"));
    db.setDatabaseName(path);
    db.open();
    {
        QImage image(kScreenW, kScreenH, QImage::Format_RGB32);
        QTableView table;
        QSqlTableModel model(nullptr, db);
        QElapsedTimer timer;
        timer.start();
        model.setTable(QStringLiteral("contacts"));
        model.select();
        table.setModel(&model);
        setUpTable(table, {1, 2, 3}, model.columnCount());
        table.viewport()->render(&image);
        f.firstFrameMs = timer.nsecsElapsed() / 1e6;
        while (model.canFetchMore())
            model.fetchMore();
        table.viewport()->render(&image);
        f.lastRowMs = timer.nsecsElapsed() / 1e6;
        if (model.rowCount() != rows)
            std::fprintf(stderr, "bench_tableview: QSqlTableModel has %d rows\n", model.rowCount());
        scrolls(table, driver, flingMs, f);
        table.setModel(nullptr);
    }
    db.close();
    return f;
}

void line(const char* what, double a, double b, double c, const char* format = "%12.1f")
{
    std::printf("%-44s", what);
    for (double v : {a, b, c}) {
        if (v < 0)
            std::printf("%12s", "-");
        else
            std::printf(format, v);
    }
    std::printf("\n");
}
}  // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    qInstallMessageHandler(benchQuietDebug);
    QTimer heartbeat;
    heartbeat.start(50);
    const int rows = argc > 1 ? std::max(1000, std::atoi(argv[1])) : 100000;
    QTemporaryDir dir;
    const QString path = dir.filePath("bench.db");
    if (!makeDatabase(path, rows)) {
        std::fprintf(stderr, "bench_tableview: cannot make %s\n", qPrintable(path));
        return 1;
    }
    BenchPeers peers;
    if (!peers.start("bench_tableview", path, {"--poll-interval", "2", "--batch-size", "500"}))
        return 1;
    const quint16 port = peers.port;
    FrameDriver driver;
    driver.install();

    std::printf("bench_tableview: %d rows of 10 columns through tgui-dbs (--batch-size 500), 3 shown, rows of %d px"
                " on %dx%d\n",
                rows, kRowH, kScreenW, kScreenH);
    {
        // The peer's first reading of the file is no side's cost.
        BenchGui warm(port, "browser");
        CTavoDbTable* table = warm.db.subscribeToTable("contacts");
        benchWaitUntil([&] { return table && table->rowCount() == rows; });
    }
    const Figures ours = runOurs(port, rows);
    const int flingMs = qMax(1000, int(ours.flingFrames * 1000.0 / qMax(1.0, ours.flingFps)));
    const Figures cached = runTableOnCached(port, rows, driver, flingMs);
    const Figures sql = runTableOnSql(path, rows, driver, flingMs);
    driver.uninstall();

    std::printf("\n%-44s%12s%12s%12s\n", "", "DbTableView", "QTableView", "QTableView");
    std::printf("%-44s%12s%12s%12s\n", "", "", "CTavoDbTable", "QSqlTable");
    line("subscription/select to first frame, ms", ours.firstFrameMs, cached.firstFrameMs, sql.firstFrameMs);
    line("  to the last row painted, ms", ours.lastRowMs, cached.lastRowMs, sql.lastRowMs);
    line("frames per second, fling to the end", ours.flingFps, cached.flingFps, sql.flingFps, "%12.0f");
    line("  frames of that fling", ours.flingFrames, cached.flingFrames, sql.flingFrames, "%12.0f");
    line("frames per second, over built rows", ours.steadyFps, cached.steadyFps, sql.steadyFps, "%12.0f");
#ifdef BENCH_NO_MALLOC_HOOKS
    std::printf("%-44s%12s%12s%12s\n", "heap allocations per frame, built rows", "n/a", "n/a", "n/a");
#else
    line("heap allocations per frame, built rows", ours.allocationsPerFrame, cached.allocationsPerFrame,
         sql.allocationsPerFrame, "%12.2f");
    line("heap bytes per row, placeholders", ours.placeholderBytes, -1, -1, "%12.0f");
    line("heap bytes per row, built row widgets", ours.builtBytes, -1, -1, "%12.0f");
    std::printf("%-44s%12.1f MB if every row were built, %.1f MB as placeholders\n", "",
                ours.builtBytes * rows / 1e6, ours.placeholderBytes * rows / 1e6);
#endif
    std::printf("%-44s%12ld\n", "rows built (made or reused) by the fling", ours.built);
    std::printf("%-44s%12ld   (%s)\n", "rows painted", ours.painted, ours.built == ours.painted ? "equal" : "DIFFERENT");
    std::printf("%-44s%12d   (expected 1)\n", "refreshes for a burst of 100 inserts", ours.burstRefreshes);
    std::printf("\ntarget: first frame and fling frame rate at least as good as QTableView's, 0 allocations per"
                " frame over built rows\n");
    return 0;
}
