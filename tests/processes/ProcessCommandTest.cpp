#include "helper/HelperTexts.h"
#include "processes/ProcessTexts.h"

#include "ProcessTestSupport.h"
#include "helper/HelperDaemonFixture.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <unistd.h>

namespace {

QJsonObject jsonOf(const CommandRun& run)
{
    return QJsonDocument::fromJson(run.out.toUtf8()).object();
}

std::optional<QJsonObject> listed(const QJsonObject& processes, qint64 pid)
{
    for (const QJsonValue& value : processes.value(u"processes").toArray())
        if (value.toObject().value(u"id").toInteger() == pid)
            return value.toObject();
    return std::nullopt;
}

// Runs velloru as the user nobody, with a home of its own in `tree`, through `wrapper` (a command that ends
// by running what follows it) when one is given.
CommandRun runAsNobody(FixtureTree& tree, const QStringList& arguments,
    const QList<QPair<QString, QString>>& environment = {}, const QStringList& wrapper = {})
{
    QFile::setPermissions(tree.path(), QFileDevice::Permissions(0x7755));
    const QString home = tree.makeFolder(QStringLiteral("nobody-home"));
    if (::chown(QFile::encodeName(home).constData(), 65534, 65534) != 0)
        return {};
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.insert(QStringLiteral("HOME"), home);
    for (const char* folder : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
        variables.insert(QString::fromUtf8(folder), home + QLatin1Char('/') + QString::fromUtf8(folder));
    variables.remove(QStringLiteral("VELLORU_HELPER_SOCKET"));
    for (const auto& [name, value] : environment)
        variables.insert(name, value);
    QStringList command = wrapper;
    command << QStringLiteral("setpriv") << QStringLiteral("--reuid=65534") << QStringLiteral("--regid=65534")
            << QStringLiteral("--clear-groups") << QStringLiteral("--") << QStringLiteral(VELLORU_BINARY) << arguments;
    QProcess process;
    process.setProcessEnvironment(variables);
    process.start(command.takeFirst(), command);
    if (!process.waitForFinished(60'000))
        process.kill();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
        QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

// Velloru and its children see a /proc of their own that hides other users' processes.
const QStringList hidingProc{QStringLiteral("unshare"), QStringLiteral("--mount"), QStringLiteral("--propagation"),
    QStringLiteral("private"), QStringLiteral("--"), QStringLiteral("sh"), QStringLiteral("-c"),
    QStringLiteral("mount -t proc -o hidepid=invisible proc /proc && exec \"$@\""), QStringLiteral("hide")};

} // namespace

TEST(ProcessCommand, ListsSortsReprioritisesAndQuitsAndActivityHasEachStep)
{
    FixtureTree tree;
    const QString program = programCopy(tree, QStringLiteral("sleep"), QStringLiteral("velloru-cli-sleeper"));
    QProcess sleeper;
    QProcess busy;
    sleeper.start(program, {QStringLiteral("60")});
    busy.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("while :; do :; done")});
    ASSERT_TRUE(sleeper.waitForStarted() && busy.waitForStarted());
    const QList<QPair<QString, QString>> data{{QStringLiteral("XDG_DATA_HOME"), tree.path(QStringLiteral("data"))}};

    const CommandRun json = runVelloru({QStringLiteral("processes"), QStringLiteral("--json")}, data);
    ASSERT_EQ(json.status, 0) << json.err.toStdString();
    const auto row = listed(jsonOf(json), sleeper.processId());
    ASSERT_TRUE(row) << json.out.left(500).toStdString();
    EXPECT_EQ(row->value(u"name").toString(), QStringLiteral("velloru-cli-sleeper"));
    EXPECT_EQ(row->value(u"priority").toString(), QStringLiteral("normal"));
    EXPECT_GT(row->value(u"memory").toInteger(), 0);
    EXPECT_EQ(jsonOf(json).value(u"memoryFigure").toString(), QStringLiteral("resident"));

    const CommandRun byCPU = runVelloru(
        {QStringLiteral("processes"), QStringLiteral("--sort"), QStringLiteral("cpu"), QStringLiteral("--json")});
    const QJsonArray rows = jsonOf(byCPU).value(u"processes").toArray();
    ASSERT_GT(rows.size(), 2);
    for (qsizetype i = 1; i < rows.size(); ++i)
        EXPECT_GE(rows[i - 1].toObject().value(u"cpu").toDouble(), rows[i].toObject().value(u"cpu").toDouble());
    const auto busyRow = listed(jsonOf(byCPU), busy.processId());
    ASSERT_TRUE(busyRow);
    EXPECT_GT(busyRow->value(u"cpu").toDouble(), 10.0);

    const CommandRun table = runVelloru({QStringLiteral("processes")});
    EXPECT_EQ(table.status, 0);
    EXPECT_TRUE(table.out.contains(QStringLiteral("velloru-cli-sleeper")));
    EXPECT_TRUE(table.out.contains(QStringLiteral("Memory is resident memory")));

    const QString pid = QString::number(sleeper.processId());
    const CommandRun lowered = runVelloru({QStringLiteral("priority"), pid, QStringLiteral("low")}, data);
    EXPECT_EQ(lowered.status, 0) << lowered.err.toStdString();
    EXPECT_EQ(lowered.out.trimmed(), QStringLiteral("✓ velloru-cli-sleeper now runs at Low priority (nice 10)."));
    EXPECT_EQ(statField(sleeper.processId(), 19), "10");

    const CommandRun quit = runVelloru({QStringLiteral("quit"), pid}, data);
    EXPECT_EQ(quit.status, 0) << quit.err.toStdString();
    EXPECT_TRUE(sleeper.state() == QProcess::NotRunning || sleeper.waitForFinished(2000));
    const CommandRun forced
        = runVelloru({QStringLiteral("quit"), QString::number(busy.processId()), QStringLiteral("--force")}, data);
    EXPECT_EQ(forced.status, 0) << forced.err.toStdString();
    EXPECT_TRUE(busy.state() == QProcess::NotRunning || busy.waitForFinished(2000));
    EXPECT_EQ(busy.exitStatus(), QProcess::CrashExit);

    const CommandRun activity = runVelloru({QStringLiteral("activity"), QStringLiteral("--json")}, data);
    const QJsonArray entries = jsonOf(activity).value(u"entries").toArray();
    ASSERT_EQ(entries.size(), 3) << activity.out.toStdString();
    for (const QJsonValue& entry : entries)
        EXPECT_EQ(entry.toObject().value(u"feature").toString(), QStringLiteral("Memory Usage"));
}

TEST(ProcessCommand, BadUsageRefusalsAndMissingProcessesGetClearSentences)
{
    for (const QStringList& bad :
        {QStringList{QStringLiteral("processes"), QStringLiteral("--sort"), QStringLiteral("size")},
            QStringList{QStringLiteral("processes"), QStringLiteral("--sort")}, QStringList{QStringLiteral("quit")},
            QStringList{QStringLiteral("quit"), QStringLiteral("firefox")},
            QStringList{QStringLiteral("priority"), QStringLiteral("42"), QStringLiteral("medium")},
            QStringList{QStringLiteral("memory"), QStringLiteral("--yaml")}}) {
        const CommandRun run = runVelloru(bad);
        EXPECT_EQ(run.status, 2) << bad.join(u' ').toStdString();
        EXPECT_FALSE(run.err.isEmpty());
    }
    FixtureTree tree;
    const QList<QPair<QString, QString>> data{{QStringLiteral("XDG_DATA_HOME"), tree.path()}};
    const CommandRun init = runVelloru({QStringLiteral("quit"), QStringLiteral("1"), QStringLiteral("--force")}, data);
    EXPECT_EQ(init.status, 1);
    EXPECT_EQ(init.err.trimmed(), QStringLiteral("✗ That process can't be signalled."));
    const CommandRun zero = runVelloru({QStringLiteral("priority"), QStringLiteral("0"), QStringLiteral("high")}, data);
    EXPECT_EQ(zero.err.trimmed(), QStringLiteral("✗ That process can't be reprioritised."));
    const CommandRun missing = runVelloru({QStringLiteral("quit"), QStringLiteral("2147483647")}, data);
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err.trimmed(), ProcessTexts::noSuchProcess(2147483647));
}

TEST(ProcessCommand, MemoryShowsThePressureAndTheLargestApps)
{
    const CommandRun json = runVelloru({QStringLiteral("memory"), QStringLiteral("--json")});
    ASSERT_EQ(json.status, 0) << json.err.toStdString();
    const QJsonObject memory = jsonOf(json);
    EXPECT_GT(memory.value(u"total").toInteger(), 0);
    EXPECT_LE(memory.value(u"used").toInteger(), memory.value(u"total").toInteger());
    EXPECT_TRUE(QStringList({QStringLiteral("normal"), QStringLiteral("elevated"), QStringLiteral("critical")})
                    .contains(memory.value(u"pressure").toString()));
    EXPECT_EQ(memory.value(u"pressureFromStalls").toBool(), QFile::exists(QStringLiteral("/proc/pressure/memory")));
    const QJsonArray largest = memory.value(u"largest").toArray();
    ASSERT_FALSE(largest.isEmpty());
    for (qsizetype i = 1; i < largest.size(); ++i)
        EXPECT_GE(
            largest[i - 1].toObject().value(u"memory").toInteger(), largest[i].toObject().value(u"memory").toInteger());

    const CommandRun text = runVelloru({QStringLiteral("memory")});
    EXPECT_TRUE(text.out.startsWith(QStringLiteral("Memory: "))) << text.out.toStdString();
    EXPECT_TRUE(text.out.contains(QStringLiteral("\nPressure: ")));
    EXPECT_TRUE(text.out.contains(QStringLiteral("Using the most memory:")));
}

using ProcessCommandAsAnotherUser = HelperDaemonTest;

TEST_F(ProcessCommandAsAnotherUser, AnotherUsersProcessIsHandedToTheHelper)
{
    if (!runningAsRoot())
        GTEST_SKIP() << "needs root to run Velloru as another user than the process it acts on";
    QProcess child;
    child.start(QStringLiteral("sleep"), {QStringLiteral("60")});
    ASSERT_TRUE(child.waitForStarted());
    const QString pid = QString::number(child.processId());

    // nobody may not raise root's process, and without the helper is told what to do.
    const CommandRun alone = runAsNobody(tree, {QStringLiteral("priority"), pid, QStringLiteral("high")});
    if (alone.status == -1 || (alone.out.isEmpty() && alone.err.isEmpty()))
        GTEST_SKIP() << "Velloru cannot run as another user here: " << alone.err.toStdString();
    EXPECT_EQ(alone.status, 1);
    EXPECT_EQ(alone.err.trimmed(), QStringLiteral("✗ ") + HelperTexts::systemProcess());
    EXPECT_EQ(statField(child.processId(), 19), "0");

    const QList<QPair<QString, QString>> withHelper{{QStringLiteral("VELLORU_HELPER_SOCKET"), socketPath}};
    const CommandRun raised = runAsNobody(tree, {QStringLiteral("priority"), pid, QStringLiteral("high")}, withHelper);
    EXPECT_EQ(raised.status, 0) << raised.err.toStdString();
    EXPECT_EQ(statField(child.processId(), 19), "-10");

    const CommandRun ended = runAsNobody(tree, {QStringLiteral("quit"), pid, QStringLiteral("--force")}, withHelper);
    EXPECT_EQ(ended.status, 0) << ended.err.toStdString();
    EXPECT_TRUE(child.state() == QProcess::NotRunning || child.waitForFinished(2000));
    EXPECT_EQ(child.exitStatus(), QProcess::CrashExit);
}

TEST_F(ProcessCommandAsAnotherUser, ProcessesThatProcHidesAreReadThroughTheHelper)
{
    if (!runningAsRoot())
        GTEST_SKIP() << "needs root to mount a /proc that hides other users' processes";
    FixtureTree bin;
    const QString program = programCopy(bin, QStringLiteral("sleep"), QStringLiteral("velloru-hidden-sleeper"));
    QProcess child;
    child.start(program, {QStringLiteral("60")});
    ASSERT_TRUE(child.waitForStarted());
    const QStringList list{QStringLiteral("processes"), QStringLiteral("--all"), QStringLiteral("--json")};

    const CommandRun hidden = runAsNobody(tree, list, {}, hidingProc);
    if (hidden.status != 0)
        GTEST_SKIP() << "a /proc with hidepid cannot be mounted here: " << hidden.err.toStdString();
    EXPECT_TRUE(jsonOf(hidden).value(u"systemProcessesHidden").toBool());
    EXPECT_FALSE(listed(jsonOf(hidden), child.processId()));
    EXPECT_TRUE(hidden.err.startsWith(ProcessTexts::installHelperForMemory())) << hidden.err.toStdString();

    const CommandRun read
        = runAsNobody(tree, list, {{QStringLiteral("VELLORU_HELPER_SOCKET"), socketPath}}, hidingProc);
    ASSERT_EQ(read.status, 0) << read.err.toStdString();
    const auto row = listed(jsonOf(read), child.processId());
    ASSERT_TRUE(row) << read.out.left(400).toStdString();
    EXPECT_FALSE(row->value(u"figuresKnown").toBool());
    EXPECT_TRUE(row->value(u"isSystem").toBool());
    EXPECT_GT(row->value(u"memory").toInteger(), 0);
    EXPECT_FALSE(read.err.contains(ProcessTexts::installHelperForMemory()));
}
