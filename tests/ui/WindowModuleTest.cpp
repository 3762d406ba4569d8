#include "ProgramHome.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

namespace {

QProcessEnvironment windowEnvironment(const ProgramHome& home)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : home.environment())
        environment.insert(name, value);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    // Qt reports each window it paints and hands to the screen.
    environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("qt.widgets.painting=true"));
    return environment;
}

} // namespace

TEST(WindowModule, TheProgramLoadsTheWindowFromItsModuleAndShowsIt)
{
    ProgramHome home;
    QProcess velloru;
    velloru.setProcessEnvironment(windowEnvironment(home));
    velloru.start(QStringLiteral(VELLORU_BINARY), {});
    ASSERT_TRUE(velloru.waitForStarted());

    // A first start shows the welcome step in the main window.
    QByteArray said;
    const auto shown
        = [&] { return said.contains("of MainWindow(") && said.contains("Flushing") && said.contains("WelcomeStep"); };
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            said += velloru.readAllStandardError();
            return shown() || velloru.state() == QProcess::NotRunning;
        },
        60'000))
        << "the program neither showed its window nor ended within a minute";
    const QByteArray maps = readWholeFile(QStringLiteral("/proc/%1/maps").arg(velloru.processId()));
    velloru.terminate();
    velloru.waitForFinished();
    EXPECT_TRUE(shown()) << said.right(2000).toStdString();
    EXPECT_TRUE(maps.contains("/velloru-window.so"));
    EXPECT_TRUE(maps.contains("libQt6Widgets"));
    EXPECT_FALSE(said.contains("cannot be opened"));
}

TEST(WindowModule, WithoutItsModuleTheWindowCannotOpenButTheCommandsStillRun)
{
    ProgramHome home;
    const QString alone = home.tree().path(QStringLiteral("bin/velloru"));
    QDir().mkpath(home.tree().path(QStringLiteral("bin")));
    ASSERT_TRUE(QFile::copy(QStringLiteral(VELLORU_BINARY), alone));

    QProcess velloru;
    velloru.setProcessEnvironment(windowEnvironment(home));
    velloru.start(alone, {});
    ASSERT_TRUE(velloru.waitForFinished(60'000));
    EXPECT_EQ(velloru.exitCode(), 1);
    const QString said = QString::fromUtf8(velloru.readAllStandardError());
    EXPECT_TRUE(said.contains(QStringLiteral("velloru: the window cannot be opened (")));
    EXPECT_TRUE(said.contains(QStringLiteral(") — the headless commands still work, see “velloru help”.")))
        << said.toStdString();

    velloru.start(alone, {QStringLiteral("help")});
    ASSERT_TRUE(velloru.waitForFinished(60'000));
    EXPECT_EQ(velloru.exitCode(), 0) << velloru.readAllStandardError().toStdString();
}
