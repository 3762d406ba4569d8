#include "platform/MaintenanceCommands.h"

#include "helper/HelperManager.h"
#include "helper/Maintenance.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QStandardPaths>
#include <QTest>

using namespace std::chrono_literals;

namespace {

// Where the helper finds programs when systemd starts it.
const QStringList serviceSearchPath{QStringLiteral("/usr/local/sbin"), QStringLiteral("/usr/local/bin"),
    QStringLiteral("/usr/sbin"), QStringLiteral("/usr/bin"), QStringLiteral("/sbin"), QStringLiteral("/bin")};

} // namespace

TEST(MaintenanceCommands, EveryTaskRunsProgramsThatAreInstalledOrThatTheHelperSkips)
{
    const QHash<QString, QList<QStringList>> table = defaultMaintenanceCommands();
    QStringList tasks;
    for (const MaintenanceTask& task : Maintenance::tasks())
        tasks << task.rawValue;
    QStringList named = table.keys();
    named.sort();
    tasks.sort();
    EXPECT_EQ(named, tasks);

    QStringList notHere;
    for (auto it = table.cbegin(); it != table.cend(); ++it) {
        EXPECT_FALSE(it->isEmpty()) << it.key().toStdString();
        for (const QStringList& command : *it) {
            ASSERT_FALSE(command.isEmpty()) << it.key().toStdString();
            const QString found = QStandardPaths::findExecutable(command.first(), serviceSearchPath);
            if (found.isEmpty())
                notHere << command.first();
            else
                EXPECT_TRUE(QFileInfo(found).isExecutable()) << found.toStdString();
        }
    }
    RecordProperty("notInstalledHere", notHere.join(u' ').toStdString());

    // The real helper with its own table and none of those programs in reach: every task that needs a
    // program says so instead of failing on the first one. (Purging memory needs none: it would drop this
    // machine's page cache, so it is not run here.)
    QProcessEnvironment nothingInstalled = QProcessEnvironment::systemEnvironment();
    nothingInstalled.insert(QStringLiteral("PATH"), QStringLiteral("/nonexistent"));
    HelperOnSocket daemon(QByteArray(), nothingInstalled);
    ASSERT_TRUE(daemon.isListening()) << daemon.output().toStdString();
    HelperManager helper(daemon.socketPath());
    helper.setState(HelperManager::State::ready);
    for (const QString& task : tasks) {
        if (task == QLatin1String("purgeMemory"))
            continue;
        std::optional<TaskResult> result;
        helper.run(task, 30s, {}, [&result](TaskResult answer) { result = answer; });
        ASSERT_TRUE(QTest::qWaitFor([&] { return result.has_value(); }, 30'000)) << task.toStdString();
        EXPECT_FALSE(result->success) << task.toStdString();
        // The sentence names what is missing and the package that brings it.
        for (const QStringList& command : defaultMaintenanceCommands().value(task)) {
            EXPECT_TRUE(result->message.contains(command.first())) << result->message.toStdString();
            EXPECT_TRUE(result->message.contains(packageProviding(command.first()))) << result->message.toStdString();
        }
        EXPECT_TRUE(result->message.endsWith(QStringLiteral(", then try again."))) << result->message.toStdString();
    }
}
