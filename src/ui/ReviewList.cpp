#include "ui/ReviewList.h"

#include "common/BackgroundTask.h"
#include "common/ByteCount.h"
#include "platform/FileManager.h"
#include "scan/ScanTexts.h"
#include "ui/Headings.h"
#include "ui/ReviewModel.h"
#include "ui/widgets/OutcomeLine.h"

#include <QClipboard>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QStackedWidget>
#include <QStyledItemDelegate>
#include <QTreeView>
#include <QVBoxLayout>

namespace {

QColor badgeColor(RiskLevel risk)
{
    switch (risk) {
    case RiskLevel::safe: return {};
    case RiskLevel::caution: return QColor(0xd9, 0x8a, 0x00);
    case RiskLevel::sensitive: return QColor(0xc6, 0x28, 0x28);
    case RiskLevel::unproven: return QColor(0x6a, 0x5a, 0xcd);
    }
    Q_UNREACHABLE();
}

// Paints the risk column as a coloured pill; safe items carry no badge.
class RiskBadgeDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const QString text = index.data(Qt::DisplayRole).toString();
        const QVariant risk = index.data(ReviewModel::riskRole);
        if (text.isEmpty() || !risk.isValid()) {
            QStyledItemDelegate::paint(painter, option, index);
            return;
        }
        const QFontMetrics metrics(option.font);
        const QRect pill(option.rect.left() + 4, option.rect.center().y() - metrics.height() / 2 - 1,
            metrics.horizontalAdvance(text) + 14, metrics.height() + 2);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(badgeColor(static_cast<RiskLevel>(risk.toInt())));
        painter->drawRoundedRect(pill, pill.height() / 2.0, pill.height() / 2.0);
        painter->setPen(Qt::white);
        painter->drawText(pill, Qt::AlignCenter, text);
        painter->restore();
    }
};

QWidget* makeEmptyPage(QWidget* parent)
{
    auto* page = new QWidget(parent);
    auto* layout = new QVBoxLayout(page);
    layout->addStretch();
    auto* title = makeHeading(ScanTexts::emptyTitle(), page);
    title->setObjectName(QStringLiteral("emptyTitle"));
    title->setAlignment(Qt::AlignCenter);
    layout->addWidget(title);
    auto* message = new QLabel(ScanTexts::emptyMessage(), page);
    message->setAlignment(Qt::AlignCenter);
    layout->addWidget(message);
    layout->addStretch();
    return page;
}

} // namespace

ReviewList::ReviewList(QWidget* parent)
    : QWidget(parent)
    , m_model(new ReviewModel(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_body = new QStackedWidget(this);

    auto* listPage = new QWidget(m_body);
    auto* listLayout = new QVBoxLayout(listPage);
    listLayout->setContentsMargins(0, 0, 0, 0);
    m_tree = new QTreeView(listPage);
    m_tree->setObjectName(QStringLiteral("reviewTree"));
    m_tree->setModel(m_model);
    m_tree->setItemDelegateForColumn(ReviewModel::Column::risk, new RiskBadgeDelegate(m_tree));
    m_tree->setUniformRowHeights(true);
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(ReviewModel::Column::name, QHeaderView::Stretch);
    m_tree->header()->setSectionResizeMode(ReviewModel::Column::detail, QHeaderView::Stretch);
    m_tree->setContextMenuPolicy(Qt::CustomContextMenu);
    listLayout->addWidget(m_tree, 1);
    m_actionOutcome = new OutcomeLine(QStringLiteral("reviewActionOutcome"), listPage);
    listLayout->addWidget(m_actionOutcome);
    m_total = new QLabel(listPage);
    m_total->setObjectName(QStringLiteral("tickedTotal"));
    m_total->setAlignment(Qt::AlignRight);
    listLayout->addWidget(m_total);
    m_body->addWidget(listPage);
    m_body->addWidget(makeEmptyPage(m_body));
    layout->addWidget(m_body);

    connect(m_tree, &QTreeView::customContextMenuRequested, this, &ReviewList::showItemMenu);
    connect(m_tree, &QTreeView::doubleClicked, this, [this](const QModelIndex& index) {
        if (const ScanItem* item = m_model->itemAt(index))
            reveal(*item);
    });
    connect(m_model, &ReviewModel::selectionChanged, this, [this] {
        updateTotal();
        Q_EMIT selectionChanged();
    });
}

void ReviewList::setResult(QList<ScanGroup> groups, ScanSelection selection)
{
    m_body->setCurrentIndex(groups.isEmpty() ? 1 : 0);
    m_model->setResult(std::move(groups), std::move(selection));
    m_tree->expandAll();
}

const ScanSelection& ReviewList::selection() const
{
    return m_model->selection();
}

QList<ScanItem> ReviewList::tickedItems() const
{
    return m_model->selection().tickedItems(m_model->groups());
}

bool ReviewList::isShowingEmptyResult() const
{
    return m_body->currentIndex() == 1;
}

void ReviewList::updateTotal()
{
    const qint64 ticked = m_model->selection().tickedSize(m_model->groups());
    m_total->setText(
        QStringLiteral("Selected: %1 of %2").arg(formatBytes(ticked), formatBytes(totalSize(m_model->groups()))));
}

void ReviewList::showItemMenu(const QPoint& position)
{
    const ScanItem* item = m_model->itemAt(m_tree->indexAt(position));
    if (!item)
        return;
    const ScanItem chosen = *item;
    QMenu menu(this);
    menu.addAction(QStringLiteral("Reveal in File Manager"), this, [this, chosen] { reveal(chosen); });
    menu.addAction(QStringLiteral("Copy Path"), this,
        [chosen] { QGuiApplication::clipboard()->setText(chosen.url.toLocalFile()); });
    menu.addSeparator();
    menu.addAction(
        QStringLiteral("Exclude from Smart Scan"), this, [this, chosen] { Q_EMIT excludeRequested(chosen); });
    menu.exec(m_tree->viewport()->mapToGlobal(position));
}

void ReviewList::reveal(const ScanItem& item)
{
    if (m_revealTask)
        return;
    m_actionOutcome->clear();
    m_revealTask = runInBackground(
        this, [folder = QFileInfo(item.url.toLocalFile()).absolutePath()] { return showInFileManager(folder); },
        [this](std::optional<QString> failure) {
            m_revealTask.reset();
            if (failure)
                m_actionOutcome->showFailure(*failure);
        });
}
