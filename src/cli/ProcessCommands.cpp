#include "cli/Commands.h"
#include "cli/SystemSample.h"
#include "cli/TextTable.h"
#include "cli/WaitFor.h"

#include "common/ByteCount.h"
#include "common/JsonText.h"
#include "common/StoragePaths.h"
#include "helper/HelperManager.h"
#include "helper/HelperProtocol.h"
#include "platform/SystemdHelperService.h"
#include "processes/ProcessList.h"
#include "processes/ProcessTexts.h"
#include "processes/RunningProcessJson.h"
#include "removal/AuditLog.h"

#include <functional>

namespace {

// The helper client as the window would have it: ready when installed and switched on.
struct HelperClient {
    SystemdHelperService service;
    HelperManager manager{HelperProtocol::socketPath()};
    HelperClient() { manager.refreshState(service); }
};

QString priorityText(const RunningProcess& process)
{
    if (!process.figuresKnown)
        return QStringLiteral("—");
    return QStringLiteral("%1 (%2)").arg(PriorityBands::title(PriorityBands::bandOf(process.nice))).arg(process.nice);
}

std::optional<int> parsePid(const QString& text)
{
    bool ok = false;
    const int pid = text.toInt(&ok);
    return ok && pid >= 0 ? std::optional(pid) : std::nullopt;
}

using Start = std::function<void(ProcessList&, const ProcessTarget&, ProcessList::Done)>;
using Success = std::function<QString(const ProcessTarget&)>;

// Finds the process, acts on it (through the helper when the kernel refuses) and records it in Activity.
int actOn(CommandContext& context, const QString& command, int pid, const Start& start, const Success& success)
{
    HelperClient helper;
    const ProcessSnapshot snapshot = takeSystemSample(helper.manager, CPUShares::notNeeded);
    std::optional<ProcessTarget> target;
    for (const ProcessGroup& group : snapshot.groups)
        for (const RunningProcess& process : group.processes)
            if (process.id == pid)
                target = ProcessTarget::process(process, group.processes);
    if (!target && pid >= 2) {
        context.err << ProcessTexts::noSuchProcess(pid) << '\n';
        return 1;
    }
    if (!target) { // refused before anything is asked of the kernel
        RunningProcess bare;
        bare.id = pid;
        bare.name = QStringLiteral("process %1").arg(pid);
        target = ProcessTarget::process(bare);
    }

    AuditLog log(StoragePaths::dataFolder());
    ProcessList list(helper.manager, log);
    const auto outcome = waitFor<ProcessActionOutcome>([&](auto done) { start(list, *target, done); });
    if (!outcome.success)
        context.err << QStringLiteral("✗ ") << outcome.sentence << '\n';
    else if (outcome.alreadyEnded)
        context.out << ProcessTexts::alreadyEnded(target->name) << '\n';
    else
        context.out << QStringLiteral("✓ ") << success(*target) << '\n';
    if (const auto& problem = log.lastSaveProblem()) {
        context.err << QStringLiteral("velloru %1: Velloru couldn’t record this in its Activity log — %2\n")
                           .arg(command, *problem);
        return 1;
    }
    return outcome.success ? 0 : 1;
}

} // namespace

int runProcessesCommand(CommandContext& context)
{
    QStringList& arguments = context.arguments;
    const bool all = takeFlag(arguments, QStringLiteral("--all"));
    const bool json = takeFlag(arguments, QStringLiteral("--json"));
    const QString sort = takeValue(arguments, QStringLiteral("--sort")).value_or(QStringLiteral("memory"));
    if (sort != QLatin1String("cpu") && sort != QLatin1String("memory")) {
        context.err << QStringLiteral("velloru processes: --sort takes cpu or memory.\n");
        return 2;
    }
    if (const auto problem
        = leftoverArgument(arguments, QStringLiteral("the options are --all, --sort cpu|memory and --json"))) {
        context.err << QStringLiteral("velloru processes: %1\n").arg(*problem);
        return 2;
    }
    HelperClient helper;
    const ProcessSnapshot snapshot = takeSystemSample(helper.manager, CPUShares::wanted);
    QList<RunningProcess> shown;
    for (const RunningProcess& process : snapshot.processes)
        if (all || !process.isSystem)
            shown.append(process);
    const bool byCPU = sort == QLatin1String("cpu");
    std::stable_sort(shown.begin(), shown.end(), [byCPU](const RunningProcess& a, const RunningProcess& b) {
        return byCPU ? a.cpu > b.cpu : a.memory > b.memory;
    });
    const bool hiddenUnread
        = all && snapshot.systemProcessesHidden && helper.manager.state() != HelperManager::State::ready;

    if (json) {
        QList<QByteArray> rows;
        for (const RunningProcess& process : shown)
            rows.append(runningProcessJson(process));
        context.out << QString::fromUtf8(JsonObjectWriter()
                                             .add(u"memoryFigure", QStringLiteral("resident"))
                                             .add(u"systemProcessesHidden", snapshot.systemProcessesHidden)
                                             .addRaw(u"processes", rows.isEmpty() ? "[]" : jsonArray(rows).trimmed())
                                             .finish())
                    << '\n';
    } else {
        TextTable table({QStringLiteral("PID"), QStringLiteral("User"), QStringLiteral("CPU"), QStringLiteral("Memory"),
                            QStringLiteral("Priority"), QStringLiteral("Name")},
            {true, false, true, true, false, false});
        for (const RunningProcess& process : shown)
            table.addRow({QString::number(process.id), process.user,
                process.figuresKnown ? QString::number(process.cpu, 'f', 1) + QLatin1Char('%') : QStringLiteral("—"),
                formatBytes(process.memory), priorityText(process),
                process.isApp ? QStringLiteral("%1 — %2").arg(process.name, process.appName) : process.name});
        table.print(context.out);
        const qsizetype systemCount = snapshot.processes.size() - shown.size();
        context.out << QStringLiteral("%1 processes").arg(shown.size())
                    << (systemCount > 0
                               ? QStringLiteral(" (%1 owned by the system not shown — add --all)").arg(systemCount)
                               : QString())
                    << QStringLiteral(". Memory is resident memory: what each process holds in RAM, shared pages "
                                      "counted in every process that uses them.\n");
    }
    if (hiddenUnread)
        context.err << ProcessTexts::installHelperForMemory()
                    << QStringLiteral(" — run “velloru helper install”; until then /proc hides them.\n");
    return 0;
}

int runQuitCommand(CommandContext& context)
{
    const bool force = takeFlag(context.arguments, QStringLiteral("--force"));
    const Operands given = operands(context.arguments);
    const auto pid = parsePid(given.names.value(0));
    if (given.unknownOption || given.names.size() != 1 || !pid) {
        context.err << QStringLiteral("velloru quit: name the process by its number — velloru quit PID [--force].\n");
        return 2;
    }
    return actOn(
        context, QStringLiteral("quit"), *pid,
        [force](ProcessList& list, const ProcessTarget& target, ProcessList::Done done) {
            force ? list.forceQuit(target, std::move(done)) : list.quit(target, std::move(done));
        },
        [force](const ProcessTarget& target) {
            return force ? ProcessTexts::forceQuitDone(target.name) : ProcessTexts::quitDone(target.name);
        });
}

int runPriorityCommand(CommandContext& context)
{
    const Operands given = operands(context.arguments);
    const auto pid = parsePid(given.names.value(0));
    const auto band = PriorityBands::parse(given.names.value(1));
    if (given.unknownOption || given.names.size() != 2 || !pid || !band) {
        context.err << QStringLiteral("velloru priority: name the process and the priority — velloru priority PID "
                                      "high|normal|low.\n");
        return 2;
    }
    return actOn(
        context, QStringLiteral("priority"), *pid,
        [band](ProcessList& list, const ProcessTarget& target, ProcessList::Done done) {
            list.setPriority(target, *band, std::move(done));
        },
        [band](const ProcessTarget& target) { return ProcessTexts::priorityDone(target.name, *band); });
}
