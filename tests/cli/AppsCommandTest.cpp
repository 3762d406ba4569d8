#include "ProgramHome.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QJsonObject appNamed(const QJsonArray& apps, const QString& name)
{
    for (const QJsonValue app : apps)
        if (app[QStringLiteral("name")].toString() == name)
            return app.toObject();
    return {};
}

} // namespace

TEST(AppsCommand, ListsTheInstalledAppsByNameWithTheirSources)
{
    ProgramHome home;
    home.tree().write(QStringLiteral("share/applications/vlc.desktop"),
        "[Desktop Entry]\nType=Application\nName=VLC media player\nExec=/usr/bin/vlc --started-from-file %U\n");
    home.tree().write(QStringLiteral("share/applications/org.mozilla.firefox.desktop"),
        "[Desktop Entry]\nType=Application\nName=Firefox\nName[de]=Feuerfuchs\nExec=env MOZ_X=1 firefox %u\n");
    home.tree().write(QStringLiteral("share/applications/settings-daemon.desktop"),
        "[Desktop Entry]\nType=Application\nName=Settings Daemon\nExec=sd\nNoDisplay=true\n");
    home.tree().write(QStringLiteral("home/.local/share/applications/my-script.desktop"),
        "[Desktop Entry]\nType=Application\nName=A script of mine\nExec=my-script\n");
    home.tree().write(QStringLiteral("home/.local/share/flatpak/exports/share/applications/org.gnome.Maps.desktop"),
        "[Desktop Entry]\nType=Application\nName=Maps\nExec=/usr/bin/flatpak run org.gnome.Maps\n"
        "X-Flatpak=org.gnome.Maps\n");
    const QList<QPair<QString, QString>> german{{QStringLiteral("LC_ALL"), QStringLiteral("de_DE.UTF-8")}};

    const CommandRun listing = home.run({QStringLiteral("apps"), QStringLiteral("--json")}, german);
    ASSERT_EQ(listing.status, 0) << listing.err.toStdString();
    const QJsonArray apps = QJsonDocument::fromJson(listing.out.toUtf8()).array();
    QStringList names;
    for (const QJsonValue app : apps)
        names << app[QStringLiteral("name")].toString();
    // Sorted by name; the hidden entry is no app; the name is the one for the user's language.
    EXPECT_TRUE(names.contains(QStringLiteral("Feuerfuchs")));
    EXPECT_FALSE(names.contains(QStringLiteral("Settings Daemon")));
    QStringList sorted = names;
    std::sort(
        sorted.begin(), sorted.end(), [](const QString& a, const QString& b) { return a.localeAwareCompare(b) < 0; });
    EXPECT_EQ(names, sorted);

    const QJsonObject firefox = appNamed(apps, QStringLiteral("Feuerfuchs"));
    EXPECT_EQ(firefox[QStringLiteral("bundleID")].toString(), QStringLiteral("org.mozilla.firefox"));
    EXPECT_EQ(firefox[QStringLiteral("vendor")].toString(), QStringLiteral("mozilla.org"));
    EXPECT_EQ(firefox[QStringLiteral("source")].toString(), QStringLiteral("unsigned"));
    const QJsonObject maps = appNamed(apps, QStringLiteral("Maps"));
    EXPECT_EQ(maps[QStringLiteral("bundleID")].toString(), QStringLiteral("org.gnome.Maps"));
    EXPECT_EQ(maps[QStringLiteral("source")].toString(), QStringLiteral("appStore"));
    const QJsonObject vlc = appNamed(apps, QStringLiteral("VLC media player"));
    EXPECT_TRUE(vlc[QStringLiteral("vendor")].isNull());
    EXPECT_EQ(vlc[QStringLiteral("id")].toString(), home.tree().path(QStringLiteral("share/applications/vlc.desktop")));
    EXPECT_FALSE(appNamed(apps, QStringLiteral("A script of mine")).isEmpty());

    // The table says the same, one row per app, and counts them.
    const CommandRun table = home.run({QStringLiteral("apps")}, german);
    ASSERT_EQ(table.status, 0);
    EXPECT_TRUE(table.out.startsWith(QStringLiteral("Name"))) << table.out.toStdString();
    EXPECT_TRUE(table.out.contains(QStringLiteral("org.gnome.Maps")));
    EXPECT_TRUE(table.out.contains(QStringLiteral("firefox"))); // the program, read past "env VAR=value"
    EXPECT_TRUE(table.out.endsWith(QStringLiteral("\n%1 apps.\n").arg(apps.size()))) << table.out.toStdString();

    const CommandRun wrong = home.run({QStringLiteral("apps"), QStringLiteral("--all")});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_TRUE(wrong.err.contains(QStringLiteral("unknown option “--all”"))) << wrong.err.toStdString();
}
