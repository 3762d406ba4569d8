#include "ui/DesktopApp.h"

#include "app/AppState.h"
#include "app/SettingsRouter.h"
#include "app/SplitViewStateRepair.h"
#include "app/UserDefaults.h"
#include "ui/MainWindow.h"

#include <QApplication>
#include <QSettings>

int runDesktopApp(int& argc, char** argv)
{
    QApplication app(argc, argv);
    setApplicationIdentity();
    QApplication::setDesktopFileName(QStringLiteral("velloru"));

    keepUnreadableSettingsAside();
    QSettings defaults;
    // Before any window restores its layout, so a saved state can never open the window collapsed.
    removePoisonedSplitViewState(defaults);

    AppState state;
    SettingsRouter router;
    MainWindow window(state, router, defaults);
    window.show();
    state.refreshCounts();
    return app.exec();
}
