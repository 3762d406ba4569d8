#pragma once

#include "removal/AuditLog.h"
#include "removal/TrashRecorder.h"
#include "removal/TrashRequests.h"
#include "removal/Trasher.h"

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

// Moves the paths to the Trash as the front ends do, journaling each move, and records the batch in `log`.
inline TrashResult trashAndRecord(AuditLog& log, const QStringList& paths)
{
    TrashRecorder recorder(log.journal(), QStringLiteral("Trash"));
    TrashResult result = Trasher().moveToTrash(TrashRequests::measured(paths), &recorder);
    log.record(recorder);
    return result;
}
