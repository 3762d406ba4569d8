#include "ui/usage/UsageLegend.h"

#include "common/ByteCount.h"
#include "ui/usage/UsageChart.h"
#include "ui/widgets/WrappedLabel.h"

#include <QGridLayout>
#include <QPixmap>

namespace {

constexpr int columns = 3;

} // namespace

UsageLegend::UsageLegend(QWidget* parent)
    : QWidget(parent)
    , m_grid(new QGridLayout(this))
{
    setObjectName(QStringLiteral("usageLegend"));
    m_grid->setContentsMargins(0, 0, 0, 0);
    for (int column = 0; column < columns; ++column)
        m_grid->setColumnStretch(2 * column + 1, 1);
}

void UsageLegend::showItemsOf(const UsageChart& chart)
{
    while (QLayoutItem* item = m_grid->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    const int side = fontMetrics().height() - 4;
    m_entries = int(std::min<qsizetype>(chart.items().size(), shownItems));
    for (int i = 0; i < m_entries; ++i) {
        const UsageItem& item = chart.items()[i];
        QPixmap swatch(side, side);
        swatch.fill(chart.colorFor(i));
        auto* colour = new QLabel(this);
        colour->setPixmap(swatch);
        auto* name = new WrappedLabel(QStringLiteral("%1 — %2").arg(item.name, formatBytes(item.bytes)), this);
        name->setToolTip(item.path);
        m_grid->addWidget(colour, i / columns, 2 * (i % columns), Qt::AlignTop);
        m_grid->addWidget(name, i / columns, 2 * (i % columns) + 1);
    }
    setVisible(m_entries > 0);
}
