#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QUuid>

#include <optional>

// The values of an entry's "outcome".
namespace AuditOutcome {
inline const QString movedToTrash = QStringLiteral("Moved to Trash");
inline const QString failed = QStringLiteral("Failed");
inline const QString recovered = QStringLiteral("Recovered");
inline const QString restoredFromVault = QStringLiteral("Restored from vault");
inline const QString movedToVault = QStringLiteral("Moved to vault");
// An item that failed, or an action whose outcome reads "Failed: " and the reason.
inline bool isFailure(const QString& outcome)
{
    return outcome == failed || outcome.startsWith(failed + QStringLiteral(": "));
}
} // namespace AuditOutcome

// Whether an entry is about one file or folder, or records an operation as a whole.
enum class AuditSubject { file, action };

// One line of the activity log.
struct AuditEntry {
    QUuid id;
    QDateTime date;
    QString path;
    qint64 size = 0;
    QString feature;
    QString outcome;
    std::optional<QString> trashPath; // where a moved item lies now inside a Trash folder
    AuditSubject subjectKind = AuditSubject::file;

    // A new entry about one file, stamped now, with a fresh id; a leading "~" in `path` is expanded.
    static AuditEntry make(const QString& feature, const QString& path, qint64 size, const QString& outcome);

    // The JSON object, keys in the file's fixed order.
    QByteArray toJson() const;
    // Nothing when a key is missing or has the wrong type.
    static std::optional<AuditEntry> fromJson(const QJsonObject& object);

    friend bool operator==(const AuditEntry&, const AuditEntry&) = default;
};

// Identifiers are written as upper-case canonical UUID strings.
QString uuidText(const QUuid& id);
