#include "platform/AppQuitting.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <future>

using namespace std::chrono_literals;

namespace {

// A copy of a real program under a name no other process has, so that quitting by name reaches only the
// processes the test starts.
QString programNamed(const FixtureTree& tree, const QString& source, const QString& name)
{
    const QString copy = tree.path(QStringLiteral("bin/") + name);
    QDir().mkpath(QFileInfo(copy).path());
    QFile::copy(source, copy);
    return copy;
}

// Asks on another thread while this one answers the children's exits, as the optimizer's caller does: a
// child that ended stays in the process table until its parent collects it.
bool quitWhileServingEvents(const QStringList& names, std::chrono::milliseconds timeout)
{
    auto answer = std::async(std::launch::async, [&] { return quitProcessesNamed(names, timeout); });
    while (answer.wait_for(0s) != std::future_status::ready)
        QTest::qWait(20);
    return answer.get();
}

} // namespace

TEST(AppQuitting, AppsThatAcceptTheRequestQuitAndOneThatIgnoresItIsLeftRunning)
{
    FixtureTree tree;
    const QString tidied = tree.path(QStringLiteral("tidied"));

    // One takes the default action, one tidies up in its handler first, one ignores the request.
    QProcess plain, tidy, stubborn;
    plain.start(
        programNamed(tree, QStringLiteral("/bin/sleep"), QStringLiteral("vquit-plain")), {QStringLiteral("60")});
    tidy.start(programNamed(tree, QStringLiteral("/bin/sh"), QStringLiteral("vquit-tidy")),
        {QStringLiteral("-c"), QStringLiteral("trap 'echo done > \"$0\"; exit 0' TERM; while :; do sleep 0.1; done"),
            tidied});
    stubborn.start(QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"), QStringLiteral("trap '' TERM; exec \"$0\" 60"),
            programNamed(tree, QStringLiteral("/bin/sleep"), QStringLiteral("vquit-stubborn"))});
    for (QProcess* process : {&plain, &tidy, &stubborn})
        ASSERT_TRUE(process->waitForStarted());
    QTest::qWait(300); // the shells set their traps

    EXPECT_TRUE(quitWhileServingEvents({QStringLiteral("vquit-plain"), QStringLiteral("vquit-tidy")}, 15s));
    EXPECT_EQ(plain.state(), QProcess::NotRunning);
    EXPECT_EQ(tidy.state(), QProcess::NotRunning);
    EXPECT_EQ(tidy.exitStatus(), QProcess::NormalExit); // it left through its own handler
    EXPECT_EQ(readWholeFile(tidied), "done\n");

    // Never forced: the one that ignores the request is still there when the wait runs out.
    EXPECT_FALSE(quitWhileServingEvents({QStringLiteral("vquit-stubborn")}, 1s));
    EXPECT_FALSE(stubborn.waitForFinished(500)) << "it was forced to quit";
    stubborn.kill();
    stubborn.waitForFinished();

    // Nobody of that name: nothing to wait for.
    EXPECT_TRUE(quitProcessesNamed({QStringLiteral("vquit-nobody")}, 1s));
}
