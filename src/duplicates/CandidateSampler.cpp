#include "duplicates/CandidateSampler.h"

#include "duplicates/FileInventory.h"
#include "duplicates/SampleHash.h"
#include "duplicates/Sha256.h"
#include "platform/FileReading.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
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

SampleResult sampleOne(const FileRecord& record, CurrentFolder& folders, Sha256& hasher, SampleBuffer& buffer)
{
    SampleResult result;
    const ReadOnlyFile& folder = folders.of(record);
    const ReadOnlyFile file = folder.isOpen() ? ReadOnlyFile::openIn(folder, record.name.data()) : ReadOnlyFile();
    if (!file.isOpen()) {
        result.problem = problemOpening(errno);
        return result;
    }
    result.problem = problemSince(file.status(), record);
    if (result.problem != ReadProblem::none)
        return result;
    return sampleHash(file, record.size, hasher, buffer);
}

} // namespace

void sampleCandidates(const Inventory& inventory, Candidates& candidates, int workers, DuplicateEngine::Shared& shared,
    const DuplicateEngine::Callbacks& callbacks, const std::function<bool()>& cancelled)
{
    std::vector<std::uint32_t> order;
    for (std::uint32_t position = 0; position < candidates.size(); ++position)
        if (candidates.states[position] == Candidates::State::unsampled)
            order.push_back(position);
    const auto place = [&](std::uint32_t position) {
        const FileRecord& record = inventory.records[candidates.records[position]];
        return std::pair(record.directory, record.fileID);
    };
    std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) { return place(a) < place(b); });

    const std::size_t jobs = (order.size() + filesPerJob - 1) / filesPerJob;
    std::atomic<std::size_t> nextJob = 0;
    const auto work = [&] {
        Sha256 hasher;
        SampleBuffer buffer;
        CurrentFolder folders(inventory);
        for (std::size_t job = nextJob++; job < jobs && !cancelled(); job = nextJob++) {
            EngineStats counts;
            std::int64_t changed = 0;
            const std::size_t end = std::min(order.size(), (job + 1) * filesPerJob);
            for (std::size_t i = job * filesPerJob; i < end; ++i) {
                const std::uint32_t position = order[i];
                const SampleResult sample
                    = sampleOne(inventory.records[candidates.records[position]], folders, hasher, buffer);
                counts.prehashBytesRead += std::int64_t(sample.bytesRead);
                switch (sample.problem) {
                case ReadProblem::notPresentLocally: ++counts.datalessAtRead; break;
                case ReadProblem::unreadable: ++counts.unreadable; break;
                case ReadProblem::changed: ++changed; break;
                case ReadProblem::none: break;
                }
                // Each position belongs to one job, so the lists are written without a lock.
                candidates.samples[position] = sample.hash;
                candidates.states[position]
                    = sample.problem == ReadProblem::none ? Candidates::State::sampled : Candidates::State::leftOut;
            }
            {
                std::lock_guard guard(shared.lock);
                DuplicateEngine::addCounts(shared.stats, counts);
                shared.changedDuringScan += changed;
            }
            DuplicateEngine::reportProgress(shared, callbacks, double(jobs));
        }
    };
    std::vector<std::jthread> pool;
    for (int i = 1; i < workers; ++i)
        pool.emplace_back(work);
    work(); // the calling thread is one of the workers
}
