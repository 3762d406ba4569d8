#include "ui/AppMenu.h"

#include "app/AppMenuTexts.h"
#include "app/AppState.h"
#include "app/SettingsRouter.h"
#include "ui/MainWindow.h"
#include "ui/SettingsWindow.h"

#include <QApplication>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>

void installAppMenu(MainWindow& window, AppState& state, SettingsRouter& router)
{
    QMenu* menu = window.menuBar()->addMenu(QStringLiteral("&Velloru"));
    menu->setObjectName(QStringLiteral("appMenu"));
    menu->setToolTipsVisible(true);

    const auto openSettings = [&window, &router](SettingsRouter::Tab tab) {
        router.select(tab);
        SettingsWindow* settings = window.settingsWindow();
        settings->show();
        settings->raise();
    };

    menu->addAction(AppMenuTexts::about(), &window, [openSettings] { openSettings(SettingsRouter::Tab::about); });
    menu->addAction(AppMenuTexts::checkForUpdates(), &window, [&window] {
        QMessageBox::information(
            &window, AppMenuTexts::checkForUpdates(), AppMenuTexts::updatesComeFromPackageManager());
    });
    menu->addSeparator();
    QAction* settings = menu->addAction(
        AppMenuTexts::settings(), &window, [openSettings] { openSettings(SettingsRouter::Tab::charts); });
    settings->setShortcut(QKeySequence::Preferences);
    menu->addSeparator();

    // The privileged helper is the background service Velloru has so far; the mount agent joins it when
    // it is built.
    QAction* start = menu->addAction(
        AppMenuTexts::startBackgroundServices(), &window, [&state] { state.startBackgroundServices(); });
    start->setObjectName(QStringLiteral("startBackgroundServices"));
    start->setToolTip(AppMenuTexts::startBackgroundServicesHelp());
    start->setStatusTip(AppMenuTexts::startBackgroundServicesHelp());
    QAction* stop = menu->addAction(AppMenuTexts::stopBackgroundServices(), &window, [&window, &state] {
        state.stopBackgroundServices([window = QPointer<MainWindow>(&window)](bool helperLeftBusy) {
            if (helperLeftBusy && window)
                QMessageBox::information(window, AppMenuTexts::helperStillBusy(), AppMenuTexts::helperStillBusyText());
        });
    });
    stop->setObjectName(QStringLiteral("stopBackgroundServices"));
    stop->setToolTip(AppMenuTexts::stopBackgroundServicesHelp());
    stop->setStatusTip(AppMenuTexts::stopBackgroundServicesHelp());
    // Only the command that would change something is offered.
    const auto showRunning = [&state, start, stop] {
        start->setEnabled(state.helper().backgroundStopped());
        stop->setEnabled(!state.helper().backgroundStopped());
    };
    QObject::connect(&state.helper(), &HelperManager::changed, start, showRunning);
    showRunning();
    menu->addSeparator();

    QAction* quit = menu->addAction(AppMenuTexts::quit(), qApp, &QApplication::closeAllWindows);
    quit->setShortcut(QKeySequence::Quit);
}
