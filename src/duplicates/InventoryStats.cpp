#include "duplicates/InventoryStats.h"

#include <bit>

int sizeBucket(std::uint64_t size)
{
    const int power = size == 0 ? 0 : int(std::bit_width(size)) - 1;
    return power > 31 ? 31 : power;
}
