#include "helper/MailOptimizer.h"

#include "helper/MaintenanceTexts.h"
#include "platform/AppQuitting.h"
#include "platform/SqliteTool.h"

#include <QDir>
#include <QFileInfo>

namespace MailOptimizer {

namespace {

// The native profile folder and the Flatpak one.
const QStringList thunderbirdFolders{
    QStringLiteral(".thunderbird"), QStringLiteral(".var/app/org.mozilla.Thunderbird/.thunderbird")};

} // namespace

QStringList findDatabases(const QString& home)
{
    QStringList databases;
    for (const QString& folder : thunderbirdFolders) {
        const QDir profiles(home + QLatin1Char('/') + folder);
        for (const QString& profile : profiles.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
            const QString database = profiles.filePath(profile) + QStringLiteral("/global-messages-db.sqlite");
            if (QFileInfo(database).isFile())
                databases.append(database);
        }
    }
    return databases;
}

TaskResult optimize(const QString& home)
{
    quitProcessesNamed({QStringLiteral("thunderbird"), QStringLiteral("thunderbird-bin")}, std::chrono::seconds(15));
    const QStringList databases = findDatabases(home);
    if (databases.isEmpty())
        return {false, MaintenanceTexts::noMailDatabase(), 0};

    qint64 before = 0, after = 0;
    for (const QString& database : databases) {
        before += QFileInfo(database).size();
        if (!runSqliteScript(database, QStringLiteral("VACUUM; REINDEX;")))
            return {false, MaintenanceTexts::mailOptimizeFailed(), 0};
        after += QFileInfo(database).size();
    }
    const QString label
        = databases.size() == 1 ? QStringLiteral("database") : QStringLiteral("%1 databases").arg(databases.size());
    const qint64 freed = before - after;
    if (freed < 1)
        return {true, MaintenanceTexts::mailAlreadyCompact(label), 0};
    return {true, MaintenanceTexts::mailCompacted(label, freed), freed};
}

} // namespace MailOptimizer
