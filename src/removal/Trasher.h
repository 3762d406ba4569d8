#pragma once

#include "removal/TrashResult.h"

#include <chrono>
#include <optional>
#include <stop_token>

class PrivilegedTrash;
class TrashRecorder;

// Every removal in Velloru goes through here: items move to the Trash (the Trash of the volume they are
// on, with a put-back record), never get deleted, and each item that stays gets one sentence saying why.
class Trasher {
public:
    // How long the helper may take to move one item.
    static constexpr std::chrono::seconds helperTimeout{30};

    // `helper` may be null while the privileged helper is not part of Velloru.
    explicit Trasher(PrivilegedTrash* helper = nullptr);

    // Moves the items; safe on any thread. `recorder` journals each move as it happens, so that the
    // activity log misses none even if Velloru stops mid-batch. When `stop` is requested, the items not
    // yet tried stay where they are and are reported as not moved.
    TrashResult moveToTrash(const QList<TrashItem>& items, TrashRecorder* recorder, std::stop_token stop = {}) const;

    // The sentence for an item that did not move. `error` is the errno of the last attempt.
    static QString describeFailure(const QString& path, bool helperRefused, const QString& helperReason, int error);

    // Why Velloru will not move `absolutePath` at all (the file system's root, the home folder, a folder
    // holding either or holding the Trash); nothing when it may try.
    static std::optional<QString> refusal(const QString& absolutePath);

private:
    PrivilegedTrash* m_helper;
};
