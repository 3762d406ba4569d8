#include "apps/AppCollector.h"

#include "apps/DesktopEntry.h"
#include "apps/Identifier.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

// Path pieces that mark an entry as not an installed app of its own.
bool liesWhereNoAppLives(const QString& path)
{
    static const QStringList pieces{QStringLiteral("/Trash/"), QStringLiteral("/.Trash"), QStringLiteral("/.mount_"),
        QStringLiteral("/node_modules/"), QStringLiteral("/build/"), QStringLiteral("/dist/")};
    for (const QString& piece : pieces)
        if (path.contains(piece))
            return true;
    return false;
}

QString userLocale()
{
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QString value = qEnvironmentVariable(variable);
        if (!value.isEmpty())
            return value;
    }
    return {};
}

QString findProgram(const QString& program)
{
    if (program.isEmpty())
        return {};
    if (program.startsWith(QLatin1Char('/')))
        return QFileInfo::exists(program) ? program : QString();
    return QStandardPaths::findExecutable(program);
}

// Third-party repositories install their programs under /opt; the distribution never does.
AppSource sourceOf(const QString& entryPath, const QString& resolvedPath, const QString& folder,
    const QStringList& programPaths, const AppSources& sources)
{
    if (sources.storeFolders.contains(folder))
        return AppSource::appStore;
    if (sources.packagedEntries.contains(entryPath) || sources.packagedEntries.contains(resolvedPath)) {
        for (const QString& path : programPaths)
            if (path.startsWith(QLatin1String("/opt/")))
                return AppSource::developerID;
        return AppSource::system;
    }
    return AppSource::unsignedApp;
}

std::optional<InstalledApp> readApp(const QString& entryPath, const DesktopEntry& entry, const QString& desktopFileID,
    const QString& folder, const AppSources& sources, const QString& locale)
{
    const QString resolved = QFileInfo(entryPath).canonicalFilePath();
    if (resolved.isEmpty() || liesWhereNoAppLives(entryPath.mid(folder.size())) || liesWhereNoAppLives(resolved))
        return std::nullopt;
    if (entry.value(QStringLiteral("Type")) != QLatin1String("Application") || entry.flag(QStringLiteral("Hidden"))
        || entry.flag(QStringLiteral("NoDisplay")))
        return std::nullopt;
    const QString tryExec = entry.value(QStringLiteral("TryExec"));
    if (!tryExec.isEmpty() && findProgram(tryExec).isEmpty())
        return std::nullopt;

    InstalledApp app;
    app.id = resolved;
    app.name = entry.localizedValue(QStringLiteral("Name"), locale);
    if (app.name.isEmpty())
        app.name = desktopFileID;
    const QString flatpakID = entry.value(QStringLiteral("X-Flatpak"));
    app.bundleID = flatpakID.isEmpty() ? desktopFileID : flatpakID;
    if (isReverseDomainName(*app.bundleID))
        app.vendor = identifierDomain(*app.bundleID);
    const QString program = entry.program();
    const QString programPath = findProgram(program);
    // A Flatpak entry starts "flatpak run …"; the program's name says nothing about the app.
    if (flatpakID.isEmpty() && !program.isEmpty())
        app.executableName = QFileInfo(program).fileName();
    if (flatpakID.isEmpty())
        app.programPath = QFileInfo(programPath).canonicalFilePath();
    app.source = sourceOf(entryPath, resolved, folder, {program, app.programPath}, sources);
    app.isProtected = app.source == AppSource::system && resolved.startsWith(QLatin1String("/usr/"))
        && !resolved.startsWith(QLatin1String("/usr/local/"));
    if (!app.programPath.isEmpty())
        app.size = QFileInfo(app.programPath).size();
    return app;
}

} // namespace

QList<InstalledApp> collectInstalledApps(const AppSources& sources)
{
    const QString locale = userLocale();
    QSet<QString> claimedIDs;    // desktop-file ids seen in a folder of higher precedence
    QSet<QString> resolvedPaths; // apps already listed, by resolved path
    QList<InstalledApp> apps;
    for (const QString& folder : sources.applicationFolders) {
        const QString root = QDir::cleanPath(folder);
        QDirIterator it(root, {QStringLiteral("*.desktop")}, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            // The desktop-file id: the path below applications/ with "/" turned into "-".
            QString desktopFileID = path.mid(root.size() + 1);
            desktopFileID.chop(int(sizeof(".desktop")) - 1);
            desktopFileID.replace(QLatin1Char('/'), QLatin1Char('-'));
            if (claimedIDs.contains(desktopFileID))
                continue;
            // A file that cannot be read or is not a desktop entry at all hides nothing.
            const std::optional<DesktopEntry> entry = DesktopEntry::read(path);
            if (!entry)
                continue;
            claimedIDs.insert(desktopFileID);
            if (desktopFileID.compare(sources.ownBundleID, Qt::CaseInsensitive) == 0)
                continue;
            std::optional<InstalledApp> app = readApp(path, *entry, desktopFileID, root, sources, locale);
            if (!app || resolvedPaths.contains(app->id))
                continue;
            resolvedPaths.insert(app->id);
            apps.append(std::move(*app));
        }
    }
    return apps;
}
