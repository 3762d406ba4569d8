#pragma once

// The desktop window is built as a module of its own (velloru-window.so, beside the program) so that the
// headless commands never load Qt Gui and Widgets: those alone take about 28 MB before any work starts.

// The entry point the module exports.
inline constexpr const char* windowEntryPoint = "velloruRunWindow";
using WindowEntry = int (*)(int* argc, char** argv);

// Loads the module and runs the window until the user quits; returns the exit status (1, with a sentence
// on standard error, when there is no display or the module cannot be loaded).
int runWindowModule(int& argc, char** argv);
