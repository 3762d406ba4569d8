#pragma once

#include <QWidget>

class QLabel;
class QPushButton;
class QStackedWidget;
class QTimer;
class ReviewList;
class SmartScanSession;

// The Smart Scan card of the dashboard: Scan, the live location while it runs, the review with its ticks,
// Clean, and what the removal achieved. The session holds the state; this widget only shows it.
class SmartScanPanel : public QWidget {
    Q_OBJECT

public:
    // How often the live location is sampled from the scan's pulse.
    static constexpr int pulseIntervalMs = 100;

    explicit SmartScanPanel(SmartScanSession& session, QWidget* parent = nullptr);

    QPushButton* scanButton() const { return m_scan; }
    QPushButton* cleanButton() const { return m_clean; }
    QPushButton* activityButton() const { return m_showActivity; }
    QLabel* progressLabel() const { return m_progress; }
    QLabel* summaryLabel() const { return m_summary; }
    QLabel* doneLabel() const { return m_done; }
    ReviewList* review() const { return m_review; }
    // After a clean the summary tells the user to empty the Trash; once it is empty that would be wrong.
    void setTrashEmpty(bool empty);

Q_SIGNALS:
    // The user asked to see the removals in the Activity section.
    void activityRequested();

private:
    void showPhase();
    void showPulse();
    void showSelection();

    SmartScanSession& m_session;
    QStackedWidget* m_pages = nullptr;
    QPushButton* m_scan = nullptr;
    QLabel* m_progress = nullptr;
    QTimer* m_pulseTimer = nullptr;
    ReviewList* m_review = nullptr;
    QLabel* m_summary = nullptr;
    QPushButton* m_clean = nullptr;
    QLabel* m_done = nullptr;
    QLabel* m_failures = nullptr;
    QPushButton* m_showActivity = nullptr;
    bool m_trashEmpty = false;
};
