#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>

// The wire between Velloru and its privileged helper: each message is a JSON object preceded by its
// length as four bytes, most significant first. Requests carry an "id" and an "op"; the helper answers
// each request exactly once with {"id", "reply"} and may send {"id", "progress"} before that.
namespace HelperProtocol {

inline const QString installedSocketPath = QStringLiteral("/run/velloru/helper.sock");
// The socket Velloru talks to: the installed one, or the one named by VELLORU_HELPER_SOCKET, a developer
// switch for running the helper by hand (Velloru then takes it as installed).
QString socketPath();
bool socketOverridden();
// The helper's version; the app expects the helper it talks to to report the same.
inline const QString version = QStringLiteral(VELLORU_VERSION);
// Larger messages are refused, so a confused peer cannot make the other side allocate without bound.
// Replies (listings, process tables) may be large; a request is a few paths at most.
inline constexpr qint64 maximumMessageBytes = 16 * 1024 * 1024;
inline constexpr qint64 maximumRequestBytes = 1024 * 1024;

namespace Op {
inline const QString version = QStringLiteral("version");
inline const QString shutdown = QStringLiteral("shutdown");
inline const QString performMaintenance = QStringLiteral("performMaintenance");
inline const QString emptyTrash = QStringLiteral("emptyTrash");
inline const QString moveItemsToTrash = QStringLiteral("moveItemsToTrash");
inline const QString existing = QStringLiteral("existing");
inline const QString listChildren = QStringLiteral("listChildren");
inline const QString sizesOfPaths = QStringLiteral("sizesOfPaths");
inline const QString firstAid = QStringLiteral("firstAid");
inline const QString flashImage = QStringLiteral("flashImage");
inline const QString cloneDisk = QStringLiteral("cloneDisk");
inline const QString cloneDiskContents = QStringLiteral("cloneDiskContents");
inline const QString cancelFlash = QStringLiteral("cancelFlash");
inline const QString signalProcess = QStringLiteral("signalProcess");
inline const QString setProcessPriority = QStringLiteral("setProcessPriority");
inline const QString processMemory = QStringLiteral("processMemory");
inline const QString setUnitEnabled = QStringLiteral("setUnitEnabled");
inline const QString createMountpoint = QStringLiteral("createMountpoint");
} // namespace Op

QByteArray frame(const QJsonObject& message);

// Takes the first complete message off the front of `buffer`. Nothing while the message is incomplete;
// `malformed` when the length is out of bounds or the body is not a JSON object (the connection is then
// closed, since the stream can no longer be trusted).
struct Unframed {
    std::optional<QJsonObject> message;
    bool malformed = false;
};
Unframed takeMessage(QByteArray& buffer, qint64 limit = maximumMessageBytes);

} // namespace HelperProtocol
