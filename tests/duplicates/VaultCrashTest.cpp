#include "DuplicateFixtures.h"
#include "ProgramHome.h"
#include "TestSupport.h"

#include "duplicates/VaultStore.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QProcess>
#include <QThread>

#include <csignal>

namespace {

constexpr int sets = 1500;

// Sets of two small files each, every set its own content: the keeper in "keep", the copy in "copies".
QHash<QString, QByteArray> writeSets(FixtureTree& tree, const QString& under)
{
    QHash<QString, QByteArray> copies;
    for (int set = 0; set < sets; ++set) {
        const QByteArray content = patternBytes(200, set) + under.toUtf8();
        tree.write(QStringLiteral("%1/keep/%2.bin").arg(under).arg(set), content);
        copies.insert(
            tree.write(QStringLiteral("%1/copies/%2/c%3.bin").arg(under).arg(set % 40).arg(set), content), content);
    }
    return copies;
}

QString dataFolder(const ProgramHome& home)
{
    return home.path(QStringLiteral(".local/share/Velloru"));
}

void startVelloru(QProcess& process, const ProgramHome& home, const QStringList& arguments)
{
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : home.environment())
        variables.insert(name, value);
    process.setProcessEnvironment(variables);
    // Nothing reads the child's output while the test waits for its marker; a full pipe would stop it.
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(QStringLiteral(VELLORU_BINARY), arguments);
}

// Kills `process` with SIGKILL `delayMs` after the vault's marker of unfinished work appears; false when it
// ended first.
bool killMidOperation(QProcess& process, const QString& data, int delayMs)
{
    const QString marker = data + QStringLiteral("/duplicates-vault.unfinished");
    QElapsedTimer clock;
    clock.start();
    while (!QFileInfo::exists(marker)) {
        if (process.waitForFinished(0) || clock.elapsed() > 30'000)
            return false;
        QThread::usleep(100);
    }
    QThread::msleep(delayMs);
    if (process.waitForFinished(0))
        return false;
    ::kill(pid_t(process.processId()), SIGKILL);
    process.waitForFinished(10'000);
    return true;
}

struct Whereabouts {
    int atOrigin = 0;
    int inVault = 0;
};

// Every copy is either at its origin or in the vault with an entry that names it, and every entry holds a
// real file: nothing lost, nothing listed that is not there.
Whereabouts expectNothingLost(const QString& data, const QHash<QString, QByteArray>& copies)
{
    const QList<VaultEntry> entries = VaultStore(data).load();
    EXPECT_FALSE(QFileInfo::exists(data + QStringLiteral("/duplicates-vault.unfinished")));
    QHash<QString, VaultEntry> byOrigin;
    for (const VaultEntry& entry : entries) {
        EXPECT_TRUE(QFileInfo::exists(entry.vaultPath)) << entry.vaultPath.toStdString();
        byOrigin.insert(entry.originalPath, entry);
    }
    Whereabouts where;
    for (auto copy = copies.cbegin(); copy != copies.cend(); ++copy) {
        if (QFileInfo::exists(copy.key())) {
            EXPECT_FALSE(byOrigin.contains(copy.key())) << copy.key().toStdString();
            EXPECT_EQ(readWholeFile(copy.key()), copy.value());
            ++where.atOrigin;
        } else {
            EXPECT_TRUE(byOrigin.contains(copy.key())) << "lost: " << copy.key().toStdString();
            EXPECT_EQ(readWholeFile(byOrigin.value(copy.key()).vaultPath), copy.value());
            ++where.inVault;
        }
    }
    return where;
}

} // namespace

TEST(VaultCrash, AKillAtAnyPointOfAMoveOrARestoreLosesNothing)
{
    int movesCut = 0;
    int restoresCut = 0;
    for (const int delayMs : {0, 5, 40, 120}) {
        SCOPED_TRACE(delayMs);
        ProgramHome home;
        const QHash<QString, QByteArray> copies = writeSets(home.tree(), QStringLiteral("home/files"));

        const QStringList move = {QStringLiteral("duplicates"), home.path(QStringLiteral("files")),
            QStringLiteral("--min-size"), QStringLiteral("1"), QStringLiteral("--move-ticked")};
        QProcess mover;
        startVelloru(mover, home, move);
        const bool killed = killMidOperation(mover, dataFolder(home), delayMs);
        const Whereabouts afterMove = expectNothingLost(dataFolder(home), copies);
        std::printf("move killed=%d after %d ms: %d at origin, %d in the vault\n", killed, delayMs, afterMove.atOrigin,
            afterMove.inVault);

        // The rest moves in, then everything held is put back, and that is stopped in the middle too.
        QProcess finisher;
        startVelloru(finisher, home, move);
        ASSERT_TRUE(finisher.waitForFinished(120'000));
        ASSERT_EQ(expectNothingLost(dataFolder(home), copies).inVault, sets);
        QProcess restorer;
        startVelloru(restorer, home, {QStringLiteral("vault"), QStringLiteral("restore-all")});
        const bool killedRestore = killMidOperation(restorer, dataFolder(home), delayMs);
        const Whereabouts afterRestore = expectNothingLost(dataFolder(home), copies);
        std::printf("restore killed=%d after %d ms: %d at origin, %d in the vault\n", killedRestore, delayMs,
            afterRestore.atOrigin, afterRestore.inVault);
        movesCut += killed && afterMove.inVault < sets ? 1 : 0;
        restoresCut += killedRestore && afterRestore.atOrigin < sets ? 1 : 0;
    }
    // At least one kill of each kind landed in the middle, or the test proved nothing.
    EXPECT_GT(movesCut, 0);
    EXPECT_GT(restoresCut, 0);
}

TEST(VaultCrash, TwoProcessesMovingAtOnceLoseNoEntries)
{
    ProgramHome home;
    QHash<QString, QByteArray> copies = writeSets(home.tree(), QStringLiteral("home/one"));
    copies.insert(writeSets(home.tree(), QStringLiteral("home/two")));
    QProcess first;
    QProcess second;
    startVelloru(first, home,
        {QStringLiteral("duplicates"), home.path(QStringLiteral("one")), QStringLiteral("--min-size"),
            QStringLiteral("1"), QStringLiteral("--move-ticked")});
    startVelloru(second, home,
        {QStringLiteral("duplicates"), home.path(QStringLiteral("two")), QStringLiteral("--min-size"),
            QStringLiteral("1"), QStringLiteral("--move-ticked")});
    ASSERT_TRUE(first.waitForFinished(120'000));
    ASSERT_TRUE(second.waitForFinished(120'000));
    EXPECT_EQ(first.exitCode(), 0) << first.readAllStandardError().toStdString();
    EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();

    const Whereabouts where = expectNothingLost(dataFolder(home), copies);
    EXPECT_EQ(where.inVault, 2 * sets);
    EXPECT_EQ(VaultStore(dataFolder(home)).read().size(), 2 * sets);
}
