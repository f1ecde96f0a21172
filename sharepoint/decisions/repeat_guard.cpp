#include "sharepoint/decisions/repeat_guard.h"

#include "sharepoint/decisions/case_insensitive.h"

namespace quill {
namespace {

constexpr std::uint64_t repeat_window_ms = 100;

}

bool repeat_guard::is_repeat(std::wstring_view url, std::uint64_t now) const
{
    for (const std::wstring& opening : openings_)
        if (equal_ignoring_case(url, opening))
            return true;
    return now - last_cancel_tick_ < repeat_window_ms && equal_ignoring_case(url, last_canceled_url_);
}

void repeat_guard::end_openings(std::size_t count) noexcept
{
    while (openings_.size() > count)
        openings_.pop_back();
}

void repeat_guard::forget_url(std::wstring_view url)
{
    if (equal_ignoring_case(url, last_canceled_url_))
        forget_url();
}

void repeat_guard::cancelled(std::wstring_view url, std::uint64_t now)
{
    last_canceled_url_ = url;
    last_cancel_tick_ = now;
}

} // namespace quill
