// The direct SHA-256 functions are marked deprecated in favour of EVP since OpenSSL 3.0, yet kept and
// maintained; see Sha256.h for why they are used here.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "duplicates/Sha256.h"

void Sha256::reset()
{
    SHA256_Init(&m_context);
}

void Sha256::update(std::span<const std::byte> bytes)
{
    SHA256_Update(&m_context, bytes.data(), bytes.size());
}

ContentHash Sha256::finish()
{
    unsigned char digest[SHA256_DIGEST_LENGTH];
    SHA256_Final(digest, &m_context);
    return ContentHash::fromDigest(digest);
}
