#pragma once

#include "scan/OwnerClassification.h"
#include "scan/ScanGroup.h"
#include "scan/SmartScanLocations.h"

#include <stop_token>

class ScanPulse;

// Everything one Smart Scan works from: where to look and snapshots of what is installed and running.
struct SmartScanInput {
    SmartScanLocations locations;
    OwnerContext owners;
    QString ownCacheName = QStringLiteral("velloru"); // Velloru's own cache folder, never offered
};

// Finds junk in the input's locations and returns the non-empty groups in their fixed order: App Caches,
// Thumbnails, Logs, Crash Reports, Saved App States, Broken Items. App Caches, Logs, Crash Reports and Saved
// App States are sorted largest first, keeping discovery order among equal sizes; Thumbnails and Broken Items
// keep the order they were found in. The stop token is checked before each entry; once it fires the scan
// returns the groups it has made so far. Runs on any thread; touches nothing but `pulse`.
QList<ScanGroup> runSmartScan(const SmartScanInput& input, ScanPulse& pulse, std::stop_token stop);

// The identifier a saved-session-state entry stands for: its name up to the first "_" (session managers
// name them "<program>_<session id>").
QString savedStateIdentifier(const QString& entryName);
