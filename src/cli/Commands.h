#pragma once

#include <QStringList>
#include <QTextStream>

#include <optional>

// What a command gets: its own arguments (after the command name) and the two output streams.
struct CommandContext {
    QStringList arguments;
    QTextStream& out;
    QTextStream& err;
};

// Each command lives in its own file and returns its exit status.
int runActivityCommand(CommandContext& context);
int runAppsCommand(CommandContext& context);
int runScanCommand(CommandContext& context);
int runDuplicatesCommand(CommandContext& context);
int runUsageCommand(CommandContext& context);
int runTrashCommand(CommandContext& context);
int runPutBackCommand(CommandContext& context);
int runTrashSummaryCommand(CommandContext& context);
int runHelperCommand(CommandContext& context);
int runMaintenanceCommand(CommandContext& context);
int runStartupCommand(CommandContext& context);
int runProcessesCommand(CommandContext& context);
int runQuitCommand(CommandContext& context);
int runPriorityCommand(CommandContext& context);
int runMemoryCommand(CommandContext& context);
int runVaultCommand(CommandContext& context);

// A command's options are its arguments before the first "--"; after it every argument is a name or a path,
// even one that begins with a dash (so "velloru trash -- -file" means the file "-file").

// Removes `flag` from the options; true when it was there.
bool takeFlag(QStringList& arguments, const QString& flag);

// Removes `option` and its value ("--depth 2" or "--depth=2") from the options: nothing when the option isn't
// there, an empty text when its value is missing.
std::optional<QString> takeValue(QStringList& arguments, const QString& option);

// What is left once a command has taken its options: the names and paths in order, without the "--", and the
// first option left before it (one the command doesn't know), if any.
struct Operands {
    QStringList names;
    std::optional<QString> unknownOption;
};
Operands operands(const QStringList& arguments);

// For a command that takes no names: a sentence about the first argument it did not take ("unknown option
// “--yaml” — the only option is --json."), or nothing when every argument was taken. `options` names the
// command's options.
std::optional<QString> leftoverArgument(const QStringList& arguments, const QString& options);
