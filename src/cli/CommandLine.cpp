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
};

void printHelp(QTextStream& out)
{
    out << "Usage: velloru [COMMAND] [OPTIONS]\n\n"
        << "Without a command Velloru opens its window. Commands:\n";
    for (const Command& command : commands)
        out << QStringLiteral("  %1\n      %2\n").arg(QLatin1String(command.usage), QLatin1String(command.summary));
    out << "\n  help       Shows this text.\n  --version  Shows the version.\n";
}

} // namespace

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
