#pragma once

#include <QStringList>

#include <chrono>

// How one command run by the helper ended.
struct CommandOutcome {
    bool ran = false; // false when the program is not installed
    bool succeeded = false;
    QString problem; // what went wrong, as a clause ("journalctl failed (exit status 1)")
};

// Runs one command without a shell, killing it at the time limit.
CommandOutcome runCommand(const QStringList& command, std::chrono::seconds timeout);
