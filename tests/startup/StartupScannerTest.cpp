#include "ServiceManagerFixture.h"
#include "StartupHome.h"
#include "startup/LaunchAgentInfo.h"
#include "startup/StartupHealthRules.h"
#include "startup/StartupItemScanner.h"
#include "startup/StartupTexts.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

namespace {

std::optional<StartupItem> find(const StartupItemScanner::Result& result, const QString& id)
{
    for (const StartupItem& item : result.items)
        if (item.id == id)
            return item;
    return std::nullopt;
}

} // namespace

TEST(StartupHealthRules, OnlyRealTrashFoldersCount)
{
    const QString homeTrash = QStringLiteral("/home/ann/.local/share/Trash");
    EXPECT_TRUE(StartupHealthRules::liesInTrash(homeTrash + QStringLiteral("/files/Tool/tool"), homeTrash));
    EXPECT_TRUE(StartupHealthRules::liesInTrash(QStringLiteral("/media/usb/.Trash-1000/files/tool"), homeTrash));
    EXPECT_TRUE(StartupHealthRules::liesInTrash(QStringLiteral("/media/usb/.Trash/1000/files/tool"), homeTrash));
    // A Trash found by its place in another user's data folder, with a different XDG_DATA_HOME here.
    EXPECT_TRUE(StartupHealthRules::liesInTrash(QStringLiteral("/home/bo/.local/share/Trash/files/x"), homeTrash));
    EXPECT_FALSE(StartupHealthRules::liesInTrash(QStringLiteral("/home/ann/Trash/tool"), homeTrash));
    EXPECT_FALSE(StartupHealthRules::liesInTrash(QStringLiteral("/home/ann/.TrashFiles/tool"), homeTrash));
    EXPECT_FALSE(StartupHealthRules::liesInTrash(QStringLiteral("/media/usb/.Trash/tool"), homeTrash));
    EXPECT_FALSE(StartupHealthRules::liesInTrash(homeTrash + QStringLiteral("-old/files/tool"), homeTrash));
}

TEST(StartupItemScanner, ProgramFromEveryExecStartForm)
{
    StartupHome home;
    home.userUnit(QStringLiteral("dash.service"), "-/bin/sh -c true", true);
    home.userUnit(QStringLiteral("at.service"), "@/bin/true true-renamed", true);
    home.userUnit(QStringLiteral("plus.service"), "+!/bin/true", true);
    home.userUnit(QStringLiteral("bare.service"), "sh -c true", false);
    home.userUnit(QStringLiteral("none.service"), QByteArray(), false);
    home.userUnit(QStringLiteral("gone.service"), "/opt/removed-app/bin/app --daemon", true);
    home.userUnit(QStringLiteral("lookalike.service"), home.tree.path("home/.TrashFiles/app").toUtf8(), true);

    const StartupItemScanner::Result result = StartupItemScanner(home.locations).scan();
    ASSERT_EQ(result.items.size(), 7);
    EXPECT_EQ(find(result, QStringLiteral("dash.service"))->program, QStringLiteral("/bin/sh"));
    EXPECT_EQ(find(result, QStringLiteral("at.service"))->program, QStringLiteral("/bin/true"));
    EXPECT_EQ(find(result, QStringLiteral("plus.service"))->program, QStringLiteral("/bin/true"));
    const StartupItem bare = *find(result, QStringLiteral("bare.service"));
    EXPECT_EQ(bare.program, QStringLiteral("sh"));
    EXPECT_EQ(bare.health, StartupHealth::ok);
    EXPECT_FALSE(bare.enabled);
    const StartupItem none = *find(result, QStringLiteral("none.service"));
    EXPECT_EQ(none.program, LaunchAgentInfo::noProgram());
    EXPECT_EQ(none.health, StartupHealth::programMissing);
    const StartupItem gone = *find(result, QStringLiteral("gone.service"));
    EXPECT_EQ(gone.health, StartupHealth::programMissing);
    EXPECT_TRUE(gone.enabled);
    EXPECT_EQ(gone.kind, StartupKind::agent);
    EXPECT_EQ(gone.control, StartupControl::userLaunchd);
    EXPECT_EQ(gone.removal, StartupRemoval::trashPlist);
    EXPECT_EQ(gone.name, QStringLiteral("A test unit"));
    // A folder merely named like a Trash is an ordinary folder whose program is missing.
    EXPECT_EQ(find(result, QStringLiteral("lookalike.service"))->health, StartupHealth::programMissing);
}

TEST(StartupItemScanner, UnitsOfEveryUserAndTheSystemWithoutTheOperatingSystemsOwn)
{
    StartupHome home;
    const QString etcUser = home.locations.globalUserUnits.at(0);
    const QString vendorUser = home.locations.globalUserUnits.at(1);
    const QString etcSystem = home.locations.systemUnits.at(0);
    const QString vendorSystem = home.locations.systemUnits.at(1);
    // A unit enabled for every user, and one the user masked.
    home.tree.write(QStringLiteral("usr/lib/systemd/user/sync.service"), StartupHome::unit("/bin/true"));
    home.tree.makeFolder(QStringLiteral("etc/systemd/user/default.target.wants"));
    QFile::link(
        vendorUser + QStringLiteral("/sync.service"), etcUser + QStringLiteral("/default.target.wants/sync.service"));
    home.tree.write(QStringLiteral("usr/lib/systemd/user/masked.service"), StartupHome::unit("/bin/true"));
    QFile::link(vendorUser + QStringLiteral("/masked.service"),
        etcUser + QStringLiteral("/default.target.wants/masked.service"));
    QFile::link(QStringLiteral("/dev/null"), home.locations.userUnits + QStringLiteral("/masked.service"));
    // System units: enabled, enableable but off, static (never starts by itself), an alias, and the
    // operating system's own.
    home.tree.write(QStringLiteral("lib/systemd/system/printing.service"), StartupHome::unit("/bin/true", "Printing"));
    home.tree.makeFolder(QStringLiteral("etc/systemd/system/multi-user.target.wants"));
    QFile::link(vendorSystem + QStringLiteral("/printing.service"),
        etcSystem + QStringLiteral("/multi-user.target.wants/printing.service"));
    QFile::link(vendorSystem + QStringLiteral("/printing.service"), etcSystem + QStringLiteral("/cups-alias.service"));
    home.tree.write(QStringLiteral("lib/systemd/system/database.service"), StartupHome::unit("/bin/true"));
    home.tree.write(QStringLiteral("lib/systemd/system/static.service"), StartupHome::unit("/bin/true", "x", ""));
    const QString journal
        = home.tree.write(QStringLiteral("lib/systemd/system/journal.service"), StartupHome::unit("/bin/true"));
    QFile::link(vendorSystem + QStringLiteral("/journal.service"),
        etcSystem + QStringLiteral("/multi-user.target.wants/journal.service"));
    home.tree.write(QStringLiteral("dpkg/status"),
        "Package: base-tools\nStatus: install ok installed\nPriority: required\nArchitecture: amd64\n\n"
        "Package: printer-driver\nStatus: install ok installed\nPriority: optional\nArchitecture: amd64\n");
    home.tree.write(QStringLiteral("dpkg/info/base-tools:amd64.list"), journal.toUtf8() + "\n");
    home.tree.write(QStringLiteral("dpkg/info/printer-driver.list"),
        home.tree.path("lib/systemd/system/printing.service").toUtf8() + "\n");

    const StartupItemScanner::Result result = StartupItemScanner(home.locations).scan();
    QStringList ids;
    for (const StartupItem& item : result.items)
        ids.append(item.id);
    ids.sort();
    EXPECT_EQ(ids,
        (QStringList{QStringLiteral("database.service"), QStringLiteral("masked.service"),
            QStringLiteral("printing.service"), QStringLiteral("sync.service")}));
    const StartupItem sync = *find(result, QStringLiteral("sync.service"));
    EXPECT_TRUE(sync.enabled);
    EXPECT_EQ(sync.control, StartupControl::userLaunchd);
    EXPECT_EQ(sync.removal, StartupRemoval::ownedByApp);
    EXPECT_FALSE(find(result, QStringLiteral("masked.service"))->enabled);
    const StartupItem printing = *find(result, QStringLiteral("printing.service"));
    EXPECT_EQ(printing.kind, StartupKind::daemon);
    EXPECT_EQ(printing.control, StartupControl::systemLaunchd);
    EXPECT_TRUE(printing.enabled);
    EXPECT_EQ(printing.name, QStringLiteral("Printing"));
    EXPECT_FALSE(find(result, QStringLiteral("database.service"))->enabled);
}

TEST(StartupItemScanner, AutostartEntriesTheirOverridesAndFlatpakApps)
{
    StartupHome home;
    LogCapture log;
    home.entry(QStringLiteral("config/autostart/notes.desktop"), "Name=Notes\nExec=/bin/sh -c notes %U\n");
    home.entry(QStringLiteral("config/autostart/org.gnome.Weather.desktop"), "Name=Weather\nExec=sh\nHidden=true\n");
    home.entry(QStringLiteral("etc/xdg/autostart/tray.desktop"), "Name=Tray\nExec=/bin/true\n");
    home.tree.write(QStringLiteral("config/autostart/tray.desktop"), "[Desktop Entry]\nHidden=true\n");
    home.entry(QStringLiteral("etc/xdg/autostart/deleted.desktop"), "Name=Deleted\nExec=/bin/true\nHidden=true\n");
    home.tree.makeFolder(QStringLiteral("flatpak/app/org.example.Chat/current/active"));
    home.entry(QStringLiteral("config/autostart/org.example.Chat.desktop"),
        "Name=Chat\nExec=/usr/bin/flatpak run --command=chat org.example.Chat\nX-Flatpak=org.example.Chat\n");
    home.entry(QStringLiteral("config/autostart/org.example.Gone.desktop"),
        "Name=Gone\nExec=/usr/bin/flatpak run org.example.Gone\nX-Flatpak=org.example.Gone\n");
    home.tree.write(QStringLiteral("config/autostart/broken.desktop"), "not a desktop entry at all\n");

    const StartupItemScanner::Result result = StartupItemScanner(home.locations).scan();
    ASSERT_EQ(result.items.size(), 5);
    const auto id = [&home](const char* relative) { return QStringLiteral("app:") + home.tree.path(relative); };

    const StartupItem notes = *find(result, id("config/autostart/notes.desktop"));
    EXPECT_EQ(notes.kind, StartupKind::app);
    EXPECT_EQ(notes.control, StartupControl::loginApp);
    EXPECT_EQ(notes.removal, StartupRemoval::loginAppEntry);
    EXPECT_TRUE(notes.enabled);
    EXPECT_EQ(notes.program, QStringLiteral("/bin/sh"));
    // Listed whatever its name says: it lives in the user's own folder.
    const StartupItem weather = *find(result, id("config/autostart/org.gnome.Weather.desktop"));
    EXPECT_FALSE(weather.enabled);
    const StartupItem tray = *find(result, id("etc/xdg/autostart/tray.desktop"));
    EXPECT_EQ(tray.kind, StartupKind::loginItem);
    EXPECT_EQ(tray.removal, StartupRemoval::ownedByApp);
    EXPECT_FALSE(tray.enabled);
    const StartupItem chat = *find(result, id("config/autostart/org.example.Chat.desktop"));
    EXPECT_EQ(chat.kind, StartupKind::loginItem);
    EXPECT_EQ(chat.removal, StartupRemoval::ownedByApp);
    EXPECT_EQ(chat.developer, QStringLiteral("org.example.Chat"));
    EXPECT_EQ(chat.health, StartupHealth::ok);
    EXPECT_EQ(find(result, id("config/autostart/org.example.Gone.desktop"))->health, StartupHealth::programMissing);
    EXPECT_TRUE(log.contains(QStringLiteral("autostart entry skipped")));
}

TEST(StartupItemScanner, ProgramsLaunchingFromTheTrashAreSwitchedOffAtOnce)
{
    StartupHome home;
    ServiceManagerFixture manager;
    const QString trashed = home.tree.write(QStringLiteral("home/.local/share/Trash/files/Tool/tool"), "#!/bin/sh\n");
    home.userUnit(QStringLiteral("tool.service"), trashed.toUtf8(), true);
    const QString entry
        = home.entry(QStringLiteral("config/autostart/tool.desktop"), "Name=Tool\nExec=" + trashed.toUtf8() + "\n");

    const StartupItemScanner::Result result = StartupItemScanner(home.locations).scan();
    EXPECT_TRUE(result.complete);
    ASSERT_EQ(result.switchedOff.size(), 2);
    const StartupItem unit = *find(result, QStringLiteral("tool.service"));
    EXPECT_EQ(unit.health, StartupHealth::appInTrash);
    EXPECT_FALSE(unit.enabled);
    EXPECT_FALSE(QFileInfo::exists(home.locations.userUnits + QStringLiteral("/default.target.wants/tool.service")));
    EXPECT_TRUE(readWholeFile(entry).contains("Hidden=true"));

    // A second scan finds both off and switches nothing.
    EXPECT_TRUE(StartupItemScanner(home.locations).scan().switchedOff.isEmpty());
    // Without a service manager the list is incomplete, and still lists what is on disk.
    manager.stop();
    ServiceManagerRecords::forget();
    const StartupItemScanner::Result alone = StartupItemScanner(home.locations).scan();
    EXPECT_FALSE(alone.complete);
    EXPECT_EQ(alone.items.size(), 2);
}
