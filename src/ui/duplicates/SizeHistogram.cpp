#include "ui/duplicates/SizeHistogram.h"

#include "common/ByteCount.h"

#include <QPainter>

#include <algorithm>

SizeHistogram::SizeHistogram(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("sizeHistogram"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void SizeHistogram::setCounts(const std::array<std::int32_t, 32>& counts, int firstBand)
{
    m_counts = counts;
    m_firstBand = std::clamp(firstBand, 0, 31);
    update();
}

QSize SizeHistogram::sizeHint() const
{
    return {400, 110};
}

QSize SizeHistogram::minimumSizeHint() const
{
    return {160, 110};
}

void SizeHistogram::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int labelHeight = fontMetrics().height() + 2;
    const QRectF area = QRectF(rect()).adjusted(0, 0, 0, -labelHeight);
    const int bands = 32 - m_firstBand;
    const double slot = area.width() / bands;
    const std::int32_t tallest = std::max(1, *std::max_element(m_counts.cbegin() + m_firstBand, m_counts.cend()));
    const QColor bar = palette().color(QPalette::Highlight);
    painter.setPen(Qt::NoPen);
    for (int band = m_firstBand; band < 32; ++band) {
        const double x = area.left() + (band - m_firstBand) * slot;
        const double height = m_counts[band] > 0 ? std::max(2.0, area.height() * m_counts[band] / tallest) : 0.0;
        painter.setBrush(bar);
        painter.drawRect(QRectF(x + 1, area.bottom() - height, std::max(1.0, slot - 2), height));
    }
    painter.setPen(palette().color(QPalette::WindowText));
    for (int band = m_firstBand; band < 32; band += 4) {
        const double x = area.left() + (band - m_firstBand) * slot;
        const QString label = formatBytes(qint64(1) << band);
        painter.drawText(QRectF(x, area.bottom() + 2, slot * 4, labelHeight), Qt::AlignLeft | Qt::AlignTop, label);
    }
}
