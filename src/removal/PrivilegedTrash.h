#pragma once

#include <QString>

#include <chrono>

// What the Trash mover needs from the privileged helper: moving one root-owned item into the Trash.
// The helper client implements it; while the helper is not set up, isReady() is false.
class PrivilegedTrash {
public:
    struct Outcome {
        bool moved = false;
        QString trashedPath; // where the item lies now, when moved
        QString reason;      // the helper's own words, when it refused
    };

    virtual ~PrivilegedTrash() = default;
    virtual bool isReady() const = 0;
    virtual Outcome moveToTrash(const QString& path, std::chrono::seconds timeout) = 0;
};
