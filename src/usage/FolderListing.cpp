#include "usage/FolderListing.h"

#include <memory>

#include <fcntl.h>

std::optional<FolderListing> FolderListing::open(const std::string& path, std::span<std::byte> buffer)
{
    std::optional<DirectoryReader> reader = DirectoryReader::open(AT_FDCWD, path.c_str(), buffer);
    if (!reader)
        return std::nullopt;
    const std::optional<FileStatus> folder = statusAt(reader->fd(), "", StatDetail::identity);
    if (!folder)
        return std::nullopt;
    return FolderListing(std::move(*reader), *folder);
}

void FolderListing::visit(SubfolderDetail detail, const std::function<void(const Entry&)>& visit)
{
    Entry entry;
    DirectoryEntry item;
    while (m_reader.next(item)) {
        entry.name.assign(item.name);
        if (item.type == EntryType::directory && detail == SubfolderDetail::typeOnly) {
            entry.isDirectory = true;
            entry.isSymlink = false;
            entry.allocatedSize = 0;
            entry.device = m_folder.device;
            entry.fileID = item.inode;
            entry.linkCount = 0;
            visit(entry);
            continue;
        }
        // The name lies in the listing buffer right before its terminating NUL, so statx can use it in place.
        const std::optional<FileStatus> status = statusAt(m_reader.fd(), item.name.data(), StatDetail::identity);
        if (!status)
            continue;
        entry.isDirectory = status->isDirectory();
        entry.isSymlink = status->isSymlink();
        entry.allocatedSize = status->allocatedSize;
        entry.device = status->device;
        entry.fileID = status->inode;
        entry.linkCount = status->linkCount;
        visit(entry);
    }
}

std::vector<Entry> listFolder(const std::string& path)
{
    const auto buffer = std::make_unique<std::byte[]>(directoryBufferSize);
    std::vector<Entry> entries;
    if (std::optional<FolderListing> listing = FolderListing::open(path, std::span(buffer.get(), directoryBufferSize)))
        listing->visit(SubfolderDetail::full, [&](const Entry& entry) { entries.push_back(entry); });
    return entries;
}
