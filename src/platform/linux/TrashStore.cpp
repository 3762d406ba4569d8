#include "platform/TrashStore.h"

#include "common/StoragePaths.h"
#include "platform/FileStatus.h"
#include "platform/MountTable.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

#include <cctype>
#include <cerrno>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A name and its ".trashinfo" suffix must fit in one directory entry.
constexpr qsizetype maximumNameBytes = 255 - 10;
constexpr int maximumNameAttempts = 100'000;

QByteArray local(const QString& path)
{
    return QFile::encodeName(path);
}

// Percent-encodes a path the way the freedesktop Trash standard asks (RFC 2396): bytes outside the unreserved
// set and "/" become %XX.
QByteArray encodeTrashInfoPath(const QByteArray& path)
{
    static const QByteArray unreserved = "-_.!~*'()/";
    QByteArray out;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) && byte < 0x80)
            out += c;
        else if (unreserved.contains(c))
            out += c;
        else
            out += '%' + QByteArray::number(byte, 16).toUpper().rightJustified(2, '0');
    }
    return out;
}

// 0 when `path` is a real folder (not a link) owned by `uid`, creating it when it is missing (and, when
// root creates it for someone else, handing it to them).
int ensureOwnedFolder(const QString& path, unsigned uid)
{
    if (::mkdir(local(path).constData(), 0700) == 0) {
        if (uid != ::getuid() && ::lchown(local(path).constData(), uid, gid_t(-1)) != 0)
            return errno;
    } else if (errno != EEXIST) {
        return errno;
    }
    const auto status = statusAt(AT_FDCWD, local(path).constData(), StatDetail::full);
    if (!status)
        return errno;
    if (!status->isDirectory() || status->uid != uid)
        return EPERM;
    return 0;
}

int ensureTrashFolder(const QString& path, unsigned uid)
{
    for (const QString& folder : {path, path + QStringLiteral("/files"), path + QStringLiteral("/info")})
        if (const int error = ensureOwnedFolder(folder, uid))
            return error;
    return 0;
}

// The volume's shared ".Trash" is only trusted when it is a real folder with the sticky bit.
bool isUsableSharedTrash(const QString& path)
{
    const auto status = statusAt(AT_FDCWD, local(path).constData(), StatDetail::identity);
    return status && status->isDirectory() && (status->mode & S_ISVTX);
}

bool isRealFolder(const QString& path)
{
    const auto status = statusAt(AT_FDCWD, local(path).constData(), StatDetail::identity);
    return status && status->isDirectory();
}

QString withTrailingSlash(const QString& path)
{
    return path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/');
}

// "report.pdf" → "report", ".pdf"; ".bashrc" has no extension.
std::pair<QString, QString> splitExtension(const QString& name)
{
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot <= 0)
        return {name, {}};
    return {name.left(dot), name.mid(dot)};
}

// Shortens the stem, never in the middle of a character, until the name fits.
QString fitName(QString stem, const QString& suffix)
{
    while (!stem.isEmpty() && (stem + suffix).toUtf8().size() > maximumNameBytes)
        stem.chop(stem.back().isLowSurrogate() && stem.size() > 1 ? 2 : 1);
    return stem + suffix;
}

QString candidateName(const QString& name, int attempt)
{
    const auto [stem, extension] = splitExtension(name);
    if (attempt == 0)
        return fitName(stem, extension);
    return fitName(stem, QStringLiteral(" %1").arg(attempt) + extension);
}

QByteArray trashInfoText(const QString& absolutePath, const TrashFolder& folder)
{
    QString recorded = absolutePath;
    if (!folder.isHome())
        recorded = absolutePath.mid(withTrailingSlash(folder.topDirectory).size());
    return "[Trash Info]\nPath=" + encodeTrashInfoPath(local(recorded)) + "\nDeletionDate="
        + QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")).toUtf8() + "\n";
}

int writeWhole(int fd, const QByteArray& data)
{
    qsizetype written = 0;
    while (written < data.size()) {
        const ssize_t n = ::write(fd, data.constData() + written, size_t(data.size() - written));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            return errno;
        written += n;
    }
    return 0;
}

// Renames without replacing an existing entry; file systems without RENAME_NOREPLACE get a checked rename.
int renameNoReplace(const QByteArray& from, const QByteArray& to)
{
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    struct stat existing;
    if (::lstat(to.constData(), &existing) == 0)
        return EEXIST;
    return ::rename(from.constData(), to.constData()) == 0 ? 0 : errno;
}

const QSet<QString>& pseudoFileSystems()
{
    static const QSet<QString> types{
        QStringLiteral("proc"),
        QStringLiteral("sysfs"),
        QStringLiteral("cgroup"),
        QStringLiteral("cgroup2"),
        QStringLiteral("devpts"),
        QStringLiteral("mqueue"),
        QStringLiteral("debugfs"),
        QStringLiteral("tracefs"),
        QStringLiteral("securityfs"),
        QStringLiteral("pstore"),
        QStringLiteral("bpf"),
        QStringLiteral("configfs"),
        QStringLiteral("fusectl"),
        QStringLiteral("autofs"),
        QStringLiteral("binfmt_misc"),
        QStringLiteral("hugetlbfs"),
        QStringLiteral("nsfs"),
        QStringLiteral("devtmpfs"),
        QStringLiteral("efivarfs"),
        QStringLiteral("rpc_pipefs"),
    };
    return types;
}

} // namespace

QString homeTrashPath()
{
    return StoragePaths::dataHome() + QStringLiteral("/Trash");
}

TrashOwner TrashOwner::currentUser()
{
    return {::getuid(), homeTrashPath()};
}

TrashFolderLookup trashFolderFor(const QString& canonicalParent, quint64 itemDevice, const TrashOwner& owner)
{
    const QString home = owner.homeTrash;
    if (owner.uid == ::getuid())
        QDir().mkpath(home);
    const auto homeStatus = statusAt(AT_FDCWD, local(home).constData(), StatDetail::identity);
    if (homeStatus && homeStatus->device == itemDevice) {
        if (const int error = ensureTrashFolder(home, owner.uid))
            return {std::nullopt, error};
        return {TrashFolder{home, {}}, 0};
    }

    const auto mount = mountHolding(readMountTable(), canonicalParent);
    if (!mount)
        return {std::nullopt, ENOENT};
    const QString top = mount->path;
    const QString uid = QString::number(owner.uid);
    const QString shared = withTrailingSlash(top) + QStringLiteral(".Trash");
    if (isUsableSharedTrash(shared)) {
        const QString own = shared + QLatin1Char('/') + uid;
        if (ensureTrashFolder(own, owner.uid) == 0)
            return {TrashFolder{own, top}, 0};
    }
    const QString own = withTrailingSlash(top) + QStringLiteral(".Trash-") + uid;
    if (const int error = ensureTrashFolder(own, owner.uid))
        return {std::nullopt, error};
    return {TrashFolder{own, top}, 0};
}

QList<TrashFolder> existingTrashFolders()
{
    QList<TrashFolder> folders;
    QSet<QString> seen;
    const auto add = [&](const QString& path, const QString& top) {
        if (!seen.contains(path) && isRealFolder(path) && isRealFolder(path + QStringLiteral("/files"))) {
            seen.insert(path);
            folders.append({path, top});
        }
    };
    add(homeTrashPath(), {});
    const QString uid = QString::number(::getuid());
    for (const MountPoint& mount : readMountTable()) {
        if (pseudoFileSystems().contains(mount.fileSystemType))
            continue;
        const QString top = withTrailingSlash(mount.path);
        if (isUsableSharedTrash(top + QStringLiteral(".Trash")))
            add(top + QStringLiteral(".Trash/") + uid, mount.path);
        add(top + QStringLiteral(".Trash-") + uid, mount.path);
    }
    return folders;
}

bool isInsideTrash(const QString& canonicalPath)
{
    static const QRegularExpression volumeTrash(QStringLiteral("/\\.Trash(-\\d+|/\\d+)(/|$)"));
    const QString home = homeTrashPath();
    return canonicalPath == home || canonicalPath.startsWith(home + QLatin1Char('/'))
        || volumeTrash.match(canonicalPath).hasMatch();
}

TrashMove moveIntoTrash(const QString& absolutePath, const TrashFolder& folder)
{
    const QString name = QFileInfo(absolutePath).fileName();
    const QByteArray info = trashInfoText(absolutePath, folder);
    for (int attempt = 0; attempt < maximumNameAttempts; ++attempt) {
        const QString candidate = candidateName(name, attempt);
        const QByteArray target = local(folder.filesPath() + QLatin1Char('/') + candidate);
        struct stat existing;
        if (::lstat(target.constData(), &existing) == 0)
            continue;

        // The record comes first: if Velloru stops between the two steps, the item is still in place and
        // the record has no item, which every Trash reader ignores.
        const QByteArray record
            = local(folder.infoPath() + QLatin1Char('/') + candidate + QStringLiteral(".trashinfo"));
        const int fd = ::open(record.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (fd < 0 && errno == EEXIST)
            continue;
        if (fd < 0)
            return {{}, errno};
        const int writeError = writeWhole(fd, info);
        ::close(fd);
        if (writeError) {
            ::unlink(record.constData());
            return {{}, writeError};
        }

        const int renameError = renameNoReplace(local(absolutePath), target);
        if (renameError == 0)
            return {QFile::decodeName(target), 0};
        ::unlink(record.constData());
        if (renameError != EEXIST)
            return {{}, renameError};
    }
    return {{}, EEXIST};
}

int restoreFromTrash(const QString& trashedPath, const QString& destination)
{
    if (const int error = renameNoReplace(local(trashedPath), local(destination)))
        return error;
    ::unlink(local(trashInfoPathFor(trashedPath)).constData());
    return 0;
}

QString trashInfoPathFor(const QString& trashedPath)
{
    const QFileInfo item(trashedPath);
    return QFileInfo(item.absolutePath()).absolutePath() + QStringLiteral("/info/") + item.fileName()
        + QStringLiteral(".trashinfo");
}
