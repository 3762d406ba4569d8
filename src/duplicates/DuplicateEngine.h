#pragma once

#include "duplicates/Candidates.h"
#include "duplicates/EngineStats.h"
#include "duplicates/VerifiedGroup.h"

#include <functional>
#include <mutex>
#include <vector>

struct Inventory;
class VolumeHashCaches;

// Turns an inventory into sets of files with identical content, cheapest test first: equal size, then
// equal samples of both ends, then equal bytes throughout.
class DuplicateEngine {
public:
    struct Callbacks {
        // Called from the workers after each unit of work, with the stage's progress from 0 to 1.
        std::function<void(const EngineStats&, double stageFraction)> progress;
        // Called from the verify workers for each set as soon as it is proven.
        std::function<void(const VerifiedGroup&)> confirmed;
    };

    struct Result {
        std::vector<VerifiedGroup> groups;
        EngineStats stats;
    };

    // `caches` may be null: then every candidate is sampled from its file.
    static Result run(const Inventory& inventory, const VolumeHashCaches* caches, const Callbacks& callbacks,
        const std::function<bool()>& cancelled);

    // The files whose size at least one other file shares, by size and then in inventory order; files of
    // a size no other file has are never opened.
    static Candidates sizeCandidates(const Inventory& inventory, EngineStats& stats);
    // Candidates sampled alike, each group in inventory order; the groups with the most bytes to compare
    // come first, so that the verify workers finish together.
    static std::vector<std::vector<std::uint32_t>> sampleGroups(
        const Inventory& inventory, const Candidates& candidates, EngineStats& stats);

    static int samplingWorkerCount(); // processors minus 2, kept between 2 and 6
    static int verifyWorkerCount();   // processors minus 2, kept between 1 and 3

    // What the workers of a stage share, guarded by `lock`.
    struct Shared {
        std::mutex lock;
        EngineStats stats;
        std::vector<VerifiedGroup> verified;
        std::int64_t unitsDone = 0;
    };
    // Adds a worker's byte and problem counts.
    static void addCounts(EngineStats& total, const EngineStats& delta);
    // Counts `units` of `total` done and reports the stage's progress.
    static void reportProgress(Shared& shared, const Callbacks& callbacks, double total, std::int64_t units = 1);
};
