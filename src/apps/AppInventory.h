#pragma once

#include "apps/AppSources.h"
#include "apps/InstalledApp.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QObject>
#include <QSet>

#include <functional>
#include <memory>
#include <thread>

class QFileSystemWatcher;
class QTimer;

// The single list of installed applications. Scans run off the main thread and publish on it; at most one
// runs at a time, and a change that arrives during a scan makes exactly one more scan when it ends, so no
// change is lost. Main thread only.
class AppInventory : public QObject {
    Q_OBJECT

public:
    // Changes in the application folders are delivered in batches at most this often. A change after a quiet
    // spell is delivered at once; changes within this time of a delivery wait for its end, however long
    // they go on, so a folder that never stops changing is still rescanned every time this passes.
    static constexpr int changeLatencyMs = 2000;

    // `sources` is called on the scanning thread for each scan, so folders that appear later are seen.
    explicit AppInventory(std::function<AppSources()> sources = &AppSources::forThisSystem, QObject* parent = nullptr);
    ~AppInventory() override;

    const QList<InstalledApp>& apps() const { return m_apps; }
    bool isLoading() const { return m_rescanTask != nullptr; }
    bool hasScanned() const { return m_lastScan.isValid(); }
    QDateTime lastScan() const { return m_lastScan; }

    // Starts a scan, or marks one pending when a scan is already running.
    void scan();
    // Watches the application folders; every batch of changes asks for a rescan. Lives until the end.
    void startMonitoring();

    // The lookups. Identifiers and names compare without regard to case.
    bool isBundleIDInstalled(const QString& bundleID) const;
    bool isAppNameInstalled(const QString& name) const;
    bool isVendorKnown(const QString& vendor) const;
    bool isAppGroupClaimed(const QString& group) const;

    // Lower-cased desktop-file ids and Flatpak app ids, and lower-cased program names.
    const QSet<QString>& knownBundleIDs() const { return m_knownBundleIDs; }
    const QSet<QString>& knownExecutableNames() const { return m_knownExecutableNames; }

Q_SIGNALS:
    void loadingChanged(bool loading);
    // A scan finished and its apps are published.
    void scanned();

private:
    void publish(QList<InstalledApp> apps, QStringList watchedFolders);
    void watchFolders(const QStringList& folders);
    void changeArrived();
    void deliverBatch();

    std::function<AppSources()> m_sources;
    QList<InstalledApp> m_apps;
    QSet<QString> m_knownBundleIDs;
    QSet<QString> m_knownAppNames;
    QSet<QString> m_knownVendors;
    QSet<QString> m_knownAppGroups;
    QSet<QString> m_knownExecutableNames;
    QFileSystemWatcher* m_eventStream = nullptr;
    QTimer* m_batch = nullptr;    // runs while changes wait for the latency to pass
    QElapsedTimer m_lastDelivery; // since the last batch asked for a rescan
    std::unique_ptr<std::jthread> m_rescanTask;
    bool m_rescanPending = false;
    QDateTime m_lastScan;
};
