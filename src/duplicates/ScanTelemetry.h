#pragma once

#include "duplicates/DuplicateStage.h"

#include <QString>

#include <array>
#include <chrono>
#include <cstdint>
#include <vector>

// One snapshot of a running duplicate scan, as the progress view draws it.
struct ScanTelemetry {
    // A set confirmed while the scan runs, announced so the view can show it arriving.
    struct Discovery {
        std::int64_t id = 0;
        int band = 0; // the size histogram bucket of the set's file size
        std::int64_t members = 0;
        std::int64_t reclaimable = 0;
        std::chrono::steady_clock::time_point at;
    };

    DuplicateStage stage = DuplicateStage::inventory;
    double stageFraction = 0;
    double overallFraction = 0;
    std::int64_t filesIndexed = 0;
    std::int64_t bytesIndexed = 0;
    std::int64_t directoriesRead = 0;
    std::int64_t directoriesDiscovered = 0;
    QString scanningPath;
    std::int64_t datalessSkipped = 0;
    std::int64_t packagesHalted = 0;
    std::int64_t unreadableDirectories = 0;
    std::int64_t candidates = 0;
    std::int64_t candidateBytes = 0;
    std::int64_t bytesRead = 0;
    std::int64_t prunedByCache = 0;
    std::int64_t groupsConfirmed = 0;
    std::int64_t reclaimableBytes = 0;
    double filesPerSecond = 0;
    double bytesPerSecond = 0;
    std::array<std::int32_t, 32> sizeHistogram{};
    int firstBand = 12;                 // the histogram bucket of the smallest size the scan looks at
    std::vector<Discovery> discoveries; // the most recent, oldest first
    std::chrono::steady_clock::duration elapsed{};
};
