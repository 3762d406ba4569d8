// Times each stage of the duplicate finder on one tree: the inventory, then the engine's sampling and
// verify stages, with and without the hash cache. Prints one line per stage; the peer comparison lives
// in run-peers.sh.
//
// usage: bench_duplicate_stages TREE [MIN_SIZE]

#include "duplicates/DuplicateEngine.h"
#include "duplicates/FileInventory.h"
#include "duplicates/VolumeHashCaches.h"

#include <QCoreApplication>
#include <QDir>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void runOnce(const Inventory& inventory, bool withCache)
{
    const Clock::time_point start = Clock::now();
    std::mutex lock;
    double prehashDone = 0;
    DuplicateEngine::Callbacks callbacks;
    callbacks.progress = [&](const EngineStats& stats, double) {
        std::lock_guard guard(lock);
        if (stats.phase == EnginePhase::verifying && prehashDone == 0)
            prehashDone = secondsSince(start);
    };
    const VolumeHashCaches caches = VolumeHashCaches::open(inventory);
    const double opened = secondsSince(start);
    const DuplicateEngine::Result result
        = DuplicateEngine::run(inventory, withCache ? &caches : nullptr, callbacks, [] { return false; });
    const double total = secondsSince(start);
    std::printf("engine %-11s cache-open %.3f s  sampling %.3f s  verify+save %.3f s  total %.3f s  sets %lld  "
                "sampled %lld B  verified %lld B  cache hits %lld\n",
        withCache ? "with-cache" : "no-cache", opened, prehashDone - opened, total - prehashDone, total,
        (long long)result.stats.groupsConfirmed, (long long)result.stats.prehashBytesRead,
        (long long)result.stats.verifyBytesRead, (long long)result.stats.prunedByCache);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_duplicate_stages TREE [MIN_SIZE]\n");
        return 2;
    }
    InventoryOptions options;
    options.roots = {argv[1]};
    options.homePath = QDir::homePath().toStdString();
    options.sizeFloor = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 4096;

    const Clock::time_point start = Clock::now();
    const Inventory inventory = FileInventory::build(options, [] { return false; }, {});
    std::printf("inventory  %.3f s  files %lld  folders %lld\n", secondsSince(start),
        (long long)inventory.stats.filesIndexed, (long long)inventory.stats.directoriesRead);
    runOnce(inventory, false);
    runOnce(inventory, true);
    runOnce(inventory, true);
    return 0;
}
