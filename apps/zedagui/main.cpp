// zedagui: the sample phone GUI of the toolkit. It connects to the core named
// in Skins/<profile>.conf of the folder it starts in, boots, shows its home
// screen and talks to the core. For the demo and test automation it can write
// screenshots and end itself; see CZedaDemoDriver.h.
#include <QApplication>
#include <QCommandLineParser>
#include <climits>

#include "CZedaDemoDriver.h"
#include "CZedaDirectoryScreen.h"
#include "CZedaGui.h"
#include "ConsoleRepeats.h"
#include "ProgramCommandLine.h"
#include "StopSignals.h"
#include "core/TavoGlobals.h"
#include "log/GuiLog.h"

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("zedagui"));
    // A hostile peer can provoke the same line thousands of times: the console folds repeats.
    consolerepeats::install();

    QCommandLineParser cli;
    QCommandLineOption shots("screenshots", "Write a PNG screenshot into <dir> after each step.", "dir");
    QCommandLineOption exitAfter("exit-after", "Take a last screenshot and quit after <ms> milliseconds.", "ms");
    QCommandLineOption quitOnEnd("quit-on-end", "Quit with exit code 0 when the scenario ends.");
    QCommandLineOption deadline("deadline", "Quit with exit code 4 if the scenario has not ended after <ms>.", "ms");
    QCommandLineOption directoryUrl("directory-url", "The directory's SOAP service at <url>.", "url");
    QCommandLineOption directoryPac("directory-pac", "Choose the directory's proxies with the proxy script <file>.", "file");
    QCommandLineOption directoryUser("directory-user", "Sign in to the directory as <name>.", "name");
    QCommandLineOption directoryPassword("directory-password", "The directory's password.", "text");
    cli.addOptions({shots, exitAfter, quitOnEnd, deadline, directoryUrl, directoryPac, directoryUser, directoryPassword});
    cmdline::parse(cli, QStringLiteral("The sample phone GUI of TGUILib"));
    int exitAfterMs = -1;
    int deadlineMs = -1;
    if (!cmdline::number(cli, exitAfter, 1, INT_MAX, &exitAfterMs)
        || !cmdline::number(cli, deadline, 1, INT_MAX, &deadlineMs))
        return cmdline::UsageError;

    auto* gui = new CZedaGui;
    gui->directoryScreen()->configure(cli.value(directoryUrl), cli.value(directoryPac), cli.value(directoryUser),
                                      cli.value(directoryPassword));
    auto* driver = new CZedaDemoDriver(gui, cli.value(shots), cli.isSet(quitOnEnd));
    if (exitAfterMs > 0)
        driver->setExitAfter(exitAfterMs);
    if (deadlineMs > 0)
        driver->setDeadline(deadlineMs);

    if (gui->size() != QSize(800, 480) && gui->styledRect().isEmpty())
        gui->resize(800, 480);
    gui->showLayoutMgr(false);
    // SIGTERM and SIGINT end the loop through the manager with code 0; the
    // stop order below then runs as for any other end.
    if (!stopsignals::install([gui] {
            guiLog(2, "zedagui: stopping on a signal");
            gui->handleShutdown(0);
        }))
        return 1;
    guiLog(2, "zedagui: window shown, core link to %s:%d", qPrintable(gui->coreComIP()), gui->coreComPort());
    const int code = app.exec();

    // Stop order: the core link falls silent first, then the objects go.
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
