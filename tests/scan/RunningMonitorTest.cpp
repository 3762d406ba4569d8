#include "TestSupport.h"

#include "apps/AppInventory.h"
#include "platform/ProcessTable.h"
#include "scan/RunningMonitor.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

namespace {

InstalledApp app(const char* bundleID, const char* executable, const char* programPath = "")
{
    InstalledApp app;
    app.bundleID = QString::fromUtf8(bundleID);
    app.executableName = QString::fromUtf8(executable);
    app.programPath = QString::fromUtf8(programPath);
    return app;
}

} // namespace

TEST(RunningMonitor, MatchesProcessesToInstalledApps)
{
    const QList<ProcessInfo> processes{
        {QStringLiteral("/usr/bin/vlc"), QStringLiteral("vlc"), {}},
        {QStringLiteral("/opt/google/chrome/chrome"), QStringLiteral("/opt/google/chrome/chrome"), {}},
        {QStringLiteral("/usr/bin/bwrap"), QStringLiteral("bwrap"), QStringLiteral("org.Mozilla.Firefox")},
        {QStringLiteral("/usr/bin/bash"), QStringLiteral("-bash"), {}},
    };
    const QList<InstalledApp> apps{app("vlc", "vlc"),
        app("google-chrome", "google-chrome-stable", "/opt/google/chrome/google-chrome"),
        app("org.mozilla.firefox", ""), app("org.gnome.gedit", "gedit", "/usr/bin/gedit"),
        // Sharing /usr/bin with bash says nothing about this app.
        app("editor", "editor", "/usr/bin/editor")};
    const QSet<QString> running = RunningMonitor::identifiersOf(processes, apps);
    EXPECT_TRUE(running.contains(QStringLiteral("vlc")));
    EXPECT_TRUE(running.contains(QStringLiteral("google-chrome")));
    EXPECT_TRUE(running.contains(QStringLiteral("google-chrome-stable")));
    EXPECT_TRUE(running.contains(QStringLiteral("chrome")));
    EXPECT_TRUE(running.contains(QStringLiteral("org.mozilla.firefox")));
    EXPECT_TRUE(running.contains(QStringLiteral("bash")));
    EXPECT_FALSE(running.contains(QStringLiteral("org.gnome.gedit")));
    EXPECT_FALSE(running.contains(QStringLiteral("editor")));
    EXPECT_FALSE(running.contains(QString()));
}

TEST(RunningMonitor, ReadsTheProcessTable)
{
    // A fixture table: a Flatpak app's process and one that ended while it was read.
    FixtureTree proc;
    proc.write(QStringLiteral("4242/cmdline"), QByteArray("/app/bin/firefox\0-new-window\0", 29));
    proc.write(QStringLiteral("4242/cgroup"),
        "0::/user.slice/user-1000.slice/user@1000.service/app.slice/app-flatpak-org.mozilla.firefox-123456.scope\n");
    QFile::link(QStringLiteral("/app/bin/firefox"), proc.path(QStringLiteral("4242/exe")));
    proc.makeFolder(QStringLiteral("4343"));
    proc.makeFolder(QStringLiteral("self-not-a-pid"));
    const QList<ProcessInfo> fixture = listProcesses(proc.path());
    ASSERT_EQ(fixture.size(), 1);
    EXPECT_EQ(fixture.first().flatpakAppID, QStringLiteral("org.mozilla.firefox"));
    EXPECT_EQ(fixture.first().executablePath, QStringLiteral("/app/bin/firefox"));
    EXPECT_EQ(fixture.first().firstArgument, QStringLiteral("/app/bin/firefox"));

    // The real table, with a child process of ours that the monitor must see come and go.
    // A copy of sleep under a name no other process on the machine has.
    FixtureTree bin;
    const QString name = QStringLiteral("velloru-sleeper-%1").arg(QCoreApplication::applicationPid());
    const QString program = bin.path(name);
    ASSERT_TRUE(QFile::copy(QStandardPaths::findExecutable(QStringLiteral("sleep")), program));
    AppInventory inventory([] { return AppSources{}; });
    RunningMonitor monitor(inventory);
    EXPECT_FALSE(monitor.isRunning(name));
    QProcess child;
    child.start(program, {QStringLiteral("30")});
    ASSERT_TRUE(child.waitForStarted());
    monitor.refresh();
    EXPECT_TRUE(monitor.isRunning(name.toUpper()));
    child.kill();
    child.waitForFinished();
    monitor.refresh();
    EXPECT_FALSE(monitor.isRunning(name));
}
