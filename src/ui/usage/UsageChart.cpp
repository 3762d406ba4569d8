#include "ui/usage/UsageChart.h"

#include <QMouseEvent>
#include <QPainter>

#include <array>

namespace {

// Hues far enough apart that neighbours never look alike.
constexpr std::array<int, 10> hues = {210, 28, 140, 350, 265, 48, 180, 310, 95, 5};

} // namespace

UsageChart::UsageChart(QWidget* parent)
    : QWidget(parent)
{
    setMouseTracking(true);
    setMinimumSize(240, 180);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void UsageChart::setItems(QList<UsageItem> items, qint64 total)
{
    // The selection follows its item by path, since a new item can arrive in front of it.
    const QString selectedPath = m_selected >= 0 && m_selected < m_items.size() ? m_items[m_selected].path : QString();
    m_items = std::move(items);
    m_total = total;
    m_hovered = -1;
    m_selected = -1;
    for (int i = 0; i < m_items.size() && !selectedPath.isEmpty(); ++i)
        if (m_items[i].path == selectedPath && m_items[i].kind != UsageItem::Kind::files)
            m_selected = i;
    layoutItems();
    update();
    Q_EMIT selectedChanged(m_selected);
}

void UsageChart::setSelectedIndex(int index)
{
    if (index == m_selected)
        return;
    m_selected = index;
    update();
    Q_EMIT selectedChanged(index);
}

QColor UsageChart::colorFor(int index) const
{
    if (index < 0 || index >= m_items.size())
        return palette().color(QPalette::Mid);
    if (m_items[index].kind == UsageItem::Kind::files)
        return QColor::fromHsl(0, 0, 165);
    const int hue = hues[std::size_t(index) % hues.size()];
    const int lightness = 120 + 25 * int((std::size_t(index) / hues.size()) % 3);
    return QColor::fromHsl(hue, 150, lightness);
}

void UsageChart::setEmptyText(const QString& text)
{
    if (text == m_emptyText)
        return;
    m_emptyText = text;
    update();
}

void UsageChart::paintEmpty(QPainter& painter) const
{
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(rect().adjusted(16, 16, -16, -16), Qt::AlignCenter | Qt::TextWordWrap, m_emptyText);
}

void UsageChart::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    layoutItems();
}

void UsageChart::mouseMoveEvent(QMouseEvent* event)
{
    setHovered(itemAt(event->position()));
}

void UsageChart::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        setSelectedIndex(itemAt(event->position()));
}

void UsageChart::mouseDoubleClickEvent(QMouseEvent* event)
{
    const int index = itemAt(event->position());
    if (event->button() == Qt::LeftButton && index >= 0)
        Q_EMIT activated(index);
}

void UsageChart::leaveEvent(QEvent* event)
{
    QWidget::leaveEvent(event);
    setHovered(-1);
}

void UsageChart::setHovered(int index)
{
    if (index == m_hovered)
        return;
    m_hovered = index;
    update();
    Q_EMIT hoveredChanged(index);
}
