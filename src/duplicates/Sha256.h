#pragma once

#include "duplicates/ContentHash.h"

#include <openssl/sha.h>

#include <cstddef>
#include <span>

// A running SHA-256 from OpenSSL (which uses the CPU's SHA instructions where they exist). One per worker
// thread, reused for every file it hashes.
//
// It calls OpenSSL's SHA-256 functions directly rather than through the EVP interface: fetching a digest
// through EVP starts OpenSSL's provider machinery, which leaves about 2 MiB more resident before the first
// byte is hashed, for the same SHA-256 code in the end.
class Sha256 {
public:
    Sha256() { reset(); }

    void reset();
    void update(std::span<const std::byte> bytes);
    // The first 16 bytes of the digest of everything since the last reset.
    ContentHash finish();

private:
    SHA256_CTX m_context;
};
