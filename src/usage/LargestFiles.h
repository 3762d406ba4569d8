#pragma once

#include <cstdint>
#include <string>
#include <vector>

// One file and the bytes it takes on disk.
struct SizedFile {
    std::string path;
    std::int64_t bytes = 0;
};

// The largest files seen, at most `capacity` of them. Each walker thread keeps its own and they are merged
// at the end, so no lock is taken per file; once the collection is full a file must beat the smallest kept
// to cost anything (its path is only built then).
class LargestFiles {
public:
    static constexpr std::size_t defaultCapacity = 100;

    explicit LargestFiles(std::size_t capacity = defaultCapacity)
        : m_capacity(capacity)
    {
    }

    // Whether a file of `bytes` would be kept.
    bool wouldKeep(std::int64_t bytes) const { return m_files.size() < m_capacity || bytes > m_files.front().bytes; }
    void offer(std::string path, std::int64_t bytes);
    void merge(const LargestFiles& other);
    // Largest first; equal sizes by path.
    std::vector<SizedFile> sorted() const;

private:
    std::size_t m_capacity;
    std::vector<SizedFile> m_files; // a min-heap on bytes: the smallest kept is at the front
};

// The files lying directly in `folder` (not in its subfolders), largest first, each with its allocated
// size. Empty when the folder cannot be listed. Reads the disk: call it off the main thread.
std::vector<SizedFile> filesIn(const std::string& folder);
