#include "duplicates/VaultEntry.h"

#include "common/JsonText.h"
#include "removal/AuditEntry.h"

#include <QJsonValue>

QByteArray VaultEntry::toJson() const
{
    return JsonObjectWriter()
        .add(u"id", uuidText(id))
        .add(u"originalPath", originalPath)
        .add(u"vaultPath", vaultPath)
        .add(u"keeperPath", keeperPath)
        .add(u"size", qint64(size))
        .add(u"reclaimable", qint64(reclaimable))
        .add(u"contentHashHex", contentHashHex)
        .add(u"groupID", uuidText(groupID))
        .add(u"batchID", uuidText(batchID))
        .add(u"movedAt", movedAt)
        .add(u"fileID", qint64(fileID))
        .add(u"mtimeNsec", qint64(mtimeNsec))
        .add(u"volumeUUID", volumeUUID)
        .finish();
}

namespace {

// A whole number written as one (Qt keeps those exact to 64 bits); nothing for text, fractions and the like.
std::optional<qint64> wholeNumber(const QJsonValue& value)
{
    if (!value.isDouble())
        return std::nullopt;
    const qint64 number = value.toInteger(-1);
    if (number == -1 && value.toDouble() != -1)
        return std::nullopt;
    return number;
}

std::optional<QUuid> uuid(const QJsonValue& value)
{
    const QUuid id = QUuid::fromString(value.toString());
    return id.isNull() ? std::nullopt : std::optional(id);
}

} // namespace

std::optional<VaultEntry> VaultEntry::fromJson(const QJsonObject& object)
{
    VaultEntry entry;
    const auto id = uuid(object.value(u"id"));
    const auto groupID = uuid(object.value(u"groupID"));
    const auto batchID = uuid(object.value(u"batchID"));
    const auto size = wholeNumber(object.value(u"size"));
    const auto reclaimable = wholeNumber(object.value(u"reclaimable"));
    const auto fileID = wholeNumber(object.value(u"fileID"));
    const auto mtime = wholeNumber(object.value(u"mtimeNsec"));
    const QJsonValue movedAt = object.value(u"movedAt");
    const QJsonValue original = object.value(u"originalPath");
    const QJsonValue vault = object.value(u"vaultPath");
    const QJsonValue keeper = object.value(u"keeperPath");
    const QJsonValue hash = object.value(u"contentHashHex");
    const QJsonValue volume = object.value(u"volumeUUID");
    if (!id || !groupID || !batchID || !size || !reclaimable || !fileID || !mtime || !movedAt.isDouble()
        || !original.isString() || !vault.isString() || !keeper.isString() || !hash.isString() || !volume.isString()
        || *size < 0 || original.toString().isEmpty() || vault.toString().isEmpty())
        return std::nullopt;
    entry.id = *id;
    entry.originalPath = original.toString();
    entry.vaultPath = vault.toString();
    entry.keeperPath = keeper.toString();
    entry.size = *size;
    entry.reclaimable = *reclaimable;
    entry.contentHashHex = hash.toString();
    entry.groupID = *groupID;
    entry.batchID = *batchID;
    entry.movedAt = movedAt.toDouble();
    entry.fileID = std::uint64_t(*fileID);
    entry.mtimeNsec = *mtime;
    entry.volumeUUID = volume.toString();
    return entry;
}
