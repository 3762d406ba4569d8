#include "ui/usage/RailChart.h"

#include "common/ByteCount.h"

#include <QPainter>
#include <QPainterPath>

namespace {

constexpr qreal margin = 8;
constexpr qreal railHeight = 44;
constexpr qreal swatch = 12;

} // namespace

RailChart::RailChart(QWidget* parent)
    : UsageChart(parent)
{
    setObjectName(QStringLiteral("railChart"));
}

void RailChart::layoutItems()
{
    m_segments.clear();
    m_legendRows.clear();
    if (items().isEmpty() || total() <= 0)
        return;
    const qreal width = this->width() - 2 * margin;
    qreal x = margin;
    for (const UsageItem& item : items()) {
        const qreal length = width * shareOf(item.bytes, total());
        m_segments.append(QRectF(x, margin, length, railHeight));
        x += length;
    }

    // The legend runs down in as many columns as the width allows.
    const qreal rowHeight = QFontMetricsF(font()).height() + 6;
    const qreal top = margin + railHeight + 16;
    const int rowsPerColumn = std::max(1, int((height() - top - margin) / rowHeight));
    const int columns
        = std::max(1, std::min(int(width / 260), int((items().size() + rowsPerColumn - 1) / rowsPerColumn)));
    const qreal columnWidth = width / columns;
    for (int i = 0; i < items().size(); ++i) {
        const int column = i / rowsPerColumn;
        if (column >= columns)
            break; // the rest is too small to list here; the bar still shows it
        m_legendRows.append(
            QRectF(margin + column * columnWidth, top + (i % rowsPerColumn) * rowHeight, columnWidth - 8, rowHeight));
    }
}

int RailChart::itemAt(QPointF point) const
{
    for (int i = 0; i < m_segments.size(); ++i)
        if (m_segments[i].width() >= 1 && m_segments[i].contains(point))
            return i;
    for (int i = 0; i < m_legendRows.size(); ++i)
        if (m_legendRows[i].contains(point))
            return i;
    return -1;
}

std::optional<QPointF> RailChart::centreOf(int index) const
{
    if (index < 0 || index >= m_legendRows.size())
        return std::nullopt;
    return m_legendRows[index].center();
}

void RailChart::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_segments.isEmpty()) {
        paintEmpty(painter);
        return;
    }
    const QColor text = palette().color(QPalette::Text);
    const QRectF rail(margin, margin, width() - 2 * margin, railHeight);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(QPalette::AlternateBase));
    painter.drawRoundedRect(rail, 6, 6);

    painter.save();
    QPainterPath clip;
    clip.addRoundedRect(rail, 6, 6);
    painter.setClipPath(clip);
    for (int i = 0; i < m_segments.size(); ++i) {
        QColor fill = colorFor(i);
        if (i == hoveredIndex())
            fill = fill.lighter(115);
        painter.fillRect(m_segments[i], fill);
        if (m_segments[i].width() > 3)
            painter.fillRect(QRectF(m_segments[i].right() - 1, margin, 1, railHeight), palette().color(QPalette::Base));
    }
    painter.restore();
    if (selectedIndex() >= 0 && selectedIndex() < m_segments.size()) {
        painter.setPen(QPen(text, 3));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(m_segments[selectedIndex()].adjusted(1.5, 1.5, -1.5, -1.5));
    }

    const QFontMetricsF metrics(font());
    for (int i = 0; i < m_legendRows.size(); ++i) {
        const QRectF row = m_legendRows[i];
        const UsageItem& item = items()[i];
        if (i == hoveredIndex() || i == selectedIndex()) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(palette().color(i == selectedIndex() ? QPalette::Highlight : QPalette::AlternateBase));
            painter.drawRoundedRect(row, 4, 4);
        }
        painter.setPen(Qt::NoPen);
        painter.setBrush(colorFor(i));
        painter.drawRoundedRect(QRectF(row.left() + 4, row.center().y() - swatch / 2, swatch, swatch), 3, 3);
        painter.setPen(palette().color(i == selectedIndex() ? QPalette::HighlightedText : QPalette::Text));
        const QString figures = QStringLiteral("%1  %2%")
                                    .arg(formatBytes(item.bytes))
                                    .arg(100.0 * shareOf(item.bytes, total()), 0, 'f', 1);
        const qreal figuresWidth = metrics.horizontalAdvance(figures);
        const QRectF nameBox(
            row.left() + swatch + 10, row.top(), row.width() - swatch - 18 - figuresWidth, row.height());
        painter.drawText(
            nameBox, Qt::AlignVCenter | Qt::AlignLeft, metrics.elidedText(item.name, Qt::ElideMiddle, nameBox.width()));
        painter.drawText(row.adjusted(0, 0, -6, 0), Qt::AlignVCenter | Qt::AlignRight, figures);
    }
}
