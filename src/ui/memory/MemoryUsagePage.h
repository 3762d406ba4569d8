#pragma once

#include "processes/PriorityBand.h"
#include "processes/ProcessList.h"
#include "processes/ProcessSampler.h"

#include <QWidget>

class AppState;
class EmptyState;
class MemoryMonitorView;
class OutcomeLine;
class ProcessTreeModel;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QMenu;
class QPushButton;
class QSettings;
class QSortFilterProxyModel;
class QStackedWidget;
class QToolButton;
class QTreeView;
class WrappedLabel;

// The Memory Usage section: the memory monitor on top, the process list below it, sortable and searchable,
// with Quit, Force Quit and the priority menu for the selected row. Samples are taken only while the section
// is shown.
class MemoryUsagePage : public QWidget {
    Q_OBJECT

public:
    MemoryUsagePage(AppState& state, QSettings& defaults, QWidget* parent = nullptr);
    ~MemoryUsagePage() override;

    ProcessSampler& sampler() { return m_sampler; }
    ProcessTreeModel& model() { return *m_model; }
    QSortFilterProxyModel& sortedModel() { return *m_sorted; }
    QTreeView* table() const { return m_table; }
    MemoryMonitorView* monitor() const { return m_monitor; }
    WrappedLabel* detailLine() const { return m_detail; }
    OutcomeLine* actionOutcome() const { return m_outcome; }
    EmptyState* emptyState() const { return m_empty; }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QWidget* makeToolbar();
    QWidget* makeActionRow();
    QMenu* makeActionMenu(QWidget* parent);
    void showSample();
    void showHelperPrompt();
    void showBody();
    void updateActions();
    void quitSelected(bool force);
    void prioritiseSelected(PriorityBand band);
    // Starts an action on the row `key`: `working` on the row meanwhile, then `done` (or why it failed) on the row
    // and under the buttons.
    void act(const QString& key, const QString& working, const QString& done, const QString& name,
        std::function<void(ProcessList::Done)> start);

    AppState& m_state;
    QSettings& m_defaults;
    ProcessSampler m_sampler;
    ProcessList m_processes;
    ProcessTreeModel* m_model = nullptr;
    QSortFilterProxyModel* m_sorted = nullptr;
    MemoryMonitorView* m_monitor = nullptr;
    QWidget* m_helperPrompt = nullptr;
    WrappedLabel* m_helperPromptText = nullptr;
    QLineEdit* m_search = nullptr;
    QCheckBox* m_showSystem = nullptr;
    QComboBox* m_interval = nullptr;
    QStackedWidget* m_body = nullptr;
    QTreeView* m_table = nullptr;
    EmptyState* m_empty = nullptr;
    QPushButton* m_clearSearch = nullptr;   // on the empty state, while a search finds nothing
    QPushButton* m_showSystemToo = nullptr; // on the empty state, while the system's processes are left out
    WrappedLabel* m_detail = nullptr;
    OutcomeLine* m_outcome = nullptr; // how the last action went, under its buttons
    QPushButton* m_quit = nullptr;
    QPushButton* m_forceQuit = nullptr;
    QToolButton* m_priority = nullptr;
};
