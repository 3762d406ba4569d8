#include "scan/SmartScanRules.h"

#include "common/LocalPath.h"
#include "platform/DirectoryReader.h"
#include "platform/FileStatus.h"
#include "platform/LinkTarget.h"
#include "removal/ItemSize.h"
#include "scan/FolderEntries.h"
#include "scan/LaunchAgentInfo.h"
#include "scan/ScanPulse.h"
#include "scan/SmartScanTexts.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>

#include <algorithm>
#include <vector>

namespace {

// One scan's working state: the pulse, the stop token, the listing buffer and whether the scan stopped.
class Scanner {
public:
    Scanner(ScanPulse& pulse, std::stop_token stop)
        : m_pulse(pulse)
        , m_stop(std::move(stop))
        , m_buffer(directoryBufferSize)
    {
    }

    bool stopped() const { return m_stopped; }

    // The direct entries of `folder` by name; none when it cannot be listed. The places to look may be links
    // (a cache folder moved elsewhere); what lies below them is never reached through one.
    std::vector<FolderEntry> list(
        const QString& folder, const QStringList& nameFilters = {}, FinalLink finalLink = FinalLink::followed)
    {
        m_pulse.recordFolder(folder);
        return listFolderEntries(folder, m_buffer, finalLink, nameFilters);
    }

    // False once the scan is cancelled; checked before each entry.
    bool goOn()
    {
        m_stopped = m_stopped || m_stop.stop_requested();
        return !m_stopped;
    }

    // The entry's size, or nothing when the scan was cancelled while measuring it.
    std::optional<qint64> size(const QString& path)
    {
        const ItemSize size = measureItem(
            LocalPath::encode(path).value_or(QByteArray()), m_buffer,
            [this](QByteArrayView folder, qint64 entries, qint64 bytes) {
                if (!folder.isEmpty())
                    m_pulse.recordFolder(LocalPath::printable(folder));
                m_pulse.add(entries, bytes);
            },
            m_stop);
        if (size.stopped) {
            m_stopped = true;
            return std::nullopt;
        }
        return size.bytes;
    }

private:
    ScanPulse& m_pulse;
    std::stop_token m_stop;
    std::vector<std::byte> m_buffer;
    bool m_stopped = false;
};

// Whether a group's items are sorted largest first or kept in the order they were found.
enum class ItemOrder { largestFirst, asFound };

void addGroup(QList<ScanGroup>& groups, const QString& title, const char* symbol, QList<ScanItem> items,
    ItemOrder order = ItemOrder::largestFirst)
{
    if (items.isEmpty())
        return;
    if (order == ItemOrder::largestFirst)
        std::stable_sort(
            items.begin(), items.end(), [](const ScanItem& a, const ScanItem& b) { return a.size > b.size; });
    groups.append(ScanGroup::make(title, QString::fromLatin1(symbol), std::move(items)));
}

ScanItem makeItem(const QString& path, qint64 size, RiskLevel risk, const QString& detail)
{
    return ScanItem::make(QUrl::fromLocalFile(path), size, risk, detail);
}

ScanItem cacheItem(const QString& path, qint64 size, OwnerCode code)
{
    switch (code) {
    case OwnerCode::installedNotRunning:
        return makeItem(path, size, RiskLevel::safe, SmartScanTexts::cacheInstalledNotRunning());
    case OwnerCode::system: return makeItem(path, size, RiskLevel::caution, SmartScanTexts::cacheSystem());
    case OwnerCode::inUse: return makeItem(path, size, RiskLevel::caution, SmartScanTexts::cacheInUse());
    case OwnerCode::shared: return makeItem(path, size, RiskLevel::caution, SmartScanTexts::cacheShared());
    case OwnerCode::orphan: break;
    }
    return makeItem(path, size, RiskLevel::caution, SmartScanTexts::unclaimed());
}

ScanItem savedStateItem(const QString& path, qint64 size, OwnerCode code)
{
    switch (code) {
    case OwnerCode::installedNotRunning: return makeItem(path, size, RiskLevel::safe, SmartScanTexts::savedState());
    case OwnerCode::system: return makeItem(path, size, RiskLevel::caution, SmartScanTexts::savedStateSystem());
    case OwnerCode::inUse: return makeItem(path, size, RiskLevel::caution, SmartScanTexts::savedStateInUse());
    case OwnerCode::shared: return makeItem(path, size, RiskLevel::caution, SmartScanTexts::savedStateUnrecognised());
    case OwnerCode::orphan: break;
    }
    return makeItem(path, size, RiskLevel::caution, SmartScanTexts::unclaimed());
}

bool isThumbnailCache(const QString& name)
{
    const QString lower = name.toLower();
    return lower == QLatin1String("thumbnails") || lower.contains(QLatin1String("quicklook"));
}

void scanCaches(const SmartScanInput& input, Scanner& scanner, QList<ScanGroup>& groups)
{
    QList<ScanItem> caches;
    QList<ScanItem> thumbnails;
    auto consider = [&](const QString& path, const QString& name) {
        const QString lower = name.toLower();
        // Velloru never offers its own cache.
        if (lower == input.owners.ownIdentifier || lower == input.ownCacheName)
            return;
        const std::optional<qint64> size = scanner.size(path);
        if (!size || *size < 1)
            return;
        if (isThumbnailCache(name))
            thumbnails.append(makeItem(path, *size, RiskLevel::safe, SmartScanTexts::thumbnailCache()));
        else
            caches.append(cacheItem(path, *size, classifyOwner(name, input.owners)));
    };
    for (const QString& folder : input.locations.cacheFolders) {
        for (const FolderEntry& entry : scanner.list(folder)) {
            if (!scanner.goOn())
                break;
            consider(entry.path, entry.name);
        }
    }
    if (!input.locations.flatpakAppsFolder.isEmpty()) {
        for (const FolderEntry& app : scanner.list(input.locations.flatpakAppsFolder)) {
            if (!scanner.goOn())
                break;
            if (app.type == EntryType::directory)
                consider(app.path + QStringLiteral("/cache"), app.name);
        }
    }
    addGroup(groups, SmartScanTexts::appCachesTitle(), "internaldrive", std::move(caches));
    // Only the cache items are sorted; the thumbnail caches stay in the order they were listed.
    addGroup(
        groups, SmartScanTexts::thumbnailsTitle(), "photo.on.rectangle", std::move(thumbnails), ItemOrder::asFound);
}

void scanLogs(const SmartScanInput& input, Scanner& scanner, QList<ScanGroup>& groups)
{
    QList<ScanItem> logs;
    for (const SmartScanLocations::LogSource& source : input.locations.logSources) {
        for (const FolderEntry& entry : scanner.list(source.folder, source.nameFilters)) {
            if (!scanner.goOn())
                break;
            // Crash reports are a group of their own even when they lie among the logs.
            if (input.locations.crashFolders.contains(entry.path))
                continue;
            const std::optional<qint64> size = scanner.size(entry.path);
            if (size && *size >= 1)
                logs.append(makeItem(entry.path, *size, RiskLevel::caution, SmartScanTexts::log()));
        }
    }
    addGroup(groups, SmartScanTexts::logsTitle(), "doc.text", std::move(logs));
}

bool ownedBy(const QString& path, std::optional<std::uint32_t> owner)
{
    if (!owner)
        return true;
    const std::optional<FileStatus> status = statusAt(AT_FDCWD, QFile::encodeName(path).constData());
    return status && status->uid == *owner;
}

void scanCrashReports(const SmartScanInput& input, Scanner& scanner, QList<ScanGroup>& groups)
{
    QList<ScanItem> reports;
    for (const QString& folder : input.locations.crashFolders) {
        for (const FolderEntry& entry : scanner.list(folder)) {
            if (!scanner.goOn())
                break;
            if (!ownedBy(entry.path, input.locations.crashOwner))
                continue;
            // An empty crash report is still listed: only a size that could not be read skips it.
            const std::optional<qint64> size = scanner.size(entry.path);
            if (size && *size >= 0)
                reports.append(makeItem(entry.path, *size, RiskLevel::safe, SmartScanTexts::crashReport()));
        }
    }
    addGroup(groups, SmartScanTexts::crashReportsTitle(), "bandage", std::move(reports));
}

void scanSavedStates(const SmartScanInput& input, Scanner& scanner, QList<ScanGroup>& groups)
{
    QList<ScanItem> states;
    for (const QString& folder : input.locations.savedStateFolders) {
        for (const FolderEntry& entry : scanner.list(folder)) {
            if (!scanner.goOn())
                break;
            const std::optional<qint64> size = scanner.size(entry.path);
            if (size && *size >= 1)
                states.append(
                    savedStateItem(entry.path, *size, classifyOwner(savedStateIdentifier(entry.name), input.owners)));
        }
    }
    addGroup(groups, SmartScanTexts::savedStatesTitle(), "macwindow.on.rectangle", std::move(states));
}

void findBrokenLinks(const QString& folder, FinalLink finalLink, int depth, Scanner& scanner, QSet<QString>& seen,
    QList<ScanItem>& links)
{
    for (const FolderEntry& entry : scanner.list(folder, {}, finalLink)) {
        if (!scanner.goOn())
            return;
        const QString& path = entry.path;
        if (entry.type == EntryType::symlink) {
            const std::optional<QString> target = readLinkTarget(path);
            if (!target || seen.contains(path))
                continue;
            // exists() has the system follow the link itself, by the target's own bytes, and a chain of links to
            // its end, so a link to a broken link is broken too. (The target as text is only for the reason.)
            if (!QFileInfo::exists(path)) {
                seen.insert(path);
                links.append(makeItem(path, 0, RiskLevel::safe, SmartScanTexts::brokenLink(*target)));
            }
        } else if (entry.type == EntryType::directory && depth > 1) {
            findBrokenLinks(path, FinalLink::notFollowed, depth - 1, scanner, seen, links);
        }
    }
}

void scanBrokenItems(const SmartScanInput& input, Scanner& scanner, QList<ScanGroup>& groups)
{
    QList<ScanItem> items;
    QSet<QString> seen;
    for (const SmartScanLocations::LinkPlace& place : input.locations.linkPlaces)
        if (scanner.goOn())
            findBrokenLinks(place.folder, FinalLink::followed, place.depth, scanner, seen, items);
    for (const LaunchAgentInfo& agent : readLaunchAgents(input.locations.startupFolders)) {
        if (!scanner.goOn())
            break;
        if (agent.broken)
            items.append(makeItem(
                agent.id, QFileInfo(agent.id).size(), RiskLevel::caution, SmartScanTexts::startupProgramMissing()));
    }
    // Links first, then startup items, each in the order found.
    addGroup(groups, SmartScanTexts::brokenItemsTitle(), "link.badge.plus", std::move(items), ItemOrder::asFound);
}

} // namespace

QString savedStateIdentifier(const QString& entryName)
{
    const qsizetype underscore = entryName.indexOf(QLatin1Char('_'));
    return underscore > 0 ? entryName.left(underscore) : entryName;
}

QList<ScanGroup> runSmartScan(const SmartScanInput& input, ScanPulse& pulse, std::stop_token stop)
{
    Scanner scanner(pulse, std::move(stop));
    QList<ScanGroup> groups;
    for (auto step : {scanCaches, scanLogs, scanCrashReports, scanSavedStates, scanBrokenItems}) {
        step(input, scanner, groups);
        if (scanner.stopped())
            break;
    }
    return groups;
}
