#pragma once

#include "platform/DirectoryReader.h"
#include "platform/FileStatus.h"
#include "usage/Entry.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

// How much to learn about the subfolders of a listing. The walker opens every subfolder it measures
// anyway and learns its identity from the open descriptor then, so it saves a statx call per folder.
enum class SubfolderDetail { typeOnly, full };

// One open folder, read with one getdents64 call per buffer full; every item that is not a folder costs
// one statx call relative to the open folder, which is how allocated sizes and link counts are learnt.
class FolderListing {
public:
    // Nothing when the folder cannot be opened or examined.
    static std::optional<FolderListing> open(const std::string& path, std::span<std::byte> buffer);

    // The folder itself, as its open descriptor says: a mount point shows the volume mounted there.
    const FileStatus& folder() const { return m_folder; }

    // Calls `visit` for each item; the Entry passed is reused between calls, so listing costs no allocation
    // per item. An item that vanishes before it can be examined is skipped. With `typeOnly`, a subfolder's
    // entry carries the listing folder's device, the inode the listing reports and no allocated size.
    void visit(SubfolderDetail detail, const std::function<void(const Entry&)>& visit);
    // After visit(): whether the listing stopped at an error before its end.
    bool failed() const { return m_reader.error() != 0; }

private:
    FolderListing(DirectoryReader reader, const FileStatus& folder)
        : m_reader(std::move(reader))
        , m_folder(folder)
    {
    }

    DirectoryReader m_reader;
    FileStatus m_folder;
};

// The items of the folder at `path`, each examined in full; empty when it cannot be opened.
std::vector<Entry> listFolder(const std::string& path);
