#pragma once

#include "duplicates/FileInventory.h"

#include <QByteArray>
#include <QString>

#include <cstdint>

// Deterministic file contents: `size` bytes that differ for every seed.
QByteArray patternBytes(std::int64_t size, int seed);

// An inventory of `roots` with the default rules and the test's home folder.
Inventory inventoryOf(const QStringList& roots, std::uint64_t sizeFloor = 1, bool sameDevice = false);

// The full paths of an inventory's records, sorted.
QStringList recordedPaths(const Inventory& inventory);
