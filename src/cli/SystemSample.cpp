#include "cli/SystemSample.h"

#include "apps/AppCollector.h"
#include "cli/WaitFor.h"
#include "helper/HelperManager.h"
#include "processes/ProcessSampling.h"

#include <QThread>

ProcessSnapshot takeSystemSample(HelperManager& helper, CPUShares cpu)
{
    const QList<InstalledApp> apps = collectInstalledApps(AppSources::forThisSystem());
    ProcessSampling sampling;
    ProcessSnapshot snapshot = sampling.sample(apps, std::nullopt);
    std::optional<QList<ProcessMemory>> hidden;
    if (snapshot.systemProcessesHidden && helper.state() == HelperManager::State::ready)
        hidden = waitFor<std::optional<QList<ProcessMemory>>>(
            [&helper](auto done) { helper.systemProcessInfo(std::chrono::seconds(10), done); });
    if (cpu == CPUShares::wanted)
        QThread::sleep(1);
    if (cpu == CPUShares::wanted || hidden)
        snapshot = sampling.sample(apps, hidden);
    return snapshot;
}
