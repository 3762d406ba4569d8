#include "cli/Commands.h"
#include "cli/SystemSample.h"
#include "cli/TextTable.h"

#include "common/ByteCount.h"
#include "common/JsonText.h"
#include "helper/HelperManager.h"
#include "helper/HelperProtocol.h"
#include "platform/SystemdHelperService.h"
#include "processes/MemoryPressure.h"
#include "processes/ProcessGroup.h"

namespace {

constexpr qsizetype largestShown = 5;

QString processCount(const ProcessGroup& group)
{
    return group.processes.size() == 1 ? QStringLiteral("1 process")
                                       : QStringLiteral("%1 processes").arg(group.processes.size());
}

} // namespace

int runMemoryCommand(CommandContext& context)
{
    const bool json = takeFlag(context.arguments, QStringLiteral("--json"));
    if (const auto problem = leftoverArgument(context.arguments, QStringLiteral("the only option is --json"))) {
        context.err << QStringLiteral("velloru memory: %1\n").arg(*problem);
        return 2;
    }
    SystemdHelperService service;
    HelperManager helper(HelperProtocol::socketPath());
    helper.refreshState(service);
    const ProcessSnapshot snapshot = takeSystemSample(helper, CPUShares::notNeeded);
    if (!snapshot.memory) {
        context.err << QStringLiteral("velloru memory: /proc/meminfo can’t be read — is /proc mounted?\n");
        return 1;
    }
    const MemoryReading& memory = *snapshot.memory;
    const MemoryPressure pressure = MemoryPressures::assess(memory, snapshot.stall);
    const QList<ProcessGroup> largest = largestByMemory(snapshot.groups, largestShown);

    if (json) {
        QList<QByteArray> apps;
        for (const ProcessGroup& group : largest)
            apps.append(JsonObjectWriter()
                            .add(u"name", group.name)
                            .add(u"isApp", group.isApp)
                            .add(u"memory", group.memory)
                            .add(u"processes", qint64(group.processes.size()))
                            .finish());
        JsonObjectWriter out;
        out.add(u"total", memory.total)
            .add(u"used", usedMemory(memory))
            .add(u"available", memory.available)
            .add(u"cached", memory.cached)
            .add(u"swapTotal", memory.swapTotal)
            .add(u"swapUsed", usedSwap(memory))
            .add(u"pressure", MemoryPressures::title(pressure.level).toLower())
            .add(u"pressureFromStalls", pressure.fromStallFigures);
        if (snapshot.stall)
            out.add(u"stallSomeAvg10", snapshot.stall->someAvg10).add(u"stallFullAvg10", snapshot.stall->fullAvg10);
        out.addRaw(u"largest", apps.isEmpty() ? "[]" : jsonArray(apps).trimmed());
        context.out << QString::fromUtf8(out.finish()) << '\n';
        return 0;
    }

    context.out << QStringLiteral("Memory: %1 used of %2 · %3 cached files · swap %4 used of %5\n")
                       .arg(formatBytes(usedMemory(memory)), formatBytes(memory.total), formatBytes(memory.cached),
                           formatBytes(usedSwap(memory)), formatBytes(memory.swapTotal));
    context.out << QStringLiteral("Pressure: %1 — %2\n")
                       .arg(MemoryPressures::title(pressure.level), MemoryPressures::explanation(pressure.level));
    if (!pressure.fromStallFigures)
        context.out << QStringLiteral("(Judged from the memory still available — this kernel doesn’t report memory "
                                      "pressure.)\n");
    context.out << QStringLiteral("\nUsing the most memory:\n");
    TextTable table(
        {QStringLiteral("Name"), QStringLiteral("Memory"), QStringLiteral("Processes")}, {false, true, false});
    for (const ProcessGroup& group : largest)
        table.addRow({group.name, formatBytes(group.memory), processCount(group)});
    table.print(context.out);
    return 0;
}
