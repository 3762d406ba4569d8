#pragma once

#include "duplicates/ContentHash.h"
#include "duplicates/Sha256.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <thread>
#include <utility>
#include <vector>

// Hashes the anchors of a verify worker on a thread of its own, behind the worker. The worker reads each
// anchor chunk straight into space it takes from a ring, hands the chunk over and compares the members
// against it while this thread hashes it; the space comes free once the chunk is hashed. The worker waits
// only when the ring is full, so many small anchors queue up behind a large one and both threads stay busy
// instead of taking turns.
class AnchorHasher {
public:
    using Ticket = std::uint64_t;

    explicit AnchorHasher(std::size_t ringBytes);
    ~AnchorHasher();
    AnchorHasher(const AnchorHasher&) = delete;
    AnchorHasher& operator=(const AnchorHasher&) = delete;

    // Space for the next chunk of `length` bytes (at most the ring's size). While the ring is too full,
    // `whileFull` is called to do other work (it returns false when it has none: then this waits). Each
    // space must be handed back with hash() or release() before the next is taken.
    std::span<std::byte> space(std::size_t length, const std::function<bool()>& whileFull = {});
    // Frees the space without hashing what it holds.
    void release(std::span<std::byte> chunk);

    // Starts a digest: the chunks hashed from now on belong to it. A digest never finished is dropped.
    Ticket startDigest();
    // Adds the chunk to the current digest. The worker may go on reading the chunk (never writing it).
    void hash(std::span<std::byte> chunk);
    // Ends the current digest; its value arrives from finishedDigests() under its ticket.
    void finishDigest();

    // The digests finished since the last call, in ticket order. With `waitForAll`, first waits until
    // everything handed over is done.
    std::vector<std::pair<Ticket, ContentHash>> finishedDigests(bool waitForAll);

private:
    struct Task {
        enum class Kind { reset, hash, release, finish } kind;
        std::span<std::byte> chunk; // empty for reset and finish
        Ticket ticket = 0;          // for finish
    };

    void enqueue(Task task);
    bool fits(std::size_t offset, std::size_t length) const;
    void run(std::stop_token stop);

    const std::size_t m_ringBytes;
    const std::unique_ptr<std::byte[]> m_ring;
    std::size_t m_head = 0; // where the next space starts, unless it wraps around
    Ticket m_nextTicket = 0;

    std::mutex m_lock; // guards the fields below; m_hasher belongs to the thread
    std::condition_variable_any m_changed;
    std::deque<Task> m_tasks; // the front one is being worked on; its space stays taken until it is done
    std::vector<std::pair<Ticket, ContentHash>> m_finished;
    Sha256 m_hasher;
    std::jthread m_thread; // last: started after, and stopped before, the fields it uses
};
