#include "usage/LargestFiles.h"

#include "usage/FolderListing.h"

#include <algorithm>
#include <memory>

namespace {

bool smallerFirst(const SizedFile& a, const SizedFile& b)
{
    return a.bytes > b.bytes; // inverted, so that the heap keeps the smallest at the front
}

bool largestFirst(const SizedFile& a, const SizedFile& b)
{
    return a.bytes != b.bytes ? a.bytes > b.bytes : a.path < b.path;
}

} // namespace

void LargestFiles::offer(std::string path, std::int64_t bytes)
{
    if (!wouldKeep(bytes))
        return;
    if (m_files.size() == m_capacity) {
        std::ranges::pop_heap(m_files, smallerFirst);
        m_files.pop_back();
    }
    m_files.push_back({std::move(path), bytes});
    std::ranges::push_heap(m_files, smallerFirst);
}

void LargestFiles::merge(const LargestFiles& other)
{
    for (const SizedFile& file : other.m_files)
        offer(file.path, file.bytes);
}

std::vector<SizedFile> LargestFiles::sorted() const
{
    std::vector<SizedFile> files = m_files;
    std::ranges::sort(files, largestFirst);
    return files;
}

std::vector<SizedFile> filesIn(const std::string& folder)
{
    std::vector<SizedFile> files;
    for (const Entry& entry : listFolder(folder))
        if (!entry.isDirectory)
            files.push_back({folder == "/" ? "/" + entry.name : folder + "/" + entry.name, entry.allocatedSize});
    std::ranges::sort(files, largestFirst);
    return files;
}
