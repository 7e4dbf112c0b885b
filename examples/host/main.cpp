// tgui-host: a small host application of TGUILib. Start it in its run folder
// (examples/host/run): it reads qt.conf and Skins/<profile>.conf there, shows
// one screen from its own skin and talks to the core named in that file, for
// instance tgui-core. docs/host-guide.md explains each step.
#include <QApplication>

#include "HostManager.h"
#include "core/CTavoCoreCommunicator.h"
#include "core/TavoGlobals.h"
#include "log/GuiLog.h"

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    // The application name is the process's name towards the core: one of the
    // peer table's names ("osd", the on-screen display), and the group of
    // Skins/<profile>.conf that holds the skin file and the core's address.
    app.setApplicationName(QStringLiteral("osd"));

    auto* manager = new HostManager;
    if (manager->styledRect().isEmpty())
        manager->resize(480, 272);
    manager->showLayoutMgr(false);
    guiLog(2, "host: shown, core at %s:%d", qPrintable(manager->coreComIP()), manager->coreComPort());
    const int code = app.exec();

    // Stop order: Quit silences the core link and the manager's signals, then
    // the manager goes, and last the communicator, which it does not own.
    CTavoCoreCommunicator* com = manager->coreCom();
    manager->Quit();
    delete manager;
    if (com) {
        com->shutDown();
        delete com;
    }
    return code;
}
