#include "duplicates/VaultEntry.h"

#include "common/JsonText.h"
#include "removal/AuditEntry.h"

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
