#pragma once

#include "duplicates/BackgroundHasher.h"
#include "duplicates/EngineStats.h"
#include "duplicates/RecordedFile.h"
#include "duplicates/Sha256.h"
#include "duplicates/VerifiedGroup.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

struct Inventory;

// Proves candidate groups equal byte for byte. The first member is the anchor; the others are held open
// at most `batchWidth` at a time and read in lock-step with it, 1 MiB at a time, each chunk compared with
// memcmp. One per verify worker: it owns the worker's read buffers and hashers.
class ContentVerifier {
public:
    inline static constexpr std::size_t chunkSize = 1024 * 1024;

    ContentVerifier(const Inventory& inventory, std::size_t batchWidth, std::function<bool()> cancelled);

    struct Outcome {
        std::vector<VerifiedGroup> confirmed;
        EngineStats counts; // verifyBytesRead, datalessAtRead and unreadable
        std::int64_t changedDuringScan = 0;
    };

    // Members that differ from the anchor are compared again among themselves with a new anchor, so that
    // two copies of a file that merely shares its samples with the anchor are still found.
    Outcome verify(std::vector<std::uint32_t> members);

private:
    // One open file being compared.
    struct Member {
        std::uint32_t index = 0;
        ReadOnlyFile file;
    };

    struct Round {
        std::vector<std::uint32_t> matched;   // equal to the anchor
        std::vector<std::uint32_t> remaining; // still to be sorted out without this anchor
        ContentHash anchorHash;
        bool anchorUsable = true;
    };

    Round compareWithAnchor(const std::vector<std::uint32_t>& members, Outcome& outcome);
    // Reads the members' chunk at `offset` and drops those that differ from the anchor's or cannot be read.
    void compareChunk(std::vector<Member>& active, std::uint64_t offset, std::span<const std::byte> anchorChunk,
        Round& round, Outcome& outcome);
    std::vector<Member> openBatch(std::span<const std::uint32_t> batch, Outcome& outcome);
    std::byte* buffer(std::size_t slot);
    BackgroundHasher& backgroundHasher();
    void count(ReadProblem problem, Outcome& outcome) const;

    const Inventory& m_inventory;
    std::size_t m_batchWidth;
    std::function<bool()> m_cancelled;
    Sha256 m_hasher; // for anchors of one chunk
    std::unique_ptr<BackgroundHasher> m_backgroundHasher;
    std::vector<std::unique_ptr<std::byte[]>> m_buffers; // slots 0 and 1 are the anchor's, 2 the members'
};
