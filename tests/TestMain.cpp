#include "app/UserDefaults.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#ifdef VELLORU_TEST_WIDGETS
#include <QApplication>
using TestApplication = QApplication;
#else
#include <QCoreApplication>
using TestApplication = QCoreApplication;
#endif

// Every test binary runs with a home and XDG folders of its own, so nothing touches the real user's files
// and the settings start empty.
int main(int argc, char** argv)
{
    QTemporaryDir sandbox;
    if (!sandbox.isValid())
        return 1;
    const QByteArray root = sandbox.path().toUtf8();
    qputenv("HOME", root + "/home");
    qputenv("XDG_DATA_HOME", root + "/home/.local/share");
    qputenv("XDG_CONFIG_HOME", root + "/home/.config");
    qputenv("XDG_CACHE_HOME", root + "/home/.cache");
    qputenv("XDG_STATE_HOME", root + "/home/.local/state");

    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    TestApplication app(argc, argv);
    setApplicationIdentity();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
