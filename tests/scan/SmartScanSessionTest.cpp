#include "SessionManagers.h"

#include "common/StoragePaths.h"
#include "removal/TrashRecovery.h"
#include "removal/TrashTexts.h"
#include "scan/SmartScanSession.h"
#include "scan/SmartScanTexts.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QTest>

namespace {

// A fixture home with one installed app (vlc) and a few finds of each grade.
struct SessionFixture : SessionManagers {
    SmartScanSession session{inventory, running, trasher, audit, locations()};

    SessionFixture()
    {
        tree.write(
            QStringLiteral("applications/vlc.desktop"), "[Desktop Entry]\nType=Application\nName=VLC\nExec=vlc\n");
        tree.write(QStringLiteral("cache/vlc/art"), QByteArray(3000, 'x'));
        tree.write(QStringLiteral("cache/fontconfig/f"), QByteArray(2000, 'x'));
        tree.write(QStringLiteral("cache/thumbnails/normal/t.png"), QByteArray(1000, 'x'));
        tree.write(QStringLiteral("crash/vlc.crash"), QByteArray(500, 'x'));
    }

    SmartScanLocations locations() const
    {
        SmartScanLocations locations;
        locations.cacheFolders = {tree.path(QStringLiteral("cache"))};
        locations.crashFolders = {tree.path(QStringLiteral("crash"))};
        return locations;
    }

    QString path(const char* relative) const { return tree.path(QString::fromUtf8(relative)); }

    bool waitFor(auto holds)
    {
        return QTest::qWaitFor([&] { return holds(session.phase()); }, 20'000);
    }
};

bool isResults(const ScanPhaseValue& phase)
{
    return std::holds_alternative<ScanPhase::Results>(phase);
}

bool isDone(const ScanPhaseValue& phase)
{
    return std::holds_alternative<ScanPhase::Done>(phase);
}

// A phase as the case it is and what it carries.
QString phaseText(const ScanPhaseValue& phase)
{
    return std::visit(
        [](const auto& value) -> QString {
            using Phase = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<Phase, ScanPhase::Scanning>)
                return QStringLiteral("scanning ") + value.location;
            else if constexpr (std::is_same_v<Phase, ScanPhase::Done>)
                return QStringLiteral("done %1 %2").arg(value.itemsMoved).arg(value.bytesFreed);
            else if constexpr (std::is_same_v<Phase, ScanPhase::Results>)
                return QStringLiteral("results");
            else if constexpr (std::is_same_v<Phase, ScanPhase::Cleaning>)
                return QStringLiteral("cleaning");
            else
                return QStringLiteral("idle");
        },
        phase);
}

} // namespace

TEST(SmartScanSession, ScanTicksExactlyTheSafeItemsAndCleanMovesOnlyTheTicked)
{
    SessionFixture fixture;
    SmartScanSession& session = fixture.session;
    EXPECT_TRUE(session.isIdle());
    session.scan();
    EXPECT_TRUE(std::holds_alternative<ScanPhase::Scanning>(session.phase()));
    ASSERT_TRUE(fixture.waitFor(isResults));

    // The first scan waited for the installed apps, so vlc's cache is claimed, not unclaimed.
    QStringList ticked;
    for (const ScanItem& item : session.selection().tickedItems(session.groups()))
        ticked << QFileInfo(item.url.toLocalFile()).fileName();
    EXPECT_EQ(ticked, (QStringList{"vlc", "thumbnails", "vlc.crash"}));
    EXPECT_EQ(session.selection().tickedSize(session.groups()), 4500);

    // The user unticks the thumbnails; the crash report vanishes before Clean.
    ScanSelection selection = session.selection();
    for (const ScanItem& item : session.groups()[1].items)
        selection.setTicked(item.id, false);
    session.setSelection(selection);
    ASSERT_TRUE(QFile::remove(fixture.path("crash/vlc.crash")));
    session.clean();
    EXPECT_TRUE(std::holds_alternative<ScanPhase::Cleaning>(session.phase()));
    ASSERT_TRUE(fixture.waitFor(isDone));

    EXPECT_EQ(std::get<ScanPhase::Done>(session.phase()), (ScanPhase::Done{1, 3000}));
    EXPECT_FALSE(QFileInfo::exists(fixture.path("cache/vlc")));
    EXPECT_TRUE(QFileInfo::exists(fixture.path("cache/thumbnails/normal/t.png")));
    EXPECT_TRUE(QFileInfo::exists(fixture.path("cache/fontconfig/f")));
    ASSERT_TRUE(session.lastRemoval());
    ASSERT_EQ(session.lastRemoval()->failed.size(), 1);
    EXPECT_EQ(session.lastRemoval()->failed.first().reason, TrashTexts::vanished());

    // The activity log holds one entry per item under Smart Scan, and the moved one can be put back.
    const QList<AuditEntry> entries = fixture.audit.entries();
    ASSERT_EQ(entries.size(), 2);
    for (const AuditEntry& entry : entries)
        EXPECT_EQ(entry.feature, SmartScanTexts::feature());
    const auto moved = std::find_if(entries.begin(), entries.end(),
        [](const AuditEntry& entry) { return entry.outcome == AuditOutcome::movedToTrash; });
    ASSERT_NE(moved, entries.end());
    EXPECT_FALSE(TrashRecovery::putBack(fixture.audit, *moved));
    EXPECT_EQ(readWholeFile(fixture.path("cache/vlc/art")).size(), 3000);

    // The moved item left the review; scanning again finds it back where it was.
    for (const ScanGroup& group : session.groups())
        for (const ScanItem& item : group.items)
            EXPECT_NE(item.url.toLocalFile(), fixture.path("cache/vlc"));
    session.scan();
    ASSERT_TRUE(fixture.waitFor(isResults));
    EXPECT_EQ(session.groups().first().items.first().url.toLocalFile(), fixture.path("cache/vlc"));
}

TEST(SmartScanSession, CancelEndsInResultsAndCleanWithNothingTickedDoesNothing)
{
    SessionFixture fixture;
    SmartScanSession& session = fixture.session;
    session.scan();
    session.cancel();
    ASSERT_TRUE(fixture.waitFor(isResults));
    EXPECT_TRUE(session.groups().isEmpty());

    session.scan();
    ASSERT_TRUE(fixture.waitFor(isResults));
    session.setSelection(ScanSelection());
    session.clean();
    EXPECT_TRUE(isResults(session.phase()));
    EXPECT_TRUE(fixture.audit.entries().isEmpty());
}

TEST(SmartScanSession, PhasesFollowTheSessionAndDoneCarriesWhatMovedAndWhatItFreed)
{
    SessionFixture fixture;
    SmartScanSession& session = fixture.session;
    QStringList phases{phaseText(session.phase())};
    QObject::connect(&session, &SmartScanSession::phaseChanged, [&] { phases << phaseText(session.phase()); });

    session.clean(); // nothing to clean before a scan
    session.scan();
    session.scan(); // pressing Scan again while scanning changes nothing
    ASSERT_TRUE(fixture.waitFor(isResults));
    session.clean();
    session.scan(); // nor does Scan while the ticked items move
    ASSERT_TRUE(fixture.waitFor(isDone));
    session.scan();
    ASSERT_TRUE(fixture.waitFor(isResults));

    // The ticked finds: vlc's cache (3000 bytes), the thumbnails (1000) and the crash report (500).
    EXPECT_EQ(phases, (QStringList{"idle", "scanning ", "results", "cleaning", "done 3 4500", "scanning ", "results"}));
}

TEST(SmartScanSession, AnExcludedItemLeavesThisResultAndEveryLaterScan)
{
    QStringList found;
    {
        SessionFixture fixture;
        fixture.session.scan();
        ASSERT_TRUE(fixture.waitFor(isResults));
        const ScanItem* fontconfig = nullptr;
        for (const ScanGroup& group : fixture.session.groups())
            for (const ScanItem& item : group.items)
                if (item.url.toLocalFile() == fixture.path("cache/fontconfig"))
                    fontconfig = &item;
        ASSERT_TRUE(fontconfig);
        const ScanItem excluded = *fontconfig;
        EXPECT_FALSE(fixture.session.exclude(excluded).has_value());
        for (const ScanGroup& group : fixture.session.groups())
            for (const ScanItem& item : group.items)
                EXPECT_NE(item.id, excluded.id);
        EXPECT_FALSE(fixture.session.selection().isTicked(excluded.id));

        // A session made afterwards (the next launch) reads the exclusion back and never lists the folder.
        SmartScanSession next{fixture.inventory, fixture.running, fixture.trasher, fixture.audit, fixture.locations()};
        next.scan();
        ASSERT_TRUE(QTest::qWaitFor([&] { return isResults(next.phase()); }, 20'000));
        for (const ScanGroup& group : next.groups())
            for (const ScanItem& item : group.items)
                found << item.url.toLocalFile();
        EXPECT_FALSE(found.contains(fixture.path("cache/fontconfig"))) << found.join(u' ').toStdString();
        EXPECT_TRUE(found.contains(fixture.path("cache/vlc")));
        EXPECT_TRUE(next.exclusions().excludes(fixture.path("cache/fontconfig/f")));
        EXPECT_FALSE(next.exclusions().excludes(fixture.path("cache/fontconfig2")));
    }
    // The exclusions live in the data folder this test binary shares among its cases.
    QFile::remove(StoragePaths::dataFolder() + QStringLiteral("/scan-exclusions.json"));
}
