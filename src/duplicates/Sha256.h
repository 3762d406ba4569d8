#pragma once

#include "duplicates/ContentHash.h"

#include <cstddef>
#include <span>

struct evp_md_ctx_st;

// A running SHA-256 from OpenSSL (which uses the CPU's SHA instructions where they exist). One per worker
// thread, reused for every file it hashes.
class Sha256 {
public:
    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    void reset();
    void update(std::span<const std::byte> bytes);
    // The first 16 bytes of the digest of everything since the last reset.
    ContentHash finish();

private:
    evp_md_ctx_st* m_context;
};
