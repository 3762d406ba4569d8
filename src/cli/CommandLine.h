#pragma once

// True when the arguments are not for the window: they name a command (a first argument that does not begin
// with a dash, or --help / --version), or hold something besides Qt's own window options, which is reported
// as a mistake in the command line.
bool isCommandLineInvocation(int argc, char** argv);

// Runs one headless command and returns its exit status: 0 on success, 1 when the work failed, 2 for a
// bad command line.
int runCommandLine(int argc, char** argv);
