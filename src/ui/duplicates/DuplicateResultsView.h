#pragma once

#include <QWidget>

class DuplicateScan;
class EmptyState;
class FilePreview;
class OutcomeLine;
class ProgressRow;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;
class WrappedLabel;

// The sets a scan found, the most space to gain first: each copy with its tick, the copy that stays marked,
// the reason any copy cannot go, a preview of the picked file, and Move to Vault for the ticked copies.
class DuplicateResultsView : public QWidget {
    Q_OBJECT

public:
    explicit DuplicateResultsView(DuplicateScan& scan, QWidget* parent = nullptr);

    // Lists the scan's sets again.
    void showSets();
    QTreeWidget* tree() const { return m_tree; }
    FilePreview* preview() const { return m_preview; }
    QPushButton* moveButton() const { return m_move; }
    ProgressRow* moveProgress() const { return m_moveProgress; }
    OutcomeLine* moveOutcome() const { return m_moveOutcome; }

Q_SIGNALS:
    void moveRequested();
    void changeFoldersRequested();

private:
    void addSet(int index);
    void itemChanged(QTreeWidgetItem* item, int column);
    void showTotals();

    DuplicateScan& m_scan;
    WrappedLabel* m_summary = nullptr;
    WrappedLabel* m_notScanned = nullptr;
    EmptyState* m_empty = nullptr;
    QWidget* m_lists = nullptr;
    QTreeWidget* m_tree = nullptr;
    FilePreview* m_preview = nullptr;
    QPushButton* m_move = nullptr;
    WrappedLabel* m_ticked = nullptr;
    ProgressRow* m_moveProgress = nullptr;
    OutcomeLine* m_moveOutcome = nullptr;
    bool m_filling = false;
};
