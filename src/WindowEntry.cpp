#include "WindowModule.h"
#include "ui/DesktopApp.h"

// The one symbol velloru-window.so exports; everything else in it is hidden, so its copy of the core
// library never mixes with the program's.
extern "C" __attribute__((visibility("default"))) int velloruRunWindow(int* argc, char** argv)
{
    return runDesktopApp(*argc, argv);
}
