#include "ui/memory/MemoryUsagePage.h"
#include "app/AppState.h"
#include "app/SettingsRouter.h"
#include "app/UserDefaults.h"
#include "platform/ProcessControl.h"
#include "processes/ProcessTexts.h"
#include "ui/MainWindow.h"
#include "ui/memory/MemoryMonitorView.h"
#include "ui/memory/ProcessTreeModel.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/WrappedLabel.h"

#include "TestSupport.h"
#include "UiTestSupport.h"

#include <gtest/gtest.h>

#include <csignal>

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProcess>
#include <QPushButton>
#include <QScopeGuard>
#include <QSettings>
#include <QSortFilterProxyModel>
#include <QStandardPaths>
#include <QTest>
#include <QToolButton>
#include <QTreeView>

namespace {

template <typename Condition> bool eventually(Condition condition, int milliseconds = 8000)
{
    for (int waited = 0; waited < milliseconds && !condition(); waited += 20)
        QTest::qWait(20);
    return condition();
}

QByteArray niceOf(qint64 pid)
{
    const QByteArray stat = readWholeFile(QStringLiteral("/proc/%1/stat").arg(pid));
    return stat.mid(stat.lastIndexOf(')') + 2).split(' ').value(16);
}

// Searches for `name` and selects the one row found.
bool selectByName(MemoryUsagePage& page, const QString& name)
{
    page.findChild<QLineEdit*>(QStringLiteral("processSearch"))->setText(name);
    QSortFilterProxyModel& rows = page.sortedModel();
    if (!eventually([&] { return rows.rowCount() == 1; }))
        return false;
    page.table()->setCurrentIndex(rows.index(0, ProcessTreeModel::name));
    return true;
}

// The row of process `pid`, among the apps' processes too.
QModelIndex rowOf(MemoryUsagePage& page, qint64 pid)
{
    QSortFilterProxyModel& rows = page.sortedModel();
    for (int row = 0; row < rows.rowCount(); ++row) {
        const QModelIndex top = rows.index(row, ProcessTreeModel::name);
        for (int child = -1; child < rows.rowCount(top); ++child) {
            const QModelIndex index = child < 0 ? top : rows.index(child, ProcessTreeModel::name, top);
            if (index.siblingAtColumn(ProcessTreeModel::pid).data().toString() == QString::number(pid))
                return index;
        }
    }
    return {};
}

bool selectByPid(MemoryUsagePage& page, qint64 pid)
{
    page.findChild<QLineEdit*>(QStringLiteral("processSearch"))->clear();
    if (!eventually([&] { return rowOf(page, pid).isValid(); }))
        return false;
    page.table()->setCurrentIndex(rowOf(page, pid));
    return true;
}

} // namespace

TEST(MemoryUsagePage, SortsByCPULowersAPriorityQuitsOneAndForceQuitsAnother)
{
    FixtureTree bin;
    const auto copy = [&bin](const QString& name) {
        const QString path = bin.path(name);
        QFile::copy(QStandardPaths::findExecutable(QStringLiteral("sleep")), path);
        QFile::setPermissions(path, QFileDevice::Permissions(0x7755));
        return path;
    };
    QProcess sleeper;
    QProcess spinner;
    sleeper.start(copy(QStringLiteral("velloru-ui-sleeper")), {QStringLiteral("60")});
    spinner.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("while :; do :; done")});
    ASSERT_TRUE(sleeper.waitForStarted() && spinner.waitForStarted());
    const qint64 sleeperPid = sleeper.processId();
    const qint64 spinnerPid = spinner.processId();

    QSettings defaults;
    AppState state;
    MemoryUsagePage page(state, defaults);
    page.resize(1000, 700);
    page.show();
    ASSERT_TRUE(page.sampler().isActive());
    ASSERT_TRUE(eventually([&] { return page.sampler().hasSample() && page.sortedModel().rowCount() > 1; }));
    EXPECT_TRUE(page.monitor()->pressureLabel()->text().contains(QStringLiteral("Memory pressure: ")));

    // Sorted by CPU, the spinning child comes first.
    page.table()->header()->setSortIndicator(ProcessTreeModel::cpu, Qt::DescendingOrder);
    QTest::qWait(2500); // a second sample gives shares over the last interval
    QSortFilterProxyModel& rows = page.sortedModel();
    for (int row = 1; row < rows.rowCount(); ++row)
        EXPECT_GE(rows.index(row - 1, ProcessTreeModel::cpu).data(ProcessTreeModel::sortRole).toDouble(),
            rows.index(row, ProcessTreeModel::cpu).data(ProcessTreeModel::sortRole).toDouble());
    EXPECT_GT(rowOf(page, spinner.processId())
                  .siblingAtColumn(ProcessTreeModel::cpu)
                  .data(ProcessTreeModel::sortRole)
                  .toDouble(),
        10.0);
    saveScreenshots(page, QStringLiteral("memory-usage-by-cpu"));
    EXPECT_EQ(clippedLabels(page), QStringList());
    EXPECT_EQ(elidedCells(*page.table()), QStringList());

    // Low priority for the spinner, through the priority menu.
    ASSERT_TRUE(selectByPid(page, spinner.processId()));
    EXPECT_TRUE(page.detailLine()->text().contains(QStringLiteral("process %1").arg(spinner.processId())));
    auto* priority = page.findChild<QToolButton*>(QStringLiteral("priorityMenu"));
    ASSERT_TRUE(priority->isEnabled());
    priority->menu()->actions().value(2)->trigger();
    EXPECT_TRUE(eventually([&] { return niceOf(spinner.processId()) == "10"; }));

    // Quit the sleeper, confirming by its name.
    ASSERT_TRUE(selectByName(page, QStringLiteral("velloru-ui-sleeper")));
    answerNextMessageBox(QStringLiteral("Quit"));
    QTest::mouseClick(page.findChild<QPushButton*>(QStringLiteral("quitProcess")), Qt::LeftButton);
    EXPECT_TRUE(eventually([&] { return sleeper.state() == QProcess::NotRunning; }));
    EXPECT_TRUE(eventually([&] { return rows.rowCount() == 0; })) << "the quit process leaves the list";
    EXPECT_EQ(page.emptyState()->title(), QStringLiteral("No process matches “velloru-ui-sleeper”"));
    EXPECT_TRUE(page.actionOutcome()->isVisible());
    EXPECT_EQ(page.actionOutcome()->text(), QStringLiteral("velloru-ui-sleeper quit."));

    // Force quit the spinner.
    ASSERT_TRUE(selectByPid(page, spinner.processId()));
    answerNextMessageBox(QStringLiteral("Force Quit"));
    QTest::mouseClick(page.findChild<QPushButton*>(QStringLiteral("forceQuitProcess")), Qt::LeftButton);
    EXPECT_TRUE(eventually([&] { return spinner.state() == QProcess::NotRunning; }));

    QStringList activity;
    for (const AuditEntry& entry : state.audit().entries())
        if (entry.feature == ProcessTexts::feature)
            activity.append(entry.path + QStringLiteral(": ") + entry.outcome);
    EXPECT_EQ(activity.join(u'\n').toStdString(),
        QStringList({QStringLiteral("Set sh (process %1) to Low priority (nice 10): Done").arg(spinnerPid),
                        QStringLiteral("Quit velloru-ui-sleeper (process %1): Done").arg(sleeperPid),
                        QStringLiteral("Force quit sh (process %1): Done").arg(spinnerPid)})
            .join(u'\n')
            .toStdString());

    // Hidden, the section reads nothing.
    page.hide();
    EXPECT_FALSE(page.sampler().isActive());
}

TEST(MemoryUsagePage, TheSectionInTheWindowFitsAt900x600And1440x900)
{
    // An installed app running three processes that ignore the request to quit, so the list shows an app with
    // its processes and totals, and a row that failed.
    FixtureTree bin;
    const QString program = bin.path(QStringLiteral("velloru-demo-editor"));
    QFile::copy(QStandardPaths::findExecutable(QStringLiteral("dash")), program);
    QFile::setPermissions(program, QFileDevice::Permissions(0x7755));
    const QString applications
        = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/applications");
    QDir().mkpath(applications);
    QFile entry(applications + QStringLiteral("/velloru-demo-editor.desktop"));
    ASSERT_TRUE(entry.open(QIODevice::WriteOnly));
    entry.write("[Desktop Entry]\nType=Application\nName=Demo Editor\nExec=" + program.toUtf8() + "\n");
    entry.close();
    QProcess app;
    startInGroupOfItsOwn(app);
    app.start(program,
        {QStringLiteral("-c"),
            QStringLiteral("trap '' TERM; for i in 1 2; do \"$0\" -c 'while :; do sleep 5; done' & done; wait")});
    ASSERT_TRUE(app.waitForStarted());
    const auto stopApp = qScopeGuard([&app] { signalGroup(app.processId(), SIGKILL); });

    QSettings defaults;
    defaults.clear();
    defaults.setValue(DefaultsKey::onboardingComplete, true);
    defaults.setValue(DefaultsKey::permissionsRemindSuppressed, true);
    defaults.setValue(DefaultsKey::debugStartPage, QStringLiteral("memoryUsage"));
    AppState state;
    SettingsRouter router;
    MainWindow window(state, router, defaults);
    window.show();
    auto* page = qobject_cast<MemoryUsagePage*>(window.currentPage());
    ASSERT_TRUE(page);
    ASSERT_TRUE(eventually([&] { return page->sampler().hasSample(); }));
    page->findChild<QCheckBox*>(QStringLiteral("showSystemProcesses"))->setChecked(true);

    page->findChild<QLineEdit*>(QStringLiteral("processSearch"))->setText(QStringLiteral("Demo Editor"));
    QSortFilterProxyModel& rows = page->sortedModel();
    ASSERT_TRUE(eventually([&] { return rows.rowCount() == 1 && rows.rowCount(rows.index(0, 0)) == 3; }));
    const QModelIndex group = rows.index(0, ProcessTreeModel::name);
    EXPECT_EQ(group.data().toString(), QStringLiteral("Demo Editor"));
    qint64 total = 0;
    for (int child = 0; child < 3; ++child)
        total += rows.index(child, ProcessTreeModel::memory, group).data(ProcessTreeModel::sortRole).toLongLong();
    EXPECT_EQ(group.siblingAtColumn(ProcessTreeModel::memory).data(ProcessTreeModel::sortRole).toLongLong(), total);

    // Quitting the app asks each of its processes, waits, and says on the row that it refused.
    page->table()->setCurrentIndex(group);
    answerNextMessageBox(QStringLiteral("Quit"));
    QTest::mouseClick(page->findChild<QPushButton*>(QStringLiteral("quitProcess")), Qt::LeftButton);
    const auto status = [&] {
        const QModelIndex row = rowOf(*page, app.processId()).parent();
        return row.siblingAtColumn(ProcessTreeModel::status).data().toString();
    };
    EXPECT_TRUE(eventually([&] { return status() == QStringLiteral("Demo Editor refused to quit."); }, 9000))
        << status().toStdString();
    EXPECT_TRUE(sameIcon(rowOf(*page, app.processId())
                             .parent()
                             .siblingAtColumn(ProcessTreeModel::status)
                             .data(Qt::DecorationRole)
                             .value<QIcon>(),
        OutcomeLine::iconFor(OutcomeLine::Kind::failure)));
    page->findChild<QLineEdit*>(QStringLiteral("processSearch"))->clear();
    page->table()->expand(rowOf(*page, app.processId()).parent());
    page->table()->setCurrentIndex(rowOf(*page, app.processId()).parent());
    EXPECT_EQ(page->actionOutcome()->kind(), OutcomeLine::Kind::failure);
    EXPECT_EQ(page->actionOutcome()->text(), QStringLiteral("Demo Editor refused to quit."));
    EXPECT_FALSE(page->detailLine()->text().contains(QStringLiteral("refused"))) << "said once, under the buttons";

    QTest::qWait(2200); // the chart gains a point
    for (const QSize size : screenshotSizes()) {
        resizeAndLayOut(window, size);
        EXPECT_EQ(clippedLabels(window), QStringList()) << size.width();
        EXPECT_EQ(elidedCells(*page->table()), QStringList()) << size.width();
    }
    saveScreenshots(window, QStringLiteral("memory-usage"));
    defaults.remove(DefaultsKey::debugStartPage);
}
