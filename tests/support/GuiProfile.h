#pragma once
// The folder a GUI process starts in, for tests that make a layout manager
// against a real core link: qt.conf naming the profile "test", Skins/test.conf
// pointing at the core's port. Each case enters it and leaves it after; the
// manager goes before its link to the core, which it does not own.
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "core/CTavoCoreCommunicator.h"
#include "layout/CTavoLayoutMgr.h"

class GuiProfile
{
public:
    // Makes the folder and names the application as the phone's GUI.
    bool make()
    {
        QCoreApplication::setApplicationName(QStringLiteral("zedagui"));
        m_home = QDir::currentPath();
        QFile qt(dir.filePath("qt.conf"));
        return dir.isValid() && QDir(dir.path()).mkpath("Skins") && qt.open(QIODevice::WriteOnly)
            && qt.write("[Profile]\nActive=test\n") > 0;
    }
    // Skins/test.conf: the [zedagui] `settings` lines, then the core at
    // 127.0.0.1:`port`; and the folder entered.
    bool enter(quint16 port, const QByteArray& settings = QByteArray())
    {
        QFile skins(dir.filePath("Skins/test.conf"));
        if (!skins.open(QIODevice::WriteOnly))
            return false;
        skins.write("[zedagui]\n" + settings + "ComServerIP=127.0.0.1\nComServerPort=" + QByteArray::number(port)
                    + "\n");
        skins.close();
        return QDir::setCurrent(dir.path());
    }
    void leave() { QDir::setCurrent(m_home); }
    QString filePath(const QString& name) const { return dir.filePath(name); }

    QTemporaryDir dir;

private:
    QString m_home;
};

// The manager (or a test's subclass of it), then its link to the core; null
// afterwards. Nothing for null.
template <typename Mgr>
void deleteManager(Mgr*& mgr)
{
    if (!mgr)
        return;
    CTavoCoreCommunicator* com = mgr->coreCom();
    delete mgr;
    mgr = nullptr;
    com->shutDown();
    delete com;
}
