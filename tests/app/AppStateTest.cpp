#include "app/AppState.h"
#include "app/UserDefaults.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

TEST(Destination, SixteenSectionsWithExactCaseSensitiveParsing)
{
    const auto& all = Destinations::all();
    ASSERT_EQ(all.size(), 16u);
    EXPECT_EQ(all.front(), Destination::dashboard);
    EXPECT_EQ(all.back(), Destination::auditLog);
    QStringList raw;
    for (const Destination destination : all) {
        raw.append(Destinations::rawValue(destination));
        EXPECT_EQ(Destinations::parse(Destinations::rawValue(destination)), destination);
        EXPECT_FALSE(Destinations::title(destination).isEmpty());
    }
    EXPECT_EQ(raw.join(u','),
        QStringLiteral("dashboard,diskUsage,memoryUsage,uninstaller,duplicates,leftovers,browsers,chats,"
                       "loginItems,webExtensions,maintenance,diskImaging,diskMount,fileSync,firstAid,auditLog"));
    EXPECT_EQ(Destinations::title(Destination::auditLog), QStringLiteral("Activity"));
    EXPECT_EQ(Destinations::title(Destination::chats), QStringLiteral("Chat Apps"));
    EXPECT_EQ(Destinations::title(Destination::webExtensions), QStringLiteral("Extensions"));
    EXPECT_FALSE(Destinations::parse(u"Activity"));
    EXPECT_FALSE(Destinations::parse(u"AuditLog"));
    EXPECT_FALSE(Destinations::parse(u"auditLog "));
    EXPECT_FALSE(Destinations::parse(u""));
}

TEST(AppState, StartPageComesFromTheDebugKeyOnlyWhenItIsARawValue)
{
    QSettings defaults;
    defaults.setValue(DefaultsKey::debugStartPage, QStringLiteral("auditLog"));
    EXPECT_EQ(AppState().selection(), Destination::auditLog);
    defaults.setValue(DefaultsKey::debugStartPage, QStringLiteral("Activity"));
    EXPECT_EQ(AppState().selection(), Destination::dashboard);
    defaults.remove(DefaultsKey::debugStartPage);
    EXPECT_EQ(AppState().selection(), Destination::dashboard);
}

TEST(AppState, ProgrammaticNavigationAlwaysTicks)
{
    AppState state;
    QSignalSpy ticks(&state, &AppState::navigationTickChanged);
    QSignalSpy selections(&state, &AppState::selectionChanged);
    state.navigate(Destination::dashboard); // the section already shown: still observed through the tick
    state.navigate(Destination::duplicates);
    state.select(Destination::maintenance);
    EXPECT_EQ(ticks.size(), 2);
    EXPECT_EQ(selections.size(), 2);
    EXPECT_EQ(state.navigationTick(), 2u);
    EXPECT_EQ(state.selection(), Destination::maintenance);
}

TEST(AppState, CountsRefreshFindsPresentBrowsersAndChatsAndZeroIsACount)
{
    AppState state;
    // Only the duplicates vault, loaded at start-up, is counted before a refresh.
    EXPECT_EQ(state.counts().counts().keys(), QList<Destination>{Destination::duplicates});
    EXPECT_EQ(state.counts().count(Destination::duplicates), 0);
    state.refreshCounts();
    QSignalSpy refreshed(&state, &AppState::countsRefreshed);
    ASSERT_TRUE(refreshed.wait(5000));
    EXPECT_EQ(state.counts().count(Destination::browsers), 0);
    EXPECT_EQ(state.counts().count(Destination::chats), 0);
    EXPECT_FALSE(state.counts().count(Destination::loginItems));
    EXPECT_FALSE(state.isRefreshingCounts());

    const QString home = QDir::homePath();
    QDir().mkpath(home + QStringLiteral("/.mozilla/firefox"));
    QDir().mkpath(home + QStringLiteral("/.var/app/com.brave.Browser/config/BraveSoftware/Brave-Browser"));
    QDir().mkpath(home + QStringLiteral("/.config/Slack"));
    QDir().mkpath(home + QStringLiteral("/.config/discord"));
    QDir().mkpath(home + QStringLiteral("/.var/app/com.slack.Slack/config/Slack")); // Slack twice is one app
    state.refreshCounts();
    ASSERT_TRUE(refreshed.wait(5000));
    EXPECT_EQ(state.counts().count(Destination::browsers), 2);
    EXPECT_EQ(state.counts().count(Destination::chats), 2);
}
