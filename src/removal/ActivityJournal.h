#pragma once

#include "platform/ProcessIdentity.h"
#include "removal/AuditEntry.h"

#include <QList>
#include <QString>

#include <optional>

// The activity log's side file, "audit-journal.jsonl": one JSON object per line, appended as things
// happen. An append is one write to a file opened for appending, made under the folder's shared lock, so
// any thread of any process may append at once and a crash loses at most the line being written. The
// activity log folds the lines into its own files under the exclusive lock and empties the journal.
class ActivityJournal {
public:
    struct Line {
        enum class Kind {
            pending, // a move about to happen: its put-back record exists, the item has not moved yet
            entry,   // a finished entry; for a pending move, its confirmation (same id)
            dropped, // a pending move that did not happen
        };
        Kind kind = Kind::entry;
        AuditEntry entry; // for `dropped`, only the id
        ProcessIdentity writer;
    };

    explicit ActivityJournal(QString folder);

    QString path() const;
    QString lockPath() const;

    // Each answers nothing, or a sentence saying why the line could not be written.
    std::optional<QString> appendPending(const AuditEntry& move) const;
    std::optional<QString> appendEntry(const AuditEntry& entry) const;
    std::optional<QString> appendDropped(const QUuid& id) const;

    // The lines of the journal, for the caller holding the exclusive lock. Lines that cannot be read (a
    // torn last line after a power cut) are left out and counted in `unreadable`.
    struct Contents {
        QList<Line> lines;
        int unreadable = 0;
    };
    Contents read() const;
    // Replaces the journal with these lines (the pending moves still under way), for the caller holding
    // the exclusive lock.
    std::optional<QString> replace(const QList<Line>& lines) const;

    static QByteArray encode(const Line& line);
    static std::optional<Line> decode(const QByteArray& text);

private:
    std::optional<QString> append(const Line& line) const;

    QString m_folder;
};
