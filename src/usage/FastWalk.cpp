#include "usage/FastWalk.h"

#include "common/PackageExtensions.h"

#include "common/ByteCount.h"
#include "platform/DirectoryReader.h"
#include "platform/FileStatus.h"
#include "usage/FolderListing.h"

#include <algorithm>
#include <memory>

#include <fcntl.h>

namespace {

std::string childPath(const std::string& parent, std::string_view name)
{
    std::string path;
    path.reserve(parent.size() + 1 + name.size());
    path = parent;
    if (parent != "/")
        path += '/';
    path += name;
    return path;
}

std::shared_ptr<DirNode> makeNode(const Entry& entry, std::string path)
{
    auto node = std::make_shared<DirNode>();
    node->name = entry.name;
    node->path = std::move(path);
    node->isPackage = hasPackageExtension(entry.name);
    node->fileID = entry.fileID;
    node->ownAllocatedSize = entry.allocatedSize;
    return node;
}

} // namespace

FastWalk::FastWalk(std::string root, std::unordered_set<std::string> leaveOut)
    : m_root(std::move(root))
    , m_leaveOut(std::move(leaveOut))
{
    m_driver = std::jthread([this] { drive(); });
}

FastWalk::~FastWalk()
{
    cancel();
    m_driver.join();
}

int FastWalk::workerCount()
{
    const int processors = int(std::thread::hardware_concurrency());
    return std::clamp(processors - 2, 2, 8);
}

std::optional<Progress> FastWalk::next()
{
    std::unique_lock guard(m_streamLock);
    m_streamChanged.wait(guard, [this] { return !m_values.empty() || m_ended; });
    if (m_values.empty())
        return std::nullopt;
    Progress value = std::move(m_values.front());
    m_values.pop_front();
    return value;
}

bool FastWalk::waitFor(std::chrono::milliseconds timeout)
{
    std::unique_lock guard(m_streamLock);
    return m_streamChanged.wait_for(guard, timeout, [this] { return !m_values.empty() || m_ended; });
}

void FastWalk::cancel()
{
    {
        std::lock_guard guard(m_state.lock);
        m_state.cancelled = true;
    }
    m_state.condition.notify_all();
    m_state.branchDone.notify_all();
    // Values not yet taken are dropped: a cancelled walk has nothing more to say.
    {
        std::lock_guard guard(m_streamLock);
        m_values.clear();
        m_ended = true;
    }
    m_streamChanged.notify_all();
}

WalkCounters FastWalk::counters()
{
    std::lock_guard guard(m_state.lock);
    return m_state.counters;
}

void FastWalk::publish(Progress value)
{
    {
        std::lock_guard guard(m_streamLock);
        if (m_ended)
            return;
        m_values.push_back(std::move(value));
    }
    m_streamChanged.notify_all();
}

void FastWalk::endStream()
{
    {
        std::lock_guard guard(m_streamLock);
        m_ended = true;
    }
    m_streamChanged.notify_all();
}

// Lists the root: its top-level folders become the branches and their jobs are queued; the items lying
// directly in it are counted into `progress`. False when the root cannot be examined at all.
bool FastWalk::start(std::vector<std::shared_ptr<DirNode>>& branches, Progress& progress)
{
    const std::optional<FileStatus> root = statusAt(AT_FDCWD, m_root.c_str(), StatDetail::identity);
    if (!root)
        return false;
    m_device = root->device;
    m_state.seen.insert({root->device, root->inode});

    std::int64_t bytes = root->allocatedSize;
    std::int64_t count = 0;
    const auto buffer = std::make_unique<std::byte[]>(directoryBufferSize);
    std::optional<FolderListing> listing = FolderListing::open(m_root, std::span(buffer.get(), directoryBufferSize));
    // A root that cannot be listed has nothing to report but its own blocks, which would pass for an answer.
    if (!listing)
        return false;
    {
        // The top-level folders are examined in full here: they must be known to be on this volume and
        // distinct before they become branches.
        listing->visit(SubfolderDetail::full, [&](const Entry& entry) {
            if (entry.isDirectory) {
                if (entry.device != m_device)
                    return;
                std::string path = childPath(m_root, entry.name);
                if (m_leaveOut.contains(path) || !m_state.seen.insert({entry.device, entry.fileID}).second)
                    return;
                branches.push_back(makeNode(entry, std::move(path)));
                m_state.outstanding.push_back(1);
                m_state.queue.push_back(Job{branches.back(), branches.size() - 1, nullptr});
                return;
            }
            ++count;
            if (entry.linkCount <= 1 || m_state.seenFiles.insert({entry.device, entry.fileID}).second)
                bytes = checkedAdd(bytes, entry.allocatedSize);
            if (m_state.largestFiles.wouldKeep(entry.allocatedSize))
                m_state.largestFiles.offer(childPath(m_root, entry.name), entry.allocatedSize);
        });
        if (listing->failed())
            m_state.unreadableFolders.push_back(m_root);
    }
    progress.rootFileBytes = bytes;
    progress.rootFileCount = count;
    return true;
}

void FastWalk::drive()
{
    std::vector<std::shared_ptr<DirNode>> branches;
    Progress progress;
    if (!start(branches, progress)) {
        endStream();
        return;
    }
    const int workers = workerCount();
    for (int i = 0; i < workers; ++i)
        m_workers.emplace_back([this] { work(); });

    std::size_t reported = 0;
    bool cancelled = false;
    std::vector<std::size_t> done;
    while (reported < branches.size()) {
        std::optional<std::string> scanning;
        {
            std::unique_lock guard(m_state.lock);
            m_state.branchDone.wait(guard, [this] { return !m_state.completed.empty() || m_state.cancelled; });
            if (m_state.cancelled) {
                cancelled = true;
                break;
            }
            done.swap(m_state.completed);
            m_state.completed.clear();
            const auto busy = std::ranges::find_if(m_state.outstanding, [](std::int64_t n) { return n >= 1; });
            if (busy != m_state.outstanding.end())
                scanning = branches[std::size_t(busy - m_state.outstanding.begin())]->name;
        }
        // A completed branch is no longer touched by any worker, so it is rolled up without the lock.
        for (const std::size_t branch : done) {
            rollUp(*branches[branch]);
            progress.measured.push_back(branches[branch]);
            progress.measuredTotal = checkedAdd(progress.measuredTotal, branches[branch]->total);
            ++reported;
        }
        if (reported < branches.size())
            publish(Progress{std::move(scanning), progress.measured, progress.measuredTotal, false,
                progress.rootFileBytes, progress.rootFileCount, {}, {}});
    }
    m_workers.clear(); // joins every worker
    if (cancelled)
        return;
    progress.unreadableFolders = std::move(m_state.unreadableFolders);
    std::ranges::sort(progress.unreadableFolders);
    progress.largestFiles = m_state.largestFiles.sorted();
    progress.finished = true;
    publish(std::move(progress));
    endStream();
}

void FastWalk::work()
{
    const auto buffer = std::make_unique<std::byte[]>(directoryBufferSize);
    std::vector<std::shared_ptr<DirNode>> children;
    std::vector<std::pair<FileIdentity, std::int64_t>> linkedFiles;
    LargestFiles largest; // this worker's, merged into the walk's when it returns
    std::optional<Job> job;
    for (;;) {
        if (!job) {
            job = waitForJob();
            if (!job) {
                std::lock_guard guard(m_state.lock);
                m_state.largestFiles.merge(largest);
                return;
            }
        }

        DirNode& node = *job->node;
        std::int64_t bytes = 0;
        std::int64_t count = 0;
        children.clear();
        linkedFiles.clear();
        std::optional<FolderListing> listing
            = FolderListing::open(node.path, std::span(buffer.get(), directoryBufferSize));
        // A folder that cannot be opened is still seen from outside: its own blocks count, nothing more.
        const std::optional<FileStatus> self
            = listing ? listing->folder() : statusAt(AT_FDCWD, node.path.c_str(), StatDetail::identity);
        // Another device is another volume (a mount point): the walk never goes there.
        const bool onThisVolume = self && self->device == m_device;
        bool unreadable = !listing;
        if (listing && onThisVolume) {
            listing->visit(SubfolderDetail::typeOnly, [&](const Entry& entry) {
                if (entry.isDirectory) {
                    std::string path = childPath(node.path, entry.name);
                    if (!m_leaveOut.contains(path))
                        children.push_back(makeNode(entry, std::move(path)));
                    return;
                }
                // Symbolic links are not followed; like any other item, their own blocks count.
                ++count;
                if (largest.wouldKeep(entry.allocatedSize))
                    largest.offer(childPath(node.path, entry.name), entry.allocatedSize);
                if (entry.linkCount > 1)
                    linkedFiles.push_back({{entry.device, entry.fileID}, entry.allocatedSize});
                else
                    bytes = checkedAdd(bytes, entry.allocatedSize);
            });
            unreadable = listing->failed();
        }
        listing.reset();

        bool wakeWorkers = false;
        bool wakeDriver = false;
        {
            std::lock_guard guard(m_state.lock);
            // A folder reached a second time (through a bind mount) is measured once.
            const bool measured
                = onThisVolume && (!job->parent || m_state.seen.insert({self->device, self->inode}).second);
            std::int64_t queued = 0;
            if (measured) {
                for (const auto& [identity, size] : linkedFiles)
                    if (m_state.seenFiles.insert(identity).second)
                        bytes = checkedAdd(bytes, size);
                node.fileID = self->inode;
                node.ownAllocatedSize = self->allocatedSize;
                node.directFileBytes = bytes;
                node.directFileCount = count;
                if (job->parent)
                    job->parent->subdirectories.push_back(job->node);
                for (auto& child : children)
                    m_state.queue.push_back(Job{std::move(child), job->branch, job->node.get()});
                queued = std::int64_t(children.size());
                if (unreadable)
                    m_state.unreadableFolders.push_back(node.path);
                m_state.counters.foldersListed += 1;
                m_state.counters.filesCounted += count;
                m_state.counters.bytesCounted += bytes;
            }
            std::int64_t& outstanding = m_state.outstanding[job->branch];
            outstanding += queued - 1;
            if (outstanding == 0)
                m_state.completed.push_back(job->branch);
            // The next job is taken in the same hold of the lock: one lock round per folder, not two.
            job.reset();
            if (!m_state.cancelled && !m_state.queue.empty())
                job = takeJob();
            else
                --m_state.busy;
            // Idle workers are woken only when there is something for them: jobs left in the queue, or the
            // end of the walk.
            wakeWorkers = !m_state.queue.empty() || m_state.busy == 0;
            wakeDriver = outstanding == 0;
        }
        if (wakeWorkers)
            m_state.condition.notify_all();
        if (wakeDriver)
            m_state.branchDone.notify_all();
    }
}

std::optional<Job> FastWalk::waitForJob()
{
    std::unique_lock guard(m_state.lock);
    while (m_state.queue.empty() && m_state.busy >= 1 && !m_state.cancelled)
        m_state.condition.wait(guard);
    if (m_state.cancelled || m_state.queue.empty()) {
        guard.unlock();
        m_state.condition.notify_all();
        return std::nullopt;
    }
    ++m_state.busy;
    return takeJob();
}

// The newest job first: the walk goes deep before wide, which keeps the queue short and lets branches
// finish one after another instead of all at the end. Called with the lock held.
Job FastWalk::takeJob()
{
    Job job = std::move(m_state.queue.back());
    m_state.queue.pop_back();
    return job;
}
