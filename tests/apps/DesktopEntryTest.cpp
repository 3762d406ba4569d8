#include "apps/DesktopEntry.h"
#include "apps/Identifier.h"

#include <gtest/gtest.h>

TEST(DesktopEntry, ReadsOnlyTheDesktopEntryGroupAndTheFirstOfEachKey)
{
    const auto entry = DesktopEntry::parse("# comment\n[Desktop Entry]\nName=Files\nName=Ignored\n"
                                           "Name[de]=Dateien\nName[de_AT]=Dateien (AT)\nNoDisplay=True\n"
                                           "[Desktop Action new]\nName=New Window\nExec=other\n");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->value(QStringLiteral("Name")), QStringLiteral("Files"));
    EXPECT_TRUE(entry->flag(QStringLiteral("NoDisplay")));
    EXPECT_TRUE(entry->value(QStringLiteral("Exec")).isEmpty());
    EXPECT_EQ(
        entry->localizedValue(QStringLiteral("Name"), QStringLiteral("de_AT.UTF-8")), QStringLiteral("Dateien (AT)"));
    EXPECT_EQ(entry->localizedValue(QStringLiteral("Name"), QStringLiteral("de_CH@euro")), QStringLiteral("Dateien"));
    EXPECT_EQ(entry->localizedValue(QStringLiteral("Name"), QStringLiteral("fr_FR")), QStringLiteral("Files"));
    EXPECT_EQ(entry->localizedValue(QStringLiteral("Name"), QString()), QStringLiteral("Files"));

    EXPECT_FALSE(DesktopEntry::parse("Name=no group\n"));
    EXPECT_FALSE(DesktopEntry::parse(QByteArray("\x00\xff\xfe garbage", 12)));
}

TEST(DesktopEntry, ProgramSkipsEnvironmentAssignmentsQuotesAndFieldCodes)
{
    auto program
        = [](const QByteArray& exec) { return DesktopEntry::parse("[Desktop Entry]\nExec=" + exec + "\n")->program(); };
    EXPECT_EQ(
        program("env BAMF_DESKTOP_FILE_HINT=/x.desktop /snap/bin/firefox %u"), QStringLiteral("/snap/bin/firefox"));
    EXPECT_EQ(program("/usr/bin/env -u FOO A=1 vlc --started-from-file %U"), QStringLiteral("vlc"));
    EXPECT_EQ(program("\"/opt/My App/run me\" %F"), QStringLiteral("/opt/My App/run me"));
    EXPECT_EQ(program("%U"), QString());
    EXPECT_EQ(splitCommandLine(QStringLiteral("a \"b c\" d\\ e")), (QStringList{"a", "b c", "d e"}));
}

TEST(Identifier, ReverseDomainNamesAreTheOnlyDottedNamesThatReadAsIdentifiers)
{
    for (const char* name : {"org.mozilla.firefox", "com.example.app.helper", "io.github.some_app",
             "us.ambertrell.Velloru", "de.k-lab.Tool"})
        EXPECT_TRUE(isReverseDomainName(QString::fromLatin1(name))) << name;
    for (const char* name : {"fontconfig", "mesa_shader_cache", "cache.tar.gz", "org.mozilla", "com..example",
             "com.example.1app", "thumbnails", "Com.Example.App", "session.log.1"})
        EXPECT_FALSE(isReverseDomainName(QString::fromLatin1(name))) << name;
    EXPECT_EQ(identifierDomain(u"org.mozilla.firefox"), QStringLiteral("mozilla.org"));
}
