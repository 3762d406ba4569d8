#include "ui/widgets/HelperSetupButton.h"

#include "helper/HelperManager.h"
#include "ui/widgets/OutcomeLine.h"

#include <QPushButton>
#include <QVBoxLayout>

HelperSetupButton::HelperSetupButton(HelperManager& helper, HelperService& service, QWidget* parent)
    : QWidget(parent)
    , m_helper(helper)
    , m_service(service)
{
    setObjectName(QStringLiteral("helperSetup"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_button = new QPushButton(this);
    m_button->setObjectName(QStringLiteral("helperSetUpButton"));
    layout->addWidget(m_button, 0, Qt::AlignLeft);
    m_outcome = new OutcomeLine(QStringLiteral("helperSetUpOutcome"), this);
    layout->addWidget(m_outcome);

    connect(m_button, &QPushButton::clicked, this, [this] { m_helper.installInBackground(m_service); });
    connect(&m_helper, &HelperManager::changed, this, &HelperSetupButton::showState);
    showState();
}

void HelperSetupButton::setNeeded(bool needed)
{
    if (needed == m_needed)
        return;
    m_needed = needed;
    showState();
}

void HelperSetupButton::showState()
{
    const HelperManager::State state = m_helper.state();
    setVisible(m_needed && state != HelperManager::State::ready);
    if (m_helper.isInstalling()) {
        m_button->setText(QStringLiteral("Installing…"));
        m_button->setEnabled(false);
        m_outcome->showNote(QStringLiteral("Waiting for an administrator to approve the helper…"));
        return;
    }
    m_button->setEnabled(!m_helper.isRefreshing());
    m_button->setText(
        state == HelperManager::State::needsApproval ? QStringLiteral("Approve") : QStringLiteral("Set Up"));
    if (state == HelperManager::State::failed)
        m_outcome->showFailure(m_helper.failureMessage());
    else
        m_outcome->clear();
}
