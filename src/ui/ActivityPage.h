#pragma once

#include "removal/AuditEntry.h"

#include <QWidget>

#include <memory>
#include <thread>

class AuditLog;
class ActivityTableModel;
class EmptyState;
class OutcomeLine;
class QLabel;
class QLineEdit;
class QPushButton;
class QSortFilterProxyModel;
class QStackedWidget;
class QTableView;
class TrashWatcher;

// The Activity section: every entry of the log, newest first, a search box, the totals, Put Back and
// Clear.
class ActivityPage : public QWidget {
    Q_OBJECT

public:
    ActivityPage(AuditLog& log, TrashWatcher& trashWatcher, QWidget* parent = nullptr);
    ~ActivityPage() override;

    QTableView* table() const { return m_table; }
    QLineEdit* searchBox() const { return m_search; }
    QPushButton* clearButton() const { return m_clear; }
    QPushButton* putBackButton() const { return m_putBack; }
    OutcomeLine* putBackOutcome() const { return m_putBackOutcome; }

Q_SIGNALS:
    // Which entries can still be put back has been looked up again.
    void recoverableShown();

private:
    void refresh();
    void lookUpRecoverable();
    void confirmClear();
    void updatePutBack();
    void putBackSelected();
    // The entry of the selected row, if a row is selected.
    std::optional<AuditEntry> selectedEntry() const;

    AuditLog& m_log;
    ActivityTableModel* m_model = nullptr;
    QSortFilterProxyModel* m_filter = nullptr;
    QLabel* m_totals = nullptr;
    QLineEdit* m_search = nullptr;
    QPushButton* m_clear = nullptr;
    QPushButton* m_putBack = nullptr;
    OutcomeLine* m_putBackOutcome = nullptr;
    QStackedWidget* m_body = nullptr;
    EmptyState* m_empty = nullptr;
    QTableView* m_table = nullptr;
    std::unique_ptr<std::jthread> m_lookup; // which entries are still in the Trash, being looked up
    bool m_lookUpAgain = false;
};
