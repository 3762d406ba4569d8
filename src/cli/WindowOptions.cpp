#include "cli/WindowOptions.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace {

using namespace std::string_view_literals;

// The options QGuiApplication, QApplication and the X11 platform plugin of Qt 6 accept, without their dash.
// Qt takes each with one dash or two.
constexpr std::array flagOptions = {"reverse"sv, "testability"sv, "widgetcount"sv, "nograb"sv, "dograb"sv};
constexpr std::array valueOptions = {"platform"sv, "platformpluginpath"sv, "platformtheme"sv, "plugin"sv,
    "qwindowgeometry"sv, "geometry"sv, "qwindowtitle"sv, "title"sv, "qwindowicon"sv, "icon"sv, "session"sv, "style"sv,
    "stylesheet"sv, "display"sv, "name"sv, "visual"sv, "qmljsdebugger"sv};
// These also take their value after "=" in the same argument.
constexpr std::array joinedValueOptions = {"style"sv, "stylesheet"sv, "qmljsdebugger"sv};

template <std::size_t N> bool isOneOf(std::string_view name, const std::array<std::string_view, N>& names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool isSet(const char* variable)
{
    const char* value = std::getenv(variable);
    return value && *value;
}

} // namespace

WindowArguments readWindowArguments(int argc, char** argv)
{
    WindowArguments window;
    for (int i = 1; i < argc; ++i) {
        std::string_view argument = argv[i];
        if (!argument.starts_with('-') || argument.size() < 2) {
            window.unknown = argument;
            break;
        }
        argument.remove_prefix(argument.starts_with("--") ? 2 : 1);
        const std::string_view name = argument.substr(0, argument.find('='));
        if (name.size() < argument.size() ? isOneOf(name, joinedValueOptions) : isOneOf(name, flagOptions))
            continue;
        if (name.size() < argument.size() || !isOneOf(name, valueOptions)) {
            window.unknown = argv[i];
            break;
        }
        if ((name == "platform" || name == "display") && i + 1 < argc)
            window.platformChosen = true;
        ++i; // the value
    }
    return window;
}

bool windowCanOpen(int argc, char** argv)
{
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM")
        || readWindowArguments(argc, argv).platformChosen;
}
