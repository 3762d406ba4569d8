#pragma once

#include "app/Destination.h"

#include <QListWidget>

class SidebarCounts;

// The sixteen sections in order, each with its icon and, when counted, a badge.
class SidebarView : public QListWidget {
    Q_OBJECT

public:
    explicit SidebarView(const SidebarCounts& counts, QWidget* parent = nullptr);

    void setCurrentDestination(Destination destination);
    QListWidgetItem* itemFor(Destination destination) const;
    // Never draws a badge for this section, whatever it counts.
    void hideBadge(Destination destination);

Q_SIGNALS:
    void destinationActivated(Destination destination);
};
