#pragma once

#include "duplicates/ContentHash.h"
#include "duplicates/RecordedFile.h"
#include "platform/FileReading.h"

#include <array>
#include <cstddef>
#include <cstdint>

class Sha256;

// The sample hash that sorts same-size files into candidate groups: SHA-256 over the first and the last
// 4 KiB of files larger than 8 KiB, over the whole content of smaller ones, then the size as an 8-byte
// little-endian number.
struct SampleResult {
    ContentHash hash;
    ReadProblem problem = ReadProblem::none;
    std::uint64_t bytesRead = 0;
};

inline constexpr std::uint64_t sampleSpan = 4096;
using SampleBuffer = std::array<std::byte, 2 * sampleSpan>;

SampleResult sampleHash(const ReadOnlyFile& file, std::uint64_t size, Sha256& hasher, SampleBuffer& buffer);
