#include "removal/Trasher.h"
#include "platform/TrashStore.h"
#include "removal/AuditLog.h"
#include "removal/TrashLocations.h"
#include "removal/TrashRequests.h"
#include "removal/TrashTexts.h"

#include "TestSupport.h"
#include "TrashTestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <sys/stat.h>
#include <unistd.h>

namespace {

QString homeTrashFiles()
{
    return homeTrashPath() + QStringLiteral("/files");
}

TrashResult trash(const QStringList& paths)
{
    return Trasher().moveToTrash(TrashRequests::measured(paths), nullptr);
}

} // namespace

TEST(Trasher, TwoReportsInOneTrashKeepBothWithPutBackRecordsOthersCanRead)
{
    FixtureTree tree;
    const QString first = tree.write(QStringLiteral("a/report.pdf"), "first");
    const QString second = tree.write(QStringLiteral("b/report.pdf"), "second!");
    const QString odd = tree.write(QStringLiteral("b/50% done #1.txt"), "odd name");
    const QString link = tree.path(QStringLiteral("b/dangling"));
    ASSERT_TRUE(QFile::link(QStringLiteral("/no/such/target"), link));

    const TrashResult result = trash({first, second, odd, link});
    ASSERT_TRUE(result.failed.isEmpty()) << result.failed.first().reason.toStdString();
    EXPECT_EQ(result.freed, 5 + 7 + 8);
    EXPECT_EQ(result.trashedURLs.value(first), homeTrashFiles() + QStringLiteral("/report.pdf"));
    EXPECT_EQ(result.trashedURLs.value(second), homeTrashFiles() + QStringLiteral("/report 1.pdf"));
    EXPECT_EQ(readWholeFile(homeTrashFiles() + QStringLiteral("/report 1.pdf")), "second!");
    EXPECT_TRUE(QFileInfo(result.trashedURLs.value(link)).isSymLink()); // the link itself, not its target

    const QByteArray record = readWholeFile(homeTrashPath() + QStringLiteral("/info/50% done #1.txt.trashinfo"));
    EXPECT_TRUE(record.startsWith("[Trash Info]\nPath=")) << record.constData();
    EXPECT_TRUE(record.contains("/b/50%25%20done%20%231.txt\n")) << record.constData();
    EXPECT_TRUE(record.contains("\nDeletionDate=20")) << record.constData();

    const TrashLocations::Summary summary = TrashLocations::summarize();
    EXPECT_EQ(summary.items, 4);
    EXPECT_FALSE(summary.otherVolumesHoldItems);
    EXPECT_EQ(TrashLocations::emptyWarning(summary), TrashTexts::emptyWarning());
}

TEST(Trasher, TrashCliListsWhatWeTrashedWithTheOriginalPaths)
{
    if (QStandardPaths::findExecutable(QStringLiteral("trash-list")).isEmpty())
        GTEST_SKIP() << "trash-cli is not installed, so no other Trash client can read what was trashed";
    FixtureTree tree;
    const QString report = tree.write(QStringLiteral("b/report.pdf"), "second!");
    const QString odd = tree.write(QStringLiteral("b/50% done #1.txt"), "odd name");
    ASSERT_TRUE(trash({report, odd}).failed.isEmpty());
    const auto listed = runTool(QStringLiteral("trash-list"), {});
    ASSERT_TRUE(listed);
    EXPECT_TRUE(listed->contains(report)) << listed->toStdString();
    EXPECT_TRUE(listed->contains(odd)) << listed->toStdString();
}

TEST(Trasher, TrashCliListsWhatWeTrashedOnAnotherVolume)
{
    if (QStandardPaths::findExecutable(QStringLiteral("trash-list")).isEmpty())
        GTEST_SKIP() << "trash-cli is not installed, so no other Trash client can read what was trashed";
    FixtureTree tree;
    auto volume = TmpfsMount::mount(tree.path(QStringLiteral("volume")), QStringLiteral("size=1m"));
    if (!volume)
        GTEST_SKIP() << "needs root to mount a second volume";
    const QString file = tree.write(QStringLiteral("volume/photos/beach.jpg"), "jpeg");
    ASSERT_TRUE(trash({file}).failed.isEmpty());
    const auto listed = runTool(QStringLiteral("trash-list"), {});
    ASSERT_TRUE(listed);
    EXPECT_TRUE(listed->contains(file)) << listed->toStdString();
}

TEST(Trasher, TheDesktopsOwnToolsRestoreWhatWeTrashed)
{
    FixtureTree tree;
    const QString file = tree.write(QStringLiteral("desk/letter.txt"), "dear");
    ASSERT_TRUE(trash({file}).failed.isEmpty());
    if (QStandardPaths::findExecutable(QStringLiteral("trash-restore")).isEmpty())
        GTEST_SKIP() << "trash-cli is not installed";
    // trash-restore lists what was trashed from its working folder and restores the number it is given.
    QProcess restore;
    restore.setWorkingDirectory(tree.path(QStringLiteral("desk")));
    restore.start(QStringLiteral("trash-restore"), {});
    restore.write("0\n");
    restore.closeWriteChannel();
    ASSERT_TRUE(restore.waitForFinished(30'000));
    EXPECT_EQ(readWholeFile(file), "dear") << restore.readAll().toStdString();
}

TEST(Trasher, FailuresGetTheirOwnSentences)
{
    FixtureTree tree;
    const QString vanished = tree.path(QStringLiteral("gone.txt"));
    const QString inTrash = tree.write(QStringLiteral("x.txt"), "x");
    const TrashResult moved = trash({inTrash});
    ASSERT_EQ(moved.succeeded.size(), 1);

    const TrashResult result = trash({vanished, moved.trashedURLs.value(inTrash)});
    ASSERT_EQ(result.failed.size(), 2);
    EXPECT_EQ(result.freed, 0);
    EXPECT_TRUE(result.trashedURLs.isEmpty());
    EXPECT_EQ(result.failed[0].reason, TrashTexts::vanished());
    EXPECT_EQ(result.failed[1].reason, TrashTexts::alreadyInTrash());
}

TEST(Trasher, AnImmutableFileStaysWhereItIsWithTheSentenceThatSaysWhy)
{
    FixtureTree tree;
    const QString locked = tree.write(QStringLiteral("locked.txt"), "locked");
    const ImmutableFlag flag(locked);
    if (!flag.isSet())
        GTEST_SKIP() << "chattr +i could not make the test's file immutable (it needs root and a file system that "
                        "keeps the flag): "
                     << flag.failure().toStdString();

    // The flag refuses the rename even to root.
    const TrashResult refused = trash({locked});
    ASSERT_EQ(refused.failed.size(), 1);
    EXPECT_EQ(refused.failed[0].reason, TrashTexts::systemProtected());
    EXPECT_TRUE(refused.succeeded.isEmpty());
    EXPECT_EQ(readWholeFile(locked), "locked");
}

TEST(Trasher, ASecondDotfileIsNumberedAfterItsWholeName)
{
    // ".bashrc" has no extension: its copies are ".bashrc 1" and ".bashrc 2", never " 1.bashrc".
    FixtureTree tree;
    const QString first = tree.write(QStringLiteral("a/.bashrc"), "first");
    const QString second = tree.write(QStringLiteral("b/.bashrc"), "second");
    const QString third = tree.write(QStringLiteral("c/.bashrc"), "third");

    const TrashResult result = trash({first, second, third});
    ASSERT_TRUE(result.failed.isEmpty()) << result.failed.first().reason.toStdString();
    EXPECT_EQ(result.trashedURLs.value(first), homeTrashFiles() + QStringLiteral("/.bashrc"));
    EXPECT_EQ(result.trashedURLs.value(second), homeTrashFiles() + QStringLiteral("/.bashrc 1"));
    EXPECT_EQ(result.trashedURLs.value(third), homeTrashFiles() + QStringLiteral("/.bashrc 2"));
    EXPECT_EQ(readWholeFile(homeTrashFiles() + QStringLiteral("/.bashrc 2")), "third");
    EXPECT_TRUE(readWholeFile(homeTrashPath() + QStringLiteral("/info/.bashrc 1.trashinfo")).contains("/b/.bashrc\n"));
}

TEST(Trasher, AnItemOnAnotherVolumeStaysOnThatVolume)
{
    FixtureTree tree;
    auto volume = TmpfsMount::mount(tree.path(QStringLiteral("volume")), QStringLiteral("size=1m"));
    if (!volume)
        GTEST_SKIP() << "needs root to mount a second volume";
    const QString file = tree.write(QStringLiteral("volume/photos/beach.jpg"), "jpeg");

    const TrashResult result = trash({file});
    ASSERT_TRUE(result.failed.isEmpty()) << result.failed.first().reason.toStdString();
    const QString ownTrash = volume->path() + QStringLiteral("/.Trash-0");
    EXPECT_EQ(result.trashedURLs.value(file), ownTrash + QStringLiteral("/files/beach.jpg"));
    EXPECT_FALSE(QFile::exists(homeTrashFiles() + QStringLiteral("/beach.jpg")));
    // On a volume the record holds the path relative to the volume's top folder.
    EXPECT_TRUE(
        readWholeFile(ownTrash + QStringLiteral("/info/beach.jpg.trashinfo")).contains("\nPath=photos/beach.jpg\n"));
    const TrashLocations::Summary summary = TrashLocations::summarize();
    EXPECT_TRUE(summary.otherVolumesHoldItems);
    EXPECT_EQ(TrashLocations::emptyWarning(summary), TrashTexts::emptyWarningWithVolumes());

    // A shared ".Trash" with the sticky bit is used; a per-user Trash that is a link is never used.
    auto second = TmpfsMount::mount(tree.path(QStringLiteral("second")), QStringLiteral("size=1m"));
    ASSERT_TRUE(second);
    QDir().mkpath(second->path() + QStringLiteral("/.Trash"));
    ASSERT_EQ(::chmod(QFile::encodeName(second->path() + QStringLiteral("/.Trash")).constData(), 01777), 0);
    const QString shared = tree.write(QStringLiteral("second/notes.txt"), "notes");
    EXPECT_EQ(trash({shared}).trashedURLs.value(shared), second->path() + QStringLiteral("/.Trash/0/files/notes.txt"));

    auto third = TmpfsMount::mount(tree.path(QStringLiteral("third")), QStringLiteral("size=1m"));
    ASSERT_TRUE(third);
    ASSERT_TRUE(QFile::link(tree.path(), third->path() + QStringLiteral("/.Trash-0")));
    const QString guarded = tree.write(QStringLiteral("third/keep.txt"), "keep");
    const TrashResult refused = trash({guarded});
    ASSERT_EQ(refused.failed.size(), 1);
    EXPECT_TRUE(QFile::exists(guarded));
}

TEST(Trasher, AReadOnlyParentLeavesTheItemWithAClearReason)
{
    FixtureTree tree;
    auto volume = TmpfsMount::mount(tree.path(QStringLiteral("ro")), QStringLiteral("size=1m"));
    if (!volume)
        GTEST_SKIP() << "needs root to mount a read-only volume";
    const QString file = tree.write(QStringLiteral("ro/file.txt"), "data");
    ASSERT_TRUE(volume->remount(QStringLiteral("ro")));
    const TrashResult result = trash({file});
    ASSERT_EQ(result.failed.size(), 1);
    EXPECT_EQ(result.failed[0].reason, QStringLiteral("Read-only file system."));
    EXPECT_EQ(readWholeFile(file), "data");
}

TEST(Trasher, ARootOwnedFolderAsksForTheHelper)
{
    if (!runningAsRoot())
        GTEST_SKIP() << "needs root to make a folder another user cannot write";
    // A real user (nobody) runs Velloru on a folder root owns.
    FixtureTree tree;
    QFile::setPermissions(tree.path(), QFileDevice::Permissions(0x7755));
    const QString file = tree.write(QStringLiteral("system/setting.conf"), "root's");
    QFile::setPermissions(tree.path(QStringLiteral("system")), QFileDevice::Permissions(0x7755));
    const QString home = tree.makeFolder(QStringLiteral("nobody-home"));
    ASSERT_EQ(::chown(QFile::encodeName(home).constData(), 65534, 65534), 0);

    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home);
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/data"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("setpriv"),
        {QStringLiteral("--reuid=65534"), QStringLiteral("--regid=65534"), QStringLiteral("--clear-groups"),
            QStringLiteral("--"), QStringLiteral(VELLORU_BINARY), QStringLiteral("trash"), file});
    ASSERT_TRUE(process.waitForFinished(30'000));
    const QString out = QString::fromUtf8(process.readAllStandardOutput());
    if (out.isEmpty())
        GTEST_SKIP() << "the program cannot run as another user here: " << process.readAllStandardError().toStdString();
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_TRUE(out.contains(TrashTexts::rootOwnedNoHelper())) << out.toStdString();
    EXPECT_EQ(readWholeFile(file), "root's");
}

TEST(Trasher, LongNamesAreShortenedToFitTheirRecord)
{
    FixtureTree tree;
    const QString name = QString(240, QLatin1Char('n')) + QStringLiteral("é.txt"); // 246 bytes in UTF-8
    const QString first = tree.write(QStringLiteral("a/") + name, "1");
    const QString second = tree.write(QStringLiteral("b/") + name, "2");
    const TrashResult result = trash({first, second});
    ASSERT_TRUE(result.failed.isEmpty()) << result.failed.first().reason.toStdString();
    for (const QString& trashed : result.trashedURLs) {
        const QString trashedName = QFileInfo(trashed).fileName();
        EXPECT_LE((trashedName + QStringLiteral(".trashinfo")).toUtf8().size(), 255);
        EXPECT_TRUE(trashedName.endsWith(QStringLiteral(".txt")));
        EXPECT_TRUE(QFile::exists(trashInfoPathFor(trashed)));
    }
    EXPECT_NE(result.trashedURLs.value(first), result.trashedURLs.value(second));
}

TEST(Trasher, StoppingLeavesTheRestInPlaceAndTheLogRecordsBoth)
{
    FixtureTree tree;
    const QString a = tree.write(QStringLiteral("a.txt"), "a");
    const QString b = tree.write(QStringLiteral("b.txt"), "b");
    std::stop_source stop;
    stop.request_stop();
    const TrashResult stopped = Trasher().moveToTrash(TrashRequests::measured({a}), nullptr, stop.get_token());
    ASSERT_EQ(stopped.failed.size(), 1);
    EXPECT_EQ(stopped.failed[0].reason, TrashTexts::stoppedBeforeTried());
    EXPECT_TRUE(QFile::exists(a));

    AuditLog log(tree.path(QStringLiteral("Velloru")));
    trashAndRecord(log, {b, tree.path(QStringLiteral("missing"))});
    ASSERT_EQ(log.entries().size(), 2);
    EXPECT_EQ(log.entries()[0].outcome, AuditOutcome::movedToTrash);
    EXPECT_EQ(log.entries()[0].trashPath, homeTrashFiles() + QStringLiteral("/b.txt"));
    EXPECT_EQ(log.entries()[1].outcome, AuditOutcome::failed);
    EXPECT_EQ(log.lifetimeCleaned(), 1);
}
