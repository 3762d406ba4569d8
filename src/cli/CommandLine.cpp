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
    {"activity", "activity [--json]", "Lists the activity log, newest first, and the space cleaned so far.",
        runActivityCommand},
    {"trash", "trash PATH… [--json]", "Moves files and folders to the Trash, each with its put-back record.",
        runTrashCommand},
    {"put-back", "put-back ENTRY-ID", "Puts an item back from the Trash, using its activity entry (an id or the "
                                      "start of one, as “velloru activity” shows).",
        runPutBackCommand},
    {"trash-summary", "trash-summary [--json]", "Shows what the Trash folders of every mounted volume hold.",
        runTrashSummaryCommand},
};

void printHelp(QTextStream& out)
{
    out << "Usage: velloru [COMMAND] [OPTIONS]\n\n"
        << "Without a command Velloru opens its window. Commands:\n";
    for (const Command& command : commands)
        out << QStringLiteral("  %1\n      %2\n").arg(QString::fromUtf8(command.usage), QString::fromUtf8(command.summary));
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
