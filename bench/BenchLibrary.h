#pragma once
// Shared by the benchmarks that run the library's own parts (BenchSupport.h
// stays free of the library for footprint_bare): the sample skin's items, and
// the live-table peers, tgui-core and tgui-dbs, with a GUI-side CTavoDb.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>

#include <cstdio>

#include "core/CTavoCoreCommunicator.h"
#include "core/TavoGlobals.h"
#include "data/CTavoDb.h"
#include "style/CTavoStyleSheetFile.h"

// The sample skin's `item` (style and attributes) when run from the run
// folder, else `fallback` as the style, said on standard output.
inline QString benchSkinStyle(const QString& item, const char* fallback, QString* attributes)
{
    CTavoStyleSheetFile skin;
    if (skin.parse(QStringLiteral("Skins/default/default.xml")) == 0 && skin.get(item)) {
        *attributes = skin.getAttributes(item);
        return skin.getStyle(item);
    }
    std::printf("(sample skin not found: run from the run folder; using a built-in style)\n");
    attributes->clear();
    return QString::fromLatin1(fallback);
}

// Whether `done()` holds within `ms`, events served meanwhile.
template <typename Done>
bool benchWaitUntil(Done done, int ms = 120000)
{
    QElapsedTimer guard;
    guard.start();
    while (!done() && guard.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return done();
}

// The link's own log lines (one per batch) would only slow the figures down.
inline void benchQuietDebug(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type != QtDebugMsg)
        std::fprintf(stderr, "%s\n", qPrintable(text));
}

// A program beside this one, its standard output collected.
struct BenchChild {
    QProcess process;
    QString out;
    bool waitFor(const QString& text, int ms)
    {
        QElapsedTimer t;
        t.start();
        while (!out.contains(text) && t.elapsed() < ms) {
            process.waitForReadyRead(50);
            out += QString::fromUtf8(process.readAllStandardOutput());
        }
        return out.contains(text);
    }
    ~BenchChild()
    {
        process.terminate();
        if (!process.waitForFinished(5000))
            process.kill();
        process.waitForFinished(2000);
    }
};

// tgui-core on a free loopback port and tgui-dbs on the SQLite file `path`
// with `dbsOptions`, both from this program's folder; false (said on standard
// error under `bench`'s name) when either does not come up.
struct BenchPeers {
    BenchChild core;
    BenchChild dbs;
    quint16 port = 0;
    bool start(const char* bench, const QString& path, const QStringList& dbsOptions)
    {
        const QString bin = QCoreApplication::applicationDirPath();
        core.process.start(bin + "/tgui-core", {"--port", "0", "--listen", "127.0.0.1"});
        if (!core.waitFor("LISTENING ", 10000)) {
            std::fprintf(stderr, "%s: tgui-core did not start from %s\n", bench, qPrintable(bin));
            return false;
        }
        port = quint16(core.out.mid(core.out.indexOf("LISTENING ") + 10).section('\n', 0, 0).toUInt());
        dbs.process.setProcessChannelMode(QProcess::ForwardedOutputChannel);
        dbs.process.setStandardErrorFile(QProcess::nullDevice());
        dbs.process.start(bin + "/tgui-dbs", QStringList{"--port", QString::number(port)} + dbsOptions + QStringList{path});
        if (!core.waitFor("REGISTER dbs", 10000)) {
            std::fprintf(stderr, "%s: tgui-dbs did not register\n", bench);
            return false;
        }
        return true;
    }
};

// The GUI side: a link to the core named like a GUI process, and its CTavoDb,
// connected (or 10 s gone) when made.
struct BenchGui {
    CTavoCoreCommunicator* com;
    CTavoDb db;
    BenchGui(quint16 port, const char* name) : com(new CTavoCoreCommunicator("127.0.0.1", port, name, false))
    {
        QObject::connect(&db, &CTavoDb::tjdbRequest,
                         [this](const QString& text) { com->send(text.toUtf8().constData(), GuiAppsDbs, GuiAppsMsgDb); });
        QObject::connect(com, &CTavoCoreCommunicator::messageReceived, &db,
                         [this](QByteArray data, GuiAppsT, GuiAppsMsgTypeT type) {
                             if (type == GuiAppsMsgDb) {
                                 db.tjdbResponse(QString::fromUtf8(data));
                                 return;
                             }
                             static const QRegularExpression mask("<AppStatus mask=\"(\\d+)\"");
                             const QRegularExpressionMatch m = mask.match(QString::fromUtf8(data));
                             if (m.hasMatch())
                                 db.setConnected(m.captured(1).toInt() & GuiAppsDbs);
                         },
                         Qt::QueuedConnection);
        benchWaitUntil([this] { return db.isConnected(); }, 10000);
    }
    ~BenchGui()
    {
        com->shutDown();
        delete com;
    }
};
