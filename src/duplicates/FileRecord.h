#pragma once

#include <cstdint>
#include <string_view>

// One regular file as the inventory found it: everything the duplicate stages need to decide sameness
// cheaply. Its full path is the inventory's folder at `directory`, "/", then `name`. Kept to 64 bytes, as
// a scan can hold hundreds of thousands of them: the name lives in the inventory's NameStore (with a
// terminating NUL), and Linux's always-empty clone fields are not stored.
struct FileRecord {
    std::string_view name;
    std::uint64_t size = 0;
    std::uint64_t fileID = 0;    // inode number on `device`
    std::int64_t mtimeNsec = 0;  // seconds × 1,000,000,000 + nanoseconds
    std::int64_t createdSec = 0; // 0 when the file system does not record creation
    std::int32_t directory = 0;  // index into Inventory::directories
    std::uint32_t device = 0;
    std::uint32_t linkCount = 1;
    std::uint32_t flags = 0; // FileFlags bits
};

// The flag bits a record can carry. The values are the BSD flags words' so that the rules that read them
// stay the same on every platform; Linux sets the locked bit for immutable and append-only files.
namespace FileFlags {
inline constexpr std::uint32_t userImmutable = 0x00000002;
inline constexpr std::uint32_t protectedStorage = 0x00000080;
inline constexpr std::uint32_t systemImmutable = 0x00020000;
inline constexpr std::uint32_t restricted = 0x00080000;
inline constexpr std::uint32_t dataless = 0x40000000; // content lives only in the cloud
} // namespace FileFlags
