#pragma once

#include <QWidget>

class AuditLog;
class QLabel;
class QPushButton;
class QStackedWidget;
class QTableView;
class ActivityTableModel;

// The Activity section: every entry of the log, newest first, the totals, and Clear.
class ActivityPage : public QWidget {
    Q_OBJECT

public:
    explicit ActivityPage(AuditLog& log, QWidget* parent = nullptr);

    QTableView* table() const { return m_table; }
    QPushButton* clearButton() const { return m_clear; }

private:
    void refresh();
    void confirmClear();

    AuditLog& m_log;
    ActivityTableModel* m_model = nullptr;
    QLabel* m_totals = nullptr;
    QPushButton* m_clear = nullptr;
    QStackedWidget* m_body = nullptr;
    QTableView* m_table = nullptr;
};
