#include "helper/Maintenance.h"
#include "helper/HelperManager.h"
#include "helper/HelperService.h"
#include "helper/MailOptimizer.h"

#include "FakeHelperService.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QProcess>

namespace {

// Makes a real message index with many free pages: rows written, then deleted.
QString makeBloatedDatabase(FixtureTree& tree, const QString& profile)
{
    const QString path = tree.makeFolder(QStringLiteral("home/.thunderbird/") + profile)
        + QStringLiteral("/global-messages-db.sqlite");
    QProcess sqlite;
    sqlite.start(QStringLiteral("/usr/bin/sqlite3"),
        {path,
            QStringLiteral("CREATE TABLE messages(body BLOB); WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT "
                           "i+1 FROM n WHERE i < 2000) INSERT INTO messages SELECT randomblob(1024) FROM n; "
                           "DELETE FROM messages WHERE rowid % 4 != 0;")});
    sqlite.waitForFinished();
    return path;
}

} // namespace

TEST(MailOptimizer, CompactsRealDatabasesAndReportsWhatItFreed)
{
    if (!QFileInfo::exists(QStringLiteral("/usr/bin/sqlite3")))
        GTEST_SKIP() << "sqlite3 is not installed";
    FixtureTree tree;
    const QString home = tree.path(QStringLiteral("home"));
    const QString first = makeBloatedDatabase(tree, QStringLiteral("a1b2.default-release"));
    const qint64 before = QFileInfo(first).size();
    ASSERT_GT(before, 1'500'000);

    const TaskResult compacted = MailOptimizer::optimize(home);
    ASSERT_TRUE(compacted.success) << compacted.message.toStdString();
    EXPECT_EQ(compacted.freedBytes, before - QFileInfo(first).size());
    EXPECT_GT(compacted.freedBytes, 1'000'000);
    EXPECT_TRUE(compacted.message.startsWith(QStringLiteral("Thunderbird database compacted — freed ")));

    const TaskResult again = MailOptimizer::optimize(home);
    EXPECT_EQ(again.message, QStringLiteral("Thunderbird database reindexed — already compact."));

    makeBloatedDatabase(tree, QStringLiteral("z9.work"));
    EXPECT_TRUE(MailOptimizer::optimize(home).message.startsWith(QStringLiteral("Thunderbird 2 databases compacted")));

    // A damaged index stops the run with the sentence that says what to do.
    tree.write(QStringLiteral("home/.thunderbird/m3.broken/global-messages-db.sqlite"), "not a database at all");
    const TaskResult broken = MailOptimizer::optimize(home);
    EXPECT_FALSE(broken.success);
    EXPECT_EQ(broken.message,
        QStringLiteral("Couldn’t optimize the Thunderbird database — make sure Thunderbird is "
                       "fully quit, then try again."));
}

TEST(MailOptimizer, NoProfileMeansNoDatabase)
{
    FixtureTree tree;
    tree.makeFolder(QStringLiteral("home/.thunderbird/empty.profile"));
    const TaskResult result = MailOptimizer::optimize(tree.path(QStringLiteral("home")));
    EXPECT_FALSE(result.success);
    EXPECT_EQ(result.message,
        QStringLiteral("No Thunderbird database found — Thunderbird may not be set up on this computer."));
}

TEST(Maintenance, MeasuredChangesNeverGoNegative)
{
    const MaintenanceTask space = *Maintenance::task(QStringLiteral("thinSnapshots"));
    const MaintenanceTask memory = *Maintenance::task(QStringLiteral("purgeMemory"));
    const MaintenanceTask dns = *Maintenance::task(QStringLiteral("flushDNS"));
    EXPECT_EQ(Maintenance::measuredChange(space, 5'000'000, 4'000'000), QStringLiteral("0 bytes back"));
    EXPECT_EQ(Maintenance::measuredChange(space, 4'000'000, 6'500'000), QStringLiteral("2.5 MB back"));
    EXPECT_EQ(Maintenance::measuredChange(memory, 900'000'000, 300'000'000), QStringLiteral("600.0 MB released"));
    EXPECT_FALSE(Maintenance::measuredChange(memory, std::nullopt, 1));
    EXPECT_FALSE(Maintenance::measuredChange(dns, 1, 2));
    EXPECT_EQ(Maintenance::tasks().size(), 5);
}

TEST(HelperManager, StateFollowsTheServiceAndAFailedInstallSaysWhy)
{
    LogCapture log;
    FakeHelperService service;
    HelperManager helper(QStringLiteral("/nonexistent.sock"));
    helper.refreshState(service);
    EXPECT_EQ(helper.state(), HelperManager::State::notInstalled);
    service.setStatus(HelperService::Status::installedNotEnabled);
    helper.refreshState(service);
    EXPECT_EQ(helper.state(), HelperManager::State::needsApproval);

    service.failNextRegistrations({{QStringLiteral("pkexec"), 126, QStringLiteral("The approval was not given.")}});
    helper.install(service);
    EXPECT_EQ(helper.state(), HelperManager::State::failed);
    EXPECT_EQ(helper.failureMessage(), QStringLiteral("The approval was not given."));
    EXPECT_TRUE(log.contains(QStringLiteral("Velloru helper: register() failed domain=pkexec code=126 The approval "
                                            "was not given.")));

    // systemd refusing a service that is already there and running is no failure.
    service.setStatus(HelperService::Status::enabled);
    service.failNextRegistrations({{HelperService::serviceManagerDomain, 1, QStringLiteral("Unit exists.")}});
    helper.install(service);
    EXPECT_EQ(helper.state(), HelperManager::State::ready);

    service.setStatus(HelperService::Status::notInstalled);
    helper.install(service);
    EXPECT_EQ(helper.state(), HelperManager::State::ready);
    EXPECT_EQ(service.registrations(), 3);
}
