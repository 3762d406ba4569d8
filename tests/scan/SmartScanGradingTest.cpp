#include "SessionManagers.h"

#include "scan/SmartScanSession.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <unistd.h>

namespace {

// A home whose finds cover every grade the rules give, reviewed by a real session: real installed apps
// (desktop entries), a really running one (a process of its own) and real files.
struct GradingHome : SessionManagers {
    QProcess runningApp;
    std::unique_ptr<SmartScanSession> session;

    GradingHome()
    {
        const auto app = [this](const char* id, const QString& exec) {
            tree.write(QStringLiteral("applications/%1.desktop").arg(QString::fromUtf8(id)),
                "[Desktop Entry]\nType=Application\nName=" + QByteArray(id) + "\nExec=" + exec.toUtf8() + "\n");
        };
        // A program of its own name, so that "running" can only mean this process.
        const QString program = tree.path(QStringLiteral("bin/vgrade-running"));
        QDir().mkpath(QFileInfo(program).path());
        QFile::copy(QStringLiteral("/bin/sleep"), program);
        runningApp.start(program, {QStringLiteral("120")});
        app("com.example.Editor", QStringLiteral("editor"));
        app("vlc", QStringLiteral("vlc %U"));
        app("com.example.Running", program);
    }

    ~GradingHome()
    {
        runningApp.kill();
        runningApp.waitForFinished();
    }

    QString file(const char* relative, qint64 size)
    {
        return tree.write(QString::fromUtf8(relative), QByteArray(size, 'x'));
    }

    // Scans with a session of its own; false when the results never came.
    bool review(SmartScanLocations locations)
    {
        session = std::make_unique<SmartScanSession>(inventory, running, trasher, audit, std::move(locations));
        session->scan();
        return QTest::qWaitFor([&] { return std::holds_alternative<ScanPhase::Results>(session->phase()); }, 30'000);
    }

    SmartScanLocations locations() const
    {
        SmartScanLocations locations;
        locations.cacheFolders = {tree.path(QStringLiteral("cache"))};
        locations.logSources = {{tree.path(QStringLiteral("state")), {QStringLiteral("*.log")}}};
        locations.crashFolders = {tree.path(QStringLiteral("crash"))};
        locations.crashOwner = ::getuid();
        locations.savedStateFolders = {tree.path(QStringLiteral("session"))};
        locations.linkPlaces = {{tree.path(QStringLiteral("links")), 1}};
        locations.startupFolders = {tree.path(QStringLiteral("units"))};
        return locations;
    }

    std::optional<ScanItem> find(const QString& path) const
    {
        for (const ScanGroup& group : session->groups())
            for (const ScanItem& item : group.items)
                if (item.url.toLocalFile() == path)
                    return item;
        return std::nullopt;
    }
};

struct Grade {
    const char* path; // below the fixture tree
    const char* detail;
    RiskLevel risk;
};

} // namespace

TEST(SmartScanGrading, EveryOwnerCodeAndKindOfFindGetsItsGradeAndOnlySafeOnesStartTicked)
{
    GradingHome home;
    ASSERT_TRUE(home.runningApp.waitForStarted()) << "cannot start a copy of /bin/sleep";

    // Caches, one per owner code.
    home.file("cache/com.example.Editor/data", 100);       // 0: installed, not running
    home.file("cache/vlc/art", 100);                       // 0: a plain name an installed app goes by
    home.file("cache/org.freedesktop.portal/x", 100);      // 1: the desktop's own
    home.file("cache/com.example.Running.helper/x", 100);  // 2: its owner is running
    home.file("cache/vgrade-running/x", 100);              // 2: a running program's name
    home.file("cache/us.ambertrell.Velloru.agent/x", 100); // 2: extends Velloru's own identifier
    home.file("cache/fontconfig/x", 100);                  // 3: not an identifier
    home.file("cache/io.github.removed/x", 100);           // 4: an identifier nothing installed claims
    home.file("cache/thumbnails/normal/a.png", 100);
    home.file("state/app.log", 100);
    home.file("crash/_usr_bin_vlc.crash", 100);
    // Saved window states, one per owner code.
    home.file("session/com.example.Editor_1a", 10);
    home.file("session/org.freedesktop.Shell_2b", 10);
    home.file("session/vgrade-running_3c", 10);
    home.file("session/mystery_4d", 10);
    home.file("session/io.github.removed_5e", 10);
    // Broken items.
    home.tree.makeFolder(QStringLiteral("links"));
    QFile::link(QStringLiteral("/nowhere"), home.tree.path(QStringLiteral("links/dangling")));
    home.tree.write(QStringLiteral("units/gone.service"), "[Service]\nExecStart=/opt/gone/daemon\n");

    ASSERT_TRUE(home.review(home.locations()));

    const Grade grades[] = {
        {"cache/com.example.Editor", "Cache — app installed and not running", RiskLevel::safe},
        {"cache/vlc", "Cache — app installed and not running", RiskLevel::safe},
        {"cache/org.freedesktop.portal", "System cache — review before removing", RiskLevel::caution},
        {"cache/com.example.Running.helper", "App or background service is running — quit it first",
            RiskLevel::caution},
        {"cache/vgrade-running", "App or background service is running — quit it first", RiskLevel::caution},
        {"cache/us.ambertrell.Velloru.agent", "App or background service is running — quit it first",
            RiskLevel::caution},
        {"cache/fontconfig", "Shared cache folder — review before removing", RiskLevel::caution},
        {"cache/io.github.removed", "No installed app claims this — review before removing", RiskLevel::caution},
        {"cache/thumbnails", "Thumbnail cache — your desktop rebuilds it on demand", RiskLevel::safe},
        {"state/app.log", "Log", RiskLevel::caution},
        {"crash/_usr_bin_vlc.crash", "Crash report", RiskLevel::safe},
        {"session/com.example.Editor_1a", "Saved window state", RiskLevel::safe},
        {"session/org.freedesktop.Shell_2b", "System window state — review before removing", RiskLevel::caution},
        {"session/vgrade-running_3c", "App is running — quit it first", RiskLevel::caution},
        {"session/mystery_4d", "Unrecognised window state — review before removing", RiskLevel::caution},
        {"session/io.github.removed_5e", "No installed app claims this — review before removing", RiskLevel::caution},
        {"links/dangling", "Broken symlink → /nowhere", RiskLevel::safe},
        {"units/gone.service", "Startup item — program missing", RiskLevel::caution},
    };
    qsizetype listed = 0;
    for (const Grade& expected : grades) {
        SCOPED_TRACE(expected.path);
        const std::optional<ScanItem> item = home.find(home.tree.path(QString::fromUtf8(expected.path)));
        ASSERT_TRUE(item);
        EXPECT_EQ(item->detail.toStdString(), expected.detail);
        EXPECT_EQ(riskName(item->risk).toStdString(), riskName(expected.risk).toStdString());
        EXPECT_EQ(home.session->selection().isTicked(item->id), expected.risk == RiskLevel::safe);
        ++listed;
    }
    qsizetype found = 0;
    for (const ScanGroup& group : home.session->groups())
        found += group.items.size();
    EXPECT_EQ(found, listed) << "a find the table does not grade";
}

TEST(SmartScanGrading, ACrashReportOfAnotherUserIsNeverOffered)
{
    if (!runningAsRoot())
        GTEST_SKIP() << "needs root to give a crash report to another user";
    GradingHome home;
    const QString own = home.file("crash/_usr_bin_mine.1000.crash", 100);
    const QString theirs = home.file("crash/_usr_bin_theirs.65534.crash", 100);
    ASSERT_EQ(::chown(QFile::encodeName(theirs).constData(), 65534, 65534), 0);

    ASSERT_TRUE(home.review(home.locations()));
    const std::optional<ScanItem> mine = home.find(own);
    ASSERT_TRUE(mine);
    EXPECT_EQ(mine->risk, RiskLevel::safe);
    EXPECT_TRUE(home.session->selection().isTicked(mine->id));
    EXPECT_FALSE(home.find(theirs)) << "another user's crash report was offered";
}
