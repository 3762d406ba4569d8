#pragma once

#include <QString>

// Where Velloru keeps its files, following the XDG base directories.
namespace StoragePaths {

// $XDG_DATA_HOME itself (~/.local/share by default), where the desktop's Trash lives too.
QString dataHome();
// $XDG_DATA_HOME/Velloru: the activity log, the vault list, saved drives.
QString dataFolder();
// $XDG_CACHE_HOME/Velloru: caches that can be rebuilt.
QString cacheFolder();
// $XDG_STATE_HOME/Velloru/logs: log files written by the background agent.
QString logsFolder();

} // namespace StoragePaths
