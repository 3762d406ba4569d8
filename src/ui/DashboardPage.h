#pragma once

#include "removal/TrashLocations.h"

#include <QWidget>

#include <memory>
#include <thread>

class AppState;
class HelperSetupButton;
class OutcomeLine;
class QLabel;
class QPushButton;
class QTimer;
class SmartScanPanel;
struct SystemOverview;

// The dashboard: Smart Scan, the space cleaned so far and what the Trash holds.
class DashboardPage : public QWidget {
    Q_OBJECT

public:
    explicit DashboardPage(AppState& state, QWidget* parent = nullptr);
    ~DashboardPage() override;

    QLabel* trashSummaryLabel() const { return m_trashSummary; }
    QLabel* trashWarningLabel() const { return m_trashWarning; }
    QPushButton* emptyTrashButton() const { return m_emptyTrash; }
    // Why Empty Trash is unavailable, or how emptying went, beside the button.
    OutcomeLine* emptyTrashOutcome() const { return m_emptyOutcome; }
    QLabel* overviewLabel() const { return m_overview; }
    SmartScanPanel* smartScan() const { return m_smartScan; }

Q_SIGNALS:
    void trashSummaryShown();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void showTotals();
    void refreshTrash();
    void showTrash(const TrashLocations::Summary& summary);
    void confirmEmptyTrash();
    void refreshOverview();
    void showOverview(const SystemOverview& overview);

    AppState& m_state;
    SmartScanPanel* m_smartScan = nullptr;
    QLabel* m_totals = nullptr;
    QLabel* m_trashSummary = nullptr;
    QLabel* m_trashWarning = nullptr;
    QPushButton* m_emptyTrash = nullptr;
    OutcomeLine* m_emptyOutcome = nullptr;
    HelperSetupButton* m_trashSetUp = nullptr;
    QLabel* m_overview = nullptr;
    QTimer* m_overviewTicker = nullptr;
    std::unique_ptr<std::jthread> m_overviewTask;
    bool m_emptying = false;
    std::unique_ptr<std::jthread> m_trashTask; // the Trash summary being measured, if any
    bool m_trashChangedMeanwhile = false;
    TrashLocations::Summary m_lastSummary;
};
