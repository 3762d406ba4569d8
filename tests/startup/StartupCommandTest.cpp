#include "ProgramHome.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QJsonObject itemWithId(const QString& json, const QString& id)
{
    for (const QJsonValue& item : QJsonDocument::fromJson(json.toUtf8()).object().value("items").toArray())
        if (item.toObject().value("id").toString() == id)
            return item.toObject();
    return {};
}

} // namespace

TEST(StartupCommand, ListsSwitchesAndRemovesAnAutostartEntryRecordingEachInActivity)
{
    ProgramHome home;
    const QString entry = home.tree().write(QStringLiteral("home/.config/autostart/notes.desktop"),
        "[Desktop Entry]\nType=Application\nName=Notes\nExec=/opt/notes-removed/notes\n");
    const QString id = QStringLiteral("app:") + entry;

    const CommandRun listed = home.run({QStringLiteral("startup"), QStringLiteral("list"), QStringLiteral("--json")});
    ASSERT_EQ(listed.status, 0) << listed.err.toStdString();
    const QJsonObject notes = itemWithId(listed.out, id);
    EXPECT_EQ(notes.value("name").toString(), QStringLiteral("Notes"));
    EXPECT_EQ(notes.value("kind").toString(), QStringLiteral("Opens at login"));
    EXPECT_EQ(notes.value("health").toString(), QStringLiteral("programMissing"));
    EXPECT_TRUE(notes.value("enabled").toBool());
    EXPECT_TRUE(QJsonDocument::fromJson(listed.out.toUtf8()).object().contains("complete"));

    const CommandRun off = home.run({QStringLiteral("startup"), QStringLiteral("off"), id});
    EXPECT_EQ(off.status, 0) << off.out.toStdString() << off.err.toStdString();
    EXPECT_EQ(off.out, QStringLiteral("✓ Notes is off. Your desktop won’t start it at login.\n"));
    EXPECT_TRUE(readWholeFile(entry).contains("Hidden=true"));
    const CommandRun text = home.run({QStringLiteral("startup"), QStringLiteral("list")});
    EXPECT_TRUE(text.out.contains(QStringLiteral("Broken — program missing")));

    const CommandRun removed
        = home.run({QStringLiteral("startup"), QStringLiteral("remove"), id, QStringLiteral("--json")});
    EXPECT_EQ(removed.status, 0) << removed.out.toStdString();
    EXPECT_EQ(QJsonDocument::fromJson(removed.out.toUtf8()).object().value("message").toString(),
        QStringLiteral("Notes no longer opens at login. The app itself is untouched."));
    EXPECT_FALSE(QFileInfo::exists(entry));
    EXPECT_TRUE(QFileInfo::exists(home.path(QStringLiteral(".local/share/Trash/files/notes.desktop"))));

    const CommandRun activity = home.run({QStringLiteral("activity"), QStringLiteral("--json")});
    EXPECT_EQ(activity.out.count(QStringLiteral("\"Login Items\"")), 2) << activity.out.toStdString();
}

TEST(StartupCommand, BadUsageAndUnknownItemsExitWithTwo)
{
    ProgramHome home;
    EXPECT_EQ(home.run({QStringLiteral("startup")}).status, 2);
    EXPECT_EQ(home.run({QStringLiteral("startup"), QStringLiteral("off")}).status, 2);
    EXPECT_EQ(home.run({QStringLiteral("startup"), QStringLiteral("list"), QStringLiteral("--yaml")}).status, 2);
    const CommandRun unknown
        = home.run({QStringLiteral("startup"), QStringLiteral("on"), QStringLiteral("nothing.service")});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_TRUE(unknown.err.contains(QStringLiteral("there is no startup item “nothing.service”")));
}
