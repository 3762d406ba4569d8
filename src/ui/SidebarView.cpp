#include "ui/SidebarView.h"

#include "app/SidebarCounts.h"
#include "ui/Icons.h"

#include <QPainter>
#include <QStyledItemDelegate>

namespace {

constexpr int destinationRole = Qt::UserRole + 1;
constexpr int badgeHiddenRole = Qt::UserRole + 2;

// Draws the row as usual, then the section's count in a rounded badge at the right edge.
class BadgeDelegate : public QStyledItemDelegate {
public:
    BadgeDelegate(const SidebarCounts& counts, QObject* parent)
        : QStyledItemDelegate(parent)
        , m_counts(counts)
    {
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::paint(painter, option, index);
        if (index.data(badgeHiddenRole).toBool())
            return;
        const auto count = m_counts.count(static_cast<Destination>(index.data(destinationRole).toInt()));
        if (!count)
            return;
        const QString text = QString::number(*count);
        const QFontMetrics metrics(option.font);
        const int width = std::max(metrics.horizontalAdvance(text) + 12, metrics.height() + 4);
        const QRect badge(option.rect.right() - width - 8, option.rect.center().y() - metrics.height() / 2 - 1, width,
            metrics.height() + 2);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(option.palette.color(QPalette::Mid));
        painter->drawRoundedRect(badge, badge.height() / 2.0, badge.height() / 2.0);
        painter->setPen(option.palette.color(QPalette::BrightText));
        painter->drawText(badge, Qt::AlignCenter, text);
        painter->restore();
    }

private:
    const SidebarCounts& m_counts;
};

} // namespace

SidebarView::SidebarView(const SidebarCounts& counts, QWidget* parent)
    : QListWidget(parent)
{
    setObjectName(QStringLiteral("sidebar"));
    setItemDelegate(new BadgeDelegate(counts, this));
    setIconSize(QSize(20, 20));
    setUniformItemSizes(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    // The section icons are dark drawings: on the usual saturated highlight they all but vanish, so the
    // selected row gets a light tint of it with ordinary text.
    QPalette tinted = palette();
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        tinted.setColor(
            group, QPalette::Highlight, palette().color(QPalette::Active, QPalette::Highlight).lighter(185));
        tinted.setColor(group, QPalette::HighlightedText, palette().color(QPalette::Active, QPalette::Text));
    }
    setPalette(tinted);
    for (const Destination destination : Destinations::all()) {
        auto* item = new QListWidgetItem(sectionIcon(destination), Destinations::title(destination), this);
        item->setData(destinationRole, static_cast<int>(destination));
        item->setSizeHint(QSize(0, 30));
    }
    connect(&counts, &SidebarCounts::changed, viewport(), qOverload<>(&QWidget::update));
    connect(this, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row >= 0)
            Q_EMIT destinationActivated(static_cast<Destination>(item(row)->data(destinationRole).toInt()));
    });
}

QListWidgetItem* SidebarView::itemFor(Destination destination) const
{
    return item(static_cast<int>(destination));
}

void SidebarView::hideBadge(Destination destination)
{
    itemFor(destination)->setData(badgeHiddenRole, true);
}

void SidebarView::setCurrentDestination(Destination destination)
{
    if (currentRow() != static_cast<int>(destination))
        setCurrentRow(static_cast<int>(destination));
}
