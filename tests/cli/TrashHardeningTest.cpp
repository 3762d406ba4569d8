// The Trash command as a careless or unlucky user meets it: typing slips, a kill in the middle of a batch,
// two runs at once, and an Activity log that cannot be written.
#include "removal/TrashTexts.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QSet>
#include <QStandardPaths>
#include <QThread>

namespace {

QList<QPair<QString, QString>> sandbox(const FixtureTree& tree)
{
    return {{QStringLiteral("HOME"), tree.path(QStringLiteral("home"))},
        {QStringLiteral("XDG_DATA_HOME"), tree.path(QStringLiteral("data"))},
        {QStringLiteral("XDG_CACHE_HOME"), tree.path(QStringLiteral("home/.cache"))},
        {QStringLiteral("XDG_CONFIG_HOME"), tree.path(QStringLiteral("home/.config"))},
        {QStringLiteral("XDG_STATE_HOME"), tree.path(QStringLiteral("home/.local/state"))}};
}

QProcess* startVelloru(const FixtureTree& tree, const QStringList& arguments, QObject* parent = nullptr)
{
    auto* velloru = new QProcess(parent);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : sandbox(tree))
        environment.insert(name, value);
    velloru->setProcessEnvironment(environment);
    velloru->start(QStringLiteral(VELLORU_BINARY), arguments);
    return velloru;
}

QJsonArray activityEntries(const FixtureTree& tree, qint64* lifetime = nullptr)
{
    const CommandRun run = runVelloru({QStringLiteral("activity"), QStringLiteral("--json")}, sandbox(tree));
    const QJsonObject object = QJsonDocument::fromJson(run.out.toUtf8()).object();
    if (lifetime)
        *lifetime = object.value(u"lifetimeCleaned").toInteger(-1);
    return object.value(u"entries").toArray();
}

// What the log says went to the Trash and what the Trash holds agree, and every record there is whole and
// has its item.
void expectLogMatchesTrash(const FixtureTree& tree, const QString& round)
{
    const QJsonArray entries = activityEntries(tree);
    QSet<QString> logged;
    for (const QJsonValue& value : entries) {
        const QJsonObject entry = value.toObject();
        if (entry.value(u"outcome").toString() == QLatin1String("Moved to Trash")) {
            const QString trashPath = entry.value(u"trashPath").toString();
            EXPECT_FALSE(logged.contains(trashPath)) << round.toStdString() << " twice: " << trashPath.toStdString();
            logged.insert(trashPath);
        }
    }
    const QString files = tree.path(QStringLiteral("data/Trash/files"));
    const QString info = tree.path(QStringLiteral("data/Trash/info"));
    QSet<QString> trashed;
    for (const QString& name : QDir(files).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
        trashed.insert(files + QLatin1Char('/') + name);
        const QByteArray record = readWholeFile(info + QLatin1Char('/') + name + QStringLiteral(".trashinfo"));
        EXPECT_TRUE(record.startsWith("[Trash Info]\nPath=")) << round.toStdString() << ' ' << name.toStdString();
    }
    EXPECT_EQ(logged, trashed) << round.toStdString() << ": " << logged.size() << " logged, " << trashed.size()
                               << " in the Trash";
    for (const QString& record : QDir(info).entryList(QDir::Files | QDir::Hidden)) {
        EXPECT_TRUE(record.endsWith(QStringLiteral(".trashinfo")))
            << round.toStdString() << ' ' << record.toStdString();
        const QFileInfo item(files + QLatin1Char('/') + record.chopped(10));
        EXPECT_TRUE(item.exists() || item.isSymLink())
            << round.toStdString() << " a record without its item: " << record.toStdString();
    }
}

} // namespace

TEST(TrashCommand, NamesThatWouldMoveTooMuchAreRefusedWithASentence)
{
    FixtureTree tree;
    const QString home = tree.makeFolder(QStringLiteral("home"));
    const QString work = tree.makeFolder(QStringLiteral("home/work"));
    tree.write(QStringLiteral("home/work/keep.txt"), "keep");
    const struct {
        QString argument;
        QString sentence;
    } cases[] = {
        {QString(), TrashTexts::emptyName()},
        {QStringLiteral("."), TrashTexts::dotName()},
        {QStringLiteral(".."), TrashTexts::dotName()},
        {QStringLiteral("../work/."), TrashTexts::dotName()},
        {work, TrashTexts::currentFolder()},
        {QStringLiteral("/"), TrashTexts::wholeFileSystem()},
        {home, TrashTexts::homeFolder()},
        {QStringLiteral("~"), TrashTexts::homeFolder()},
        {tree.path(), TrashTexts::holdsHomeFolder()},
        {tree.path(QStringLiteral("data")), TrashTexts::holdsTrash()},
        {tree.path(QStringLiteral("nonexistent")), TrashTexts::doesNotExist()},
    };
    QDir().mkpath(tree.path(QStringLiteral("data/Trash")));
    for (const auto& [argument, sentence] : cases) {
        QProcess velloru;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const auto& [name, value] : sandbox(tree))
            environment.insert(name, value);
        velloru.setProcessEnvironment(environment);
        velloru.setWorkingDirectory(work);
        velloru.start(QStringLiteral(VELLORU_BINARY), {QStringLiteral("trash"), argument});
        ASSERT_TRUE(velloru.waitForFinished(30'000));
        const QString out = QString::fromUtf8(velloru.readAllStandardOutput());
        EXPECT_EQ(velloru.exitCode(), 1) << argument.toStdString();
        EXPECT_TRUE(out.contains(sentence)) << argument.toStdString() << ": " << out.toStdString();
        EXPECT_TRUE(out.contains(QStringLiteral("0 moved"))) << out.toStdString();
    }
    EXPECT_EQ(readWholeFile(tree.path(QStringLiteral("home/work/keep.txt"))), "keep");
    // Slips are said and never logged as removals that failed; the rest of the batch still goes.
    EXPECT_TRUE(activityEntries(tree).isEmpty());
    const QString file = tree.write(QStringLiteral("home/loose.txt"), "x");
    const CommandRun mixed = runVelloru({QStringLiteral("trash"), QStringLiteral("/"), file}, sandbox(tree));
    EXPECT_TRUE(mixed.out.contains(QStringLiteral("1 moved"))) << mixed.out.toStdString();
    EXPECT_EQ(activityEntries(tree).size(), 1);
}

TEST(TrashCommand, AKillAtAnyMomentLeavesEveryTrashedItemInTheLog)
{
    // Twenty kills at random moments: of a plain batch, and of Smart Scan cleaning broken links.
    QRandomGenerator random(20261123);
    for (int round = 0; round < 20; ++round) {
        FixtureTree tree;
        const bool smartScan = round % 4 == 3;
        QStringList arguments;
        if (smartScan) {
            const QString home = tree.makeFolder(QStringLiteral("home"));
            for (int i = 0; i < 300; ++i)
                QFile::link(
                    QStringLiteral("/nonexistent/target-%1").arg(i), home + QStringLiteral("/dangling-%1").arg(i));
            arguments = {QStringLiteral("scan"), QStringLiteral("--clean")};
        } else {
            arguments = {QStringLiteral("trash")};
            for (int i = 0; i < 400; ++i)
                arguments.append(tree.write(QStringLiteral("batch/file-%1.txt").arg(i), QByteArray::number(i)));
        }
        QDir().mkpath(tree.path(QStringLiteral("data/Trash/files")));
        std::unique_ptr<QProcess> velloru(startVelloru(tree, arguments));
        ASSERT_TRUE(velloru->waitForStarted());
        // Killed once a random share of the batch has moved, or at a random moment before any has.
        const int moved = int(random.bounded(300));
        QElapsedTimer waited;
        waited.start();
        while (QDir(tree.path(QStringLiteral("data/Trash/files")))
                    .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
                    .size()
                < moved
            && velloru->state() == QProcess::Running && waited.elapsed() < 30'000)
            QThread::usleep(100);
        velloru->kill();
        velloru->waitForFinished();
        expectLogMatchesTrash(tree, QStringLiteral("round %1 (%2)").arg(round).arg(arguments.first()));
        if (HasFailure())
            return;
    }
}

TEST(TrashCommand, TwoRunsAtOnceBothKeepEveryEntry)
{
    for (int pair = 0; pair < 10; ++pair) {
        FixtureTree tree;
        QStringList first{QStringLiteral("trash")};
        QStringList second{QStringLiteral("trash")};
        for (int i = 0; i < 100; ++i) {
            first.append(tree.write(QStringLiteral("a/file-%1.txt").arg(i), QByteArray(5, 'a')));
            second.append(tree.write(QStringLiteral("b/file-%1.txt").arg(i), QByteArray(5, 'b')));
        }
        std::unique_ptr<QProcess> one(startVelloru(tree, first));
        std::unique_ptr<QProcess> two(startVelloru(tree, second));
        ASSERT_TRUE(one->waitForFinished(60'000));
        ASSERT_TRUE(two->waitForFinished(60'000));
        qint64 lifetime = 0;
        EXPECT_EQ(activityEntries(tree, &lifetime).size(), 200) << "pair " << pair;
        EXPECT_EQ(lifetime, 1000) << "pair " << pair;
        if (HasFailure())
            return;
    }

    // Many short runs side by side, each of one file.
    FixtureTree tree;
    std::vector<std::unique_ptr<QProcess>> runs;
    for (int i = 0; i < 40; ++i) {
        runs.emplace_back(
            startVelloru(tree, {QStringLiteral("trash"), tree.write(QStringLiteral("one/%1.txt").arg(i), "12345")}));
        if (runs.size() >= 4) {
            ASSERT_TRUE(runs.front()->waitForFinished(60'000));
            runs.erase(runs.begin());
        }
    }
    for (const auto& run : runs)
        ASSERT_TRUE(run->waitForFinished(60'000));
    qint64 lifetime = 0;
    EXPECT_EQ(activityEntries(tree, &lifetime).size(), 40);
    EXPECT_EQ(lifetime, 200);
}

TEST(TrashCommand, AnActivityLogThatCannotBeWrittenIsSaidAndTheExitStatusShowsIt)
{
    FixtureTree tree;
    auto readOnly = TmpfsMount::mount(tree.path(QStringLiteral("data/Velloru")), QStringLiteral("size=1m"));
    if (!readOnly)
        GTEST_SKIP() << "needs root to mount a read-only data folder";
    ASSERT_TRUE(readOnly->remount(QStringLiteral("ro")));
    const QString file = tree.write(QStringLiteral("home/report.txt"), "report");
    const CommandRun run = runVelloru({QStringLiteral("trash"), file}, sandbox(tree));
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.out.contains(QStringLiteral("1 moved"))) << run.out.toStdString();
    EXPECT_TRUE(run.err.contains(QStringLiteral("1 item was moved to the Trash, but Velloru couldn’t record it in its "
                                                "Activity log — ")))
        << run.err.toStdString();
    EXPECT_TRUE(QFile::exists(tree.path(QStringLiteral("data/Trash/files/report.txt"))));
}
