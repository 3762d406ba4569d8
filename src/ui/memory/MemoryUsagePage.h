#pragma once

#include "processes/PriorityBand.h"
#include "processes/ProcessList.h"
#include "processes/ProcessSampler.h"

#include <QWidget>

class AppState;
class HelperInstaller;
class MemoryMonitorView;
class ProcessTreeModel;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QSettings;
class QSortFilterProxyModel;
class QStackedWidget;
class QToolButton;
class QTreeView;

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
    QLabel* detailLine() const { return m_detail; }

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
    void act(const QString& key, const QString& working, std::function<void(ProcessList::Done)> start);

    AppState& m_state;
    QSettings& m_defaults;
    ProcessSampler m_sampler;
    ProcessList m_processes;
    HelperInstaller* m_installer = nullptr;
    ProcessTreeModel* m_model = nullptr;
    QSortFilterProxyModel* m_sorted = nullptr;
    MemoryMonitorView* m_monitor = nullptr;
    QWidget* m_helperPrompt = nullptr;
    QLabel* m_helperPromptText = nullptr;
    QLineEdit* m_search = nullptr;
    QCheckBox* m_showSystem = nullptr;
    QComboBox* m_interval = nullptr;
    QStackedWidget* m_body = nullptr;
    QTreeView* m_table = nullptr;
    QLabel* m_empty = nullptr;
    QLabel* m_detail = nullptr;
    QPushButton* m_quit = nullptr;
    QPushButton* m_forceQuit = nullptr;
    QToolButton* m_priority = nullptr;
};
