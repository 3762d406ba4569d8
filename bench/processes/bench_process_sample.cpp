// The CPU time one sample of the process table costs Velloru, from the process's own accounting: the first
// sample (every process new, its program and app read once) and the samples after it (what the Memory Usage
// section pays every interval). run.sh prints it beside ps and top on the same table.
//
// usage: bench_process_sample [SAMPLES]

#include "apps/AppCollector.h"
#include "processes/ProcessSampling.h"

#include <QCoreApplication>

#include <cstdio>
#include <ctime>

namespace {

double cpuMilliseconds()
{
    timespec used{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return double(used.tv_sec) * 1e3 + double(used.tv_nsec) / 1e6;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int samples = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
    const QList<InstalledApp> apps = collectInstalledApps(AppSources::forThisSystem());
    ProcessSampling sampling;

    double start = cpuMilliseconds();
    const qsizetype processes = sampling.sample(apps, std::nullopt).processes.size();
    const double first = cpuMilliseconds() - start;

    start = cpuMilliseconds();
    for (int i = 0; i < samples; ++i)
        sampling.sample(apps, std::nullopt);
    const double later = (cpuMilliseconds() - start) / samples;

    std::printf("velloru  processes=%lld  first sample %.2f ms CPU  each later sample %.2f ms CPU (mean of %d)\n",
        static_cast<long long>(processes), first, later, samples);
    return 0;
}
