#include "ProgramHome.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

namespace {

QList<QPair<QString, QString>> helperAt(const QString& socket)
{
    return {{QStringLiteral("VELLORU_HELPER_SOCKET"), socket}};
}

// The activity log's newest entry, as "title → outcome".
QString lastActivity(const ProgramHome& home)
{
    const CommandRun activity = home.run({QStringLiteral("activity"), QStringLiteral("--json")});
    const QJsonArray entries = QJsonDocument::fromJson(activity.out.toUtf8())[QStringLiteral("entries")].toArray();
    if (entries.isEmpty())
        return {};
    return entries.last()[QStringLiteral("path")].toString() + QStringLiteral(" → ")
        + entries.last()[QStringLiteral("outcome")].toString();
}

} // namespace

TEST(HelperCommand, StatusSaysWhetherTheHelperIsThereAndAnswering)
{
    ProgramHome home;
    if (QFileInfo::exists(QStringLiteral("/etc/systemd/system/velloru-helper.socket")))
        GTEST_SKIP() << "the helper is installed on this machine, so “not installed” cannot be seen";
    const CommandRun absent = home.run({QStringLiteral("helper"), QStringLiteral("status")});
    EXPECT_EQ(absent.status, 1);
    EXPECT_EQ(absent.out, QStringLiteral("Maintenance Helper: Helper not installed yet\n"));

    // Pointed at a socket nobody listens on, it counts as set up but silent.
    const CommandRun silent = home.run({QStringLiteral("helper"), QStringLiteral("status")},
        helperAt(home.tree().path(QStringLiteral("nobody-here.sock"))));
    EXPECT_EQ(silent.status, 1);
    EXPECT_EQ(silent.out, QStringLiteral("Maintenance Helper: The helper is registered but isn’t responding.\n"));

    HelperOnSocket helper("{}");
    ASSERT_TRUE(helper.isListening()) << helper.output().toStdString();
    const CommandRun ready
        = home.run({QStringLiteral("helper"), QStringLiteral("status")}, helperAt(helper.socketPath()));
    EXPECT_EQ(ready.status, 0) << ready.err.toStdString();
    EXPECT_EQ(ready.out, QStringLiteral("Maintenance Helper: Helper installed and ready\n"));

    const CommandRun wrong = home.run({QStringLiteral("helper"), QStringLiteral("restart")});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_EQ(wrong.err, QStringLiteral("velloru helper: say “status”, “install” or “uninstall”.\n"));
}

TEST(MaintenanceCommand, ListsEveryTaskAndRunsOneThroughTheHelper)
{
    ProgramHome home;
    const CommandRun list = home.run({QStringLiteral("maintenance")});
    ASSERT_EQ(list.status, 0);
    EXPECT_EQ(list.out,
        QStringLiteral("thinSnapshots       Reclaim Purgeable Space — Deletes old journal files and asks the package "
                       "manager for cached space back.\n"
                       "purgeMemory         Purge Inactive Memory — Releases cached file memory.\n"
                       "flushDNS            Flush DNS Cache — Fixes sites that won’t load after a network or DNS "
                       "change.\n"
                       "rebuildSpotlight    Rebuild File Search Index — Fixes missing or wrong file search results.\n"
                       "rebuildFontCaches   Rebuild Font Caches — Fixes garbled or missing fonts.\n"
                       "mail                Optimize Thunderbird — compacts and reindexes its message index (no helper "
                       "needed).\n"));

    const CommandRun unknown = home.run({QStringLiteral("maintenance"), QStringLiteral("defragment")});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_TRUE(unknown.err.contains(QStringLiteral("there is no task “defragment”"))) << unknown.err.toStdString();

    // A helper that cannot be reached fails the task, and the activity log says why.
    const CommandRun unreachable = home.run({QStringLiteral("maintenance"), QStringLiteral("flushDNS")},
        helperAt(home.tree().path(QStringLiteral("nobody-here.sock"))));
    EXPECT_EQ(unreachable.status, 1);
    EXPECT_TRUE(
        unreachable.out.startsWith(QStringLiteral("✗ Flush DNS Cache: Couldn’t reach the maintenance helper: ")))
        << unreachable.out.toStdString();
    EXPECT_TRUE(lastActivity(home).startsWith(
        QStringLiteral("Flush DNS Cache → Failed: Couldn’t reach the maintenance helper: ")))
        << lastActivity(home).toStdString();

    // The real helper runs the task's programs; the free space Velloru measured follows its message.
    HelperOnSocket helper(R"({"thinSnapshots": [["true", "first"], ["true", "second"]]})");
    ASSERT_TRUE(helper.isListening()) << helper.output().toStdString();
    const CommandRun reclaimed
        = home.run({QStringLiteral("maintenance"), QStringLiteral("thinSnapshots")}, helperAt(helper.socketPath()));
    EXPECT_EQ(reclaimed.status, 0) << reclaimed.err.toStdString();
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^✓ Reclaim Purgeable Space: Old journal files and cached packages "
                                                  "removed\\. [0-9.]+ (bytes|kB|MB|GB|TB) back\\n$"))
                    .match(reclaimed.out)
                    .hasMatch())
        << reclaimed.out.toStdString();
    EXPECT_TRUE(reclaimed.err.contains(QStringLiteral("1/2 true first"))
        && reclaimed.err.contains(QStringLiteral("2/2 true second")))
        << reclaimed.err.toStdString();
    EXPECT_TRUE(lastActivity(home).startsWith(QStringLiteral("Reclaim Purgeable Space → Old journal files")));
}
