#include "ui/startup/LoginItemsPage.h"
#include "app/AppState.h"
#include "platform/TrashStore.h"
#include "startup/StartupTexts.h"
#include "ui/startup/StartupRow.h"
#include "ui/widgets/OutcomeLine.h"

#include "TestSupport.h"
#include "UiTestSupport.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QFile>
#include <QPushButton>
#include <QStandardPaths>
#include <QTest>

namespace {

StartupRow* rowNamed(const LoginItemsPage& page, const QString& name)
{
    for (StartupRow* row : page.rows())
        if (row->item().name == name && !row->property("gone").toBool())
            return row;
    return nullptr;
}

// Waits until the list was read again after a change, so the page shows rows of the new list.
bool waitForRescan(AppState& state)
{
    return QTest::qWaitFor([&state] { return !state.startup().isBusy() && !state.startup().isScanning(); }, 20000);
}

} // namespace

TEST(LoginItemsPage, SwitchesAnEntryOffAndOnAndRemovesALeftoverToTheTrash)
{
    const QString autostart
        = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + QStringLiteral("/autostart");
    FixtureTree scratch;
    const QString notes = autostart + QStringLiteral("/velloru-test-notes.desktop");
    const QString leftover = autostart + QStringLiteral("/velloru-test-leftover.desktop");
    QDir().mkpath(autostart);
    {
        QFile file(notes);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[Desktop Entry]\nType=Application\nName=Notes\nExec=/bin/true\n");
        QFile old(leftover);
        ASSERT_TRUE(old.open(QIODevice::WriteOnly));
        old.write("[Desktop Entry]\nType=Application\nName=Old Sync\nExec=/opt/old-sync/sync\n");
    }

    AppState state;
    LoginItemsPage page(state);
    page.resize(1000, 700);
    page.show();
    ASSERT_TRUE(QTest::qWaitFor([&] { return rowNamed(page, QStringLiteral("Notes")) != nullptr; }, 20000));
    EXPECT_EQ(state.counts().count(Destination::loginItems), std::optional<int>(int(state.startup().items().size())));

    rowNamed(page, QStringLiteral("Notes"))->toggle()->click();
    ASSERT_TRUE(waitForRescan(state));
    StartupRow* off = rowNamed(page, QStringLiteral("Notes"));
    ASSERT_TRUE(off);
    EXPECT_FALSE(off->toggle()->isChecked());
    EXPECT_EQ(off->outcome()->text(), QStringLiteral("Notes is off. Your desktop won’t start it at login."));
    EXPECT_EQ(off->outcome()->kind(), OutcomeLine::Kind::success);
    EXPECT_TRUE(readWholeFile(notes).contains("Hidden=true"));
    saveScreenshots(page, QStringLiteral("login-items-switched-off"));
    for (const QSize size : screenshotSizes()) {
        resizeAndLayOut(page, size);
        EXPECT_EQ(clippedLabels(page), QStringList()) << size.width();
    }

    off->toggle()->click();
    ASSERT_TRUE(waitForRescan(state));
    EXPECT_TRUE(rowNamed(page, QStringLiteral("Notes"))->toggle()->isChecked());
    EXPECT_FALSE(readWholeFile(notes).contains("Hidden=true"));

    StartupRow* old = rowNamed(page, QStringLiteral("Old Sync"));
    ASSERT_TRUE(old);
    EXPECT_TRUE(old->item().isLeftover());
    answerNextMessageBox(QStringLiteral("Move to Trash"));
    old->removeButton()->click();
    ASSERT_TRUE(waitForRescan(state));
    EXPECT_EQ(page.pageOutcome()->text(), StartupTexts::noLongerOpens(QStringLiteral("Old Sync")));
    EXPECT_FALSE(rowNamed(page, QStringLiteral("Old Sync")));
    EXPECT_FALSE(QFileInfo::exists(leftover));
    EXPECT_TRUE(QFileInfo::exists(homeTrashPath() + QStringLiteral("/files/velloru-test-leftover.desktop")));
    saveScreenshots(page, QStringLiteral("login-items-removed"));
    QFile::remove(notes);
}
