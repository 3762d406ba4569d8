#include "scan/ScanSelection.h"

#include "common/ByteCount.h"

void ScanSelection::setTicked(const QUuid& item, bool ticked)
{
    if (ticked)
        m_ticked.insert(item);
    else
        m_ticked.remove(item);
}

void ScanSelection::toggleGroup(const ScanGroup& group)
{
    const bool tick = tickState(group) != TickState::all;
    for (const ScanItem& item : group.items)
        setTicked(item.id, tick);
}

TickState ScanSelection::tickState(const ScanGroup& group) const
{
    qsizetype ticked = 0;
    for (const ScanItem& item : group.items)
        ticked += m_ticked.contains(item.id) ? 1 : 0;
    if (ticked == 0)
        return TickState::none;
    return ticked == group.items.size() ? TickState::all : TickState::some;
}

qint64 ScanSelection::tickedSize(const QList<ScanGroup>& groups) const
{
    qint64 sum = 0;
    for (const ScanGroup& group : groups)
        for (const ScanItem& item : group.items)
            if (m_ticked.contains(item.id))
                sum = checkedAdd(sum, item.size);
    return sum;
}

QList<ScanItem> ScanSelection::tickedItems(const QList<ScanGroup>& groups) const
{
    QList<ScanItem> items;
    for (const ScanGroup& group : groups)
        for (const ScanItem& item : group.items)
            if (m_ticked.contains(item.id))
                items.append(item);
    return items;
}
