#pragma once

#include "app/Destination.h"

#include <QMap>
#include <QObject>

// The badge counts of the sidebar. A section with no entry shows no badge; 0 is a real count.
class SidebarCounts : public QObject {
    Q_OBJECT

public:
    using Counts = QMap<Destination, int>;

    const Counts& counts() const { return m_counts; }
    std::optional<int> count(Destination destination) const;
    void setCounts(Counts counts);

Q_SIGNALS:
    void changed();

private:
    Counts m_counts;
};
