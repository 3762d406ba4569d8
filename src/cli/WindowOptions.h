#pragma once

#include <optional>
#include <string_view>

// What a command line without a command says to the window: Qt's own options (such as "-platform offscreen"
// or "--reverse") with their values, which Qt's application objects take out of argv themselves.
struct WindowArguments {
    std::optional<std::string_view> unknown; // the first argument that is none of Qt's options, if any
    bool platformChosen = false;             // -platform NAME, or -display HOST for X11
};

WindowArguments readWindowArguments(int argc, char** argv);

// Whether the window has somewhere to open: a display named in the environment or on the command line, or a
// Qt platform chosen (QT_QPA_PLATFORM, "-platform offscreen"). Without one, Qt aborts the process.
bool windowCanOpen(int argc, char** argv);
