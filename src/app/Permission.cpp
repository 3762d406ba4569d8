#include "app/Permission.h"

#include <array>

namespace {

struct PermissionInfo {
    Permission permission;
    const char16_t* rawValue;
    const char16_t* title;
    const char16_t* purpose;
};

constexpr std::array<PermissionInfo, 4> table{{
    {Permission::helper, u"helper", u"Maintenance Helper",
        u"Runs maintenance, empties the Trash and moves items that root owns."},
    {Permission::fullDisk, u"fullDisk", u"Full Disk Access",
        u"Lets the sandboxed app see your own folders, so scans find what is really there."},
    {Permission::background, u"background", u"Background Activity",
        u"Keeps network drives mounted and folders in sync while the window is closed."},
    {Permission::accessibility, u"accessibility", u"Accessibility", u"Lets Velloru quit apps that do not answer."},
}};

} // namespace

namespace Permissions {

QString rawValue(Permission permission)
{
    return QString::fromUtf16(table[size_t(permission)].rawValue);
}

QString title(Permission permission)
{
    return QString::fromUtf16(table[size_t(permission)].title);
}

QString purpose(Permission permission)
{
    return QString::fromUtf16(table[size_t(permission)].purpose);
}

std::optional<Permission> parse(QStringView text)
{
    for (const PermissionInfo& row : table)
        if (text == QStringView(row.rawValue))
            return row.permission;
    return std::nullopt;
}

} // namespace Permissions
