// tgui-core's frame reader and registration on hostile bytes: each input is
// what one peer sends over a real loopback connection before it hangs up,
// while a registered database peer takes whatever is routed to it.
#include <QCoreApplication>
#include <QHostAddress>
#include <QTcpSocket>

#include <cstdint>
#include <cstdio>

#include "CoreServer.h"

namespace {
struct World {
    CoreServer server;
    QTcpSocket dbs;
};

void pump(int rounds)
{
    for (int i = 0; i < rounds; ++i)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

World* world()
{
    static int argc = 1;
    static char name[] = "fuzz_coreserver";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = new QCoreApplication(argc, argv);
    (void)app;
    static World* w = [] {
        // The core prints one line per fact; nobody reads them here.
        if (!freopen("/dev/null", "w", stdout))
            return static_cast<World*>(nullptr);
        auto* made = new World;
        made->server.setQueueLimit(1 << 20);
        made->server.listen(QHostAddress::LocalHost, 0);
        made->dbs.connectToHost(QHostAddress::LocalHost, made->server.serverPort());
        made->dbs.waitForConnected(5000);
        char* frame = appDefsAssembleMessage(GuiAppsDbs, GuiAppsTavoapp, "dbs", 3, GuiAppsMsgTxml);
        made->dbs.write(frame, appDefsHeaderLength() + 3);
        delete[] frame;
        made->dbs.waitForBytesWritten(1000);
        pump(10);
        return made;
    }();
    return w;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    World* w = world();
    if (!w)
        return 0;
    QTcpSocket peer;
    peer.connectToHost(QHostAddress::LocalHost, w->server.serverPort());
    if (!peer.waitForConnected(1000))
        return 0;
    pump(2);
    peer.write(reinterpret_cast<const char*>(data), qint64(size));
    peer.waitForBytesWritten(1000);
    pump(4);
    peer.abort();
    pump(2);
    w->dbs.readAll();
    return 0;
}
