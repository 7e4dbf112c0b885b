#pragma once
// A run folder for a supervisor under test: the current directory while it
// lives, an INI file, and links to tgui-child under the names of the start
// list. Names carry the test's process id, so that the children's log files
// in /tmp ("/tmp/<name>-out-<run>.log") never meet those of another run.
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QMutex>
#include <QStringList>
#include <QTemporaryDir>

inline QString childProgram()
{
    return qEnvironmentVariable("TGUI_BIN_DIR", TGUI_BIN_DIR) + QStringLiteral("/tgui-child");
}

class RunFolder
{
public:
    RunFolder() : m_previous(QDir::currentPath())
    {
        QDir::setCurrent(m_dir.path());
    }
    ~RunFolder()
    {
        QDir::setCurrent(m_previous);
        const QString stem = QStringLiteral("s%1").arg(QCoreApplication::applicationPid());
        for (const QString& file : QDir(QStringLiteral("/tmp")).entryList({stem + QStringLiteral("*.log")}, QDir::Files))
            QFile::remove(QStringLiteral("/tmp/") + file);
    }

    bool isValid() const { return m_dir.isValid(); }
    QString path(const QString& file) const { return m_dir.filePath(file); }

    // A unique program name for tag, linked to tgui-child in this folder.
    QString child(const QString& tag)
    {
        const QString name = QStringLiteral("s%1%2").arg(QCoreApplication::applicationPid()).arg(tag);
        QFile::link(childProgram(), m_dir.filePath(name));
        return name;
    }

    // The INI file: the supervisor's group with these keys, then groups of
    // children with their "AutoStartParameters".
    QString writeIni(const QStringList& ownKeys, const QList<QPair<QString, QString>>& parameters = {})
    {
        QString text = QLatin1Char('[') + QCoreApplication::applicationName() + QStringLiteral("]\n");
        for (const QString& key : ownKeys)
            text += key + QLatin1Char('\n');
        for (const auto& p : parameters)
            text += QStringLiteral("[%1]\nAutoStartParameters=%2\n").arg(p.first, p.second);
        const QString file = m_dir.filePath(QStringLiteral("apps.ini"));
        QFile ini(file);
        ini.open(QIODevice::WriteOnly | QIODevice::Truncate);
        ini.write(text.toUtf8());
        return file;
    }

    // Lines "started <pid> <args>" that children with --record wrote.
    QStringList runs(const QString& file = QStringLiteral("runs.txt")) const
    {
        QFile f(m_dir.filePath(file));
        if (!f.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(f.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

private:
    QTemporaryDir m_dir;
    QString m_previous;
};

inline QString readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

// guiLog lines of this process (without a log client they go to qDebug).
class LogCapture
{
public:
    LogCapture() { s_lines.clear(); qInstallMessageHandler(handler); }
    ~LogCapture() { qInstallMessageHandler(nullptr); }
    static bool has(const QString& line)
    {
        QMutexLocker lock(&s_mutex);
        return s_lines.contains(line);
    }
    static int count(const QString& line)
    {
        QMutexLocker lock(&s_mutex);
        return s_lines.count(line);
    }
    static QString all()
    {
        QMutexLocker lock(&s_mutex);
        return s_lines.join(QLatin1Char('\n'));
    }

private:
    static void handler(QtMsgType, const QMessageLogContext&, const QString& text)
    {
        QMutexLocker lock(&s_mutex);
        s_lines.append(text);
    }
    static inline QMutex s_mutex;
    static inline QStringList s_lines;
};
