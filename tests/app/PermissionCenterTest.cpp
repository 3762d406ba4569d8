#include "app/PermissionCenter.h"
#include "app/FullDiskAccess.h"
#include "app/UserDefaults.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

namespace {

class PermissionCenterTest : public ::testing::Test {
protected:
    void SetUp() override { defaults.clear(); }

    PermissionCenter makeCenter()
    {
        return PermissionCenter(defaults,
            {{Permission::helper, [this] { ++helperRefreshes; }, [this] { return helperReady; }},
                {Permission::background, nullptr, [this] { return agentEnabled; }}},
            DefaultsKey::permissionsEverGranted, DefaultsKey::permissionsRemindSuppressed);
    }

    // Asks for the start-up decision and waits for the answer.
    static std::pair<bool, qint64> decide(PermissionCenter& center)
    {
        std::optional<bool> answer;
        QElapsedTimer clock;
        clock.start();
        center.decideAtStartup(std::chrono::milliseconds(300), [&answer](bool show) { answer = show; });
        while (!answer && clock.elapsed() < 5000)
            QTest::qWait(10);
        return {answer.value_or(false), clock.elapsed()};
    }

    QSettings defaults;
    bool helperReady = false;
    bool agentEnabled = false;
    int helperRefreshes = 0;
};

} // namespace

TEST_F(PermissionCenterTest, NeverGrantedAndSuppressedShowsNothing)
{
    PermissionCenter center = makeCenter();
    center.setRemindersSuppressed(true);
    const auto [show, elapsed] = decide(center);
    EXPECT_FALSE(show);
    EXPECT_EQ(center.missing(), (QList<Permission>{Permission::helper, Permission::background}));
    EXPECT_TRUE(center.lost().isEmpty());
    EXPECT_FALSE(center.lostSentence());

    center.setRemindersSuppressed(false);
    EXPECT_TRUE(decide(center).first);
}

TEST_F(PermissionCenterTest, ALostPermissionIsShownEvenWhenSuppressedAfterOneRecheck)
{
    helperReady = true;
    agentEnabled = true;
    PermissionCenter center = makeCenter();
    center.refresh();
    EXPECT_TRUE(center.missing().isEmpty());
    EXPECT_EQ(defaults.value(DefaultsKey::permissionsEverGranted).toStringList(),
        (QStringList{QStringLiteral("helper"), QStringLiteral("background")}));
    EXPECT_EQ(
        center.headingText(), QStringLiteral("Everything Velloru needs is granted. Nothing here will ask you again."));

    // A later run: the helper is gone.
    helperReady = false;
    center.setRemindersSuppressed(true);
    const int refreshesBefore = helperRefreshes;
    const auto [show, elapsed] = decide(center);
    EXPECT_TRUE(show);
    EXPECT_GE(elapsed, 300);
    EXPECT_EQ(helperRefreshes - refreshesBefore, 2); // the decision and its one re-check
    EXPECT_EQ(center.lost(), QList<Permission>{Permission::helper});
    EXPECT_EQ(*center.lostSentence(),
        QStringLiteral("Maintenance Helper was granted before and isn’t now — a system update, a restore or a "
                       "privacy reset can do that silently. Switch it back on and Velloru is whole again."));

    // Back before the re-check: no step.
    helperReady = false;
    QTimer::singleShot(100, [this] { helperReady = true; });
    EXPECT_FALSE(decide(center).first);

    // The ledger only grows; two lost permissions read as a list.
    helperReady = false;
    agentEnabled = false;
    center.refresh();
    EXPECT_EQ(*center.lostSentence(),
        QStringLiteral("Maintenance Helper and Background Activity were granted before and aren’t now — a system "
                       "update, a restore or a privacy reset can do that silently. Switch them back on and Velloru "
                       "is whole again."));
    EXPECT_EQ(defaults.value(DefaultsKey::permissionsEverGranted).toStringList().size(), 2);
}

TEST_F(PermissionCenterTest, TheDebugSwitchTreatsGrantedPermissionsAsMissing)
{
    helperReady = true;
    agentEnabled = true;
    defaults.setValue(DefaultsKey::debugMissingPermissions, QStringList{QStringLiteral("background")});
    PermissionCenter center = makeCenter();
    center.refresh();
    EXPECT_EQ(center.missing(), QList<Permission>{Permission::background});
    EXPECT_TRUE(center.headingText().startsWith(QStringLiteral("Velloru asks for these once.")));
}

TEST(FullDiskAccess, ASandboxedHomeShowsOnlyItsOwnDataFolder)
{
    FixtureTree tree;
    tree.makeFolder(QStringLiteral("home/.var/app/us.ambertrell.Velloru"));
    EXPECT_FALSE(FullDiskAccess::homeIsVisible(tree.path(QStringLiteral("home"))));
    tree.makeFolder(QStringLiteral("home/Documents"));
    EXPECT_TRUE(FullDiskAccess::homeIsVisible(tree.path(QStringLiteral("home"))));
    EXPECT_TRUE(FullDiskAccess(tree.path(QStringLiteral("home"))).isGranted()); // not sandboxed here
}
