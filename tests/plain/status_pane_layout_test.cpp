#include "retrieval/pane/status_pane_layout.h"

#include <gtest/gtest.h>

namespace quill {
namespace {

struct rectangle
{
    LONG left, top, right, bottom;

    explicit rectangle(const RECT& from) : rectangle(from.left, from.top, from.right, from.bottom) {}
    rectangle(LONG l, LONG t, LONG r, LONG b) : left(l), top(t), right(r), bottom(b) {}
    friend bool operator==(const rectangle&, const rectangle&) = default;
};

using place = std::pair<LONG, LONG>;

place position(LONG width, LONG height)
{
    const POINT point = status_pane_position({width, height});
    return {point.x, point.y};
}

constexpr RECT client{0, 0, 350, 45};

TEST(StatusPaneLayout, PlacesThePaneAboveTheMiddle)
{
    EXPECT_EQ(position(350, 90), place(0, 0));
    EXPECT_EQ(position(800, 600), place(225, 255));
    EXPECT_EQ(position(801, 601), place(225, 255));
}

TEST(StatusPaneLayout, KeepsNegativePositionsInASmallParent)
{
    EXPECT_EQ(position(0, 0), place(-175, -45));
    EXPECT_EQ(position(100, 50), place(-125, -20));
    EXPECT_EQ(position(349, 89), place(0, -1));
}

TEST(StatusPaneLayout, DrawsTwoPixelsForEachPercent)
{
    EXPECT_EQ(rectangle(status_bar(client, 0)), rectangle(10, 10, 10, 35));
    EXPECT_EQ(rectangle(status_bar(client, 1)), rectangle(10, 10, 12, 35));
    EXPECT_EQ(rectangle(status_bar(client, 50)), rectangle(10, 10, 110, 35));
    EXPECT_EQ(rectangle(status_bar(client, 100)), rectangle(10, 10, 210, 35));
    EXPECT_EQ(rectangle(status_bar_frame(client)), rectangle(10, 10, 210, 35));
}

TEST(StatusPaneLayout, PlacesTheTextRightOfTheBar)
{
    EXPECT_EQ(rectangle(status_text_area(client)), rectangle(210, 0, 350, 45));
}

std::wstring text_of(const wchar_t* format, std::uint32_t percent)
{
    return format_status_text(format, percent).data();
}

TEST(StatusPaneLayout, FormatsThePercentage)
{
    EXPECT_EQ(text_of(L"Downloading... %d%%", 7), L"Downloading... 7%");
    EXPECT_EQ(text_of(L"Downloading... %d%%", 100), L"Downloading... 100%");
    EXPECT_EQ(text_of(L"", 100), L"");
}

TEST(StatusPaneLayout, TruncatesTextThatDoesNotFit)
{
    const std::wstring longest(254, L'x');
    EXPECT_EQ(text_of((longest + L"%d").c_str(), 7), longest + L"7");
    EXPECT_LE(text_of((longest + L"%d").c_str(), 77).size(), 255u);
}

} // namespace
} // namespace quill
