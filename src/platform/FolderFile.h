#pragma once

#include "platform/FileReading.h"
#include "platform/FileStatus.h"

#include <cstdint>
#include <optional>
#include <span>

// A folder held open, and files opened by name inside it. Opening a file by its full path makes the
// kernel walk every folder on the way, which is most of what opening costs when a scan opens tens of
// thousands of files; the sampling stage visits its files folder by folder and opens each by name alone.
class FolderFile {
public:
    // The folder at `path`, opened only to look names up in it (nothing is read). Check isOpen(); on
    // failure `errno` says why.
    static FolderFile openFolder(const char* path);
    // The file `name` inside `folder`, read-only and never through a symbolic link.
    static FolderFile openIn(const FolderFile& folder, const char* name);

    FolderFile() = default;
    FolderFile(FolderFile&& other) noexcept;
    FolderFile& operator=(FolderFile&& other) noexcept;
    ~FolderFile();

    bool isOpen() const { return m_fd >= 0; }
    // Reads at `offset` until `into` is full or the file ends, retrying interrupted reads.
    ReadOutcome readAt(std::uint64_t offset, std::span<std::byte> into) const;
    // The status of the open file itself, so a file replaced after it was listed is noticed.
    std::optional<FileStatus> status() const;

private:
    explicit FolderFile(int fd)
        : m_fd(fd)
    {
    }

    int m_fd = -1;
};
