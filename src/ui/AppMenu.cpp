#include "ui/AppMenu.h"

#include "app/AppMenuTexts.h"
#include "app/SettingsRouter.h"
#include "ui/MainWindow.h"
#include "ui/SettingsWindow.h"

#include <QApplication>
#include <QMenuBar>
#include <QMessageBox>

void installAppMenu(MainWindow& window, SettingsRouter& router)
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

    // The mount agent and the privileged helper are not part of Velloru yet, so there is nothing to
    // start or stop; the commands stay visible, switched off, with their help texts.
    QAction* start = menu->addAction(AppMenuTexts::startBackgroundServices());
    start->setToolTip(AppMenuTexts::startBackgroundServicesHelp());
    start->setStatusTip(AppMenuTexts::startBackgroundServicesHelp());
    start->setEnabled(false);
    QAction* stop = menu->addAction(AppMenuTexts::stopBackgroundServices());
    stop->setToolTip(AppMenuTexts::stopBackgroundServicesHelp());
    stop->setStatusTip(AppMenuTexts::stopBackgroundServicesHelp());
    stop->setEnabled(false);
    menu->addSeparator();

    QAction* quit = menu->addAction(AppMenuTexts::quit(), qApp, &QApplication::closeAllWindows);
    quit->setShortcut(QKeySequence::Quit);
}
