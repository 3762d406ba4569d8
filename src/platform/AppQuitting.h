#pragma once

#include <QStringList>

#include <chrono>

// Asks this user's processes whose command name is one of `names` to quit (SIGTERM, never forced) and
// waits until they are gone or `timeout` passes. Returns whether none is left.
bool quitProcessesNamed(const QStringList& names, std::chrono::milliseconds timeout);
