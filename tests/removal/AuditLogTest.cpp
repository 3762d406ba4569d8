#include "removal/AuditLog.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QStringList keptAside(const QString& folder, const QString& name)
{
    return QDir(folder).entryList({name + QStringLiteral(".unreadable-*")});
}

} // namespace

TEST(AuditLog, RecordsSurviveARestartWithTheirFieldsAndTotals)
{
    FixtureTree tree;
    const QString folder = tree.path(QStringLiteral("data/Velloru"));
    const QString failedFolder = tree.write(QStringLiteral("stuck/a.bin"), QByteArray(300, 'a'));
    tree.write(QStringLiteral("stuck/sub/b.bin"), QByteArray(200, 'b'));
    QList<QUuid> movedIds;
    {
        AuditLog log(folder);
        EXPECT_TRUE(log.entries().isEmpty());
        log.recordMoves(QStringLiteral("Smart Scan"),
            {{QStringLiteral("/home/u/.cache/a"), 1000, QStringLiteral("/home/u/.local/share/Trash/files/a")},
                {QStringLiteral("~/notes.txt"), 24, QStringLiteral("/home/u/.local/share/Trash/files/notes.txt")}});
        log.recordFailures(QStringLiteral("Smart Scan"),
            {{tree.path(QStringLiteral("stuck")), QStringLiteral("The item is locked.")}});
        EXPECT_EQ(log.sessionCleaned(), 1024);
        EXPECT_EQ(log.lifetimeCleaned(), 1024);
        EXPECT_EQ(log.recordedThisSession().size(), 3);
        movedIds = {log.entries()[0].id};
        log.markRecovered(movedIds);
    }
    Q_UNUSED(failedFolder);

    AuditLog reloaded(folder);
    ASSERT_EQ(reloaded.entries().size(), 3);
    const AuditEntry& first = reloaded.entries()[0];
    EXPECT_EQ(first.id, movedIds[0]);
    EXPECT_EQ(first.outcome, AuditOutcome::recovered);
    EXPECT_EQ(first.feature, QStringLiteral("Smart Scan"));
    EXPECT_EQ(first.trashPath, QStringLiteral("/home/u/.local/share/Trash/files/a"));
    EXPECT_EQ(first.subjectKind, AuditSubject::file);
    EXPECT_EQ(reloaded.entries()[1].path, QDir::homePath() + QStringLiteral("/notes.txt"));
    EXPECT_EQ(reloaded.entries()[2].outcome, AuditOutcome::failed);
    EXPECT_EQ(reloaded.entries()[2].size, 500); // measured when the failure was recorded
    EXPECT_FALSE(reloaded.entries()[2].trashPath);
    EXPECT_EQ(reloaded.lifetimeCleaned(), 1024); // putting an item back does not undo the cleaning
    EXPECT_EQ(reloaded.sessionCleaned(), 0);
    EXPECT_TRUE(reloaded.recordedThisSession().isEmpty());

    // The file keeps the fields in their fixed order, with upper-case ids.
    const QByteArray text = readWholeFile(reloaded.logPath());
    const qsizetype at = text.indexOf("{\"id\":\"" + movedIds[0].toString(QUuid::WithoutBraces).toUpper().toUtf8());
    ASSERT_GE(at, 0) << text.constData();
    const QByteArray line = text.mid(at, text.indexOf('\n', at) - at);
    QStringList order;
    for (const char* key : {"\"id\"", "\"date\"", "\"path\"", "\"size\"", "\"feature\"", "\"outcome\"", "\"trashPath\"",
             "\"subjectKind\""})
        order.append(QString::number(line.indexOf(key)));
    for (qsizetype i = 1; i < order.size(); ++i)
        EXPECT_LT(order[i - 1].toInt(), order[i].toInt()) << line.constData();
}

TEST(AuditLog, AMissingTotalsFileIsRebuiltFromMovesOnly)
{
    FixtureTree tree;
    const QString folder = tree.path(QStringLiteral("Velloru"));
    {
        AuditLog log(folder);
        log.recordMoves(QStringLiteral("Duplicates"),
            {{QStringLiteral("/d/1"), 4096, QStringLiteral("/t/1")},
                {QStringLiteral("/d/2"), 8192, QStringLiteral("/t/2")},
                {QStringLiteral("/d/3"), 100, QStringLiteral("/t/3")}});
        log.recordFailures(QStringLiteral("Duplicates"), {{QStringLiteral("/gone"), QStringLiteral("vanished")}});
        log.markRecovered({log.entries()[2].id});
        log.clear();
        EXPECT_EQ(log.lifetimeCleaned(), 12388); // Clear keeps the lifetime total
        EXPECT_EQ(readWholeFile(log.logPath()), "[]\n");
    }
    {
        AuditLog log(folder);
        log.recordMoves(QStringLiteral("Duplicates"),
            {{QStringLiteral("/d/4"), 50, QStringLiteral("/t/4")},
                {QStringLiteral("/d/5"), 70, QStringLiteral("/t/5")}});
        log.recordFailures(QStringLiteral("Duplicates"), {{QStringLiteral("/gone"), QStringLiteral("vanished")}});
        log.markRecovered({log.entries()[1].id});
        ASSERT_TRUE(QFile::remove(log.totalsPath()));
    }
    LogCapture capture;
    AuditLog rebuilt(folder);
    EXPECT_EQ(rebuilt.lifetimeCleaned(), 50);
    EXPECT_TRUE(capture.contains(QStringLiteral("Velloru: activity totals rebuilt from the log lifetimeCleaned=50")));
    EXPECT_EQ(
        QJsonDocument::fromJson(readWholeFile(rebuilt.totalsPath())).object().value(u"lifetimeCleaned").toInteger(),
        50);
}

TEST(AuditLog, CorruptFilesAreKeptAsideAndTheReadableEntriesKept)
{
    FixtureTree tree;
    const QString folder = tree.path(QStringLiteral("Velloru"));
    QByteArray good;
    {
        AuditLog log(folder);
        log.recordMoves(QStringLiteral("Smart Scan"),
            {{QStringLiteral("/a"), 10, QStringLiteral("/t/a")}, {QStringLiteral("/b"), 20, QStringLiteral("/t/b")}});
        good = readWholeFile(log.logPath());
    }

    // One entry damaged by hand: the other survives, and the original is kept for the record.
    QByteArray damaged = good;
    damaged.replace("\"size\":20", "\"size\":\"twenty\"");
    tree.write(QStringLiteral("Velloru/audit-log.json"), damaged);
    {
        AuditLog log(folder);
        ASSERT_EQ(log.entries().size(), 1);
        EXPECT_EQ(log.entries()[0].path, QStringLiteral("/a"));
        const QStringList aside = keptAside(folder, QStringLiteral("audit-log.json"));
        ASSERT_EQ(aside.size(), 1);
        EXPECT_EQ(readWholeFile(folder + QLatin1Char('/') + aside[0]), damaged);
    }
    // The readable entry was written back at once, so it is there on the next launch too.
    EXPECT_EQ(AuditLog(folder).entries().size(), 1);

    // A truncated log and a totals file of the wrong shape: both kept aside, the app starts empty.
    tree.write(QStringLiteral("Velloru/audit-log.json"), good.left(good.size() / 2));
    tree.write(QStringLiteral("Velloru/audit-totals.json"), "[1,2,3]");
    LogCapture capture;
    AuditLog log(folder);
    EXPECT_TRUE(log.entries().isEmpty());
    EXPECT_EQ(log.lifetimeCleaned(), 0);
    EXPECT_EQ(keptAside(folder, QStringLiteral("audit-log.json")).size(), 2);
    EXPECT_EQ(keptAside(folder, QStringLiteral("audit-totals.json")).size(), 1);
    EXPECT_TRUE(capture.contains(QStringLiteral("kept aside")));
    log.recordMoves(QStringLiteral("Smart Scan"), {{QStringLiteral("/c"), 5, QStringLiteral("/t/c")}});
    EXPECT_EQ(AuditLog(folder).entries().size(), 1);
}

TEST(AuditLog, AMissingFolderIsCreated)
{
    FixtureTree tree;
    const QString folder = tree.path(QStringLiteral("deep/er/Velloru"));
    AuditLog log(folder);
    log.recordMoves(QStringLiteral("Smart Scan"), {{QStringLiteral("/a"), 1, QStringLiteral("/t/a")}});
    EXPECT_TRUE(QFile::exists(folder + QStringLiteral("/audit-log.json")));
    EXPECT_TRUE(QFile::exists(folder + QStringLiteral("/audit-totals.json")));
}

TEST(AuditLog, AReadOnlyFolderKeepsTheAppRunningAndLosesNothing)
{
    FixtureTree tree;
    auto disk = TmpfsMount::mount(tree.path(QStringLiteral("ro")), QStringLiteral("size=1m"));
    if (!disk)
        GTEST_SKIP() << "needs root to mount a read-only tmpfs";
    {
        AuditLog log(disk->path());
        log.recordMoves(QStringLiteral("Smart Scan"), {{QStringLiteral("/a"), 7, QStringLiteral("/t/a")}});
    }
    const QByteArray before = readWholeFile(disk->path() + QStringLiteral("/audit-log.json"));
    ASSERT_TRUE(disk->remount(QStringLiteral("ro")));

    LogCapture capture;
    AuditLog log(disk->path());
    ASSERT_EQ(log.entries().size(), 1);
    log.recordMoves(QStringLiteral("Smart Scan"), {{QStringLiteral("/b"), 8, QStringLiteral("/t/b")}});
    EXPECT_EQ(log.entries().size(), 2);
    EXPECT_EQ(log.lifetimeCleaned(), 15);
    ASSERT_TRUE(log.lastSaveProblem());
    EXPECT_TRUE(capture.contains(QStringLiteral("Velloru: activity log save failed")));
    EXPECT_EQ(readWholeFile(log.logPath()), before);

    // Once the folder is writable again, the next save writes everything, the unsaved entry included.
    ASSERT_TRUE(disk->remount(QStringLiteral("rw")));
    log.recordFailures(QStringLiteral("Smart Scan"), {{QStringLiteral("/c"), QStringLiteral("locked")}});
    EXPECT_FALSE(log.lastSaveProblem());
    AuditLog reloaded(disk->path());
    EXPECT_EQ(reloaded.entries().size(), 3);
    EXPECT_EQ(reloaded.lifetimeCleaned(), 15);
}

TEST(AuditLog, ADiskThatFillsDuringASaveKeepsThePreviousFile)
{
    FixtureTree tree;
    auto disk = TmpfsMount::mount(tree.path(QStringLiteral("small")), QStringLiteral("size=256k"));
    if (!disk)
        GTEST_SKIP() << "needs root to mount a small tmpfs";
    AuditLog log(disk->path());
    log.recordMoves(QStringLiteral("Smart Scan"), {{QStringLiteral("/a"), 1, QStringLiteral("/t/a")}});
    const QByteArray before = readWholeFile(log.logPath());

    // Fill the disk, then record an entry long enough that the new log cannot fit.
    QFile filler(disk->path() + QStringLiteral("/filler"));
    ASSERT_TRUE(filler.open(QIODevice::WriteOnly));
    while (filler.write(QByteArray(4096, 'f')) == 4096) { }
    filler.close();
    const QString longPath = QStringLiteral("/x/") + QString(8000, QLatin1Char('p'));
    log.recordMoves(QStringLiteral("Smart Scan"), {{longPath, 2, QStringLiteral("/t/x")}});
    ASSERT_TRUE(log.lastSaveProblem());
    EXPECT_EQ(readWholeFile(log.logPath()), before);

    ASSERT_TRUE(QFile::remove(filler.fileName()));
    log.markRecovered({log.entries()[0].id});
    EXPECT_FALSE(log.lastSaveProblem());
    const AuditLog reloaded(disk->path());
    ASSERT_EQ(reloaded.entries().size(), 2);
    EXPECT_EQ(reloaded.entries()[1].path, longPath);
    EXPECT_EQ(reloaded.lifetimeCleaned(), 3);
}

TEST(AuditLog, TwoWritersOnOneFolderKeepEachOthersEntries)
{
    // Two logs on one folder stand for two Velloru processes: each save merges what the other wrote.
    FixtureTree tree;
    const QString folder = tree.path(QStringLiteral("Velloru"));
    AuditLog window(folder);
    AuditLog command(folder);
    window.recordMoves(QStringLiteral("Smart Scan"), {{QStringLiteral("/a"), 10, QStringLiteral("/t/a")}});
    command.recordMoves(QStringLiteral("Trash"), {{QStringLiteral("/b"), 20, QStringLiteral("/t/b")}});
    window.recordFailures(QStringLiteral("Smart Scan"), {{QStringLiteral("/c"), QStringLiteral("locked")}});
    command.markRecovered({command.entries()[0].id});
    EXPECT_EQ(command.entries().size(), 3);

    const AuditLog reloaded(folder);
    ASSERT_EQ(reloaded.entries().size(), 3);
    EXPECT_EQ(reloaded.entries()[0].outcome, AuditOutcome::recovered);
    EXPECT_EQ(reloaded.lifetimeCleaned(), 30);
    EXPECT_EQ(window.sessionCleaned(), 10);
    EXPECT_EQ(command.sessionCleaned(), 20);
    window.refresh();
    EXPECT_EQ(window.entries().size(), 3);
}

TEST(AuditLog, ValuesOutOfRangeAreKeptAsideLikeAnyCorruption)
{
    FixtureTree tree;
    const QString folder = tree.path(QStringLiteral("Velloru"));
    QByteArray good;
    {
        AuditLog log(folder);
        log.recordMoves(QStringLiteral("Trash"),
            {{QStringLiteral("/a"), 10, QStringLiteral("/t/a")}, {QStringLiteral("/b"), 20, QStringLiteral("/t/b")}});
        good = readWholeFile(log.logPath());
    }
    // A total that is not a whole, non-negative byte count is rebuilt from the log, the file kept aside.
    for (const char* total : {"18.5", "1e300", "-500"}) {
        tree.write(QStringLiteral("Velloru/audit-totals.json"), QByteArray("{\"lifetimeCleaned\":") + total + "}\n");
        const int before = keptAside(folder, QStringLiteral("audit-totals.json")).size();
        const AuditLog log(folder);
        EXPECT_EQ(log.lifetimeCleaned(), 30) << total;
        EXPECT_EQ(keptAside(folder, QStringLiteral("audit-totals.json")).size(), before + 1) << total;
    }
    // An entry dated beyond any calendar, or of a size no file has: the log is kept aside, the rest kept.
    const QByteArray date = good.mid(good.indexOf("\"date\":") + 7);
    const QByteArray firstDate = date.left(date.indexOf(','));
    for (const auto& [from, to] : {std::pair{"\"date\":" + firstDate, QByteArray("\"date\":1e300")},
             std::pair{QByteArray("\"size\":10"), QByteArray("\"size\":1e300")},
             std::pair{QByteArray("\"size\":10"), QByteArray("\"size\":-10")},
             std::pair{QByteArray("\"size\":10"), QByteArray("\"size\":10.5")}}) {
        QByteArray damaged = good;
        damaged.replace(damaged.indexOf(from), from.size(), to); // the first entry only
        ASSERT_NE(damaged, good);
        tree.write(QStringLiteral("Velloru/audit-log.json"), damaged);
        const int before = keptAside(folder, QStringLiteral("audit-log.json")).size();
        const AuditLog log(folder);
        ASSERT_EQ(log.entries().size(), 1) << to.constData();
        EXPECT_EQ(log.entries()[0].path, QStringLiteral("/b"));
        EXPECT_EQ(keptAside(folder, QStringLiteral("audit-log.json")).size(), before + 1) << to.constData();
        tree.write(QStringLiteral("Velloru/audit-log.json"), good);
    }
}
