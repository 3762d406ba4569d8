#pragma once

#include "duplicates/AnchorHasher.h"
#include "duplicates/EngineStats.h"
#include "duplicates/RecordedFile.h"
#include "duplicates/Sha256.h"
#include "duplicates/VerifiedGroup.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

struct Inventory;

// Proves candidate groups equal byte for byte. The first member is the anchor; the others are held open
// at most `batchWidth` at a time and read in lock-step with it, 1 MiB at a time, each chunk compared with
// memcmp. The anchor's content hash is computed behind the comparison on the AnchorHasher's thread, so a
// proven group is reported once its hash has arrived. When hashing falls behind (a large anchor), the
// worker does not wait: it takes a group of small files from `sideWork` and compares and hashes it
// itself. One per verify worker: it owns the worker's buffers.
class ContentVerifier {
public:
    inline static constexpr std::size_t chunkSize = 1024 * 1024;
    // How much of a member's chunk is read at a time.
    inline static constexpr std::size_t memberPiece = 256 * 1024;
    // The largest files compared as side work: small enough that a group is done before hashing is.
    inline static constexpr std::size_t sideWorkSize = 256 * 1024;

    using Group = std::vector<std::uint32_t>;
    // The next group whose files are at most sideWorkSize long, or nullptr.
    using SideWork = std::function<Group*()>;

    ContentVerifier(
        const Inventory& inventory, std::size_t batchWidth, std::function<bool()> cancelled, SideWork sideWork);

    struct Outcome {
        std::vector<VerifiedGroup> confirmed;
        EngineStats counts;          // verifyBytesRead and the files left out, by why
        std::int64_t groupsDone = 0; // the group handed in and any taken as side work
    };

    // Compares one candidate group. Members that differ from the anchor are compared again among
    // themselves with a new anchor, so that two copies of a file that merely shares its samples with the
    // anchor are still found. `confirmed` holds the groups, of this call or earlier ones, whose hash is in.
    Outcome verify(Group members);
    // The proven groups still waiting for their hash, once it is in.
    Outcome finish();

private:
    // One open file being compared.
    struct Member {
        std::uint32_t index = 0;
        ReadOnlyFile file;
    };

    // How a group's anchors are hashed: behind the comparison on the hasher's thread, or by the worker
    // itself as it goes (side work, while the hasher is busy).
    enum class Hashing { behind, alongside };

    struct Round {
        std::vector<std::uint32_t> matched;    // equal to the anchor
        std::vector<std::uint32_t> remaining;  // still to be sorted out without this anchor
        AnchorHasher::Ticket anchorDigest = 0; // hashed behind
        ContentHash anchorHash;                // hashed alongside
        bool anchorUsable = true;
    };

    // A proven group whose hash is still being computed.
    struct Waiting {
        VerifiedGroup group;
        AnchorHasher::Ticket digest = 0;
    };

    void compareGroup(Group members, Hashing hashing, Outcome& outcome);
    Round compareWithAnchor(const Group& members, Hashing hashing, Outcome& outcome);
    // Compares one group of sideWork; false when there is none.
    bool compareSideGroup(Outcome& outcome);
    // Reads the members' chunk at `offset` and drops those that differ from the anchor's or cannot be read.
    void compareChunk(std::vector<Member>& active, std::uint64_t offset, std::span<const std::byte> anchorChunk,
        Round& round, Outcome& outcome);
    std::vector<Member> openBatch(std::span<const std::uint32_t> batch, Outcome& outcome);
    // Moves the waiting groups whose hash has arrived to `into`.
    void collectHashed(bool waitForAll, std::vector<VerifiedGroup>& into);

    const Inventory& m_inventory;
    std::size_t m_batchWidth;
    std::function<bool()> m_cancelled;
    SideWork m_sideWork;
    // Room for two whole chunks, so the next chunk of a large anchor is read while the last is hashed.
    AnchorHasher m_anchorHasher{2 * chunkSize};
    std::unique_ptr<std::byte[]> m_memberBuffer; // free whenever the worker waits for ring space
    std::unique_ptr<std::byte[]> m_sideAnchorBuffer;
    Sha256 m_sideHasher;
    std::deque<Waiting> m_waiting; // in ticket order
};
