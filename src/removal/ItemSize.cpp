#include "removal/ItemSize.h"

#include "common/ByteCount.h"
#include "common/LocalPath.h"
#include "platform/DirectoryReader.h"
#include "platform/FileStatus.h"

#include <QDir>

#include <fcntl.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace {

// Measures the folder `name` inside the open folder `parentFd`. One buffer serves every level: a folder is
// read to its end before its subfolders are opened, each by its name relative to the open parent.
void measureFolder(int parentFd, const char* name, std::span<std::byte> buffer, const MeasureProgress& progress,
    const std::stop_token& stop, ItemSize& size)
{
    std::optional<DirectoryReader> reader = DirectoryReader::open(parentFd, name, buffer);
    if (!reader)
        return;
    std::vector<std::string> subfolders;
    qint64 entries = 0;
    qint64 bytes = 0;
    DirectoryEntry entry;
    while (reader->next(entry)) {
        if (stop.stop_requested()) {
            size.stopped = true;
            break;
        }
        ++entries;
        if (entry.type == EntryType::directory) {
            subfolders.emplace_back(entry.name);
            continue;
        }
        if (entry.type == EntryType::symlink)
            continue;
        // The name lies in the listing buffer right before its terminating NUL, so statx can use it in place.
        const std::optional<FileStatus> status = statusAt(reader->fd(), entry.name.data(), StatDetail::identity);
        if (!status)
            continue;
        if (status->isDirectory())
            subfolders.emplace_back(entry.name);
        else if (status->isRegular())
            bytes = checkedAdd(bytes, status->size);
    }
    size.bytes = checkedAdd(size.bytes, bytes);
    size.entries += entries;
    if (progress)
        progress(name, entries, bytes);
    for (const std::string& subfolder : subfolders) {
        if (size.stopped)
            return;
        measureFolder(reader->fd(), subfolder.c_str(), buffer, progress, stop, size);
    }
}

} // namespace

ItemSize measureItem(
    QByteArrayView path, std::span<std::byte> buffer, const MeasureProgress& progress, std::stop_token stop)
{
    ItemSize size;
    const std::string name(path.data(), std::size_t(path.size()));
    const std::optional<FileStatus> status = statusAt(AT_FDCWD, name.c_str(), StatDetail::identity);
    if (!status)
        return size;
    size.bytes = 0;
    size.entries = 1;
    if (status->isRegular()) {
        size.bytes = status->size;
        if (progress)
            progress({}, 1, size.bytes);
    } else if (status->isDirectory()) {
        std::unique_ptr<std::byte[]> ownBuffer;
        if (buffer.empty()) {
            ownBuffer = std::make_unique_for_overwrite<std::byte[]>(directoryBufferSize);
            buffer = {ownBuffer.get(), directoryBufferSize};
        }
        measureFolder(AT_FDCWD, name.c_str(), buffer, progress, stop, size);
    }
    return size;
}

qint64 measureItemSize(const QString& path)
{
    const std::optional<QByteArray> name = LocalPath::encode(path);
    if (!name)
        return 0; // no file can have this name
    return std::max<qint64>(measureItem(*name, {}).bytes, 0);
}

QString expandTilde(const QString& path)
{
    if (path == QLatin1String("~"))
        return QDir::homePath();
    if (path.startsWith(QLatin1String("~/")))
        return QDir::homePath() + path.mid(1);
    return path;
}
