#include "duplicates/DuplicateScan.h"

#include "common/Log.h"
#include "duplicates/DuplicateEngine.h"
#include "duplicates/DuplicateGroupBuilder.h"
#include "duplicates/DuplicateRules.h"
#include "duplicates/FileInventory.h"
#include "duplicates/NotScannedSummary.h"
#include "duplicates/VolumeHashCaches.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QStandardPaths>

#include <algorithm>
#include <memory>

struct DuplicateScan::Outcome {
    bool cancelled = false;
    QList<DuplicateGroup> groups;
    InventoryStats inventoryStats;
    EngineStats engineStats;
};

namespace {

constexpr int tickerInterval = 100; // milliseconds between telemetry samples

std::shared_ptr<const DuplicateScan::Outcome> runScan(
    const InventoryOptions& options, const UserFolders& folders, TelemetryBox& box, std::stop_token stop);

} // namespace

DuplicateScan::DuplicateScan(QObject* parent)
    : QObject(parent)
{
    m_ticker.setInterval(tickerInterval);
    connect(&m_ticker, &QTimer::timeout, this, &DuplicateScan::refreshTelemetry);
}

DuplicateScan::~DuplicateScan()
{
    m_task.request_stop();
}

QStringList DuplicateScan::defaultRoots()
{
    const QString home = QDir::homePath();
    const QStringList candidates = {
        QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation),
        QStandardPaths::writableLocation(QStandardPaths::PicturesLocation),
        QStandardPaths::writableLocation(QStandardPaths::MusicLocation),
        QStandardPaths::writableLocation(QStandardPaths::MoviesLocation),
        home + QStringLiteral("/Developer"),
        QStandardPaths::writableLocation(QStandardPaths::DownloadLocation),
        QStandardPaths::writableLocation(QStandardPaths::DesktopLocation),
    };
    const QString resolvedHome = QFileInfo(home).canonicalFilePath();
    QStringList roots;
    for (const QString& candidate : candidates) {
        const QString folder = QDir::cleanPath(candidate);
        // A user folder pointed at the home itself, by name or through a link, would turn the scan into a
        // scan of everything.
        if (folder != home && QFileInfo(folder).isDir() && QFileInfo(folder).canonicalFilePath() != resolvedHome
            && !roots.contains(folder))
            roots.append(folder);
    }
    return roots;
}

void DuplicateScan::start()
{
    if (m_phase == Phase::scanning)
        return;
    if (m_task.joinable())
        m_task.join(); // a cancelled scan still winding down

    InventoryOptions options;
    for (const QString& root : m_roots)
        options.roots.push_back(QFile::encodeName(root).toStdString());
    options.homePath = QFile::encodeName(QDir::homePath()).toStdString();
    options.sizeFloor = m_minimumSize;

    m_groups.clear();
    m_notScanned.clear();
    m_box.start(sizeBucket(options.sizeFloor));
    m_telemetry = m_box.sample();
    setPhase(Phase::scanning);
    m_ticker.start();
    logLine(QStringLiteral("duplicate scan started roots=%1 minimumSize=%2").arg(m_roots.size()).arg(m_minimumSize));

    m_task = std::jthread([this, options, folders = UserFolders::ofCurrentUser()](std::stop_token stop) {
        std::shared_ptr<const Outcome> outcome = runScan(options, folders, m_box, stop);
        {
            std::lock_guard guard(m_outcomeLock);
            m_outcome = std::move(outcome);
        }
        QMetaObject::invokeMethod(this, "collectOutcome", Qt::QueuedConnection);
    });
}

void DuplicateScan::cancel()
{
    m_task.request_stop();
}

bool DuplicateScan::setTicked(const QUuid& groupID, const QUuid& memberID, bool ticked)
{
    for (DuplicateGroup& group : m_groups) {
        if (group.id != groupID)
            continue;
        const auto member = std::find_if(group.members.cbegin(), group.members.cend(),
            [&memberID](const DuplicateFile& file) { return file.id == memberID; });
        if (member == group.members.cend() || member->id == group.keeperID || DuplicateRules::blockReason(*member))
            return false;
        group.selected.removeAll(memberID);
        if (ticked) {
            // Ticks stay in member order.
            QList<QUuid> selected;
            for (const DuplicateFile& file : group.members)
                if (file.id == memberID || group.selected.contains(file.id))
                    selected.append(file.id);
            group.selected = selected;
        }
        return true;
    }
    return false;
}

void DuplicateScan::startMove()
{
    setPhase(Phase::moving);
}

void DuplicateScan::finishMove(const VaultMoveResult& result)
{
    QSet<QString> moved;
    for (const VaultEntry& entry : result.moved)
        moved.insert(entry.originalPath);
    for (DuplicateGroup& group : m_groups) {
        for (const DuplicateFile& member : group.members)
            if (moved.contains(member.path))
                group.selected.removeAll(member.id);
        group.members.removeIf([&moved](const DuplicateFile& member) { return moved.contains(member.path); });
    }
    m_groups.removeIf([](const DuplicateGroup& group) { return group.members.size() < 2; });
    m_lastMove = result;
    setPhase(Phase::done);
}

void DuplicateScan::collectOutcome()
{
    std::shared_ptr<const Outcome> outcome;
    {
        std::lock_guard guard(m_outcomeLock);
        outcome = std::exchange(m_outcome, nullptr);
    }
    if (outcome)
        finish(*outcome);
}

void DuplicateScan::finish(const Outcome& outcome)
{
    m_ticker.stop();
    m_inventoryStats = outcome.inventoryStats;
    m_engineStats = outcome.engineStats;
    if (outcome.cancelled) {
        logLine(QStringLiteral("duplicate scan cancelled"));
        refreshTelemetry();
        setPhase(Phase::idle);
        return;
    }
    m_groups = outcome.groups;
    m_notScanned = notScannedSummary(m_inventoryStats, m_engineStats);
    std::int64_t reclaimable = 0;
    for (const DuplicateGroup& group : m_groups)
        reclaimable += group.reclaimable();
    m_box.finish(reclaimable);
    refreshTelemetry();
    logLine(QStringLiteral("duplicate scan finished files=%1 sets=%2 reclaimable=%3 cacheHits=%4 unreadable=%5 "
                           "changed=%6 badNames=%7")
                .arg(m_inventoryStats.filesIndexed)
                .arg(m_groups.size())
                .arg(reclaimable)
                .arg(m_engineStats.prunedByCache)
                .arg(m_engineStats.unreadable)
                .arg(m_engineStats.changedDuringScan)
                .arg(m_inventoryStats.badNameFilesSkipped + m_inventoryStats.badNameFoldersSkipped));
    setPhase(Phase::results);
}

void DuplicateScan::setPhase(Phase phase)
{
    if (m_phase == phase)
        return;
    m_phase = phase;
    Q_EMIT phaseChanged(phase);
}

void DuplicateScan::refreshTelemetry()
{
    m_telemetry = m_box.sample();
    Q_EMIT telemetryChanged();
}

namespace {

std::shared_ptr<const DuplicateScan::Outcome> runScan(
    const InventoryOptions& options, const UserFolders& folders, TelemetryBox& box, std::stop_token stop)
{
    auto outcome = std::make_shared<DuplicateScan::Outcome>();
    const auto cancelled = [stop] { return stop.stop_requested(); };

    box.setStage(DuplicateStage::inventory);
    Inventory inventory
        = FileInventory::build(options, cancelled, [&box](const InventoryStats& stats) { box.updateInventory(stats); });
    outcome->inventoryStats = inventory.stats;
    box.updateInventory(inventory.stats);
    if (cancelled()) {
        outcome->cancelled = true;
        return outcome;
    }

    box.setStage(DuplicateStage::bucket);
    DuplicateEngine::Callbacks callbacks;
    callbacks.progress = [&box](const EngineStats& stats, double fraction) { box.updateEngine(stats, fraction); };
    callbacks.confirmed = [&box](const VerifiedGroup& group) { box.announce(group); };
    DuplicateEngine::Result result = [&] {
        // The caches are saved by the engine and let go before the sets are built.
        const VolumeHashCaches caches = VolumeHashCaches::open(inventory);
        return DuplicateEngine::run(inventory, &caches, callbacks, cancelled);
    }();
    outcome->engineStats = result.stats;
    if (cancelled()) {
        outcome->cancelled = true;
        return outcome;
    }
    outcome->groups = presentDuplicateGroups(inventory, result.groups);
    inventory = {}; // the largest structure of the scan, not needed from here on
    result.groups = {};
    chooseKeepersAndTicks(outcome->groups, folders);
    return outcome;
}

} // namespace
