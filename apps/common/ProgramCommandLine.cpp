#include "ProgramCommandLine.h"

#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>

namespace cmdline {

void parse(QCommandLineParser& parser, const QString& description)
{
    QCoreApplication::setApplicationVersion(QStringLiteral(TGUI_VERSION_STRING));
    parser.setApplicationDescription(description);
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    // Qt's own process() ends with exit code 1 on an error; ours is 2.
    if (!parser.parse(QCoreApplication::arguments()))
        std::exit(usageError(parser.errorText()));
    if (parser.isSet(help))
        parser.showHelp(0);
    if (parser.isSet(version))
        parser.showVersion();
}

int usageError(const QString& message)
{
    const QByteArray program = QCoreApplication::applicationName().toLocal8Bit();
    std::fprintf(stderr, "%s: %s\n%s: see --help for the options\n", program.constData(),
                 message.toLocal8Bit().constData(), program.constData());
    std::fflush(stderr);
    return UsageError;
}

QString spelling(const QCommandLineOption& option)
{
    const QString name = option.names().constLast();
    return (name.size() > 1 ? QStringLiteral("--") : QStringLiteral("-")) + name;
}

bool number(const QCommandLineParser& parser, const QCommandLineOption& option, qint64 min,
            qint64 max, qint64* value)
{
    if (!parser.isSet(option))
        return true;
    const QString text = parser.value(option);
    bool ok = false;
    const qint64 n = text.trimmed().toLongLong(&ok, 10);
    if (!ok || n < min || n > max) {
        usageError(QStringLiteral("%1 wants a whole number from %2 to %3, not '%4'")
                       .arg(spelling(option))
                       .arg(min)
                       .arg(max)
                       .arg(text));
        return false;
    }
    *value = n;
    return true;
}

bool number(const QCommandLineParser& parser, const QCommandLineOption& option, int min, int max,
            int* value)
{
    qint64 wide = *value;
    if (!number(parser, option, qint64(min), qint64(max), &wide))
        return false;
    *value = int(wide);
    return true;
}

bool address(const QCommandLineParser& parser, const QCommandLineOption& option,
             QHostAddress* value)
{
    if (!parser.isSet(option))
        return true;
    const QString text = parser.value(option);
    QHostAddress parsed;
    if (!parsed.setAddress(text.trimmed())) {
        usageError(QStringLiteral("%1 wants a numeric IP address such as 127.0.0.1 or ::1, not '%2'")
                       .arg(spelling(option), text));
        return false;
    }
    *value = parsed;
    return true;
}

}  // namespace cmdline
