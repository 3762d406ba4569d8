#pragma once

#include <QDialog>

class QSettings;
class QTabWidget;
class HelperManager;
class SettingsRouter;

// The settings window: Charts, Services and About, with the tab chosen by the router.
class SettingsWindow : public QDialog {
    Q_OBJECT

public:
    SettingsWindow(SettingsRouter& router, QSettings& defaults, HelperManager& helper, QWidget* parent = nullptr);

    QTabWidget* tabs() const { return m_tabs; }

private:
    QWidget* makeChartsTab(QSettings& defaults);
    QWidget* makeServicesTab(HelperManager& helper);
    QWidget* makeAboutTab();

    QTabWidget* m_tabs = nullptr;
};
