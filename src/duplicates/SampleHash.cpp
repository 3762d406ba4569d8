#include "duplicates/SampleHash.h"

#include "duplicates/Sha256.h"

SampleResult sampleHash(const ReadOnlyFile& file, std::uint64_t size, Sha256& hasher, SampleBuffer& buffer)
{
    SampleResult result;
    hasher.reset();
    const auto readSpan = [&](std::uint64_t offset, std::size_t length) {
        const ReadOutcome outcome = file.readAt(offset, {buffer.data(), length});
        result.bytesRead += outcome.bytes;
        if (outcome.error != 0) {
            result.problem = problemFromError(outcome.error);
            return false;
        }
        hasher.update({buffer.data(), outcome.bytes});
        return true;
    };

    if (size > 2 * sampleSpan) {
        if (!readSpan(0, sampleSpan) || !readSpan(size - sampleSpan, sampleSpan))
            return result;
    } else if (!readSpan(0, std::size_t(size))) {
        return result;
    }
    std::byte length[8];
    for (int i = 0; i < 8; ++i)
        length[i] = std::byte((size >> (8 * i)) & 0xff);
    hasher.update(length);
    result.hash = hasher.finish();
    return result;
}
