#pragma once

#include "duplicates/ContentHash.h"
#include "duplicates/Sha256.h"

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <span>
#include <thread>

// Hashes an anchor file's chunks on a thread of its own while the verify worker reads and compares the
// next chunk, so hashing a large file costs no time on the comparing thread. The caller alternates
// between two buffers: a buffer handed over stays untouched until the next hand-over returns.
class BackgroundHasher {
public:
    BackgroundHasher();
    ~BackgroundHasher();
    BackgroundHasher(const BackgroundHasher&) = delete;
    BackgroundHasher& operator=(const BackgroundHasher&) = delete;

    // Starts a new digest.
    void reset();
    // Waits until the previous chunk is hashed, then hands this one over.
    void add(std::span<const std::byte> chunk);
    // Waits for the last chunk and returns the digest of everything since reset().
    ContentHash finish();
    // Waits until no chunk is being hashed, so the buffers may be reused.
    void waitUntilIdle();

private:
    void run(std::stop_token stop);

    std::mutex m_lock; // guards m_pending and m_busy; m_hasher belongs to the thread while m_busy is set
    std::condition_variable_any m_changed;
    std::span<const std::byte> m_pending;
    bool m_busy = false;
    Sha256 m_hasher;
    std::jthread m_thread; // last: started after, and stopped before, the fields it uses
};
