#include "TestSupport.h"

#include "platform/VolumeIdentity.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QRegularExpression>

TEST(VolumeIdentity, EachVolumeHasItsOwnStableNameAndLocalDisksAreLocal)
{
    FixtureTree tree;
    const std::string folder = QFile::encodeName(tree.makeFolder(QStringLiteral("a"))).toStdString();
    const std::optional<std::string> uuid = volumeUUID(folder);
    ASSERT_TRUE(uuid);
    const QRegularExpression shape(
        QStringLiteral("^([0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}|FSID-[0-9A-F]{16})$"));
    EXPECT_TRUE(shape.match(QString::fromStdString(*uuid)).hasMatch()) << *uuid;
    EXPECT_EQ(volumeUUID(QFile::encodeName(tree.path()).toStdString()), uuid) << "same volume, same name";
    EXPECT_EQ(volumeKind(folder), VolumeKind::local);
    EXPECT_FALSE(volumeUUID(folder + "/missing"));

    if (!runningAsRoot())
        GTEST_SKIP() << "mounting a tmpfs needs root";
    auto mount = TmpfsMount::mount(tree.path(QStringLiteral("other")), QStringLiteral("size=1m"));
    ASSERT_TRUE(mount);
    const std::string other = QFile::encodeName(mount->path()).toStdString();
    EXPECT_NE(volumeUUID(other), uuid);
    EXPECT_EQ(volumeKind(other), VolumeKind::local);
    EXPECT_EQ(volumeKind("/proc"), VolumeKind::other);
}
