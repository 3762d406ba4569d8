#include "app/StartupFlow.h"
#include "app/UserDefaults.h"

#include <gtest/gtest.h>

#include <QSettings>
#include <QSignalSpy>
#include <QTimer>

namespace {

// Stands in for the permission checklist: answers after the delay it is given, as the real one does.
class ScriptedGate : public PermissionGate {
public:
    bool answer = false;
    int refreshes = 0;
    std::chrono::milliseconds askedDelay{-1};

    void refresh() override { ++refreshes; }
    void decideAtStartup(std::chrono::milliseconds delay, std::function<void(bool)> reply) override
    {
        askedDelay = delay;
        QTimer::singleShot(delay, [reply, show = answer] { reply(show); });
    }
};

class StartupFlowTest : public ::testing::Test {
protected:
    void SetUp() override { defaults.clear(); }
    QSettings defaults;
    ScriptedGate gate;
};

} // namespace

TEST_F(StartupFlowTest, FirstLaunchShowsWelcomeThenPermissionsThenSections)
{
    StartupFlow flow(defaults, &gate);
    flow.windowShown();
    EXPECT_EQ(flow.step(), StartupFlow::Step::welcome);
    flow.finishWelcome();
    EXPECT_TRUE(defaults.value(DefaultsKey::onboardingComplete).toBool());
    EXPECT_EQ(flow.step(), StartupFlow::Step::permissions);
    flow.leavePermissions();
    EXPECT_EQ(flow.step(), StartupFlow::Step::none);

    // The next launch skips the welcome.
    StartupFlow next(defaults, &gate);
    next.windowShown();
    EXPECT_EQ(next.step(), StartupFlow::Step::none);
}

TEST_F(StartupFlowTest, LaterLaunchesAskThePermissionsAfterTheRecheckDelay)
{
    defaults.setValue(DefaultsKey::onboardingComplete, true);
    gate.answer = true;
    StartupFlow flow(defaults, &gate);
    QSignalSpy steps(&flow, &StartupFlow::stepChanged);
    flow.windowShown();
    EXPECT_EQ(gate.askedDelay, std::chrono::milliseconds(1500));
    EXPECT_EQ(flow.step(), StartupFlow::Step::none);
    ASSERT_TRUE(steps.wait(4000));
    EXPECT_EQ(flow.step(), StartupFlow::Step::permissions);

    gate.answer = false;
    StartupFlow quiet(defaults, &gate);
    QSignalSpy quietSteps(&quiet, &StartupFlow::stepChanged);
    quiet.windowShown();
    EXPECT_FALSE(quietSteps.wait(2000));
    EXPECT_EQ(quiet.step(), StartupFlow::Step::none);
}

TEST_F(StartupFlowTest, DebugPermissionsForcesTheStepAfterARefresh)
{
    defaults.setValue(DefaultsKey::onboardingComplete, true);
    defaults.setValue(DefaultsKey::debugPermissions, true);
    StartupFlow flow(defaults, &gate);
    flow.windowShown();
    EXPECT_EQ(gate.refreshes, 1);
    EXPECT_EQ(flow.step(), StartupFlow::Step::permissions);
}

TEST_F(StartupFlowTest, WithoutAChecklistThereIsNoPermissionsStep)
{
    StartupFlow flow(defaults, nullptr);
    flow.windowShown();
    EXPECT_EQ(flow.step(), StartupFlow::Step::welcome);
    flow.finishWelcome();
    EXPECT_EQ(flow.step(), StartupFlow::Step::none);
}
