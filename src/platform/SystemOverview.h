#pragma once

#include <QString>

#include <optional>

// The figures of the dashboard's overview: the start-up volume's space and the memory in use.
struct SystemOverview {
    std::optional<qint64> diskTotal;
    std::optional<qint64> diskFree;
    std::optional<qint64> memoryTotal;
    std::optional<qint64> memoryAvailable; // what programs could still have without swapping
};

// Reads the figures of the volume holding `path` and of /proc/meminfo; a figure that cannot be read is
// missing. Cheap, but it touches the file system: call it off the main thread.
SystemOverview readSystemOverview(const QString& path);
