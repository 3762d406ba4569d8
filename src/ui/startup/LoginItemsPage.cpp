#include "ui/startup/LoginItemsPage.h"

#include "app/AppState.h"
#include "startup/StartupTexts.h"
#include "ui/Headings.h"
#include "ui/startup/StartupRow.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/WrappedLabel.h"

#include <QFrame>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>

LoginItemsPage::LoginItemsPage(AppState& state, QWidget* parent)
    : QWidget(parent)
    , m_state(state)
{
    setObjectName(QStringLiteral("page-loginItems"));
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    outer->addWidget(scroll);
    auto* content = new QWidget(scroll);
    scroll->setWidget(content);
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(24, 20, 24, 20);

    layout->addWidget(makeHeading(QStringLiteral("Login Items"), content));
    layout->addWidget(new WrappedLabel(StartupTexts::subtitle(), content));
    layout->addWidget(new WrappedLabel(StartupTexts::info(), QStringLiteral("startupInfo"), content));
    layout->addWidget(new WrappedLabel(StartupTexts::protectedNote(), content));

    m_incomplete = new QFrame(content);
    m_incomplete->setObjectName(QStringLiteral("startupIncomplete"));
    static_cast<QFrame*>(m_incomplete)->setFrameShape(QFrame::StyledPanel);
    auto* banner = new QVBoxLayout(m_incomplete);
    banner->addWidget(new WrappedLabel(QStringLiteral("<b>%1</b>").arg(StartupTexts::incompleteTitle()), m_incomplete));
    banner->addWidget(new WrappedLabel(StartupTexts::incompleteText(), m_incomplete));
    auto* readAgain = new QPushButton(StartupTexts::readAgain(), m_incomplete);
    banner->addWidget(readAgain, 0, Qt::AlignLeft);
    layout->addWidget(m_incomplete);
    m_incomplete->hide();

    m_pageOutcome = new OutcomeLine(QStringLiteral("startupPageOutcome"), content);
    layout->addWidget(m_pageOutcome);
    m_reading = new QLabel(StartupTexts::reading(), content);
    layout->addWidget(m_reading);
    m_empty = new EmptyState(style()->standardIcon(QStyle::SP_DialogApplyButton), StartupTexts::emptyTitle(),
        StartupTexts::emptyText(), content);
    layout->addWidget(m_empty);
    m_lists = new QWidget(content);
    m_listsLayout = new QVBoxLayout(m_lists);
    m_listsLayout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_lists);
    layout->addStretch(1);

    connect(readAgain, &QPushButton::clicked, &m_state.startup(), &StartupItems::scan);
    connect(&m_state.startup(), &StartupItems::changed, this, &LoginItemsPage::rebuild);
    rebuild();
}

void LoginItemsPage::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_state.startup().scan();
}

QList<StartupRow*> LoginItemsPage::rows() const
{
    return m_lists->findChildren<StartupRow*>();
}

void LoginItemsPage::rebuild()
{
    const StartupItems& startup = m_state.startup();
    m_reading->setVisible(!startup.hasScanned());
    m_incomplete->setVisible(startup.hasScanned() && !startup.isComplete());
    m_empty->setVisible(startup.hasScanned() && startup.items().isEmpty());
    for (QWidget* old : m_lists->findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
        old->deleteLater();
    QList<int> apps, background, leftovers;
    for (int i = 0; i < startup.items().size(); ++i) {
        const StartupItem& item = startup.items().at(i);
        (item.isLeftover() ? leftovers : item.opensApp() ? apps : background).append(i);
    }
    addSection(StartupTexts::appsSection(), StartupTexts::appsExplanation(), apps);
    addSection(StartupTexts::backgroundSection(), StartupTexts::backgroundExplanation(), background);
    addSection(StartupTexts::leftoverSection(), StartupTexts::leftoverExplanation(), leftovers);
}

void LoginItemsPage::addSection(const QString& title, const QString& explanation, const QList<int>& indexes)
{
    if (indexes.isEmpty())
        return;
    auto* section = new QWidget(m_lists);
    auto* layout = new QVBoxLayout(section);
    layout->setContentsMargins(0, 12, 0, 0);
    layout->addWidget(makeHeading(title, section, 1.15));
    layout->addWidget(new WrappedLabel(explanation, section));
    const bool busy = m_state.startup().isBusy();
    for (const int index : indexes) {
        const StartupItem& item = m_state.startup().items().at(index);
        auto* row = new StartupRow(item, m_state.helper(), m_state.helperService(), section);
        row->setBusy(busy);
        if (const auto last = m_lastOutcome.constFind(item.id); last != m_lastOutcome.cend())
            last->success ? row->outcome()->showSuccess(last->message) : row->outcome()->showFailure(last->message);
        connect(row, &StartupRow::switchRequested, this, &LoginItemsPage::setEnabled);
        connect(row, &StartupRow::removeRequested, this, &LoginItemsPage::remove);
        layout->addWidget(row);
    }
    m_listsLayout->addWidget(section);
}

void LoginItemsPage::setEnabled(const QString& id, bool on)
{
    for (StartupRow* row : rows())
        row->setBusy(true);
    m_state.startup().setEnabled(id, on, [this, id](StartupOutcome outcome) { showOutcome(id, outcome, false); });
}

void LoginItemsPage::remove(const QString& id)
{
    const std::optional<StartupItem> item = m_state.startup().item(id);
    if (!item)
        return;
    QMessageBox box(QMessageBox::Question, QStringLiteral("Remove"), StartupTexts::confirmRemove(item->name),
        QMessageBox::Cancel, this);
    QPushButton* move = box.addButton(QStringLiteral("Move to Trash"), QMessageBox::DestructiveRole);
    box.setDefaultButton(QMessageBox::Cancel);
    box.exec();
    if (box.clickedButton() != move)
        return;
    for (StartupRow* row : rows())
        row->setBusy(true);
    m_state.startup().remove(id, [this, id](StartupOutcome outcome) { showOutcome(id, outcome, true); });
}

void LoginItemsPage::showOutcome(const QString& id, const StartupOutcome& outcome, bool removal)
{
    m_lastOutcome.insert(id, outcome);
    // A removed item's row is gone once the list is read again, so a removal's outcome is said at the top too.
    if (removal)
        outcome.success ? m_pageOutcome->showSuccess(outcome.message) : m_pageOutcome->showFailure(outcome.message);
    for (StartupRow* row : rows()) {
        if (row->item().id != id)
            continue;
        outcome.success ? row->outcome()->showSuccess(outcome.message) : row->outcome()->showFailure(outcome.message);
    }
}
