#pragma once

#include "scan/ScanGroup.h"

#include <QSet>

// How a group's check box looks: every item ticked, some ticked, or none.
enum class TickState { none, some, all };

// The set of ticked items of one scan session. The selection is kept apart from the items so that the
// scan's result stays a plain value.
class ScanSelection {
public:
    ScanSelection() = default;
    explicit ScanSelection(QSet<QUuid> ticked)
        : m_ticked(std::move(ticked))
    {
    }

    bool isTicked(const QUuid& item) const { return m_ticked.contains(item); }
    void setTicked(const QUuid& item, bool ticked);
    // A group box that is full empties the group; otherwise it ticks every item of it.
    void toggleGroup(const ScanGroup& group);

    TickState tickState(const ScanGroup& group) const;
    qint64 tickedSize(const QList<ScanGroup>& groups) const;
    QList<ScanItem> tickedItems(const QList<ScanGroup>& groups) const;
    const QSet<QUuid>& ids() const { return m_ticked; }

private:
    QSet<QUuid> m_ticked;
};
