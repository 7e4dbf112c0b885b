// tgui-dbs: the database peer "dbs". It registers with the core like any
// peer, runs the SQL that GUI processes send it on SQLite files, answers in
// batches and keeps subscribers' copies of tables up to date. See README.md
// ("The database peer: tgui-dbs") and docs/tjdb.md for the request format.
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QHostAddress>
#include <csignal>
#include <cstdio>
#include <memory>
#include <sys/prctl.h>
#include <unistd.h>

#include "DbsDatabase.h"
#include "DbsServer.h"
#include "ProgramCommandLine.h"
#include "StopSignals.h"
#include "core/CTavoCoreCommunicator.h"
#include "log/CTavoGuiLog.h"
#include "log/GuiLog.h"

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("tgui-dbs"));

    QCommandLineParser cli;
    cli.addPositionalArgument(QStringLiteral("database"), QStringLiteral("[NAME=]FILE of a database to serve."),
                              QStringLiteral("[NAME=]FILE..."));
    QCommandLineOption server("server", "Numeric address of the core (default 127.0.0.1).", "address", "127.0.0.1");
    QCommandLineOption port("port", "Port of the core (default 10010).", "port", "10010");
    QCommandLineOption batch("batch-size", "Rows per answer frame (default 100).", "rows", "100");
    QCommandLineOption poll("poll-interval",
                            "Look for writes of other processes every <ms> (default 250, 0 never).", "ms", "250");
    QCommandLineOption timeout("query-timeout", "Interrupt a request after <ms> (default 10000, 0 never).", "ms",
                               "10000");
    QCommandLineOption create("create", "Create a database file that does not exist.");
    QCommandLineOption init("init", "Run the SQL of <file> on a database without tables (implies --create).",
                            "file");
    QCommandLineOption logServer("log-server", "Log to the log server as \"dbs\" rather than to standard error.");
    QCommandLineOption withParent("exit-with-parent", "Stop when the process that started this one ends.");
    cli.addOptions({server, port, batch, poll, timeout, create, init, logServer, withParent});
    cmdline::parse(cli, QStringLiteral("The database peer \"dbs\": serves SQLite files to GUI processes "
                                       "through the core.\nEach database is FILE (named \"user\") or NAME=FILE."));

    int portNumber = 10010, batchRows = 100, pollMs = 250, timeoutMs = 10000;
    QHostAddress serverAddress(QHostAddress::LocalHost);
    if (!cmdline::number(cli, port, 1, 65535, &portNumber) || !cmdline::number(cli, batch, 1, 100000, &batchRows)
        || !cmdline::number(cli, poll, 0, 3600000, &pollMs) || !cmdline::number(cli, timeout, 0, 3600000, &timeoutMs)
        || !cmdline::address(cli, server, &serverAddress))
        return cmdline::UsageError;
    const QStringList databases = cli.positionalArguments();
    if (databases.isEmpty())
        return cmdline::usageError(QStringLiteral("name a database file"));
    if (cli.isSet(withParent)) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() == 1)
            return 0;  // the parent is gone already
    }

    // SIGTERM and SIGINT stop the event loop; installed before the databases
    // open, so that a stop while they do still ends with exit code 0.
    if (!stopsignals::install([] {
            guiLog(2, "tgui-dbs: stopping");
            QCoreApplication::quit();
        }))
        return 1;

    std::unique_ptr<CTavoGuiLog> log;
    if (cli.isSet(logServer)) {
        log.reset(new CTavoGuiLog("dbs", 0, true));
        hostGuiLog = log.get();
    }

    QList<QByteArray> names;
    for (const QString& argument : databases) {
        const int eq = argument.indexOf(QLatin1Char('='));
        const QByteArray name = eq > 0 ? argument.left(eq).toUtf8() : QByteArray("user");
        if (names.contains(name))
            return cmdline::usageError(QStringLiteral("the database name '%1' is given twice")
                                           .arg(QString::fromUtf8(name)));
        names.append(name);
    }

    DbsServer dbs(batchRows);
    const bool mayCreate = cli.isSet(create) || cli.isSet(init);
    for (const QString& argument : databases) {
        const int eq = argument.indexOf(QLatin1Char('='));
        const QByteArray name = eq > 0 ? argument.left(eq).toUtf8() : QByteArray("user");
        const QString path = eq > 0 ? argument.mid(eq + 1) : argument;
        auto db = std::make_unique<DbsDatabase>(name, path);
        QString error;
        if (!db->open(mayCreate, &error)) {
            std::fprintf(stderr, "tgui-dbs: cannot open database %s (%s): %s\n", name.constData(),
                         qPrintable(path), qPrintable(error));
            return 1;
        }
        bool ran = false;
        if (cli.isSet(init) && !db->initIfEmpty(cli.value(init), &ran, &error)) {
            std::fprintf(stderr, "tgui-dbs: cannot run %s on %s: %s\n", qPrintable(cli.value(init)),
                         qPrintable(path), qPrintable(error));
            return 1;
        }
        db->setTimeLimit(timeoutMs);
        guiLog(2, "tgui-dbs: serving %s from %s%s", name.constData(), qPrintable(QFileInfo(path).absoluteFilePath()),
               ran ? ", made from the init script" : "");
        dbs.addDatabase(std::move(db));
    }

    auto* com = new CTavoCoreCommunicator(serverAddress.toString(), portNumber, QStringLiteral("dbs"), false);
    dbs.setSender([com](int destination, const QByteArray& payload) {
        com->send(payload.constData(), GuiAppsT(destination), GuiAppsMsgDb);
    });
    // Answers and notifications go out as several small frames in a row:
    // without TCP_NODELAY each one after the first waits for the core's
    // delayed acknowledgement. Set in the socket's own thread, once connected.
    QObject::connect(com, &CTavoCoreCommunicator::connectedAndIdentified, com,
                     [com] { com->setSocketOption(QAbstractSocket::LowDelayOption, 1); }, Qt::DirectConnection);
    QObject::connect(com, &CTavoCoreCommunicator::messageReceived, &dbs,
                     [&dbs](QByteArray data, GuiAppsT source, GuiAppsMsgTypeT type) {
                         dbs.handleFrame(data, source, type);
                     },
                     Qt::QueuedConnection);
    dbs.setPollInterval(pollMs);

    const int code = app.exec();
    com->shutDown();
    delete com;
    hostGuiLog = nullptr;
    return code;
}
