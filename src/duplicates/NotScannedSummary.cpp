#include "duplicates/NotScannedSummary.h"

#include "duplicates/EngineStats.h"
#include "duplicates/InventoryStats.h"

#include <QStringList>

namespace {

void addClause(QStringList& clauses, std::int64_t count, const char* noun, const char* singular, const char* plural,
    const char* rest)
{
    if (count < 1)
        return;
    clauses.append(QString::number(count) + QString::fromUtf8(noun) + QString::fromUtf8(count == 1 ? singular : plural)
        + QString::fromUtf8(rest));
}

// A clause whose wording changes beyond the noun between one and several; `several` has %1 for the count.
void addClause(QStringList& clauses, std::int64_t count, const QString& one, const QString& several)
{
    if (count == 1)
        clauses.append(one);
    else if (count > 1)
        clauses.append(several.arg(count));
}

} // namespace

QString notScannedSummary(const InventoryStats& inventory, const EngineStats& engine)
{
    QStringList clauses;
    addClause(clauses, inventory.datalessSkipped, " file", " is", "s are",
        " in the cloud and not downloaded — Velloru does not download files to compare them");
    addClause(clauses, inventory.packagesHalted, " app or library bundle", " was", "s were",
        " measured whole rather than opened up");
    addClause(clauses, inventory.unreadableDirectories, " folder", "", "s", " could not be opened");
    addClause(clauses, engine.unreadable, " file", "", "s", " could not be read");
    addClause(clauses, engine.changedDuringScan,
        QStringLiteral("1 file changed during the scan and was left out — scan again to compare it"),
        QStringLiteral("%1 files changed during the scan and were left out — scan again to compare them"));
    addClause(clauses, inventory.badNameFilesSkipped,
        QStringLiteral("1 file has a name that isn’t valid UTF-8 and was left out — rename it to include it"),
        QStringLiteral("%1 files have names that aren’t valid UTF-8 and were left out — rename them to include them"));
    addClause(clauses, inventory.badNameFoldersSkipped,
        QStringLiteral("1 folder has a name that isn’t valid UTF-8 and was left out with everything in it — rename "
                       "it to include it"),
        QStringLiteral("%1 folders have names that aren’t valid UTF-8 and were left out with everything in them — "
                       "rename them to include them"));
    return clauses.isEmpty() ? QString() : clauses.join(QStringLiteral(". ")) + QLatin1Char('.');
}
