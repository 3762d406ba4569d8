#include "removal/TrashRecovery.h"

#include "platform/FileAccess.h"
#include "platform/FileStatus.h"
#include "platform/TrashStore.h"
#include "removal/AuditLog.h"
#include "removal/ItemSize.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>

namespace {

bool existsWithoutFollowing(const QString& path)
{
    return statusAt(AT_FDCWD, QFile::encodeName(path).constData(), StatDetail::identity).has_value();
}

QString withTildeForHome(const QString& path)
{
    const QString home = QDir::homePath();
    if (path == home)
        return QStringLiteral("~");
    if (path.startsWith(home + QLatin1Char('/')))
        return QLatin1Char('~') + path.mid(home.size());
    return path;
}

} // namespace

namespace TrashRecovery {

QString Failure::sentence() const
{
    switch (kind) {
    case Kind::destinationOccupied:
        return QStringLiteral("Something already exists at %1. Move or rename it first, then try again.").arg(detail);
    case Kind::couldNotCreateParent:
        return QStringLiteral("The original folder no longer exists and couldn’t be recreated: ") + detail;
    case Kind::moveFailed: return QStringLiteral("Couldn’t put it back: ") + detail;
    case Kind::notInTrash: return QStringLiteral("This item is no longer in the Trash — it can’t be put back.");
    }
    Q_UNREACHABLE();
}

QList<AuditEntry> recoverableEntries(const AuditLog& log)
{
    return recoverableEntries(log.entries());
}

QList<AuditEntry> recoverableEntries(const QList<AuditEntry>& logged)
{
    QList<AuditEntry> entries;
    for (const AuditEntry& entry : logged)
        if (entry.outcome == AuditOutcome::movedToTrash && entry.trashPath
            && existsWithoutFollowing(expandTilde(*entry.trashPath)))
            entries.append(entry);
    return entries;
}

std::optional<Failure> putBack(AuditLog& log, const AuditEntry& entry)
{
    const QString trashed = expandTilde(entry.trashPath.value_or(QString()));
    const QString destination = expandTilde(entry.path);
    if (trashed.isEmpty() || !existsWithoutFollowing(trashed))
        return Failure{Failure::Kind::notInTrash, {}};
    if (existsWithoutFollowing(destination))
        return Failure{Failure::Kind::destinationOccupied, withTildeForHome(destination)};

    const QString parent = QFileInfo(destination).absolutePath();
    if (!QDir().mkpath(parent))
        return Failure{Failure::Kind::couldNotCreateParent, parent};
    if (const int error = restoreFromTrash(trashed, destination)) {
        // Something appeared at the destination between the check and the move: still never replaced.
        if (error == EEXIST)
            return Failure{Failure::Kind::destinationOccupied, withTildeForHome(destination)};
        return Failure{Failure::Kind::moveFailed, systemErrorSentence(error)};
    }
    log.markRecovered({entry.id});
    return std::nullopt;
}

} // namespace TrashRecovery
