#include "duplicates/CandidateSampler.h"

#include "duplicates/FileInventory.h"
#include "duplicates/SampleHash.h"
#include "duplicates/Sha256.h"
#include "platform/FileReading.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <thread>

namespace {

constexpr std::size_t filesPerJob = 64;

// One worker's folder: kept open while consecutive files are in it.
class CurrentFolder {
public:
    explicit CurrentFolder(const Inventory& inventory)
        : m_inventory(inventory)
    {
    }

    // The open folder of `record`, or a closed one (then `errno` says why).
    const ReadOnlyFile& of(const FileRecord& record)
    {
        if (record.directory != m_directory) {
            m_directory = record.directory;
            m_folder = ReadOnlyFile::openFolder(m_inventory.directories[std::size_t(m_directory)].data());
            m_error = errno;
        }
        errno = m_error;
        return m_folder;
    }

private:
    const Inventory& m_inventory;
    std::int32_t m_directory = -1;
    ReadOnlyFile m_folder;
    int m_error = 0;
};

// The file's identity is not checked again here, which would cost a status call per candidate: a file
// changed since the listing has a new content time, so its sample is stored under a key no later scan asks
// for, and the comparison, which checks every file it opens, leaves it out.
SampleResult sampleOne(const FileRecord& record, CurrentFolder& folders, Sha256& hasher, SampleBuffer& buffer)
{
    SampleResult result;
    const ReadOnlyFile& folder = folders.of(record);
    const ReadOnlyFile file = folder.isOpen() ? ReadOnlyFile::openIn(folder, record.name.data()) : ReadOnlyFile();
    if (!file.isOpen()) {
        result.problem = problemOpening(errno);
        return result;
    }
    return sampleHash(file, record.size, hasher, buffer);
}

} // namespace

void sampleCandidates(const Inventory& inventory, Candidates& candidates, int workers, DuplicateEngine::Shared& shared,
    const DuplicateEngine::Callbacks& callbacks, const std::function<bool()>& cancelled)
{
    // Taken in inventory order, which keeps each folder's files together (a folder's files are recorded in
    // one go), so each worker opens a folder once for a run of its files. Each record is kept beside its
    // candidate position so the workers read the records in order instead of jumping through the list.
    constexpr std::uint32_t none = UINT32_MAX;
    std::vector<std::uint32_t> positionOf(inventory.records.size(), none);
    std::size_t unsampled = 0;
    for (std::uint32_t position = 0; position < candidates.size(); ++position) {
        if (candidates.states[position] == Candidates::State::unsampled) {
            positionOf[candidates.records[position]] = position;
            ++unsampled;
        }
    }
    std::vector<std::pair<std::uint32_t, std::uint32_t>> order; // record, position
    order.reserve(unsampled);
    for (std::uint32_t record = 0; record < positionOf.size(); ++record)
        if (positionOf[record] != none)
            order.emplace_back(record, positionOf[record]);
    positionOf = {};

    const std::size_t jobs = (order.size() + filesPerJob - 1) / filesPerJob;
    std::atomic<std::size_t> nextJob = 0;
    const auto work = [&] {
        Sha256 hasher;
        SampleBuffer buffer;
        CurrentFolder folders(inventory);
        for (std::size_t job = nextJob++; job < jobs && !cancelled(); job = nextJob++) {
            EngineStats counts;
            const std::size_t end = std::min(order.size(), (job + 1) * filesPerJob);
            for (std::size_t i = job * filesPerJob; i < end; ++i) {
                const auto [record, position] = order[i];
                const SampleResult sample = sampleOne(inventory.records[record], folders, hasher, buffer);
                counts.prehashBytesRead += std::int64_t(sample.bytesRead);
                countLeftOut(sample.problem, counts);
                // Each position belongs to one job, so the lists are written without a lock.
                candidates.samples[position] = sample.hash;
                candidates.states[position]
                    = sample.problem == ReadProblem::none ? Candidates::State::sampled : Candidates::State::leftOut;
            }
            {
                std::lock_guard guard(shared.lock);
                DuplicateEngine::addCounts(shared.stats, counts);
            }
            DuplicateEngine::reportProgress(shared, callbacks, double(jobs));
        }
    };
    std::vector<std::jthread> pool;
    for (int i = 1; i < workers; ++i)
        pool.emplace_back(work);
    work(); // the calling thread is one of the workers
}
