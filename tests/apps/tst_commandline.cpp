// Every program's command line as a user meets it, through real processes:
// --help and --version answer on standard output with exit code 0, and an
// unknown option, a bad number or a bad address is one clear line on standard
// error and exit code 2, before anything is opened, bound or created. And
// every program that runs until it is told to stop ends on SIGTERM or SIGINT
// with exit code 0, by its own stop order rather than by the signal.
#include <QDir>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QtTest>
#include <csignal>

namespace {
const QString kBinDir = qEnvironmentVariable("TGUI_BIN_DIR", TGUI_BIN_DIR);
const QString kRunDir = qEnvironmentVariable("TGUI_RUN_DIR", TGUI_SOURCE_DIR "/run");
}  // namespace

class TestCommandLine : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
    }

    void answers_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("stdoutHas");  // empty: standard output stays empty
        QTest::addColumn<QString>("stderrHas");

        const QString version = QStringLiteral(" " TGUI_VERSION_STRING "\n");
        const QString wantsNumber = QStringLiteral("wants a whole number from ");
        for (const char* program : {"tgui-core", "tgui-dbs", "tgui-logd", "tgui-logctl", "tgui-soapd", "tgui-child", "zedagui"}) {
            const QString name = QString::fromLatin1(program);
            QTest::addRow("%s --help", program) << name << QStringList{"--help"} << 0
                                                << "--version" << QString();
            QTest::addRow("%s --version", program) << name << QStringList{"--version"} << 0
                                                   << name + version << QString();
            QTest::addRow("%s unknown option", program)
                << name << QStringList{"--no-such-option"} << 2 << QString()
                << name + ": Unknown option 'no-such-option'.";
        }

        QTest::newRow("core port not a number") << "tgui-core" << QStringList{"--port", "abc"} << 2
                                                << QString() << "--port " + wantsNumber + "0 to 65535, not 'abc'";
        QTest::newRow("core port too large") << "tgui-core" << QStringList{"--port", "70000"} << 2
                                            << QString() << "not '70000'";
        QTest::newRow("core port negative") << "tgui-core" << QStringList{"--port=-1"} << 2
                                           << QString() << "not '-1'";
        QTest::newRow("core port missing value") << "tgui-core" << QStringList{"--port"} << 2
                                                << QString() << "Missing value after '--port'.";
        QTest::newRow("core listen bogus") << "tgui-core" << QStringList{"--listen", "bogus"} << 2
                                          << QString()
                                          << "--listen wants a numeric IP address such as 127.0.0.1 or ::1, not 'bogus'";
        QTest::newRow("core missing scenario")
            << "tgui-core" << QStringList{"--port", "0", "--scenario", m_dir.filePath("none.txt")} << 2
            << QString() << "cannot read scenario";

        // --create: a usage error must come before the file is made.
        QTest::newRow("dbs port not a number") << "tgui-dbs" << QStringList{"--create", "--port", "abc", "new.db"}
                                              << 2 << QString() << "--port " + wantsNumber + "1 to 65535, not 'abc'";
        QTest::newRow("dbs port zero") << "tgui-dbs" << QStringList{"--create", "--port", "0", "new.db"} << 2
                                      << QString() << "not '0'";
        QTest::newRow("dbs batch size not a number")
            << "tgui-dbs" << QStringList{"--create", "--batch-size", "ten", "new.db"} << 2 << QString()
            << "--batch-size " + wantsNumber + "1 to 100000, not 'ten'";
        QTest::newRow("dbs batch size zero") << "tgui-dbs" << QStringList{"--create", "--batch-size", "0", "new.db"}
                                            << 2 << QString() << "not '0'";
        QTest::newRow("dbs poll negative") << "tgui-dbs" << QStringList{"--create", "--poll-interval", "-1", "new.db"}
                                          << 2 << QString() << "--poll-interval " + wantsNumber + "0 to 3600000";
        QTest::newRow("dbs timeout too large")
            << "tgui-dbs" << QStringList{"--create", "--query-timeout", "3600001", "new.db"} << 2 << QString()
            << "--query-timeout " + wantsNumber + "0 to 3600000, not '3600001'";
        QTest::newRow("dbs server bogus") << "tgui-dbs" << QStringList{"--create", "--server", "core", "new.db"}
                                         << 2 << QString() << "--server wants a numeric IP address";
        QTest::newRow("dbs no database") << "tgui-dbs" << QStringList{"--create"} << 2 << QString()
                                        << "name a database file";
        QTest::newRow("dbs same name twice") << "tgui-dbs" << QStringList{"--create", "a=x.db", "a=y.db"} << 2
                                            << QString() << "the database name 'a' is given twice";

        QTest::newRow("logd count not a number") << "tgui-logd" << QStringList{"-n", "ten"} << 2
                                                << QString() << "--count " + wantsNumber + "1 to";
        QTest::newRow("logd count zero") << "tgui-logd" << QStringList{"--count", "0"} << 2
                                        << QString() << "not '0'";
        QTest::newRow("logd queue with slash") << "tgui-logd" << QStringList{"-q", "a/b"} << 2
                                              << QString() << "--queue wants a name";
        QTest::newRow("logd queue empty") << "tgui-logd" << QStringList{"-q", ""} << 2
                                         << QString() << "--queue wants a name";

        QTest::newRow("logctl no command") << "tgui-logctl" << QStringList{} << 2 << QString()
                                          << "a command is missing";
        QTest::newRow("logctl unknown command") << "tgui-logctl" << QStringList{"drop"} << 2
                                               << QString() << "unknown command 'drop'";
        QTest::newRow("logctl key not a number") << "tgui-logctl" << QStringList{"-k", "xyz", "list"} << 2
                                                << QString() << "--key wants a number from 1 to 0xFFFFFFFF";
        QTest::newRow("logctl key too large") << "tgui-logctl" << QStringList{"-k", "0x100000000", "list"}
                                             << 2 << QString() << "not '0x100000000'";
        QTest::newRow("logctl level out of range") << "tgui-logctl" << QStringList{"level", "tgui", "0", "9"}
                                                  << 2 << QString() << "LEVEL " + wantsNumber + "0 to 7, not '9'";
        QTest::newRow("logctl negative level") << "tgui-logctl" << QStringList{"level", "tgui", "0", "-1"}
                                              << 2 << QString() << "not '-1'";
        QTest::newRow("logctl instance not a number") << "tgui-logctl" << QStringList{"get", "tgui", "x"}
                                                     << 2 << QString() << "INSTANCE " + wantsNumber;
        QTest::newRow("logctl stats neither on nor off")
            << "tgui-logctl" << QStringList{"stats", "tgui", "0", "maybe"} << 2 << QString()
            << "stats wants on or off, not 'maybe'";
        QTest::newRow("logctl too many arguments") << "tgui-logctl" << QStringList{"list", "all"} << 2
                                                  << QString() << "list wants 0 arguments, not 1";

        QTest::newRow("soapd port too large") << "tgui-soapd" << QStringList{"--port", "65536"} << 2
                                             << QString() << "--port " + wantsNumber + "0 to 65535, not '65536'";

        QTest::newRow("child exit code too large") << "tgui-child" << QStringList{"--exit", "256"} << 2
                                                  << QString() << "--exit " + wantsNumber + "0 to 255, not '256'";

        QTest::newRow("zedagui exit-after not a number") << "zedagui" << QStringList{"--exit-after", "abc"}
                                                        << 2 << QString() << "--exit-after " + wantsNumber + "1 to";
        QTest::newRow("zedagui deadline negative") << "zedagui" << QStringList{"--deadline", "-5"} << 2
                                                  << QString() << "--deadline " + wantsNumber;
    }
    void answers()
    {
        QFETCH(QString, program);
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, stdoutHas);
        QFETCH(QString, stderrHas);

        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        // Should a check fail to stop a program, it must not meet the system's log queue or segment.
        env.insert("TGUI_LOG_QUEUE", QString("tst_commandline_%1").arg(QCoreApplication::applicationPid()));
        env.insert("TGUI_LOG_SHM_KEY", QString::number(0x5B000000 | (QCoreApplication::applicationPid() & 0xFFFFFF)));
        process.setProcessEnvironment(env);
        process.setWorkingDirectory(m_dir.path());  // no run folder: zedagui must not start
        process.start(kBinDir + "/" + program, arguments);
        QVERIFY(process.waitForStarted());
        if (!process.waitForFinished(20000)) {
            process.kill();
            process.waitForFinished();
            QFAIL("the program did not end by itself");
        }
        const QString out = QString::fromLocal8Bit(process.readAllStandardOutput());
        const QString err = QString::fromLocal8Bit(process.readAllStandardError());
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QVERIFY2(process.exitCode() == exitCode, qPrintable(QString("exit code %1; stderr: %2")
                                                                .arg(process.exitCode())
                                                                .arg(err)));
        if (stdoutHas.isEmpty())
            QVERIFY2(out.isEmpty(), qPrintable(out));
        else
            QVERIFY2(out.contains(stdoutHas), qPrintable(out));
        if (!stderrHas.isEmpty()) {
            // One line that names the program and the fault.
            bool found = false;
            for (const QString& line : err.split('\n'))
                found = found || (line.startsWith(program + ": ") && line.contains(stderrHas));
            QVERIFY2(found, qPrintable(err));
        }
        // Nothing was made in the working folder (no database, no log file).
        const QStringList made = QDir(m_dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
        QVERIFY2(made.isEmpty(), qPrintable(made.join(' ')));
    }
    // A program started as it is in use, told to stop once it has said that it
    // runs. tgui-logctl is not here: a command takes milliseconds and holds
    // the stop signals until it is done. tgui-child --ignore-term is meant to
    // outlive SIGTERM (the supervision tests escalate to SIGKILL on it).
    void stopsOnSignal_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("running");  // printed once the stop signals are handled
        QTest::addColumn<QString>("stopped");  // printed by the program's stop, if it prints one
        QTest::addColumn<int>("signal");

        for (int signal : {SIGTERM, SIGINT}) {
            const char* name = signal == SIGTERM ? "SIGTERM" : "SIGINT";
            QTest::addRow("tgui-core %s", name) << "tgui-core" << QStringList{"--port", "0"} << "LISTENING"
                                               << "STOPPING" << signal;
            QTest::addRow("tgui-dbs %s", name)
                << "tgui-dbs" << QStringList{"--create", "--port", "@core", "--poll-interval", "0", "user.db"}
                << "tgui-dbs: serving user" << "tgui-dbs: stopping" << signal;
            QTest::addRow("tgui-logd %s", name) << "tgui-logd" << QStringList{"--unlink"} << "tgui-logd: reading"
                                               << "tgui-logd: 0 records, 0 ignored" << signal;
            QTest::addRow("tgui-soapd %s", name) << "tgui-soapd" << QStringList{"--port", "0"} << "LISTENING"
                                                << "STOPPED after 0 requests" << signal;
            QTest::addRow("tgui-child %s", name) << "tgui-child" << QStringList{"--print", "up", "--sleep", "-1"}
                                                << "up" << QString() << signal;
            QTest::addRow("zedagui %s", name) << "zedagui" << QStringList{"--deadline", "120000"}
                                             << "zedagui: window shown" << "zedagui: stopping on a signal" << signal;
        }
    }
    void stopsOnSignal()
    {
        QFETCH(QString, program);
        QFETCH(QStringList, arguments);
        QFETCH(QString, running);
        QFETCH(QString, stopped);
        QFETCH(int, signal);

        // A core that accepts and stays silent, for the programs that register with one.
        QTcpServer core;
        QVERIFY(core.listen(QHostAddress::LocalHost, 0));
        arguments.replaceInStrings("@core", QString::number(core.serverPort()));
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        if (program == "zedagui") {
            QDir(dir.path()).mkpath("Skins");
            QFile::link(kRunDir + "/Skins/default", dir.filePath("Skins/default"));
            QFile::link(kRunDir + "/Skins/common", dir.filePath("Skins/common"));
            QFile::copy(kRunDir + "/qt.conf", dir.filePath("qt.conf"));
            QFile conf(dir.filePath("Skins/default.conf"));
            QVERIFY(conf.open(QIODevice::WriteOnly));
            conf.write("[zedagui]\nSkinFile=Skins/default/default.xml\nComServerIP=127.0.0.1\nComServerPort="
                       + QByteArray::number(core.serverPort()) + "\n");
        }
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("TGUI_LOG_QUEUE", QString("tst_commandline_stop_%1").arg(QCoreApplication::applicationPid()));
        env.insert("TGUI_LOG_SHM_KEY", QString::number(0x5B000000 | (QCoreApplication::applicationPid() & 0xFFFFFF)));
        process.setProcessEnvironment(env);
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.setWorkingDirectory(dir.path());
        process.start(kBinDir + "/" + program, arguments);
        QVERIFY(process.waitForStarted());
        QString output;
        QTRY_VERIFY2_WITH_TIMEOUT((output += QString::fromLocal8Bit(process.readAll())).contains(running)
                                      || process.state() == QProcess::NotRunning,
                                  qPrintable(output), 60000);
        QVERIFY2(process.state() == QProcess::Running, qPrintable(output));

        ::kill(pid_t(process.processId()), signal);
        if (!process.waitForFinished(20000)) {
            process.kill();
            process.waitForFinished();
            QFAIL(qPrintable("the program did not stop: " + output));
        }
        output += QString::fromLocal8Bit(process.readAll());
        QVERIFY2(process.exitStatus() == QProcess::NormalExit, qPrintable("ended by the signal: " + output));
        QVERIFY2(process.exitCode() == 0, qPrintable(QString("exit code %1: %2").arg(process.exitCode()).arg(output)));
        if (!stopped.isEmpty())
            QVERIFY2(output.contains(stopped), qPrintable(output));
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
