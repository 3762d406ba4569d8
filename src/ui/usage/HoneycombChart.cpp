#include "ui/usage/HoneycombChart.h"

#include "common/ByteCount.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace {

constexpr qreal margin = 8;
constexpr qreal gap = 4;
constexpr qreal smallestRadius = 5; // smaller cells could not be seen or hovered
const qreal root3 = std::sqrt(3.0);

QPolygonF hexagon(QPointF centre, qreal radius)
{
    QPolygonF corners;
    for (int i = 0; i < 6; ++i) {
        const qreal angle = M_PI / 180.0 * (60.0 * i - 30.0); // pointy top
        corners << centre + QPointF(radius * std::cos(angle), radius * std::sin(angle));
    }
    return corners;
}

} // namespace

HoneycombChart::HoneycombChart(QWidget* parent)
    : UsageChart(parent)
{
    setObjectName(QStringLiteral("honeycombChart"));
}

bool HoneycombChart::place(qreal scale, QList<Cell>& cells) const
{
    cells.clear();
    const qreal width = this->width() - 2 * margin;
    const qreal height = this->height() - 2 * margin;
    // Rows are filled left to right, each centred; a row is as tall as its first, largest, cell.
    qreal rowTop = margin;
    qreal rowHeight = 0;
    qreal x = margin;
    int rowStart = 0;
    const auto centreRow = [&](int end) {
        const qreal used = x - margin - gap;
        const qreal shift = (width - used) / 2;
        for (int i = rowStart; i < end; ++i)
            cells[i].centre += QPointF(shift, 0);
    };
    for (const UsageItem& item : items()) {
        const qreal radius = std::max(smallestRadius, scale * std::sqrt(qreal(std::max<qint64>(item.bytes, 0))));
        const qreal cellWidth = root3 * radius;
        if (cellWidth > width)
            return false;
        if (x + cellWidth > margin + width + 0.5) {
            centreRow(int(cells.size()));
            rowTop += rowHeight + gap;
            rowHeight = 0;
            x = margin;
            rowStart = int(cells.size());
        }
        if (rowHeight == 0)
            rowHeight = 2 * radius;
        cells.append(Cell{QPointF(x + cellWidth / 2, rowTop + rowHeight / 2), radius});
        x += cellWidth + gap;
    }
    centreRow(int(cells.size()));
    const qreal used = rowTop + rowHeight - margin;
    if (used > height)
        return false;
    for (Cell& cell : cells)
        cell.centre += QPointF(0, (height - used) / 2);
    return true;
}

void HoneycombChart::layoutItems()
{
    m_cells.clear();
    qint64 largest = 0;
    for (const UsageItem& item : items())
        largest = std::max(largest, item.bytes);
    if (items().isEmpty() || largest <= 0 || width() < 4 * margin || height() < 4 * margin)
        return;
    // The largest scale at which every cell fits.
    qreal low = 0;
    qreal high = std::min(width(), height()) / std::sqrt(qreal(largest));
    QList<Cell> cells;
    for (int step = 0; step < 30; ++step) {
        const qreal middle = (low + high) / 2;
        if (place(middle, cells))
            low = middle;
        else
            high = middle;
    }
    place(low, m_cells);
}

int HoneycombChart::itemAt(QPointF point) const
{
    for (int i = 0; i < m_cells.size(); ++i)
        if (hexagon(m_cells[i].centre, m_cells[i].radius).containsPoint(point, Qt::OddEvenFill))
            return i;
    return -1;
}

std::optional<QPointF> HoneycombChart::centreOf(int index) const
{
    if (index < 0 || index >= m_cells.size())
        return std::nullopt;
    return m_cells[index].centre;
}

void HoneycombChart::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_cells.isEmpty()) {
        paintEmpty(painter);
        return;
    }
    const QColor text = palette().color(QPalette::Text);
    for (int i = 0; i < m_cells.size(); ++i) {
        const Cell& cell = m_cells[i];
        const UsageItem& item = items()[i];
        QColor fill = colorFor(i);
        if (i == hoveredIndex())
            fill = fill.lighter(115);
        painter.setBrush(fill);
        painter.setPen(i == selectedIndex() ? QPen(text, 3) : QPen(fill.darker(130), 1));
        painter.drawPolygon(hexagon(cell.centre, cell.radius));

        // A name fits only in a cell wide enough; the size goes under it when there is room.
        const qreal inner = root3 * cell.radius * 0.8;
        if (inner < 44)
            continue;
        const QFontMetricsF metrics(font());
        const QString name = metrics.elidedText(item.name, Qt::ElideRight, inner);
        const QString size = formatBytes(item.bytes);
        const bool twoLines = cell.radius > 1.6 * metrics.height() && metrics.horizontalAdvance(size) <= inner;
        painter.setPen(QColor::fromHsl(0, 0, fill.lightness() > 150 ? 20 : 250));
        const QRectF box(cell.centre.x() - inner / 2, cell.centre.y() - metrics.height() * (twoLines ? 1 : 0.5), inner,
            metrics.height() * (twoLines ? 2 : 1));
        painter.drawText(box, Qt::AlignCenter, twoLines ? name + QLatin1Char('\n') + size : name);
    }
}
