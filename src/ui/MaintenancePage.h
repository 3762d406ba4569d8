#pragma once

#include "helper/Maintenance.h"

#include <QHash>
#include <QWidget>

#include <optional>

class AppState;
class OutcomeLine;
class ProgressRow;
class QGroupBox;
class QLabel;
class QPushButton;

// The Maintenance section: the helper prompt while the helper is not ready, one card per task with its
// live figure, its Run button, the progress of a run and its last result, and the Thunderbird card. One
// task runs at a time.
class MaintenancePage : public QWidget {
    Q_OBJECT

public:
    explicit MaintenancePage(AppState& state, QWidget* parent = nullptr);
    ~MaintenancePage() override;

    QPushButton* buttonFor(const QString& task) const { return m_cards.value(task).button; }
    OutcomeLine* resultFor(const QString& task) const { return m_cards.value(task).result; }
    ProgressRow* progressFor(const QString& task) const { return m_cards.value(task).progress; }
    QGroupBox* helperPrompt() const { return m_prompt; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    struct Card {
        QPushButton* button = nullptr;
        OutcomeLine* result = nullptr;
        ProgressRow* progress = nullptr;
        QLabel* meter = nullptr;
    };

    QWidget* makeCard(const MaintenanceTask& task);
    void showHelperState();
    void updateMeter();
    void press(const MaintenanceTask& task);

    AppState& m_state;
    QGroupBox* m_prompt = nullptr;
    QLabel* m_promptText = nullptr;
    QHash<QString, Card> m_cards;
    std::optional<QString> m_running; // the task under way; the other Run buttons wait for it
};
