#include "removal/TrashWatcher.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QSignalSpy>

TEST(TrashWatcher, CountsChangesIgnoresDsStoreAndSurvivesTheTrashBeingReplaced)
{
    FixtureTree tree;
    const QString trash = tree.makeFolder(QStringLiteral("Trash"));
    tree.makeFolder(QStringLiteral("Trash/files"));
    TrashWatcher watcher(trash);
    QSignalSpy revisions(&watcher, &TrashWatcher::revisionChanged);
    watcher.start();
    EXPECT_TRUE(watcher.isWatching());
    EXPECT_TRUE(watcher.fingerprint().startsWith(QStringLiteral("0@")));

    tree.write(QStringLiteral("Trash/files/a.txt"), "a");
    ASSERT_TRUE(revisions.wait(5000));
    EXPECT_EQ(watcher.revision(), 1u);
    EXPECT_TRUE(watcher.fingerprint().startsWith(QStringLiteral("1@")));

    tree.write(QStringLiteral("Trash/files/.DS_Store"), "finder");
    EXPECT_TRUE(TrashWatcher::fingerprintOf(trash + QStringLiteral("/files")).startsWith(QStringLiteral("1@")));

    // The whole Trash deleted and made again: the watch is re-opened and sees the next change.
    ASSERT_TRUE(QDir(trash).removeRecursively());
    ASSERT_TRUE(revisions.wait(5000));
    EXPECT_TRUE(watcher.fingerprint().startsWith(QStringLiteral("0@")));
    tree.makeFolder(QStringLiteral("Trash/files"));
    tree.write(QStringLiteral("Trash/files/b.txt"), "b");
    tree.write(QStringLiteral("Trash/files/c.txt"), "c");
    const quint64 before = watcher.revision();
    while (!watcher.fingerprint().startsWith(QStringLiteral("2@")) && revisions.wait(5000)) { }
    EXPECT_TRUE(watcher.fingerprint().startsWith(QStringLiteral("2@"))) << watcher.fingerprint().toStdString();
    EXPECT_GT(watcher.revision(), before);

    watcher.stop();
    EXPECT_FALSE(watcher.isWatching());
    tree.write(QStringLiteral("Trash/files/d.txt"), "d");
    EXPECT_FALSE(revisions.wait(TrashWatcher::tickIntervalMs + 500));
}
