#include "cli/Commands.h"
#include "removal/TrashResultJson.h"

#include "apps/AppInventory.h"
#include "common/ByteCount.h"
#include "common/JsonText.h"
#include "common/StoragePaths.h"
#include "platform/Terminal.h"
#include "removal/AuditLog.h"
#include "removal/TrashTexts.h"
#include "removal/Trasher.h"
#include "scan/RunningMonitor.h"
#include "scan/ScanTexts.h"
#include "scan/SmartScanSession.h"
#include "scan/SmartScanTexts.h"

#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QTimer>

namespace {

// Runs the session's event-driven work until `finished` says the phase it waits for has come, showing the
// scan's live location on a terminal.
template <typename Finished> void waitFor(SmartScanSession& session, QTextStream& err, Finished finished)
{
    QEventLoop loop;
    QObject::connect(&session, &SmartScanSession::phaseChanged, &loop, [&] {
        if (finished(session.phase()))
            loop.quit();
    });
    QTimer progress;
    const bool showProgress = standardErrorIsTerminal();
    if (showProgress) {
        QObject::connect(&progress, &QTimer::timeout, &loop, [&] {
            const ScanPulse::Snapshot pulse = session.pulse();
            err << QStringLiteral("\rScanning %1 · %2 files · %3\x1b[K")
                       .arg(pulse.location, QString::number(pulse.files), formatBytes(pulse.bytes));
            err.flush();
        });
        progress.start(100);
    }
    if (!finished(session.phase()))
        loop.exec();
    if (showProgress) {
        err << "\r\x1b[K";
        err.flush();
    }
}

QByteArray reviewJson(const SmartScanSession& session)
{
    QList<QByteArray> groups;
    for (const ScanGroup& group : session.groups()) {
        QList<QByteArray> items;
        for (const ScanItem& item : group.items)
            items.append(JsonObjectWriter()
                             .add(u"path", item.url.toLocalFile())
                             .add(u"size", item.size)
                             .add(u"risk", riskName(item.risk))
                             .add(u"detail", item.detail)
                             .add(u"ticked", session.selection().isTicked(item.id))
                             .finish());
        groups.append(JsonObjectWriter()
                          .add(u"title", group.title)
                          .add(u"systemImage", group.systemImage)
                          .add(u"size", group.size())
                          .addRaw(u"items", jsonArray(items).trimmed())
                          .finish());
    }
    const QList<ScanItem> ticked = session.selection().tickedItems(session.groups());
    return JsonObjectWriter()
        .addRaw(u"groups", groups.isEmpty() ? QByteArray("[]") : jsonArray(groups).trimmed())
        .add(u"total", totalSize(session.groups()))
        .add(u"tickedCount", qint64(ticked.size()))
        .add(u"tickedSize", session.selection().tickedSize(session.groups()))
        .finish();
}

void printReview(const SmartScanSession& session, QTextStream& out)
{
    if (session.groups().isEmpty()) {
        out << ScanTexts::emptyTitle() << '\n' << ScanTexts::emptyMessage() << '\n';
        return;
    }
    for (const ScanGroup& group : session.groups()) {
        out << QStringLiteral("%1 — %2\n").arg(group.title, formatBytes(group.size()));
        for (const ScanItem& item : group.items) {
            const bool ticked = session.selection().isTicked(item.id);
            out << QStringLiteral("  [%1] %2  %3  %4\n")
                       .arg(ticked ? QLatin1Char('x') : QLatin1Char(' '))
                       .arg(formatBytes(item.size), 9)
                       .arg(riskName(item.risk), -8)
                       .arg(item.url.toLocalFile());
            out << QStringLiteral("                           %1\n").arg(item.detail);
        }
        out << '\n';
    }
    const QList<ScanItem> ticked = session.selection().tickedItems(session.groups());
    if (ticked.isEmpty())
        out << SmartScanTexts::nothingSelected() << " — " << SmartScanTexts::tickHint() << ".\n";
    else
        out << QStringLiteral("Ticked: %1 %2, %3 %4.\n")
                   .arg(ticked.size())
                   .arg(ticked.size() == 1 ? QStringLiteral("item") : QStringLiteral("items"))
                   .arg(formatBytes(session.selection().tickedSize(session.groups())), SmartScanTexts::willMove());
}

void printRemoval(const TrashResult& result, QTextStream& out)
{
    for (const TrashItem& item : result.succeeded)
        out << QStringLiteral("Moved to Trash  %1 → %2\n").arg(item.path, result.trashedURLs.value(item.path));
    for (const TrashFailure& failure : result.failed)
        out << QStringLiteral("Not moved       %1 — %2\n").arg(failure.path, failure.reason);
    out << SmartScanTexts::removalSummary(result.succeeded.size(), result.freed) << '\n';
    if (!result.failed.isEmpty())
        out << QStringLiteral("%1 not moved.\n").arg(result.failed.size());
}

} // namespace

int runScanCommand(CommandContext& context)
{
    const bool json = takeFlag(context.arguments, QStringLiteral("--json"));
    const bool clean = takeFlag(context.arguments, QStringLiteral("--clean"));
    const std::optional<QString> exclude = takeValue(context.arguments, QStringLiteral("--exclude"));
    if (const auto problem
        = leftoverArgument(context.arguments, QStringLiteral("the options are --clean, --exclude PATH and --json"))) {
        context.err << QStringLiteral("velloru scan: %1\n").arg(*problem);
        return 2;
    }
    if (exclude) {
        // Only what was asked is recorded; no scan runs.
        const QString path = QFileInfo(*exclude).absoluteFilePath();
        if (const std::optional<QString> problem = ScanExclusions(StoragePaths::dataFolder()).add(path)) {
            context.err << *problem << '\n';
            return 1;
        }
        context.out << QStringLiteral("Smart Scan will leave %1 out from now on.\n").arg(path);
        return 0;
    }
    AuditLog audit(StoragePaths::dataFolder());
    AppInventory inventory;
    RunningMonitor running(inventory);
    const Trasher trasher;
    SmartScanSession session(inventory, running, trasher, audit, SmartScanLocations::forHome(QDir::homePath()));
    session.scan();
    waitFor(session, context.err,
        [](const ScanPhaseValue& phase) { return std::holds_alternative<ScanPhase::Results>(phase); });

    if (!clean) {
        if (json)
            context.out << QString::fromUtf8(reviewJson(session)) << '\n';
        else
            printReview(session, context.out);
        return 0;
    }
    if (session.selection().tickedItems(session.groups()).isEmpty()) {
        if (json)
            context.out << QString::fromUtf8(trashResultJson({})) << '\n';
        else
            context.out << SmartScanTexts::nothingSelected() << ".\n";
        return 0;
    }
    session.clean();
    waitFor(session, context.err,
        [](const ScanPhaseValue& phase) { return std::holds_alternative<ScanPhase::Done>(phase); });
    const TrashResult& result = *session.lastRemoval();
    if (json)
        context.out << QString::fromUtf8(trashResultJson(result)) << '\n';
    else
        printRemoval(result, context.out);
    if (const auto& problem = audit.lastSaveProblem()) {
        context.err << QStringLiteral("velloru scan: ") << TrashTexts::notRecorded(result.succeeded.size(), *problem)
                    << '\n';
        return 1;
    }
    return result.failed.isEmpty() ? 0 : 1;
}
