#include "app/Destination.h"

namespace {

struct DestinationInfo {
    Destination destination;
    const char16_t* rawValue;
    const char16_t* title;
    const char16_t* symbol;
};

// One row per section, in sidebar order.
constexpr std::array<DestinationInfo, 16> table{{
    {Destination::dashboard, u"dashboard", u"Dashboard", u"gauge.with.dots.needle.50percent"},
    {Destination::diskUsage, u"diskUsage", u"Disk Usage", u"chart.pie"},
    {Destination::memoryUsage, u"memoryUsage", u"Memory Usage", u"memorychip"},
    {Destination::uninstaller, u"uninstaller", u"Uninstaller", u"trash"},
    {Destination::duplicates, u"duplicates", u"Duplicates", u"doc.on.doc"},
    {Destination::leftovers, u"leftovers", u"Leftovers", u"archivebox"},
    {Destination::browsers, u"browsers", u"Browsers", u"safari"},
    {Destination::chats, u"chats", u"Chat Apps", u"bubble.left.and.bubble.right"},
    {Destination::loginItems, u"loginItems", u"Login Items", u"power"},
    {Destination::webExtensions, u"webExtensions", u"Extensions", u"puzzlepiece.extension"},
    {Destination::maintenance, u"maintenance", u"Maintenance", u"wrench.and.screwdriver"},
    {Destination::diskImaging, u"diskImaging", u"Disk Imaging", u"externaldrive.badge.plus"},
    {Destination::diskMount, u"diskMount", u"Disk Mount", u"externaldrive.badge.wifi"},
    {Destination::fileSync, u"fileSync", u"File Sync", u"arrow.trianglehead.2.clockwise.rotate.90"},
    {Destination::firstAid, u"firstAid", u"First Aid", u"stethoscope"},
    {Destination::auditLog, u"auditLog", u"Activity", u"list.bullet.rectangle"},
}};

const DestinationInfo& info(Destination destination)
{
    return table[static_cast<size_t>(destination)];
}

} // namespace

namespace Destinations {

const std::array<Destination, 16>& all()
{
    static const std::array<Destination, 16> destinations = [] {
        std::array<Destination, 16> list{};
        for (size_t i = 0; i < table.size(); ++i)
            list[i] = table[i].destination;
        return list;
    }();
    return destinations;
}

QString rawValue(Destination destination)
{
    return QString::fromUtf16(info(destination).rawValue);
}

QString title(Destination destination)
{
    return QString::fromUtf16(info(destination).title);
}

QString symbol(Destination destination)
{
    return QString::fromUtf16(info(destination).symbol);
}

std::optional<Destination> parse(QStringView text)
{
    for (const DestinationInfo& row : table)
        if (text == QStringView(row.rawValue))
            return row.destination;
    return std::nullopt;
}

} // namespace Destinations
