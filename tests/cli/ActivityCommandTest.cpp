#include "removal/AuditLog.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

CommandRun velloru(const QStringList& arguments, const QString& dataHome)
{
    return runVelloru(arguments, {{QStringLiteral("XDG_DATA_HOME"), dataHome}});
}

} // namespace

TEST(ActivityCommand, PrintsTheLogAsATableAndAsJson)
{
    FixtureTree tree;
    {
        AuditLog log(tree.path(QStringLiteral("Velloru")));
        log.recordMoves(
            QStringLiteral("Smart Scan"), {{QStringLiteral("/home/u/.cache/first"), 1500, QStringLiteral("/t/1")}});
        log.recordFailures(
            QStringLiteral("Duplicates"), {{QStringLiteral("/home/u/second"), QStringLiteral("locked")}});
    }

    const CommandRun table = velloru({QStringLiteral("activity")}, tree.path());
    ASSERT_EQ(table.status, 0) << table.err.toStdString();
    const qsizetype first = table.out.indexOf(QStringLiteral("/home/u/.cache/first"));
    const qsizetype second = table.out.indexOf(QStringLiteral("/home/u/second"));
    ASSERT_GE(first, 0) << table.out.toStdString();
    EXPECT_LT(second, first) << "newest first";
    EXPECT_TRUE(table.out.contains(QStringLiteral("Moved to Trash")));
    EXPECT_TRUE(table.out.contains(QStringLiteral("2 entries · cleaned over all runs: 1.5 kB")));

    const CommandRun json = velloru({QStringLiteral("activity"), QStringLiteral("--json")}, tree.path());
    ASSERT_EQ(json.status, 0);
    const QJsonObject object = QJsonDocument::fromJson(json.out.toUtf8()).object();
    EXPECT_EQ(object.value(u"lifetimeCleaned").toInteger(), 1500);
    const QJsonArray entries = object.value(u"entries").toArray();
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[0].toObject().value(u"outcome").toString(), QStringLiteral("Moved to Trash"));
    EXPECT_EQ(entries[1].toObject().value(u"feature").toString(), QStringLiteral("Duplicates"));
}

TEST(ActivityCommand, BadArgumentsAndCorruptFilesGetClearSentences)
{
    FixtureTree tree;
    const CommandRun unknownCommand = velloru({QStringLiteral("tidy-up")}, tree.path());
    EXPECT_EQ(unknownCommand.status, 2);
    EXPECT_TRUE(unknownCommand.err.contains(QStringLiteral("there is no command “tidy-up”")));

    const CommandRun unknownOption = velloru({QStringLiteral("activity"), QStringLiteral("--yaml")}, tree.path());
    EXPECT_EQ(unknownOption.status, 2);
    EXPECT_TRUE(unknownOption.err.contains(QStringLiteral("unknown option “--yaml”")));

    tree.write(QStringLiteral("Velloru/audit-log.json"), "[{\"id\":");
    const CommandRun corrupt = velloru({QStringLiteral("activity")}, tree.path());
    EXPECT_EQ(corrupt.status, 0);
    EXPECT_TRUE(corrupt.out.contains(QStringLiteral("The activity log is empty")));
    EXPECT_TRUE(corrupt.err.contains(QStringLiteral("Velloru: state file unusable, kept aside")))
        << corrupt.err.toStdString();

    const CommandRun help = velloru({QStringLiteral("help")}, tree.path());
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.out.contains(QStringLiteral("activity [--json]")));
}
