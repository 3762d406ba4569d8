#pragma once

#include <QString>
#include <QStringList>

// The Trash folders Velloru knows of: the home Trash and the Trash of every mounted volume (items trashed
// from a volume stay on that volume).
namespace TrashLocations {

struct Summary {
    qint64 bytes = 0;      // everything in those Trash folders
    qint64 items = 0;      // top-level items
    QStringList locations; // the Trash folders that hold anything
    bool otherVolumesHoldItems = false;
};

Summary summarize();

// The warning the empty-Trash card shows before anything is deleted for good.
QString emptyWarning(const Summary& summary);

} // namespace TrashLocations
