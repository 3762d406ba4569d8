#pragma once

#include <QWidget>

class DuplicateVaultController;
class EmptyState;
class OutcomeLine;
class ProgressRow;
class QPushButton;
class QTreeWidget;
class WrappedLabel;

// The duplicates vault as the user sees it: the copies held, batch by batch, each with the result of the
// last check; Verify, Put Back, Put Everything Back and Empty to Trash, with the progress of the running
// operation and what the last one did.
class VaultPanel : public QWidget {
    Q_OBJECT

public:
    explicit VaultPanel(DuplicateVaultController& vault, QWidget* parent = nullptr);

    QTreeWidget* tree() const { return m_tree; }
    QPushButton* verifyButton() const { return m_verify; }
    QPushButton* putBackButton() const { return m_putBack; }
    QPushButton* putAllBackButton() const { return m_putAllBack; }
    QPushButton* emptyButton() const { return m_empty; }
    ProgressRow* progressRow() const { return m_progress; }
    OutcomeLine* notice() const { return m_notice; }
    OutcomeLine* verdict() const { return m_verdict; }

Q_SIGNALS:
    void findDuplicatesRequested();

private:
    void showEntries();
    void showWork();
    void confirmEmpty();
    void putBackSelected();

    DuplicateVaultController& m_vault;
    EmptyState* m_emptyState = nullptr;
    QWidget* m_content = nullptr;
    WrappedLabel* m_summary = nullptr;
    QTreeWidget* m_tree = nullptr;
    QPushButton* m_verify = nullptr;
    QPushButton* m_putBack = nullptr;
    QPushButton* m_putAllBack = nullptr;
    QPushButton* m_empty = nullptr;
    ProgressRow* m_progress = nullptr;
    OutcomeLine* m_verdict = nullptr;
    OutcomeLine* m_notice = nullptr;
};
