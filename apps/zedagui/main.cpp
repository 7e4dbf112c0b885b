// zedagui: the sample phone GUI host of the toolkit, in its first form. It
// connects to the core named in Skins/<profile>.conf, registers and shows what
// the core's documents change: language, configuration, peers, translations,
// softkeys. Headless (offscreen platform) it writes screenshots to
// --screenshots DIR and exits after --exit-after ms.
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QPainter>
#include <QTimer>

#include "core/TavoGlobals.h"
#include "layout/CTavoLayoutMgr.h"
#include "log/GuiLog.h"
#include "tools/TavoToolFlags.h"

namespace {
class ZedaGui : public CTavoLayoutMgr
{
    Q_OBJECT
public:
    ZedaGui() : CTavoLayoutMgr(nullptr, Qt::WindowFlags(), false)
    {
        setObjectName(QStringLiteral("zedagui"));
        connect(this, &CTavoLayoutMgr::languageChange, this, [this](const QString& code) {
            guiLog(2, "zedagui: language %s", qPrintable(code));
            note(QStringLiteral("language %1").arg(code));
        });
        connect(this, &CTavoLayoutMgr::appConnectionStatusChanged, this, [this](GuiAppsT app, bool up) {
            const char* name = appDefsName(app);
            guiLog(2, "zedagui: peer %s %s", name ? name : "?", up ? "up" : "down");
            note(QStringLiteral("peer %1 %2").arg(QLatin1String(name ? name : "?"), up ? "up" : "down"));
        });
        connect(this, &CTavoLayoutMgr::receivedTranslations, this,
                [this](const QHash<QString, QString>& t) {
                    guiLog(2, "zedagui: %d translations", t.size());
                    note(QStringLiteral("%1 translations").arg(t.size()));
                });
        connect(this, &CTavoLayoutMgr::evLayoutMgr, this, [this](int event, int) {
            guiLog(2, "zedagui: manager event %d", event);
            note(QStringLiteral("manager event %1").arg(event));
        });
        if (CTavoCoreCommunicator* com = coreCom()) {
            connect(com, &CTavoCoreCommunicator::connectedAndIdentified, this,
                    [this] { note(QStringLiteral("registered with the core")); },
                    Qt::QueuedConnection);
        }
    }

protected:
    void handleTXmlMsg(QByteArray& data, GuiAppsT source, GuiAppsMsgTypeT type) override
    {
        CTavoLayoutMgr::handleTXmlMsg(data, source, type);
        const CTXMLRoot& root = xmlRoot();
        if (root.flags & TXML_FLAG_EVENT)
            guiLog(2, "zedagui: event %s with %d pairs", root.uri, root.pairCount());
        if (root.flags & TXML_FLAG_SOFTKEYS) {
            QStringList labels;
            for (int i = 0; i < root.softkeys.count; ++i)
                labels << QString::fromUtf8(root.softkeys[i].label);
            guiLog(2, "zedagui: %d softkeys: %s", root.softkeys.count, qPrintable(labels.join(QLatin1String(" | "))));
            m_softkeys = labels;
            note(QStringLiteral("%1 softkeys").arg(root.softkeys.count));
        }
        update();
    }

    void paintEvent(QPaintEvent*) override
    {
        QPainter p(this);
        p.fillRect(rect(), QColor(0x20, 0x30, 0x48));
        p.setPen(Qt::white);
        int y = 24;
        auto line = [&](const QString& text) {
            p.drawText(12, y, text);
            y += 20;
        };
        line(QStringLiteral("zedagui - core %1:%2").arg(coreComIP()).arg(coreComPort()));
        line(QStringLiteral("language: %1   layout type: %2   24h: %3")
                 .arg(language().isEmpty() ? QStringLiteral("-") : language())
                 .arg(layoutType())
                 .arg(tavoToolGet24HrsFormat() ? "on" : "off"));
        line(QStringLiteral("connected peers mask: %1").arg(connectedApps()));
        for (const QString& n : qAsConst(m_notes))
            line(QStringLiteral("- ") + n);
        // The softkey bar: a row of equal cells along the bottom.
        if (!m_softkeys.isEmpty()) {
            const int n = qMin(5, m_softkeys.size());
            const int w = width() / n;
            for (int i = 0; i < n; ++i) {
                const QRect cell(i * w + 2, height() - 46, w - 4, 42);
                p.fillRect(cell, QColor(0x3a, 0x50, 0x70));
                p.drawText(cell, Qt::AlignCenter, m_softkeys.at(i));
            }
        }
    }

private:
    void note(const QString& text)
    {
        m_notes.append(text);
        while (m_notes.size() > 14)
            m_notes.removeFirst();
        update();
    }

    QStringList m_notes;
    QStringList m_softkeys;
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

    auto* gui = new ZedaGui;
    gui->resize(800, 480);
    gui->showLayoutMgr(false);
    guiLog(2, "zedagui: window shown, core link to %s:%d", qPrintable(gui->coreComIP()),
           gui->coreComPort());

    QString shotDir;
    if (cli.isSet(shots)) {
        shotDir = cli.value(shots);
        QDir().mkpath(shotDir);
        QTimer::singleShot(0, gui, [gui, shotDir] {
            const QString file = shotDir + QStringLiteral("/00-start.png");
            gui->grab().save(file);
            guiLog(3, "screenshot %s", qPrintable(file));
        });
    }
    if (cli.isSet(exitAfter)) {
        const int ms = cli.value(exitAfter).toInt();
        QTimer::singleShot(ms, gui, [gui, shotDir] {
            if (!shotDir.isEmpty()) {
                const QString file = shotDir + QStringLiteral("/99-end.png");
                gui->grab().save(file);
                guiLog(3, "screenshot %s", qPrintable(file));
            }
            emit gui->shutDown(0);
        });
    }
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

#include "main.moc"
