#include "processes/ProcessCalls.h"

#include "platform/FileAccess.h"
#include "platform/ProcessControl.h"
#include "platform/ProcessTable.h"
#include "processes/ProcessTexts.h"

#include <QThread>

#include <algorithm>
#include <cerrno>
#include <csignal>

namespace {

// A process that /proc hides has no start time to check, so it is reached by its identifier alone.
int sendTo(const RunningProcess& process, int signal)
{
    return process.figuresKnown ? sendSignalToSame(process.id, process.startTicks, signal)
                                : sendSignal(process.id, signal);
}

} // namespace

namespace ProcessCalls {

std::optional<QString> executablePath(int pid)
{
    return executablePathOf(pid);
}

ProcessCallResult signal(const RunningProcess& process, int signal)
{
    if (process.id < 2)
        return ProcessCallResult::failed(ProcessTexts::cannotSignal());
    const int error = sendTo(process, signal);
    if (error == 0 || error == ESRCH)
        return ProcessCallResult::succeeded(error == ESRCH);
    if (error == EPERM)
        return ProcessCallResult::helperNeeded();
    return ProcessCallResult::failed(systemErrorSentence(error));
}

ProcessCallResult setPriority(const RunningProcess& process, PriorityBand band)
{
    if (process.id < 2)
        return ProcessCallResult::failed(ProcessTexts::cannotReprioritise());
    const int nice = PriorityBands::niceValue(band);
    const int error = process.figuresKnown ? setNiceValueOfSame(process.id, process.startTicks, nice)
                                           : setNiceValue(process.id, nice);
    if (error == 0 || error == ESRCH)
        return ProcessCallResult::succeeded(error == ESRCH);
    if (error == EPERM || error == EACCES)
        return ProcessCallResult::helperNeeded();
    return ProcessCallResult::failed(systemErrorSentence(error));
}

ProcessCallResult quit(
    const RunningProcess& process, const QList<RunningProcess>& appProcesses, std::chrono::milliseconds wait)
{
    if (!process.isRegularApp)
        return signal(process, SIGTERM);
    const ProcessCallResult own = signal(process, SIGTERM);
    if (own.kind != ProcessCallResult::Kind::success || own.alreadyEnded)
        return own;
    // The app's other processes may belong to it under other owners; those the kernel refuses are left to it.
    QList<ProcessIdentity> asked{process.identity()};
    for (const RunningProcess& member : appProcesses) {
        if (member.identity() == process.identity() || member.id < 2)
            continue;
        if (sendTo(member, SIGTERM) == 0)
            asked.append(member.identity());
    }
    const auto deadline = std::chrono::steady_clock::now() + wait;
    const auto anyLeft = [&asked] {
        return std::any_of(asked.cbegin(), asked.cend(), [](const ProcessIdentity& p) { return p.isRunning(); });
    };
    while (anyLeft()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return ProcessCallResult::failed(
                ProcessTexts::refusedToQuit(process.appName.isEmpty() ? process.name : process.appName));
        QThread::msleep(50);
    }
    return ProcessCallResult::succeeded();
}

} // namespace ProcessCalls
