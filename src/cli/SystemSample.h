#pragma once

#include "processes/ProcessSnapshot.h"

class HelperManager;

// A sample of the process table and memory for a command. With CPU shares, two samples a second apart (the
// first would give each process its average since it started). The helper, when ready, reads the memory of
// the processes that /proc hides.
enum class CPUShares { wanted, notNeeded };
ProcessSnapshot takeSystemSample(HelperManager& helper, CPUShares cpu);
