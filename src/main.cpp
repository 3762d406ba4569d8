#include "WindowModule.h"
#include "cli/CommandLine.h"

#include <malloc.h>

// With a subcommand Velloru runs headless; otherwise it opens the window (Qt's own options, such as
// "-platform offscreen", begin with a dash and go to the window; any other option is a usage error).
int main(int argc, char** argv)
{
    if (isCommandLineInvocation(argc, argv)) {
        // One malloc arena for all threads: the commands' worker threads allocate little once started,
        // and an arena of their own each would keep several megabytes of freed memory apiece.
        mallopt(M_ARENA_MAX, 1);
        // Large blocks (read buffers, sort scratch) always go back to the system when freed. By default
        // glibc raises this threshold after the first large block is freed and keeps later ones in the
        // heap, which holds about a megabyte more at the peak of a duplicate scan.
        mallopt(M_MMAP_THRESHOLD, 128 * 1024);
        return runCommandLine(argc, argv);
    }
    return runWindowModule(argc, argv);
}
