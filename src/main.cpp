#include "cli/CommandLine.h"
#include "ui/DesktopApp.h"

// With a subcommand Velloru runs headless; otherwise it opens the window (Qt's own options, such as
// "-platform offscreen", begin with a dash and go to the window).
int main(int argc, char** argv)
{
    if (isCommandLineInvocation(argc, argv))
        return runCommandLine(argc, argv);
    return runDesktopApp(argc, argv);
}
