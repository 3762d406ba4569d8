#include "removal/TrashResultJson.h"

#include "common/JsonText.h"

QByteArray trashResultJson(const TrashResult& result)
{
    QList<QByteArray> moved;
    for (const TrashItem& item : result.succeeded)
        moved.append(JsonObjectWriter()
                         .add(u"path", item.path)
                         .add(u"size", item.size)
                         .add(u"trashPath", result.trashedURLs.value(item.path))
                         .finish());
    QList<QByteArray> failed;
    for (const TrashFailure& failure : result.failed)
        failed.append(JsonObjectWriter().add(u"path", failure.path).add(u"reason", failure.reason).finish());
    return JsonObjectWriter()
        .add(u"freed", result.freed)
        .addRaw(u"moved", jsonArray(moved).trimmed())
        .addRaw(u"failed", jsonArray(failed).trimmed())
        .finish();
}
