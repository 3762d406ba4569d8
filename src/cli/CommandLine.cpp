#include "cli/CommandLine.h"

#include "app/UserDefaults.h"
#include "cli/Commands.h"

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
    {"scan", "scan [--clean] [--json]",
        "Smart Scan: lists caches, logs, crash reports, saved app states and broken items with a grade and a "
        "reason, the safe ones ticked; with --clean moves exactly the ticked items to the Trash.",
        runScanCommand},
    {"apps", "apps [--json]", "Lists the installed apps with their identifier and where each comes from.",
        runAppsCommand},
    {"activity", "activity [--json]", "Lists the activity log, newest first, and the space cleaned so far.",
        runActivityCommand},
    {"duplicates", "duplicates [ROOT…] [--min-size N] [--json]",
        "Finds files with identical content (your own folders by default) and lists each set with the copy to "
        "keep.",
        runDuplicatesCommand},
    {"usage", "usage [PATH] [--depth N] [--json]",
        "Measures a folder (the current one by default) and lists its biggest folders with sizes and shares.",
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

} // namespace

bool takeFlag(QStringList& arguments, const QString& flag)
{
    return arguments.removeAll(flag) > 0;
}

bool isCommandLineInvocation(int argc, char** argv)
{
    if (argc < 2)
        return false;
    const char* first = argv[1];
    return first[0] != '-' || std::strcmp(first, "--help") == 0 || std::strcmp(first, "--version") == 0;
}

int runCommandLine(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    setApplicationIdentity();
    QTextStream out(stdout);
    QTextStream err(stderr);

    QStringList arguments = QCoreApplication::arguments().mid(1);
    const QString name = arguments.takeFirst();
    if (name == QLatin1String("help") || name == QLatin1String("--help")) {
        printHelp(out);
        return 0;
    }
    if (name == QLatin1String("--version")) {
        out << "Velloru " << QCoreApplication::applicationVersion() << '\n';
        return 0;
    }
    for (const Command& command : commands) {
        if (name == QLatin1String(command.name)) {
            CommandContext context{arguments, out, err};
            return command.run(context);
        }
    }
    err << QStringLiteral("velloru: there is no command “%1” — run “velloru help” to see the commands.\n").arg(name);
    return 2;
}
