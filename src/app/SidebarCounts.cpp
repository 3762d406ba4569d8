#include "app/SidebarCounts.h"

std::optional<int> SidebarCounts::count(Destination destination) const
{
    const auto it = m_counts.constFind(destination);
    return it == m_counts.cend() ? std::nullopt : std::optional<int>(*it);
}

void SidebarCounts::setCounts(Counts counts)
{
    if (counts == m_counts)
        return;
    m_counts = std::move(counts);
    Q_EMIT changed();
}
