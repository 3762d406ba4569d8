#include "duplicates/RecordedFile.h"

#include <cerrno>

RecordedFile RecordedFile::open(const std::string& path, const FileRecord& record)
{
    std::optional<ReadOnlyFile> file = ReadOnlyFile::open(path.c_str());
    if (!file)
        return {std::nullopt, errno == ENOENT ? ReadProblem::changed : problemFromError(errno)};
    const std::optional<FileStatus> status = file->status();
    if (!status)
        return {std::nullopt, problemFromError(errno)};
    const std::int64_t mtime = status->modifiedSeconds * 1'000'000'000 + status->modifiedNanoseconds;
    if (status->inode != record.fileID || std::uint64_t(status->size) != record.size || mtime != record.mtimeNsec)
        return {std::nullopt, ReadProblem::changed};
    return {std::move(file), ReadProblem::none};
}

ReadProblem problemFromError(int error)
{
    return isNotPresentLocally(error) ? ReadProblem::notPresentLocally : ReadProblem::unreadable;
}
