// tgui-logctl: edits the shared log configuration, so that the level or the
// statistics switch of a running process changes at its next message.
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QStringList>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ProgramCommandLine.h"
#include "log/UtilLog.h"
#include "log/UtilLogMsg.h"

namespace {
bool number(const char* text, long min, long max, int* value)
{
    char* end = nullptr;
    errno = 0;
    const long n = strtol(text, &end, 10);
    if (end == text || *end || errno || n < min || n > max)
        return false;
    *value = (int)n;
    return true;
}

const UtilLogSharedEntryT* findEntry(const char* label, int instance)
{
    const UtilLogSharedConfigT* config = utilLogSharedConfigGet();
    const uint32_t word = utilLogSharedLabelWord(label);
    for (const UtilLogSharedEntryT& entry : config->entries) {
        if (entry.label == word && entry.instance == (uint32_t)instance)
            return &entry;
    }
    return nullptr;
}

// Arguments a command wants after its name.
int argumentsOf(const char* command)
{
    if (!strcmp(command, "level") || !strcmp(command, "stats"))
        return 3;
    if (!strcmp(command, "get"))
        return 2;
    if (!strcmp(command, "init") || !strcmp(command, "list") || !strcmp(command, "remove"))
        return 0;
    return -1;
}
}  // namespace

int main(int argc, char** argv)
{
    // A command takes milliseconds and has no loop to stop: SIGTERM and SIGINT
    // wait until it is done (and end with it), so that a stop never leaves the
    // shared configuration half written.
    sigset_t stops;
    sigemptyset(&stops);
    sigaddset(&stops, SIGTERM);
    sigaddset(&stops, SIGINT);
    sigprocmask(SIG_BLOCK, &stops, nullptr);

    QCoreApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("tgui-logctl"));

    QCommandLineParser cli;
    // Options only before the command: "level tgui 0 -1" is a bad level, not an option.
    cli.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    QCommandLineOption keyOption({"k", "key"},
                                 "Segment <key>, decimal or 0x hex (default: $TGUI_LOG_SHM_KEY or "
                                 "0x832D88F9).",
                                 "key");
    cli.addOption(keyOption);
    cli.addPositionalArgument(QStringLiteral("command"),
                              QStringLiteral("init                          create the shared segment\n"
                                             "level LABEL INSTANCE LEVEL    set the level (0..7) of a log\n"
                                             "stats LABEL INSTANCE on|off   switch statistics of a log\n"
                                             "get LABEL INSTANCE            print the level of a log\n"
                                             "list                          print every entry\n"
                                             "remove                        remove the shared segment"),
                              QStringLiteral("command [arguments]"));
    cmdline::parse(cli, QStringLiteral("Changes the log levels and statistics of running TGUILib "
                                       "processes through the shared log configuration."));
    if (cli.isSet(keyOption)) {
        const QByteArray text = cli.value(keyOption).toLatin1();
        char* end = nullptr;
        errno = 0;
        const unsigned long long key = strtoull(text.constData(), &end, 0);
        if (text.isEmpty() || *end || errno || key == 0 || key > 0xFFFFFFFFull || text.startsWith('-'))
            return cmdline::usageError(
                QStringLiteral("--key wants a number from 1 to 0xFFFFFFFF, decimal or 0x hex, not '%1'")
                    .arg(cli.value(keyOption)));
        setenv("TGUI_LOG_SHM_KEY", text.constData(), 1);
    }

    // Everything is checked before the segment is touched.
    const QStringList positional = cli.positionalArguments();
    if (positional.isEmpty())
        return cmdline::usageError(QStringLiteral("a command is missing"));
    const QByteArray commandText = positional.first().toLocal8Bit();
    const char* command = commandText.constData();
    const int wanted = argumentsOf(command);
    if (wanted < 0)
        return cmdline::usageError(QStringLiteral("unknown command '%1'").arg(positional.first()));
    if (positional.size() - 1 != wanted)
        return cmdline::usageError(QStringLiteral("%1 wants %2 arguments, not %3")
                                       .arg(positional.first())
                                       .arg(wanted)
                                       .arg(positional.size() - 1));
    QByteArray label;
    int instance = 0;
    int level = 0;
    bool statsOn = false;
    if (wanted >= 2) {
        label = positional.at(1).toLocal8Bit();
        if (label.isEmpty())
            return cmdline::usageError(QStringLiteral("LABEL is empty"));
        if (!number(positional.at(2).toLatin1().constData(), 0, 0x7fffffff, &instance))
            return cmdline::usageError(
                QStringLiteral("INSTANCE wants a whole number from 0 to 2147483647, not '%1'").arg(positional.at(2)));
    }
    if (!strcmp(command, "level")
        && !number(positional.at(3).toLatin1().constData(), 0, UTIL_LOG_LEVEL_NEVER, &level))
        return cmdline::usageError(
            QStringLiteral("LEVEL wants a whole number from 0 to %1, not '%2'").arg(UTIL_LOG_LEVEL_NEVER).arg(positional.at(3)));
    if (!strcmp(command, "stats")) {
        if (positional.at(3) != QLatin1String("on") && positional.at(3) != QLatin1String("off"))
            return cmdline::usageError(QStringLiteral("stats wants on or off, not '%1'").arg(positional.at(3)));
        statsOn = positional.at(3) == QLatin1String("on");
    }

    if (strcmp(command, "remove") == 0)
        return utilLogSharedConfigRemove() == 0 ? 0 : 1;
    if (utilLogSharedConfigInit() != 0)
        return 1;
    if (strcmp(command, "init") == 0)
        return 0;
    if (strcmp(command, "level") == 0)
        return utilLogSharedConfigActiveLevelSet(label.constData(), instance, level) == 0 ? 0 : 1;
    if (strcmp(command, "stats") == 0) {
        const UtilLogSharedEntryT* entry = findEntry(label.constData(), instance);
        const int kept = entry ? (int)entry->level : 4;
        return utilLogSharedConfigEntryAdd(label.constData(), instance, kept, statsOn) >= 0 ? 0 : 1;
    }
    if (strcmp(command, "get") == 0) {
        const UtilLogSharedEntryT* entry = findEntry(label.constData(), instance);
        if (!entry) {
            fprintf(stderr, "tgui-logctl: no entry for %s %d\n", label.constData(), instance);
            return 1;
        }
        printf("%u %s\n", entry->level, entry->statsEnabled ? "on" : "off");
        return 0;
    }
    // list
    const UtilLogSharedConfigT* config = utilLogSharedConfigGet();
    printf("generation %u\n", config->generation);
    for (const UtilLogSharedEntryT& entry : config->entries) {
        if (!entry.label)
            continue;
        char name[5] = {};
        for (int i = 0; i < 4; ++i)
            name[i] = (char)((entry.label >> (8 * i)) & 0xff);
        printf("%-4s %u level %u stats %s\n", name, entry.instance, entry.level,
               entry.statsEnabled ? "on" : "off");
    }
    return 0;
}
