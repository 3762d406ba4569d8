#include "cli/Commands.h"
#include "cli/TextTable.h"
#include "cli/VaultOutput.h"

#include "common/ByteCount.h"
#include "common/JsonText.h"
#include "common/ReferenceDate.h"
#include "common/StoragePaths.h"
#include "duplicates/VaultTexts.h"
#include "platform/Terminal.h"
#include "removal/AuditLog.h"
#include "removal/Trasher.h"

#include <QLocale>

namespace {

const QString usage = QStringLiteral("use “velloru vault list|verify|restore ID…|restore-all|empty”, each with --json");

QString shortID(const QUuid& id)
{
    return uuidText(id).left(8);
}

int list(const DuplicateVaultController& vault, bool json, QTextStream& out)
{
    if (json) {
        QList<QByteArray> entries;
        for (const VaultEntry& entry : vault.entries())
            entries.append(entry.toJson());
        out << QString::fromUtf8(JsonObjectWriter()
                                     .add(u"bytesHeld", qint64(vault.bytesHeld()))
                                     .addRaw(u"entries", jsonArray(entries).trimmed())
                                     .finish())
            << '\n';
        return 0;
    }
    if (vault.entries().isEmpty()) {
        out << "The vault is empty. Copies moved out of duplicate sets (“velloru duplicates --move-ticked”) are "
               "held here until you put them back or empty the vault.\n";
        return 0;
    }
    for (const DuplicateVaultController::Batch& batch : vault.batches()) {
        out << QStringLiteral("Moved %1\n")
                   .arg(QLocale::c().toString(ReferenceDate::fromSecondsSinceReference(batch.movedAt).toLocalTime(),
                       QStringLiteral("yyyy-MM-dd HH:mm:ss")));
        TextTable table({QStringLiteral("Entry"), QStringLiteral("Size"), QStringLiteral("Came from"),
                            QStringLiteral("Copy kept at")},
            {false, true, false, false});
        for (const VaultEntry& entry : batch.entries)
            table.addRow({shortID(entry.id), formatBytes(entry.size), entry.originalPath, entry.keeperPath});
        table.print(out);
        out << '\n';
    }
    out << QStringLiteral("%1 held · %2 will be freed once the vault is emptied.\n")
               .arg(VaultTexts::copies(vault.entries().size()), formatBytes(vault.bytesHeld()));
    return 0;
}

QString resultName(VaultVerification::Result result)
{
    switch (result) {
    case VaultVerification::Result::unreadable: return QStringLiteral("unreadable");
    case VaultVerification::Result::keeperIntact: return QStringLiteral("keeperIntact");
    case VaultVerification::Result::keeperMissing: return QStringLiteral("keeperMissing");
    case VaultVerification::Result::keeperChanged: return QStringLiteral("keeperChanged");
    case VaultVerification::Result::vaultedFileMissing: return QStringLiteral("vaultedFileMissing");
    }
    return {};
}

int verify(DuplicateVaultController& vault, AuditLog& log, bool json, CommandContext& context)
{
    runVaultOperation(vault, [&vault] { return vault.verifyAll(); });
    bool problems = false;
    QList<QByteArray> results;
    for (const VaultEntry& entry : vault.entries()) {
        const VaultVerification verification = vault.verifications().value(entry.id);
        problems |= verification.result != VaultVerification::Result::keeperIntact;
        if (json)
            results.append(JsonObjectWriter()
                               .add(u"id", uuidText(entry.id))
                               .add(u"originalPath", entry.originalPath)
                               .add(u"result", resultName(verification.result))
                               .add(u"sentence", verification.sentence())
                               .finish());
        else
            context.out << QStringLiteral("%1  %2\n      %3\n")
                               .arg(shortID(entry.id), entry.originalPath, verification.sentence());
    }
    if (json)
        context.out << QString::fromUtf8(jsonArray(results).trimmed()) << '\n';
    else if (vault.entries().isEmpty())
        context.out << "The vault is empty: there is nothing to check.\n";
    else if (const std::optional<QString> summary = vault.verificationSummary())
        context.out << *summary << '\n';
    return vaultExitStatus(problems, vault, log, context.err);
}

int restore(
    DuplicateVaultController& vault, AuditLog& log, const QStringList& names, bool json, CommandContext& context)
{
    QList<QUuid> ids;
    for (const QString& name : names) {
        QList<QUuid> matches;
        for (const VaultEntry& entry : vault.entries())
            if (uuidText(entry.id).startsWith(name.toUpper()))
                matches.append(entry.id);
        if (name.isEmpty() || matches.size() != 1) {
            context.err << QStringLiteral("velloru vault: no single held copy has the id “%1” — run “velloru vault "
                                          "list” to see them.\n")
                               .arg(name);
            return 2;
        }
        ids.append(matches.first());
    }
    if (ids.isEmpty()) {
        context.err << "velloru vault: nothing to put back — the vault is empty.\n";
        return 0;
    }
    runVaultOperation(vault, [&vault, &ids] { return vault.restore(ids); });
    const VaultRestoreResult result = vault.lastRestore().value_or(VaultRestoreResult{});
    if (json) {
        QList<QByteArray> renamed;
        for (const VaultRestoreResult::Renamed& item : result.renamed)
            renamed.append(JsonObjectWriter()
                               .add(u"originalPath", item.originalPath)
                               .add(u"restoredPath", item.restoredPath)
                               .finish());
        context.out << QString::fromUtf8(JsonObjectWriter()
                                             .add(u"restored", qint64(result.restored))
                                             .addRaw(u"renamed", jsonArray(renamed).trimmed())
                                             .addRaw(u"failed", failuresJson(result.failed))
                                             .finish())
                    << '\n';
    } else {
        printFailures(result.failed, QStringLiteral("Not put back"), context.out);
        context.out << DuplicateVaultController::restoreNotice(result) << '\n';
    }
    return vaultExitStatus(!result.failed.isEmpty(), vault, log, context.err);
}

int empty(DuplicateVaultController& vault, AuditLog& log, bool json, bool confirmed, CommandContext& context)
{
    if (!confirmed) {
        if (!standardInputIsTerminal()) {
            context.err << QStringLiteral("velloru vault: %1 Add --yes to confirm when no one can answer.\n")
                               .arg(VaultTexts::confirmEmpty());
            return 2;
        }
        context.out << VaultTexts::confirmEmpty() << ' ' << VaultTexts::emptyExplanation() << " [y/N] ";
        context.out.flush();
        QTextStream in(stdin);
        if (!in.readLine().trimmed().toLower().startsWith(QLatin1Char('y'))) {
            context.out << "The vault was left as it is.\n";
            return 0;
        }
    }
    runVaultOperation(vault, [&vault] { return vault.emptyToTrash(); });
    const TrashResult result = vault.lastEmpty().value_or(TrashResult{});
    if (json) {
        QList<QByteArray> moved;
        for (const TrashItem& item : result.succeeded)
            moved.append(JsonObjectWriter()
                             .add(u"path", item.path)
                             .add(u"trashPath", result.trashedURLs.value(item.path))
                             .add(u"size", item.size)
                             .finish());
        QList<VaultFailure> failed;
        for (const TrashFailure& failure : result.failed)
            failed.append({failure.path, failure.reason});
        context.out << QString::fromUtf8(JsonObjectWriter()
                                             .addRaw(u"moved", jsonArray(moved).trimmed())
                                             .addRaw(u"failed", failuresJson(failed))
                                             .add(u"entriesLeft", qint64(vault.entries().size()))
                                             .finish())
                    << '\n';
    } else {
        for (const TrashItem& item : result.succeeded)
            context.out
                << QStringLiteral("Moved to Trash  %1 → %2\n").arg(item.path, result.trashedURLs.value(item.path));
        for (const TrashFailure& failure : result.failed)
            context.out << QStringLiteral("Not moved       “%1” — %2\n").arg(failure.path, failure.reason);
        if (result.succeeded.isEmpty() && result.failed.isEmpty())
            context.out << "The vault is empty: there is nothing to move to the Trash.\n";
        else if (vault.notice())
            context.out << *vault.notice() << '\n';
    }
    return vaultExitStatus(!result.failed.isEmpty(), vault, log, context.err);
}

} // namespace

int runVaultCommand(CommandContext& context)
{
    const bool json = takeFlag(context.arguments, QStringLiteral("--json"));
    const bool yes = takeFlag(context.arguments, QStringLiteral("--yes"));
    const Operands given = operands(context.arguments);
    if (given.unknownOption || given.names.isEmpty()) {
        context.err << QStringLiteral("velloru vault: %1.\n").arg(usage);
        return 2;
    }
    const QString action = given.names.first();
    const QStringList rest = given.names.mid(1);
    const bool takesIDs = action == QLatin1String("restore");
    if ((!takesIDs && !rest.isEmpty()) || (takesIDs && rest.isEmpty()) || (yes && action != QLatin1String("empty"))) {
        context.err << QStringLiteral("velloru vault: %1.\n").arg(usage);
        return 2;
    }

    AuditLog log(StoragePaths::dataFolder());
    const Trasher trasher;
    DuplicateVaultController vault(StoragePaths::dataFolder(), log, trasher);
    vault.load();
    if (action == QLatin1String("list"))
        return list(vault, json, context.out);
    if (action == QLatin1String("verify"))
        return verify(vault, log, json, context);
    if (action == QLatin1String("restore"))
        return restore(vault, log, rest, json, context);
    if (action == QLatin1String("restore-all")) {
        QStringList all;
        for (const VaultEntry& entry : vault.entries())
            all.append(uuidText(entry.id));
        return restore(vault, log, all, json, context);
    }
    if (action == QLatin1String("empty"))
        return empty(vault, log, json, yes, context);
    context.err << QStringLiteral("velloru vault: there is no “%1” — %2.\n").arg(action, usage);
    return 2;
}
