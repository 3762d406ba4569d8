// Times the duplicates vault on COPIES ticked copies (each a 4 KB file with its keeper): moving them in,
// verifying them against their keepers and putting them all back, beside a plain shell loop of `mv` and
// `cmp -s` over the same files; then how long a 100,000-entry list takes to load.
//
// usage: bench_vault WORKDIR [COPIES]     (WORKDIR is emptied first)

#include "duplicates/DuplicateScan.h"
#include "duplicates/DuplicateVaultController.h"
#include "duplicates/VaultStore.h"
#include "removal/AuditLog.h"
#include "removal/Trasher.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QProcess>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void writeTree(const QString& root, int copies)
{
    for (int folder = 0; folder < 100; ++folder) {
        QDir().mkpath(QStringLiteral("%1/keep/%2").arg(root).arg(folder));
        QDir().mkpath(QStringLiteral("%1/copies/%2").arg(root).arg(folder));
    }
    for (int set = 0; set < copies; ++set) {
        QByteArray content(4096, char(set));
        content.replace(0, 8, QByteArray::number(set).rightJustified(8, '0'));
        for (const char* side : {"keep", "copies"}) {
            QFile file(QStringLiteral("%1/%2/%3/%4.bin").arg(root).arg(QLatin1String(side)).arg(set % 100).arg(set));
            if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
                std::fprintf(stderr, "could not write %s\n", qPrintable(file.fileName()));
        }
    }
}

QList<DuplicateGroup> scan(const QString& root)
{
    DuplicateScan scan;
    scan.setRoots({root});
    QEventLoop loop;
    QObject::connect(&scan, &DuplicateScan::phaseChanged, &loop, [&](DuplicateScan::Phase phase) {
        if (phase != DuplicateScan::Phase::scanning)
            loop.quit();
    });
    scan.start();
    loop.exec();
    return scan.groups();
}

double timed(DuplicateVaultController& vault, const std::function<bool()>& start)
{
    QEventLoop loop;
    QObject::connect(&vault, &DuplicateVaultController::finished, &loop, &QEventLoop::quit);
    const Clock::time_point began = Clock::now();
    start();
    loop.exec();
    return secondsSince(began);
}

double shell(const QString& script)
{
    const Clock::time_point began = Clock::now();
    QProcess bash;
    bash.start(QStringLiteral("bash"), {QStringLiteral("-c"), script});
    bash.waitForFinished(-1);
    if (bash.exitCode() != 0)
        std::fprintf(stderr, "shell loop failed: %s\n", bash.readAllStandardError().constData());
    return secondsSince(began);
}

struct LoadTime {
    double wall = 1e9;
    double processor = 1e9; // this process's CPU time: what the load costs on a machine that is not shared
};

LoadTime loadSeconds(const QString& folder, int entries)
{
    QList<VaultEntry> list;
    list.reserve(entries);
    for (int i = 0; i < entries; ++i) {
        VaultEntry entry;
        entry.id = QUuid::createUuid();
        entry.originalPath
            = QStringLiteral("/home/someone/Pictures/Trips/2019/Holiday %1/IMG_%2.jpg").arg(i / 100).arg(i);
        entry.vaultPath = QStringLiteral("/home/someone/.local/share/Velloru/Duplicates Vault") + entry.originalPath;
        entry.keeperPath = QStringLiteral("/home/someone/Pictures/Best/IMG_%1.jpg").arg(i);
        entry.size = entry.reclaimable = 3'000'000 + i;
        entry.contentHashHex = QStringLiteral("0123456789abcdef0123456789abcdef");
        entry.groupID = entry.batchID = QUuid::createUuid();
        entry.movedAt = 785'000'000.25;
        entry.fileID = 1'000'000 + i;
        entry.mtimeNsec = 1'700'000'000'123'456'789;
        entry.volumeUUID = QStringLiteral("6A1D0C4E-8E1B-4F5B-9B52-3C1C2F0E9A77");
        list.append(entry);
    }
    const VaultStore store(folder);
    store.write(list);
    LoadTime best;
    for (int round = 0; round < 5; ++round) {
        const Clock::time_point began = Clock::now();
        const std::clock_t cpuBegan = std::clock();
        const qsizetype read = store.load().size();
        best.processor = std::min(best.processor, double(std::clock() - cpuBegan) / CLOCKS_PER_SEC);
        best.wall = std::min(best.wall, secondsSince(began));
        if (read != entries)
            std::fprintf(stderr, "read %lld of %d entries\n", qlonglong(read), entries);
    }
    return best;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: bench_vault WORKDIR [COPIES]\n");
        return 2;
    }
    const QString work = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    const int copies = argc > 2 ? std::atoi(argv[2]) : 10'000;
    QDir(work).removeRecursively();
    const QString tree = work + QStringLiteral("/tree");
    const QString data = work + QStringLiteral("/data");
    writeTree(tree, copies);

    const QList<DuplicateGroup> groups = scan(tree);
    AuditLog log(data);
    const Trasher trasher;
    DuplicateVaultController vault(data, log, trasher);
    vault.load();
    const double move = timed(vault, [&] { return vault.moveTicked(groups); });
    const qsizetype held = vault.entries().size();
    const double verify = timed(vault, [&] { return vault.verifyAll(); });
    const double restore = timed(vault, [&] { return vault.restoreAll(); });

    // The same files by hand: one mv per copy into a mirrored folder, cmp -s against its keeper, mv back.
    const QString mirror = work + QStringLiteral("/mirror");
    const QString folders
        = QStringLiteral("for f in $(seq 0 99); do mkdir -p \"%1%2/copies/$f\"; done; ").arg(mirror, tree);
    const QString each = QStringLiteral("for i in $(seq 0 %1); do f=$((i % 100)); ").arg(copies - 1);
    const double mvIn = shell(folders + each
        + QStringLiteral("mv -n \"%1/copies/$f/$i.bin\" \"%2%1/copies/$f/$i.bin\"; done").arg(tree, mirror));
    const double cmpAll = shell(each
        + QStringLiteral("cmp -s \"%2%1/copies/$f/$i.bin\" \"%1/keep/$f/$i.bin\" || exit 1; done").arg(tree, mirror));
    const double mvBack = shell(
        each + QStringLiteral("mv -n \"%2%1/copies/$f/$i.bin\" \"%1/copies/$f/$i.bin\"; done").arg(tree, mirror));

    const LoadTime load = loadSeconds(work + QStringLiteral("/large"), 100'000);

    std::printf("copies held by the vault: %lld of %d\n\n", qlonglong(held), copies);
    std::printf("| operation (%d copies) | Velloru vault | shell loop | ratio |\n|---|---|---|---|\n", copies);
    std::printf("| move in | %.3f s | %.3f s (mv) | %.1fx |\n", move, mvIn, mvIn / move);
    std::printf("| verify | %.3f s | %.3f s (cmp -s) | %.1fx |\n", verify, cmpAll, cmpAll / verify);
    std::printf("| put back | %.3f s | %.3f s (mv) | %.1fx |\n", restore, mvBack, mvBack / restore);
    std::printf("\nloading a 100,000-entry duplicates-vault.json: %.3f s, %.3f s of processor time (best of 5)\n",
        load.wall, load.processor);
    return 0;
}
