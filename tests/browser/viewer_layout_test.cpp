#include "stand_ins/viewer/viewer_layout.h"

#include <gtest/gtest.h>

#include <limits>

namespace quill::test {
namespace {

constexpr page_size a4 = {595, 842};

TEST(Zoom, StaysWithinItsLimits)
{
    EXPECT_DOUBLE_EQ(clamped_zoom(1.5), 1.5);
    EXPECT_DOUBLE_EQ(clamped_zoom(0), 0.1);
    EXPECT_DOUBLE_EQ(clamped_zoom(-3), 0.1);
    EXPECT_DOUBLE_EQ(clamped_zoom(1e9), 4);
    EXPECT_DOUBLE_EQ(clamped_zoom(std::numeric_limits<double>::quiet_NaN()), 1);
}

TEST(Zoom, ChangesInSteps)
{
    EXPECT_DOUBLE_EQ(stepped_zoom(1, true), 1.25);
    EXPECT_DOUBLE_EQ(stepped_zoom(1.1, true), 1.25);
    EXPECT_DOUBLE_EQ(stepped_zoom(4, true), 4);
    EXPECT_DOUBLE_EQ(stepped_zoom(1, false), 0.75);
    EXPECT_DOUBLE_EQ(stepped_zoom(0.1, false), 0.1);
}

TEST(Resolution, IsThatOfTheScreenTimesTheZoom)
{
    EXPECT_EQ(resolution_for(a4, 1), 96u);
    EXPECT_EQ(resolution_for(a4, 1.5), 144u);
    EXPECT_EQ(resolution_for(a4, 0.1), 10u);
}

TEST(Resolution, IsLowerForAPageThatWouldNotFitInMemory)
{
    const page_size wall = {20'000, 20'000};
    const unsigned resolution = resolution_for(wall, 4);
    EXPECT_GE(resolution, 1u);
    EXPECT_LE(20'000.0 / 72 * resolution * (20'000.0 / 72) * resolution, 42e6);
    EXPECT_EQ(resolution_for({200'000, 200'000}, 4), 2u);
}

TEST(Strip, FindsItsButtons)
{
    for (const strip_button& button : strip_buttons()) {
        EXPECT_EQ(strip_command_at({button.place.left, button.place.top}), button.command);
        EXPECT_EQ(strip_command_at({button.place.right - 1, button.place.bottom - 1}), button.command);
    }
    EXPECT_EQ(strip_command_at({0, 0}), strip_command::none);
    EXPECT_EQ(strip_command_at({20, strip_height + 1}), strip_command::none);
}

TEST(Strip, ShowsPageAndZoom)
{
    EXPECT_EQ(strip_status({1, 1.5}, 5), L"page 2 of 5 - 150 %");
    EXPECT_EQ(strip_status({0, 0.335}, 1), L"page 1 of 1 - 34 %");
}

TEST(Scrolling, HasNoRoomForAPageThatFits)
{
    const SIZE limit = scroll_limit({100, 100}, {132, 132});
    EXPECT_EQ(limit.cx, 0);
    EXPECT_EQ(limit.cy, 0);
    const POINT origin = page_origin({0, 0}, {100, 100}, {132, 232});
    EXPECT_EQ(origin.x, 16);
    EXPECT_EQ(origin.y, 66) << "centred";
}

TEST(Scrolling, ShowsAllOfALargerPageWithItsMargins)
{
    const SIZE picture = {500, 1000};
    const SIZE area = {300, 400};
    const SIZE limit = scroll_limit(picture, area);
    EXPECT_EQ(limit.cx, 500 + 32 - 300);
    EXPECT_EQ(limit.cy, 1000 + 32 - 400);
    const POINT end = limited_scroll({9999, 9999}, picture, area);
    const POINT origin = page_origin(end, picture, area);
    EXPECT_EQ(origin.x + picture.cx, area.cx - 16);
    EXPECT_EQ(origin.y + picture.cy, area.cy - 16);
    const POINT start = limited_scroll({-5, -5}, picture, area);
    EXPECT_EQ(start.x, 0);
    EXPECT_EQ(start.y, 0);
}

TEST(Scrolling, BeginsAtTheTopInTheMiddle)
{
    const POINT first = first_scroll({500, 1000}, {300, 400});
    EXPECT_EQ(first.x, (500 + 32 - 300) / 2);
    EXPECT_EQ(first.y, 0);
}

} // namespace
} // namespace quill::test
