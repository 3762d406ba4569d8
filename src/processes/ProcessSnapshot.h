#pragma once

#include "platform/MemoryStatus.h"
#include "processes/ProcessGroup.h"
#include "processes/RunningProcess.h"

#include <QList>

#include <optional>

// One sample of the whole system: every process with its figures, and the memory they share.
struct ProcessSnapshot {
    QList<RunningProcess> processes; // kernel threads and ended processes left out
    QList<ProcessGroup> groups;      // the same processes, grouped under their apps
    // /proc hides other users' processes from this user; only the helper can read them.
    bool systemProcessesHidden = false;
    std::optional<MemoryReading> memory;
    std::optional<MemoryStall> stall; // nothing on kernels that do not report memory pressure
    double at = 0;                    // when it was taken, in seconds since boot
};
