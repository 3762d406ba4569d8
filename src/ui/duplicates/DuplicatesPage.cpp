#include "ui/duplicates/DuplicatesPage.h"

#include "duplicates/DuplicateVaultController.h"
#include "duplicates/VaultTexts.h"
#include "ui/Headings.h"
#include "ui/duplicates/DuplicateProgressView.h"
#include "ui/duplicates/DuplicateResultsView.h"
#include "ui/duplicates/DuplicateSetupView.h"
#include "ui/duplicates/VaultPanel.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/ProgressRow.h"

#include <QPushButton>
#include <QStackedWidget>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

constexpr int progressSteps = 1000;

} // namespace

DuplicatesPage::DuplicatesPage(DuplicateVaultController& vault, QWidget* parent)
    : QWidget(parent)
    , m_vault(vault)
{
    setObjectName(QStringLiteral("page-duplicates"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(makeHeading(QStringLiteral("Duplicates"), this));

    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("duplicateTabs"));
    m_finder = new QStackedWidget(m_tabs);
    m_setup = new DuplicateSetupView(m_finder);
    m_setup->setRoots(DuplicateScan::defaultRoots());
    m_progress = new DuplicateProgressView(m_scan, m_finder);
    m_results = new DuplicateResultsView(m_scan, m_finder);
    m_finder->addWidget(m_setup);
    m_finder->addWidget(m_progress);
    m_finder->addWidget(m_results);
    m_vaultPanel = new VaultPanel(m_vault, m_tabs);
    m_tabs->addTab(m_finder, QStringLiteral("Find Duplicates"));
    m_tabs->addTab(m_vaultPanel, QString());
    layout->addWidget(m_tabs, 1);

    connect(m_setup, &DuplicateSetupView::scanRequested, this, &DuplicatesPage::startScan);
    connect(&m_scan, &DuplicateScan::phaseChanged, this, &DuplicatesPage::showPhase);
    connect(m_results, &DuplicateResultsView::moveRequested, this, &DuplicatesPage::moveTicked);
    connect(m_results, &DuplicateResultsView::changeFoldersRequested, this,
        [this] { m_finder->setCurrentWidget(m_setup); });
    connect(m_vaultPanel, &VaultPanel::findDuplicatesRequested, this, [this] {
        m_tabs->setCurrentWidget(m_finder);
        if (m_scan.phase() != DuplicateScan::Phase::scanning)
            m_finder->setCurrentWidget(m_setup);
    });
    connect(&m_vault, &DuplicateVaultController::finished, this, [this](DuplicateVaultController::Operation operation) {
        if (operation == DuplicateVaultController::Operation::move && m_scan.phase() == DuplicateScan::Phase::moving)
            moveFinished();
    });
    connect(&m_vault, &DuplicateVaultController::progressChanged, this, [this] {
        if (m_scan.phase() == DuplicateScan::Phase::moving)
            m_results->moveProgress()->setProgress(qint64(m_vault.verifyProgress() * progressSteps), progressSteps);
    });
    connect(&m_vault, &DuplicateVaultController::changed, this, &DuplicatesPage::showVaultCount);
    showVaultCount();
}

void DuplicatesPage::showVault()
{
    m_tabs->setCurrentWidget(m_vaultPanel);
}

void DuplicatesPage::startScan()
{
    m_scan.setRoots(m_setup->roots());
    m_scan.setMinimumSize(m_setup->minimumSize());
    m_results->moveOutcome()->clear();
    m_scan.start();
}

void DuplicatesPage::showPhase(DuplicateScan::Phase phase)
{
    switch (phase) {
    case DuplicateScan::Phase::scanning:
        m_progress->begin();
        m_finder->setCurrentWidget(m_progress);
        break;
    case DuplicateScan::Phase::idle: // cancelled
        m_progress->progressRow()->finish();
        m_finder->setCurrentWidget(m_setup);
        break;
    case DuplicateScan::Phase::results:
        m_progress->progressRow()->finish();
        m_results->showSets();
        m_finder->setCurrentWidget(m_results);
        break;
    case DuplicateScan::Phase::moving:
    case DuplicateScan::Phase::done: break;
    }
}

void DuplicatesPage::moveTicked()
{
    if (m_vault.isWorking()) {
        m_results->moveOutcome()->showNote(
            QStringLiteral("The vault is busy with another operation — try again once it has finished."));
        return;
    }
    m_scan.startMove();
    m_results->moveButton()->setEnabled(false);
    m_results->moveOutcome()->clear();
    m_results->moveProgress()->start(VaultTexts::moving());
    m_vault.moveTicked(m_scan.groups());
}

void DuplicatesPage::moveFinished()
{
    m_results->moveProgress()->finish();
    const VaultMoveResult result = m_vault.lastMove().value_or(VaultMoveResult{});
    m_scan.finishMove(result);
    m_results->showSets();
    const QString notice = m_vault.notice().value_or(QString());
    if (result.abortedBecause || !result.failed.isEmpty() || m_vault.saveProblem())
        m_results->moveOutcome()->showFailure(notice);
    else
        m_results->moveOutcome()->showSuccess(notice);
}

void DuplicatesPage::showVaultCount()
{
    const qsizetype held = m_vault.entries().size();
    m_tabs->setTabText(
        m_tabs->indexOf(m_vaultPanel), held == 0 ? QStringLiteral("Vault") : QStringLiteral("Vault (%1)").arg(held));
}
