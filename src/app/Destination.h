#pragma once

#include <QString>

#include <array>
#include <optional>

// The sections of the sidebar, in sidebar order. The raw value is what is stored (in "debugStartPage");
// the title is what the sidebar shows. They differ on purpose for `auditLog`, shown as "Activity".
enum class Destination {
    dashboard,
    diskUsage,
    memoryUsage,
    uninstaller,
    duplicates,
    leftovers,
    browsers,
    chats,
    loginItems,
    webExtensions,
    maintenance,
    diskImaging,
    diskMount,
    fileSync,
    firstAid,
    auditLog,
};

namespace Destinations {

// Every section, in sidebar order.
const std::array<Destination, 16>& all();

QString rawValue(Destination destination);
QString title(Destination destination);
// The symbol drawn beside the title; the window maps it to an icon.
QString symbol(Destination destination);

// An exact, case-sensitive match against the sixteen raw values; any other text is no section.
std::optional<Destination> parse(QStringView rawValue);

} // namespace Destinations
