#pragma once

#include "startup/StartupItem.h"

#include <QString>

namespace StartupHealthRules {

// True when `program` lies inside a Trash: the home Trash, a volume's ".Trash-UID" or ".Trash/UID". A folder
// that is merely named Trash (or ".TrashFiles") is no Trash.
bool liesInTrash(const QString& program, const QString& homeTrash);

// appInTrash for a program inside a Trash, programMissing when there is no program or no file at its path (a
// bare name is looked up on PATH), ok otherwise.
StartupHealth healthOf(const QString& program, const QString& homeTrash);

} // namespace StartupHealthRules
