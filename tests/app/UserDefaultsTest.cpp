#include "app/UserDefaults.h"

#include "TestSupport.h"
#include "app/AppState.h"
#include "app/StartupFlow.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

namespace {

QString settingsPath()
{
    return QSettings().fileName();
}

QStringList keptCopies()
{
    const QFileInfo settings(settingsPath());
    QStringList copies;
    for (const QFileInfo& copy :
        QDir(settings.path()).entryInfoList({settings.fileName() + QStringLiteral(".unreadable-*")}))
        copies.append(copy.filePath());
    return copies;
}

void startAfresh(const QByteArray& settingsFile)
{
    for (const QString& copy : keptCopies())
        QFile::remove(copy);
    QDir().mkpath(QFileInfo(settingsPath()).path());
    QFile file(settingsPath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(settingsFile);
}

// Starts up as the window does, up to the first decision of the start-up steps (which is when the permission
// ledger is first written), and closes again.
void startUp()
{
    keepUnreadableSettingsAside();
    QSettings defaults;
    AppState state;
    StartupFlow flow(defaults, &state.permissions());
    flow.windowShown();
}

} // namespace

TEST(UserDefaults, AnUnreadableSettingsFileIsCopiedAsideBeforeItIsWrittenBack)
{
    const QByteArray garbage = "[General]\nonboardingComplete=true\nthis line is no setting\n";
    const QByteArray latin1 = "[General]\nonboardingComplete=true\nname=caf\xe9\n";
    for (const QByteArray& original : {garbage, latin1}) {
        startAfresh(original);
        const LogCapture log;
        startUp();
        const QStringList copies = keptCopies();
        ASSERT_EQ(copies.size(), 1) << original.toStdString();
        EXPECT_EQ(readWholeFile(copies.first()), original);
        EXPECT_TRUE(log.contains(QStringLiteral("copy kept")));

        // What could be read is kept, and the file is whole again: the next start keeps no second copy.
        const QByteArray now = readWholeFile(settingsPath());
        EXPECT_FALSE(now.contains("@Invalid()")) << now.toStdString();
        EXPECT_FALSE(now.contains("this line")) << now.toStdString();
        EXPECT_EQ(QSettings().status(), QSettings::NoError);
        EXPECT_TRUE(QSettings().value(DefaultsKey::onboardingComplete).toBool());
        startUp();
        EXPECT_EQ(keptCopies(), copies);
    }
}

TEST(UserDefaults, AReadableSettingsFileIsLeftAsItIsAndNoInvalidValueIsWritten)
{
    const QByteArray original = "[General]\nonboardingComplete=true\nname=caf\xc3\xa9\n";
    startAfresh(original);
    startUp();
    EXPECT_TRUE(keptCopies().isEmpty());
    EXPECT_EQ(readWholeFile(settingsPath()), original) << "no permission granted: nothing to write";
}
