#pragma once

#include "ui/usage/UsageChart.h"

#include <QPolygonF>

// Each item is one hexagonal cell whose area is its share of the folder, largest first, packed in rows
// like a honeycomb.
class HoneycombChart : public UsageChart {
    Q_OBJECT

public:
    explicit HoneycombChart(QWidget* parent = nullptr);

    int itemAt(QPointF point) const override;
    std::optional<QPointF> centreOf(int index) const override;

protected:
    void layoutItems() override;
    void paintEvent(QPaintEvent* event) override;

private:
    struct Cell {
        QPointF centre;
        qreal radius = 0; // centre to corner
    };
    // Row-by-row placement of cells whose radius is `scale` × √bytes; false when they do not fit.
    bool place(qreal scale, QList<Cell>& cells) const;

    QList<Cell> m_cells; // one per item, in item order
};
