#include "ui/Icons.h"

namespace {

// Names from the freedesktop icon naming standard, chosen to match each section's symbol.
QString themeName(Destination destination)
{
    switch (destination) {
    case Destination::dashboard: return QStringLiteral("utilities-system-monitor");
    case Destination::diskUsage: return QStringLiteral("drive-harddisk");
    case Destination::memoryUsage: return QStringLiteral("media-flash");
    case Destination::uninstaller: return QStringLiteral("user-trash");
    case Destination::duplicates: return QStringLiteral("edit-copy");
    case Destination::leftovers: return QStringLiteral("package-x-generic");
    case Destination::browsers: return QStringLiteral("web-browser");
    case Destination::chats: return QStringLiteral("internet-group-chat");
    case Destination::loginItems: return QStringLiteral("system-shutdown");
    case Destination::webExtensions: return QStringLiteral("application-x-addon");
    case Destination::maintenance: return QStringLiteral("preferences-system");
    case Destination::diskImaging: return QStringLiteral("drive-removable-media");
    case Destination::diskMount: return QStringLiteral("folder-remote");
    case Destination::fileSync: return QStringLiteral("view-refresh");
    case Destination::firstAid: return QStringLiteral("system-help");
    case Destination::auditLog: return QStringLiteral("document-open-recent");
    }
    Q_UNREACHABLE();
}

} // namespace

QString sectionIconName(Destination destination)
{
    return themeName(destination);
}

QIcon sectionIcon(Destination destination)
{
    // The icons live in a static library, whose resource registration the linker would otherwise drop.
    static const bool registered = [] {
        Q_INIT_RESOURCE(icons);
        return true;
    }();
    Q_UNUSED(registered);
    const QIcon bundled(QStringLiteral(":/icons/%1.svg").arg(Destinations::rawValue(destination)));
    return QIcon::fromTheme(themeName(destination), bundled);
}
