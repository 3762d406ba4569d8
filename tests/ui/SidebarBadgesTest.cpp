#include "app/SidebarCounts.h"
#include "ui/SidebarView.h"

#include "UiTestSupport.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QSignalSpy>
#include <QTest>

namespace {

// How many pixels of a row's right end have the badge's colour, and how wide the widest run of them is.
struct BadgeInk {
    int pixels = 0;
    int width = 0;
};

BadgeInk badgeInk(SidebarView& view, Destination destination)
{
    const QImage image = view.viewport()->grab().toImage();
    const QRect row = view.visualItemRect(view.itemFor(destination));
    const QRgb badge = view.palette().color(QPalette::Mid).rgb();
    BadgeInk ink;
    for (int y = row.top(); y <= row.bottom(); ++y) {
        int run = 0;
        for (int x = row.right() - 80; x <= row.right(); ++x) {
            const bool inked = x >= 0 && image.pixel(x, y) == badge;
            ink.pixels += inked ? 1 : 0;
            run = inked ? run + 1 : 0;
            ink.width = std::max(ink.width, run);
        }
    }
    return ink;
}

// Counts the times a widget is painted.
class PaintCounter : public QObject {
public:
    int paints = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        paints += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

TEST(SidebarBadges, ASectionShowsItsCountOnlyOnceCountedAndZeroIsACount)
{
    SidebarCounts counts;
    QSignalSpy changed(&counts, &SidebarCounts::changed);
    SidebarView view(counts);
    view.resize(260, 16 * 32);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    EXPECT_EQ(badgeInk(view, Destination::browsers).pixels, 0);

    PaintCounter painted;
    view.viewport()->installEventFilter(&painted);
    counts.setCounts({{Destination::browsers, 2}, {Destination::chats, 0}});
    EXPECT_EQ(changed.size(), 1);
    EXPECT_EQ(counts.count(Destination::chats), 0);
    EXPECT_FALSE(counts.count(Destination::loginItems));
    // The sidebar repaints by itself when the counts change.
    EXPECT_TRUE(QTest::qWaitFor([&] { return painted.paints > 0; }, 5000));

    const BadgeInk two = badgeInk(view, Destination::browsers);
    EXPECT_GT(two.pixels, 20);
    EXPECT_GT(badgeInk(view, Destination::chats).pixels, 20);
    EXPECT_EQ(badgeInk(view, Destination::loginItems).pixels, 0);
    EXPECT_EQ(badgeInk(view, Destination::duplicates).pixels, 0);
    saveScreenshot(view, QStringLiteral("sidebar-badges"));

    // The same counts again change nothing; a count with more digits draws a wider badge.
    counts.setCounts({{Destination::browsers, 2}, {Destination::chats, 0}});
    EXPECT_EQ(changed.size(), 1);
    counts.setCounts({{Destination::browsers, 1234}, {Destination::chats, 0}});
    EXPECT_EQ(changed.size(), 2);
    EXPECT_GT(badgeInk(view, Destination::browsers).width, two.width);

    counts.setCounts({});
    EXPECT_EQ(badgeInk(view, Destination::browsers).pixels, 0);
    EXPECT_EQ(badgeInk(view, Destination::chats).pixels, 0);
}
