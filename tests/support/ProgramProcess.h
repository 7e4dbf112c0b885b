#pragma once
// A program of this build as a real child process, as the tests of several
// folders start them (tgui-core, tgui-dbs): started at once, its standard
// output and error collected apart, stopped with SIGTERM when it goes.
#include <QElapsedTimer>
#include <QProcess>
#include <QtTest>

class ProgramProcess
{
public:
    ProgramProcess(const QString& name, const QStringList& args)
    {
        process.setProgram(qEnvironmentVariable("TGUI_BIN_DIR", TGUI_BIN_DIR) + "/" + name);
        process.setArguments(args);
        process.start();
    }
    ~ProgramProcess() { stop(); }
    ProgramProcess(const ProgramProcess&) = delete;
    ProgramProcess& operator=(const ProgramProcess&) = delete;

    // All of standard output (error) so far.
    QString out()
    {
        stdOut += QString::fromUtf8(process.readAllStandardOutput());
        return stdOut;
    }
    QString err()
    {
        stdErr += QString::fromUtf8(process.readAllStandardError());
        return stdErr;
    }
    // Whether `text` shows on standard output within `ms`, events served meanwhile.
    bool waitOut(const QString& text, int ms = 10000)
    {
        QElapsedTimer t;
        t.start();
        while (!out().contains(text) && t.elapsed() < ms)
            QTest::qWait(10);
        return out().contains(text);
    }
    // The port of the program's "LISTENING <port>" line (tgui-core, tgui-soapd); 0 if none came.
    quint16 listeningPort(int ms = 10000)
    {
        if (!waitOut(QStringLiteral("LISTENING "), ms))
            return 0;
        const QString text = out();
        const int at = text.indexOf(QStringLiteral("LISTENING ")) + 10;
        int end = at;
        while (end < text.size() && text.at(end).isDigit())
            ++end;
        return quint16(text.mid(at, end - at).toUInt());
    }
    // SIGTERM; the exit code, or -1 for a crash or a process that would not stop.
    int stop()
    {
        if (process.state() == QProcess::NotRunning)
            return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        process.terminate();
        if (!process.waitForFinished(10000)) {
            process.kill();
            process.waitForFinished(3000);
            return -1;
        }
        err();
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    QProcess process;
    QString stdOut, stdErr;
};
