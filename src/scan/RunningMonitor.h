#pragma once

#include "apps/InstalledApp.h"
#include "platform/ProcessTable.h"

#include <QObject>
#include <QSet>

#include <memory>
#include <thread>

class AppInventory;
class QTimer;

// Which apps and background programs are running, read from /proc on a timer (Linux announces no app
// launches). Owned by AppState and read on the main thread; the timer's reads run on a thread of their own
// so the window never waits for /proc. A scan works from a snapshot of the set.
class RunningMonitor : public QObject {
    Q_OBJECT

public:
    static constexpr int refreshIntervalMs = 5000;

    explicit RunningMonitor(const AppInventory& inventory, QObject* parent = nullptr);

    // Lower-cased: the program names of every process, the Flatpak app ids, and the desktop-file ids and
    // program names of the installed apps those processes belong to.
    const QSet<QString>& runningBundleIDs() const { return m_runningBundleIDs; }
    bool isRunning(const QString& bundleID) const { return m_runningBundleIDs.contains(bundleID.toLower()); }

    // Reads the process table now, on this thread.
    void refresh();

    // The set above for these processes and apps (which process belongs to which app: see AppMatcher).
    static QSet<QString> identifiersOf(const QList<ProcessInfo>& processes, const QList<InstalledApp>& apps);

Q_SIGNALS:
    void changed();

private:
    void refreshInBackground();
    void store(QSet<QString> running);

    const AppInventory& m_inventory;
    QSet<QString> m_runningBundleIDs;
    QTimer* m_timer = nullptr;
    std::unique_ptr<std::jthread> m_reading; // the timer's read under way, if any
};
