#include "duplicates/RecordedFile.h"

#include <cerrno>

RecordedFile RecordedFile::open(const std::string& path, const FileRecord& record)
{
    std::optional<ReadOnlyFile> file = ReadOnlyFile::open(path.c_str());
    if (!file)
        return {std::nullopt, problemOpening(errno)};
    const ReadProblem problem = problemSince(file->status(), record);
    if (problem != ReadProblem::none)
        return {std::nullopt, problem};
    return {std::move(file), ReadProblem::none};
}

ReadProblem problemOpening(int error)
{
    return error == ENOENT ? ReadProblem::changed : problemFromError(error);
}

ReadProblem problemSince(const std::optional<FileStatus>& status, const FileRecord& record)
{
    if (!status)
        return problemFromError(errno);
    const std::int64_t mtime = status->modifiedSeconds * 1'000'000'000 + status->modifiedNanoseconds;
    if (status->inode != record.fileID || std::uint64_t(status->size) != record.size || mtime != record.mtimeNsec)
        return ReadProblem::changed;
    return ReadProblem::none;
}

ReadProblem problemFromError(int error)
{
    if (error == EISDIR || error == ESPIPE) // a folder or a pipe now stands where the file was listed
        return ReadProblem::changed;
    return isNotPresentLocally(error) ? ReadProblem::notPresentLocally : ReadProblem::unreadable;
}

void countLeftOut(ReadProblem problem, EngineStats& counts)
{
    switch (problem) {
    case ReadProblem::notPresentLocally: ++counts.datalessAtRead; break;
    case ReadProblem::unreadable: ++counts.unreadable; break;
    case ReadProblem::changed: ++counts.changedDuringScan; break;
    case ReadProblem::none: break;
    }
}
