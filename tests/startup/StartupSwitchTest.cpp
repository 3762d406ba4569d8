#include "startup/StartupSwitch.h"
#include "ServiceManagerFixture.h"
#include "StartupHome.h"
#include "helper/HelperManager.h"
#include "platform/TrashStore.h"
#include "removal/AuditLog.h"
#include "removal/Trasher.h"
#include "startup/AutostartOverride.h"
#include "startup/Shell.h"
#include "startup/StartupItemScanner.h"
#include "startup/StartupItems.h"
#include "startup/StartupTexts.h"

#include <gtest/gtest.h>

#include <QEventLoop>
#include <QSignalSpy>

using namespace std::chrono_literals;

namespace {

StartupItem scanned(const StartupLocations& locations, const QString& id)
{
    for (const StartupItem& item : StartupItemScanner(locations).scan().items)
        if (item.id == id)
            return item;
    ADD_FAILURE() << "no item " << id.toStdString();
    return {};
}

void waitForScan(StartupItems& startup)
{
    QSignalSpy spy(&startup, &StartupItems::scanned);
    if (!startup.hasScanned() && !startup.isScanning())
        startup.scan();
    if (startup.isScanning())
        spy.wait(20000);
}

StartupOutcome waitFor(const std::function<void(StartupItems::Done)>& start)
{
    std::optional<StartupOutcome> outcome;
    QEventLoop loop;
    start([&](StartupOutcome answer) {
        outcome = answer;
        loop.quit();
    });
    if (!outcome)
        loop.exec();
    return *outcome;
}

} // namespace

TEST(Shell, ACommandPastItsLimitFailsAndItsOutputIsDiscarded)
{
    const ShellResult late
        = Shell::run({QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("echo partial; sleep 10")}}, 300ms);
    EXPECT_TRUE(late.timedOut);
    EXPECT_FALSE(late.succeeded());
    EXPECT_TRUE(late.output.isEmpty());

    const ShellResult missing = Shell::run({QStringLiteral("/nonexistent/tool"), {}}, 1s);
    EXPECT_FALSE(missing.started);
    EXPECT_FALSE(missing.succeeded());

    const ShellResult said = Shell::run(
        {QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("echo out; echo 'Unit not found.' >&2; exit 3")}},
        5s);
    EXPECT_EQ(said.exitStatus, 3);
    EXPECT_EQ(said.output, "out\n");
    EXPECT_EQ(said.problem(), QStringLiteral("Unit not found."));
}

TEST(StartupSwitch, UserUnitOffTwiceThenOnReadBackFromTheServiceManager)
{
    StartupHome home;
    ServiceManagerFixture manager;
    home.userUnit(QStringLiteral("sync.service"), "/bin/sleep 600", true);
    const StartupItem item = scanned(home.locations, QStringLiteral("sync.service"));
    ASSERT_TRUE(item.enabled);

    const StartupOutcome off = StartupSwitch::setEnabled(item, false, home.locations);
    EXPECT_TRUE(off.success) << off.message.toStdString();
    EXPECT_EQ(off.message, QStringLiteral("A test unit is off. systemd won’t start it at login."));
    EXPECT_FALSE(scanned(home.locations, QStringLiteral("sync.service")).enabled);
    // Switching off what is already off succeeds.
    const StartupOutcome again = StartupSwitch::setEnabled(item, false, home.locations);
    EXPECT_TRUE(again.success) << again.message.toStdString();

    const StartupOutcome on = StartupSwitch::setEnabled(item, true, home.locations);
    EXPECT_TRUE(on.success) << on.message.toStdString();
    EXPECT_EQ(on.message, QStringLiteral("A test unit will start again at your next login."));
    EXPECT_TRUE(scanned(home.locations, QStringLiteral("sync.service")).enabled);
}

TEST(StartupSwitch, AUnitTheServiceManagerRefusesStaysAsItWasWithOneSentence)
{
    StartupHome home;
    ServiceManagerFixture manager;
    // No [Install] section: there is nothing to enable it by.
    home.tree.write(QStringLiteral("config/systemd/user/static.service"), StartupHome::unit("/bin/true", "Static", ""));
    StartupItem item;
    item.id = QStringLiteral("static.service");
    item.name = QStringLiteral("Static");
    item.control = StartupControl::userLaunchd;
    const StartupOutcome on = StartupSwitch::setEnabled(item, true, home.locations);
    EXPECT_FALSE(on.success);
    EXPECT_TRUE(on.message.startsWith(QStringLiteral("Couldn’t turn Static on — "))) << on.message.toStdString();
}

TEST(AutostartOverride, KeepsTheUsersOtherKeysAndRemovesOnlyItsOwnSwitch)
{
    StartupHome home;
    const QString folder = home.locations.userAutostart;
    const QString copy = home.entry(QStringLiteral("config/autostart/tray.desktop"),
        "Name=Tray\nExec=/bin/true --minimised\nX-GNOME-Autostart-Delay=5\n\n[Desktop Action New]\nName=New\n");
    ASSERT_FALSE(AutostartOverride::apply(folder, QStringLiteral("tray.desktop"), false));
    ASSERT_FALSE(AutostartOverride::apply(folder, QStringLiteral("tray.desktop"), false));
    const QByteArray off = readWholeFile(copy);
    EXPECT_EQ(off.count("Hidden=true"), 1);
    EXPECT_TRUE(off.contains("Exec=/bin/true --minimised\nX-GNOME-Autostart-Delay=5"));
    EXPECT_TRUE(off.contains("[Desktop Action New]\nName=New"));
    ASSERT_FALSE(AutostartOverride::apply(folder, QStringLiteral("tray.desktop"), true));
    EXPECT_EQ(readWholeFile(copy),
        "[Desktop Entry]\nType=Application\nName=Tray\nExec=/bin/true --minimised\nX-GNOME-Autostart-Delay=5\n\n"
        "[Desktop Action New]\nName=New\n");

    // For an entry placed by software the override holds nothing but the switch, and goes with it.
    ASSERT_FALSE(AutostartOverride::apply(folder, QStringLiteral("system.desktop"), false));
    EXPECT_EQ(readWholeFile(folder + QStringLiteral("/system.desktop")), "[Desktop Entry]\nHidden=true\n");
    ASSERT_FALSE(AutostartOverride::apply(folder, QStringLiteral("system.desktop"), true));
    EXPECT_FALSE(QFileInfo::exists(folder + QStringLiteral("/system.desktop")));
}

TEST(AutostartOverride, AFolderThatCannotBeWrittenLeavesTheEntryAsItWas)
{
    StartupHome home;
    const QString folder = home.locations.userAutostart;
    const QString entry = home.entry(QStringLiteral("config/autostart/notes.desktop"), "Name=Notes\nExec=/bin/true\n");
    const QByteArray before = readWholeFile(entry);
    FileAccessChecksEnforced enforced;
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    const std::optional<QString> problem = AutostartOverride::apply(folder, QStringLiteral("notes.desktop"), false);
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    ASSERT_TRUE(problem);
    EXPECT_FALSE(problem->isEmpty());
    EXPECT_EQ(readWholeFile(entry), before);
}

TEST(StartupItems, SystemDaemonsWithoutTheHelperAndPackagedItemsAnswerWithOneSentence)
{
    StartupHome home;
    home.tree.write(QStringLiteral("lib/systemd/system/printing.service"), StartupHome::unit("/bin/true", "Printing"));
    home.entry(QStringLiteral("etc/xdg/autostart/tray.desktop"), "Name=Tray\nExec=/bin/true\n");
    AuditLog audit(home.tree.makeFolder(QStringLiteral("data")));
    HelperManager helper(home.tree.path(QStringLiteral("no-helper.sock")));
    ASSERT_NE(helper.state(), HelperManager::State::ready);
    const Trasher trasher;
    StartupItems startup(home.locations, helper, trasher, audit);
    waitForScan(startup);

    const StartupOutcome daemon
        = waitFor([&](auto done) { startup.setEnabled(QStringLiteral("printing.service"), true, done); });
    EXPECT_FALSE(daemon.success);
    EXPECT_EQ(daemon.message,
        QStringLiteral("Printing runs as a system daemon. Install the Maintenance Helper to switch it off."));
    const StartupOutcome packaged = waitFor([&](auto done) {
        startup.remove(QStringLiteral("app:") + home.tree.path(QStringLiteral("etc/xdg/autostart/tray.desktop")), done);
    });
    EXPECT_FALSE(packaged.success);
    EXPECT_EQ(packaged.message, StartupTexts::ownedByApp());
    waitForScan(startup);
}

TEST(StartupItems, SwitchesAndRemovesALeftoverToTheTrashRecordingEachInActivity)
{
    StartupHome home;
    ServiceManagerFixture manager;
    const QString unitPath = home.userUnit(QStringLiteral("old-sync.service"), "/opt/old-sync/bin/sync", true);
    const QString entry = home.entry(QStringLiteral("config/autostart/notes.desktop"), "Name=Notes\nExec=/bin/true\n");
    AuditLog audit(home.tree.makeFolder(QStringLiteral("data")));
    HelperManager helper(home.tree.path(QStringLiteral("no-helper.sock")));
    const Trasher trasher;
    StartupItems startup(home.locations, helper, trasher, audit);
    waitForScan(startup);
    const QString notes = QStringLiteral("app:") + entry;

    EXPECT_TRUE(waitFor([&](auto done) { startup.setEnabled(notes, false, done); }).success);
    waitForScan(startup);
    EXPECT_FALSE(startup.item(notes)->enabled);
    EXPECT_TRUE(waitFor([&](auto done) { startup.setEnabled(notes, true, done); }).success);
    waitForScan(startup);
    EXPECT_TRUE(startup.item(notes)->enabled);

    const StartupOutcome removed
        = waitFor([&](auto done) { startup.remove(QStringLiteral("old-sync.service"), done); });
    EXPECT_TRUE(removed.success) << removed.message.toStdString();
    EXPECT_EQ(removed.message, QStringLiteral("A test unit won’t start any more. The file is in your Trash."));
    waitForScan(startup);
    EXPECT_FALSE(QFileInfo::exists(unitPath));
    EXPECT_TRUE(QFileInfo::exists(homeTrashPath() + QStringLiteral("/files/old-sync.service")));
    EXPECT_FALSE(
        QFileInfo::exists(home.locations.userUnits + QStringLiteral("/default.target.wants/old-sync.service")));
    EXPECT_FALSE(startup.item(QStringLiteral("old-sync.service")));

    QStringList outcomes;
    for (const AuditEntry& logged : audit.entries())
        if (logged.feature == StartupTexts::feature())
            outcomes.append(logged.outcome);
    EXPECT_EQ(outcomes.size(), 3) << outcomes.join(u'|').toStdString();
    EXPECT_TRUE(outcomes.contains(QStringLiteral("Notes is off. Your desktop won’t start it at login.")));
}
