#pragma once

#include <QWidget>

class QGridLayout;
class UsageChart;

// Names the honeycomb's cells: a colour swatch, the name and the size of each of the largest items, so that
// cells too small to carry their name can still be told apart without pointing at each.
class UsageLegend : public QWidget {
    Q_OBJECT

public:
    static constexpr int shownItems = 12;

    explicit UsageLegend(QWidget* parent = nullptr);

    // Lists the chart's items in its colours.
    void showItemsOf(const UsageChart& chart);
    int entryCount() const { return m_entries; }

private:
    QGridLayout* m_grid = nullptr;
    int m_entries = 0;
};
