#include "scan/TreeSize.h"

#include "common/ByteCount.h"
#include "platform/DirectoryReader.h"
#include "platform/FileStatus.h"
#include "scan/ScanPulse.h"

#include <QFile>

#include <fcntl.h>

#include <string>
#include <vector>

namespace {

// Measures the folder `name` inside the open folder `parentFd`. One buffer serves every level: a folder is
// read to its end before its subfolders are opened.
void measureFolder(int parentFd, const char* name, std::span<std::byte> buffer, ScanPulse& pulse,
    const std::stop_token& stop, TreeSize& size)
{
    std::optional<DirectoryReader> reader = DirectoryReader::open(parentFd, name, buffer);
    if (!reader)
        return;
    pulse.recordFolder(QString::fromUtf8(name));
    std::vector<std::string> subfolders;
    qint64 files = 0;
    qint64 bytes = 0;
    DirectoryEntry entry;
    while (reader->next(entry)) {
        if (stop.stop_requested()) {
            size.stopped = true;
            break;
        }
        ++files;
        if (entry.type == EntryType::directory) {
            subfolders.emplace_back(entry.name);
            continue;
        }
        if (entry.type == EntryType::symlink)
            continue;
        const std::string entryName(entry.name);
        const std::optional<FileStatus> status = statusAt(reader->fd(), entryName.c_str(), StatDetail::identity);
        if (!status)
            continue;
        if (status->isDirectory())
            subfolders.push_back(entryName);
        else if (status->isRegular())
            bytes = checkedAdd(bytes, status->size);
    }
    size.bytes = checkedAdd(size.bytes, bytes);
    size.files += files;
    pulse.add(files, bytes);
    for (const std::string& subfolder : subfolders) {
        if (size.stopped)
            return;
        measureFolder(reader->fd(), subfolder.c_str(), buffer, pulse, stop, size);
    }
}

} // namespace

TreeSize measureTree(const QString& path, std::span<std::byte> buffer, ScanPulse& pulse, std::stop_token stop)
{
    TreeSize size;
    const QByteArray name = QFile::encodeName(path);
    const std::optional<FileStatus> status = statusAt(AT_FDCWD, name.constData(), StatDetail::identity);
    if (!status)
        return size;
    size.bytes = 0;
    size.files = 1;
    if (status->isRegular()) {
        size.bytes = status->size;
        pulse.add(1, size.bytes);
    } else if (status->isDirectory()) {
        measureFolder(AT_FDCWD, name.constData(), buffer, pulse, stop, size);
    }
    return size;
}
