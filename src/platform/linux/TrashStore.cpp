#include "platform/TrashStore.h"

#include "common/LocalPath.h"
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

namespace {

// files/ and info/ of an opened Trash folder, made for the owner when missing.
TrashOpening openParts(const FolderHandle& trash, TrashFolder folder, unsigned owner)
{
    auto files = trash.openOwnedChild("files", owner);
    if (!files)
        return {std::nullopt, errno};
    auto info = trash.openOwnedChild("info", owner);
    if (!info)
        return {std::nullopt, errno};
    return {OpenTrash{std::move(folder), owner, std::move(*files), std::move(*info)}, 0};
}

// The owner's home Trash, when it is on `device`; nothing (and no error) when it is elsewhere.
std::optional<TrashOpening> openHomeTrash(const TrashOwner& owner, quint64 device)
{
    if (owner.uid == ::geteuid())
        QDir().mkpath(owner.homeTrash);
    const auto path = LocalPath::encode(owner.homeTrash);
    const auto home = path ? FolderHandle::open(*path) : std::nullopt;
    const auto status = home ? home->status() : std::nullopt;
    if (!status || status->device != device)
        return std::nullopt;
    if (status->uid != owner.uid)
        return TrashOpening{std::nullopt, EPERM};
    return openParts(*home, {owner.homeTrash, {}}, owner.uid);
}

} // namespace

TrashOpening openTrashFor(const QString& canonicalParent, quint64 itemDevice, const TrashOwner& owner)
{
    if (auto home = openHomeTrash(owner, itemDevice))
        return std::move(*home);

    const auto mount = mountHolding(readMountTable(), canonicalParent);
    const auto topPath = mount ? LocalPath::encode(mount->path) : std::nullopt;
    if (!topPath)
        return {std::nullopt, ENOENT};
    const auto top = FolderHandle::open(*topPath);
    if (!top)
        return {std::nullopt, errno};
    const auto topStatus = top->status();
    if (!topStatus || topStatus->device != itemDevice)
        return {std::nullopt, EXDEV};

    const QByteArray uid = QByteArray::number(owner.uid);
    const QString topText = mount->path;
    // The volume's shared ".Trash" is only trusted when it is a real folder with the sticky bit.
    const auto sharedStatus = top->childStatus(".Trash");
    if (sharedStatus && sharedStatus->isDirectory() && sharedStatus->isSticky()) {
        const auto shared = top->openChild(".Trash");
        const auto opened = shared ? shared->status() : std::nullopt;
        if (opened && opened->isSticky()) {
            if (const auto own = shared->openOwnedChild(uid, owner.uid)) {
                TrashOpening opening = openParts(*own,
                    {withTrailingSlash(topText) + QStringLiteral(".Trash/") + QString::fromLatin1(uid), topText},
                    owner.uid);
                if (opening.trash)
                    return opening;
            }
        }
    }
    const auto own = top->openOwnedChild(".Trash-" + uid, owner.uid);
    if (!own)
        return {std::nullopt, errno};
    return openParts(
        *own, {withTrailingSlash(topText) + QStringLiteral(".Trash-") + QString::fromLatin1(uid), topText}, owner.uid);
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

TrashMove moveIntoTrash(const FolderHandle& parent, const QByteArray& name, const QString& originalPath,
    const OpenTrash& trash, const OnNamed& onNamed)
{
    const QString nameText = QFileInfo(originalPath).fileName();
    const QByteArray record = trashInfoText(originalPath, trash.folder);
    for (int attempt = 0; attempt < maximumNameAttempts; ++attempt) {
        const QString candidate = candidateName(nameText, attempt);
        const auto target = LocalPath::encode(candidate);
        if (!target)
            return {{}, EILSEQ};
        if (trash.files.childStatus(*target))
            continue;

        const QString trashedPath = trash.folder.filesPath() + QLatin1Char('/') + candidate;
        if (onNamed)
            onNamed(trashedPath);
        // The record comes first: if Velloru stops between the two steps, the item is still in place.
        const int recordError = trash.info.createFile(*target + ".trashinfo", record, trash.owner);
        if (recordError == EEXIST)
            continue;
        if (recordError)
            return {{}, recordError};
        const int renameError = renameWithoutReplacing(parent, name, trash.files, *target);
        if (renameError == 0)
            return {trashedPath, 0};
        trash.info.removeFile(*target + ".trashinfo");
        if (renameError != EEXIST)
            return {{}, renameError};
    }
    return {{}, EEXIST};
}

bool removeUnfinishedRecord(const QString& trashedPath, const QString& originalPath)
{
    const QString recordPath = trashInfoPathFor(trashedPath);
    QFile record(recordPath);
    if (statusAt(AT_FDCWD, local(trashedPath).constData(), StatDetail::identity) || !record.open(QIODevice::ReadOnly))
        return false;
    QByteArray recorded;
    for (const QByteArray& line : record.readAll().split('\n'))
        if (line.startsWith("Path="))
            recorded = QByteArray::fromPercentEncoding(line.mid(5));
    const QByteArray original = local(originalPath);
    const bool same = recorded.startsWith('/') ? recorded == original : original.endsWith('/' + recorded);
    return same && record.remove();
}

int restoreFromTrash(const QString& trashedPath, const QString& destination)
{
    const QFileInfo from(trashedPath);
    const QFileInfo to(destination);
    const auto fromFolder = LocalPath::encode(from.absolutePath());
    const auto fromName = LocalPath::encode(from.fileName());
    const auto toFolder = LocalPath::encode(to.absolutePath());
    const auto toName = LocalPath::encode(to.fileName());
    if (!fromFolder || !fromName || !toFolder || !toName)
        return EILSEQ;
    const auto source = FolderHandle::open(*fromFolder);
    const auto target = source ? FolderHandle::open(*toFolder) : std::nullopt;
    if (!target)
        return errno;
    if (const int error = renameWithoutReplacing(*source, *fromName, *target, *toName))
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
