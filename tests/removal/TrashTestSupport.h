#pragma once

#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>

// Runs a tool that is not ours (trash-cli, gio, chattr …). Nothing when the tool is not installed.
inline std::optional<QString> runTool(const QString& program, const QStringList& arguments, int* status = nullptr)
{
    if (QStandardPaths::findExecutable(program).isEmpty())
        return std::nullopt;
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(60'000))
        process.kill();
    if (status)
        *status = process.exitCode();
    return QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError());
}
