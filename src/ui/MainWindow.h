#pragma once

#include "app/Destination.h"
#include "app/StartupFlow.h"

#include <QMainWindow>
#include <QMap>

class AppState;
class QSettings;
class QSplitter;
class QStackedWidget;
class QTimer;
class SettingsRouter;
class SettingsWindow;
class SidebarView;

// The single window: the sidebar of sections and the detail pane, preceded on first launch by the welcome
// step.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    // The window's split layout is kept under this defaults key.
    static QString splitStateKey();

    MainWindow(AppState& state, SettingsRouter& router, QSettings& defaults, QWidget* parent = nullptr);
    ~MainWindow() override;

    SidebarView* sidebar() const { return m_sidebar; }
    QWidget* currentPage() const;
    QWidget* pageFor(Destination destination) const { return m_pages.value(destination); }
    StartupFlow& startupFlow() { return m_startup; }
    SettingsWindow* settingsWindow();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void buildSections();
    QWidget* makePage(Destination destination);
    void showSelection();
    void showStep(StartupFlow::Step step);
    void restoreSplitState();
    void saveSplitState();
    void startTour();

    AppState& m_state;
    SettingsRouter& m_router;
    QSettings& m_defaults;
    StartupFlow m_startup;
    QStackedWidget* m_steps = nullptr;
    QSplitter* m_splitter = nullptr;
    SidebarView* m_sidebar = nullptr;
    QStackedWidget* m_detail = nullptr;
    QMap<Destination, QWidget*> m_pages;
    SettingsWindow* m_settings = nullptr;
    QTimer* m_tour = nullptr;
    bool m_shownOnce = false;
};
