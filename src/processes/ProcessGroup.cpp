#include "processes/ProcessGroup.h"

#include <QHash>

#include <algorithm>
#include <tuple>

namespace {

QString groupKey(const RunningProcess& process)
{
    if (process.isApp)
        return QStringLiteral("app:%1:%2").arg(process.bundleID.value_or(process.appName)).arg(process.uid);
    return processKey(process);
}

} // namespace

QString processKey(const RunningProcess& process)
{
    return QStringLiteral("process:") + QString::number(process.id) + QLatin1Char(':')
        + QString::number(process.startTicks);
}

const RunningProcess& ProcessGroup::lead() const
{
    const auto own
        = std::min_element(processes.cbegin(), processes.cend(), [](const RunningProcess& a, const RunningProcess& b) {
              return std::tie(b.isRegularApp, a.startTicks) < std::tie(a.isRegularApp, b.startTicks);
          });
    return *own;
}

QList<ProcessGroup> groupProcesses(const QList<RunningProcess>& processes)
{
    QList<ProcessGroup> groups;
    QHash<QString, qsizetype> byKey;
    for (const RunningProcess& process : processes) {
        const QString key = groupKey(process);
        auto at = byKey.constFind(key);
        if (at == byKey.constEnd()) {
            at = byKey.insert(key, groups.size());
            groups.append({key, process.isApp ? process.appName : process.name, process.isApp, {}, 0, 0});
        }
        ProcessGroup& group = groups[*at];
        group.processes.append(process);
        group.memory += process.memory;
        group.cpu += process.cpu;
    }
    return groups;
}

QList<ProcessGroup> largestByMemory(QList<ProcessGroup> groups, qsizetype count)
{
    std::sort(groups.begin(), groups.end(), [](const ProcessGroup& a, const ProcessGroup& b) {
        return a.memory != b.memory ? a.memory > b.memory : a.name < b.name;
    });
    if (groups.size() > count)
        groups.resize(count);
    return groups;
}
