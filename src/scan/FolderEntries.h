#pragma once

#include "platform/DirectoryReader.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <span>
#include <vector>

// One item of a folder as Smart Scan works with it: its name and path as exact text, and what it is (a link is
// a link, whatever it points at).
struct FolderEntry {
    QString name;
    QString path;
    EntryType type = EntryType::unknown;
};

// The items directly inside `folder`, sorted by name, read by their names' own bytes. A name that isn't valid
// UTF-8 has no exact text form, and whatever was done with an approximate one would reach another file, so
// such items are left out and logged. `nameFilters` are wildcard patterns matched ignoring case; none takes
// every item. `buffer` is the listing buffer (directoryBufferSize bytes). Empty when the folder can't be
// listed.
std::vector<FolderEntry> listFolderEntries(
    const QString& folder, std::span<std::byte> buffer, FinalLink finalLink, const QStringList& nameFilters = {});
