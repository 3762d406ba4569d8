#pragma once

#include <cstdint>

// The engine's own stages; the scan's `DuplicateStage` adds the inventory before them.
enum class EnginePhase { bucketing, prehashing, verifying, finished };

// Counters of one engine run.
struct EngineStats {
    EnginePhase phase = EnginePhase::bucketing;
    std::int64_t sizeBuckets = 0; // sizes shared by at least two files
    std::int64_t candidatesAfterSize = 0;
    std::int64_t candidateBytesAfterSize = 0;
    std::int64_t candidatesAfterPrehash = 0;
    std::int64_t candidateBytesAfterPrehash = 0;
    std::int64_t prehashBytesRead = 0;
    std::int64_t verifyBytesRead = 0;
    std::int64_t prunedByCache = 0;  // files whose sample hash came from the hash cache
    std::int64_t datalessAtRead = 0; // found to be cloud placeholders only when read
    std::int64_t unreadable = 0;
    std::int64_t changedDuringScan = 0; // replaced, rewritten, resized or gone since the inventory listed them
    std::int64_t groupsConfirmed = 0;
    std::int64_t reclaimableBytes = 0; // size × (members − 1) over the confirmed groups
};
