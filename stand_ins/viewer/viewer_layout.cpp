#include "stand_ins/viewer/viewer_layout.h"

#include <algorithm>
#include <cmath>

namespace quill {
namespace {

constexpr double smallest_zoom = 0.1;
constexpr double largest_zoom = 4;
constexpr std::array zoom_steps = {0.1, 0.25, 0.5, 0.75, 1.0, 1.25, 1.5, 2.0, 3.0, 4.0};
constexpr double largest_picture = 40e6; // pixels, four bytes each

constexpr RECT button_place(LONG left, LONG width)
{
    return {left, 5, left + width, strip_height - 5};
}

LONG limit_along(LONG picture, LONG area)
{
    return std::max<LONG>(0, picture + 2 * page_margin - area);
}

LONG origin_along(LONG scroll, LONG picture, LONG area)
{
    const LONG whole = picture + 2 * page_margin;
    return whole <= area ? (area - picture) / 2 : page_margin - scroll;
}

} // namespace

double clamped_zoom(double zoom)
{
    return std::isnan(zoom) ? 1 : std::clamp(zoom, smallest_zoom, largest_zoom);
}

double stepped_zoom(double zoom, bool upwards)
{
    constexpr double same = 1e-6;
    if (upwards) {
        const auto next =
            std::find_if(zoom_steps.begin(), zoom_steps.end(), [&](double z) { return z > zoom + same; });
        return next == zoom_steps.end() ? largest_zoom : *next;
    }
    const auto next =
        std::find_if(zoom_steps.rbegin(), zoom_steps.rend(), [&](double z) { return z < zoom - same; });
    return next == zoom_steps.rend() ? smallest_zoom : *next;
}

unsigned resolution_for(const page_size& size, double zoom)
{
    constexpr double screen = 96;
    constexpr double points_per_inch = 72;
    const double wanted = screen * clamped_zoom(zoom);
    const double square_inches = size.width * size.height / (points_per_inch * points_per_inch);
    const double most = std::sqrt(largest_picture / std::max(square_inches, 1e-6));
    return static_cast<unsigned>(std::max(1.0, std::round(std::min(wanted, most))));
}

const std::array<strip_button, 5>& strip_buttons()
{
    static constexpr std::array<strip_button, 5> buttons = {{
        {strip_command::previous_page, button_place(8, 30), L"\u2039"},
        {strip_command::next_page, button_place(40, 30), L"\u203A"},
        {strip_command::zoom_out, button_place(82, 30), L"\u2212"},
        {strip_command::zoom_in, button_place(114, 30), L"+"},
        {strip_command::save_as, button_place(156, 96), L"Save a copy"},
    }};
    return buttons;
}

strip_command strip_command_at(POINT point)
{
    for (const strip_button& button : strip_buttons()) {
        if (PtInRect(&button.place, point))
            return button.command;
    }
    return strip_command::none;
}

std::wstring strip_status(const page_view& view, std::size_t page_count)
{
    return L"page " + std::to_wstring(view.page + 1) + L" of " + std::to_wstring(page_count) + L" - " +
           std::to_wstring(std::lround(view.zoom * 100)) + L" %";
}

SIZE scroll_limit(SIZE picture, SIZE area)
{
    return {limit_along(picture.cx, area.cx), limit_along(picture.cy, area.cy)};
}

POINT limited_scroll(POINT scroll, SIZE picture, SIZE area)
{
    const SIZE limit = scroll_limit(picture, area);
    return {std::clamp<LONG>(scroll.x, 0, limit.cx), std::clamp<LONG>(scroll.y, 0, limit.cy)};
}

POINT page_origin(POINT scroll, SIZE picture, SIZE area)
{
    return {origin_along(scroll.x, picture.cx, area.cx), origin_along(scroll.y, picture.cy, area.cy)};
}

POINT first_scroll(SIZE picture, SIZE area)
{
    return {scroll_limit(picture, area).cx / 2, 0};
}

} // namespace quill
