// How long the activity log takes to load and to save as it grows. The log is read at every launch and
// written whole after every change, so both must stay quick at the sizes a long-time user reaches.
#include "removal/AuditLog.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QTemporaryDir>

namespace {

void fill(const QString& folder, int entries)
{
    AuditLog log(folder);
    QList<AuditLog::MovedItem> items;
    for (int i = 0; i < entries; ++i)
        items.append({QStringLiteral("/home/user/Pictures/Holiday 2024/IMG_%1.jpg").arg(i), 3'000'000 + i,
            QStringLiteral("/home/user/.local/share/Trash/files/IMG_%1.jpg").arg(i)});
    log.recordMoves(QStringLiteral("Duplicates"), items);
}

void loadLog(benchmark::State& state)
{
    QTemporaryDir folder;
    fill(folder.path(), int(state.range(0)));
    for (auto _ : state) {
        AuditLog log(folder.path());
        benchmark::DoNotOptimize(log.entries().size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void saveLog(benchmark::State& state)
{
    QTemporaryDir folder;
    fill(folder.path(), int(state.range(0)));
    AuditLog log(folder.path());
    // Each round appends one entry and so writes the whole log once.
    for (auto _ : state)
        log.recordMoves(
            QStringLiteral("Smart Scan"), {{QStringLiteral("/home/user/.cache/x"), 1, QStringLiteral("/t/x")}});
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

} // namespace

BENCHMARK(loadLog)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(saveLog)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
