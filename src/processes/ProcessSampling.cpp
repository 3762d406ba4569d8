#include "processes/ProcessSampling.h"

#include "platform/UserHome.h"
#include "platform/UserIdentity.h"

#include <QFileInfo>
#include <QSet>

namespace {

// The kernel keeps 15 bytes of a program's name; a longer name is taken from the program file or the first
// argument when one of them begins with the short name.
QString nameOf(const QByteArray& command, const ProcessInfo& info)
{
    constexpr qsizetype kernelNameLimit = 15;
    const QString shortName = QString::fromUtf8(command);
    if (command.size() < kernelNameLimit)
        return shortName;
    for (QString path : {info.executablePath, info.firstArgument}) {
        path.remove(QStringLiteral(" (deleted)"));
        const QString name = QFileInfo(path).fileName();
        if (name.startsWith(shortName))
            return name;
    }
    return shortName;
}

} // namespace

ProcessSampling::ProcessSampling(QString procRoot)
    : m_procRoot(std::move(procRoot))
    , m_reader(m_procRoot)
    , m_othersHidden(procHidesOtherUsers(m_procRoot))
    , m_matcher(std::make_unique<AppMatcher>(QList<InstalledApp>()))
    , m_me(currentUserID())
{
}

ProcessSampling::~ProcessSampling() = default;

ProcessSnapshot ProcessSampling::sample(
    const QList<InstalledApp>& apps, const std::optional<QList<ProcessMemory>>& helperMemory)
{
    useApps(apps);
    ++m_sampleNumber;
    ProcessSnapshot snapshot;
    snapshot.at = secondsSinceBoot();
    const ProcessTableRead table = m_reader.read();
    snapshot.processes.reserve(table.processes.size());
    for (const ProcessStat& stat : table.processes) {
        if (stat.isKernelThread || stat.state == 'Z' || stat.state == 'X')
            continue;
        auto known = m_known.find(Key(stat.pid, stat.startTicks));
        const bool isNew = known == m_known.end() || known->command != stat.command;
        if (isNew) {
            Known learnt;
            learnt.command = stat.command;
            learnt.info = readProcessInfo(stat.pid, m_procRoot);
            learnt.name = nameOf(stat.command, learnt.info);
            learnt.app = appOf(learnt.info);
            known = m_known.insert(Key(stat.pid, stat.startTicks), std::move(learnt));
        }
        known->seenIn = m_sampleNumber;
        snapshot.processes.append(row(stat, *known, snapshot.at, isNew));
    }
    m_known.removeIf([this](const auto& entry) { return entry.value().seenIn != m_sampleNumber; });

    // An app's own process is the one its parent is not part of the same app.
    QHash<int, qsizetype> byPid;
    for (qsizetype i = 0; i < snapshot.processes.size(); ++i)
        byPid.insert(snapshot.processes[i].id, i);
    for (RunningProcess& process : snapshot.processes) {
        if (!process.isApp)
            continue;
        const qsizetype parent = byPid.value(process.parentID, -1);
        process.isRegularApp = parent < 0 || snapshot.processes[parent].bundleID != process.bundleID
            || snapshot.processes[parent].uid != process.uid;
    }

    snapshot.systemProcessesHidden = m_othersHidden || table.unreadable > 0;
    if (snapshot.systemProcessesHidden && helperMemory)
        addHidden(snapshot, *helperMemory);
    snapshot.groups = groupProcesses(snapshot.processes);
    snapshot.memory = readMemoryInfo(m_procRoot);
    snapshot.stall = readMemoryStall(m_procRoot);
    return snapshot;
}

void ProcessSampling::useApps(const QList<InstalledApp>& apps)
{
    if (apps == m_apps)
        return;
    m_apps = apps;
    m_matcher = std::make_unique<AppMatcher>(m_apps);
    for (Known& known : m_known)
        known.app = appOf(known.info);
}

std::optional<qsizetype> ProcessSampling::appOf(const ProcessInfo& info) const
{
    const QList<qsizetype> apps = m_matcher->appsOf(info);
    return apps.isEmpty() ? std::nullopt : std::optional(apps.first());
}

RunningProcess ProcessSampling::row(const ProcessStat& stat, Known& known, double now, bool isNew)
{
    RunningProcess process;
    process.id = stat.pid;
    process.name = known.name;
    process.path = known.info.executablePath;
    if (known.app) {
        const InstalledApp& app = m_apps[*known.app];
        process.isApp = true;
        process.bundleID = app.bundleID;
        process.appName = app.name;
    }
    process.memory = stat.residentBytes;
    const double ticks = clockTicksPerSecond();
    const ProcessCPUSample current{double(stat.cpuTicks) / ticks, now};
    process.cpu = cpuShare(isNew ? ProcessCPUSample{0, double(stat.startTicks) / ticks} : known.cpu, current);
    known.cpu = current;
    process.uid = stat.uid;
    process.nice = stat.nice;
    known.waitingSamples = stat.state == 'D' ? known.waitingSamples + 1 : 0;
    process.isResponding = stat.state != 'T' && stat.state != 't' && known.waitingSamples < 2;
    process.startTicks = stat.startTicks;
    process.parentID = stat.parentPid;
    process.user = userName(stat.uid);
    process.isSystem = stat.uid != m_me && isSystemAccount(stat.uid);
    return process;
}

QString ProcessSampling::userName(unsigned uid)
{
    auto name = m_userNames.find(uid);
    if (name == m_userNames.end())
        name = m_userNames.insert(uid, userNameOf(uid).value_or(QString::number(uid)));
    return *name;
}

void ProcessSampling::addHidden(ProcessSnapshot& snapshot, const QList<ProcessMemory>& helperMemory)
{
    QSet<int> listed;
    for (const RunningProcess& process : std::as_const(snapshot.processes))
        listed.insert(process.id);
    for (const ProcessMemory& record : helperMemory) {
        if (listed.contains(record.pid))
            continue;
        RunningProcess process;
        process.id = record.pid;
        process.name = record.name;
        process.memory = record.residentBytes;
        process.uid = record.uid;
        process.user = userName(record.uid);
        process.isSystem = record.uid != m_me && isSystemAccount(record.uid);
        process.figuresKnown = false;
        snapshot.processes.append(process);
    }
}
