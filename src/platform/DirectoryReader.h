#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

// Fast folder listing for the walkers: one getdents64 call fills a large buffer with many entries, and
// the entry type it reports tells folders and links apart without a stat call per entry.

enum class EntryType : std::uint8_t { unknown, regular, directory, symlink, other };

struct FileStatus;

// What a status call says an entry is, for when the listing could not tell (EntryType::unknown).
EntryType entryTypeOf(const FileStatus& status);

struct DirectoryEntry {
    std::string_view name; // valid until the next call to next()
    EntryType type = EntryType::unknown;
    std::uint64_t inode = 0;
};

// The buffer size the walkers use: large enough that most folders are read in one system call.
inline constexpr std::size_t directoryBufferSize = 256 * 1024;

// Whether a symbolic link named as the folder to read is followed. The walkers never follow one; a place the
// user's setup names (a cache folder moved elsewhere and linked back) may be one.
enum class FinalLink { notFollowed, followed };

// Reads the entries of one open folder, skipping "." and "..". The caller owns the buffer so that one
// buffer per worker thread serves every folder it lists.
class DirectoryReader {
public:
    // Opens `name` relative to the folder `parentFd` (AT_FDCWD for a path), by default without following a
    // final symbolic link. Nothing when it cannot be opened; `errno` says why.
    static std::optional<DirectoryReader> open(
        int parentFd, const char* name, std::span<std::byte> buffer, FinalLink finalLink = FinalLink::notFollowed);

    DirectoryReader(DirectoryReader&& other) noexcept;
    DirectoryReader& operator=(DirectoryReader&&) = delete;
    ~DirectoryReader();

    // The next entry, or false at the end or on a read error (then error() is non-zero).
    bool next(DirectoryEntry& entry);
    int fd() const { return m_fd; }
    int error() const { return m_error; }

private:
    DirectoryReader(int fd, std::span<std::byte> buffer)
        : m_fd(fd)
        , m_buffer(buffer)
    {
    }

    int m_fd = -1;
    std::span<std::byte> m_buffer;
    std::size_t m_filled = 0;
    std::size_t m_offset = 0;
    int m_error = 0;
};
