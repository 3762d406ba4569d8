#include "AppTestSupport.h"

#include "apps/AppCollector.h"

#include <gtest/gtest.h>

#include <QFile>

namespace {

const InstalledApp* find(const QList<InstalledApp>& apps, const QString& bundleID)
{
    for (const InstalledApp& app : apps)
        if (app.bundleID == bundleID)
            return &app;
    return nullptr;
}

} // namespace

// A user folder, a system folder and a Flatpak export folder, in that precedence.
class AppCollectorTest : public ::testing::Test {
protected:
    FixtureTree tree;
    QString user = tree.makeFolder(QStringLiteral("home/.local/share/applications"));
    QString system = tree.makeFolder(QStringLiteral("usr/share/applications"));
    QString flatpak = tree.makeFolder(QStringLiteral("flatpak/exports/share/applications"));
    QString program = tree.write(QStringLiteral("bin/tool"), QByteArray(1234, 'x'));

    AppSources sources() const
    {
        AppSources sources;
        sources.applicationFolders = {user, system, flatpak};
        sources.storeFolders = {flatpak};
        return sources;
    }
};

TEST_F(AppCollectorTest, ListsEachAppOnceWithTheHighestPrecedenceEntry)
{
    tree.write(QStringLiteral("usr/share/applications/vlc.desktop"), appEntry("VLC system", "vlc %U"));
    tree.write(QStringLiteral("home/.local/share/applications/vlc.desktop"), appEntry("VLC mine", "vlc %U"));
    // The user hid the system's editor; a corrupt user file hides nothing.
    tree.write(QStringLiteral("usr/share/applications/gedit.desktop"), appEntry("Editor", "gedit"));
    tree.write(QStringLiteral("home/.local/share/applications/gedit.desktop"), "[Desktop Entry]\nHidden=true\n");
    tree.write(QStringLiteral("usr/share/applications/calc.desktop"), appEntry("Calculator", "calc"));
    tree.write(
        QStringLiteral("home/.local/share/applications/calc.desktop"), QByteArray("\x7f\x45\x4c\x46\x00\x01", 6));
    // One file reached through two names is one app.
    QFile::link(system + QStringLiteral("/calc.desktop"), flatpak + QStringLiteral("/calc-again.desktop"));
    // A sub-folder becomes part of the desktop-file id.
    tree.write(QStringLiteral("usr/share/applications/kde/konsole.desktop"), appEntry("Konsole", "konsole"));

    const QList<InstalledApp> apps = collectInstalledApps(sources());
    ASSERT_EQ(apps.size(), 3);
    ASSERT_TRUE(find(apps, QStringLiteral("vlc")));
    EXPECT_EQ(find(apps, QStringLiteral("vlc"))->name, QStringLiteral("VLC mine"));
    EXPECT_EQ(find(apps, QStringLiteral("vlc"))->executableName, QStringLiteral("vlc"));
    EXPECT_FALSE(find(apps, QStringLiteral("gedit")));
    ASSERT_TRUE(find(apps, QStringLiteral("calc")));
    EXPECT_EQ(find(apps, QStringLiteral("calc"))->id,
        QFileInfo(system + QStringLiteral("/calc.desktop")).canonicalFilePath());
    EXPECT_FALSE(find(apps, QStringLiteral("calc-again")));
    EXPECT_TRUE(find(apps, QStringLiteral("kde-konsole")));
}

TEST_F(AppCollectorTest, EntriesThatAreNotAppsNeverEnter)
{
    tree.write(QStringLiteral("usr/share/applications/hidden.desktop"), appEntry("Hidden", "x", "NoDisplay=true\n"));
    tree.write(QStringLiteral("usr/share/applications/link.desktop"), "[Desktop Entry]\nType=Link\nName=Web\nURL=x\n");
    tree.write(
        QStringLiteral("usr/share/applications/gone.desktop"), appEntry("Gone", "gone", "TryExec=/nowhere/gone\n"));
    tree.write(QStringLiteral("usr/share/applications/us.ambertrell.Velloru.desktop"), appEntry("Velloru", "velloru"));
    tree.write(QStringLiteral("usr/share/applications/build/product.desktop"), appEntry("Product", "product"));
    // Entries that lead into the Trash or into a running AppImage's mounted bundle.
    const QString trashed
        = tree.write(QStringLiteral("home/.local/share/Trash/files/old.desktop"), appEntry("Old", "old"));
    QFile::link(trashed, user + QStringLiteral("/old.desktop"));
    const QString bundled = tree.write(QStringLiteral("tmp/.mount_AppXYZ/app.desktop"), appEntry("Inner", "inner"));
    QFile::link(bundled, user + QStringLiteral("/inner.desktop"));
    tree.write(QStringLiteral("usr/share/applications/real.desktop"), appEntry("Real", "real"));

    const QList<InstalledApp> apps = collectInstalledApps(sources());
    ASSERT_EQ(apps.size(), 1);
    EXPECT_EQ(apps.first().name, QStringLiteral("Real"));
}

TEST_F(AppCollectorTest, SourceVendorNameAndSizeAreReadFromTheEntry)
{
    qputenv("LANG", "de_DE.UTF-8");
    tree.write(QStringLiteral("flatpak/exports/share/applications/org.mozilla.firefox.desktop"),
        appEntry("Firefox", "/usr/bin/flatpak run --branch=stable org.mozilla.firefox @@u %u @@",
            "X-Flatpak=org.mozilla.firefox\nName[de]=Feuerfuchs\n"));
    const QString packaged = tree.write(QStringLiteral("usr/share/applications/tool.desktop"),
        appEntry("Tool", "env LANG=C " + program.toUtf8() + " %F"));
    const QString thirdParty = tree.write(QStringLiteral("usr/share/applications/chrome.desktop"),
        appEntry("Chrome", "/opt/google/chrome/google-chrome"));
    tree.write(QStringLiteral("home/.local/share/applications/mine.desktop"),
        "[Desktop Entry]\nType=Application\nExec=mine\n");

    AppSources withPackages = sources();
    withPackages.packagedEntries = {packaged, thirdParty};
    const QList<InstalledApp> apps = collectInstalledApps(withPackages);
    qunsetenv("LANG");

    const InstalledApp* firefox = find(apps, QStringLiteral("org.mozilla.firefox"));
    ASSERT_TRUE(firefox);
    EXPECT_EQ(firefox->name, QStringLiteral("Feuerfuchs"));
    EXPECT_EQ(firefox->source, AppSource::appStore);
    EXPECT_EQ(firefox->vendor, QStringLiteral("mozilla.org"));
    EXPECT_TRUE(firefox->executableName.isEmpty()); // "flatpak" says nothing about the app

    const InstalledApp* tool = find(apps, QStringLiteral("tool"));
    ASSERT_TRUE(tool);
    EXPECT_EQ(tool->source, AppSource::system);
    EXPECT_EQ(tool->executableName, QStringLiteral("tool"));
    EXPECT_EQ(tool->size, 1234);
    EXPECT_FALSE(tool->vendor);
    EXPECT_FALSE(tool->isProtected); // not under /usr on this machine's real root

    // A program under /opt means a third-party repository, even when it cannot be found here.
    ASSERT_TRUE(find(apps, QStringLiteral("chrome")));
    EXPECT_EQ(find(apps, QStringLiteral("chrome"))->source, AppSource::developerID);

    const InstalledApp* mine = find(apps, QStringLiteral("mine"));
    ASSERT_TRUE(mine);
    EXPECT_EQ(mine->name, QStringLiteral("mine"));
    EXPECT_EQ(mine->source, AppSource::unsignedApp);
    EXPECT_EQ(appSourceName(mine->source), QStringLiteral("unsigned"));
}
