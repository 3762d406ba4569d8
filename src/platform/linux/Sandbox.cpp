#include "platform/Sandbox.h"

#include <unistd.h>

bool runningSandboxed()
{
    return ::access("/.flatpak-info", F_OK) == 0;
}
