#include "platform/TreeRemoval.h"

#include "platform/DirectoryReader.h"

#include <array>
#include <cerrno>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

// Deeper trees than this are left for another try rather than holding a descriptor per level without end.
constexpr int maximumDepth = 256;

struct Walk {
    TreeRemoval result;
    std::uint64_t device = 0;
    std::array<std::byte, 64 * 1024> buffer;

    void leave(int error)
    {
        ++result.leftBehind;
        if (result.firstError == 0)
            result.firstError = error;
    }

    // The names in the folder, read in full before anything is removed, since removing entries while the
    // listing is read can make it skip some.
    std::vector<std::string> names(const FolderHandle& folder)
    {
        std::vector<std::string> list;
        auto reader = DirectoryReader::open(folder.fd(), ".", buffer);
        if (!reader) {
            leave(errno);
            return list;
        }
        DirectoryEntry entry;
        while (reader->next(entry))
            list.emplace_back(entry.name);
        if (reader->error())
            leave(reader->error());
        return list;
    }

    void empty(const FolderHandle& folder, int depth)
    {
        for (const std::string& name : names(folder)) {
            const QByteArray child = QByteArray::fromStdString(name);
            const auto status = folder.childStatus(child);
            if (!status) {
                if (errno != ENOENT)
                    leave(errno);
                continue;
            }
            if (status->isDirectory()) {
                if (status->device != device || depth >= maximumDepth) {
                    leave(status->device != device ? EXDEV : ELOOP);
                    continue;
                }
                const auto inner = folder.openChild(child);
                if (!inner) {
                    leave(errno);
                    continue;
                }
                empty(*inner, depth + 1);
                if (::unlinkat(folder.fd(), child.constData(), AT_REMOVEDIR) != 0 && errno != ENOENT)
                    leave(errno);
                continue;
            }
            if (::unlinkat(folder.fd(), child.constData(), 0) == 0) {
                if (status->isRegular())
                    result.removedBytes += status->size;
            } else if (errno != ENOENT) {
                leave(errno);
            }
        }
    }
};

} // namespace

TreeRemoval removeContents(const FolderHandle& folder)
{
    const auto walk = std::make_unique<Walk>();
    const auto status = folder.status();
    if (!status) {
        walk->leave(errno);
        return walk->result;
    }
    walk->device = status->device;
    walk->empty(folder, 0);
    return walk->result;
}
