#include "platform/PackageDatabase.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

TEST(PackageDatabase, ReadsTheDesktopEntriesOfEveryPackagesFileList)
{
    FixtureTree info;
    info.write(QStringLiteral("vlc-bin.list"),
        "/.\n/usr\n/usr/share/applications\n/usr/share/applications/vlc.desktop\n/usr/bin/vlc\n");
    // A package of one architecture, with a file whose name only contains ".desktop".
    info.write(QStringLiteral("firefox-esr:amd64.list"),
        "/usr/share/applications/firefox-esr.desktop\n/usr/share/doc/firefox-esr/README.desktop.txt\n");
    // The last line of a list need not end with a line break.
    info.write(QStringLiteral("tool.list"), "/usr/bin/tool\n/usr/share/applications/tool.desktop");
    info.write(QStringLiteral("bash.list"), "/usr/bin/bash\n");
    // The database's other files name desktop entries too, but list nothing that is installed.
    info.write(QStringLiteral("vlc-bin.md5sums"), "0123456789abcdef  usr/share/applications/vlc-old.desktop\n");
    info.write(QStringLiteral("autostarter.conffiles"), "/etc/xdg/autostart/autostarter.desktop\n");
    // A list that cannot be read is passed over.
    const QString locked = info.write(QStringLiteral("locked.list"), "/usr/share/applications/locked.desktop\n");
    QFile::setPermissions(locked, QFileDevice::Permissions());

    QSet<QString> entries;
    {
        FileAccessChecksEnforced asAnyoneElse;
        entries = packagedDesktopEntries(info.path());
    }
    EXPECT_EQ(entries,
        (QSet<QString>{QStringLiteral("/usr/share/applications/vlc.desktop"),
            QStringLiteral("/usr/share/applications/firefox-esr.desktop"),
            QStringLiteral("/usr/share/applications/tool.desktop")}));
    EXPECT_TRUE(packagedDesktopEntries(info.path(QStringLiteral("no such folder"))).isEmpty());
}

TEST(PackageDatabase, FindsWhatDpkgItselfSaysIsInstalled)
{
    if (QStandardPaths::findExecutable(QStringLiteral("dpkg-query")).isEmpty()
        || !QFileInfo(QStringLiteral("/var/lib/dpkg/info")).isDir())
        GTEST_SKIP() << "not a dpkg system: there is no package database to compare with";
    QProcess dpkg;
    dpkg.start(QStringLiteral("dpkg-query"), {QStringLiteral("--search"), QStringLiteral("*.desktop")});
    ASSERT_TRUE(dpkg.waitForFinished(60'000));
    // "package[, package…]: path" per line; diversions are told apart by their wording.
    QSet<QString> listed;
    for (const QString& line : QString::fromUtf8(dpkg.readAllStandardOutput()).split(QLatin1Char('\n'))) {
        const qsizetype separator = line.indexOf(QStringLiteral(": /"));
        if (separator > 0 && !line.startsWith(QLatin1String("diversion by "))
            && line.endsWith(QLatin1String(".desktop")))
            listed.insert(line.mid(separator + 2));
    }
    if (listed.isEmpty())
        GTEST_SKIP() << "no installed package ships a desktop entry here";
    EXPECT_EQ(packagedDesktopEntries(), listed);
}
