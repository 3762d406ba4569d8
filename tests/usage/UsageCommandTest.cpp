#include "TestSupport.h"
#include "UsageFixtures.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

CommandRun usage(const QStringList& arguments)
{
    return runVelloru(QStringList{QStringLiteral("usage")} + arguments);
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
