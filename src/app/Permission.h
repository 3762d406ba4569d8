#pragma once

#include <QString>

#include <optional>

// The permissions Velloru can depend on, in checklist order.
enum class Permission { helper, fullDisk, background, accessibility };

namespace Permissions {

QString rawValue(Permission permission);
QString title(Permission permission);
// What the permission makes possible, shown under its title in the checklist.
QString purpose(Permission permission);
std::optional<Permission> parse(QStringView rawValue);

} // namespace Permissions
