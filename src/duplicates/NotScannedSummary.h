#pragma once

#include <QString>

struct InventoryStats;
struct EngineStats;

// The sentence shown after a scan about what was not looked at: cloud-only files, bundles measured whole,
// folders that could not be opened, files that could not be read, files that changed between the listing
// and the comparison, and files and folders left out because their names aren't valid UTF-8. Empty when everything was
// looked at.
QString notScannedSummary(const InventoryStats& inventory, const EngineStats& engine);
