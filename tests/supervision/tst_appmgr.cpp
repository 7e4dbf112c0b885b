// The supervisor with real children (tgui-child under the names of a start
// list): parsing of the list and its options, start order, restart rules and
// the files of each run, the stop paths, and what a missing or broken program,
// a crash and a reboot in progress do.
#include <algorithm>

#include <QSettings>
#include <QSignalSpy>
#include <QtTest>

#include "SupervisionTestSupport.h"
#include "core/TavoGlobals.h"
#include "supervision/CTavoAppMgr.h"
#include "supervision/CTavoApplication.h"

namespace {
const int kStartMs = 30000;  // a loaded machine starts a sanitised child slowly

QString logPath(const QString& stem, const char* kind, int run)
{
    return QStringLiteral("/tmp/%1-%2-%3.log").arg(stem, QLatin1String(kind)).arg(run);
}
}  // namespace

class TestAppMgr : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // The phone's values, before the tests shorten the wait.
        QCOMPARE(CTavoApplication::restartDelay(), 4000);
        QCOMPARE(CTavoAppMgr::persistentRoot(), QStringLiteral("/ffs0"));
        CTavoApplication::setRestartDelay(300);
        QVERIFY(QFileInfo(childProgram()).isExecutable());
    }

    void cleanup()
    {
        bRebootInitiated = false;
        CTavoAppMgr::setPersistentRoot(QStringLiteral("/ffs0"));
        CTavoApplication::setRestartDelay(300);
    }

    void parsesEntriesOptionsAndParameters()
    {
        RunFolder run;
        QVERIFY(run.isValid());
        const QString a = run.child("a"), b = run.child("b"), c = run.child("c"), d = run.child("d"),
                      e = run.child("e");
        const QString missing = QStringLiteral("s%1missing").arg(QCoreApplication::applicationPid());
        const QString list = QStringLiteral("  %1 %2(blocked)  %3(console) %4(disabled) em %5 %6(other)")
                                 .arg(a, b, c, d, missing, e);
        const QString ini = run.writeIni({"AutoStart=" + list, "AlwaysRestart=true"},
                                         {{a, "--print  one   --exit 3"}, {b, "--print x,y"}});
        CTavoAppMgr mgr(nullptr, ini);
        QCOMPARE(mgr.configFile(), ini);
        QCOMPARE(mgr.appNames(), QStringList({a, b + "(blocked)", c + "(console)", d + "(disabled)", "em", missing, e + "(other)"}));

        // "em" needs the auxiliary port marker; the others keep their places.
        const QList<CTavoApplication*>& apps = mgr.applications();
        QCOMPARE(apps.size(), 6);
        struct Expect { QString name; unsigned index; bool blocked, console, disabled, valid; };
        const QList<Expect> expected = {{a, 0, false, false, false, true},     {b, 1, true, false, false, true},
                                        {c, 2, false, true, false, true},      {d, 3, false, false, true, true},
                                        {missing, 5, false, false, false, false}, {e, 6, false, false, false, true}};
        for (int i = 0; i < expected.size(); ++i) {
            const Expect& x = expected.at(i);
            CTavoApplication* app = apps.at(i);
            QCOMPARE(app->name(), x.name);
            QCOMPARE(app->index(), x.index);
            QCOMPARE((QList<bool>{app->isBlocked(), app->isConsole(), app->isDisabled(), app->isValid()}),
                     (QList<bool>{x.blocked, x.console, x.disabled, x.valid}));
            QCOMPARE(app->path(), "./" + x.name);
            QVERIFY(app->alwaysRestart());
            QCOMPARE(app->restartCount(), 0);
            QCOMPARE(app->state(), QProcess::NotRunning);
            // The first run's files carry the entry as written.
            QCOMPARE(app->standardErrorPath(), logPath(mgr.appNames().at(int(x.index)), "err", 0));
            QCOMPARE(app->standardOutputPath(), logPath(mgr.appNames().at(int(x.index)), "out", 0));
        }
        QCOMPARE(mgr.application(a), apps.at(0));
        QCOMPARE(apps.at(0)->args(), QStringList({"--print", "one", "--exit", "3"}));
        QCOMPARE(apps.at(1)->args(), QStringList({"--print", "x,y"}));
        QVERIFY(apps.at(2)->args().isEmpty());

        // With the marker "em" joins at its own place; unchanged entries keep
        // their application objects.
        CTavoApplication* first = apps.at(0);
        QVERIFY(QDir().mkpath(run.path("ffs0")));
        QFile marker(run.path("ffs0/auxport.enable"));
        QVERIFY(marker.open(QIODevice::WriteOnly));
        marker.close();
        CTavoAppMgr::setPersistentRoot(run.path("ffs0"));
        mgr.parseConfigFile();
        QCOMPARE(mgr.applications().size(), 7);
        QCOMPARE(mgr.applications().at(4)->name(), QStringLiteral("em"));
        QCOMPARE(mgr.applications().at(4)->index(), 4u);
        QVERIFY(!mgr.applications().at(4)->isValid());
        QCOMPARE(mgr.applications().at(0), first);
    }

    void autoStartOnDecidesForThePlatform_data()
    {
        QTest::addColumn<QString>("platform");
        QTest::addColumn<int>("count");
        QTest::newRow("unset") << QString() << 2;
        QTest::newRow("linux") << "linux" << 2;
        QTest::newRow("LINUX") << "LINUX" << 2;
        QTest::newRow("android") << "android" << 0;
        QTest::newRow("linux-arm") << "linux-arm" << 0;
    }

    void autoStartOnDecidesForThePlatform()
    {
        QFETCH(QString, platform);
        QFETCH(int, count);
        RunFolder run;
        QStringList keys = {"AutoStart=one two"};
        if (!platform.isNull())
            keys << "AutoStartOn=" + platform;
        CTavoAppMgr mgr(nullptr, run.writeIni(keys));
        QCOMPARE(mgr.appNames().size(), count);
        QCOMPARE(mgr.applications().size(), count);
    }

    void startsOrdinaryApplicationsFirstAndBlockedOnRequest()
    {
        RunFolder run;
        LogCapture log;
        const QString a = run.child("a"), b = run.child("b"), c = run.child("c");
        const QString missing = QStringLiteral("s%1gone").arg(QCoreApplication::applicationPid());
        const QString params = "--record " + run.path("runs.txt") + " --sleep -1";
        CTavoAppMgr mgr(nullptr, run.writeIni({QStringLiteral("AutoStart=%1 %2(blocked) %3(disabled) %4").arg(a, b, c, missing)},
                                              {{a, params + " --print A"}, {b, params + " --print B"}, {c, params}}));
        QList<QSignalSpy*> spies;
        for (CTavoApplication* app : mgr.applications())
            spies << new QSignalSpy(app, &CTavoApplication::unlocked);

        mgr.onStartRequested(true);
        QCOMPARE(mgr.application(a)->state(), QProcess::Running);
        QCOMPARE(mgr.application(b)->state(), QProcess::NotRunning);
        QCOMPARE(mgr.application(c)->state(), QProcess::NotRunning);
        QVERIFY(!mgr.blockedStarted());
        // A missing program still unlocks the chain, with its index.
        QVERIFY(log.has("unable to start application " + missing + " because it's invalid"));
        QCOMPARE(spies.at(0)->count(), 1);
        QCOMPARE(spies.at(0)->first().first().toInt(), 0);
        QCOMPARE(spies.at(1)->count(), 0);
        QCOMPARE(spies.at(2)->count(), 0);
        QCOMPARE(spies.at(3)->count(), 1);
        QCOMPARE(spies.at(3)->first().first().toInt(), 3);

        mgr.onStartRequested(false);
        QVERIFY(mgr.blockedStarted());
        QCOMPARE(mgr.application(b)->state(), QProcess::Running);
        QCOMPARE(mgr.application(c)->state(), QProcess::NotRunning);
        QCOMPARE(spies.at(1)->count(), 1);
        // a is not started twice; its arguments came from its own group.
        QTRY_COMPARE_WITH_TIMEOUT(run.runs().size(), 2, kStartMs);
        // Each child records itself when it runs, so a busy machine may reverse them.
        QStringList runs = run.runs();
        std::sort(runs.begin(), runs.end(), [](const QString& x, const QString& y) { return x.right(1) < y.right(1); });
        QVERIFY(runs.at(0).endsWith("--sleep -1 --print A"));
        QVERIFY(runs.at(1).endsWith("--sleep -1 --print B"));

        // Terminated children end cleanly and stay down.
        mgr.shutDownAllApps();
        QCOMPARE(mgr.application(a)->state(), QProcess::NotRunning);
        QCOMPARE(mgr.application(b)->state(), QProcess::NotRunning);
        QVERIFY(log.has(a + " has been gracefully shutdown"));
        QVERIFY(log.has(b + " has been gracefully shutdown"));
        QTest::qWait(CTavoApplication::restartDelay() + 500);
        QCOMPARE(run.runs().size(), 2);
        qDeleteAll(spies);
    }

    void restartRulesAndTheFilesOfEachRun_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<bool>("always");
        QTest::addColumn<QString>("action");
        QTest::addColumn<bool>("restarts");
        QTest::addColumn<QString>("line");
        const QString graceful = "%1 has been gracefully shutdown";
        const QString crashed = "%1 has caught an exception and will be restarted, exit code = 0";
        QTest::newRow("exit 3") << "" << false << "--exit 3" << true << graceful;
        QTest::newRow("exit 0") << "" << false << "--exit 0" << false << graceful;
        QTest::newRow("exit 0, always restart") << "" << true << "--exit 0" << true << graceful;
        QTest::newRow("console exit 1") << "(console)" << false << "--exit 1" << false << graceful;
        QTest::newRow("console exit 1, always restart") << "(console)" << true << "--exit 1" << true << graceful;
        // A crash counts as exit code 0, whatever the log line promises.
        QTest::newRow("crash") << "" << false << "--crash" << false << crashed;
        QTest::newRow("crash, always restart") << "" << true << "--crash" << true << crashed;
    }

    void restartRulesAndTheFilesOfEachRun()
    {
        QFETCH(QString, option);
        QFETCH(bool, always);
        QFETCH(QString, action);
        QFETCH(bool, restarts);
        QFETCH(QString, line);
        RunFolder run;
        LogCapture log;
        const QString name = run.child("r");
        const QString entry = name + option;
        CTavoAppMgr mgr(nullptr, run.writeIni({"AutoStart=" + entry, QStringLiteral("AlwaysRestart=%1").arg(always)},
                                              {{name, "--record " + run.path("runs.txt") + " --print out --error err " + action}}));
        CTavoApplication* app = mgr.applications().value(0);
        QVERIFY(app);
        mgr.onStartRequested(true);
        QTRY_VERIFY2_WITH_TIMEOUT(log.has(line.arg(name)), qPrintable(log.all()), kStartMs);
        // The first run wrote to the files named after the entry.
        QCOMPARE(readFile(logPath(entry, "out", 0)), QStringLiteral("out\n"));
        QVERIFY(readFile(logPath(entry, "err", 0)).startsWith("err\n"));

        if (restarts) {
            QTRY_VERIFY_WITH_TIMEOUT(run.runs().size() >= 2, kStartMs);
            QVERIFY(log.has(name + " is being restarted"));
            QVERIFY(app->restartCount() >= 1);
            // The restarted run writes to files named after the application.
            QTRY_COMPARE_WITH_TIMEOUT(readFile(logPath(name, "out", 1)), QStringLiteral("out\n"), kStartMs);
            QCOMPARE(app->standardOutputPath(), logPath(name, "out", app->restartCount()));
            app->shutDown();
            app->waitForFinished(kStartMs);
        } else {
            QTest::qWait(CTavoApplication::restartDelay() + 1500);
            QCOMPARE(run.runs().size(), 1);
            QCOMPARE(app->restartCount(), 0);
            QVERIFY(!log.has(name + " is being restarted"));
            QCOMPARE(app->state(), QProcess::NotRunning);
        }
    }

    void badProgramsAndRebootsDoNotRestart()
    {
        RunFolder run;
        LogCapture log;
        const QString plain = QStringLiteral("s%1plain").arg(QCoreApplication::applicationPid());
        QFile file(run.path(plain));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("not a program\n");
        file.close();
        const QString missing = QStringLiteral("s%1missing").arg(QCoreApplication::applicationPid());
        const QString child = run.child("c");
        CTavoAppMgr mgr(nullptr, run.writeIni({QStringLiteral("AutoStart=%1 %2 %3").arg(plain, missing, child), "AlwaysRestart=1"},
                                              {{child, "--record " + run.path("runs.txt") + " --sleep 300 --exit 5"}}));
        CTavoApplication* notExecutable = mgr.application(plain);
        CTavoApplication* absent = mgr.application(missing);
        CTavoApplication* reboots = mgr.application(child);

        // A file that is no program exists, so it is valid, and fails to start.
        QVERIFY(notExecutable->isValid());
        QSignalSpy unlocked(notExecutable, &CTavoApplication::unlocked);
        notExecutable->start();
        QCOMPARE(unlocked.count(), 1);
        QTRY_VERIFY(log.has("CTavoApplication::onError for " + plain + ", error is The process failed to start"));

        QSignalSpy absentUnlocked(absent, &CTavoApplication::unlocked);
        absent->start();
        QCOMPARE(absentUnlocked.count(), 1);
        QCOMPARE(log.count("unable to start application " + missing + " because it's invalid"), 1);

        // The phone goes down while a child runs: its end is only logged.
        reboots->start();
        QVERIFY(reboots->waitForStarted(kStartMs));
        __atomic_store_n(&bRebootInitiated, true, __ATOMIC_RELAXED);
        QVERIFY(reboots->waitForFinished(kStartMs));
        QCOMPARE(reboots->exitCode(), 5);
        QVERIFY(log.has("Ignored " + child + " start as phone is rebooting."));
        reboots->onError(QProcess::Crashed);
        QCOMPARE(log.count("Ignored " + child + " start as phone is rebooting."), 2);

        QTest::qWait(CTavoApplication::restartDelay() + 1500);
        QCOMPARE(run.runs().size(), 1);
        QVERIFY(!log.all().contains("is being restarted"));
        QCOMPARE(notExecutable->restartCount() + absent->restartCount() + reboots->restartCount(), 0);
    }

    void errorsAreLoggedWithTheirTexts()
    {
        const char* const texts[] = {"The process failed to start", "The process has crashed",
                                     "The last waitFor.. function timed out",
                                     "An error occurred when attempting to read from the process",
                                     "An error occurred when attempting to write to the process",
                                     "An unknown error occurred"};
        LogCapture log;
        CTavoApplication app(0, "nowhere(console)", nullptr, nullptr, true);
        for (int error = 0; error < 6; ++error) {
            app.onError(QProcess::ProcessError(error));
            QVERIFY2(log.has(QStringLiteral("CTavoApplication::onError for nowhere, error is ") + texts[error]),
                     qPrintable(log.all()));
        }
        // Errors alone never restart.
        QCOMPARE(app.restartCount(), 0);
    }

    void finishReportsDecideByCodeAndStatus()
    {
        RunFolder run;
        LogCapture log;
        const QString name = run.child("f");
        QSettings settings(run.writeIni({}, {{name, "--record " + run.path("runs.txt") + " --sleep -1"}}), QSettings::IniFormat);
        CTavoApplication app(7, name, &settings, nullptr, false);
        QSignalSpy unlocked(&app, &CTavoApplication::unlocked);

        // A crash reported with exit code 0 is logged as one to restart, and is not.
        app.onFinished(0, QProcess::CrashExit);
        QVERIFY(log.has(name + " has caught an exception and will be restarted, exit code = 0"));
        QCOMPARE(app.restartCount(), 0);
        QCOMPARE(unlocked.count(), 0);

        // Any other code restarts after the delay, in files of the next run.
        QElapsedTimer clock;
        clock.start();
        app.onFinished(11, QProcess::CrashExit);
        QVERIFY(clock.elapsed() >= CTavoApplication::restartDelay());
        QCOMPARE(app.restartCount(), 1);
        QCOMPARE(app.standardErrorPath(), logPath(name, "err", 1));
        QCOMPARE(unlocked.count(), 1);
        QCOMPARE(unlocked.first().first().toInt(), 7);
        QVERIFY(app.waitForStarted(kStartMs));
        QTRY_COMPARE_WITH_TIMEOUT(run.runs().size(), 1, kStartMs);

        // A restart of a running child does not start a second one.
        app.onFinished(2, QProcess::NormalExit);
        QCOMPARE(app.restartCount(), 2);
        QTest::qWait(500);
        QCOMPARE(run.runs().size(), 1);
        app.shutDown();
        QVERIFY(app.waitForFinished(kStartMs));
    }

    void shutDownAllAppsKillsConsolesAndTerminatesTheRest()
    {
        RunFolder run;
        LogCapture log;
        const QString console = run.child("con"), plain = run.child("plain"), stubborn = run.child("stub");
        const QString record = "--record " + run.path("runs.txt");
        CTavoAppMgr mgr(nullptr, run.writeIni({QStringLiteral("AutoStart=%1(console) %2 %3").arg(console, plain, stubborn)},
                                              {{console, record + " --sleep -1 --ignore-term"}, {plain, record + " --sleep -1"},
                                               {stubborn, record + " --sleep -1 --ignore-term"}}));
        mgr.onStartRequested(true);
        for (CTavoApplication* app : mgr.applications())
            QCOMPARE(app->state(), QProcess::Running);
        // Started for real, signal handlers in place.
        QTRY_COMPARE_WITH_TIMEOUT(run.runs().size(), 3, kStartMs);
        mgr.shutDownAllApps();
        CTavoApplication* c = mgr.application(console);
        CTavoApplication* p = mgr.application(plain);
        CTavoApplication* s = mgr.application(stubborn);
        QCOMPARE(c->state(), QProcess::NotRunning);
        QCOMPARE(c->exitStatus(), QProcess::CrashExit);
        QCOMPARE(p->state(), QProcess::NotRunning);
        QCOMPARE(p->exitStatus(), QProcess::NormalExit);
        QCOMPARE(p->exitCode(), 0);
        // Only console applications are killed: one that ignores SIGTERM stays.
        QCOMPARE(s->state(), QProcess::Running);
        s->kill();
        QVERIFY(s->waitForFinished(kStartMs));
        QTest::qWait(CTavoApplication::restartDelay() + 500);
        QVERIFY(!log.all().contains("is being restarted"));
    }

    void terminateAndStartByName()
    {
        RunFolder run;
        LogCapture log;
        const QString browser = run.child("browser"), mail = run.child("mail");
        CTavoAppMgr mgr(nullptr, run.writeIni({QStringLiteral("AutoStart=%1 %2").arg(browser, mail)},
                                              {{browser, "--record " + run.path("browser.txt") + " --sleep -1"},
                                               {mail, "--record " + run.path("runs.txt") + " --sleep -1"}}));
        CTavoApplication* b = mgr.application(browser);
        CTavoApplication* m = mgr.application(mail);
        mgr.onStartRequested(true);
        QTRY_COMPARE_WITH_TIMEOUT(run.runs().size() + run.runs("browser.txt").size(), 2, kStartMs);

        // By the end of the name; terminated children stay down.
        mgr.terminateApplication("mail");
        QCOMPARE(m->state(), QProcess::NotRunning);
        QCOMPARE(b->state(), QProcess::Running);
        QVERIFY(!bRebootInitiated);
        mgr.startApplication("mail");
        QVERIFY(m->waitForStarted(kStartMs));
        QTRY_COMPARE_WITH_TIMEOUT(run.runs().size(), 2, kStartMs);
        QCOMPARE(m->restartCount(), 0);
        // An empty name starts nothing.
        mgr.startApplication(QString());
        QVERIFY(log.has("CTavoAppMgr::startApplication: no application name given"));

        // No name: the phone goes down, all but the browser are shut down for good.
        mgr.terminateApplication(QString());
        QVERIFY(bRebootInitiated);
        QCOMPARE(m->state(), QProcess::NotRunning);
        QVERIFY(!m->alwaysRestart());
        QCOMPARE(b->state(), QProcess::Running);
        mgr.shutDownAllApps();
        QCOMPARE(b->state(), QProcess::NotRunning);
        QVERIFY(log.has("Ignored " + browser + " start as phone is rebooting."));
    }

    void shutDownWhileARestartWaits()
    {
        RunFolder run;
        LogCapture log;
        const QString name = run.child("w");
        CTavoApplication::setRestartDelay(2000);
        CTavoAppMgr mgr(nullptr, run.writeIni({"AutoStart=" + name, "AlwaysRestart=true"},
                                              {{name, "--record " + run.path("runs.txt")}}));
        CTavoApplication* app = mgr.applications().value(0);
        bool shutDownDuringDelay = false;
        // The wait keeps the event loop going: the stop arrives in the middle.
        connect(app, &QProcess::stateChanged, this, [&](QProcess::ProcessState state) {
            if (state == QProcess::NotRunning)
                QTimer::singleShot(300, app, [&] {
                    shutDownDuringDelay = true;
                    app->shutDown();
                });
        });
        mgr.onStartRequested(true);
        QTRY_VERIFY_WITH_TIMEOUT(shutDownDuringDelay, kStartMs);
        QTest::qWait(2500);
        QCOMPARE(run.runs().size(), 1);
        QVERIFY(!log.has(name + " is being restarted"));
        QCOMPARE(app->state(), QProcess::NotRunning);
    }
};

QTEST_GUILESS_MAIN(TestAppMgr)
#include "tst_appmgr.moc"
