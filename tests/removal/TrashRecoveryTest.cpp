#include "removal/TrashRecovery.h"
#include "platform/TrashStore.h"
#include "removal/AuditLog.h"
#include "removal/TrashRequests.h"
#include "removal/Trasher.h"

#include "TestSupport.h"
#include "TrashTestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

// Trashes the paths and returns the log entries that recorded them.
QList<AuditEntry> trashAndLog(AuditLog& log, const QStringList& paths)
{
    trashAndRecord(log, paths);
    return log.entries().mid(log.entries().size() - paths.size());
}

} // namespace

TEST(TrashRecovery, PutsBackNeverOverwritesAndRecreatesFolders)
{
    FixtureTree tree;
    AuditLog log(tree.path(QStringLiteral("Velloru")));
    const QString plain = tree.write(QStringLiteral("docs/plain.txt"), "plain");
    const QString occupied = tree.write(QStringLiteral("docs/occupied.txt"), "old");
    const QString deep = tree.write(QStringLiteral("gone/a/b/deep.txt"), "deep");
    const QString emptied = tree.write(QStringLiteral("docs/emptied.txt"), "emptied");
    const QList<AuditEntry> entries = trashAndLog(log, {plain, occupied, deep, emptied});
    ASSERT_EQ(TrashRecovery::recoverableEntries(log).size(), 4);

    EXPECT_FALSE(TrashRecovery::putBack(log, entries[0]));
    EXPECT_EQ(readWholeFile(plain), "plain");
    EXPECT_FALSE(QFile::exists(trashInfoPathFor(*entries[0].trashPath)));
    EXPECT_EQ(log.entries()[0].outcome, AuditOutcome::recovered);

    // Something new at the former place: nothing moves, and the sentence says where.
    tree.write(QStringLiteral("docs/occupied.txt"), "new");
    const auto occupiedFailure = TrashRecovery::putBack(log, entries[1]);
    ASSERT_TRUE(occupiedFailure);
    EXPECT_EQ(occupiedFailure->kind, TrashRecovery::Failure::Kind::destinationOccupied);
    EXPECT_EQ(occupiedFailure->sentence(),
        QStringLiteral("Something already exists at %1. Move or rename it first, "
                       "then try again.")
            .arg(occupied));
    EXPECT_EQ(readWholeFile(occupied), "new");
    EXPECT_EQ(readWholeFile(*entries[1].trashPath), "old");
    EXPECT_EQ(log.entries()[1].outcome, AuditOutcome::movedToTrash);

    // The former folder chain was deleted: it is made again.
    ASSERT_TRUE(QDir(tree.path(QStringLiteral("gone"))).removeRecursively());
    EXPECT_FALSE(TrashRecovery::putBack(log, entries[2]));
    EXPECT_EQ(readWholeFile(deep), "deep");

    // The Trash was emptied in the meantime.
    ASSERT_TRUE(QFile::remove(*entries[3].trashPath));
    const auto notInTrash = TrashRecovery::putBack(log, entries[3]);
    ASSERT_TRUE(notInTrash);
    EXPECT_EQ(notInTrash->sentence(), QStringLiteral("This item is no longer in the Trash — it can’t be put back."));
    EXPECT_EQ(TrashRecovery::recoverableEntries(log).size(), 1); // only the occupied one is still there
}

TEST(TrashRecovery, HomeFolderPathsAreShownWithATilde)
{
    FixtureTree tree;
    AuditLog log(tree.path(QStringLiteral("Velloru")));
    const QString inHome = QDir::homePath() + QStringLiteral("/Documents/letter.txt");
    QDir().mkpath(QDir::homePath() + QStringLiteral("/Documents"));
    QFile file(inHome);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    const QList<AuditEntry> entries = trashAndLog(log, {inHome});
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    const auto failure = TrashRecovery::putBack(log, entries[0]);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->detail, QStringLiteral("~/Documents/letter.txt"));
}

TEST(TrashRecovery, PutsBackWhatTheDesktopTrashedWhenTheLogKnowsIt)
{
    FixtureTree tree;
    const QString file = tree.write(QStringLiteral("desk/photo.png"), "png");
    // gio makes the Trash folder but not the data folder it lives in, which every real home has.
    QDir().mkpath(QFileInfo(homeTrashPath()).path());
    int status = -1;
    const auto said = runTool(QStringLiteral("gio"), {QStringLiteral("trash"), file}, &status);
    if (!said)
        GTEST_SKIP() << "gio is not installed";
    if (status != 0)
        GTEST_SKIP() << "gio cannot move files to the Trash here: " << said->trimmed().toStdString();
    const QString trashed = homeTrashPath() + QStringLiteral("/files/photo.png");
    ASSERT_TRUE(QFile::exists(trashed));

    AuditLog log(tree.path(QStringLiteral("Velloru")));
    log.recordMoves(QStringLiteral("Trash"), {{file, 3, trashed}});
    EXPECT_FALSE(TrashRecovery::putBack(log, log.entries()[0]));
    EXPECT_EQ(readWholeFile(file), "png");
    EXPECT_FALSE(QFile::exists(trashInfoPathFor(trashed)));
}
