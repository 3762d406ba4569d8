#include "TestSupport.h"
#include "UsageFixtures.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

namespace {

CommandRun usage(const QStringList& arguments)
{
    return runVelloru(QStringList{QStringLiteral("usage")} + arguments);
}

// "velloru usage" in a process that a folder's permissions stop: as root, started through setpriv without
// the two capabilities that let root read any folder. Nothing when that can't be done here.
std::optional<CommandRun> usageWithAccessChecks(const QStringList& arguments)
{
    if (!runningAsRoot())
        return usage(arguments);
    const QString setpriv = QStandardPaths::findExecutable(QStringLiteral("setpriv"));
    if (setpriv.isEmpty())
        return std::nullopt;
    const QString dropped = QStringLiteral("-dac_override,-dac_read_search");
    return runProgram(setpriv,
        QStringList{QStringLiteral("--inh-caps=") + dropped, QStringLiteral("--bounding-set=") + dropped,
            QStringLiteral(VELLORU_BINARY), QStringLiteral("usage")}
            + arguments);
}

} // namespace

TEST(UsageCommand, ListsTheBiggestFoldersWithSharesAsTableAndJson)
{
    FixtureTree tree;
    writeFileOfSize(tree.path("small/file"), 10'000);
    writeFileOfSize(tree.path("large/inner/file"), 900'000);
    writeFileOfSize(tree.path("large/file"), 50'000);
    writeFileOfSize(tree.path("in-root"), 40'000);

    const CommandRun table = usage({tree.path()});
    ASSERT_EQ(table.status, 0) << table.err.toStdString();
    const qsizetype large = table.out.indexOf(tree.path("large"));
    const qsizetype small = table.out.indexOf(tree.path("small"));
    ASSERT_GE(large, 0) << table.out.toStdString();
    EXPECT_LT(large, small) << "largest first";
    EXPECT_FALSE(table.out.contains(tree.path("large/inner"))) << "depth 1 by default";
    EXPECT_TRUE(table.out.contains(QStringLiteral("Files in this folder")));
    EXPECT_TRUE(table.out.contains(QStringLiteral("Sizes are allocated bytes on disk.")));
    EXPECT_TRUE(table.err.isEmpty()) << "no progress when stderr is not a terminal";

    const CommandRun json
        = usage({tree.path(), QStringLiteral("--json"), QStringLiteral("--depth"), QStringLiteral("2")});
    ASSERT_EQ(json.status, 0) << json.err.toStdString();
    const QJsonObject object = QJsonDocument::fromJson(json.out.toUtf8()).object();
    EXPECT_EQ(object.value(QStringLiteral("total")).toInteger(), duBytes(tree.path()));
    EXPECT_EQ(object.value(QStringLiteral("rootFileCount")).toInteger(), 1);
    const QJsonArray items = object.value(QStringLiteral("items")).toArray();
    ASSERT_EQ(items.size(), 3);
    double shares = 0;
    for (const QJsonValue& item : items)
        shares += item.toObject().value(QStringLiteral("share")).toDouble();
    EXPECT_NEAR(shares, 1.0, 1e-9);
    const QJsonObject first = items.first().toObject();
    EXPECT_EQ(first.value(QStringLiteral("path")).toString(), tree.path("large"));
    EXPECT_EQ(first.value(QStringLiteral("bytes")).toInteger(), duBytes(tree.path("large")));
    const QJsonArray inner = first.value(QStringLiteral("items")).toArray();
    ASSERT_EQ(inner.size(), 2);
    EXPECT_EQ(inner.first().toObject().value(QStringLiteral("path")).toString(), tree.path("large/inner"));
}

TEST(UsageCommand, ListsTheLargestFilesOfTheWholeTree)
{
    FixtureTree tree;
    writeFileOfSize(tree.path("a/b/c/deep.bin"), 2'000'000);
    writeFileOfSize(tree.path("in-root.bin"), 1'000'000);
    writeFileOfSize(tree.path("a/small.txt"), 5'000);
    // Several worker threads keep their own largest files; what they merge must still be the largest.
    for (int i = 0; i < 40; ++i)
        writeFileOfSize(tree.path(QStringLiteral("many/%1/file").arg(i)), 10'000 + i * 8192); // distinct in blocks

    const CommandRun json
        = usage({tree.path(), QStringLiteral("--largest"), QStringLiteral("3"), QStringLiteral("--json")});
    ASSERT_EQ(json.status, 0) << json.err.toStdString();
    const QJsonArray files
        = QJsonDocument::fromJson(json.out.toUtf8()).object().value(QStringLiteral("largestFiles")).toArray();
    ASSERT_EQ(files.size(), 3);
    EXPECT_EQ(files[0].toObject().value(QStringLiteral("path")).toString(), tree.path("a/b/c/deep.bin"));
    EXPECT_EQ(files[1].toObject().value(QStringLiteral("path")).toString(), tree.path("in-root.bin"));
    EXPECT_EQ(files[2].toObject().value(QStringLiteral("path")).toString(), tree.path("many/39/file"));

    const CommandRun table = usage({tree.path(), QStringLiteral("--largest"), QStringLiteral("2")});
    ASSERT_EQ(table.status, 0) << table.err.toStdString();
    EXPECT_LT(table.out.indexOf(tree.path("a/b/c/deep.bin")), table.out.indexOf(tree.path("in-root.bin")));
    EXPECT_FALSE(table.out.contains(tree.path("many/39/file")));
    EXPECT_EQ(usage({tree.path(), QStringLiteral("--largest"), QStringLiteral("0")}).status, 2);
}

TEST(UsageCommand, TotalMatchesDuOnARealTree)
{
    const QString root = QFileInfo::exists(QStringLiteral("/usr/include")) ? QStringLiteral("/usr/include")
                                                                           : QStringLiteral("/usr/share");
    const CommandRun json = usage({root, QStringLiteral("--json")});
    ASSERT_EQ(json.status, 0) << json.err.toStdString();
    const QJsonObject object = QJsonDocument::fromJson(json.out.toUtf8()).object();
    EXPECT_EQ(object.value(QStringLiteral("total")).toInteger(), duBytes(root, {QStringLiteral("-x")}));
}

TEST(UsageCommand, RejectsAMissingFolderAndUnknownOptions)
{
    FixtureTree tree;
    const CommandRun missing = usage({tree.path("nowhere")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.contains(
        QStringLiteral("There is no folder at “%1” — check the path and try again.").arg(tree.path("nowhere"))))
        << missing.err.toStdString();

    EXPECT_EQ(usage({QStringLiteral("--fast")}).status, 2);
    EXPECT_EQ(usage({QStringLiteral("--depth"), QStringLiteral("0")}).status, 2);

    const CommandRun two = usage({tree.path(), tree.path()});
    EXPECT_EQ(two.status, 2);
    EXPECT_EQ(two.err, QStringLiteral("velloru usage: name one folder — usage measures one folder at a time.\n"));
}

TEST(UsageCommand, SaysWhichFoldersCouldNotBeRead)
{
    FixtureTree tree;
    writeFileOfSize(tree.path("open/file"), 20'000);
    writeFileOfSize(tree.path("open/locked/secret"), 500'000);
    writeFileOfSize(tree.path("closed/secret"), 500'000);
    writeFileOfSize(tree.path("shut/secret"), 500'000);
    for (const char* folder : {"open/locked", "closed", "shut"})
        ASSERT_TRUE(QFile::setPermissions(tree.path(folder), {}));
    const auto whole = usageWithAccessChecks({tree.path("shut")});
    const auto partly = usageWithAccessChecks({tree.path()});
    const auto json = usageWithAccessChecks({tree.path(), QStringLiteral("--json")});
    for (const char* folder : {"open/locked", "closed", "shut"})
        QFile::setPermissions(tree.path(folder), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (!whole)
        GTEST_SKIP() << "running as root without setpriv, so no folder can be made unreadable to velloru";

    EXPECT_EQ(whole->status, 1);
    EXPECT_EQ(whole->err,
        QStringLiteral("Velloru can’t examine “%1” — check that the folder exists and that you may read it.\n")
            .arg(tree.path("shut")));
    EXPECT_TRUE(whole->out.isEmpty());

    ASSERT_EQ(partly->status, 0) << partly->err.toStdString();
    EXPECT_TRUE(partly->out.endsWith(QStringLiteral("3 folders couldn’t be read, so their contents aren’t in the "
                                                    "total — check the permissions of “%1” and the others.\n")
                                         .arg(tree.path("closed"))))
        << partly->out.toStdString();

    ASSERT_EQ(json->status, 0);
    const QJsonArray unreadable
        = QJsonDocument::fromJson(json->out.toUtf8()).object().value(QStringLiteral("unreadableFolders")).toArray();
    EXPECT_EQ(
        unreadable.toVariantList(), QVariantList({tree.path("closed"), tree.path("open/locked"), tree.path("shut")}));
}
