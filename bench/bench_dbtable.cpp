// Live database tables through real processes: tgui-core and tgui-dbs started
// from the folder of this program, a GUI-side CTavoDb on a socket of its own.
// Figures: a 10,000-row table subscribed from scratch (time to the last row),
// the same again as a full resynchronisation, the latency from an INSERT by
// another process (a child of this program on its own SQLite connection) to
// the rowsInserted that completes the GUI's copy, and from an INSERT sent
// through tgui-dbs to rowsInserted. Beside them: QSqlTableModel::select() with
// fetchMore to the end on the same file, in-process.
//
//   bench_dbtable [rows [batch]]  (default 10000 rows, batches of 100)
//   bench_dbtable --writer FILE   the other process: one INSERT per line read
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlTableModel>
#include <QTemporaryDir>
#include <QtTest>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sqlite3.h>
#include <vector>

#include "BenchLibrary.h"

namespace {
qint64 nowNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

double median(std::vector<double> v)
{
    if (v.empty())
        return 0;
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

double percentile(std::vector<double> v, double p)
{
    if (v.empty())
        return 0;
    std::sort(v.begin(), v.end());
    return v[std::min(v.size() - 1, std::size_t(p * double(v.size())))];
}

// The other process: for each line "TABLE" on standard input, one INSERT into
// TABLE committed on its own connection, then the monotonic time in ns.
int writer(const char* path)
{
    sqlite3* db = nullptr;
    if (sqlite3_open(path, &db) != SQLITE_OK)
        return 1;
    sqlite3_busy_timeout(db, 5000);
    char line[256];
    int n = 0;
    while (std::fgets(line, sizeof line, stdin)) {
        line[std::strcspn(line, "\n")] = 0;
        const QByteArray sql = QByteArray("INSERT INTO ") + QByteArray(line) + "(number, at) VALUES('+41 44 555 "
                               + QByteArray::number(++n) + "', datetime('now'))";
        if (sqlite3_exec(db, sql.constData(), nullptr, nullptr, nullptr) != SQLITE_OK)
            return 1;
        std::printf("%lld\n", static_cast<long long>(nowNs()));
        std::fflush(stdout);
    }
    sqlite3_close(db);
    return 0;
}

bool makeDatabase(const QString& path, int rows)
{
    sqlite3* db = nullptr;
    if (sqlite3_open(QFile::encodeName(path).constData(), &db) != SQLITE_OK)
        return false;
    QByteArray sql = "CREATE TABLE contacts(id INTEGER PRIMARY KEY, name TEXT, number TEXT, company TEXT);"
                     "CREATE TABLE calls(number TEXT, at TEXT);"
                     "CREATE TABLE bigcalls(number TEXT, at TEXT);BEGIN;";
    for (int i = 1; i <= rows; ++i)
        sql += "INSERT INTO contacts(name, number, company) VALUES('Contact " + QByteArray::number(i)
               + "', '+41 44 555 " + QByteArray::number(10000 + i) + "', 'Company " + QByteArray::number(i % 97)
               + "');";
    for (int i = 1; i <= 100; ++i)
        sql += "INSERT INTO calls VALUES('+1 555 " + QByteArray::number(i) + "', '2026-05-04 10:00');";
    sql += "INSERT INTO bigcalls SELECT number, company FROM contacts;COMMIT;";
    const bool ok = sqlite3_exec(db, sql.constData(), nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(db);
    return ok;
}

// Time from start() until the table, emptied by the synchronisation that
// start() asks for, holds `rows` rows again; in ms, -1 on a time-out.
template <typename Start>
double timeToRows(CTavoDbTable** table, int rows, Start start)
{
    bool emptied = !*table;
    QMetaObject::Connection c;
    if (*table)
        c = QObject::connect(*table, &QAbstractItemModel::rowsRemoved, [&] { emptied = true; });
    const qint64 t0 = nowNs();
    start();
    QElapsedTimer guard;
    guard.start();
    qint64 done = 0;
    while (!done && guard.elapsed() < 60000) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        if (emptied && *table && (*table)->rowCount() == rows)
            done = nowNs();
    }
    QObject::disconnect(c);
    return done ? (done - t0) / 1e6 : -1;
}

// Latency from an INSERT by the writer to the rowsInserted that completes the copy.
std::vector<double> otherProcessLatency(QProcess& writerProcess, CTavoDbTable* table, const char* name, int count)
{
    std::vector<double> ms;
    qint64 completed = 0;
    int target = table->rowCount();
    QObject::connect(table, &QAbstractItemModel::rowsInserted, [&] {
        if (table->rowCount() == target && !completed)
            completed = nowNs();
    });
    for (int i = 0; i < count; ++i) {
        ++target;
        completed = 0;
        writerProcess.write(QByteArray(name) + "\n");
        QElapsedTimer guard;
        guard.start();
        QByteArray line;
        while ((!completed || !line.endsWith('\n')) && guard.elapsed() < 10000) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            line += writerProcess.readAllStandardOutput();
        }
        if (!completed || !line.endsWith('\n'))
            break;
        ms.push_back((completed - line.trimmed().toLongLong()) / 1e6);
    }
    QObject::disconnect(table, &QAbstractItemModel::rowsInserted, nullptr, nullptr);
    return ms;
}
}  // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::strcmp(argv[1], "--writer") == 0)
        return writer(argv[2]);
    QCoreApplication app(argc, argv);
    qInstallMessageHandler(benchQuietDebug);
    // Waits block in the event loop; this wakes them to look at their clocks.
    QTimer heartbeat;
    heartbeat.start(50);
    const int rows = argc > 1 ? std::max(100, std::atoi(argv[1])) : 10000;
    const int batch = argc > 2 ? std::max(1, std::atoi(argv[2])) : 100;
    QTemporaryDir dir;
    const QString path = dir.filePath("bench.db");
    if (!makeDatabase(path, rows)) {
        std::fprintf(stderr, "bench_dbtable: cannot make %s\n", qPrintable(path));
        return 1;
    }

    BenchPeers peers;
    if (!peers.start("bench_dbtable", path, {"--poll-interval", "2", "--batch-size", QString::number(batch)}))
        return 1;
    const quint16 port = peers.port;
    std::printf("bench_dbtable: %d rows of 4 columns, tgui-dbs --batch-size %d --poll-interval 2\n", rows, batch);

    std::vector<double> subscribe, resync, sqlModel, otherBig, otherSmall, own;
    {
        BenchGui gui(port, "zedagui");
        CTavoDbTable* contacts = nullptr;
        subscribe.push_back(timeToRows(&contacts, rows, [&] { contacts = gui.db.subscribeToTable("contacts"); }));
        for (int i = 0; i < 9; ++i)
            resync.push_back(timeToRows(&contacts, rows, [&] { gui.db.requestUpdate("contacts"); }));

        QProcess writerProcess;
        writerProcess.start(QCoreApplication::applicationFilePath(), {"--writer", path});
        writerProcess.waitForStarted();
        CTavoDbTable* big = nullptr;
        timeToRows(&big, rows, [&] { big = gui.db.subscribeToTable("bigcalls"); });
        otherBig = otherProcessLatency(writerProcess, big, "bigcalls", 100);
        writerProcess.closeWriteChannel();
        writerProcess.waitForFinished(5000);
    }
    {
        // A GUI of its own: the first one's subscriptions left with it.
        BenchGui gui(port, "browser");
        CTavoDbTable* calls = nullptr;
        timeToRows(&calls, 100, [&] { calls = gui.db.subscribeToTable("calls"); });
        QProcess writerProcess;
        writerProcess.start(QCoreApplication::applicationFilePath(), {"--writer", path});
        writerProcess.waitForStarted();
        otherSmall = otherProcessLatency(writerProcess, calls, "calls", 1000);
        writerProcess.closeWriteChannel();
        writerProcess.waitForFinished(5000);

        // Through tgui-dbs itself: an insert notification, no resynchronisation.
        qint64 seen = 0;
        QObject::connect(calls, &QAbstractItemModel::rowsInserted, [&] { seen = nowNs(); });
        for (int i = 0; i < 1000; ++i) {
            seen = 0;
            const qint64 t0 = nowNs();
            gui.db.query("own", "INSERT INTO calls VALUES('+41 44 555 0000', datetime('now'))");
            QElapsedTimer wait;
            wait.start();
            while (!seen && wait.elapsed() < 10000)
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            if (!seen)
                break;
            own.push_back((seen - t0) / 1e6);
        }
    }
    std::vector<double> commit;
    {
        // What the commit alone costs on this disk: one INSERT on a connection of this process.
        sqlite3* db = nullptr;
        sqlite3_open(QFile::encodeName(path).constData(), &db);
        for (int i = 0; i < 100; ++i) {
            const qint64 t0 = nowNs();
            sqlite3_exec(db, "INSERT INTO calls VALUES('+41 44 555 0001', datetime('now'))", nullptr, nullptr, nullptr);
            commit.push_back((nowNs() - t0) / 1e6);
        }
        sqlite3_close(db);
    }
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("bench"));
        db.setDatabaseName(path);
        db.open();
        for (int i = 0; i < 10; ++i) {
            QSqlTableModel model(nullptr, db);
            model.setTable(QStringLiteral("contacts"));
            const qint64 t0 = nowNs();
            model.select();
            while (model.canFetchMore())
                model.fetchMore();
            const double elapsed = (nowNs() - t0) / 1e6;
            if (model.rowCount() != rows)
                std::fprintf(stderr, "bench_dbtable: QSqlTableModel has %d rows\n", model.rowCount());
            sqlModel.push_back(elapsed);
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("bench"));

    std::printf("  subscribe %d rows from scratch, to the last row: %8.1f ms\n", rows, subscribe.front());
    std::printf("  full resynchronisation of the same table (median of %zu): %8.1f ms\n", resync.size(),
                median(resync));
    std::printf("  QSqlTableModel::select() + fetchMore to the end, in-process (median of %zu): %8.1f ms\n",
                sqlModel.size(), median(sqlModel));
    std::printf("  INSERT by another process -> rowsInserted, 100-row table (median of %zu): %6.2f ms (p90 %.2f)\n",
                otherSmall.size(), median(otherSmall), percentile(otherSmall, 0.9));
    std::printf("  INSERT by another process -> rowsInserted, %d-row table (median of %zu): %6.2f ms (p90 %.2f)\n",
                rows, otherBig.size(), median(otherBig), percentile(otherBig, 0.9));
    std::printf("  INSERT through tgui-dbs -> rowsInserted (median of %zu): %6.2f ms (p90 %.2f)\n", own.size(),
                median(own), percentile(own, 0.9));
    std::printf("  for scale: one INSERT committed in-process on the same file (median of %zu): %6.2f ms\n",
                commit.size(), median(commit));
    bRebootInitiated = false;
    return 0;
}
