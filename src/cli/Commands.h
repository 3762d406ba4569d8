#pragma once

#include <QStringList>
#include <QTextStream>

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
int runProcessesCommand(CommandContext& context);
int runQuitCommand(CommandContext& context);
int runPriorityCommand(CommandContext& context);
int runMemoryCommand(CommandContext& context);

// Removes `flag` from the arguments; true when it was there.
bool takeFlag(QStringList& arguments, const QString& flag);
