#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/FileStatus.h"

// The outcome of one positioned read: how many bytes arrived and, when the read stopped early because of
// an error, the error number (0 when it stopped at the end of the file or filled the span).
struct ReadOutcome {
    std::size_t bytes = 0;
    int error = 0;
};

// A file opened read-only for sampling and comparing, never through a final symbolic link.
class ReadOnlyFile {
public:
    // Nothing when the file cannot be opened; `errno` says why.
    static std::optional<ReadOnlyFile> open(const char* path);
    // Opening a file by its full path makes the kernel walk every folder on the way, which is most of what
    // opening costs when a scan opens tens of thousands of files; a scan can instead hold a folder open
    // (only to look names up in it: nothing is read) and open each file in it by name. Check isOpen(); on
    // failure `errno` says why.
    static ReadOnlyFile openFolder(const char* path);
    static ReadOnlyFile openIn(const ReadOnlyFile& folder, const char* name);

    ReadOnlyFile() = default;
    ReadOnlyFile(ReadOnlyFile&& other) noexcept;
    ReadOnlyFile& operator=(ReadOnlyFile&& other) noexcept;
    ~ReadOnlyFile();

    bool isOpen() const { return m_fd >= 0; }

    // Reads at `offset` until `into` is full or the file ends, retrying interrupted reads.
    ReadOutcome readAt(std::uint64_t offset, std::span<std::byte> into) const;
    // The status of the open file itself, so a file replaced after it was listed is noticed.
    std::optional<FileStatus> status() const;

private:
    explicit ReadOnlyFile(int fd)
        : m_fd(fd)
    {
    }

    int m_fd = -1;
};

// True for the error a read returns when the content lives only on a remote store and would have to be
// downloaded first (EDEADLK, the error cloud-backed file systems return for such placeholders).
bool isNotPresentLocally(int error);
