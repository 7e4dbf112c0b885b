#pragma once
#include "tgui_export.h"
// One child process of the supervisor: an entry of the start list such as
// "tgui-dbs" or "browser(blocked)", started as "./<name>" with the arguments of
// its own "AutoStartParameters", restarted by its rules when it ends, each run
// logging to files of its own ("/tmp/<name>-out-<run>.log", "-err-").
#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

class QSettings;

class TGUI_EXPORT CTavoApplication : public QProcess
{
    Q_OBJECT
public:
    // spec: the entry of the start list, a name optionally followed by one
    // option in parentheses: "blocked", "console" or "disabled".
    CTavoApplication(unsigned int index, const QString& spec, QSettings* settings, QObject* parent,
                     bool alwaysRestart);
    ~CTavoApplication() override;

    // Starts the program unless it runs already; a missing program is logged.
    // Either way emits unlocked(index), so that a chain of starts goes on.
    void start();
    // Ends the process for good: no restart, no more error or finish handling.
    void shutDown();

    // The standard output and error files of the coming run, named after
    // stem and the restart count, truncated when the run starts.
    void setLogFiles(const QString& stem);
    QString standardOutputPath() const { return QString::fromLocal8Bit(m_outPath); }
    QString standardErrorPath() const { return QString::fromLocal8Bit(m_errPath); }

    const QStringList& args() const { return m_args; }
    const QString& name() const { return m_name; }
    unsigned int index() const { return m_index; }
    bool isBlocked() const { return m_blocked; }
    bool isConsole() const { return m_console; }
    bool isDisabled() const { return m_disabled; }
    bool isValid() const { return m_valid; }
    const QString& path() const { return m_path; }
    bool alwaysRestart() const { return m_alwaysRestart; }
    int restartCount() const { return m_restartCount; }

    // Milliseconds between the end of a run and the restart; 4000 unless a
    // test sets another value.
    static int restartDelay();
    static void setRestartDelay(int msec);

signals:
    void unlocked(int index);

public slots:
    void onError(QProcess::ProcessError error);
    void onFinished(int exitCode, QProcess::ExitStatus exitStatus);

protected:
    // In the child: standard output and error into the run's files. Qt leaves
    // a forwarded channel alone even when a file is set for it.
    void setupChildProcess() override;

private slots:
    void onProcessFinished(int exitCode, QProcess::ExitStatus exitStatus);

private:
    QStringList m_args;
    QString m_name;
    unsigned int m_index;
    bool m_blocked = false;
    bool m_console = false;
    bool m_disabled = false;
    bool m_valid = false;
    QString m_path;
    bool m_alwaysRestart;
    int m_restartCount = 0;
    // Set by shutDown: a restart already waiting does not happen.
    bool m_shutDown = false;
    // Encoded once in the parent: the child may not allocate.
    QByteArray m_outPath;
    QByteArray m_errPath;
};
