#include "helper/MailOptimizer.h"

#include "common/ByteCount.h"
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
        return {false,
            QStringLiteral("No Thunderbird database found — Thunderbird may not be set up on this computer."), 0};

    qint64 before = 0, after = 0;
    for (const QString& database : databases) {
        before += QFileInfo(database).size();
        if (!runSqliteScript(database, QStringLiteral("VACUUM; REINDEX;")))
            return {false,
                QStringLiteral("Couldn’t optimize the Thunderbird database — make sure Thunderbird is fully quit, then "
                               "try again."),
                0};
        after += QFileInfo(database).size();
    }
    const QString label
        = databases.size() == 1 ? QStringLiteral("database") : QStringLiteral("%1 databases").arg(databases.size());
    const qint64 freed = before - after;
    if (freed < 1)
        return {true, QStringLiteral("Thunderbird %1 reindexed — already compact.").arg(label), 0};
    return {true, QStringLiteral("Thunderbird %1 compacted — freed %2.").arg(label, formatBytes(freed)), freed};
}

} // namespace MailOptimizer
