#include "common/LocalPath.h"
#include "common/Log.h"

#include <gtest/gtest.h>

TEST(LocalPath, OnlyNamesThatMakeTheRoundTripAreDecoded)
{
    EXPECT_EQ(LocalPath::decode("plain/name.txt"), QStringLiteral("plain/name.txt"));
    EXPECT_EQ(LocalPath::decode("caf\xc3\xa9"), QStringLiteral("café"));
    // The replacement character itself is a valid name, distinct from a name with a bad byte.
    EXPECT_EQ(LocalPath::decode("B\xef\xbf\xbd"), QStringLiteral("B\uFFFD"));
    EXPECT_FALSE(LocalPath::decode("B\xff"));
    EXPECT_FALSE(LocalPath::decode("caf\xe9"));
    EXPECT_FALSE(LocalPath::decode("\xc0\xaf"));         // overlong "/"
    EXPECT_FALSE(LocalPath::decode("\xed\xa0\x80"));     // a surrogate
    EXPECT_FALSE(LocalPath::decode("\xf4\x90\x80\x80")); // past U+10FFFF
    EXPECT_FALSE(LocalPath::decode("cut\xe2\x82"));
    EXPECT_FALSE(LocalPath::decode(QByteArrayView("a\0b", 3)));
}

TEST(LocalPath, TextThatNoNameCanHoldIsNotEncoded)
{
    EXPECT_EQ(LocalPath::encode(QStringLiteral("café")), QByteArray("caf\xc3\xa9"));
    EXPECT_FALSE(LocalPath::encode(QString(QChar(0xDCFF))));
    EXPECT_FALSE(LocalPath::encode(QStringLiteral("a") + QChar::Null));
}

TEST(LocalPath, PrintableShowsBadBytesAsEscapes)
{
    EXPECT_EQ(LocalPath::printable("bad\xffname \xc3\xa9"), QStringLiteral("bad\\xFFname é"));
    EXPECT_EQ(LocalPath::printable("\xe2\x82"), QStringLiteral("\\xE2\\x82"));
}

TEST(Log, ValuesCannotForgeLinesOrPairs)
{
    EXPECT_EQ(logValue(QStringLiteral("/tmp/plain")), QStringLiteral("/tmp/plain"));
    EXPECT_EQ(logValue(QStringLiteral("x\nVelloru helper: request op=emptyTrash uid=0")),
        QStringLiteral("\"x\\nVelloru helper: request op=emptyTrash uid=0\""));
    EXPECT_EQ(logValue(QStringLiteral("a\"b\\c")), QStringLiteral("\"a\\\"b\\\\c\""));
    EXPECT_EQ(logValue(QStringLiteral("nul") + QChar::Null), QStringLiteral("\"nul\\u0000\""));
    EXPECT_EQ(logValue({}), QStringLiteral("\"\""));
}
