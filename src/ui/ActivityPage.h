#pragma once

#include <QSet>
#include <QUuid>
#include <QWidget>

class AuditLog;
class TrashWatcher;
class QLabel;
class QPushButton;
class QStackedWidget;
class QTableView;
class ActivityTableModel;

// The Activity section: every entry of the log, newest first, the totals, and Clear.
class ActivityPage : public QWidget {
    Q_OBJECT

public:
    ActivityPage(AuditLog& log, TrashWatcher& trashWatcher, QWidget* parent = nullptr);

    QTableView* table() const { return m_table; }
    QPushButton* clearButton() const { return m_clear; }
    QPushButton* putBackButton() const { return m_putBack; }

private:
    void refresh();
    void confirmClear();
    void updatePutBack();
    void putBackSelected();

    AuditLog& m_log;
    ActivityTableModel* m_model = nullptr;
    QLabel* m_totals = nullptr;
    QPushButton* m_clear = nullptr;
    QPushButton* m_putBack = nullptr;
    QSet<QUuid> m_recoverable; // entries whose item is still in the Trash
    QStackedWidget* m_body = nullptr;
    QTableView* m_table = nullptr;
};
