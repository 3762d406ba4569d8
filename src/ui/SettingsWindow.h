#pragma once

#include <QDialog>

class QSettings;
class QTabWidget;
class HelperManager;
class HelperService;
class SettingsRouter;

// The settings window: Charts, Services and About, with the tab chosen by the router.
class SettingsWindow : public QDialog {
    Q_OBJECT

public:
    SettingsWindow(SettingsRouter& router, QSettings& defaults, HelperManager& helper, HelperService& helperService,
        QWidget* parent = nullptr);

    QTabWidget* tabs() const { return m_tabs; }

Q_SIGNALS:
    // The disk-usage chart style was changed: the charts follow at once.
    void chartStyleChanged();

protected:
    // The helper's registration is read again each time the window opens.
    void showEvent(QShowEvent* event) override;

private:
    QWidget* makeChartsTab(QSettings& defaults);
    QWidget* makeServicesTab(HelperManager& helper);
    QWidget* makeAboutTab();

    HelperManager& m_helper;
    HelperService& m_helperService;
    QTabWidget* m_tabs = nullptr;
};
