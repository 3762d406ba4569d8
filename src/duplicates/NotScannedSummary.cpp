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
    return clauses.isEmpty() ? QString() : clauses.join(QStringLiteral(". ")) + QLatin1Char('.');
}
