#pragma once

#include <QWidget>

class DuplicateScan;
class PathLabel;
class ProgressRow;
class QGridLayout;
class QLabel;
class QListWidget;
class QProgressBar;
class SizeHistogram;

// A running duplicate scan as it goes: the stage, a bar for the stage and one for the whole scan with
// Cancel, the counters, the rates, the size histogram and the sets as they are confirmed. Reads the
// scan's telemetry each time its ticker publishes it.
class DuplicateProgressView : public QWidget {
    Q_OBJECT

public:
    explicit DuplicateProgressView(DuplicateScan& scan, QWidget* parent = nullptr);

    // Starts the clock of a new scan.
    void begin();
    ProgressRow* progressRow() const { return m_overall; }
    // The value shown under a counter's caption ("SAME-SIZE CANDIDATES").
    QString counterValue(const QString& caption) const;

private:
    void showTelemetry();
    QLabel* addCounter(QGridLayout* grid, int index, const QString& caption);

    DuplicateScan& m_scan;
    QLabel* m_stage = nullptr;
    ProgressRow* m_overall = nullptr;
    QProgressBar* m_stageBar = nullptr;
    PathLabel* m_path = nullptr;
    QLabel* m_files = nullptr;
    QLabel* m_folders = nullptr;
    QLabel* m_candidates = nullptr;
    QLabel* m_cache = nullptr;
    QLabel* m_cloud = nullptr;
    QLabel* m_read = nullptr;
    QLabel* m_sets = nullptr;
    QLabel* m_reclaimable = nullptr;
    QLabel* m_rates = nullptr;
    SizeHistogram* m_histogram = nullptr;
    QListWidget* m_discoveries = nullptr;
    std::int64_t m_lastDiscovery = -1;
};
