#include "tools/TavoTools.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

#include "log/GuiLog.h"
#include "widgets/CTavoButton.h"
#include "widgets/CTavoIcon.h"
#include "widgets/CTavoImageWidget.h"
#include "widgets/CTavoLabelWidget.h"
#include "widgets/CTavoParagraph.h"

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

CTavoWidget* tavoToolCreateWidget(const QString& className, const QString& objectName, QWidget* parent)
{
    CTavoWidget* widget = nullptr;
    if (className == QLatin1String("CTavoButton"))
        widget = new CTavoButton(parent);
    else if (className == QLatin1String("CTavoLabelWidget"))
        widget = new CTavoLabelWidget(parent);
    else if (className == QLatin1String("CTavoScrollingLabel") || className == QLatin1String("CTavoMarqueeLabel"))
        guiLog(3, "tavoToolCreateWidget: %s is not available in this build", qPrintable(className));
    else if (className == QLatin1String("CTavoImageWidget"))
        widget = new CTavoImageWidget(parent);
    else if (className == QLatin1String("CTavoIcon"))
        widget = new CTavoIcon(parent);
    else if (className == QLatin1String("CTavoParagraph"))
        widget = new CTavoParagraph(parent);
    else
        guiLog(3, "tavoToolCreateWidget: unknown class '%s'", qPrintable(className));
    if (widget)
        widget->setObjectName(objectName);
    return widget;
}
