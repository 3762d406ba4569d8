#pragma once

#include <QtGlobal>

#include <optional>

// A process told apart from any later one that is given the same id: its pid and the time it started, in
// clock ticks since boot.
struct ProcessIdentity {
    qint64 pid = 0;
    quint64 startTicks = 0;

    static ProcessIdentity current();
    // Whether that very process is still running; one that has ended but waits for its parent to collect it
    // has not.
    bool isRunning() const;

    friend bool operator==(const ProcessIdentity&, const ProcessIdentity&) = default;
};
