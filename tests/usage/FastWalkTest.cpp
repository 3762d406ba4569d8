#include "usage/FastWalk.h"
#include "usage/FolderListing.h"
#include "usage/UsageItem.h"
#include "usage/WalkRoot.h"

#include "TestSupport.h"
#include "UsageFixtures.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <algorithm>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

qint64 branchSum(const Progress& progress)
{
    qint64 sum = 0;
    for (const auto& branch : progress.measured)
        sum += branch->total;
    return sum;
}

QStringList childNames(const DirNode& node)
{
    QStringList names;
    for (const auto& child : node.subdirectories)
        names.append(fromFileName(child->name));
    names.sort();
    return names;
}

// A bind mount for the test's life (root only); recursive, so the volumes mounted inside the source show
// inside the target too.
class BindMount {
public:
    BindMount(const QString& source, const QString& target)
        : m_target(target)
    {
        m_mounted = ::mount(QFile::encodeName(source).constData(), QFile::encodeName(target).constData(), nullptr,
                        MS_BIND | MS_REC, nullptr)
            == 0;
    }
    ~BindMount()
    {
        if (m_mounted)
            ::umount2(QFile::encodeName(m_target).constData(), MNT_DETACH);
    }
    bool mounted() const { return m_mounted; }

private:
    QString m_target;
    bool m_mounted = false;
};

} // namespace

TEST(FastWalk, TotalsMatchDuWithHardLinksSymlinksSparseAndEmptyFiles)
{
    FixtureTree tree;
    writeFileOfSize(tree.path("a/big"), 300'000);
    writeFileOfSize(tree.path("a/deep/er/still/file"), 12'345);
    tree.write("a/empty", {});
    tree.makeFolder("a/empty-folder");
    writeFileOfSize(tree.path("b/shared"), 200'000);
    // Two more names of one file, one in another branch: its blocks count once in the whole walk.
    ASSERT_EQ(::link(QFile::encodeName(tree.path("b/shared")), QFile::encodeName(tree.path("a/shared-again"))), 0);
    ASSERT_TRUE(QDir().mkpath(tree.path("b/deep")));
    ASSERT_EQ(::link(QFile::encodeName(tree.path("b/shared")), QFile::encodeName(tree.path("b/deep/x"))), 0);
    QFile::link(QStringLiteral("big"), tree.path("a/short-link"));
    QFile::link(QString(200, QLatin1Char('x')),
        tree.path("a/long-dangling-link"));                     // takes a block of its own
    QFile::link(tree.path("b"), tree.path("a/link-to-folder")); // never followed
    {
        QFile sparse(tree.path("c/sparse"));
        QDir().mkpath(tree.path("c"));
        ASSERT_TRUE(sparse.open(QIODevice::WriteOnly));
        sparse.write("start");
        sparse.resize(50'000'000);
    }
    writeFileOfSize(tree.path("root-file-1"), 70'000);
    tree.write("root-file-2", "x");
    QFile::link(QStringLiteral("a"), tree.path("root-link"));

    const std::vector<Progress> values = walkAll(tree.path());
    ASSERT_FALSE(values.empty());
    const Progress& last = values.back();
    ASSERT_TRUE(last.finished);
    EXPECT_FALSE(last.scanning);
    EXPECT_EQ(last.measured.size(), 3u);
    EXPECT_EQ(last.measuredTotal, branchSum(last));
    EXPECT_EQ(last.measuredTotal + last.rootFileBytes, duBytes(tree.path()));

    // The items lying directly in the root, with the root's own blocks, belong to no branch.
    EXPECT_EQ(last.rootFileBytes, duBytes(tree.path(), {QStringLiteral("-S")}));
    EXPECT_EQ(last.rootFileCount, 3);

    const auto a = findNode(last, tree.path("a"));
    ASSERT_TRUE(a);
    EXPECT_EQ(childNames(*a), (QStringList{"deep", "empty-folder"}));
    EXPECT_EQ(a->directFileCount, 6); // big, empty, shared-again and the three links
    EXPECT_EQ(a->totalFileCount, 7);
    EXPECT_EQ(findNode(last, tree.path("a/deep/er/still"))->total, duBytes(tree.path("a/deep/er/still")));
    EXPECT_EQ(findNode(last, tree.path("c"))->total, duBytes(tree.path("c")));
    EXPECT_LT(findNode(last, tree.path("c"))->total, 1'000'000) << "a sparse file counts the blocks it has";

    // Listing alone tells folders and links apart and reports what each item takes.
    const std::vector<Entry> entries = listFolder(toFileName(tree.path("a")));
    ASSERT_EQ(entries.size(), 8u);
    const auto entry = [&](const char* name) {
        return *std::ranges::find_if(entries, [&](const Entry& e) { return e.name == name; });
    };
    EXPECT_TRUE(entry("deep").isDirectory);
    EXPECT_TRUE(entry("link-to-folder").isSymlink);
    EXPECT_FALSE(entry("link-to-folder").isDirectory);
    EXPECT_GE(entry("big").allocatedSize, 300'000);
    EXPECT_EQ(entry("shared-again").linkCount, 3u);
    EXPECT_TRUE(listFolder(toFileName(tree.path("missing"))).empty());
}

TEST(FastWalk, ReportsEachBranchWhenItFinishesAndEndsAtOnceForAMissingRoot)
{
    FixtureTree tree;
    for (const char* branch : {"one", "two", "three", "four"})
        for (int i = 0; i < 20; ++i)
            writeFileOfSize(tree.path(QStringLiteral("%1/sub%2/file").arg(QLatin1String(branch)).arg(i)), 5000);

    const std::vector<Progress> values = walkAll(tree.path());
    ASSERT_FALSE(values.empty());
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(values[i].finished, i + 1 == values.size());
        if (i > 0) {
            EXPECT_GT(values[i].measured.size(), values[i - 1].measured.size());
        }
        EXPECT_EQ(values[i].measuredTotal, branchSum(values[i]));
        if (!values[i].finished) {
            EXPECT_TRUE(values[i].scanning) << "a branch is still being measured";
        }
    }
    EXPECT_EQ(values.back().measured.size(), 4u);
    EXPECT_EQ(values.back().rootFileCount, 0);

    EXPECT_TRUE(walkAll(tree.path("missing")).empty());
}

TEST(FastWalk, PackageFoldersAreMeasuredWholeAndShownWithoutSubfolders)
{
    FixtureTree tree;
    writeFileOfSize(tree.path("Pictures/Trip.PhotosLibrary/originals/0/a.jpg"), 40'000);
    writeFileOfSize(tree.path("Pictures/Trip.PhotosLibrary/database/db"), 9'000);
    writeFileOfSize(tree.path("Pictures/Trip.PhotosLibrary/Info"), 100);
    writeFileOfSize(tree.path("Tool.APP/bin/tool"), 8'000);
    writeFileOfSize(tree.path("Pictures/holiday.apps/inner/x"), 8'000); // not a package extension
    writeFileOfSize(tree.path("Pictures/noextension/inner/x"), 8'000);

    const std::vector<Progress> values = walkAll(tree.path());
    ASSERT_FALSE(values.empty());
    const Progress& last = values.back();
    const auto library = findNode(last, tree.path("Pictures/Trip.PhotosLibrary"));
    ASSERT_TRUE(library);
    EXPECT_TRUE(library->isPackage);
    EXPECT_TRUE(library->subdirectories.empty());
    EXPECT_EQ(library->total, duBytes(library->path.c_str()));
    EXPECT_EQ(library->totalFileCount, 3);
    const auto tool = findNode(last, tree.path("Tool.APP"));
    ASSERT_TRUE(tool);
    EXPECT_TRUE(tool->isPackage && tool->subdirectories.empty());
    EXPECT_FALSE(findNode(last, tree.path("Pictures/holiday.apps"))->isPackage);
    EXPECT_EQ(childNames(*findNode(last, tree.path("Pictures/holiday.apps"))), QStringList{"inner"});
    EXPECT_EQ(last.measuredTotal + last.rootFileBytes, duBytes(tree.path()));
}

TEST(FastWalk, UnreadableFoldersContributeNothingAndLeftOutPathsAreSkipped)
{
    FixtureTree tree;
    writeFileOfSize(tree.path("open/file"), 20'000);
    writeFileOfSize(tree.path("open/locked/secret"), 500'000);
    writeFileOfSize(tree.path("open/locked/inner/secret"), 500'000);
    writeFileOfSize(tree.path("lockedtop/secret"), 500'000);
    writeFileOfSize(tree.path("skipped/file"), 500'000);
    writeFileOfSize(tree.path("open/skipped-too/file"), 500'000);
    ASSERT_TRUE(QFile::setPermissions(tree.path("open/locked"), {}));
    ASSERT_TRUE(QFile::setPermissions(tree.path("lockedtop"), {}));

    std::vector<Progress> values;
    {
        const FileAccessChecksEnforced checks;
        values = walkAll(tree.path(), {toFileName(tree.path("skipped")), toFileName(tree.path("open/skipped-too"))});
    }
    QFile::setPermissions(tree.path("open/locked"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QFile::setPermissions(tree.path("lockedtop"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    ASSERT_FALSE(values.empty());
    const Progress& last = values.back();
    ASSERT_TRUE(last.finished);
    const auto locked = findNode(last, tree.path("open/locked"));
    ASSERT_TRUE(locked);
    EXPECT_EQ(locked->directFileCount, 0);
    EXPECT_TRUE(locked->subdirectories.empty());
    EXPECT_EQ(locked->total, locked->ownAllocatedSize) << "only the folder's own blocks, seen from outside";
    const auto lockedTop = findNode(last, tree.path("lockedtop"));
    ASSERT_TRUE(lockedTop);
    EXPECT_EQ(lockedTop->total, lockedTop->ownAllocatedSize);
    EXPECT_FALSE(findNode(last, tree.path("skipped")));
    EXPECT_FALSE(findNode(last, tree.path("open/skipped-too")));
    EXPECT_EQ(findNode(last, tree.path("open"))->directFileCount, 1);
    EXPECT_LT(last.measuredTotal, 100'000);
    EXPECT_EQ(last.unreadableFolders,
        std::vector<std::string>({toFileName(tree.path("lockedtop")), toFileName(tree.path("open/locked"))}));
}

TEST(FastWalk, ARootThatCannotBeListedEndsTheStreamWithoutAnAnswer)
{
    FixtureTree tree;
    writeFileOfSize(tree.path("locked/secret"), 500'000);
    ASSERT_TRUE(QFile::setPermissions(tree.path("locked"), {}));
    std::vector<Progress> values;
    {
        const FileAccessChecksEnforced checks;
        values = walkAll(tree.path("locked"));
    }
    QFile::setPermissions(tree.path("locked"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    EXPECT_TRUE(values.empty()) << "the folder's own blocks alone would pass for a measured folder";
}

TEST(FastWalk, NamesThatAreNotUtf8AreMeasuredShownEscapedAndNeverOfferedForRemoval)
{
    FixtureTree tree;
    const QByteArray root = QFile::encodeName(tree.path());
    ASSERT_TRUE(makeFolderNamedBytes(root + "/bad\xff"));
    ASSERT_TRUE(makeFolderNamedBytes(root + "/bad\xff/inner"));
    ASSERT_TRUE(writeFileNamedBytes(root + "/bad\xff/inner/data", QByteArray(300'000, 'x')));
    // The name "bad\xff" decodes to, a different folder.
    ASSERT_TRUE(makeFolderNamedBytes(root + "/bad\xef\xbf\xbd"));
    ASSERT_TRUE(writeFileNamedBytes(root + "/bad\xef\xbf\xbd/data", QByteArray(1000, 'x')));

    const std::vector<Progress> values = walkAll(tree.path());
    ASSERT_FALSE(values.empty());
    const Progress& last = values.back();
    ASSERT_TRUE(last.finished);
    EXPECT_EQ(last.measuredTotal + last.rootFileBytes, duBytes(tree.path())) << "sizes still count";

    const QList<UsageItem> items = itemsOf(last, tree.path());
    ASSERT_EQ(items.size(), 2);
    const UsageItem& bad = items[0]; // the larger
    EXPECT_EQ(bad.name, QStringLiteral("bad\\xFF"));
    EXPECT_EQ(bad.path, tree.path() + QStringLiteral("/bad\\xFF"));
    EXPECT_FALSE(bad.exactPath);
    EXPECT_FALSE(bad.canMoveToTrash());
    ASSERT_TRUE(bad.canOpen());
    const QList<UsageItem> inside = itemsOf(*bad.node);
    ASSERT_EQ(inside.size(), 1);
    EXPECT_EQ(inside[0].path, tree.path() + QStringLiteral("/bad\\xFF/inner"));
    EXPECT_FALSE(inside[0].canMoveToTrash()) << "a folder below a bad name has no exact path either";

    const UsageItem& other = items[1];
    EXPECT_EQ(other.name, QStringLiteral("bad\uFFFD"));
    EXPECT_TRUE(other.exactPath);
    EXPECT_TRUE(other.canMoveToTrash());
}

TEST(FastWalk, NeverEntersAnotherVolumeAndMeasuresABindMountedFolderOnce)
{
    if (!runningAsRoot())
        GTEST_SKIP() << "mounting needs root";
    FixtureTree tree;
    writeFileOfSize(tree.path("a/data/file"), 300'000);
    writeFileOfSize(tree.path("a/data/sub/file"), 100'000);
    tree.makeFolder("a/volume");
    tree.makeFolder("b/alias");
    tree.makeFolder("topvolume");
    tree.makeFolder("toplevel-alias");
    // The empty mount points take blocks of their own until something is mounted on them; from then on
    // the walk sees only what is mounted there.
    const qint64 mountPoints = duBytes(tree.path("a/volume")) + duBytes(tree.path("b/alias"))
        + duBytes(tree.path("topvolume")) + duBytes(tree.path("toplevel-alias"));
    const qint64 before = duBytes(tree.path());

    std::optional<TmpfsMount> volume = TmpfsMount::mount(tree.path("a/volume"), QStringLiteral("size=4m"));
    std::optional<TmpfsMount> topVolume = TmpfsMount::mount(tree.path("topvolume"), QStringLiteral("size=4m"));
    ASSERT_TRUE(volume && topVolume);
    writeFileOfSize(tree.path("a/volume/elsewhere"), 1'000'000);
    writeFileOfSize(tree.path("topvolume/elsewhere"), 1'000'000);
    const BindMount alias(tree.path("a/data"), tree.path("b/alias"));
    const BindMount topAlias(tree.path("a"), tree.path("toplevel-alias"));
    ASSERT_TRUE(alias.mounted() && topAlias.mounted());

    const std::vector<Progress> values = walkAll(tree.path());
    ASSERT_FALSE(values.empty());
    const Progress& last = values.back();
    EXPECT_EQ(last.measuredTotal + last.rootFileBytes, before - mountPoints);
    EXPECT_FALSE(findNode(last, tree.path("a/volume")));
    EXPECT_FALSE(findNode(last, tree.path("topvolume")));
    // Either name of the bind-mounted folders may be the one measured, but only one is.
    EXPECT_NE(bool(findNode(last, tree.path("a"))), bool(findNode(last, tree.path("toplevel-alias"))));
    EXPECT_EQ(last.measured.size(), 2u);
    const auto nodes = allNodes(last);
    const auto dataNodes
        = std::ranges::count_if(nodes, [](const auto& node) { return node->name == "data" || node->name == "alias"; });
    EXPECT_EQ(dataNodes, 1);
}

TEST(FastWalk, CancelWhileWorkersWaitReturnsEveryWorkerWithoutListingMore)
{
    FixtureTree tree;
    // In memory when possible: removing a deep chain of folders from a disk can take seconds.
    const std::optional<TmpfsMount> memory = TmpfsMount::mount(tree.path("walked"), QStringLiteral("size=64m"));
    const QString root = tree.makeFolder("walked");
    writeFileOfSize(root + "/quick/file", 1000);
    // One long chain: only one folder at a time can be listed, so every other worker waits. Made folder by
    // folder relative to its parent, which stays quick however deep it goes.
    ASSERT_TRUE(QDir().mkpath(root + "/slow"));
    int folder = ::open(QFile::encodeName(root + "/slow").constData(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < 1200 && folder >= 0; ++i) {
        ::mkdirat(folder, "d", 0755);
        const int child = ::openat(folder, "d", O_RDONLY | O_DIRECTORY);
        ::close(folder);
        folder = child;
    }
    ASSERT_GE(folder, 0);
    ::close(folder);

    FastWalk walk(toFileName(root), {});
    const std::optional<Progress> first = walk.next();
    ASSERT_TRUE(first);
    ASSERT_FALSE(first->finished) << "the chain should take longer than the quick branch";
    walk.cancel();
    const WalkCounters atCancel = walk.counters();
    EXPECT_FALSE(walk.next()) << "a cancelled walk publishes nothing more";
    // Without the cancel the chain would go on by hundreds of folders in this time; each worker may only
    // finish the folder it holds.
    ::usleep(100'000);
    EXPECT_LE(walk.counters().foldersListed, atCancel.foldersListed + FastWalk::workerCount());
    EXPECT_LT(atCancel.foldersListed, 1202);
    // Leaving the scope joins every thread of the walk: the test would hang here if a worker kept waiting.
}
