#pragma once

#include <QString>

#include <variant>

// Where a scan session stands: idle → scanning → results → cleaning → done, and back to scanning when
// the user scans again.
namespace ScanPhase {

struct Idle {
    friend bool operator==(const Idle&, const Idle&) = default;
};
struct Scanning {
    QString location; // what is being looked at
    friend bool operator==(const Scanning&, const Scanning&) = default;
};
struct Results {
    friend bool operator==(const Results&, const Results&) = default;
};
struct Cleaning {
    friend bool operator==(const Cleaning&, const Cleaning&) = default;
};
// A removal finished: how many items moved and how many bytes that freed.
struct Done {
    qint64 itemsMoved = 0;
    qint64 bytesFreed = 0;
    friend bool operator==(const Done&, const Done&) = default;
};

} // namespace ScanPhase

using ScanPhaseValue
    = std::variant<ScanPhase::Scanning, ScanPhase::Done, ScanPhase::Idle, ScanPhase::Results, ScanPhase::Cleaning>;
