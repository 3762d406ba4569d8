#pragma once

#include <algorithm>

// The CPU time a process had used when it was sampled.
struct ProcessCPUSample {
    double cpuSeconds = 0; // user and system time so far
    double at = 0;         // when the sample was taken, in seconds on a clock that only moves forward
};

// The share of one core the process used between two samples, in percent (100 is one core kept busy, as top
// and htop count it); 0 when no time passed between them.
inline double cpuShare(const ProcessCPUSample& earlier, const ProcessCPUSample& later)
{
    const double elapsed = later.at - earlier.at;
    if (elapsed <= 0)
        return 0;
    return std::max(0.0, later.cpuSeconds - earlier.cpuSeconds) / elapsed * 100;
}
