#pragma once

#include "startup/StartupItem.h"
#include "startup/StartupLocations.h"
#include "startup/StartupSwitch.h"

#include <QList>
#include <QObject>

#include <functional>
#include <memory>
#include <thread>

class AuditLog;
class HelperManager;
class Trasher;

// The Login Items feature: the list of what starts by itself, read off the main thread, and the switches and
// removals, each recorded in the activity log under "Login Items". Main thread only.
class StartupItems : public QObject {
    Q_OBJECT

public:
    using Done = std::function<void(StartupOutcome)>;

    StartupItems(StartupLocations locations, HelperManager& helper, const Trasher& trasher, AuditLog& audit,
        QObject* parent = nullptr);
    ~StartupItems() override;

    const QList<StartupItem>& items() const { return m_items; }
    std::optional<StartupItem> item(const QString& id) const;
    // False when the service manager could not be asked, so the list may lack what it generates itself.
    bool isComplete() const { return m_complete; }
    bool hasScanned() const { return m_scanned; }
    bool isScanning() const { return m_scan != nullptr; }
    // A switch or a removal is under way; the next one waits for it.
    bool isBusy() const { return m_action != nullptr || m_waitingForHelper; }

    void scan();
    // Each ends with the sentence to show next to what was pressed, and reads the list again.
    void setEnabled(const QString& id, bool on, Done done);
    void remove(const QString& id, Done done);

Q_SIGNALS:
    void changed();
    void scanned();

private:
    void finish(const StartupItem& item, const StartupOutcome& outcome, const Done& done);
    void switchSystemUnit(const StartupItem& item, bool on, Done done);
    void moveToTrash(const StartupItem& item, Done done);
    bool helperAvailable() const;

    StartupLocations m_locations;
    HelperManager& m_helper;
    const Trasher& m_trasher;
    AuditLog& m_audit;
    QList<StartupItem> m_items;
    bool m_complete = false;
    bool m_scanned = false;
    bool m_rescan = false; // asked for while a scan ran
    bool m_waitingForHelper = false;
    std::unique_ptr<std::jthread> m_scan;
    std::unique_ptr<std::jthread> m_action;
};
