#include "helper/daemon/PathPolicy.h"

#include "common/LocalPath.h"
#include "platform/UserHome.h"

#include <QDir>
#include <QFileInfo>

namespace {

bool isUnder(const QString& path, const QString& root)
{
    return path == root || path.startsWith(root.endsWith(QLatin1Char('/')) ? root : root + QLatin1Char('/'));
}

QString notYourTrash(const QString& path)
{
    return QStringLiteral("%1 is not a Trash folder of yours.").arg(path);
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

std::optional<QString> PathPolicy::refuseMove(const QString& realPath, unsigned callerUid) const
{
    for (const QString& home : allHomeFolders())
        if (isUnder(home, realPath))
            return QStringLiteral("%1 is a home folder, or holds one; the helper never moves those.").arg(realPath);
    const QStringList roots = movableRoots(callerUid);
    for (const QString& root : roots)
        if (isUnder(realPath, root) && realPath != root)
            return std::nullopt;
    return QStringLiteral("%1 is outside the folders the helper may change (%2).")
        .arg(realPath, roots.join(QStringLiteral(", ")));
}

std::optional<QString> PathPolicy::refuseOwnership(
    const QString& realPath, const FileStatus& item, const FileStatus& parent, unsigned callerUid)
{
    if (callerUid == 0 || item.uid == callerUid || parent.uid == callerUid)
        return std::nullopt;
    return QStringLiteral("%1 belongs to another user, in a folder that isn’t yours; the helper only moves what "
                          "you could have removed yourself.")
        .arg(realPath);
}

std::optional<QString> PathPolicy::refuseRead(const QString& path) const
{
    if (!QDir::isAbsolutePath(path) || !LocalPath::encode(path))
        return QStringLiteral("%1 is not a full path.").arg(path);
    // Checked as written and with every link resolved, so a link cannot lead the reading there either.
    const QString cleaned = QDir::cleanPath(path);
    const QFileInfo info(cleaned);
    for (const QString& form : {cleaned, QFileInfo(info.absolutePath()).canonicalFilePath(), info.canonicalFilePath()})
        for (const char* virtualRoot : {"/proc", "/sys", "/dev"})
            if (!form.isEmpty() && isUnder(form, QString::fromLatin1(virtualRoot)))
                return QStringLiteral(
                    "%1 belongs to the kernel’s virtual file systems, which the helper does not read.")
                    .arg(cleaned);
    return std::nullopt;
}

std::optional<QString> PathPolicy::refuseUserTrash(
    const QString& realPath, const FileStatus& folder, unsigned callerUid)
{
    if (!realPath.endsWith(QStringLiteral("/Trash")) || !folder.isDirectory() || folder.uid != callerUid)
        return notYourTrash(realPath);
    return std::nullopt;
}

std::optional<QString> PathPolicy::refuseTrashToEmpty(
    const QString& realPath, const FileStatus& folder, unsigned callerUid)
{
    const QString uid = QString::number(callerUid);
    const bool named = realPath.endsWith(QStringLiteral("/Trash"))
        || realPath.endsWith(QStringLiteral("/.Trash-") + uid) || realPath.endsWith(QStringLiteral("/.Trash/") + uid);
    if (!named || !folder.isDirectory() || folder.uid != callerUid)
        return notYourTrash(realPath);
    return std::nullopt;
}
