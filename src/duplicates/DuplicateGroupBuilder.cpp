#include "duplicates/DuplicateGroupBuilder.h"

#include "duplicates/DuplicateRules.h"
#include "duplicates/FileInventory.h"

#include <QRandomGenerator>

#include <array>
#include <cstring>
#include <limits>

namespace {

// A random (version 4) id. The ids only tell one run's sets and files apart, so they come from Qt's seeded
// generator: newId() asks the system's entropy source for every id, which a scan with tens of
// thousands of copies notices.
QUuid newId()
{
    std::array<quint32, 4> words;
    QRandomGenerator::global()->fillRange(words.data(), qsizetype(words.size()));
    std::array<char, 16> bytes;
    std::memcpy(bytes.data(), words.data(), bytes.size());
    bytes[6] = char((bytes[6] & 0x0f) | 0x40); // version 4
    bytes[8] = char((bytes[8] & 0x3f) | 0x80); // the RFC 4122 variant
    return QUuid::fromRfc4122(QByteArrayView(bytes.data(), qsizetype(bytes.size())));
}

// Exact: the inventory left out every file and folder whose name isn't valid UTF-8, so the text names the
// very file that was compared, never another one whose name happens to decode alike.
QString decodedPath(const std::string& path)
{
    return QString::fromUtf8(path.data(), qsizetype(path.size()));
}

DuplicateFile presentedFile(const Inventory& inventory, std::uint32_t index)
{
    const FileRecord& record = inventory.records[index];
    DuplicateFile file;
    file.id = newId();
    file.path = decodedPath(inventory.path(record));
    file.size = std::int64_t(record.size);
    file.fileID = record.fileID;
    file.device = std::int32_t(record.device);
    file.linkCount
        = std::uint16_t(std::min<std::uint32_t>(record.linkCount, std::numeric_limits<std::uint16_t>::max()));
    file.flags = record.flags;
    file.mtimeNsec = record.mtimeNsec;
    file.createdSec = record.createdSec;
    // Aliases are keyed by the full device number, which the record keeps only in its low 32 bits; on
    // Linux every device number fits them.
    const auto aliases = inventory.hardlinkAliases.find(FileIdentity{record.device, record.fileID});
    if (aliases != inventory.hardlinkAliases.end())
        for (const std::string& name : aliases->second)
            file.otherNames.append(decodedPath(name));
    file.reclaimable = DuplicateRules::reclaimableBytes(file);
    return file;
}

} // namespace

QList<DuplicateGroup> presentDuplicateGroups(const Inventory& inventory, const std::vector<VerifiedGroup>& verified)
{
    QList<DuplicateGroup> groups;
    groups.reserve(qsizetype(verified.size()));
    for (const VerifiedGroup& proven : verified) {
        DuplicateGroup group;
        group.id = newId();
        group.size = std::int64_t(proven.size);
        group.contentHash = proven.hash;
        for (const std::uint32_t index : proven.members)
            group.members.append(presentedFile(inventory, index));
        groups.append(std::move(group));
    }
    return groups;
}

void chooseKeepersAndTicks(QList<DuplicateGroup>& groups, const UserFolders& folders)
{
    for (DuplicateGroup& group : groups) {
        group.keeperID = group.members[DuplicateRules::chooseKeeper(group.members, folders)].id;
        group.selected = DuplicateRules::defaultSelection(group, folders);
    }
    DuplicateRules::sortGroups(groups);
}
