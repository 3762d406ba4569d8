#include "common/JsonText.h"
#include "common/ReferenceDate.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

TEST(JsonText, WritesKeysInOrderAndReadsBackExactly)
{
    const QString awkward = QStringLiteral("quote\" back\\slash\nnew\ttab \x01 ctl — “dash” 日本");
    const QByteArray json = JsonObjectWriter()
                                .add(u"zeta", awkward)
                                .add(u"alpha", qint64(9'007'199'254'740'993LL)) // not representable as a double
                                .add(u"mid", 785'000'000.123456)
                                .add(u"flag", true)
                                .addRaw(u"list", jsonArray({"1", "2"}).trimmed())
                                .finish();

    EXPECT_TRUE(json.startsWith("{\"zeta\":")) << json.constData();
    EXPECT_LT(json.indexOf("\"alpha\""), json.indexOf("\"mid\""));

    QJsonParseError error;
    const QJsonObject object = QJsonDocument::fromJson(json, &error).object();
    ASSERT_EQ(error.error, QJsonParseError::NoError) << json.constData();
    EXPECT_EQ(object.value(u"zeta").toString(), awkward);
    EXPECT_EQ(object.value(u"alpha").toInteger(), 9'007'199'254'740'993LL);
    EXPECT_EQ(object.value(u"mid").toDouble(), 785'000'000.123456);
    EXPECT_TRUE(object.value(u"flag").toBool());
    EXPECT_EQ(object.value(u"list").toArray().size(), 2);
    EXPECT_EQ(jsonArray({}), "[]\n");
}

TEST(ReferenceDate, CountsFromTheFirstOfJanuary2001)
{
    const QDateTime reference(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    EXPECT_EQ(ReferenceDate::secondsSinceReference(reference), 0.0);
    EXPECT_EQ(ReferenceDate::secondsSinceReference(reference.addSecs(-60)), -60.0);

    const QDateTime now = QDateTime::fromMSecsSinceEpoch(1'795'000'123'456LL, Qt::UTC);
    EXPECT_EQ(ReferenceDate::fromSecondsSinceReference(ReferenceDate::secondsSinceReference(now)), now);
}
