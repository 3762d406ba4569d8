#include "helper/MaintenanceRunner.h"

#include "helper/HelperManager.h"
#include "platform/MaintenanceCommands.h"
#include "removal/AuditLog.h"

#include <QPointer>
#include <QStorageInfo>

LiveReading readLiveMeter()
{
    const QStorageInfo root(QStringLiteral("/"));
    return {root.isValid() ? std::optional<qint64>(root.bytesAvailable()) : std::nullopt, cachedFileMemory()};
}

namespace {

std::optional<qint64> measured(const LiveReading& reading, MaintenanceTask::Measure measure)
{
    return measure == MaintenanceTask::Measure::freeSpace ? reading.freeSpace : reading.cachedMemory;
}

} // namespace

void runMaintenanceTask(HelperManager& helper, AuditLog& log, const MaintenanceTask& task,
    std::function<void(TaskStep)> onStep, std::function<void(MaintenanceOutcome)> done)
{
    const LiveReading before = readLiveMeter();
    QPointer<AuditLog> logGuard(&log);
    helper.run(task.rawValue, std::chrono::seconds(Maintenance::taskTimeoutSeconds), std::move(onStep),
        [task, before, logGuard, done = std::move(done)](TaskResult result) {
            // The measured change follows the message whatever the helper answered: a failed run may still
            // have freed something, and the user should see what actually moved.
            QString line = result.message;
            const LiveReading after = readLiveMeter();
            if (const auto change
                = Maintenance::measuredChange(task, measured(before, task.measure), measured(after, task.measure)))
                line += QStringLiteral(" ") + *change;
            if (logGuard)
                logGuard->recordAction(Maintenance::feature, task.title,
                    result.success ? line : QStringLiteral("Failed: ") + result.message);
            done({result.success, line});
        });
}
