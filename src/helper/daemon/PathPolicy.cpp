#include "helper/daemon/PathPolicy.h"

#include "platform/FileStatus.h"
#include "platform/UserHome.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>

namespace {

bool isUnder(const QString& path, const QString& root)
{
    return path == root || path.startsWith(root.endsWith(QLatin1Char('/')) ? root : root + QLatin1Char('/'));
}

// The path with its parent resolved; the item itself may be a link and is not followed.
std::optional<QString> resolved(const QString& path)
{
    if (!QDir::isAbsolutePath(path) || path.contains(QChar::Null))
        return std::nullopt;
    const QFileInfo item(QDir::cleanPath(path));
    const QString parent = QFileInfo(item.absolutePath()).canonicalFilePath();
    if (parent.isEmpty())
        return std::nullopt;
    return parent == QLatin1String("/") ? parent + item.fileName() : parent + QLatin1Char('/') + item.fileName();
}

QString notAFullPath(const QString& path)
{
    return QStringLiteral("%1 is not a full path inside an existing folder.").arg(path);
}

} // namespace

QStringList PathPolicy::movableRoots(unsigned callerUid)
{
    QStringList roots{QStringLiteral("/tmp"), QStringLiteral("/var/tmp"), QStringLiteral("/var/crash")};
    if (callerUid == 0) {
        roots << QStringLiteral("/home") << QStringLiteral("/root") << QStringLiteral("/mnt")
              << QStringLiteral("/media") << QStringLiteral("/srv") << QStringLiteral("/opt");
    } else if (const auto home = homeFolderOf(callerUid)) {
        roots << *home;
    }
    return roots;
}

std::optional<QString> PathPolicy::refuseMove(const QString& path, unsigned callerUid) const
{
    const auto real = resolved(path);
    if (!real)
        return notAFullPath(path);
    const QStringList roots = movableRoots(callerUid);
    for (const QString& root : roots)
        if (isUnder(*real, root) && *real != root)
            return std::nullopt;
    return QStringLiteral("%1 is outside the folders the helper may change (%2).")
        .arg(*real, roots.join(QStringLiteral(", ")));
}

std::optional<QString> PathPolicy::refuseRead(const QString& path) const
{
    const auto real = resolved(path);
    if (!real)
        return notAFullPath(path);
    for (const char* virtualRoot : {"/proc", "/sys", "/dev"})
        if (isUnder(*real, QString::fromLatin1(virtualRoot)))
            return QStringLiteral("%1 belongs to the kernel’s virtual file systems, which the helper does not read.")
                .arg(*real);
    return std::nullopt;
}

std::optional<QString> PathPolicy::refuseUserTrash(const QString& path, unsigned callerUid) const
{
    const QString real = QFileInfo(path).canonicalFilePath();
    const auto status = statusAt(AT_FDCWD, QFile::encodeName(real).constData(), StatDetail::full);
    if (real.isEmpty() || !status || !status->isDirectory() || status->uid != callerUid)
        return QStringLiteral("%1 is not a Trash folder of yours.").arg(path);
    const auto home = homeFolderOf(callerUid);
    if (callerUid != 0 && (!home || !isUnder(real, *home)))
        return QStringLiteral("%1 is not inside your home folder.").arg(path);
    return std::nullopt;
}

std::optional<QString> PathPolicy::refuseTrashToEmpty(const QString& path, unsigned callerUid) const
{
    const QString real = QFileInfo(path).canonicalFilePath();
    const QString uid = QString::number(callerUid);
    const bool volumeTrash
        = real.endsWith(QStringLiteral("/.Trash-") + uid) || real.endsWith(QStringLiteral("/.Trash/") + uid);
    if (volumeTrash) {
        const auto status = statusAt(AT_FDCWD, QFile::encodeName(real).constData(), StatDetail::full);
        if (status && status->isDirectory() && status->uid == callerUid)
            return std::nullopt;
        return QStringLiteral("%1 is not a Trash folder of yours.").arg(path);
    }
    if (const auto refusal = refuseUserTrash(path, callerUid))
        return refusal;
    if (!real.endsWith(QStringLiteral("/Trash")))
        return QStringLiteral("%1 is not a Trash folder.").arg(path);
    return std::nullopt;
}
