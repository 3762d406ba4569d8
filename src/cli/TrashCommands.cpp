#include "cli/Commands.h"

#include "common/ByteCount.h"
#include "common/JsonText.h"
#include "common/StoragePaths.h"
#include "helper/HelperManager.h"
#include "helper/HelperProtocol.h"
#include "helper/HelperTrash.h"
#include "platform/SystemdHelperService.h"
#include "platform/TrashStore.h"
#include "removal/AuditLog.h"
#include "removal/TrashLocations.h"
#include "removal/TrashRecorder.h"
#include "removal/TrashRecovery.h"
#include "removal/TrashRequests.h"
#include "removal/TrashResultJson.h"
#include "removal/TrashTexts.h"
#include "removal/Trasher.h"

namespace {

const QString trashFeature = QStringLiteral("Trash");

} // namespace

int runTrashCommand(CommandContext& context)
{
    const bool json = takeFlag(context.arguments, QStringLiteral("--json"));
    const Operands named = operands(context.arguments);
    if (named.unknownOption) {
        context.err << QStringLiteral("velloru trash: unknown option “%1” — the only option is --json; put “--” "
                                      "before a name that begins with a dash.\n")
                           .arg(*named.unknownOption);
        return 2;
    }
    if (named.names.isEmpty()) {
        context.err << "velloru trash: name at least one file or folder to move to the Trash.\n";
        return 2;
    }
    // What was typed wrong is said at once and never tried, nor recorded as a removal that failed.
    QList<TrashFailure> refused;
    QStringList paths;
    for (const QString& argument : named.names) {
        if (const auto refusal = TrashRequests::refusal(argument))
            refused.append({argument, *refusal});
        else
            paths.append(argument);
    }

    AuditLog log(StoragePaths::dataFolder());
    // Items in folders root owns go through the helper, when it is set up.
    SystemdHelperService service;
    HelperManager helper(HelperProtocol::socketPath());
    helper.refreshState(service);
    HelperTrash helperTrash(
        HelperProtocol::socketPath(), [&helper] { return helper.state() == HelperManager::State::ready; },
        homeTrashPath());
    TrashRecorder recorder(log.journal(), trashFeature);
    TrashResult result = Trasher(&helperTrash).moveToTrash(TrashRequests::measured(paths), &recorder);
    log.record(recorder);
    result.failed = refused + result.failed;

    if (json) {
        context.out << QString::fromUtf8(trashResultJson(result)) << '\n';
    } else {
        for (const TrashItem& item : result.succeeded)
            context.out
                << QStringLiteral("Moved to Trash  %1 → %2\n").arg(item.path, result.trashedURLs.value(item.path));
        for (const TrashFailure& failure : result.failed)
            context.out << QStringLiteral("Not moved       “%1” — %2\n").arg(failure.path, failure.reason);
        context.out << QStringLiteral("%1 moved (%2), %3 not moved.\n")
                           .arg(result.succeeded.size())
                           .arg(formatBytes(result.freed))
                           .arg(result.failed.size());
    }
    if (const auto& problem = log.lastSaveProblem()) {
        context.err << QStringLiteral("velloru trash: ") << TrashTexts::notRecorded(result.succeeded.size(), *problem)
                    << '\n';
        return 1;
    }
    return result.failed.isEmpty() ? 0 : 1;
}

int runPutBackCommand(CommandContext& context)
{
    const Operands given = operands(context.arguments);
    if (given.unknownOption || given.names.size() != 1) {
        context.err << "velloru put-back: name one activity entry — its id, or the start of it, as “velloru "
                       "activity” shows.\n";
        return 2;
    }
    AuditLog log(StoragePaths::dataFolder());
    const auto entry = TrashRequests::findEntry(log, given.names.first());
    if (!entry) {
        context.err << QStringLiteral("velloru put-back: no single activity entry has the id “%1” — run “velloru "
                                      "activity” to see them.\n")
                           .arg(given.names.first());
        return 2;
    }
    if (const auto failure = TrashRecovery::putBack(log, *entry)) {
        context.err << failure->sentence() << '\n';
        return 1;
    }
    context.out << QStringLiteral("Put back %1\n").arg(entry->path);
    return 0;
}

int runTrashSummaryCommand(CommandContext& context)
{
    const bool json = takeFlag(context.arguments, QStringLiteral("--json"));
    if (const auto problem = leftoverArgument(context.arguments, QStringLiteral("the only option is --json"))) {
        context.err << QStringLiteral("velloru trash-summary: %1\n").arg(*problem);
        return 2;
    }
    const TrashLocations::Summary summary = TrashLocations::summarize();
    if (json) {
        QList<QByteArray> locations;
        for (const QString& location : summary.locations)
            locations.append(jsonString(location));
        context.out << QString::fromUtf8(JsonObjectWriter()
                                             .add(u"bytes", summary.bytes)
                                             .add(u"items", summary.items)
                                             .addRaw(u"locations", jsonArray(locations).trimmed())
                                             .finish())
                    << '\n';
        return 0;
    }
    if (summary.items == 0) {
        context.out << "The Trash is empty.\n";
        return 0;
    }
    context.out << QStringLiteral("%1 %2, %3, in:\n")
                       .arg(summary.items)
                       .arg(summary.items == 1 ? QStringLiteral("item") : QStringLiteral("items"))
                       .arg(formatBytes(summary.bytes));
    for (const QString& location : summary.locations)
        context.out << "  " << location << '\n';
    context.out << TrashLocations::emptyWarning(summary) << '\n';
    return 0;
}
