#include "supervision/CTavoApplication.h"

#include <QFileInfo>
#include <QPointer>
#include <QSettings>
#include <fcntl.h>
#include <unistd.h>

#include "core/TavoGlobals.h"
#include "log/GuiLog.h"
#include "tools/TavoTools.h"

namespace {
int s_restartDelay = 4000;

// Redirects fd to the file at path (already truncated by the parent for this
// run). Only async-signal-safe calls: this runs between fork and exec.
void redirect(const QByteArray& path, int fd)
{
    if (path.isEmpty())
        return;
    const int file = ::open(path.constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (file < 0)
        return;
    ::dup2(file, fd);
    ::close(file);
}

const char* errorText(QProcess::ProcessError error)
{
    switch (error) {
    case QProcess::FailedToStart: return "The process failed to start";
    case QProcess::Crashed: return "The process has crashed";
    case QProcess::Timedout: return "The last waitFor.. function timed out";
    case QProcess::ReadError: return "An error occurred when attempting to read from the process";
    case QProcess::WriteError: return "An error occurred when attempting to write to the process";
    case QProcess::UnknownError: break;
    }
    return "An unknown error occurred";
}

// A value with a comma comes back from QSettings as a list: join it again.
QString textValue(QSettings* settings, const QString& key)
{
    if (!settings)
        return QString();
    const QVariant value = settings->value(key);
    if (value.type() == QVariant::StringList)
        return value.toStringList().join(QLatin1Char(','));
    return value.toString();
}
}  // namespace

CTavoApplication::CTavoApplication(unsigned int index, const QString& spec, QSettings* settings,
                                   QObject* parent, bool alwaysRestart)
    : QProcess(parent), m_name(spec), m_index(index), m_alwaysRestart(alwaysRestart)
{
    const int open = spec.indexOf(QLatin1Char('('));
    if (open >= 0) {
        QString option = spec.mid(open);
        option.remove(QLatin1Char('(')).remove(QLatin1Char(')'));
        m_blocked = option == QLatin1String("blocked");
        m_console = option == QLatin1String("console");
        m_disabled = option == QLatin1String("disabled");
        m_name = spec.left(open);
    }
    m_args = textValue(settings, m_name + QLatin1String("/AutoStartParameters")).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    m_path = QLatin1String("./") + m_name;
    m_valid = QFileInfo(m_path).isFile();
    setProcessChannelMode(QProcess::ForwardedChannels);
    connect(this, &QProcess::errorOccurred, this, &CTavoApplication::onError);
    connect(this, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this, &CTavoApplication::onProcessFinished);
}

CTavoApplication::~CTavoApplication()
{
    // QProcess's destructor would kill and reap the child and report it to
    // slots of this object, which is gone by then.
    disconnect(this, nullptr, this, nullptr);
    if (state() != QProcess::NotRunning) {
        kill();
        waitForFinished(2000);
    }
}

int CTavoApplication::restartDelay()
{
    return s_restartDelay;
}

void CTavoApplication::setRestartDelay(int msec)
{
    s_restartDelay = msec < 0 ? 0 : msec;
}

void CTavoApplication::setLogFiles(const QString& stem)
{
    const QByteArray name = stem.toUtf8();
    const QString err = QString::asprintf("/tmp/%s-err-%d.log", name.constData(), m_restartCount);
    const QString out = QString::asprintf("/tmp/%s-out-%d.log", name.constData(), m_restartCount);
    setStandardErrorFile(err, QIODevice::Truncate);
    setStandardOutputFile(out, QIODevice::Truncate);
    m_errPath = err.toLocal8Bit();
    m_outPath = out.toLocal8Bit();
}

void CTavoApplication::setupChildProcess()
{
    redirect(m_outPath, STDOUT_FILENO);
    redirect(m_errPath, STDERR_FILENO);
}

void CTavoApplication::start()
{
    if (!m_valid) {
        guiLog(5, "unable to start application %s because it's invalid", qPrintable(m_name));
    } else if (state() == QProcess::NotRunning) {
        QProcess::start(m_path, m_args, QIODevice::ReadWrite);
    }
    emit unlocked(int(m_index));
}

void CTavoApplication::shutDown()
{
    m_alwaysRestart = false;
    m_shutDown = true;
    disconnect(this, &QProcess::errorOccurred, this, &CTavoApplication::onError);
    disconnect(this, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this, &CTavoApplication::onProcessFinished);
    terminate();
}

void CTavoApplication::onError(QProcess::ProcessError error)
{
    if (bRebootInitiated) {
        guiLog(3, "Ignored %s start as phone is rebooting.", qPrintable(m_name));
        return;
    }
    guiLog(5, "CTavoApplication::onError for %s, error is %s", qPrintable(m_name), errorText(error));
}

void CTavoApplication::onProcessFinished(int exitCode, QProcess::ExitStatus exitStatus)
{
    // Qt reports the signal that ended a crashed child as its exit code; the
    // restart rules count a crash as exit code 0, so that a child ended by a
    // signal (terminateApplication, a kill) is restarted only when
    // "AlwaysRestart" asks for it.
    if (exitStatus == QProcess::CrashExit) {
        guiLog(2, "%s was ended by signal %d", qPrintable(m_name), exitCode);
        exitCode = 0;
    }
    onFinished(exitCode, exitStatus);
}

void CTavoApplication::onFinished(int exitCode, QProcess::ExitStatus exitStatus)
{
    if (bRebootInitiated) {
        guiLog(3, "Ignored %s start as phone is rebooting.", qPrintable(m_name));
        return;
    }
    if (exitStatus == QProcess::NormalExit)
        guiLog(5, "%s has been gracefully shutdown", qPrintable(m_name));
    else
        guiLog(3, "%s has caught an exception and will be restarted, exit code = %d", qPrintable(m_name), exitCode);
    // A console program that failed is left for its user.
    if (!m_alwaysRestart && !(exitCode != 0 && !m_console))
        return;
    QPointer<CTavoApplication> self(this);
    tavoToolsDelay(s_restartDelay);
    // The supervisor may have gone, or the phone started to go down, meanwhile.
    if (!self || bRebootInitiated || m_shutDown)
        return;
    guiLog(5, "%s is being restarted", qPrintable(m_name));
    ++m_restartCount;
    setLogFiles(m_name);
    start();
}
