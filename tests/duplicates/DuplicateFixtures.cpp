#include "DuplicateFixtures.h"

#include "TestSupport.h"

#include <QDir>
#include <QFile>

#include <algorithm>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

QByteArray patternBytes(std::int64_t size, int seed)
{
    QByteArray bytes(qsizetype(size), Qt::Uninitialized);
    std::uint32_t state = 2166136261u ^ (std::uint32_t(seed) * 16777619u);
    for (std::int64_t i = 0; i < size; ++i) {
        state = state * 1664525u + 1013904223u;
        bytes[qsizetype(i)] = char(state >> 24);
    }
    return bytes;
}

Inventory inventoryOf(const QStringList& roots, std::uint64_t sizeFloor, bool sameDevice)
{
    InventoryOptions options;
    for (const QString& root : roots)
        options.roots.push_back(QFile::encodeName(root).toStdString());
    options.homePath = QFile::encodeName(QDir::homePath()).toStdString();
    options.sizeFloor = sizeFloor;
    options.sameDevice = sameDevice;
    return FileInventory::build(options, [] { return false; }, {});
}

QStringList recordedPaths(const Inventory& inventory)
{
    QStringList paths;
    for (const FileRecord& record : inventory.records)
        paths.append(QFile::decodeName(QByteArray::fromStdString(inventory.path(record))));
    paths.sort();
    return paths;
}

namespace {

} // namespace
