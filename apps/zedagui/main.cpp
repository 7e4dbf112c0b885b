// zedagui: the sample phone GUI host of the toolkit.
// Headless (offscreen platform) it writes screenshots to --screenshots DIR and
// exits after --exit-after ms; with a display it runs until the window closes.
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QPainter>
#include <QTimer>
#include <QWidget>

#include "log/GuiLog.h"

namespace {
class Screen : public QWidget
{
protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter p(this);
        p.fillRect(rect(), QColor(0x20, 0x30, 0x48));
        p.setPen(Qt::white);
        p.drawText(rect(), Qt::AlignCenter, QStringLiteral("libTGUILib"));
    }
};
}  // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("zedagui"));

    QCommandLineParser cli;
    cli.addHelpOption();
    QCommandLineOption shots("screenshots", "Write PNG screenshots into <dir>.", "dir");
    QCommandLineOption exitAfter("exit-after", "Quit after <ms> milliseconds.", "ms");
    cli.addOption(shots);
    cli.addOption(exitAfter);
    cli.process(app);

    Screen screen;
    screen.resize(800, 480);
    screen.show();

    if (cli.isSet(shots)) {
        const QString dir = cli.value(shots);
        QDir().mkpath(dir);
        QTimer::singleShot(0, &screen, [&screen, dir] {
            const QString file = dir + QStringLiteral("/00-start.png");
            screen.grab().save(file);
            guiLog(3, "screenshot %s", qPrintable(file));
        });
    }
    if (cli.isSet(exitAfter))
        QTimer::singleShot(cli.value(exitAfter).toInt(), &app, &QCoreApplication::quit);
    return app.exec();
}
