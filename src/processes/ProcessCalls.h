#pragma once

#include "processes/PriorityBand.h"
#include "processes/RunningProcess.h"

#include <QList>
#include <QString>

#include <chrono>
#include <optional>

// The answer of one call on a process.
struct ProcessCallResult {
    enum class Kind {
        success,
        needsHelper, // the kernel refused for lack of permission: the helper has to repeat the call
        failure,
    };
    Kind kind = Kind::success;
    QString failure;           // the sentence for the row, when it failed
    bool alreadyEnded = false; // a success because the process had gone before it was reached

    static ProcessCallResult succeeded(bool alreadyEnded = false) { return {Kind::success, {}, alreadyEnded}; }
    static ProcessCallResult helperNeeded() { return {Kind::needsHelper, {}, false}; }
    static ProcessCallResult failed(QString sentence) { return {Kind::failure, std::move(sentence), false}; }
};

// The calls on processes that the kernel answers directly. They block (a quit waits for the app to go) and
// run on any thread. Identifiers below 2 are refused before any system call, and a process that has gone,
// or whose identifier now belongs to a later process, counts as handled and is never touched.
namespace ProcessCalls {

// How long an app is given to quit.
inline constexpr std::chrono::milliseconds quitWait{5000};

// Where the process's program lies; nothing when it cannot be read.
std::optional<QString> executablePath(int pid);

ProcessCallResult signal(const RunningProcess& process, int signal);
ProcessCallResult setPriority(const RunningProcess& process, PriorityBand band);
// A process that is not an app's own sends signal 15 as above. An app's own process asks the app to quit:
// signal 15 to each of `appProcesses` (the app's processes, its own included), then up to `wait` for them to
// go; one still there makes "<app> refused to quit.".
ProcessCallResult quit(
    const RunningProcess& process, const QList<RunningProcess>& appProcesses, std::chrono::milliseconds wait);

} // namespace ProcessCalls
