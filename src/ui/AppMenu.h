#pragma once

class MainWindow;
class SettingsRouter;

// Adds the application menu to the window's menu bar.
void installAppMenu(MainWindow& window, SettingsRouter& router);
