#include "scan/SmartScanSession.h"

#include "apps/AppInventory.h"
#include "common/BackgroundTask.h"
#include "common/Log.h"
#include "common/StoragePaths.h"
#include "removal/AuditLog.h"
#include "removal/TrashRecorder.h"
#include "removal/Trasher.h"
#include "scan/RunningMonitor.h"
#include "scan/SmartScanRules.h"
#include "scan/SmartScanTexts.h"

#include <QFileInfo>

SmartScanSession::SmartScanSession(AppInventory& inventory, RunningMonitor& running, const Trasher& trasher,
    AuditLog& audit, SmartScanLocations locations, QObject* parent)
    : QObject(parent)
    , m_inventory(inventory)
    , m_running(running)
    , m_trasher(trasher)
    , m_audit(audit)
    , m_locations(std::move(locations))
    , m_exclusions(StoragePaths::dataFolder())
{
}

SmartScanSession::~SmartScanSession()
{
    m_stop.request_stop();
}

ScanPulse::Snapshot SmartScanSession::pulse() const
{
    return m_pulse ? m_pulse->snapshot() : ScanPulse::Snapshot{};
}

void SmartScanSession::setPhase(ScanPhaseValue phase)
{
    m_phase = std::move(phase);
    Q_EMIT phaseChanged();
}

void SmartScanSession::scan()
{
    if (m_task || std::holds_alternative<ScanPhase::Scanning>(m_phase)
        || std::holds_alternative<ScanPhase::Cleaning>(m_phase))
        return;
    m_pulse = std::make_shared<ScanPulse>();
    m_stop = std::stop_source();
    setPhase(ScanPhase::Scanning{});
    // Without the installed apps every cache would read as unclaimed, so a first scan waits for them.
    if (!m_inventory.hasScanned()) {
        m_waitForApps = connect(&m_inventory, &AppInventory::scanned, this, [this] {
            disconnect(m_waitForApps);
            startScanning();
        });
        if (!m_inventory.isLoading())
            m_inventory.scan();
        return;
    }
    startScanning();
}

void SmartScanSession::startScanning()
{
    if (m_stop.stop_requested()) {
        m_groups.clear();
        m_selection = ScanSelection();
        setPhase(ScanPhase::Results{});
        return;
    }
    // An app launched since the last sample must not have its cache ticked.
    m_running.refresh();
    SmartScanInput input;
    input.locations = m_locations;
    input.owners.installed = m_inventory.knownBundleIDs() + m_inventory.knownExecutableNames();
    input.owners.running = m_running.runningBundleIDs();
    input.owners.ownIdentifier = QStringLiteral("us.ambertrell.velloru");
    input.owners.systemPrefixes = {QStringLiteral("org.freedesktop.")};
    m_task = runInBackground(
        this,
        [input = std::move(input), pulse = m_pulse, stop = m_stop.get_token()] {
            return runSmartScan(input, *pulse, stop);
        },
        [this](QList<ScanGroup> groups) {
            m_task.reset();
            m_groups = std::move(groups);
            m_exclusions.removeExcluded(m_groups);
            // Exactly the safe items start ticked.
            QSet<QUuid> ticked;
            for (const ScanGroup& group : std::as_const(m_groups))
                for (const ScanItem& item : group.items)
                    if (item.risk == RiskLevel::safe)
                        ticked.insert(item.id);
            m_selection = ScanSelection(std::move(ticked));
            logLine(QStringLiteral("smart scan finished groups=%1 bytes=%2 stopped=%3")
                        .arg(m_groups.size())
                        .arg(totalSize(m_groups))
                        .arg(m_stop.stop_requested()));
            Q_EMIT selectionChanged();
            setPhase(ScanPhase::Results{});
        });
}

void SmartScanSession::cancel()
{
    if (std::holds_alternative<ScanPhase::Scanning>(m_phase)) {
        m_stop.request_stop();
        if (!m_task) {
            disconnect(m_waitForApps);
            startScanning();
        }
    }
}

void SmartScanSession::setSelection(ScanSelection selection)
{
    m_selection = std::move(selection);
    Q_EMIT selectionChanged();
}

const std::optional<QString>& SmartScanSession::recordProblem() const
{
    return m_audit.lastSaveProblem();
}

void SmartScanSession::clean()
{
    if (m_task || !std::holds_alternative<ScanPhase::Results>(m_phase))
        return;
    QList<TrashItem> items;
    for (const ScanItem& item : m_selection.tickedItems(m_groups))
        items.append({item.url.toLocalFile(), item.size});
    if (items.isEmpty())
        return;
    setPhase(ScanPhase::Cleaning{});
    // Each move is journaled as it happens, so the log misses none even if Velloru stops mid-clean.
    const auto recorder = std::make_shared<TrashRecorder>(m_audit.journal(), SmartScanTexts::feature());
    m_task = runInBackground(
        this, [items, recorder, &trasher = m_trasher] { return trasher.moveToTrash(items, recorder.get()); },
        [this, recorder](TrashResult result) {
            m_task.reset();
            m_audit.record(*recorder);
            const qint64 moved = result.succeeded.size();
            const qint64 freed = result.freed;
            m_lastRemoval = std::move(result);
            // The moved items leave the review; the ones that stayed remain listed for another try.
            QSet<QString> movedPaths;
            for (const TrashItem& item : m_lastRemoval->succeeded)
                movedPaths.insert(item.path);
            for (ScanGroup& group : m_groups)
                group.items.removeIf([&](const ScanItem& item) { return movedPaths.contains(item.url.toLocalFile()); });
            m_groups.removeIf([](const ScanGroup& group) { return group.items.isEmpty(); });
            setPhase(ScanPhase::Done{moved, freed});
        });
}

QString SmartScanSession::itemName(const ScanItem& item) const
{
    const QString path = item.url.toLocalFile();
    const QString name = QFileInfo(path).fileName();
    const QString flatpakApps = m_locations.flatpakAppsFolder + QLatin1Char('/');
    if (m_locations.flatpakAppsFolder.isEmpty() || !path.startsWith(flatpakApps))
        return name;
    const QString appID = path.mid(flatpakApps.size()).section(QLatin1Char('/'), 0, 0);
    for (const InstalledApp& app : m_inventory.apps())
        if (app.bundleID == appID)
            return QStringLiteral("%1 — %2").arg(app.name, name);
    return QStringLiteral("%1 — %2").arg(appID, name);
}

std::optional<QString> SmartScanSession::exclude(const ScanItem& item)
{
    const std::optional<QString> problem = m_exclusions.add(item.url.toLocalFile());
    m_exclusions.removeExcluded(m_groups);
    QSet<QUuid> ticked;
    for (const ScanGroup& group : std::as_const(m_groups))
        for (const ScanItem& kept : group.items)
            if (m_selection.isTicked(kept.id))
                ticked.insert(kept.id);
    m_selection = ScanSelection(std::move(ticked));
    logLine(QStringLiteral("smart scan exclusion added path=%1").arg(logValue(item.url.toLocalFile())));
    Q_EMIT selectionChanged();
    Q_EMIT phaseChanged();
    return problem;
}
