#pragma once

#include "removal/TrashResult.h"

#include <stop_token>

class AuditLog;
class PrivilegedTrash;

// Every removal in Velloru goes through here: items move to the Trash (the Trash of the volume they are
// on, with a put-back record), never get deleted, and each item that stays gets one sentence saying why.
class Trasher {
public:
    // How long the helper may take to move one item.
    static constexpr std::chrono::seconds helperTimeout{30};

    // `helper` may be null while the privileged helper is not part of Velloru.
    explicit Trasher(PrivilegedTrash* helper = nullptr);

    // Moves the items; safe on any thread. When `stop` is requested, the items not yet tried stay where
    // they are and are reported as not moved.
    TrashResult moveToTrash(const QList<TrashItem>& items, std::stop_token stop = {}) const;

    // The sentence for an item that did not move. `error` is the errno of the last attempt.
    static QString describeFailure(const QString& path, bool helperRefused, const QString& helperReason, int error);

private:
    PrivilegedTrash* m_helper;
};

// Writes the result into the activity log under `feature`: one entry per moved and per failed item.
void recordTrashResult(AuditLog& log, const QString& feature, const TrashResult& result);
