#pragma once

#include "ui/usage/UsageChart.h"

#include <QRectF>

// One stacked bar across the width, a segment per item in proportion to its share, largest first, with a
// legend of the items beneath it.
class RailChart : public UsageChart {
    Q_OBJECT

public:
    explicit RailChart(QWidget* parent = nullptr);

    int itemAt(QPointF point) const override;
    std::optional<QPointF> centreOf(int index) const override;

protected:
    void layoutItems() override;
    void paintEvent(QPaintEvent* event) override;

private:
    QList<QRectF> m_segments; // one per item, in item order; empty when too thin to draw
    QList<QRectF> m_legendRows;
};
