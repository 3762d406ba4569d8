#pragma once

#include "duplicates/DuplicateScan.h"

#include <QWidget>

class DuplicateProgressView;
class DuplicateResultsView;
class DuplicateSetupView;
class DuplicateVaultController;
class QStackedWidget;
class QTabWidget;
class VaultPanel;

// The Duplicates section: choose where to look, watch the scan, review the sets and move the ticked copies
// into the vault; and the vault itself, to check, put back or empty what it holds. The page owns its scan,
// so a scan goes on while another section is shown.
class DuplicatesPage : public QWidget {
    Q_OBJECT

public:
    explicit DuplicatesPage(DuplicateVaultController& vault, QWidget* parent = nullptr);

    DuplicateScan& scan() { return m_scan; }
    DuplicateSetupView* setupView() const { return m_setup; }
    DuplicateProgressView* progressView() const { return m_progress; }
    DuplicateResultsView* resultsView() const { return m_results; }
    VaultPanel* vaultPanel() const { return m_vaultPanel; }
    QTabWidget* tabs() const { return m_tabs; }
    void showVault();

private:
    void startScan();
    void showPhase(DuplicateScan::Phase phase);
    void moveTicked();
    void moveFinished();
    void showVaultCount();

    DuplicateVaultController& m_vault;
    DuplicateScan m_scan;
    QTabWidget* m_tabs = nullptr;
    QStackedWidget* m_finder = nullptr;
    DuplicateSetupView* m_setup = nullptr;
    DuplicateProgressView* m_progress = nullptr;
    DuplicateResultsView* m_results = nullptr;
    VaultPanel* m_vaultPanel = nullptr;
};
