#include "WindowModule.h"
#include "cli/WindowOptions.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#include <dlfcn.h>

namespace {

// Beside the program itself, wherever it was started from.
std::string modulePath()
{
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return (error ? std::filesystem::path() : program.parent_path()) / "velloru-window.so";
}

} // namespace

int runWindowModule(int& argc, char** argv)
{
    // Qt aborts the process when it finds no display; a sentence that says what to do instead is kinder.
    if (!windowCanOpen(argc, argv)) {
        std::fputs("velloru: there is no display to open the window on — run a command instead, such as “velloru "
                   "scan” (“velloru help” lists them).\n",
            stderr);
        return 1;
    }
    const std::string path = modulePath();
    void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    const auto entry = module ? reinterpret_cast<WindowEntry>(::dlsym(module, windowEntryPoint)) : nullptr;
    if (!entry) {
        const char* reason = ::dlerror();
        std::fprintf(stderr,
            "velloru: the window cannot be opened (%s) — the headless commands still work, see “velloru help”.\n",
            reason ? reason : path.c_str());
        return 1;
    }
    // The module stays loaded until the process ends: Qt's objects and its exit handlers live in it.
    return entry(&argc, argv);
}
