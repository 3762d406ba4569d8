#pragma once

#include <QString>

#include <optional>

// The system's memory as /proc/meminfo reports it, in bytes.
struct MemoryReading {
    qint64 total = 0;
    qint64 available = 0; // what could be handed to programs without swapping: free plus reclaimable cache
    qint64 cached = 0;    // file contents kept in memory ("Cached")
    qint64 swapTotal = 0;
    qint64 swapFree = 0;
};

// How much of the last ten seconds tasks spent waiting for memory (pressure stall information), in percent:
// `some` while at least one task waited, `full` while every task that wanted to run did.
struct MemoryStall {
    double someAvg10 = 0;
    double fullAvg10 = 0;
};

// Nothing when the file cannot be read or lacks MemTotal.
std::optional<MemoryReading> readMemoryInfo(const QString& procRoot = QStringLiteral("/proc"));
// Nothing when the kernel does not report pressure (older than 4.20, or built without it).
std::optional<MemoryStall> readMemoryStall(const QString& procRoot = QStringLiteral("/proc"));
