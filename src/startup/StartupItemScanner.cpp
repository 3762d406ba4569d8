#include "startup/StartupItemScanner.h"

#include "apps/DesktopEntry.h"
#include "common/Log.h"
#include "platform/PackageDatabase.h"
#include "startup/AutostartOverride.h"
#include "startup/LaunchAgentInfo.h"
#include "startup/ServiceManagerRecords.h"
#include "startup/StartupHealthRules.h"
#include "startup/StartupSwitch.h"
#include "startup/UnitEnablement.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>

namespace {

// The operating system's own files, with /lib and /usr/lib taken as the one folder they are on a merged
// system.
class OperatingSystemFiles {
public:
    explicit OperatingSystemFiles(const QString& dpkgFolder)
        : m_files(operatingSystemFiles(dpkgFolder))
    {
    }

    bool contains(const QString& path) const
    {
        if (m_files.contains(path))
            return true;
        if (path.startsWith(QLatin1String("/usr/lib/")))
            return m_files.contains(path.mid(4));
        if (path.startsWith(QLatin1String("/lib/")))
            return m_files.contains(QStringLiteral("/usr") + path);
        return false;
    }

private:
    QSet<QString> m_files;
};

// The service units directly inside `folder`. A name linked to /dev/null is a mask, and one linked to a unit
// of another name an alias of that unit, not a unit of its own.
QFileInfoList unitFiles(const QString& folder)
{
    QFileInfoList units;
    for (const QFileInfo& file : QDir(folder).entryInfoList({QStringLiteral("*.service")}, QDir::Files | QDir::System))
        if (!file.isSymLink() || QFileInfo(file.symLinkTarget()).fileName() == file.fileName())
            units.append(file);
    return units;
}

StartupItem unitItem(const LaunchAgentInfo& unit, const QString& name, const QString& homeTrash)
{
    StartupItem item;
    item.id = name;
    item.name = unit.description.isEmpty() ? name : unit.description;
    item.program = unit.program;
    item.detail = name + QStringLiteral(" — ") + unit.program;
    item.health = StartupHealthRules::healthOf(unit.program, homeTrash);
    item.revealURL = unit.id;
    return item;
}

// Outside the user's home a unit file belongs to a package unless an administrator put it in /etc.
StartupRemoval removalOutsideHome(const QString& path)
{
    return path.startsWith(QLatin1String("/etc/")) ? StartupRemoval::trashPlistAsRoot : StartupRemoval::ownedByApp;
}

std::optional<LaunchAgentInfo> readUnit(const QFileInfo& file)
{
    std::optional<LaunchAgentInfo> unit = readLaunchAgent(file.filePath());
    if (!unit)
        logLine(QStringLiteral("startup unit skipped path=%1").arg(logValue(file.filePath())));
    return unit;
}

struct AutostartFile {
    QByteArray content;
    DesktopEntry entry;
};

std::optional<AutostartFile> readAutostart(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > 1024 * 1024) {
        logLine(QStringLiteral("autostart entry skipped path=%1 reason=unreadable").arg(logValue(path)));
        return std::nullopt;
    }
    const QByteArray content = file.readAll();
    std::optional<DesktopEntry> entry = DesktopEntry::parse(content);
    if (!entry) {
        logLine(QStringLiteral("autostart entry skipped path=%1 reason=unparsable").arg(logValue(path)));
        return std::nullopt;
    }
    return AutostartFile{content, std::move(*entry)};
}

class Scan {
public:
    explicit Scan(const StartupLocations& locations)
        : m_locations(locations)
        , m_system(locations.dpkgFolder)
    {
    }

    QList<StartupItem> items()
    {
        const UnitEnablement user
            = UnitEnablement::read(QStringList{m_locations.userUnits} + m_locations.globalUserUnits);
        const QSet<QString> own = userUnits(user);
        unitsOutsideHome(m_locations.globalUserUnits, StartupKind::agent, StartupControl::userLaunchd, user, own);
        unitsOutsideHome(m_locations.systemUnits, StartupKind::daemon, StartupControl::systemLaunchd,
            UnitEnablement::read(m_locations.systemUnits), {});
        autostartEntries();
        return m_items;
    }

private:
    // The user's own units; answers their names, which hide same-named units of every user.
    QSet<QString> userUnits(const UnitEnablement& enablement)
    {
        QSet<QString> names;
        for (const QFileInfo& file : unitFiles(m_locations.userUnits)) {
            names.insert(file.fileName());
            const std::optional<LaunchAgentInfo> unit = readUnit(file);
            if (!unit)
                continue;
            StartupItem item = unitItem(*unit, file.fileName(), m_locations.homeTrash);
            item.kind = StartupKind::agent;
            item.control = StartupControl::userLaunchd;
            item.removal = StartupRemoval::trashPlist;
            item.enabled = enablement.isOn(file.fileName());
            m_items.append(item);
        }
        return names;
    }

    // Units that can start by themselves (enabled, or with an [Install] section to enable them by), from
    // folders where the first of two same-named files wins.
    void unitsOutsideHome(const QStringList& folders, StartupKind kind, StartupControl control,
        const UnitEnablement& enablement, QSet<QString> seen)
    {
        for (const QString& folder : folders) {
            for (const QFileInfo& file : unitFiles(folder)) {
                const QString name = file.fileName();
                if (seen.contains(name) || m_system.contains(file.filePath()))
                    continue;
                seen.insert(name);
                const bool isTemplate = name.contains(QLatin1String("@."));
                const bool on = enablement.isOn(name);
                if (!on && isTemplate)
                    continue;
                const std::optional<LaunchAgentInfo> unit = readUnit(file);
                if (!unit || (!on && !unit->runAtLoad && !enablement.masked.contains(name)))
                    continue;
                StartupItem item = unitItem(*unit, name, m_locations.homeTrash);
                item.kind = kind;
                item.control = control;
                item.removal = removalOutsideHome(file.filePath());
                item.enabled = on;
                m_items.append(item);
            }
        }
    }

    void autostartEntries()
    {
        QStringList names = QDir(m_locations.userAutostart).entryList({QStringLiteral("*.desktop")}, QDir::Files);
        QHash<QString, QString> systemFiles;
        for (const QString& folder : m_locations.systemAutostart) {
            for (const QString& name : QDir(folder).entryList({QStringLiteral("*.desktop")}, QDir::Files)) {
                if (!systemFiles.contains(name)) {
                    systemFiles.insert(name, folder + QLatin1Char('/') + name);
                    names.append(name);
                }
            }
        }
        names.removeDuplicates();
        for (const QString& name : names) {
            const QString userPath = m_locations.userAutostart + QLatin1Char('/') + name;
            std::optional<AutostartFile> user;
            if (QFileInfo::exists(userPath) && !(user = readAutostart(userPath)))
                continue;
            const QString systemPath = systemFiles.value(name);
            if (systemPath.isEmpty()) {
                m_items.append(userEntry(userPath, *user));
                continue;
            }
            if (m_system.contains(systemPath))
                continue;
            const std::optional<AutostartFile> system = readAutostart(systemPath);
            // A system entry with Hidden=true counts as deleted.
            if (!system || system->entry.flag(QStringLiteral("Hidden")))
                continue;
            m_items.append(systemEntry(systemPath, *system, user));
        }
    }

    StartupItem autostartItem(const QString& path, const DesktopEntry& entry)
    {
        StartupItem item;
        item.id = QStringLiteral("app:") + path;
        item.name = entry.value(QStringLiteral("Name"));
        if (item.name.isEmpty())
            item.name = QFileInfo(path).completeBaseName();
        item.control = StartupControl::loginApp;
        item.revealURL = path;
        const QString flatpak = entry.value(QStringLiteral("X-Flatpak"));
        item.program = flatpak.isEmpty() ? entry.program() : flatpakFolder(flatpak);
        if (item.program.isEmpty())
            item.program = LaunchAgentInfo::noProgram();
        item.detail = item.program;
        if (!flatpak.isEmpty()) {
            item.developer = flatpak;
            item.detail = QStringLiteral("Flatpak app %1").arg(flatpak);
        }
        item.health = StartupHealthRules::healthOf(item.program, m_locations.homeTrash);
        return item;
    }

    // The user's own entry. One that a Flatpak app placed through the desktop's background portal belongs
    // to that app, which writes it again whenever it likes.
    StartupItem userEntry(const QString& path, const AutostartFile& file)
    {
        StartupItem item = autostartItem(path, file.entry);
        const bool placedByApp = !file.entry.value(QStringLiteral("X-Flatpak")).isEmpty();
        item.kind = placedByApp ? StartupKind::loginItem : StartupKind::app;
        item.removal = placedByApp ? StartupRemoval::ownedByApp : StartupRemoval::loginAppEntry;
        item.enabled = !AutostartOverride::switchesOff(file.content);
        return item;
    }

    // An entry placed by software, possibly switched off by a same-named override in the user's folder.
    StartupItem systemEntry(const QString& path, const AutostartFile& file, const std::optional<AutostartFile>& user)
    {
        StartupItem item = autostartItem(path, file.entry);
        if (user && !user->entry.program().isEmpty())
            item.program = user->entry.program();
        item.kind = StartupKind::loginItem;
        item.removal = StartupRemoval::ownedByApp;
        item.enabled
            = !AutostartOverride::switchesOff(file.content) && !(user && AutostartOverride::switchesOff(user->content));
        return item;
    }

    QString flatpakFolder(const QString& appID) const
    {
        for (const QString& folder : m_locations.flatpakApps) {
            const QString path = folder + QLatin1Char('/') + appID;
            if (QFileInfo::exists(path))
                return path;
        }
        return m_locations.flatpakApps.value(0) + QLatin1Char('/') + appID;
    }

    const StartupLocations& m_locations;
    OperatingSystemFiles m_system;
    QList<StartupItem> m_items;
};

} // namespace

StartupItemScanner::StartupItemScanner(StartupLocations locations)
    : m_locations(std::move(locations))
{
}

StartupItemScanner::Result StartupItemScanner::scan() const
{
    Result result;
    result.items = Scan(m_locations).items();
    const std::optional<QHash<QString, QString>> records = ServiceManagerRecords::read();
    result.complete = records.has_value();
    for (StartupItem& item : result.items) {
        if (records && item.control == StartupControl::userLaunchd && !item.enabled)
            item.systemSettingsDisagrees = records->value(item.id) == QLatin1String("active");
        // A program launching from the Trash is a broken state with one right answer.
        if (item.health == StartupHealth::appInTrash && item.enabled && item.control != StartupControl::systemLaunchd
            && StartupSwitch::setEnabled(item, false, m_locations).success) {
            item.enabled = false;
            result.switchedOff.append(item);
        }
    }
    std::sort(result.items.begin(), result.items.end(),
        [](const StartupItem& a, const StartupItem& b) { return a.name.compare(b.name, Qt::CaseInsensitive) < 0; });
    return result;
}
