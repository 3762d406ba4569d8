#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

// Runs a shell command line in which "$0" is velloru and "$1" the fixture folder: the shell can hand
// velloru arguments made of any bytes, which no QString can carry.
CommandRun runInShell(const QString& script, const FixtureTree& tree)
{
    return runProgram(QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"), script, QStringLiteral(VELLORU_BINARY), tree.path()},
        {{QStringLiteral("XDG_DATA_HOME"), tree.path(QStringLiteral("data"))}});
}

QStringList trashed(const FixtureTree& tree)
{
    return QDir(tree.path(QStringLiteral("data/Trash/files"))).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
}

} // namespace

TEST(CommandLine, AnArgumentThatIsNotUtf8IsRefusedAndNothingIsDone)
{
    // "bad\xffname" decodes to the name of the other file, "bad\xef\xbf\xbdname".
    FixtureTree tree;
    const QByteArray root = QFile::encodeName(tree.path());
    ASSERT_TRUE(writeFileNamedBytes(root + "/bad\xffname", "the file named"));
    ASSERT_TRUE(writeFileNamedBytes(root + "/bad\xef\xbf\xbdname", "another file"));

    const CommandRun run = runInShell(QStringLiteral("exec \"$0\" trash \"$1/$(printf 'bad\\377name')\""), tree);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err,
        QStringLiteral("velloru: the argument “%1/bad\\xFFname” isn’t valid UTF-8 — rename the file or folder so "
                       "that its name is, then try again.\n")
            .arg(tree.path()));
    EXPECT_EQ(readWholeFile(tree.path(QStringLiteral("bad\uFFFDname"))), "another file");
    EXPECT_TRUE(trashed(tree).isEmpty());
    EXPECT_FALSE(QFile::exists(tree.path(QStringLiteral("data/Velloru/audit-log.json"))));
}

TEST(CommandLine, UnknownOptionsAreUsageErrorsWhileQtsOwnOptionsGoToTheWindow)
{
    for (const QStringList& arguments : {QStringList{QStringLiteral("--json")}, QStringList{QStringLiteral("--nope")},
             QStringList{QStringLiteral("-platform"), QStringLiteral("offscreen"), QStringLiteral("--nope")}}) {
        const CommandRun run = runVelloru(arguments);
        EXPECT_EQ(run.status, 2) << arguments.join(u' ').toStdString();
        EXPECT_EQ(run.err,
            QStringLiteral("velloru: “%1” is neither a command nor an option of the window — run “velloru help” to "
                           "see the commands, and put a command’s options after it.\n")
                .arg(arguments.last()));
    }

    // Qt takes these itself: the window gets them, and here fails on the platform that does not exist.
    const CommandRun window = runVelloru({QStringLiteral("-platform"), QStringLiteral("no-such-platform"),
        QStringLiteral("--reverse"), QStringLiteral("-style=Fusion"), QStringLiteral("-qwindowgeometry"),
        QStringLiteral("640x480"), QStringLiteral("--stylesheet"), QStringLiteral("none.qss")});
    EXPECT_NE(window.status, 2);
    EXPECT_TRUE(window.err.contains(QStringLiteral("no-such-platform"))) << window.err.toStdString();
}

TEST(CommandLine, WithoutADisplayTheWindowIsNotTriedAndTheCommandsAreSuggested)
{
    const QList<QPair<QString, QString>> noDisplay = {{QStringLiteral("DISPLAY"), {}},
        {QStringLiteral("WAYLAND_DISPLAY"), {}}, {QStringLiteral("QT_QPA_PLATFORM"), {}}};
    const CommandRun run = runVelloru({}, noDisplay);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
        QStringLiteral("velloru: there is no display to open the window on — run a command instead, such as "
                       "“velloru scan” (“velloru help” lists them).\n"));
}

TEST(CommandLine, DoubleDashEndsTheOptionsInEveryCommand)
{
    FixtureTree tree;
    tree.write(QStringLiteral("-file"), "dash");
    tree.write(QStringLiteral("--json"), "json");
    tree.write(QStringLiteral("-folder/inside"), QByteArray(5000, 'x'));

    const CommandRun refused = runInShell(QStringLiteral("cd \"$1\" && exec \"$0\" trash -file"), tree);
    EXPECT_EQ(refused.status, 2);
    EXPECT_TRUE(refused.err.contains(QStringLiteral("unknown option “-file”"))) << refused.err.toStdString();
    EXPECT_TRUE(trashed(tree).isEmpty());

    const CommandRun both = runInShell(QStringLiteral("cd \"$1\" && exec \"$0\" trash -- -file --json"), tree);
    EXPECT_EQ(both.status, 0) << both.out.toStdString() << both.err.toStdString();
    EXPECT_TRUE(both.out.contains(QStringLiteral("2 moved"))) << "--json after -- is a name, so no JSON";
    QStringList expected = {QStringLiteral("--json"), QStringLiteral("-file")};
    EXPECT_EQ(trashed(tree), expected);

    const CommandRun usage = runInShell(QStringLiteral("cd \"$1\" && exec \"$0\" usage --json -- -folder"), tree);
    ASSERT_EQ(usage.status, 0) << usage.err.toStdString();
    EXPECT_EQ(QJsonDocument::fromJson(usage.out.toUtf8()).object().value(QStringLiteral("path")).toString(),
        tree.path(QStringLiteral("-folder")));

    const CommandRun activity = runVelloru({QStringLiteral("activity"), QStringLiteral("--"), QStringLiteral("--json")},
        {{QStringLiteral("XDG_DATA_HOME"), tree.path(QStringLiteral("data"))}});
    EXPECT_EQ(activity.status, 2);
    EXPECT_TRUE(activity.err.contains(QStringLiteral("unknown argument “--json”"))) << activity.err.toStdString();
}
