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

// The immutable flag (chattr +i) on one file while this lives; cleared again at the end, so the fixture
// tree can be removed even when the test stops early.
class ImmutableFlag {
public:
    explicit ImmutableFlag(QString path)
        : m_path(std::move(path))
    {
        int status = -1;
        const std::optional<QString> output
            = runTool(QStringLiteral("chattr"), {QStringLiteral("+i"), m_path}, &status);
        if (!output)
            m_failure = QStringLiteral("chattr is not installed");
        else if (status != 0)
            m_failure = output->trimmed().isEmpty() ? QStringLiteral("chattr exited with status %1").arg(status)
                                                    : output->trimmed();
    }
    ~ImmutableFlag()
    {
        if (isSet())
            runTool(QStringLiteral("chattr"), {QStringLiteral("-i"), m_path});
    }
    ImmutableFlag(const ImmutableFlag&) = delete;
    ImmutableFlag& operator=(const ImmutableFlag&) = delete;

    bool isSet() const { return m_failure.isEmpty(); }
    // What chattr said when it could not set the flag.
    const QString& failure() const { return m_failure; }

private:
    QString m_path;
    QString m_failure;
};
