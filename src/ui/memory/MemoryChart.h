#pragma once

#include "processes/MemoryPressure.h"

#include <QWidget>

// The memory of the last few minutes: memory in use by programs, with cached files above it, against the
// total; the line of memory in use takes the colour of the pressure at each moment.
class MemoryChart : public QWidget {
    Q_OBJECT

public:
    explicit MemoryChart(QWidget* parent = nullptr);

    void setHistory(const MemoryHistory& history, qint64 total);

    QSize sizeHint() const override { return {320, 110}; }
    QSize minimumSizeHint() const override { return {160, 80}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QList<MemoryHistory::Point> m_points;
    qint64 m_total = 0;
};

// The colour that stands for a pressure level everywhere in the section.
QColor pressureColor(PressureLevel level);
