#include "ui/memory/MemoryChart.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>

QColor pressureColor(PressureLevel level)
{
    switch (level) {
    case PressureLevel::normal: return QColor(0x2e, 0x9d, 0x4f);
    case PressureLevel::elevated: return QColor(0xd9, 0x8a, 0x00);
    case PressureLevel::critical: return QColor(0xc0, 0x39, 0x2b);
    }
    return {};
}

MemoryChart::MemoryChart(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("memoryChart"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setToolTip(QStringLiteral("The last five minutes: memory in use (dark), cached files (light) and the total (the "
                              "top edge). The colour follows the pressure."));
}

void MemoryChart::setHistory(const MemoryHistory& history, qint64 total)
{
    m_points = history.points();
    m_total = total;
    update();
}

void MemoryChart::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = QRectF(rect()).adjusted(1, 1, -1, -1);
    painter.setPen(palette().color(QPalette::Mid));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRect(area);
    if (m_points.isEmpty() || m_total <= 0)
        return;

    // The chart spans what has been sampled, from a minute up to the whole history, so it is never a sliver.
    const double end = m_points.last().at;
    const double shown = std::clamp(end - m_points.first().at, 60.0, MemoryHistory::span);
    const double start = end - shown;
    const auto x = [&](double at) { return area.left() + (at - start) / shown * area.width(); };
    const auto y = [&](qint64 bytes) {
        return area.bottom() - std::clamp(double(bytes) / double(m_total), 0.0, 1.0) * area.height();
    };
    const auto band = [&](auto top, auto bottom) {
        QPainterPath path;
        path.moveTo(x(m_points.first().at), y(top(m_points.first())));
        for (const MemoryHistory::Point& point : m_points)
            path.lineTo(x(point.at), y(top(point)));
        for (auto it = m_points.crbegin(); it != m_points.crend(); ++it)
            path.lineTo(x(it->at), y(bottom(*it)));
        path.closeSubpath();
        return path;
    };
    const QColor now = pressureColor(m_points.last().level);
    QColor light = now;
    light.setAlpha(60);
    painter.setPen(Qt::NoPen);
    painter.setBrush(light);
    painter.drawPath(band([](const auto& p) { return p.used + p.cached; }, [](const auto& p) { return p.used; }));
    QColor dark = now;
    dark.setAlpha(150);
    painter.setBrush(dark);
    painter.drawPath(band([](const auto& p) { return p.used; }, [](const auto&) { return qint64(0); }));

    // The line of memory in use, coloured by the pressure of each stretch.
    for (qsizetype i = 1; i < m_points.size(); ++i) {
        painter.setPen(QPen(pressureColor(m_points[i].level), 2));
        painter.drawLine(
            QPointF(x(m_points[i - 1].at), y(m_points[i - 1].used)), QPointF(x(m_points[i].at), y(m_points[i].used)));
    }
    const int minutes = int(std::lround(shown / 60));
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(area.adjusted(6, 4, -6, -4), Qt::AlignTop | Qt::AlignLeft,
        minutes <= 1 ? QStringLiteral("Last minute") : QStringLiteral("Last %1 minutes").arg(minutes));
}
