#include "helper/daemon/CommandRunner.h"

#include "platform/ProcessControl.h"

#include <QProcess>
#include <QStandardPaths>

#include <csignal>

CommandOutcome runCommand(const QStringList& command, std::chrono::seconds timeout)
{
    const QString program = QStandardPaths::findExecutable(command.first());
    if (program.isEmpty())
        return {};
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    // A tool may start helpers of its own; at the time limit they go with it.
    startInGroupOfItsOwn(process);
    process.start(program, command.mid(1));
    if (!process.waitForFinished(int(std::chrono::milliseconds(timeout).count()))) {
        signalGroup(process.processId(), SIGKILL);
        process.waitForFinished(2000);
        return {true, false, QStringLiteral("%1 didn’t finish in time").arg(command.first())};
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return {true, false, QStringLiteral("%1 failed (exit status %2)").arg(command.first()).arg(process.exitCode())};
    return {true, true, {}};
}
