#include "duplicates/AnchorHasher.h"
#include "duplicates/Sha256.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>

namespace {

ContentHash directHash(const std::vector<std::byte>& bytes)
{
    Sha256 hasher;
    hasher.update(bytes);
    return hasher.finish();
}

} // namespace

// Digests of many sizes pass through a small ring that wraps and fills again and again: every finished
// digest arrives once, in order, equal to hashing the same bytes directly; digests never finished and
// chunks only released leave no trace.
TEST(AnchorHasher, HashesEachFinishedDigestInOrderThroughAWrappingRing)
{
    constexpr std::size_t ringBytes = 64 * 1024;
    AnchorHasher hasher(ringBytes);
    std::mt19937 random(7);
    std::map<AnchorHasher::Ticket, ContentHash> expected;
    std::vector<std::pair<AnchorHasher::Ticket, ContentHash>> arrived;
    int sideWorkCalls = 0;

    for (int round = 0; round < 2000; ++round) {
        const AnchorHasher::Ticket ticket = hasher.startDigest();
        const int chunks = 1 + int(random() % 4);
        const bool finished = round % 7 != 3;
        std::vector<std::byte> content;
        for (int i = 0; i < chunks; ++i) {
            // From a few bytes up to the whole ring, so chunks wrap to the front and wait for space.
            const std::size_t length = i % 3 == 2 ? ringBytes : 1 + random() % (ringBytes / 2);
            const std::span<std::byte> chunk = hasher.space(length, [&] { return ++sideWorkCalls % 2 == 0; });
            ASSERT_EQ(chunk.size(), length);
            // Filled faster than it can be hashed, so the ring is often full; a byte overwritten before it
            // was hashed would change a digest.
            std::memset(chunk.data(), int(random() & 0xff), chunk.size());
            chunk[random() % chunk.size()] = std::byte(random());
            content.insert(content.end(), chunk.begin(), chunk.end());
            hasher.hash(chunk);
            // A chunk read but not hashed (an anchor re-read for a later batch) only frees its space.
            const std::span<std::byte> skipped = hasher.space(100);
            std::memset(skipped.data(), 0xAB, skipped.size());
            hasher.release(skipped);
        }
        if (finished) {
            hasher.finishDigest();
            expected[ticket] = directHash(content);
        }
        if (round % 100 == 0)
            for (const auto& digest : hasher.finishedDigests(false))
                arrived.push_back(digest);
    }
    for (const auto& digest : hasher.finishedDigests(true))
        arrived.push_back(digest);

    ASSERT_EQ(arrived.size(), expected.size());
    auto next = expected.begin();
    for (const auto& [ticket, hash] : arrived) {
        EXPECT_EQ(ticket, next->first);
        EXPECT_EQ(hash, next->second) << "ticket " << ticket;
        ++next;
    }
    EXPECT_TRUE(hasher.finishedDigests(true).empty());
}
