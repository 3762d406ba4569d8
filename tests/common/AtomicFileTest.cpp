#include "common/AtomicFile.h"
#include "common/JsonFile.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonObject>

TEST(AtomicFile, CreatesMissingFoldersAndReplacesWholeFiles)
{
    FixtureTree tree;
    const QString path = tree.path(QStringLiteral("a/b/c/state.json"));
    EXPECT_FALSE(writeFileAtomically(path, "first"));
    EXPECT_FALSE(writeFileAtomically(path, "second, longer"));
    EXPECT_EQ(readWholeFile(path), "second, longer");
    // No temporary file is left beside it.
    EXPECT_EQ(QDir(tree.path(QStringLiteral("a/b/c"))).entryList(QDir::Files).size(), 1);
}

TEST(AtomicFile, AFullDiskKeepsTheOldContent)
{
    FixtureTree tree;
    auto disk = TmpfsMount::mount(tree.path(QStringLiteral("small")), QStringLiteral("size=64k"));
    if (!disk)
        GTEST_SKIP() << "needs root to mount a small tmpfs";
    const QString path = disk->path() + QStringLiteral("/state.json");
    ASSERT_FALSE(writeFileAtomically(path, "precious"));

    const auto problem = writeFileAtomically(path, QByteArray(256 * 1024, 'x'));
    ASSERT_TRUE(problem);
    EXPECT_TRUE(problem->contains(path)) << problem->toStdString();
    EXPECT_EQ(readWholeFile(path), "precious");
}

TEST(AtomicFile, AReadOnlyFolderIsAClearFailure)
{
    FixtureTree tree;
    auto disk = TmpfsMount::mount(tree.path(QStringLiteral("ro")), QStringLiteral("size=64k"));
    if (!disk)
        GTEST_SKIP() << "needs root to mount a read-only tmpfs";
    const QString path = disk->path() + QStringLiteral("/state.json");
    ASSERT_FALSE(writeFileAtomically(path, "kept"));
    ASSERT_TRUE(disk->remount(QStringLiteral("ro")));

    const auto problem = writeFileAtomically(path, "lost?");
    ASSERT_TRUE(problem);
    EXPECT_TRUE(problem->startsWith(QStringLiteral("Couldn’t write"))) << problem->toStdString();
    EXPECT_EQ(readWholeFile(path), "kept");
}

TEST(JsonFile, UnreadableFilesAreKeptAsideNeverOverwritten)
{
    FixtureTree tree;
    LogCapture log;
    EXPECT_EQ(loadJsonFile(tree.path(QStringLiteral("none.json"))).status, JsonLoad::Status::missing);

    const QString truncated = tree.write(QStringLiteral("state.json"), "[{\"id\": \"A\", \"si");
    EXPECT_EQ(loadJsonFile(truncated).status, JsonLoad::Status::setAside);
    EXPECT_FALSE(QFile::exists(truncated));
    const QStringList kept = QDir(tree.path()).entryList({QStringLiteral("state.json.unreadable-*")});
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(readWholeFile(tree.path(kept.first())), "[{\"id\": \"A\", \"si");
    EXPECT_TRUE(log.contains(QStringLiteral("Velloru: state file unusable, kept aside path=") + truncated));

    // A second bad file in the same second gets a name of its own.
    tree.write(QStringLiteral("state.json"), "not json");
    EXPECT_EQ(loadJsonFile(truncated).status, JsonLoad::Status::setAside);
    EXPECT_EQ(QDir(tree.path()).entryList({QStringLiteral("state.json.unreadable-*")}).size(), 2);

    tree.write(QStringLiteral("good.json"), "{\"a\": 1}");
    const JsonLoad good = loadJsonFile(tree.path(QStringLiteral("good.json")));
    EXPECT_EQ(good.status, JsonLoad::Status::loaded);
    EXPECT_EQ(good.document.object().value(u"a").toInt(), 1);
}
