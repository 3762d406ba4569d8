#include "removal/ItemSize.h"

#include "TestSupport.h"
#include "platform/DirectoryReader.h"

#include <gtest/gtest.h>

#include <QFile>

#include <vector>

TEST(ItemSize, CountsFilesBelowAFolderWithoutFollowingLinks)
{
    FixtureTree tree;
    tree.write(QStringLiteral("a/one"), QByteArray(10, 'x'));
    tree.write(QStringLiteral("a/b/two"), QByteArray(20, 'x'));
    tree.write(QStringLiteral("outside/big"), QByteArray(100000, 'x'));
    QFile::link(tree.path(QStringLiteral("outside")), tree.path(QStringLiteral("a/b/link")));
    std::vector<std::byte> buffer(directoryBufferSize);
    QStringList folders;
    qint64 reported = 0;
    const ItemSize size = measureItem(
        QFile::encodeName(tree.path(QStringLiteral("a"))), buffer, [&](QByteArrayView folder, qint64, qint64 bytes) {
            folders.append(QString::fromUtf8(folder).section(QLatin1Char('/'), -1));
            reported += bytes;
        });
    EXPECT_EQ(size.bytes, 30);
    EXPECT_EQ(size.entries, 5); // the folder itself, "one", "b", "two" and the link
    EXPECT_FALSE(size.stopped);
    EXPECT_EQ(folders, QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(reported, 30);
    EXPECT_EQ(measureItem(QFile::encodeName(tree.path(QStringLiteral("a/one"))), buffer).bytes, 10);
    EXPECT_EQ(measureItem(QFile::encodeName(tree.path(QStringLiteral("gone"))), buffer).bytes, -1);

    EXPECT_EQ(measureItemSize(tree.path(QStringLiteral("a"))), 30);
    EXPECT_EQ(measureItemSize(tree.path(QStringLiteral("a/b/link"))), 0) << "a link counts for nothing";
    EXPECT_EQ(measureItemSize(tree.path(QStringLiteral("gone"))), 0);
}

TEST(ItemSize, NamesThatAreNotUtf8AreMeasuredByTheirOwnBytes)
{
    // "bad\xff" decodes to the name of its neighbour "bad\xef\xbf\xbd"; measured by text, one would be
    // measured twice and the other not at all.
    FixtureTree tree;
    const QByteArray folder = QFile::encodeName(tree.makeFolder(QStringLiteral("item")));
    ASSERT_TRUE(writeFileNamedBytes(folder + "/bad\xff", QByteArray(5000, 'x')));
    ASSERT_TRUE(writeFileNamedBytes(folder + "/bad\xef\xbf\xbd", QByteArray(700, 'x')));
    ASSERT_TRUE(makeFolderNamedBytes(folder + "/sub\xfe"));
    ASSERT_TRUE(writeFileNamedBytes(folder + "/sub\xfe/inside", QByteArray(300, 'x')));

    EXPECT_EQ(measureItemSize(tree.path(QStringLiteral("item"))), 6000);
}
