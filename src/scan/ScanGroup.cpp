#include "scan/ScanGroup.h"

#include "common/ByteCount.h"

ScanGroup ScanGroup::make(QString title, QString systemImage, QList<ScanItem> items)
{
    return {QUuid::createUuid(), std::move(title), std::move(systemImage), std::move(items)};
}

qint64 ScanGroup::size() const
{
    qint64 sum = 0;
    for (const ScanItem& item : items)
        sum = checkedAdd(sum, item.size);
    return sum;
}

qint64 totalSize(const QList<ScanGroup>& groups)
{
    qint64 sum = 0;
    for (const ScanGroup& group : groups)
        sum = checkedAdd(sum, group.size());
    return sum;
}
