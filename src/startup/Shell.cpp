#include "startup/Shell.h"

#include "common/Log.h"

#include <QProcess>

QString ShellResult::problem() const
{
    if (!started)
        return QStringLiteral("the program couldn’t be started");
    if (timedOut)
        return QStringLiteral("it didn’t answer in time");
    const QString words = QString::fromUtf8(errors).trimmed().section(QLatin1Char('\n'), -1);
    return words.isEmpty() ? QStringLiteral("it ended with status %1").arg(exitStatus) : words;
}

ShellResult Shell::run(const ToolCommand& command, std::chrono::milliseconds limit)
{
    ShellResult result;
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(command.program, command.arguments);
    if (!process.waitForStarted(int(limit.count()))) {
        logLine(QStringLiteral("startup command did not start program=%1").arg(logValue(command.program)));
        return result;
    }
    result.started = true;
    if (!process.waitForFinished(int(limit.count()))) {
        process.kill();
        process.waitForFinished(2000);
        result.timedOut = true;
        logLine(QStringLiteral("startup command timed out program=%1 arguments=%2")
                    .arg(logValue(command.program), logValue(command.arguments.join(u' '))));
        return result;
    }
    result.exitStatus = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.output = process.readAllStandardOutput();
    result.errors = process.readAllStandardError();
    return result;
}
