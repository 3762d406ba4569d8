#pragma once

#include <string_view>

// Where the inventory never goes, and which folders it measures whole instead of opening.
namespace InventoryRules {

// System areas, the home folder's hidden data folders and other users' data folders (see
// docs/duplicates.md for the list and why /home, /tmp, /mnt, /media, /srv and /opt are never on it).
bool isExcludedPath(std::string_view path, std::string_view home);

// Version-control, indexing and backup folders that are never entered, wherever they are.
bool isIgnoredFolderName(std::string_view name);

// True when some component of the path, the file's own name included, has a package extension: a file
// named like a bundle (talk.key) is a piece of one as much as a file inside one.
bool hasPackageComponent(std::string_view path);

} // namespace InventoryRules
