#include "cli/VaultOutput.h"

#include "common/ByteCount.h"
#include "common/JsonText.h"
#include "duplicates/VaultTexts.h"
#include "removal/AuditLog.h"

#include <QEventLoop>

bool runVaultOperation(DuplicateVaultController& vault, const std::function<bool()>& start)
{
    QEventLoop loop;
    QObject::connect(&vault, &DuplicateVaultController::finished, &loop, &QEventLoop::quit);
    if (!start())
        return false;
    loop.exec();
    return true;
}

QByteArray failuresJson(const QList<VaultFailure>& failures)
{
    QList<QByteArray> items;
    for (const VaultFailure& failure : failures)
        items.append(JsonObjectWriter().add(u"path", failure.path).add(u"reason", failure.reason).finish());
    return jsonArray(items).trimmed();
}

void printFailures(const QList<VaultFailure>& failures, const QString& heading, QTextStream& out)
{
    for (const VaultFailure& failure : failures)
        out << QStringLiteral("%1  “%2” — %3\n").arg(heading, failure.path, failure.reason);
}

QByteArray moveResultJson(const VaultMoveResult& result)
{
    QList<QByteArray> moved;
    for (const VaultEntry& entry : result.moved)
        moved.append(entry.toJson());
    JsonObjectWriter writer;
    writer.addRaw(u"moved", jsonArray(moved).trimmed()).addRaw(u"failed", failuresJson(result.failed));
    if (result.abortedBecause)
        writer.add(u"abortedBecause", *result.abortedBecause);
    else
        writer.addRaw(u"abortedBecause", "null");
    return writer.add(u"bytesHeld", qint64(result.bytesHeld)).finish();
}

void printMoveResult(const VaultMoveResult& result, QTextStream& out)
{
    for (const VaultEntry& entry : result.moved)
        out << QStringLiteral("Moved to vault  %1 → %2\n").arg(entry.originalPath, entry.vaultPath);
    printFailures(result.failed, QStringLiteral("Not moved     "), out);
    if (result.abortedBecause)
        out << *result.abortedBecause << '\n';
    out << QStringLiteral("%1 moved into the vault (%2 to free once it is emptied), %3 not moved.\n")
               .arg(VaultTexts::copies(result.moved.size()), formatBytes(result.bytesHeld))
               .arg(result.failed.size());
}

int vaultExitStatus(bool somethingFailed, const DuplicateVaultController& vault, const AuditLog& log, QTextStream& err)
{
    int status = somethingFailed ? 1 : 0;
    if (const auto& problem = vault.saveProblem()) {
        err << VaultTexts::listNotSaved(*problem) << '\n';
        status = 1;
    }
    if (const auto& problem = log.lastSaveProblem()) {
        err << QStringLiteral("Couldn’t save the activity log — %1\n").arg(*problem);
        status = 1;
    }
    return status;
}
