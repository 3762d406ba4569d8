#pragma once

// Runs the desktop window until the user quits; returns the exit status.
int runDesktopApp(int& argc, char** argv);
