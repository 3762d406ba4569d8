#pragma once

#include "platform/ToolCommand.h"

#include <QByteArray>
#include <QString>

#include <chrono>

// What a command answered. A command that could not start, or that was still running at its limit (it is
// killed then), has not succeeded, and its output is discarded.
struct ShellResult {
    bool started = false;
    bool timedOut = false;
    int exitStatus = -1;
    QByteArray output; // standard output
    QByteArray errors; // standard error, for the failure sentence

    bool succeeded() const { return started && !timedOut && exitStatus == 0; }
    // The tool's own last words on standard error, or why it did not answer.
    QString problem() const;
};

// Runs a command-line tool and waits for it, at most `limit`. Safe on any thread.
namespace Shell {
ShellResult run(const ToolCommand& command, std::chrono::milliseconds limit);
} // namespace Shell
