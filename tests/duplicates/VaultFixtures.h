#pragma once

#include "duplicates/DuplicateGroup.h"
#include "duplicates/DuplicateVaultController.h"

#include <QList>
#include <QStringList>

#include <functional>

// The sets a real scan of `roots` finds, keepers and ticks chosen as the window would show them.
QList<DuplicateGroup> scannedGroups(const QStringList& roots, std::uint64_t minimumSize = 1);

// Runs one operation of `vault` to its end; false when it did not start or did not end within a minute.
bool finishOperation(DuplicateVaultController& vault, const std::function<bool()>& start);

// The member of `groups` at `path`, or null.
const DuplicateFile* memberAt(const QList<DuplicateGroup>& groups, const QString& path);
