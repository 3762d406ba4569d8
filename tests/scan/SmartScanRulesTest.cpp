#include "TestSupport.h"

#include "scan/LaunchAgentInfo.h"
#include "scan/ScanPulse.h"
#include "scan/SmartScanRules.h"
#include "scan/SmartScanTexts.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <atomic>
#include <thread>

namespace {

OwnerContext owners(QSet<QString> installed = {}, QSet<QString> running = {})
{
    return {std::move(installed), std::move(running), QStringLiteral("us.ambertrell.velloru"),
        {QStringLiteral("org.freedesktop.")}};
}

// A home with the Linux locations laid out under a fixture tree.
SmartScanLocations locationsIn(const FixtureTree& tree)
{
    SmartScanLocations locations;
    locations.cacheFolders = {tree.path(QStringLiteral("home/.cache"))};
    locations.flatpakAppsFolder = tree.path(QStringLiteral("home/.var/app"));
    locations.logSources = {{tree.path(QStringLiteral("home")), {QStringLiteral(".xsession-errors*")}},
        {tree.path(QStringLiteral("home/.local/state")), {QStringLiteral("*.log")}}};
    locations.crashFolders = {tree.path(QStringLiteral("crash"))};
    locations.savedStateFolders = {tree.path(QStringLiteral("home/.config/session"))};
    locations.linkPlaces = {{tree.path(QStringLiteral("home")), 1}, {tree.path(QStringLiteral("home/.local/bin")), 2}};
    locations.startupFolders
        = {tree.path(QStringLiteral("home/.config/systemd/user")), tree.path(QStringLiteral("home/.config/autostart"))};
    return locations;
}

const ScanGroup* group(const QList<ScanGroup>& groups, const QString& title)
{
    for (const ScanGroup& group : groups)
        if (group.title == title)
            return &group;
    return nullptr;
}

std::optional<ScanItem> item(const QList<ScanGroup>& groups, const QString& path)
{
    for (const ScanGroup& group : groups)
        for (const ScanItem& item : group.items)
            if (item.url.toLocalFile() == path)
                return item;
    return std::nullopt;
}

QStringList names(const ScanGroup& group)
{
    QStringList names;
    for (const ScanItem& item : group.items)
        names << QFileInfo(item.url.toLocalFile()).fileName();
    return names;
}

} // namespace

TEST(OwnerClassification, FollowsTheFiveCodes)
{
    const OwnerContext context = owners({QStringLiteral("com.example.app"), QStringLiteral("vlc"),
                                            QStringLiteral("org.gnome.gedit"), QStringLiteral("chromium")},
        {QStringLiteral("chromium"), QStringLiteral("org.gnome.gedit.helper")});
    EXPECT_EQ(classifyOwner(QStringLiteral("com.example.app.helper"), context), OwnerCode::installedNotRunning);
    EXPECT_EQ(classifyOwner(QStringLiteral("VLC"), context), OwnerCode::installedNotRunning);
    EXPECT_EQ(classifyOwner(QStringLiteral("org.freedesktop.portal.Desktop"), context), OwnerCode::system);
    EXPECT_EQ(classifyOwner(QStringLiteral("us.ambertrell.Velloru.helper"), context), OwnerCode::inUse);
    EXPECT_EQ(classifyOwner(QStringLiteral("chromium"), context), OwnerCode::inUse);
    // The identifier itself is running, though its owner is not.
    EXPECT_EQ(classifyOwner(QStringLiteral("org.gnome.gedit.helper"), context), OwnerCode::inUse);
    EXPECT_EQ(classifyOwner(QStringLiteral("fontconfig"), context), OwnerCode::shared);
    EXPECT_EQ(classifyOwner(QStringLiteral("vlc.old"), context), OwnerCode::shared);
    EXPECT_EQ(classifyOwner(QStringLiteral("io.github.removed"), context), OwnerCode::orphan);
    EXPECT_EQ(savedStateIdentifier(QStringLiteral("vlc_10d2a3f4")), QStringLiteral("vlc"));
    EXPECT_EQ(savedStateIdentifier(QStringLiteral("konsole")), QStringLiteral("konsole"));
}

TEST(SmartScanRules, GradesEveryKindOfFindInAFixtureHome)
{
    FixtureTree tree;
    // Caches.
    tree.write(QStringLiteral("home/.cache/us.ambertrell.Velloru/x"), QByteArray(10, 'x'));
    tree.write(QStringLiteral("home/.cache/Velloru/x"), QByteArray(10, 'x'));
    tree.write(QStringLiteral("home/.cache/us.ambertrell.Velloru.agent/x"), QByteArray(20, 'x'));
    tree.write(QStringLiteral("home/.cache/org.freedesktop.portal/x"), QByteArray(30, 'x'));
    tree.write(QStringLiteral("home/.cache/com.example.app.helper/a/b/c"), QByteArray(4000, 'x'));
    tree.write(QStringLiteral("home/.cache/com.example.app.helper/d"), QByteArray(1000, 'x'));
    tree.write(QStringLiteral("home/.cache/vlc/art"), QByteArray(300, 'x'));
    tree.write(QStringLiteral("home/.cache/chromium/Cache"), QByteArray(200, 'x'));
    tree.write(QStringLiteral("home/.cache/fontconfig/f"), QByteArray(100, 'x'));
    tree.write(QStringLiteral("home/.cache/io.github.removed/f"), QByteArray(100, 'x'));
    tree.write(QStringLiteral("home/.cache/thumbnails/normal/a.png"), QByteArray(700, 'x'));
    tree.write(QStringLiteral("home/.cache/com.apple.QuickLook.thumbnailcache/t"), QByteArray(50, 'x'));
    tree.makeFolder(QStringLiteral("home/.cache/empty/inner"));
    QFile::link(tree.path(QStringLiteral("home/.cache/vlc")), tree.path(QStringLiteral("home/.cache/vlc-link")));
    tree.write(QStringLiteral("home/.var/app/org.example.Flat/cache/c"), QByteArray(60, 'x'));
    tree.write(QStringLiteral("home/.var/app/org.example.Flat/data/keep"), QByteArray(6000, 'x'));
    // Logs: an empty log is not listed; only matching names are logs.
    tree.write(QStringLiteral("home/.xsession-errors"), QByteArray(80, 'x'));
    tree.write(QStringLiteral("home/.xsession-errors.old"), QByteArray());
    tree.write(QStringLiteral("home/.local/state/app.log"), QByteArray(90, 'x'));
    tree.write(QStringLiteral("home/.local/state/history"), QByteArray(90, 'x'));
    // Crash reports: an empty one is listed.
    tree.write(QStringLiteral("crash/_usr_bin_vlc.1000.crash"), QByteArray(500, 'x'));
    tree.write(QStringLiteral("crash/empty.crash"), QByteArray());
    // Saved session states.
    tree.write(QStringLiteral("home/.config/session/vlc_10d2"), QByteArray(40, 'x'));
    tree.write(QStringLiteral("home/.config/session/chromium_77"), QByteArray(40, 'x'));
    tree.write(QStringLiteral("home/.config/session/mystery_1"), QByteArray(40, 'x'));
    // Broken items: links first, then startup items whose program is missing.
    QFile::link(QStringLiteral("/nowhere/at/all"), tree.path(QStringLiteral("home/dangling")));
    tree.write(QStringLiteral("home/.local/bin/real-tool"), "#!/bin/sh\n");
    QFile::link(QStringLiteral("real-tool"), tree.path(QStringLiteral("home/.local/bin/tool")));
    QFile::link(QStringLiteral("../missing-tool"), tree.path(QStringLiteral("home/.local/bin/old")));
    QFile::link(QStringLiteral("old"), tree.path(QStringLiteral("home/.local/bin/chain")));
    tree.makeFolder(QStringLiteral("home/.local/bin/sub/deeper"));
    QFile::link(QStringLiteral("/nowhere"), tree.path(QStringLiteral("home/.local/bin/sub/one-level-down")));
    QFile::link(QStringLiteral("/nowhere"), tree.path(QStringLiteral("home/.local/bin/sub/deeper/too-deep")));
    tree.write(QStringLiteral("home/.config/systemd/user/sync.service"),
        "[Unit]\nDescription=Sync\n[Service]\nExecStart=-/opt/gone/syncd --daemon\nRestart=always\n"
        "[Install]\nWantedBy=default.target\n");
    tree.write(QStringLiteral("home/.config/systemd/user/fine.service"), "[Service]\nExecStart=/bin/sh -c true\n");
    tree.write(
        QStringLiteral("home/.config/autostart/noprog.desktop"), "[Desktop Entry]\nType=Application\nName=None\n");
    tree.write(QStringLiteral("home/.config/autostart/off.desktop"), "[Desktop Entry]\nHidden=true\n");

    SmartScanInput input;
    input.locations = locationsIn(tree);
    input.owners = owners({QStringLiteral("com.example.app"), QStringLiteral("vlc"), QStringLiteral("chromium"),
                              QStringLiteral("org.example.flat")},
        {QStringLiteral("chromium")});
    ScanPulse pulse;
    const QList<ScanGroup> groups = runSmartScan(input, pulse, {});

    QStringList titles;
    for (const ScanGroup& group : groups)
        titles << group.title + QLatin1Char('/') + group.systemImage;
    EXPECT_EQ(titles,
        (QStringList{"App Caches/internaldrive", "Thumbnails/photo.on.rectangle", "Logs/doc.text",
            "Crash Reports/bandage", "Saved App States/macwindow.on.rectangle", "Broken Items/link.badge.plus"}));

    const ScanGroup* caches = group(groups, SmartScanTexts::appCachesTitle());
    ASSERT_TRUE(caches);
    // Largest first; Velloru's own caches, empty folders and links are not offered.
    EXPECT_EQ(names(*caches),
        (QStringList{"com.example.app.helper", "vlc", "chromium", "fontconfig", "io.github.removed", "cache",
            "org.freedesktop.portal", "us.ambertrell.Velloru.agent"}));
    auto cache = [&](const char* relative) { return item(groups, tree.path(QString::fromUtf8(relative))); };
    EXPECT_EQ(cache("home/.cache/com.example.app.helper")->size, 5000);
    EXPECT_EQ(cache("home/.cache/com.example.app.helper")->risk, RiskLevel::safe);
    EXPECT_EQ(cache("home/.cache/com.example.app.helper")->detail, SmartScanTexts::cacheInstalledNotRunning());
    EXPECT_EQ(cache("home/.cache/vlc")->risk, RiskLevel::safe);
    EXPECT_EQ(cache("home/.cache/chromium")->detail, SmartScanTexts::cacheInUse());
    EXPECT_EQ(cache("home/.cache/chromium")->risk, RiskLevel::caution);
    EXPECT_EQ(cache("home/.cache/fontconfig")->detail, SmartScanTexts::cacheShared());
    EXPECT_EQ(cache("home/.cache/io.github.removed")->detail, SmartScanTexts::unclaimed());
    EXPECT_EQ(cache("home/.cache/org.freedesktop.portal")->detail, SmartScanTexts::cacheSystem());
    EXPECT_EQ(cache("home/.cache/us.ambertrell.Velloru.agent")->detail, SmartScanTexts::cacheInUse());
    EXPECT_EQ(cache("home/.var/app/org.example.Flat/cache")->size, 60);
    EXPECT_EQ(cache("home/.var/app/org.example.Flat/cache")->risk, RiskLevel::safe);

    const ScanGroup* thumbnails = group(groups, SmartScanTexts::thumbnailsTitle());
    ASSERT_TRUE(thumbnails);
    // Thumbnail caches keep their listing order: the larger one, listed second, stays second.
    EXPECT_EQ(names(*thumbnails), (QStringList{"com.apple.QuickLook.thumbnailcache", "thumbnails"}));
    EXPECT_EQ(thumbnails->items.first().risk, RiskLevel::safe);
    EXPECT_EQ(thumbnails->items.first().detail, SmartScanTexts::thumbnailCache());

    EXPECT_EQ(names(*group(groups, SmartScanTexts::logsTitle())), (QStringList{"app.log", ".xsession-errors"}));
    EXPECT_EQ(group(groups, SmartScanTexts::logsTitle())->items.first().risk, RiskLevel::caution);

    const ScanGroup* crashes = group(groups, SmartScanTexts::crashReportsTitle());
    EXPECT_EQ(names(*crashes), (QStringList{"_usr_bin_vlc.1000.crash", "empty.crash"}));
    EXPECT_EQ(crashes->items.last().size, 0);
    EXPECT_EQ(crashes->items.last().risk, RiskLevel::safe);

    EXPECT_EQ(cache("home/.config/session/vlc_10d2")->detail, SmartScanTexts::savedState());
    EXPECT_EQ(cache("home/.config/session/vlc_10d2")->risk, RiskLevel::safe);
    EXPECT_EQ(cache("home/.config/session/chromium_77")->detail, SmartScanTexts::savedStateInUse());
    EXPECT_EQ(cache("home/.config/session/mystery_1")->detail, SmartScanTexts::savedStateUnrecognised());

    const ScanGroup* broken = group(groups, SmartScanTexts::brokenItemsTitle());
    ASSERT_TRUE(broken);
    EXPECT_EQ(
        names(*broken), (QStringList{"dangling", "chain", "old", "one-level-down", "sync.service", "noprog.desktop"}));
    EXPECT_EQ(broken->items[0].detail, QStringLiteral("Broken symlink → /nowhere/at/all"));
    EXPECT_EQ(broken->items[0].size, 0);
    EXPECT_EQ(broken->items[0].risk, RiskLevel::safe);
    EXPECT_EQ(broken->items[2].detail, QStringLiteral("Broken symlink → ../missing-tool"));
    EXPECT_EQ(broken->items[4].detail, SmartScanTexts::startupProgramMissing());
    EXPECT_EQ(broken->items[4].risk, RiskLevel::caution);
    EXPECT_GT(broken->items[4].size, 0);
    EXPECT_EQ(broken->items[5].detail, SmartScanTexts::startupProgramMissing());

    const ScanPulse::Snapshot progress = pulse.snapshot();
    EXPECT_GT(progress.files, 20);
    EXPECT_GT(progress.bytes, 7000);
}

TEST(SmartScanRules, UnreadableAndMissingFoldersContributeNothing)
{
    FixtureTree tree;
    tree.write(QStringLiteral("home/.cache/vlc/a"), QByteArray(10, 'x'));
    tree.write(QStringLiteral("home/.cache/locked/a"), QByteArray(10, 'x'));
    QFile::setPermissions(tree.path(QStringLiteral("home/.cache/locked")), QFileDevice::Permissions());
    SmartScanInput input;
    input.locations = locationsIn(tree); // most of these folders do not exist
    input.locations.crashFolders << tree.path(QStringLiteral("no/such/folder"));
    input.owners = owners({QStringLiteral("vlc")});
    ScanPulse pulse;
    QList<ScanGroup> groups;
    {
        // Root would read the locked folder anyway.
        FileAccessChecksEnforced asAnyoneElse;
        groups = runSmartScan(input, pulse, {});
    }
    QFile::setPermissions(tree.path(QStringLiteral("home/.cache/locked")),
        QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    // The locked folder measures as nothing, so it is not listed; the scan goes on with the next entry.
    ASSERT_EQ(groups.size(), 1);
    ASSERT_EQ(groups.first().items.size(), 1);
    EXPECT_EQ(groups.first().items.first().url.toLocalFile(), tree.path(QStringLiteral("home/.cache/vlc")));
}

TEST(SmartScanRules, NamesThatAreNotUtf8AreLeftOutAndLoggedNeverTakenForAnotherName)
{
    FixtureTree tree;
    tree.makeFolder(QStringLiteral("home/.cache"));
    tree.makeFolder(QStringLiteral("home/.config/systemd/user"));
    const QByteArray cache = QFile::encodeName(tree.path(QStringLiteral("home/.cache")));
    // "app\xff" decodes to the name of the other folder, "app\xef\xbf\xbd".
    ASSERT_TRUE(makeFolderNamedBytes(cache + "/app\xff"));
    ASSERT_TRUE(writeFileNamedBytes(cache + "/app\xff/data", QByteArray(10'000, 'x')));
    ASSERT_TRUE(makeFolderNamedBytes(cache + "/app\xef\xbf\xbd"));
    ASSERT_TRUE(writeFileNamedBytes(cache + "/app\xef\xbf\xbd/data", QByteArray(100, 'x')));
    const QByteArray units = QFile::encodeName(tree.path(QStringLiteral("home/.config/systemd/user")));
    ASSERT_TRUE(writeFileNamedBytes(units + "/svc\xff.service", "[Service]\nExecStart=/bin/sh\n"));
    ASSERT_TRUE(writeFileNamedBytes(units + "/svc\xef\xbf\xbd.service", "[Service]\nExecStart=/opt/gone/svc\n"));
    // A place that is a link to where the cache really is, as when a cache folder is moved to another disk.
    tree.write(QStringLiteral("moved-cache/vlc/a"), QByteArray(10, 'x'));
    ASSERT_TRUE(QFile::link(tree.path(QStringLiteral("moved-cache")), tree.path(QStringLiteral("cache-link"))));
    SmartScanInput input;
    input.locations = locationsIn(tree);
    input.locations.cacheFolders << tree.path(QStringLiteral("cache-link"));
    input.owners = owners({QStringLiteral("vlc")});

    const LogCapture log;
    ScanPulse pulse;
    const QList<ScanGroup> groups = runSmartScan(input, pulse, {});
    const ScanGroup* caches = group(groups, SmartScanTexts::appCachesTitle());
    ASSERT_TRUE(caches);
    EXPECT_EQ(names(*caches), QStringList({QStringLiteral("app\uFFFD"), QStringLiteral("vlc")}));
    const std::optional<ScanItem> replacement = item(groups, tree.path(QStringLiteral("home/.cache/app\uFFFD")));
    ASSERT_TRUE(replacement);
    EXPECT_EQ(replacement->size, 100);
    EXPECT_TRUE(item(groups, tree.path(QStringLiteral("cache-link/vlc"))));
    const ScanGroup* broken = group(groups, SmartScanTexts::brokenItemsTitle());
    ASSERT_TRUE(broken);
    EXPECT_EQ(names(*broken), QStringList({QStringLiteral("svc\uFFFD.service")}));
    EXPECT_TRUE(log.contains(QStringLiteral("smart scan left out a name that is not UTF-8 path=\"%1/app\\\\xFF\"")
                                 .arg(tree.path(QStringLiteral("home/.cache")))));
}

TEST(SmartScanRules, CancellationReturnsWhatWasFoundSoFar)
{
    FixtureTree tree;
    for (int app = 0; app < 40; ++app)
        for (int file = 0; file < 50; ++file)
            tree.write(QStringLiteral("home/.cache/app%1/f%2").arg(app).arg(file), QByteArray(100, 'x'));
    tree.write(QStringLiteral("crash/late.crash"), "x");
    SmartScanInput input;
    input.locations = locationsIn(tree);
    input.owners = owners();

    ScanPulse untouched;
    std::stop_source before;
    before.request_stop();
    EXPECT_TRUE(runSmartScan(input, untouched, before.get_token()).isEmpty());

    ScanPulse pulse;
    std::stop_source midway;
    std::jthread canceller([&] {
        while (pulse.snapshot().files < 100)
            std::this_thread::yield();
        midway.request_stop();
    });
    const QList<ScanGroup> groups = runSmartScan(input, pulse, midway.get_token());
    canceller.join();
    // The stop comes after at least two caches were measured. Either it came in time and no later group
    // was made, or (on a busy machine) the scan had already finished and everything is there. An entry
    // cut short by the stop is dropped, so every item found is whole.
    ASSERT_FALSE(groups.isEmpty());
    EXPECT_EQ(groups.first().title, SmartScanTexts::appCachesTitle());
    EXPECT_GE(groups.first().items.size(), 2);
    for (const ScanItem& found : groups.first().items)
        EXPECT_EQ(found.size, 5000);
    if (groups.size() > 1) {
        EXPECT_EQ(groups.first().items.size(), 40);
        EXPECT_EQ(groups.last().title, SmartScanTexts::crashReportsTitle());
    }
}

TEST(SmartScanRules, ATreeThatChangesMidScanNeverBreaksTheScan)
{
    FixtureTree tree;
    for (int app = 0; app < 20; ++app)
        for (int file = 0; file < 100; ++file)
            tree.write(QStringLiteral("home/.cache/app%1/f%2").arg(app).arg(file), QByteArray(10, 'x'));
    SmartScanInput input;
    input.locations = locationsIn(tree);
    input.owners = owners();

    std::atomic<bool> done = false;
    std::jthread churn([&] {
        // Whole folders vanish and reappear while the scan lists and measures them.
        for (int round = 0; !done; ++round) {
            const QString folder = tree.path(QStringLiteral("home/.cache/app%1").arg(round % 20));
            QDir(folder).removeRecursively();
            tree.write(QStringLiteral("home/.cache/app%1/new").arg(round % 20), QByteArray(10, 'x'));
        }
    });
    for (int run = 0; run < 5; ++run) {
        ScanPulse pulse;
        const QList<ScanGroup> groups = runSmartScan(input, pulse, {});
        ASSERT_LE(groups.size(), 1);
        for (const ScanItem& found : groups.value(0).items)
            EXPECT_GE(found.size, 1);
    }
    done = true;
}

TEST(LaunchAgentInfo, ReadsUnitsAndAutostartEntries)
{
    FixtureTree tree;
    const auto unit = readLaunchAgent(tree.write(QStringLiteral("sync.service"),
        "[Service]\nExecStart=@/opt/gone/syncd syncd "
        "--daemon\nRestart=on-failure\n[Install]\nWantedBy=default.target\n"));
    ASSERT_TRUE(unit);
    EXPECT_EQ(unit->label, QStringLiteral("sync.service"));
    EXPECT_EQ(unit->program, QStringLiteral("/opt/gone/syncd"));
    EXPECT_TRUE(unit->runAtLoad);
    EXPECT_TRUE(unit->keepAlive);
    EXPECT_TRUE(unit->broken);

    const auto none = readLaunchAgent(tree.write(QStringLiteral("none.service"), "[Unit]\nDescription=x\n"));
    ASSERT_TRUE(none);
    EXPECT_EQ(none->program, QStringLiteral("(no program)"));
    EXPECT_TRUE(none->broken);

    const auto autostart = readLaunchAgent(tree.write(QStringLiteral("a.desktop"),
        "[Desktop Entry]\nName=Shell helper\nExec=sh -c 'true'\nX-GNOME-Autostart-enabled=false\n"));
    ASSERT_TRUE(autostart);
    EXPECT_EQ(autostart->label, QStringLiteral("Shell helper"));
    EXPECT_EQ(autostart->program, QStringLiteral("sh"));
    EXPECT_FALSE(autostart->runAtLoad);
    EXPECT_FALSE(autostart->broken);

    EXPECT_FALSE(readLaunchAgent(tree.write(QStringLiteral("off.desktop"), "[Desktop Entry]\nHidden=true\n")));
    EXPECT_FALSE(readLaunchAgent(tree.write(QStringLiteral("notes.txt"), "x")));
    EXPECT_FALSE(readLaunchAgent(tree.path(QStringLiteral("vanished.service"))));
}
