#include "apps/AppSources.h"

#include "common/StoragePaths.h"
#include "platform/PackageDatabase.h"

#include <QDir>

AppSources AppSources::forThisSystem()
{
    QStringList dataFolders{StoragePaths::dataHome()};
    QString systemFolders = qEnvironmentVariable("XDG_DATA_DIRS");
    if (systemFolders.isEmpty())
        systemFolders = QStringLiteral("/usr/local/share:/usr/share");
    dataFolders += systemFolders.split(QLatin1Char(':'), Qt::SkipEmptyParts);

    const QStringList storeData{StoragePaths::dataHome() + QStringLiteral("/flatpak/exports/share"),
        QStringLiteral("/var/lib/flatpak/exports/share"), QStringLiteral("/var/lib/snapd/desktop")};
    QSet<QString> stores;
    for (const QString& store : storeData) {
        stores.insert(QDir::cleanPath(store + QStringLiteral("/applications")));
        if (!dataFolders.contains(store))
            dataFolders << store;
    }

    AppSources sources;
    for (const QString& folder : dataFolders) {
        const QString applications = QDir::cleanPath(folder + QStringLiteral("/applications"));
        if (!sources.applicationFolders.contains(applications))
            sources.applicationFolders << applications;
    }
    sources.storeFolders = stores;
    sources.packagedEntries = packagedDesktopEntries();
    return sources;
}
