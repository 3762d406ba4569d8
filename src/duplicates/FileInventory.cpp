#include "duplicates/FileInventory.h"

#include "common/LocalPath.h"
#include "common/PackageExtensions.h"

#include "duplicates/InventoryRules.h"
#include "platform/DirectoryReader.h"
#include "platform/FileStatus.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <memory>
#include <thread>

#include <fcntl.h>

namespace {

// What one folder held, gathered without the shared lock and merged under it in one step.
struct DirectoryFindings {
    struct Subfolder {
        std::string path;
        FileIdentity identity;
        std::uint32_t device = 0;
    };
    std::vector<FileRecord> records; // their names are in `names`, up to `nameEnds`, until the merge
    std::string names;
    std::vector<std::uint32_t> nameEnds;
    std::vector<std::uint64_t> recordDevices; // full device numbers, for hard-link identity
    std::vector<Subfolder> subfolders;
    std::int64_t datalessSkipped = 0;
    std::int64_t packagesHalted = 0;
    std::int64_t belowFloorSkipped = 0;
    std::int64_t badNameFilesSkipped = 0;
    std::int64_t badNameFoldersSkipped = 0;
    bool unreadable = false;
};

bool isRepresentable(std::string_view name)
{
    return LocalPath::isRepresentable(QByteArrayView(name.data(), qsizetype(name.size())));
}

// The path with every symbolic link on it resolved; nothing when it leads nowhere.
std::optional<std::string> resolvedPath(const std::string& path)
{
    std::error_code error;
    std::string resolved = std::filesystem::canonical(path, error).string();
    return error ? std::nullopt : std::optional(std::move(resolved));
}

std::string childPath(std::string_view parent, std::string_view name)
{
    std::string path;
    path.reserve(parent.size() + 1 + name.size());
    path.append(parent);
    if (parent != "/")
        path.push_back('/');
    path.append(name);
    return path;
}

FileRecord recordFrom(const FileStatus& status)
{
    FileRecord record;
    record.size = std::uint64_t(status.size);
    record.fileID = status.inode;
    record.device = std::uint32_t(status.device);
    record.linkCount = status.linkCount == 0 ? 1 : status.linkCount;
    record.flags = (status.immutable || status.appendOnly) ? FileFlags::userImmutable : 0;
    record.mtimeNsec = status.modifiedSeconds * 1'000'000'000 + status.modifiedNanoseconds;
    record.createdSec = status.createdSeconds;
    return record;
}

void decideFile(
    const FileStatus& status, std::string_view name, const InventoryOptions& options, DirectoryFindings& findings)
{
    FileRecord record = recordFrom(status);
    if (record.flags & FileFlags::dataless) {
        ++findings.datalessSkipped; // never downloaded just to compare it
        return;
    }
    if (record.flags & FileFlags::protectedStorage)
        return;
    if (record.size < options.sizeFloor) {
        ++findings.belowFloorSkipped;
        return;
    }
    if (!isRepresentable(name)) {
        ++findings.badNameFilesSkipped;
        return;
    }
    findings.records.push_back(record);
    findings.names.append(name);
    findings.nameEnds.push_back(std::uint32_t(findings.names.size()));
    findings.recordDevices.push_back(status.device);
}

void decideFolder(int folderFd, const FileInventory::Job& job, std::string_view name, std::optional<FileStatus> status,
    const InventoryOptions& options, DirectoryFindings& findings)
{
    if (InventoryRules::isIgnoredFolderName(name))
        return;
    if (!isRepresentable(name)) {
        ++findings.badNameFoldersSkipped;
        return;
    }
    std::string path = childPath(job.path, name);
    if (InventoryRules::isExcludedPath(path, options.homePath))
        return;
    if (hasPackageExtension(name)) {
        ++findings.packagesHalted; // measured whole, never opened up
        return;
    }
    if (!status)
        status = statusAt(folderFd, std::string(name).c_str(), StatDetail::identity);
    if (!status || !status->isDirectory())
        return;
    const auto device = std::uint32_t(status->device);
    if (options.sameDevice && device != job.device)
        return;
    findings.subfolders.push_back({std::move(path), {status->device, status->inode}, device});
}

DirectoryFindings readDirectory(
    const FileInventory::Job& job, const InventoryOptions& options, std::span<std::byte> buffer)
{
    DirectoryFindings findings;
    auto reader = DirectoryReader::open(AT_FDCWD, job.path.data(), buffer);
    if (!reader) {
        findings.unreadable = true;
        return findings;
    }
    DirectoryEntry entry;
    while (reader->next(entry)) {
        if (entry.name.empty())
            continue;
        // getdents64 leaves each name NUL-terminated in the buffer, so it can be handed to statx as it is.
        const char* name = entry.name.data();
        EntryType type = entry.type;
        std::optional<FileStatus> status;
        if (type == EntryType::unknown || type == EntryType::regular) {
            status = statusAt(reader->fd(), name);
            if (!status)
                continue; // vanished since the listing
            type = entryTypeOf(*status);
        }
        if (type == EntryType::regular)
            decideFile(*status, entry.name, options, findings);
        else if (type == EntryType::directory)
            decideFolder(reader->fd(), job, entry.name, status, options, findings);
        // Symbolic links and special files are never followed or recorded.
    }
    if (reader->error() != 0)
        findings.unreadable = true;
    return findings;
}

void merge(FileInventory::State& state, const FileInventory::Job& job, DirectoryFindings& findings)
{
    InventoryStats& stats = state.stats;
    ++stats.directoriesRead;
    stats.datalessSkipped += findings.datalessSkipped;
    stats.packagesHalted += findings.packagesHalted;
    stats.belowFloorSkipped += findings.belowFloorSkipped;
    stats.badNameFilesSkipped += findings.badNameFilesSkipped;
    stats.badNameFoldersSkipped += findings.badNameFoldersSkipped;
    if (findings.unreadable)
        ++stats.unreadableDirectories;

    for (auto& subfolder : findings.subfolders) {
        if (!state.seenDirectories.insert(subfolder.identity).second) {
            ++stats.aliasesCollapsed; // reached a second time through a bind mount or a second root
            continue;
        }
        if (state.directories.size() >= std::size_t(std::numeric_limits<std::int32_t>::max()))
            std::abort(); // more folders than a record can point at
        const auto directoryID = std::int32_t(state.directories.size());
        const std::string_view path = state.names.add(subfolder.path);
        state.directories.push_back(path);
        ++stats.directoriesDiscovered;
        state.queue.push_back({path, directoryID, subfolder.device});
    }

    std::uint32_t nameStart = 0;
    for (std::size_t i = 0; i < findings.records.size(); ++i) {
        FileRecord& record = findings.records[i];
        const std::string_view name
            = std::string_view(findings.names).substr(nameStart, findings.nameEnds[i] - nameStart);
        nameStart = findings.nameEnds[i];
        record.directory = job.directoryID;
        if (record.linkCount > 1) {
            const FileIdentity identity{findings.recordDevices[i], record.fileID};
            if (!state.seenFiles.insert(identity).second) {
                state.aliases[identity].push_back(childPath(job.path, name));
                continue;
            }
        }
        record.name = state.names.add(name);
        ++stats.filesIndexed;
        stats.bytesIndexed += std::int64_t(record.size);
        ++stats.sizeHistogram[std::size_t(sizeBucket(record.size))];
        state.records.push_back(record);
    }
    stats.scanning = job.path;
}

void runReader(FileInventory::State& state, const InventoryOptions& options, const FileInventory::Cancelled& cancelled,
    const FileInventory::Progress& progress)
{
    const auto buffer = std::make_unique_for_overwrite<std::byte[]>(directoryBufferSize);
    std::unique_lock guard(state.lock);
    for (;;) {
        state.condition.wait(guard, [&] { return !state.queue.empty() || state.busy == 0 || state.cancelled; });
        if (state.cancelled || (cancelled && cancelled())) {
            state.cancelled = true;
            break;
        }
        if (state.queue.empty())
            break; // and no reader is busy: nothing more can arrive
        const FileInventory::Job job = std::move(state.queue.front());
        state.queue.pop_front();
        ++state.busy;
        guard.unlock();

        DirectoryFindings findings = readDirectory(job, options, {buffer.get(), directoryBufferSize});

        guard.lock();
        merge(state, job, findings);
        --state.busy;
        state.condition.notify_all();
        if (progress) {
            const InventoryStats snapshot = state.stats;
            guard.unlock();
            progress(snapshot);
            guard.lock();
        }
    }
    state.condition.notify_all();
}

} // namespace

std::string Inventory::path(const FileRecord& record) const
{
    return childPath(directories[std::size_t(record.directory)], record.name);
}

int FileInventory::readerCount()
{
    const int processors = int(std::thread::hardware_concurrency());
    return std::clamp(processors - 2, 2, 8);
}

Inventory FileInventory::build(const InventoryOptions& given, const Cancelled& cancelled, const Progress& progress)
{
    // Every path is read in its resolved form, so a folder named through a link is the folder itself to
    // every rule, and the home the rules compare those paths with is resolved the same way.
    InventoryOptions options = given;
    options.homePath = resolvedPath(given.homePath).value_or(given.homePath);
    State state;
    for (const std::string& root : options.roots) {
        const std::optional<std::string> resolved = resolvedPath(root);
        if (!resolved)
            continue;
        const std::string& path = *resolved;
        if (!isRepresentable(path)) {
            ++state.stats.badNameFoldersSkipped; // reached through a link to a folder with such a name
            continue;
        }
        const std::optional<FileStatus> status = statusAt(AT_FDCWD, path.c_str(), StatDetail::identity);
        if (!status || !status->isDirectory() || InventoryRules::isExcludedPath(path, options.homePath))
            continue;
        if (!state.seenDirectories.insert({status->device, status->inode}).second)
            continue; // the same folder named twice
        const auto directoryID = std::int32_t(state.directories.size());
        const std::string_view stored = state.names.add(path);
        state.directories.push_back(stored);
        state.queue.push_back({stored, directoryID, std::uint32_t(status->device)});
    }

    if (!state.queue.empty()) {
        std::vector<std::jthread> readers;
        for (int i = 0; i < readerCount(); ++i)
            readers.emplace_back([&] { runReader(state, options, cancelled, progress); });
    } // the readers are joined here

    return {std::move(state.names), std::move(state.records), std::move(state.directories), std::move(state.stats),
        std::move(state.aliases)};
}
