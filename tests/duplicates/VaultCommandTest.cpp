#include "DuplicateFixtures.h"
#include "ProgramHome.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QJsonDocument jsonOf(const CommandRun& run)
{
    return QJsonDocument::fromJson(run.out.toUtf8());
}

} // namespace

// The whole round as a script would run it: find, move the ticked copies, list, check, put one back,
// empty the rest to the Trash.
TEST(VaultCommand, MovesListsVerifiesRestoresAndEmptiesFromTheCommandLine)
{
    ProgramHome home;
    const QString folder = home.path(QStringLiteral("stuff"));
    const QByteArray content = patternBytes(12'000, 40);
    const QString keeper = home.tree().write(QStringLiteral("home/stuff/k.bin"), content);
    const QString first = home.tree().write(QStringLiteral("home/stuff/x/a.bin"), content);
    const QString second = home.tree().write(QStringLiteral("home/stuff/y/b.bin"), content);

    const CommandRun moved
        = home.run({QStringLiteral("duplicates"), folder, QStringLiteral("--move-ticked"), QStringLiteral("--json")});
    ASSERT_EQ(moved.status, 0) << moved.err.toStdString();
    const QJsonObject result = jsonOf(moved).object();
    EXPECT_EQ(result[QStringLiteral("moved")].toArray().size(), 2);
    EXPECT_TRUE(result[QStringLiteral("failed")].toArray().isEmpty());
    EXPECT_TRUE(result[QStringLiteral("abortedBecause")].isNull());
    EXPECT_EQ(result[QStringLiteral("bytesHeld")].toInteger(), 24'000);
    EXPECT_FALSE(QFileInfo::exists(first));
    EXPECT_FALSE(QFileInfo::exists(second));

    const CommandRun listed = home.run({QStringLiteral("vault"), QStringLiteral("list"), QStringLiteral("--json")});
    ASSERT_EQ(listed.status, 0) << listed.err.toStdString();
    const QJsonArray entries = jsonOf(listed).object()[QStringLiteral("entries")].toArray();
    ASSERT_EQ(entries.size(), 2);
    const CommandRun table = home.run({QStringLiteral("vault"), QStringLiteral("list")});
    EXPECT_TRUE(table.out.contains(first)) << table.out.toStdString();

    const CommandRun checked = home.run({QStringLiteral("vault"), QStringLiteral("verify"), QStringLiteral("--json")});
    EXPECT_EQ(checked.status, 0) << checked.err.toStdString();
    for (const QJsonValue& value : jsonOf(checked).array())
        EXPECT_EQ(value[QStringLiteral("result")].toString(), QStringLiteral("keeperIntact"));

    // The start of an id is enough, as the list shows it.
    QString firstID;
    for (const QJsonValue& entry : entries)
        if (entry[QStringLiteral("originalPath")].toString() == first)
            firstID = entry[QStringLiteral("id")].toString();
    const CommandRun restored
        = home.run({QStringLiteral("vault"), QStringLiteral("restore"), firstID.left(8), QStringLiteral("--json")});
    ASSERT_EQ(restored.status, 0) << restored.err.toStdString();
    EXPECT_EQ(jsonOf(restored).object()[QStringLiteral("restored")].toInt(), 1);
    EXPECT_EQ(readWholeFile(first), content);

    // The kept copy gone: the check fails, and says why.
    ASSERT_TRUE(QFile::remove(keeper));
    const CommandRun failing = home.run({QStringLiteral("vault"), QStringLiteral("verify")});
    EXPECT_EQ(failing.status, 1);
    EXPECT_TRUE(failing.out.contains(QStringLiteral("this may be the only one left"))) << failing.out.toStdString();

    const CommandRun unconfirmed = home.run({QStringLiteral("vault"), QStringLiteral("empty")});
    EXPECT_EQ(unconfirmed.status, 2);
    EXPECT_TRUE(unconfirmed.err.contains(QStringLiteral("Move the vault to the Trash?")));
    const CommandRun emptied = home.run(
        {QStringLiteral("vault"), QStringLiteral("empty"), QStringLiteral("--yes"), QStringLiteral("--json")});
    ASSERT_EQ(emptied.status, 0) << emptied.err.toStdString();
    EXPECT_EQ(jsonOf(emptied).object()[QStringLiteral("moved")].toArray().size(), 1);
    EXPECT_EQ(jsonOf(emptied).object()[QStringLiteral("entriesLeft")].toInt(), 0);
    EXPECT_FALSE(QFileInfo::exists(home.path(QStringLiteral(".local/share/Velloru/Duplicates Vault"))));

    const CommandRun activity = home.run({QStringLiteral("activity")});
    EXPECT_TRUE(activity.out.contains(QStringLiteral("Moved to vault")));
    EXPECT_TRUE(activity.out.contains(QStringLiteral("Restored from vault")));
}

TEST(VaultCommand, BadUsageExitsWithTwo)
{
    ProgramHome home;
    for (const QStringList& arguments :
        {QStringList{QStringLiteral("vault")}, QStringList{QStringLiteral("vault"), QStringLiteral("shred")},
            QStringList{QStringLiteral("vault"), QStringLiteral("restore")},
            QStringList{QStringLiteral("vault"), QStringLiteral("list"), QStringLiteral("extra")},
            QStringList{QStringLiteral("vault"), QStringLiteral("list"), QStringLiteral("--yes")},
            QStringList{QStringLiteral("vault"), QStringLiteral("restore"), QStringLiteral("NOSUCHID")}}) {
        const CommandRun run = home.run(arguments);
        EXPECT_EQ(run.status, 2) << arguments.join(QLatin1Char(' ')).toStdString();
        EXPECT_FALSE(run.err.isEmpty());
    }
}

TEST(VaultCommand, ACopyThatCouldNotMoveMakesTheCommandExitWithOne)
{
    ProgramHome home;
    const QByteArray content = patternBytes(9'000, 41);
    home.tree().write(QStringLiteral("home/s/k.bin"), content);
    // Root may rename out of a read-only folder, so as root the copy sits on a read-only volume instead.
    std::optional<TmpfsMount> readOnly = runningAsRoot()
        ? TmpfsMount::mount(home.path(QStringLiteral("s/in")), QStringLiteral("size=4m"))
        : std::nullopt;
    if (runningAsRoot() && !readOnly)
        GTEST_SKIP() << "could not mount a tmpfs here (no CAP_SYS_ADMIN?), so no copy can be made unmovable.";
    const QString copy = home.tree().write(QStringLiteral("home/s/in/c.bin"), content);
    if (readOnly)
        ASSERT_TRUE(readOnly->remount(QStringLiteral("ro")));
    else
        ASSERT_TRUE(QFile::setPermissions(home.path(QStringLiteral("s/in")), QFile::ReadOwner | QFile::ExeOwner));

    const CommandRun run
        = home.run({QStringLiteral("duplicates"), home.path(QStringLiteral("s")), QStringLiteral("--move-ticked")});
    if (!readOnly)
        QFile::setPermissions(
            home.path(QStringLiteral("s/in")), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    EXPECT_EQ(run.status, 1) << run.out.toStdString();
    EXPECT_TRUE(run.out.contains(QStringLiteral("Not moved"))) << run.out.toStdString();
    EXPECT_TRUE(QFileInfo::exists(copy));
}
