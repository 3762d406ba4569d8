#include "duplicates/Sha256.h"

#include <openssl/evp.h>

#include <cstdlib>

Sha256::Sha256()
    : m_context(EVP_MD_CTX_new())
{
    if (!m_context)
        std::abort(); // out of memory
    reset();
}

Sha256::~Sha256()
{
    EVP_MD_CTX_free(m_context);
}

namespace {

// Fetched once: OpenSSL would otherwise look the algorithm up in its provider tables on every reset.
const EVP_MD* sha256Algorithm()
{
    static EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    if (!algorithm)
        std::abort(); // libcrypto without SHA-256
    return algorithm;
}

} // namespace

void Sha256::reset()
{
    EVP_DigestInit_ex2(m_context, sha256Algorithm(), nullptr);
}

void Sha256::update(std::span<const std::byte> bytes)
{
    EVP_DigestUpdate(m_context, bytes.data(), bytes.size());
}

ContentHash Sha256::finish()
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_DigestFinal_ex(m_context, digest, &length);
    return ContentHash::fromDigest(digest);
}
