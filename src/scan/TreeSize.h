#pragma once

#include <QString>

#include <cstddef>
#include <span>
#include <stop_token>

class ScanPulse;

// The size of one found entry: a file's length, or the sum of the lengths of every file beneath a folder.
// Links are not followed and count for nothing; entries that vanish or cannot be read count for nothing.
struct TreeSize {
    qint64 bytes = -1;    // -1 when the entry itself could not be read (it vanished, for example)
    qint64 files = 0;     // entries looked at, for the pulse
    bool stopped = false; // the stop token fired before the whole tree was measured
};

// Measures `path`, recording each folder it lists in `pulse` and adding the entries and bytes it counted.
// `buffer` (directoryBufferSize bytes) is the listing buffer, reused from one call to the next.
TreeSize measureTree(const QString& path, std::span<std::byte> buffer, ScanPulse& pulse, std::stop_token stop);
