// tgui-core's scenario loader and player on any text. Lines that act on the
// world outside the core (start and stop processes, read files, end the
// process) are taken out; every other command runs against a core without
// peers until the scenario waits.
#include <QCoreApplication>
#include <QFile>
#include <QHostAddress>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdio>

#include "CoreServer.h"

namespace {
QTemporaryDir* folder()
{
    static int argc = 1;
    static char name[] = "fuzz_scenario";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = new QCoreApplication(argc, argv);
    (void)app;
    static QTemporaryDir* dir = [] {
        // The core prints one line per fact; nobody reads them here.
        return freopen("/dev/null", "w", stdout) ? new QTemporaryDir : nullptr;
    }();
    return dir;
}

bool touchesTheWorld(const QByteArray& line)
{
    const QByteArray verb = line.trimmed().split(' ').value(0);
    return verb == "start" || verb == "stop" || verb == "quit" || verb == "sendfile";
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QTemporaryDir* dir = folder();
    if (!dir || !dir->isValid())
        return 0;
    QByteArray kept;
    for (const QByteArray& line : QByteArray(reinterpret_cast<const char*>(data), int(size)).split('\n')) {
        if (!touchesTheWorld(line))
            kept += line + '\n';
    }
    const QString path = dir->filePath(QStringLiteral("scenario.txt"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return 0;
    file.write(kept);
    file.close();
    CoreServer server;
    QString error;
    if (!server.loadScenario(path, &error))
        return 0;
    server.listen(QHostAddress::LocalHost, 0);
    server.startScenario();
    for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents();
    return 0;
}
