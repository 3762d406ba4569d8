#include "helper/HelperManager.h"
#include "ui/widgets/EmptyState.h"
#include "ui/widgets/HelperSetupButton.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/PathLabel.h"
#include "ui/widgets/ProgressRow.h"
#include "ui/widgets/WrappedLabel.h"

#include "UiTestSupport.h"
#include "helper/FakeHelperService.h"

#include <gtest/gtest.h>

#include <QIcon>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

namespace {

const QString longSentence = QStringLiteral(
    "Velloru finds what quietly fills your computer and shows you where space and memory went. Nothing is deleted "
    "outright: everything it removes goes to the Trash and is written to the Activity log, and nothing is selected "
    "behind your back.");

} // namespace

TEST(ClippedLabels, FindsTextTooWideOrTooTallForItsLabelAndPassesLabelsThatGrow)
{
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* grows = new WrappedLabel(longSentence, QStringLiteral("grows"), &window);
    layout->addWidget(grows);
    auto* oneLine = new QLabel(longSentence, &window);
    oneLine->setObjectName(QStringLiteral("oneLine"));
    layout->addWidget(oneLine);
    // The mistake that clipped the welcome text: a wrapped label given an alignment in its layout gets its
    // size hint's height, not the height its text needs at the width it is given.
    auto* aligned = new QLabel(longSentence, &window);
    aligned->setObjectName(QStringLiteral("aligned"));
    aligned->setWordWrap(true);
    aligned->setMaximumWidth(260);
    layout->addWidget(aligned, 0, Qt::AlignHCenter);
    auto* path = new PathLabel(&window);
    path->setPath(QStringLiteral("/home/someone/") + QString(40, u'x') + QStringLiteral("/.cache/thumbnails/large"));
    layout->addWidget(path);
    layout->addStretch();
    oneLine->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // let the layout make it too narrow
    window.show();
    resizeAndLayOut(window, QSize(300, 700));

    const QStringList clipped = clippedLabels(window);
    EXPECT_TRUE(clipped.filter(QStringLiteral("oneLine")).size() == 1) << clipped.join(u'\n').toStdString();
    EXPECT_TRUE(clipped.filter(QStringLiteral("grows")).isEmpty()) << clipped.join(u'\n').toStdString();
    // The path is shortened in the middle and whole in its tooltip, so it is not counted as clipped.
    EXPECT_TRUE(path->text().contains(u'…'));
    EXPECT_TRUE(path->text().endsWith(QStringLiteral("large")));
    EXPECT_EQ(path->toolTip(), path->path());
    EXPECT_TRUE(clipped.filter(QStringLiteral("/home")).isEmpty());
    saveScreenshot(window, QStringLiteral("clipped-labels-check"));
}

TEST(ProgressRow, FillsOnceTheWholeIsKnownCountsTheTimeAndOffersCancel)
{
    ProgressRow row;
    QSignalSpy cancelled(&row, &ProgressRow::cancelRequested);
    EXPECT_FALSE(row.isVisibleTo(nullptr));

    row.start(QStringLiteral("Measuring “usr”…"));
    EXPECT_TRUE(row.isRunning());
    EXPECT_EQ(row.bar()->maximum(), 0); // moving back and forth until the whole is known
    EXPECT_EQ(row.elapsedText(), QStringLiteral("0:00 elapsed"));

    row.setProgress(qint64(3) << 40, qint64(12) << 40); // beyond an int: still a quarter
    EXPECT_GT(row.bar()->maximum(), 0);
    EXPECT_EQ(row.bar()->value() * 4, row.bar()->maximum());
    row.setProgress(20, 10); // more done than the estimate of the whole: full, never past it
    EXPECT_EQ(row.bar()->value(), row.bar()->maximum());

    QTest::mouseClick(row.cancelButton(), Qt::LeftButton);
    EXPECT_EQ(cancelled.size(), 1);
    row.finish();
    EXPECT_FALSE(row.isRunning());
    EXPECT_TRUE(row.isHidden());
}

TEST(OutcomeLine, TellsSuccessFromFailureByIconAndColourAndWrapsLongSentences)
{
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* success = new OutcomeLine(QStringLiteral("success"), &window);
    auto* failure = new OutcomeLine(QStringLiteral("failure"), &window);
    layout->addWidget(success);
    layout->addWidget(failure);
    layout->addStretch();
    success->showSuccess(QStringLiteral("Done."));
    failure->showFailure(QStringLiteral("Couldn’t install the helper — ") + longSentence);
    window.show();
    resizeAndLayOut(window, QSize(320, 400));

    EXPECT_NE(OutcomeLine::colorFor(OutcomeLine::Kind::success), OutcomeLine::colorFor(OutcomeLine::Kind::failure));
    EXPECT_FALSE(
        sameIcon(OutcomeLine::iconFor(OutcomeLine::Kind::success), OutcomeLine::iconFor(OutcomeLine::Kind::failure)));
    EXPECT_EQ(failure->kind(), OutcomeLine::Kind::failure);
    EXPECT_TRUE(clippedLabels(window).isEmpty()) << clippedLabels(window).join(u'\n').toStdString();
    failure->clear();
    EXPECT_TRUE(failure->isHidden());
    saveScreenshot(window, QStringLiteral("outcome-lines"));
}

TEST(EmptyState, SaysWhatToDoAtEveryWindowSize)
{
    EmptyState empty(QIcon::fromTheme(QStringLiteral("edit-find")), QStringLiteral("Nothing measured yet"),
        QStringLiteral("Pick a volume or folder above and press Measure to see what takes its space."));
    QPushButton* measure = empty.addAction(QStringLiteral("Measure Home Folder"), QStringLiteral("measureHome"));
    empty.show();
    for (const QSize size : screenshotSizes()) {
        resizeAndLayOut(empty, size);
        EXPECT_TRUE(clippedLabels(empty).isEmpty()) << clippedLabels(empty).join(u'\n').toStdString();
    }
    EXPECT_TRUE(measure->isVisible());
    saveScreenshots(empty, QStringLiteral("empty-state"));
}

TEST(HelperSetupButton, SaysWhyInstallingFailedUnderTheButtonAndGoesAwayOnceReady)
{
    FakeHelperService service;
    HelperManager helper(QStringLiteral("/nonexistent/helper.sock"));
    helper.refreshState(service);
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* setUp = new HelperSetupButton(helper, service, &window);
    layout->addWidget(setUp);
    layout->addStretch();
    window.show();
    EXPECT_EQ(setUp->button()->text(), QStringLiteral("Set Up"));

    const QString pkexecMissing = QStringLiteral("Couldn’t install the helper — pkexec isn’t installed. Install the "
                                                 "pkexec package (policykit-1 on older systems), then try again.");
    service.failNextRegistrations({{QStringLiteral("pkexec"), -1, pkexecMissing}});
    QTest::mouseClick(setUp->button(), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return helper.state() == HelperManager::State::failed; }, 10'000));
    EXPECT_TRUE(setUp->outcome()->isVisible());
    EXPECT_EQ(setUp->outcome()->kind(), OutcomeLine::Kind::failure);
    EXPECT_EQ(setUp->outcome()->text(), pkexecMissing);
    EXPECT_TRUE(setUp->button()->isEnabled());
    resizeAndLayOut(window, QSize(420, 300));
    EXPECT_TRUE(clippedLabels(window).isEmpty()) << clippedLabels(window).join(u'\n').toStdString();
    saveScreenshot(window, QStringLiteral("helper-setup-failed"));

    // A second press while the first is still waiting for the administrator installs once, not twice.
    QTest::mouseClick(setUp->button(), Qt::LeftButton);
    QTest::mouseClick(setUp->button(), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return helper.state() == HelperManager::State::ready; }, 10'000));
    EXPECT_EQ(service.registrations(), 2);
    EXPECT_TRUE(setUp->isHidden());
}
