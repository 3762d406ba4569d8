#include "scan/AppMatcher.h"

#include <QFileInfo>

namespace {

// Folders that hold the programs of many packages: sharing one says nothing about which app a process is.
bool isSharedProgramFolder(const QString& folder)
{
    return folder.endsWith(QLatin1String("/bin")) || folder.endsWith(QLatin1String("/sbin"))
        || folder.endsWith(QLatin1String("/games")) || folder.endsWith(QLatin1String("/libexec"))
        || folder == QLatin1String("/usr/lib") || folder.isEmpty();
}

} // namespace

AppMatcher::AppMatcher(const QList<InstalledApp>& apps)
{
    for (qsizetype i = 0; i < apps.size(); ++i) {
        const InstalledApp& app = apps[i];
        if (!app.executableName.isEmpty())
            m_byProgramName.insert(app.executableName.toLower(), i);
        if (app.bundleID && !app.bundleID->isEmpty())
            m_byFlatpakID.insert(app.bundleID->toLower(), i);
        const QString folder = QFileInfo(app.programPath).path();
        if (!app.programPath.isEmpty() && !isSharedProgramFolder(folder))
            m_byFolder.append({folder + QLatin1Char('/'), i});
    }
}

QList<qsizetype> AppMatcher::appsOf(const ProcessInfo& process) const
{
    QList<qsizetype> matches;
    const auto add = [&matches](const QList<qsizetype>& found) {
        for (const qsizetype app : found)
            if (!matches.contains(app))
                matches.append(app);
    };
    if (!process.flatpakAppID.isEmpty())
        add(m_byFlatpakID.values(process.flatpakAppID.toLower()));
    for (const QString& path : {process.executablePath, process.firstArgument})
        if (const QString name = QFileInfo(path).fileName(); !name.isEmpty())
            add(m_byProgramName.values(name.toLower()));
    for (const auto& [folder, app] : m_byFolder)
        if (process.executablePath.startsWith(folder))
            add({app});
    return matches;
}
