#include "app/SplitViewStateRepair.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QSettings>

TEST(SplitViewStateRepair, RemovesOnlyStatesThatCollapseAPane)
{
    QSettings defaults;
    defaults.clear();
    const QString prefix = splitViewStatePrefix + QLatin1Char(' ');
    const QStringList healthy{QStringLiteral("0.000000, 0.000000, 220.000000, 700.000000, NO"),
        QStringLiteral("221.000000, 0.000000, 859.000000, 700.000000, NO")};
    defaults.setValue(prefix + QStringLiteral("Healthy"), healthy);
    defaults.setValue(prefix + QStringLiteral("ZeroSidebar"),
        QStringList{QStringLiteral("0, 0, 0, 700, NO"), QStringLiteral("1, 0, 1079, 700, NO")});
    defaults.setValue(prefix + QStringLiteral("HiddenDetail"),
        QStringList{QStringLiteral("0, 0, 220, 700, NO"), QStringLiteral("221, 0, 859, 700, YES")});
    defaults.setValue(prefix + QStringLiteral("NotFrames"), QStringList{QStringLiteral("sidebar=wide")});
    defaults.setValue(QStringLiteral("Unrelated"), QStringList{QStringLiteral("0, 0, 0, 0, NO")});

    LogCapture log;
    const QStringList removed = removePoisonedSplitViewState(defaults);
    EXPECT_EQ(removed.size(), 2);
    EXPECT_TRUE(removed.contains(prefix + QStringLiteral("ZeroSidebar")));
    EXPECT_TRUE(removed.contains(prefix + QStringLiteral("HiddenDetail")));
    EXPECT_TRUE(log.contains(
        QStringLiteral("Velloru: removing poisoned split-view state ") + prefix + QStringLiteral("ZeroSidebar")));
    EXPECT_EQ(defaults.value(prefix + QStringLiteral("Healthy")).toStringList(), healthy);
    EXPECT_TRUE(defaults.contains(prefix + QStringLiteral("NotFrames")));
    EXPECT_TRUE(defaults.contains(QStringLiteral("Unrelated")));

    const auto frames = parsePaneFrames(healthy);
    ASSERT_TRUE(frames);
    EXPECT_EQ(formatPaneFrames(*frames), healthy);
}
