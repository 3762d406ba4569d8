#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

// Holds the inventory's file and folder names in large blocks rather than one heap string each: a scan
// of a few hundred thousand files would otherwise spend more memory on allocator overhead than on the
// names. Each name is stored with a terminating NUL, so `data()` of a returned view can be handed to the
// system as it is. Views stay valid for the store's life, also when the store is moved.
class NameStore {
public:
    std::string_view add(std::string_view name);

private:
    static constexpr std::size_t blockSize = 64 * 1024;

    std::vector<std::unique_ptr<char[]>> m_blocks;
    std::size_t m_used = blockSize; // in the last block
};
