#pragma once

#include <cstdint>
#include <string>

// One regular file as the inventory found it: everything the duplicate stages need to decide sameness
// cheaply. Its full path is the inventory's folder at `directory`, "/", then `name`.
struct FileRecord {
    std::int32_t directory = 0; // index into Inventory::directories
    std::string name;
    std::uint64_t size = 0;
    std::uint64_t fileID = 0; // inode number on `device`
    std::uint32_t device = 0;
    std::uint32_t linkCount = 1;
    std::uint64_t privateSize = 0;   // bytes this file alone holds on disk
    std::uint64_t cloneID = 0;       // Linux does not report clone families: always 0
    std::uint32_t cloneRefCount = 1; // … and always 1
    std::uint32_t flags = 0;         // FileFlags bits
    std::int64_t mtimeNsec = 0;      // seconds × 1,000,000,000 + nanoseconds
    std::int64_t createdSec = 0;     // 0 when the file system does not record creation
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
