#include "cli/CommandLine.h"

#include "app/UserDefaults.h"
#include "cli/Commands.h"
#include "cli/WindowOptions.h"
#include "common/LocalPath.h"

#include <QCoreApplication>

#include <cstring>

namespace {

struct Command {
    const char* name;
    const char* usage;
    const char* summary;
    int (*run)(CommandContext&);
};

const Command commands[] = {
    {"scan", "scan [--clean] [--json] | scan --exclude PATH",
        "Smart Scan: lists caches, logs, crash reports, saved app states and broken items with a grade and a "
        "reason, the safe ones ticked; with --clean moves exactly the ticked items to the Trash; --exclude "
        "leaves a file or folder out of every later scan.",
        runScanCommand},
    {"apps", "apps [--json]", "Lists the installed apps with their identifier and where each comes from.",
        runAppsCommand},
    {"activity", "activity [--json]", "Lists the activity log, newest first, and the space cleaned so far.",
        runActivityCommand},
    {"duplicates", "duplicates [ROOT…] [--min-size N] [--move-ticked] [--json]",
        "Finds files with identical content (your own folders by default) and lists each set with the copy to "
        "keep; with --move-ticked moves exactly the ticked copies into the duplicates vault.",
        runDuplicatesCommand},
    {"vault", "vault list|verify|restore ID…|restore-all|empty [--yes] [--json]",
        "Lists the copies held in the duplicates vault, checks them against the copies that were kept, puts "
        "them back, or moves the vault to the Trash.",
        runVaultCommand},
    {"usage", "usage [PATH] [--depth N] [--largest N] [--json]",
        "Measures a folder (the current one by default) and lists its biggest folders with sizes and shares, or "
        "with --largest N its N largest files.",
        runUsageCommand},
    {"trash", "trash PATH… [--json]", "Moves files and folders to the Trash, each with its put-back record.",
        runTrashCommand},
    {"put-back", "put-back ENTRY-ID",
        "Puts an item back from the Trash, using its activity entry (an id or the "
        "start of one, as “velloru activity” shows).",
        runPutBackCommand},
    {"trash-summary", "trash-summary [--json]", "Shows what the Trash folders of every mounted volume hold.",
        runTrashSummaryCommand},
    {"helper", "helper status|install|uninstall",
        "Shows whether the privileged helper is installed and in step with this Velloru, installs (or updates) it "
        "— you approve once as an administrator — or removes it.",
        runHelperCommand},
    {"maintenance", "maintenance [TASK]", "Lists the one-click maintenance tasks, or runs one through the helper.",
        runMaintenanceCommand},
    {"startup", "startup list [--json] | startup off|on|remove ID [--json]",
        "Lists what starts by itself at login (apps, background agents, system daemons) with its state, or "
        "switches one off or on, or moves it to the Trash.",
        runStartupCommand},
    {"processes", "processes [--all] [--sort cpu|memory] [--json]",
        "Lists the running processes with their owner, CPU share, memory and priority; --all adds the ones owned "
        "by the system.",
        runProcessesCommand},
    {"quit", "quit PID [--force]",
        "Asks a process (or the app it is the main process of) to quit; --force ends it at once.", runQuitCommand},
    {"priority", "priority PID high|normal|low", "Moves a process to another priority.", runPriorityCommand},
    {"memory", "memory [--json]", "Shows how memory is used, how pressed the system is, and the apps using the most.",
        runMemoryCommand},
};

void printHelp(QTextStream& out)
{
    out << "Usage: velloru [COMMAND] [OPTIONS]\n\n"
        << "Without a command Velloru opens its window. Commands:\n";
    for (const Command& command : commands)
        out << QStringLiteral("  %1\n      %2\n")
                   .arg(QString::fromUtf8(command.usage), QString::fromUtf8(command.summary));
    out << "\n  help       Shows this text.\n  --version  Shows the version.\n";
}

// The options of a command line are the arguments before the first "--"; `end` is where they stop.
qsizetype optionsEnd(const QStringList& arguments)
{
    const qsizetype end = arguments.indexOf(QStringLiteral("--"));
    return end < 0 ? arguments.size() : end;
}

bool isOption(const QString& argument)
{
    return argument.size() > 1 && argument.startsWith(QLatin1Char('-'));
}

// The arguments exactly as given: a name that isn't valid UTF-8 has no exact text form, so it is refused with
// a sentence on `err` rather than turned into the name of some other file.
std::optional<QStringList> decodedArguments(int argc, char** argv, QTextStream& err)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        const std::optional<QString> argument = LocalPath::decode(argv[i]);
        if (!argument) {
            err << QStringLiteral("velloru: the argument “%1” isn’t valid UTF-8 — rename the file or folder so that "
                                  "its name is, then try again.\n")
                       .arg(LocalPath::printable(argv[i]));
            return std::nullopt;
        }
        arguments.append(*argument);
    }
    return arguments;
}

} // namespace

bool takeFlag(QStringList& arguments, const QString& flag)
{
    bool taken = false;
    for (qsizetype i = optionsEnd(arguments) - 1; i >= 0; --i) {
        if (arguments[i] == flag) {
            arguments.removeAt(i);
            taken = true;
        }
    }
    return taken;
}

std::optional<QString> takeValue(QStringList& arguments, const QString& option)
{
    const QString joined = option + QLatin1Char('=');
    for (qsizetype i = 0; i < optionsEnd(arguments); ++i) {
        if (arguments[i].startsWith(joined))
            return arguments.takeAt(i).mid(joined.size());
        if (arguments[i] == option) {
            arguments.removeAt(i);
            return i < optionsEnd(arguments) ? arguments.takeAt(i) : QString();
        }
    }
    return std::nullopt;
}

Operands operands(const QStringList& arguments)
{
    const qsizetype end = optionsEnd(arguments);
    Operands left;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        if (i == end)
            continue; // the "--" itself
        if (i > end || !isOption(arguments[i]))
            left.names.append(arguments[i]);
        else if (!left.unknownOption)
            left.unknownOption = arguments[i];
    }
    return left;
}

std::optional<QString> leftoverArgument(const QStringList& arguments, const QString& options)
{
    const Operands left = operands(arguments);
    if (left.unknownOption)
        return QStringLiteral("unknown option “%1” — %2.").arg(*left.unknownOption, options);
    if (!left.names.isEmpty())
        return QStringLiteral("unknown argument “%1” — %2.").arg(left.names.first(), options);
    return std::nullopt;
}

bool isCommandLineInvocation(int argc, char** argv)
{
    if (argc < 2)
        return false;
    const char* first = argv[1];
    return first[0] != '-' || std::strcmp(first, "--help") == 0 || std::strcmp(first, "--version") == 0
        || readWindowArguments(argc, argv).unknown;
}

int runCommandLine(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    setApplicationIdentity();
    QTextStream out(stdout);
    QTextStream err(stderr);

    std::optional<QStringList> arguments = decodedArguments(argc, argv, err);
    if (!arguments)
        return 2;
    const QString name = arguments->takeFirst();
    if (name == QLatin1String("help") || name == QLatin1String("--help")) {
        printHelp(out);
        return 0;
    }
    if (name == QLatin1String("--version")) {
        out << "Velloru " << QCoreApplication::applicationVersion() << '\n';
        return 0;
    }
    if (name.startsWith(QLatin1Char('-'))) {
        // Only Qt's own options may come before a command; anything else is a mistake, not a window to open.
        const std::optional<std::string_view> unknown = readWindowArguments(argc, argv).unknown;
        err << QStringLiteral("velloru: “%1” is neither a command nor an option of the window — run “velloru "
                              "help” to see the commands, and put a command’s options after it.\n")
                   .arg(QString::fromUtf8(unknown.value_or(argv[1])));
        return 2;
    }
    for (const Command& command : commands) {
        if (name == QLatin1String(command.name)) {
            CommandContext context{*arguments, out, err};
            return command.run(context);
        }
    }
    err << QStringLiteral("velloru: there is no command “%1” — run “velloru help” to see the commands.\n").arg(name);
    return 2;
}
