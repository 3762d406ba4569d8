#pragma once

class AppState;
class MainWindow;
class SettingsRouter;

// Adds the application menu to the window's menu bar.
void installAppMenu(MainWindow& window, AppState& state, SettingsRouter& router);
