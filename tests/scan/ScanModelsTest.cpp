#include "scan/ScanGroup.h"
#include "scan/ScanPulse.h"
#include "scan/ScanSelection.h"

#include <gtest/gtest.h>

#include <QSet>

#include <algorithm>
#include <limits>
#include <thread>
#include <vector>

namespace {

ScanItem item(const char* path, qint64 size, RiskLevel risk = RiskLevel::safe, const char* detail = "cache")
{
    return ScanItem::make(QUrl::fromLocalFile(QString::fromUtf8(path)), size, risk, QString::fromUtf8(detail));
}

} // namespace

TEST(ScanModels, RiskOrderPutsUnprovenAfterSensitive)
{
    std::vector<RiskLevel> risks{RiskLevel::unproven, RiskLevel::safe, RiskLevel::sensitive, RiskLevel::caution};
    std::sort(risks.begin(), risks.end());
    EXPECT_EQ(risks,
        (std::vector<RiskLevel>{RiskLevel::safe, RiskLevel::caution, RiskLevel::sensitive, RiskLevel::unproven}));
    EXPECT_GT(RiskLevel::unproven, RiskLevel::sensitive);
    EXPECT_LE(RiskLevel::safe, RiskLevel::safe);
    EXPECT_EQ(riskBadge(RiskLevel::safe), QString());
    EXPECT_EQ(riskBadge(RiskLevel::caution), QStringLiteral("Review"));
    EXPECT_EQ(riskBadge(RiskLevel::sensitive), QStringLiteral("Sensitive"));
    EXPECT_EQ(riskBadge(RiskLevel::unproven), QStringLiteral("Unproven"));
}

TEST(ScanModels, ItemsAreEqualOnlyWhenEveryFieldIs)
{
    const ScanItem a = item("/home/u/.cache/x", 10, RiskLevel::safe, "rebuilt by its app");
    ScanItem sameFields = a;
    EXPECT_EQ(a, sameFields);
    EXPECT_EQ(qHash(a), qHash(sameFields));

    ScanItem otherDetail = a;
    otherDetail.detail = QStringLiteral("another reason");
    EXPECT_NE(a, otherDetail);

    const ScanItem fresh = item("/home/u/.cache/x", 10, RiskLevel::safe, "rebuilt by its app");
    EXPECT_NE(a.id, fresh.id);
    EXPECT_NE(a, fresh);
    EXPECT_EQ((QSet<ScanItem>{a, sameFields, otherDetail, fresh}).size(), 3);
}

TEST(ScanModels, GroupSizesTickStatesAndTotals)
{
    const ScanGroup empty = ScanGroup::make(QStringLiteral("Logs"), QStringLiteral("doc.text"), {});
    ScanSelection selection;
    EXPECT_EQ(empty.size(), 0);
    EXPECT_EQ(selection.tickState(empty), TickState::none);

    const ScanGroup caches = ScanGroup::make(QStringLiteral("App Caches"), QStringLiteral("archivebox"),
        {item("/a", 100), item("/b", 20, RiskLevel::caution), item("/c", 3)});
    EXPECT_EQ(caches.size(), 123);
    EXPECT_EQ(totalSize({empty, caches, caches}), 246);

    selection.setTicked(caches.items[0].id, true);
    EXPECT_EQ(selection.tickState(caches), TickState::some);
    selection.toggleGroup(caches);
    EXPECT_EQ(selection.tickState(caches), TickState::all);
    EXPECT_EQ(selection.tickedSize({caches}), 123);
    selection.toggleGroup(caches);
    EXPECT_EQ(selection.tickState(caches), TickState::none);
    EXPECT_TRUE(selection.tickedItems({caches}).isEmpty());
}

TEST(ScanModelsDeathTest, AnOverflowingGroupSizeStopsTheProgram)
{
    const ScanGroup huge
        = ScanGroup::make(QStringLiteral("Huge"), {}, {item("/a", std::numeric_limits<qint64>::max()), item("/b", 1)});
    EXPECT_DEATH((void)huge.size(), "overflow");
}

TEST(ScanModels, PulseGivesConsistentSnapshotsUnderConcurrentWriters)
{
    ScanPulse pulse;
    pulse.recordFolder(QStringLiteral("/home/u/.cache/thumbnails/"));
    EXPECT_EQ(pulse.snapshot().location, QStringLiteral("thumbnails"));
    pulse.recordFolder(QStringLiteral("/"));
    EXPECT_EQ(pulse.snapshot().location, QStringLiteral("/"));

    constexpr int writers = 4, rounds = 20'000;
    {
        std::vector<std::jthread> threads;
        for (int w = 0; w < writers; ++w)
            threads.emplace_back([&pulse] {
                for (int i = 0; i < rounds; ++i) {
                    pulse.add(1, 10);
                    if (i % 1000 == 0)
                        pulse.recordFolder(QStringLiteral("/x/folder%1").arg(i));
                }
            });
        for (int i = 0; i < 1000; ++i) {
            const ScanPulse::Snapshot snap = pulse.snapshot();
            ASSERT_EQ(snap.bytes, snap.files * 10); // never a half-applied add
        }
    }
    EXPECT_EQ(pulse.snapshot().files, writers * rounds);
    EXPECT_EQ(pulse.snapshot().bytes, writers * rounds * 10);
}
