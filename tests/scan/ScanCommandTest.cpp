#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

// A home of its own for the child process, with one installed app.
struct CommandHome {
    FixtureTree tree;

    CommandHome()
    {
        tree.write(QStringLiteral("share/applications/vlc.desktop"),
            "[Desktop Entry]\nType=Application\nName=VLC\nExec=vlc\n");
        tree.write(QStringLiteral("home/.cache/vlc/art"), QByteArray(3000, 'x'));
        tree.write(QStringLiteral("home/.cache/fontconfig/f"), QByteArray(2000, 'x'));
        tree.write(QStringLiteral("home/.local/state/sync.log"), QByteArray(100, 'x'));
        QFile::link(QStringLiteral("/nowhere/at/all"), tree.path(QStringLiteral("home/dangling")));
    }

    QString path(const char* relative) const { return tree.path(QString::fromUtf8(relative)); }

    CommandRun run(const QStringList& arguments) const
    {
        const QString home = path("home");
        return runVelloru(arguments,
            {{QStringLiteral("HOME"), home}, {QStringLiteral("XDG_CACHE_HOME"), home + QStringLiteral("/.cache")},
                {QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config")},
                {QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/.local/share")},
                {QStringLiteral("XDG_STATE_HOME"), home + QStringLiteral("/.local/state")},
                {QStringLiteral("XDG_DATA_DIRS"), path("share")}});
    }
};

QJsonObject parse(const QString& text)
{
    return QJsonDocument::fromJson(text.toUtf8()).object();
}

} // namespace

TEST(ScanCommand, ListsTheReviewAndCleansExactlyThePreTickedItems)
{
    CommandHome home;
    const CommandRun listing = home.run({QStringLiteral("scan"), QStringLiteral("--json")});
    ASSERT_EQ(listing.status, 0) << listing.err.toStdString();
    const QJsonObject review = parse(listing.out);
    QStringList groups;
    QStringList ticked;
    for (const QJsonValue group : review.value(QStringLiteral("groups")).toArray()) {
        groups << group[QStringLiteral("title")].toString();
        for (const QJsonValue item : group[QStringLiteral("items")].toArray()) {
            EXPECT_FALSE(item[QStringLiteral("detail")].toString().isEmpty());
            if (item[QStringLiteral("ticked")].toBool()) {
                EXPECT_EQ(item[QStringLiteral("risk")].toString(), QStringLiteral("safe"));
                ticked << QFileInfo(item[QStringLiteral("path")].toString()).fileName();
            }
        }
    }
    EXPECT_EQ(groups, (QStringList{"App Caches", "Logs", "Broken Items"}));
    EXPECT_EQ(ticked, (QStringList{"vlc", "dangling"}));
    EXPECT_EQ(review.value(QStringLiteral("tickedSize")).toInteger(), 3000);

    const CommandRun text = home.run({QStringLiteral("scan")});
    ASSERT_EQ(text.status, 0);
    EXPECT_TRUE(text.out.contains(QStringLiteral("App Caches — 5.0 kB")));
    EXPECT_TRUE(text.out.contains(QStringLiteral("Shared cache folder — review before removing")));
    EXPECT_TRUE(text.out.contains(QStringLiteral("Ticked: 2 items, 3.0 kB will move to the Trash.")));

    const CommandRun clean = home.run({QStringLiteral("scan"), QStringLiteral("--clean"), QStringLiteral("--json")});
    ASSERT_EQ(clean.status, 0) << clean.err.toStdString();
    const QJsonObject removal = parse(clean.out);
    QStringList moved;
    for (const QJsonValue item : removal.value(QStringLiteral("moved")).toArray())
        moved << item[QStringLiteral("path")].toString();
    EXPECT_EQ(moved, (QStringList{home.path("home/.cache/vlc"), home.path("home/dangling")}));
    EXPECT_TRUE(removal.value(QStringLiteral("failed")).toArray().isEmpty());
    EXPECT_EQ(removal.value(QStringLiteral("freed")).toInteger(), 3000);
    EXPECT_FALSE(QFileInfo::exists(home.path("home/.cache/vlc")));
    EXPECT_TRUE(QFileInfo::exists(home.path("home/.local/share/Trash/files/vlc/art")));
    EXPECT_TRUE(QFileInfo(home.path("home/.local/share/Trash/files/dangling")).isSymLink());
    EXPECT_TRUE(QFileInfo::exists(home.path("home/.cache/fontconfig/f")));
    EXPECT_TRUE(QFileInfo::exists(home.path("home/.local/state/sync.log")));
    EXPECT_TRUE(readWholeFile(home.path("home/.local/share/Velloru/audit-log.json")).contains("Smart Scan"));

    // Nothing safe is left, so a second clean moves nothing.
    const CommandRun again = home.run({QStringLiteral("scan"), QStringLiteral("--clean")});
    EXPECT_EQ(again.status, 0);
    EXPECT_TRUE(again.out.contains(QStringLiteral("Nothing selected")));

    EXPECT_EQ(home.run({QStringLiteral("scan"), QStringLiteral("--everything")}).status, 2);
}

TEST(ScanCommand, FindsBrokenLinksTwoLevelsIntoTheUsersOwnFoldersByTheirXdgNames)
{
    CommandHome home;
    // Downloads has a name of its own here, as in a French desktop; Desktop and Documents keep the default.
    home.tree.write(QStringLiteral("home/.config/user-dirs.dirs"), "XDG_DOWNLOAD_DIR=\"$HOME/Téléchargements\"\n");
    const auto link = [&home](const char* relative) {
        const QString path = home.path(relative);
        QDir().mkpath(QFileInfo(path).path());
        EXPECT_TRUE(QFile::link(QStringLiteral("/nowhere/at/all"), path));
        return path;
    };
    const QString inDownloads = link("home/Téléchargements/installers/setup");
    const QString onDesktop = link("home/Desktop/old-game");
    const QString inDocuments = link("home/Documents/report-link");
    // Three levels down is a tree of its own (a project, a photo library): not searched.
    link("home/Documents/projects/app/build-link");
    // A folder called Downloads that is not the user's download folder here is an ordinary folder of the home.
    link("home/Downloads/sub/stale");

    const CommandRun listing = home.run({QStringLiteral("scan"), QStringLiteral("--json")});
    ASSERT_EQ(listing.status, 0) << listing.err.toStdString();
    QStringList broken;
    for (const QJsonValue group : parse(listing.out).value(QStringLiteral("groups")).toArray())
        if (group[QStringLiteral("title")].toString() == QStringLiteral("Broken Items"))
            for (const QJsonValue item : group[QStringLiteral("items")].toArray())
                broken << item[QStringLiteral("path")].toString();
    broken.sort();
    QStringList expected{home.path("home/dangling"), inDownloads, onDesktop, inDocuments};
    expected.sort();
    EXPECT_EQ(broken, expected);
}
