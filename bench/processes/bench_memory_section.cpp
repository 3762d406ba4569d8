// The CPU the open Memory Usage section costs: the real window, offscreen, showing the section at its
// default interval for a minute after a short settling time. Prints the share of one core the whole window
// used. Given another section (the dashboard, say), it measures the window without the Memory Usage section
// sampling, so that the difference is the section's own cost.
//
// usage: QT_QPA_PLATFORM=offscreen bench_memory_section [SECONDS] [SECTION]

#include "app/AppState.h"
#include "app/SettingsRouter.h"
#include "app/UserDefaults.h"
#include "ui/MainWindow.h"

#include <QApplication>
#include <QSettings>
#include <QTimer>

#include <cstdio>
#include <ctime>

namespace {

double cpuSeconds()
{
    timespec used{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return double(used.tv_sec) + double(used.tv_nsec) / 1e9;
}

double wallSeconds()
{
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    setApplicationIdentity();
    const int seconds = argc > 1 ? std::max(5, std::atoi(argv[1])) : 60;
    const QString section = argc > 2 ? QString::fromUtf8(argv[2]) : QStringLiteral("memoryUsage");
    QSettings defaults;
    defaults.setValue(DefaultsKey::onboardingComplete, true);
    defaults.setValue(DefaultsKey::permissionsRemindSuppressed, true);
    defaults.setValue(DefaultsKey::debugStartPage, section);
    AppState state;
    SettingsRouter router;
    MainWindow window(state, router, defaults);
    window.resize(1440, 900);
    window.show();

    double cpuStart = 0;
    double wallStart = 0;
    constexpr int settleMs = 5000; // start-up and the first samples, which read every program once
    QTimer::singleShot(settleMs, [&] {
        cpuStart = cpuSeconds();
        wallStart = wallSeconds();
    });
    QTimer::singleShot(settleMs + seconds * 1000, [&] {
        const double share = (cpuSeconds() - cpuStart) / (wallSeconds() - wallStart) * 100;
        std::printf(
            "velloru window, Memory Usage shown at a 2 s interval: %.2f%% of one core over %d s\n", share, seconds);
        app.quit();
    });
    const int status = app.exec();
    defaults.remove(DefaultsKey::debugStartPage);
    return status;
}
