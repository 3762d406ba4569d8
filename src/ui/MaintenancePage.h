#pragma once

#include "helper/Maintenance.h"

#include <QHash>
#include <QSet>
#include <QWidget>

#include <memory>
#include <thread>

class AppState;
class QGroupBox;
class QLabel;
class QPushButton;

// The Maintenance section: the live meter, the helper prompt while the helper is not ready, one card per
// task with its Run button and last result, and the Thunderbird card.
class MaintenancePage : public QWidget {
    Q_OBJECT

public:
    explicit MaintenancePage(AppState& state, QWidget* parent = nullptr);
    ~MaintenancePage() override;

    QPushButton* buttonFor(const QString& task) const { return m_cards.value(task).button; }
    QLabel* resultFor(const QString& task) const { return m_cards.value(task).result; }
    QGroupBox* helperPrompt() const { return m_prompt; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    struct Card {
        QPushButton* button = nullptr;
        QLabel* result = nullptr;
        QLabel* meter = nullptr;
    };

    QWidget* makeCard(const MaintenanceTask& task);
    void showHelperState();
    void updateMeter();
    void press(const MaintenanceTask& task);

    AppState& m_state;
    QLabel* m_meter = nullptr;
    QGroupBox* m_prompt = nullptr;
    QLabel* m_promptText = nullptr;
    QHash<QString, Card> m_cards;
    QSet<QString> m_running;                    // tasks whose button stays "Running…" whatever else changes
    std::unique_ptr<std::jthread> m_background; // installing the helper
};
