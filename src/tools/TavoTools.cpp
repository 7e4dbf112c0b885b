#include "tools/TavoTools.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

#include "log/GuiLog.h"

void tavoToolsDelay(int msec)
{
    if (msec < 0) {
        guiLog(3, "tavoToolsDelay: negative delay %d ms ignored", msec);
        return;
    }
    if (msec == 0)
        return;
    if (!QCoreApplication::instance()) {
        QThread::msleep(ulong(msec));
        return;
    }
    QElapsedTimer clock;
    clock.start();
    // A timer may fire a little early; wait again for what is left. A loop that
    // returns without our timer was ended by QCoreApplication::exit.
    for (qint64 left = msec; left > 0; left = msec - clock.elapsed()) {
        QEventLoop loop;
        bool timedOut = false;
        QTimer timer;
        timer.setSingleShot(true);
        timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
            timedOut = true;
            loop.quit();
        });
        timer.start(int(left));
        loop.exec();
        if (!timedOut)
            return;
    }
}
