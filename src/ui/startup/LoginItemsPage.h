#pragma once

#include "startup/StartupSwitch.h"

#include <QHash>
#include <QWidget>

class AppState;
class EmptyState;
class OutcomeLine;
class QLabel;
class QVBoxLayout;
class StartupRow;
class WrappedLabel;

// The Login Items section: what starts by itself at login, in three lists (apps that open at login, what
// runs in the background, leftovers of removed apps), each with its switch and Remove.
class LoginItemsPage : public QWidget {
    Q_OBJECT

public:
    explicit LoginItemsPage(AppState& state, QWidget* parent = nullptr);

    QList<StartupRow*> rows() const;
    OutcomeLine* pageOutcome() const { return m_pageOutcome; }

protected:
    void showEvent(QShowEvent* event) override;

private:
    void rebuild();
    void addSection(const QString& title, const QString& explanation, const QList<int>& indexes);
    void setEnabled(const QString& id, bool on);
    void remove(const QString& id);
    void showOutcome(const QString& id, const StartupOutcome& outcome, bool removal);

    AppState& m_state;
    QLabel* m_reading = nullptr;
    QWidget* m_incomplete = nullptr;
    EmptyState* m_empty = nullptr;
    OutcomeLine* m_pageOutcome = nullptr;
    QWidget* m_lists = nullptr;
    QVBoxLayout* m_listsLayout = nullptr;
    QHash<QString, StartupOutcome> m_lastOutcome; // by item id, shown again once the list is read anew
};
