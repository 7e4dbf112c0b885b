#pragma once
// One command-line style for every program: QCommandLineParser, --help and
// --version, and values checked before anything starts. A bad option or value
// is one line on standard error naming the option and what it wants, and exit
// code 2; --help and --version print to standard output and exit 0.
#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QHostAddress>
#include <QString>

namespace cmdline {

// Exit code for a command line that cannot be used.
enum { UsageError = 2 };

// Adds --help and --version (the library's version), parses the arguments of
// the running QCoreApplication and handles errors, --help and --version; it
// returns only when the program should go on.
void parse(QCommandLineParser& parser, const QString& description);

// Prints "<program>: <message>" and a pointer to --help on standard error;
// returns UsageError for the caller to exit with.
int usageError(const QString& message);

// The option's value as a whole decimal number from min to max. Otherwise a
// usageError line ("--port wants a whole number from 0 to 65535, not 'abc'")
// and false; *value is untouched when the option is not set.
bool number(const QCommandLineParser& parser, const QCommandLineOption& option, qint64 min,
            qint64 max, qint64* value);
bool number(const QCommandLineParser& parser, const QCommandLineOption& option, int min, int max,
            int* value);

// The option's value as a numeric IPv4 or IPv6 address; otherwise a usageError
// line and false.
bool address(const QCommandLineParser& parser, const QCommandLineOption& option,
             QHostAddress* value);

// "--name" or "-n": how the option is written in messages.
QString spelling(const QCommandLineOption& option);

}  // namespace cmdline
